#include "ansicht/Inhalt.hpp"

#include <set>
#include <string_view>

namespace mobilsteg {

namespace {

/// Rows are told apart by their text: an equal name makes no second row.
std::vector<std::string> ohneDoppelte(const std::vector<std::string>& namen) {
    std::set<std::string_view> gesehen;
    std::vector<std::string> einmal;
    for (const auto& name : namen)
        if (gesehen.insert(name).second)
            einmal.push_back(name);
    return einmal;
}

Satz hinweis(const char* text) {
    return {text, Schrift::kleinste, Farbe::sekundaer};
}

} // namespace

Baum vpnBlock(const Zustand& z) {
    Baum b;
    for (const auto& name : ohneDoppelte(z.vpnsGesichert))
        b.emplace_back(Symbolzeile{"lock.shield.fill", Farbe::gruen, name, "gesichert"});
    if (!z.vpnsGesichert.empty())
        b.emplace_back(hinweis("Fällt WLAN oder Mobilfunk aus, läuft der VPN auf dem anderen Weg weiter."));
    for (const auto& name : ohneDoppelte(z.vpnsOffen))
        b.emplace_back(Symbolzeile{"shield.slash", Farbe::orange, name,
                                   z.volltunnelLaeuft ? "noch nicht gesichert" : "ungesichert"});
    if (!z.vpnsOffen.empty() && !z.volltunnelLaeuft)
        b.emplace_back(hinweis(z.phase == Phase::Art::faehrt
                                   ? "Funkloch-Schutz einschalten, dann fährt der VPN durch das Handy."
                                   : "Sobald das Handy am Kabel freigibt, fährt der VPN durch das Handy."));
    if (z.vpnsGesichert.empty() && z.vpnsOffen.empty())
        b.emplace_back(Satz{z.volltunnelLaeuft
                                ? "Kein VPN verbunden — verbinden Sie Ihren VPN wie gewohnt, er fährt "
                                  "dann durch das Handy."
                                : "Kein VPN verbunden.",
                            Schrift::klein, Farbe::sekundaer});
    return b;
}

} // namespace mobilsteg
