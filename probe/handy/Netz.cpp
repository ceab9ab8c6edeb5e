#include "probe/handy/Netz.hpp"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <thread>

namespace mobilsteg::probehandy {

namespace {

sockaddr_in loopback(int port) {
    sockaddr_in stelle{};
    stelle.sin_family = AF_INET;
    stelle.sin_port = htons(static_cast<std::uint16_t>(port));
    stelle.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return stelle;
}

/// Small messages go back and forth: none may wait for the next one.
Deskriptor eingestellt(int nummer) {
    const int ja = 1;
    ::fcntl(nummer, F_SETFD, FD_CLOEXEC);
    ::setsockopt(nummer, IPPROTO_TCP, TCP_NODELAY, &ja, sizeof ja);
    return Deskriptor(nummer);
}

std::size_t liesEtwas(const Deskriptor& buchse, void* ziel, std::size_t hoechstens) {
    ssize_t menge = 0;
    do {
        menge = ::recv(buchse.nummer(), ziel, hoechstens, 0);
    } while (menge < 0 && errno == EINTR);
    return menge < 0 ? 0 : static_cast<std::size_t>(menge);
}

} // namespace

Deskriptor horche(int port) {
    Deskriptor horcher = eingestellt(::socket(AF_INET, SOCK_STREAM, 0));
    const int ja = 1;
    ::setsockopt(horcher.nummer(), SOL_SOCKET, SO_REUSEADDR, &ja, sizeof ja);
    const auto stelle = loopback(port);
    if (::bind(horcher.nummer(), reinterpret_cast<const sockaddr*>(&stelle), sizeof stelle) != 0 ||
        ::listen(horcher.nummer(), SOMAXCONN) != 0)
        return {};
    return horcher;
}

int portVon(const Deskriptor& horcher) {
    sockaddr_in stelle{};
    socklen_t laenge = sizeof stelle;
    ::getsockname(horcher.nummer(), reinterpret_cast<sockaddr*>(&stelle), &laenge);
    return ntohs(stelle.sin_port);
}

Deskriptor nimmVerbindungAn(const Deskriptor& horcher) {
    while (true) {
        const int nummer = ::accept(horcher.nummer(), nullptr, nullptr);
        if (nummer >= 0)
            return eingestellt(nummer);
        if (errno != EINTR && errno != ECONNABORTED) // out of descriptors: some will be free again
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
}

Deskriptor verbinde(int port) {
    Deskriptor buchse = eingestellt(::socket(AF_INET, SOCK_STREAM, 0));
    const auto ziel = loopback(port);
    if (::connect(buchse.nummer(), reinterpret_cast<const sockaddr*>(&ziel), sizeof ziel) != 0)
        return {};
    return buchse;
}

bool sende(const Deskriptor& buchse, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t menge = ::send(buchse.nummer(), bytes.data(), bytes.size(), 0);
        if (menge < 0 && errno != EINTR)
            return false;
        bytes.remove_prefix(menge < 0 ? 0 : static_cast<std::size_t>(menge));
    }
    return true;
}

bool liesGenau(const Deskriptor& buchse, void* ziel, std::size_t anzahl) {
    auto* stelle = static_cast<char*>(ziel);
    while (anzahl > 0) {
        const std::size_t menge = liesEtwas(buchse, stelle, anzahl);
        if (menge == 0)
            return false;
        stelle += menge;
        anzahl -= menge;
    }
    return true;
}

std::string liesAlles(const Deskriptor& buchse) {
    std::string text;
    for (std::string stueck; !(stueck = lies(buchse)).empty();)
        text += stueck;
    return text;
}

std::string lies(const Deskriptor& buchse) {
    std::string block(65'536, '\0');
    block.resize(liesEtwas(buchse, block.data(), block.size()));
    return block;
}

} // namespace mobilsteg::probehandy
