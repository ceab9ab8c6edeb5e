#pragma once

#include "plattform/Dateien.hpp"

#include <fcntl.h>
#include <netinet/in.h>
#include <sys/resource.h>
#include <sys/socket.h>

#include <algorithm>
#include <filesystem>
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

inline std::vector<int> offeneDeskriptoren() {
    std::vector<int> offene;
    for (const auto& eintrag : std::filesystem::directory_iterator("/dev/fd"))
        offene.push_back(std::stoi(eintrag.path().filename()));
    return offene;
}

/// How many sockets with `port` at the end that `frage` tells (`getsockname`, `getpeername`) a tool would
/// inherit.
template <typename Frage>
int vererbbareSockets(Frage frage, std::uint16_t port) {
    return static_cast<int>(std::ranges::count_if(offeneDeskriptoren(), [&](int nummer) {
        sockaddr_in stelle{};
        socklen_t laenge = sizeof stelle;
        return frage(nummer, reinterpret_cast<sockaddr*>(&stelle), &laenge) == 0 &&
               stelle.sin_port == htons(port) && (::fcntl(nummer, F_GETFD) & FD_CLOEXEC) == 0;
    }));
}

} // namespace mobilsteg
