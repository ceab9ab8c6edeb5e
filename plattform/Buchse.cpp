#include "plattform/Buchse.hpp"

#include <fcntl.h>
#include <sys/socket.h>

#include <algorithm>

namespace mobilsteg {

void nichtVererben(int nummer) {
    ::fcntl(nummer, F_SETFD, FD_CLOEXEC);
}

#ifdef __linux__

Deskriptor naechsteVerbindung(int horcher) {
    return Deskriptor(::accept4(horcher, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
}

std::size_t schreibeZuletzt(int nummer, std::string_view bytes) {
    const ssize_t n = ::send(nummer, bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_MORE);
    return static_cast<std::size_t>(std::max<ssize_t>(n, 0));
}

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

std::size_t schreibeZuletzt(int nummer, std::string_view bytes) {
    const ssize_t n = ::send(nummer, bytes.data(), bytes.size(), 0);
    return static_cast<std::size_t>(std::max<ssize_t>(n, 0));
}

#endif

} // namespace mobilsteg
