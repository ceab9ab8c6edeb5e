#pragma once

#include "plattform/Lauf.hpp"
#include "plattform/Orte.hpp"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace mobilsteg {

/// Which VPNs the Mac has up, and how its programs' connections run.
class Erhebung {
public:
    /// `tunnelbericht` is the file in which the full tunnel's helper reports the VPNs that it carries.
    Erhebung(Laeufer laeufer, Orte orte, std::string tunnelbericht);

    struct Vpns {
        std::vector<std::string> gesichert; ///< carried by the tunnel, with their servers where known
        std::vector<std::string> offen;     ///< connected outside it

        bool operator==(const Vpns&) const = default;
    };

    /// Looks for VPNs; remembers the secured ones' addresses in `vpnZieleIntern`. Blocks up to 8 s; work
    /// queue only.
    [[nodiscard]] Vpns vpns(bool tunnelLaeuft);

    /// Addresses of the VPN servers found last, unique and ascending. Work queue only.
    [[nodiscard]] const std::vector<std::string>& vpnZieleIntern() const { return vpnZieleIntern_; }

    struct Verbindungen {
        std::vector<std::string> durch;  ///< programs whose connections take the proxy, most first, at most 8
        std::vector<std::string> vorbei; ///< those that bypass it

        bool operator==(const Verbindungen&) const = default;
    };

    /// Counts the open connections. Blocks for up to 8 s; work queue only.
    [[nodiscard]] Verbindungen verbindungen() const;

    // The reading of foreign texts. Pure; any bytes may come.

    struct Tunnelbericht {
        std::vector<std::string> eintraege;
        std::vector<std::string> namen; ///< the VPNs' bare names
    };
    [[nodiscard]] static Tunnelbericht liesTunnelbericht(std::string_view json);
    /// Names of the connected services in `scutil --nc list`, without Tailscale and without `bekannte`.
    [[nodiscard]] static std::vector<std::string> liesDienste(std::string_view ausgabe,
                                                              const std::vector<std::string>& bekannte);
    [[nodiscard]] static Verbindungen liesVerbindungen(std::string_view lsof);
    /// What looks like an IPv4 address at the entries' ends.
    [[nodiscard]] static std::vector<std::string> liste_ips(const std::vector<std::string>& eintraege);

private:
    Laeufer laeufer_;
    Orte orte_;
    std::string tunnelbericht_;
    std::vector<std::string> vpnZieleIntern_;
};

} // namespace mobilsteg
