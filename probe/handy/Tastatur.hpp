#pragma once

#include "probe/handy/Befehle.hpp"

#include <asio/io_context.hpp>

#include <functional>

namespace mobilsteg::probehandy {

/// Takes commands from the standard input as well, answering on the standard output, until the input ends.
/// Does nothing if the input is closed or /dev/null. Everything referred to must outlive the event loop.
void liesTastatur(asio::io_context& schleife, Befehle& befehle, std::function<void()> beende);

} // namespace mobilsteg::probehandy
