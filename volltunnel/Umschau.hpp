#pragma once

#include <functional>
#include <map>
#include <set>
#include <string>
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
    std::set<std::pair<std::string, std::string>> gesichert; ///< name and server of those that go through
};

/// Decides which way the servers of VPNs go. A VPN that is connected keeps the way it has: it is never cut.
/// Servers of OpenVPN are remembered, because nobody tells them before it connects.
class Vpnwege {
public:
    Vpnwege(bool nurVPN, bool durch) : nurVPN_(nurVPN), durch_(nurVPN || durch) {}

    /// `lebt`: whether a connection to this address goes through the tunnel now.
    [[nodiscard]] Vpnbefund werte(const std::vector<Vpn>& vpns, const std::vector<Openvpn>& openvpn,
                                  const std::function<bool(const Adresse&)>& lebt);

private:
    bool nurVPN_, durch_;
    std::set<Adresse> gemerkt_;
};

/// What a running OpenVPN is connected to, as `lsof -Fn` has it, in one line. Only root sees the programs of
/// other users; which of it counts is not decided here. Blocks on the tools.
[[nodiscard]] std::string frageOpenvpn(const std::string& wurzel);

/// The connections in `lsof -Fn`, blanks for its line ends.
[[nodiscard]] std::vector<Openvpn> liesOpenvpn(std::string_view text);

/// Looks for the system's VPNs with `scutil`, without Tailscale, which looks after itself. Blocks on tools
/// and name servers, maybe long: for a queue of its own.
class Vpnsuche {
public:
    explicit Vpnsuche(const std::string& wurzel) : scutil_(wurzel + "/usr/sbin/scutil") {}
    [[nodiscard]] std::vector<Vpn> sieh();

private:
    [[nodiscard]] std::vector<Adresse> adressen(const std::string& server);

    std::string scutil_;
    std::vector<Vpn> letzte_;
    std::map<std::string, std::set<Adresse>> aufgeloest_; ///< every address that a name ever had
};

} // namespace mobilsteg::volltunnel
