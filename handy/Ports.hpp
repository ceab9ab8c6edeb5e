#pragma once

#include <array>
#include <string>

namespace mobilsteg {

// The local ports that this program uses, all on 127.0.0.1.

/// The phone's SOCKS proxy; the same number on the phone.
inline constexpr int socksPort = 1080;

/// The phone's API on the phone, and where its local end may be when another program holds that port.
inline constexpr int gastPortAmHandy = 8080;
inline constexpr std::array gastPorts{gastPortAmHandy, 18080, 18081, 18082, 28080};

/// Our state document.
inline constexpr int standPort = 1081;

/// The port with its host, as URLs and tools write it.
[[nodiscard]] inline std::string amMac(int port) {
    return "127.0.0.1:" + std::to_string(port);
}

} // namespace mobilsteg
