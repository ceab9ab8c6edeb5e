#pragma once

#include "plattform/Dateien.hpp"

#include <fcntl.h>
#include <netinet/in.h>
#include <sys/resource.h>
#include <sys/socket.h>

#include <functional>
#include <vector>

namespace mobilsteg {

/// Runs `was` while exactly `frei` more descriptors can be opened, of 64 in all.
inline void imEngpass(std::size_t frei, const std::function<void()>& was) {
    rlimit vorher{};
    ::getrlimit(RLIMIT_NOFILE, &vorher);
    const rlimit knapp{64, vorher.rlim_max};
    ::setrlimit(RLIMIT_NOFILE, &knapp);
    std::vector<Deskriptor> belegt;
    while (belegt.emplace_back(::open("/dev/null", O_RDONLY | O_CLOEXEC)))
        continue;
    belegt.resize(belegt.size() - 1 - frei); // throws when too much is open for this test
    was();
    ::setrlimit(RLIMIT_NOFILE, &vorher);
}

/// How many sockets with `port` at the end that `frage` tells (`getsockname`, `getpeername`) a tool would
/// inherit.
int vererbbareSockets(auto frage, std::uint16_t port) {
    int anzahl = 0;
    for (int nummer = 0; nummer < 1'000; ++nummer) {
        sockaddr_in stelle{};
        socklen_t laenge = sizeof stelle;
        anzahl += frage(nummer, reinterpret_cast<sockaddr*>(&stelle), &laenge) == 0 &&
                  stelle.sin_port == htons(port) && (::fcntl(nummer, F_GETFD) & FD_CLOEXEC) == 0;
    }
    return anzahl;
}

} // namespace mobilsteg
