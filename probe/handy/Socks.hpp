#pragma once

#include "probe/handy/Handyzustand.hpp"
#include "probe/handy/Strom.hpp"

#include <memory>

namespace mobilsteg::probehandy {

/// Serves one client of the phone's SOCKS5 proxy: CONNECT without authentication, to IPv4, IPv6 and names.
/// How it behaves is what the state said when the stream was opened.
void bedieneSocks(std::shared_ptr<Strom> strom, Handyzustand& zustand);

} // namespace mobilsteg::probehandy
