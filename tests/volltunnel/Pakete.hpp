#pragma once

#include <string>

#include "volltunnel/Paket.hpp"

namespace mobilsteg::volltunnel {

inline Stelle stelle(const std::string& adresse, int port) {
    return {asio::ip::make_address(adresse), static_cast<std::uint16_t>(port)};
}

inline Bytes alsBytes(std::string& text) {
    return {reinterpret_cast<std::uint8_t*>(text.data()), text.size()};
}

/// The sum that a receiver makes: 0xFFFF when the checksum in it is right. `kopf` 0: of the header alone.
inline unsigned plumpeSumme(const std::string& p, std::size_t kopf) {
    const auto byte = [&](std::size_t i) { return i < p.size() ? static_cast<unsigned char>(p[i]) : 0U; };
    const bool sechs = byte(0) >> 4 == 6;
    const unsigned protokoll = byte(sechs ? 6 : 9);
    unsigned s = 0;
    for (std::size_t i = kopf; i < (kopf == 0 ? (byte(0) & 15U) * 4 : p.size()); i += 2)
        s += byte(i) * 256 + byte(i + 1);
    if (kopf != 0 && protokoll != 1) {
        for (std::size_t i = sechs ? 8 : 12; i < (sechs ? 40U : 20U); i += 2)
            s += byte(i) * 256 + byte(i + 1);
        s += protokoll + static_cast<unsigned>(p.size() - kopf);
    }
    while (s > 0xFFFF)
        s = (s & 0xFFFF) + (s >> 16);
    return s;
}

/// Whether all checksums of the packet are right.
inline bool summenStimmen(const std::string& p, std::size_t kopf) {
    const bool sechs = static_cast<unsigned char>(p[0]) >> 4 == 6;
    return (sechs || plumpeSumme(p, 0) == 0xFFFF) && plumpeSumme(p, kopf) == 0xFFFF;
}

/// A TCP packet with right checksums: flags, sequence number 0x10003E8, acknowledged 2000.
inline std::string tcpPaket(const Stelle& von, const Stelle& nach, char merkmale,
                            const std::string& last = "") {
    // A UDP packet of the same length gives the IP header.
    std::string p = *udpPaket(von, nach, std::string(12, '\0') + last);
    const bool sechs = von.address().is_v6();
    const std::size_t kopf = sechs ? 40 : 20;
    p[sechs ? 6 : 9] = 6;
    p.replace(kopf + 4, 16, std::string("\1\0\3\xE8\0\0\7\xD0\x50", 9) + merkmale + std::string(6, '\0'));
    const auto setze = [&](std::size_t stelle, unsigned wert) {
        p[stelle] = static_cast<char>(wert >> 8);
        p[stelle + 1] = static_cast<char>(wert);
    };
    if (!sechs) {
        setze(10, 0);
        setze(10, 0xFFFF - plumpeSumme(p, 0));
    }
    setze(kopf + 16, 0xFFFF - plumpeSumme(p, kopf));
    return p;
}

} // namespace mobilsteg::volltunnel
