#pragma once

#include "probe/handy/Handyzustand.hpp"
#include "probe/handy/Strom.hpp"

#include <asio/ip/tcp.hpp>

#include <memory>
#include <string>

namespace mobilsteg::probehandy {

/// Carries bytes between a stream and a connection to the net, in both directions, until one of them ends.
/// Each direction has one piece under way at most, so that whoever does not read holds the other side back.
/// Counts what it carries. The vorrat are bytes that the Mac has already sent.
void pumpe(std::shared_ptr<Strom> strom, asio::ip::tcp::socket ziel, Handyzustand& zustand,
           std::string vorrat);

} // namespace mobilsteg::probehandy
