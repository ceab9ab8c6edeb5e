#pragma once

#include "plattform/Dateien.hpp"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>

#include <cerrno>
#include <string>
#include <string_view>

namespace mobilsteg {

inline sockaddr_in loopback(int port) {
    sockaddr_in stelle{};
    stelle.sin_family = AF_INET;
    stelle.sin_port = htons(static_cast<std::uint16_t>(port));
    stelle.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return stelle;
}

/// A connection to a server on loopback. It gives up reading after a while, long before the status service's
/// own limit.
class Klient {
public:
    explicit Klient(int port) : socket_(::socket(AF_INET, SOCK_STREAM, 0)) {
        const timeval geduld{4, 0};
        stelleEin(SOL_SOCKET, SO_RCVTIMEO, geduld);
        stelleEin(IPPROTO_TCP, TCP_NODELAY, 1); // what is sent apart travels apart
        const auto ziel = loopback(port);
        do // again when a fuzzer's clock interrupts it
            verbunden =
                ::connect(socket_.nummer(), reinterpret_cast<const sockaddr*>(&ziel), sizeof ziel) == 0;
        while (!verbunden && errno == EINTR);
    }

    void sende(std::string_view bytes) const {
        (void)!::send(socket_.nummer(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
    }
    void sagtNichtsMehr() const { ::shutdown(socket_.nummer(), SHUT_WR); }

    /// Everything up to the end of the connection.
    [[nodiscard]] std::string lies() const {
        std::string alles;
        char block[4096];
        ssize_t n = 0;
        while ((n = ::recv(socket_.nummer(), block, sizeof block, 0)) > 0 || (n < 0 && errno == EINTR))
            alles.append(block, n > 0 ? static_cast<std::size_t>(n) : 0);
        return n == 0 ? alles : alles + "[kein Ende: " + std::to_string(errno) + "]";
    }

    /// Whether the server has ended the connection by now.
    [[nodiscard]] bool beendet() const {
        char byte = 0;
        return ::recv(socket_.nummer(), &byte, 1, MSG_PEEK | MSG_DONTWAIT) == 0;
    }

    /// Whether the server answers unread bytes with a reset; waits a moment for it.
    [[nodiscard]] bool abgerissen() const {
        pollfd fall{socket_.nummer(), 0, 0};
        return ::poll(&fall, 1, 30) > 0 && (fall.revents & POLLERR) != 0;
    }

    /// Leaves with a reset instead of a farewell.
    void reisseAb() {
        stelleEin(SOL_SOCKET, SO_LINGER, linger{1, 0});
        socket_.schliesse();
    }

    bool verbunden = false;

private:
    template <typename Wert>
    void stelleEin(int ebene, int was, const Wert& wert) const {
        ::setsockopt(socket_.nummer(), ebene, was, &wert, sizeof wert);
    }

    Deskriptor socket_;
};

} // namespace mobilsteg
