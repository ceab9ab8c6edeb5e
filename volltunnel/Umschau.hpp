#pragma once

#include <asio/io_context.hpp>

#include <atomic>
#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "volltunnel/Paket.hpp"

namespace mobilsteg::volltunnel {

/// A VPN of the system's list.
struct Vpn {
    std::string name;
    std::vector<Adresse> server;
    bool verbunden = false;
};

/// The ends of a connection that a running OpenVPN has.
struct Openvpn {
    Adresse hier, server;
};

/// What follows from the VPNs there are.
struct Vpnbefund {
    /// The servers that need a road of their own: through the tunnel when only VPNs go there, beside it else.
    std::set<Adresse> wege;
    std::vector<std::pair<std::string, std::string>> gesichert; ///< name and server of those that go through
    bool operator==(const Vpnbefund&) const = default;
};

/// Decides which way the servers of VPNs go. A VPN that is connected keeps the way it has: it is never cut.
/// Servers of OpenVPN are remembered, because nobody tells them before it connects.
class Vpnwege {
public:
    Vpnwege(bool nurVPN, bool durch) : nurVPN_(nurVPN), durch_(nurVPN || durch) {}

    /// `lebt` tells whether a connection to an address goes through the tunnel now.
    [[nodiscard]] Vpnbefund werte(const std::vector<Vpn>& vpns, const std::vector<Openvpn>& openvpn,
                                  const std::function<bool(const Adresse&)>& lebt);

private:
    bool nurVPN_, durch_;
    std::set<Adresse> gemerkt_;
};

// Readers of the tools' texts; pure.

/// Name and "connected" of each VPN in `scutil --nc list`, without Tailscale, which looks after itself.
[[nodiscard]] std::vector<Vpn> liesVpnliste(std::string_view text);

/// The server in `scutil --nc show`, name or address; empty: none.
[[nodiscard]] std::string liesServer(std::string_view text);

/// The connections in `lsof -Fn`, blanks or line ends between them.
[[nodiscard]] std::vector<Openvpn> liesOpenvpn(std::string_view text);

/// Looks for the system's VPNs every three seconds on a thread of its own, because tools and name servers may
/// take long. `neues` runs on the context's thread, the first time as soon as there is a result.
class Umschau {
public:
    Umschau(asio::io_context& kontext, std::string wurzel, std::function<void(std::vector<Vpn>)> neues);
    ~Umschau();

private:
    [[nodiscard]] std::vector<Vpn> sieh();
    [[nodiscard]] std::vector<Adresse> adressen(const std::string& server);

    std::string wurzel_;
    std::map<std::string, std::set<Adresse>> aufgeloest_; ///< every address that a name ever had
    std::mutex schloss_;
    std::condition_variable wecker_;
    bool halt_ = false;
    std::thread faden_;
};

} // namespace mobilsteg::volltunnel
