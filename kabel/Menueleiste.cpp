#include "kabel/Menueleiste.hpp"

#include "plattform/Text.hpp"

#include <vector>

namespace mobilsteg {

namespace {

std::string symbol(const Zustand& z) {
    const bool faehrt = z.phase == Phase::Art::faehrt;
    if (z.profilIstVpn()) {
        if (!faehrt || !z.volltunnelLaeuft)
            return "shield.slash";
        return z.vpnsGesichert.empty() ? "shield" : "lock.shield.fill";
    }
    if (!faehrt)
        return "cable.connector.slash";
    return z.volltunnelLaeuft ? "tram.tunnel.fill" : "cable.connector";
}

std::string gleisKuerzel(const std::string& gleis) {
    const std::string art = gleis.starts_with("WLAN") ? "W" : "M";
    if (gleis.find("weg") != std::string::npos)
        return art + "✕";
    const auto worte = teile(gleis, ' ');
    return worte.size() < 2 ? art : art + std::string(worte[1]);
}

std::vector<std::string> stuecke(const Zustand& z) {
    std::vector<std::string> liste;
    if (!z.klasse.empty())
        liste.emplace_back(ersteZeichen(z.klasse, 2));
    constexpr std::string_view punkt = "·";
    if (const auto letzter = z.menge.rfind(punkt); letzter != std::string::npos)
        liste.emplace_back(ohneRandblanks(std::string_view(z.menge).substr(letzter + punkt.size())));
    if (!z.gleise.empty()) {
        std::vector<std::string> kuerzel;
        for (const auto& gleis : z.gleise)
            kuerzel.push_back(gleisKuerzel(gleis));
        liste.push_back(verbunden(kuerzel, " "));
    }
    if (z.volltunnelLaeuft) {
        if (z.profilIstVpn())
            liste.emplace_back(z.vpnsGesichert.empty() ? "kein VPN" : "VPN gesichert");
        else
            liste.emplace_back("Volltunnel");
    }
    return liste;
}

} // namespace

Menueleiste menueleiste(const Zustand& zustand, std::uint64_t rotation) {
    Menueleiste leiste{symbol(zustand), ""};
    if (!(zustand.phase == Phase::Art::faehrt))
        return leiste;
    const auto liste = stuecke(zustand);
    if (!liste.empty())
        leiste.kurz = liste[rotation % liste.size()];
    return leiste;
}

} // namespace mobilsteg
