#pragma once

#include <asio/any_io_executor.hpp>
#include <asio/ip/tcp.hpp>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace mobilsteg::probehandy {

/// The reply codes of SOCKS5 that the phone uses.
enum class SocksAntwort : unsigned char {
    gelungen = 0,
    allgemein = 1,
    verboten = 2,
    netzUnerreichbar = 3,
    rechnerUnerreichbar = 4,
    abgewiesen = 5,
    befehlUnbekannt = 7,
    adressartUnbekannt = 8,
};

using Verbunden = std::function<void(SocksAntwort, asio::ip::tcp::socket)>;

/// Connects to a name or a literal address, on behalf of the proxy. Unless insNetz, only this machine can be
/// reached, and no name but "localhost" and those below it is looked up, so that not even a question about a
/// name leaves the machine. The result comes from the event loop, exactly once, within half a minute. The
/// returned handle may be dropped; calling it gives the attempt up.
std::function<void()> verbindeMitZiel(asio::any_io_executor ausfuehrer, std::string rechner,
                                      std::uint16_t port, bool insNetz, Verbunden fertig);

} // namespace mobilsteg::probehandy
