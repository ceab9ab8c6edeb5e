#pragma once

#include <asio/ip/address.hpp>
#include <asio/ip/tcp.hpp>

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace mobilsteg::volltunnel {

// What the tunnel does to IP packets. Pure: no socket, no clock, any thread.

using Adresse = asio::ip::address;
using Stelle = asio::ip::tcp::endpoint; ///< address and port, also for UDP
using Bytes = std::span<std::uint8_t>;

enum class Art { tcp, udp, echo, sonstige };

/// The addresses of the tunnel's device and of the peer behind it, who is made up.
struct Enden {
    Adresse hier, drueben;
};
[[nodiscard]] const Enden& tunnelenden(bool sechs);

/// A packet that was read. It points into the bytes it was read from.
struct Paket {
    Bytes bytes;          ///< the whole packet, without what may stand behind it
    std::size_t kopf = 0; ///< length of the IP header
    Art art = Art::sonstige;
    Stelle von, nach;     ///< port 0 where there are no ports
    bool syn = false;     ///< begins a TCP connection
    std::size_t last = 0; ///< where the payload of TCP or UDP begins
};

/// Absent: no whole IPv4 or IPv6 packet, or a fragment. Checksums are not looked at: the kernel made them.
[[nodiscard]] std::optional<Paket> liesPaket(Bytes bytes);

/// Gives a TCP packet other ends, of the same family, and mends its checksums for just that difference: what
/// was damaged stays damaged.
void schreibeUm(Paket& paket, const Stelle& von, const Stelle& nach);

/// The answer that ends the sender's hope at once: a reset for TCP, "unreachable" for the rest. Absent where
/// none may be given: to a reset, to messages of ICMP other than an echo request, to and from what is no
/// single machine's address.
[[nodiscard]] std::optional<std::string> absage(const Paket& paket);

/// A UDP packet with valid checksums; `von` and `nach` are of one family. Absent: too long.
[[nodiscard]] std::optional<std::string> udpPaket(const Stelle& von, const Stelle& nach,
                                                  std::string_view last);

/// Whether one machine has this address: not multicast, not broadcast, not unspecified, not reserved.
[[nodiscard]] bool istEinzelne(const Adresse& adresse);

} // namespace mobilsteg::volltunnel
