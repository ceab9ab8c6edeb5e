#pragma once

#include "probe/handy/Befehle.hpp"

#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>
#include <asio/steady_timer.hpp>

#include <cstdint>
#include <functional>
#include <system_error>

namespace mobilsteg::probehandy {

/// The control port: every line that comes in is a command, and is answered before the next one is read.
class Steuerung {
public:
    /// beende is called once the answer to "ende" is out.
    Steuerung(asio::io_context& schleife, Befehle& befehle, std::function<void()> beende);

    /// Listens on the loopback address; 0: any free port.
    std::error_code oeffne(std::uint16_t port);

    std::uint16_t port() const { return port_; }

private:
    void nimmAn();

    Befehle& befehle_;
    std::function<void()> beende_;
    asio::ip::tcp::acceptor lauscher_;
    asio::steady_timer atempause_;
    std::uint16_t port_ = 0;
};

} // namespace mobilsteg::probehandy
