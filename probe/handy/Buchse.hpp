#pragma once

#include <asio/ip/address_v4.hpp>
#include <asio/ip/tcp.hpp>

#include <fcntl.h>

#include <cstdint>
#include <system_error>

namespace mobilsteg::probehandy {

/// Keeps a socket out of programs that this one might start: Asio opens its sockets inheritable.
inline void behalteFuerUns(asio::ip::tcp::socket::native_handle_type nummer) {
    ::fcntl(nummer, F_SETFD, FD_CLOEXEC);
}

inline asio::ip::tcp::endpoint rueckschleife(std::uint16_t port) {
    return {asio::ip::address_v4::loopback(), port};
}

/// Listens on the loopback address; port 0: any free one. The acceptor is closed again on failure.
inline std::error_code lausche(asio::ip::tcp::acceptor& lauscher, std::uint16_t port) {
    std::error_code fehler;
    lauscher.open(asio::ip::tcp::v4(), fehler);
    if (fehler) {
        return fehler;
    }
    behalteFuerUns(lauscher.native_handle());
    lauscher.set_option(asio::socket_base::reuse_address(true), fehler);
    lauscher.bind(rueckschleife(port), fehler);
    if (!fehler) {
        lauscher.listen(asio::socket_base::max_listen_connections, fehler);
    }
    if (fehler) {
        std::error_code egal;
        lauscher.close(egal);
    }
    return fehler;
}

} // namespace mobilsteg::probehandy
