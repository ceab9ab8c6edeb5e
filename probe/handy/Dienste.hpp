#pragma once

#include <string_view>

namespace mobilsteg::probehandy {

struct Handy;
class Strom;

/// Serves one stream to its end.
using Dienst = void (*)(Strom&, Handy&);

/// What the phone offers under an adb address: its SOCKS5 proxy at "tcp:1080", its app's HTTP interface at
/// "tcp:8080". Null: nothing.
[[nodiscard]] Dienst findeDienst(std::string_view ziel);

} // namespace mobilsteg::probehandy
