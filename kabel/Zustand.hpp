#pragma once

#include "kabel/Phase.hpp"

#include <string>
#include <vector>

namespace mobilsteg {

/// A browser found on the Mac.
struct BrowserFund {
    std::string name;
    std::string bundle;     ///< its package identifier
    bool fahrtwind = false; ///< whether our extension is in one of its profiles
    std::string appPfad;

    bool operator==(const BrowserFund&) const = default;
};

/// Everything the user interface shows. Lives on the main queue; changed only through `Zustandsspeicher`.
struct Zustand {
    Phase phase;
    std::string handy;
    std::string klasse;
    bool notlage = false;
    std::vector<std::string> gleise;
    std::string menge;
    std::string rettung;
    std::string austritt;
    bool proxyGesetzt = false;
    std::string meldung;
    bool proxyAutomatisch = true;
    bool experte = false;
    bool volltunnelAn = false;
    bool volltunnelLaeuft = false;
    std::string profil = "reise";
    bool vpnDurch = false;
    bool nurVPN = false;
    std::vector<BrowserFund> browserOhne;
    bool browserHinweisWeg = false;
    std::string symbol = "cable.connector.slash";
    std::string kurz;
    std::vector<std::string> vpnsGesichert;
    std::vector<std::string> vpnsOffen;
    std::vector<std::string> vorbei;
    std::vector<std::string> durch;

    /// Any other text than "vpn", an old program's for example, is the travel profile.
    [[nodiscard]] bool profilIstVpn() const { return profil == "vpn"; }

    bool operator==(const Zustand&) const = default;
};

} // namespace mobilsteg
