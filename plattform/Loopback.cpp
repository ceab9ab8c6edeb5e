#include "plattform/Loopback.hpp"

#include "plattform/Dateien.hpp"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>

namespace mobilsteg {

void frageLoopback(std::uint16_t port, std::string_view frage, std::chrono::milliseconds frist,
                   const std::function<bool(std::string_view)>& nimm) {
    const auto ende = std::chrono::steady_clock::now() + frist;
    const Deskriptor buchse(::socket(AF_INET, SOCK_STREAM, 0));
    ::fcntl(buchse.nummer(), F_SETFD, FD_CLOEXEC);
    ::fcntl(buchse.nummer(), F_SETFL, O_NONBLOCK);
    const auto wirdBereit = [&](short wozu) {
        pollfd fall{buchse.nummer(), wozu, 0};
        const auto rest =
            std::chrono::ceil<std::chrono::milliseconds>(ende - std::chrono::steady_clock::now()).count();
        return rest > 0 && (::poll(&fall, 1, static_cast<int>(rest)) > 0 || errno == EINTR);
    };
    sockaddr_in ziel{};
    ziel.sin_family = AF_INET;
    ziel.sin_port = htons(port);
    ziel.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const int verbunden = ::connect(buchse.nummer(), reinterpret_cast<sockaddr*>(&ziel), sizeof ziel);
    if (verbunden != 0 && (errno != EINPROGRESS || !wirdBereit(POLLOUT)))
        return;
    // Fails, too, if nobody has accepted. So few bytes go in one piece; SIGPIPE is ignored by the program.
    if (::send(buchse.nummer(), frage.data(), frage.size(), 0) != static_cast<ssize_t>(frage.size()))
        return;
    std::array<char, 4096> block; // NOLINT(cppcoreguidelines-pro-type-member-init): recv() fills it
    while (wirdBereit(POLLIN)) {
        const ssize_t n = ::recv(buchse.nummer(), block.data(), block.size(), 0);
        const bool spaeter = n < 0 && (errno == EAGAIN || errno == EINTR);
        if (!spaeter && (n <= 0 || !nimm({block.data(), static_cast<std::size_t>(n)})))
            return;
    }
}

} // namespace mobilsteg
