#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace mobilsteg::probehandy {

enum class AdbBefehl : std::uint32_t {
    cnxn = 0x4e584e43,
    auth = 0x48545541,
    open = 0x4e45504f,
    okay = 0x59414b4f,
    clse = 0x45534c43,
    wrte = 0x45545257,
};

/// Up to and including this version every payload carries a byte sum; from the next one on the field is idle.
inline constexpr std::uint32_t adbVersionMitSumme = 0x01000000;
inline constexpr std::uint32_t adbVersion = 0x01000001;
/// The largest payload in bytes, which today's phones announce as well.
inline constexpr std::uint32_t adbNutzlast = 1024 * 1024;
/// No adb has ever announced less; a peer that does is not one.
inline constexpr std::uint32_t adbKleinsteNutzlast = 4096;

inline constexpr std::size_t adbKopflaenge = 24;
using AdbKopfbytes = std::array<unsigned char, adbKopflaenge>;

struct AdbKopf {
    AdbBefehl befehl = AdbBefehl::cnxn; ///< may hold a value that the enumeration does not name
    std::uint32_t arg0 = 0;
    std::uint32_t arg1 = 0;
    std::uint32_t laenge = 0; ///< bytes of payload that follow
    std::uint32_t pruefsumme = 0;
};

/// Decodes a header. Absent if it is none: the magic does not fit, or the payload is larger than adbNutzlast.
std::optional<AdbKopf> liesAdbKopf(const AdbKopfbytes& bytes);

/// The whole message, header and payload, as it goes over the wire. The checksum is always filled in: a peer
/// of a newer version does not look at it.
std::string adbNachricht(AdbBefehl befehl, std::uint32_t arg0, std::uint32_t arg1, std::string_view nutzlast);

/// The sum of all bytes.
std::uint32_t adbPruefsumme(std::string_view nutzlast);

} // namespace mobilsteg::probehandy
