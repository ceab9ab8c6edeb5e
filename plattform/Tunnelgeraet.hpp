#pragma once

#include "plattform/Dateien.hpp"

#include <sys/types.h>

#include <cstdint>
#include <span>

namespace mobilsteg {

/// A network device whose packets this program reads and writes. It lives as long as the descriptor, in
/// whichever process; its routes go with it. Non-blocking.
struct Tunnelgeraet {
    Deskriptor datei;
    std::string name;
};

/// Needs administrator rights. Absent: `errno` tells why.
[[nodiscard]] std::optional<Tunnelgeraet> neuesTunnelgeraet();

/// One packet into `puffer`, its length; 0: none is there now. Absent: the device is gone.
[[nodiscard]] std::optional<std::size_t> liesVomGeraet(int geraet, std::span<std::uint8_t> puffer);

/// Gives one packet to the system. It may be dropped, like any packet.
void schreibAufGeraet(int geraet, std::span<const std::uint8_t> paket);

/// The longest packet that the device should carry.
[[nodiscard]] std::size_t groesstesPaket();

/// With which tools this system sets its addresses and routes.
enum class Wegewerkzeug {
    ip,   ///< /sbin/ip
    route ///< /sbin/ifconfig and /sbin/route
};
[[nodiscard]] Wegewerkzeug wegewerkzeug();

/// Makes this process the user's, for good, with no other group and no way to new rights. False: it is not.
[[nodiscard]] bool legeRechteAb(uid_t benutzer, gid_t gruppe);

} // namespace mobilsteg
