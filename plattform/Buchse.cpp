#include "plattform/Buchse.hpp"

#include <fcntl.h>
#include <sys/socket.h>

#include <algorithm>
#include <iterator>

namespace mobilsteg {

void nichtVererben(int nummer) {
    ::fcntl(nummer, F_SETFD, FD_CLOEXEC);
}

#ifdef __linux__

Deskriptor naechsteVerbindung(int horcher) {
    return Deskriptor(::accept4(horcher, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
}

// Held back until the end of the direction, which then travels in the same packet.
constexpr int sendeart = MSG_NOSIGNAL | MSG_MORE;

#else

Deskriptor naechsteVerbindung(int horcher) {
    Deskriptor verbindung(::accept(horcher, nullptr, nullptr));
    if (verbindung) {
        nichtVererben(verbindung.nummer());
        ::fcntl(verbindung.nummer(), F_SETFL, O_NONBLOCK);
        const int ja = 1;
        ::setsockopt(verbindung.nummer(), SOL_SOCKET, SO_NOSIGPIPE, &ja, sizeof ja);
    }
    return verbindung;
}

constexpr int sendeart = 0;

#endif

std::size_t schreibeZuletzt(int nummer, std::string_view bytes) {
    const ssize_t n = ::send(nummer, bytes.data(), bytes.size(), sendeart);
    if (n == std::ssize(bytes))
        ::shutdown(nummer, SHUT_WR);
    return static_cast<std::size_t>(std::max<ssize_t>(n, 0));
}

} // namespace mobilsteg
