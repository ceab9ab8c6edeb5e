#pragma once

#include "probe/handy/AdbVerbindung.hpp"
#include "probe/handy/Handyzustand.hpp"

#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>
#include <asio/steady_timer.hpp>

#include <cstdint>
#include <memory>
#include <system_error>
#include <vector>

namespace mobilsteg::probehandy {

/// The phone as adb finds it: a loopback port that adb servers connect to, and their connections.
class AdbGeraet {
public:
    AdbGeraet(asio::io_context& schleife, const Handyzustand& zustand, Dienstwahl dienste);

    /// Chooses the port the phone keeps for its life, and listens on it. 0: any free one. Fails with
    /// address_in_use if the port is taken.
    std::error_code oeffne(std::uint16_t port);

    /// Listens again on the same port, if it does not already.
    std::error_code oeffneWieder();

    /// Stops listening; connections stay.
    void lauscheNichtMehr();

    /// Hangs up on every adb server.
    void trenneAlle();

    void kappeStroeme();

    /// The person has agreed: whoever waits with an offered key is let in.
    void gibFrei();

    std::uint16_t port() const { return port_; }
    bool lauscht() const { return lauscher_.is_open(); }
    /// At least one adb server is connected, authorised or not.
    bool verbunden() const;
    std::size_t offeneStroeme() const;

private:
    void haltePlatz();
    void nimmAn();
    void vergiss(const AdbVerbindung* verbindung);

    const Handyzustand& zustand_;
    Dienstwahl dienste_;
    asio::ip::tcp::acceptor lauscher_;
    asio::ip::tcp::socket platzhalter_;
    asio::steady_timer atempause_;
    std::uint16_t port_ = 0;
    std::vector<std::shared_ptr<AdbVerbindung>> verbindungen_;
};

} // namespace mobilsteg::probehandy
