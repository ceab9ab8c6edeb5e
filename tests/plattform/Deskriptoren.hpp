#pragma once

#include "plattform/Dateien.hpp"

#include <fcntl.h>
#include <netinet/in.h>
#include <sys/resource.h>
#include <sys/socket.h>

#include <filesystem>
#include <iterator>
#include <stdexcept>
#include <vector>

namespace mobilsteg {

/// While it lives, exactly `frei` more descriptors can be opened, of 64 in all.
class Engpass {
public:
    explicit Engpass(std::ptrdiff_t frei) {
        ::getrlimit(RLIMIT_NOFILE, &vorher_);
        const rlimit knapp{64, vorher_.rlim_max};
        ::setrlimit(RLIMIT_NOFILE, &knapp);
        for (int nummer = 0; (nummer = ::open("/dev/null", O_RDONLY | O_CLOEXEC)) >= 0;)
            belegt_.emplace_back(nummer);
        if (std::ssize(belegt_) < frei)
            throw std::logic_error("zu viel offen für diese Probe");
        belegt_.erase(belegt_.end() - frei, belegt_.end());
    }
    ~Engpass() { ::setrlimit(RLIMIT_NOFILE, &vorher_); }
    Engpass(const Engpass&) = delete;
    Engpass& operator=(const Engpass&) = delete;

private:
    rlimit vorher_{};
    std::vector<Deskriptor> belegt_;
};

inline std::vector<int> offeneDeskriptoren() {
    std::vector<int> offene;
    for (const auto& eintrag : std::filesystem::directory_iterator("/dev/fd"))
        offene.push_back(std::stoi(eintrag.path().filename()));
    return offene;
}

/// How many sockets have `port` at the end that `frage` tells (`getsockname`, `getpeername`), and how many of
/// those a tool would inherit.
template <typename Frage>
std::pair<int, int> socketsMitPort(Frage frage, std::uint16_t port) {
    std::pair<int, int> zahlen;
    for (const int nummer : offeneDeskriptoren()) {
        sockaddr_in stelle{};
        socklen_t laenge = sizeof stelle;
        if (frage(nummer, reinterpret_cast<sockaddr*>(&stelle), &laenge) == 0 &&
            stelle.sin_port == htons(port)) {
            ++zahlen.first;
            zahlen.second += (::fcntl(nummer, F_GETFD) & FD_CLOEXEC) == 0 ? 1 : 0;
        }
    }
    return zahlen;
}

} // namespace mobilsteg
