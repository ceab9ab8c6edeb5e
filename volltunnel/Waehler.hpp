#pragma once

#include <asio/io_context.hpp>

#include <functional>

#include "volltunnel/Tabelle.hpp"

namespace mobilsteg::volltunnel {

/// What came of a connection through the proxy.
enum class Ausgang {
    verbunden,
    nein,   ///< the target itself refused: the way there works
    kaputt, ///< the proxy is not there, refused or broke off
    stumm,  ///< the proxy said not a word in time
    haengt  ///< the proxy is there but the target did not answer in time: a radio gap, or nobody there
};

/// Connects to `ziel` through the SOCKS5 proxy, on the context's thread. `fertig` gets the connection,
/// non-blocking; it is closed unless `verbunden`.
void waehle(asio::io_context& kontext, const Stelle& proxy, const Stelle& ziel,
            std::function<void(Ausgang, asio::ip::tcp::socket)> fertig);

/// Decides when the tunnel leads nowhere: connections were tried and none came through for 15 s. One success
/// clears the clock, and so does a time in which nothing was tried.
class Ausfall {
public:
    static constexpr std::chrono::seconds geduld{15};

    /// One connection that was tried from `beginn` to `jetzt`. True: everything is to be taken back.
    [[nodiscard]] bool melde(Ausgang ausgang, Zeit beginn, Zeit jetzt);

private:
    std::optional<Zeit> seit_; ///< of the first failure without a success since
    Zeit letzter_, erfolg_;
};

} // namespace mobilsteg::volltunnel
