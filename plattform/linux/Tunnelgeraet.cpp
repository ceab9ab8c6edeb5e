#include "plattform/Tunnelgeraet.hpp"

#include <fcntl.h>
#include <grp.h>
#include <linux/if.h>
#include <linux/if_tun.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace mobilsteg {

std::optional<Tunnelgeraet> neuesTunnelgeraet() {
    Deskriptor datei(::open("/dev/net/tun", O_RDWR | O_NONBLOCK | O_CLOEXEC));
    ifreq anfrage{};
    std::strcpy(anfrage.ifr_name, "mobilsteg%d");
    anfrage.ifr_flags = IFF_TUN | IFF_NO_PI;
    if (!datei || ::ioctl(datei.nummer(), TUNSETIFF, &anfrage) != 0)
        return std::nullopt;
    return Tunnelgeraet{std::move(datei), anfrage.ifr_name};
}

std::optional<std::size_t> liesVomGeraet(int geraet, std::span<std::uint8_t> puffer) {
    const ssize_t n = ::read(geraet, puffer.data(), puffer.size());
    if (n >= 0)
        return static_cast<std::size_t>(n);
    return errno == EAGAIN || errno == EINTR ? std::optional<std::size_t>(0) : std::nullopt;
}

void schreibAufGeraet(int geraet, std::span<const std::uint8_t> paket) {
    (void)!::write(geraet, paket.data(), paket.size());
}

std::size_t groesstesPaket() {
    return 65'000;
}

Wegewerkzeug wegewerkzeug() {
    return Wegewerkzeug::ip;
}

bool legeRechteAb(uid_t benutzer, gid_t gruppe) {
    return ::setgroups(0, nullptr) == 0 && ::setresgid(gruppe, gruppe, gruppe) == 0 &&
           ::setresuid(benutzer, benutzer, benutzer) == 0 && ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0;
}

} // namespace mobilsteg
