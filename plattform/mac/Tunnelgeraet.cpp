#include "plattform/Tunnelgeraet.hpp"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/kern_control.h>
#include <sys/socket.h>
#include <sys/uio.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace mobilsteg {

namespace {

constexpr const char* steuerung = "com.apple.net.utun_control"; // <net/if_utun.h>, not in every SDK
constexpr int optionName = 2;
constexpr int kernsteuerung = 2; // AF_SYS_CONTROL and SYSPROTO_CONTROL of <sys/sys_domain.h>, likewise

} // namespace

std::optional<Tunnelgeraet> neuesTunnelgeraet() {
    Deskriptor datei(::socket(PF_SYSTEM, SOCK_DGRAM, kernsteuerung));
    ctl_info wer{};
    std::strcpy(wer.ctl_name, steuerung);
    if (!datei || ::ioctl(datei.nummer(), CTLIOCGINFO, &wer) != 0)
        return std::nullopt;
    sockaddr_ctl stelle{};
    stelle.sc_len = sizeof stelle;
    stelle.sc_family = AF_SYSTEM;
    stelle.ss_sysaddr = kernsteuerung;
    stelle.sc_id = wer.ctl_id;
    stelle.sc_unit = 0; // the next free one
    char name[32] = {};
    socklen_t laenge = sizeof name;
    if (::connect(datei.nummer(), reinterpret_cast<const sockaddr*>(&stelle), sizeof stelle) != 0 ||
        ::getsockopt(datei.nummer(), kernsteuerung, optionName, name, &laenge) != 0 ||
        ::fcntl(datei.nummer(), F_SETFL, O_NONBLOCK) != 0 ||
        ::fcntl(datei.nummer(), F_SETFD, FD_CLOEXEC) != 0)
        return std::nullopt;
    return Tunnelgeraet{std::move(datei), name};
}

// Before each packet stands its family, four bytes in network order.

std::optional<std::size_t> liesVomGeraet(int geraet, std::span<std::uint8_t> puffer) {
    std::uint8_t familie[4];
    const iovec teile[] = {{familie, sizeof familie}, {puffer.data(), puffer.size()}};
    const ssize_t n = ::readv(geraet, teile, 2);
    if (n > 0)
        return n > 4 ? static_cast<std::size_t>(n - 4) : 0;
    return n < 0 && (errno == EAGAIN || errno == EINTR) ? std::optional<std::size_t>(0) : std::nullopt;
}

void schreibAufGeraet(int geraet, std::span<const std::uint8_t> paket) {
    const std::uint8_t art = paket[0] >> 4 == 6 ? AF_INET6 : AF_INET;
    std::uint8_t familie[4] = {0, 0, 0, art};
    const iovec teile[] = {{familie, sizeof familie},
                           {const_cast<std::uint8_t*>(paket.data()), paket.size()}}; // writev changes nothing
    (void)!::writev(geraet, teile, 2);
}

std::size_t groesstesPaket() {
    return 16'000;
}

Wegewerkzeug wegewerkzeug() {
    return Wegewerkzeug::route;
}

bool legeRechteAb(uid_t benutzer, gid_t gruppe) {
    // The group first, while there is the right to; zero groups would leave the first as it is.
    return ::setgroups(1, &gruppe) == 0 && ::setgid(gruppe) == 0 && ::setuid(benutzer) == 0 &&
           (benutzer == 0 || ::setuid(0) != 0);
}

} // namespace mobilsteg
