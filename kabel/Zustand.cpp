#include "kabel/Zustand.hpp"

#include "plattform/Text.hpp"

#include <algorithm>
#include <utility>

namespace mobilsteg {

namespace {

std::string symbol(const Zustand& z) {
    const bool faehrt = z.phase == Phase::Art::faehrt;
    const bool tunnel = faehrt && z.volltunnelLaeuft;
    if (z.profilIstVpn())
        return !tunnel ? "shield.slash" : z.vpnsGesichert.empty() ? "shield" : "lock.shield.fill";
    return tunnel ? "tram.tunnel.fill" : faehrt ? "cable.connector" : "cable.connector.slash";
}

std::string gleisKuerzel(const std::string& gleis) {
    const std::string art = gleis.starts_with("WLAN") ? "W" : "M";
    if (gleis.find("weg") != std::string::npos)
        return art + "✕";
    auto worte = teile(gleis, ' ');
    std::erase(worte, "·");
    return worte.size() < 2 ? art : art + std::string(worte[1]);
}

std::vector<std::string> stuecke(const Zustand& z) {
    std::vector<std::string> liste;
    if (!z.klasse.empty())
        liste.emplace_back(ersteZeichen(z.klasse, 2));
    constexpr std::string_view punkt = "·";
    if (const auto letzter = z.menge.rfind(punkt); letzter != std::string::npos)
        liste.emplace_back(ohneRandblanks(std::string_view(z.menge).substr(letzter + punkt.size())));
    std::vector<std::string> kuerzel;
    std::transform(z.gleise.begin(), z.gleise.end(), std::back_inserter(kuerzel), gleisKuerzel);
    if (!kuerzel.empty())
        liste.push_back(verbunden(kuerzel, " "));
    if (z.volltunnelLaeuft)
        liste.emplace_back(!z.profilIstVpn()         ? "Volltunnel"
                           : z.vpnsGesichert.empty() ? "kein VPN"
                                                     : "VPN gesichert");
    return liste;
}

} // namespace

Phase Phase::proxyFehler(std::string grund) {
    Phase phase(Art::proxyFehler);
    phase.grund = std::move(grund);
    return phase;
}

std::string Phase::text() const {
    static constexpr std::pair<Art, const char*> texte[] = {
        {Art::start, "Starte …"},
        {Art::keinAdb, "adb nicht gefunden — Android-Platform-Tools installieren (brew install --cask "
                       "android-platform-tools)"},
        {Art::keinHandy, "Kein Handy am Kabel — USB-Debugging an?"},
        {Art::nichtAutorisiert, "Am Handy „USB-Debugging zulassen“ bestätigen"},
        {Art::weitergabeAus, "In Mobilsteg: 2. oder 1. Klasse, Weitergabe an, Losfahren"},
        {Art::wartetAufHandy, "Warte auf das Ja am Handy …"},
        {Art::abgelehnt, "Am Handy abgelehnt"},
        {Art::pruefung, "Prüfe den Weg durch das Handy …"},
        {Art::faehrt, "Fährt mit"},
        {Art::beendet, "Beendet"},
    };
    for (const auto& [a, text] : texte)
        if (a == art)
            return text;
    return grund;
}

Lage zeigbar(Lage lage) {
    for (auto* text : {&lage.phase.grund, &lage.handy, &lage.austritt, &lage.meldung})
        *text = einzeilig(*text);
    for (auto* liste : {&lage.gleise, &lage.vpnsGesichert, &lage.vpnsOffen, &lage.vorbei, &lage.durch})
        for (auto& text : *liste)
            text = einzeilig(text);
    return lage;
}

Menueleiste menueleiste(const Zustand& zustand, std::uint64_t rotation) {
    Menueleiste leiste{symbol(zustand), ""};
    if (const auto liste = stuecke(zustand); zustand.phase == Phase::Art::faehrt && !liste.empty())
        leiste.kurz = liste[rotation % liste.size()];
    return leiste;
}

void Zustandsspeicher::veroeffentliche(Aenderung aenderung) {
    haupt_.async([this, aenderung = std::move(aenderung)] { aendere(aenderung); });
}

void Zustandsspeicher::aendere(const Aenderung& aenderung) {
    aenderung(zustand_);
    if (meldungBestellt_)
        return;
    // The report goes behind the changes that wait already, so that a tick's burst is told once.
    meldungBestellt_ = true;
    haupt_.async([this] { melde(); });
}

void Zustandsspeicher::melde() {
    meldungBestellt_ = false;
    if (beobachter_)
        beobachter_(zustand_);
}

} // namespace mobilsteg
