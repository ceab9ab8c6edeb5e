#include "kabel/Zustand.hpp"

#include "plattform/Text.hpp"

#include <utility>

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

Phase Phase::proxyFehler(std::string grund) {
    Phase phase(Art::proxyFehler);
    phase.grund = std::move(grund);
    return phase;
}

std::string Phase::text() const {
    switch (art) {
    case Art::proxyFehler:
        return grund;
    case Art::start:
        return "Starte …";
    case Art::keinAdb:
        return "adb nicht gefunden — Android-Platform-Tools installieren (brew install --cask "
               "android-platform-tools)";
    case Art::keinHandy:
        return "Kein Handy am Kabel — USB-Debugging an?";
    case Art::nichtAutorisiert:
        return "Am Handy „USB-Debugging zulassen“ bestätigen";
    case Art::weitergabeAus:
        return "In Mobilsteg: 2. oder 1. Klasse, Weitergabe an, Losfahren";
    case Art::wartetAufHandy:
        return "Warte auf das Ja am Handy …";
    case Art::abgelehnt:
        return "Am Handy abgelehnt";
    case Art::pruefung:
        return "Prüfe den Weg durch das Handy …";
    case Art::faehrt:
        return "Fährt mit";
    }
    return "";
}

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
