// What must hold whatever happens. Each promise is one function; the first broken one ends the run.

#include "plattform/Dateien.hpp"
#include "plattform/Text.hpp"
#include "tests/simulation/Sturmwelt.hpp"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <utility>

namespace mobilsteg {

void Sturmwelt::verletzt(const std::string& versprechen) {
    if (!verstoss_.empty())
        return;
    verstoss_ = versprechen;
    erzaehle("VERLETZT: " + versprechen);
}

namespace {

bool traegt(const Modellhandy& handy) {
    return handy.zustand == "device" && handy.teilt && handy.entscheid == "erlaubt";
}

} // namespace

bool Sturmwelt::wegGueltig() const {
    const auto erstes =
        std::find_if(handys.begin(), handys.end(), [](const auto& h) { return h.zustand == "device"; });
    return erstes != handys.end() && traegt(*erstes);
}

/// On the work queue, right when a tick has written its document.
void Sturmwelt::amTickende() {
    ++zaehler_.ticks;
    ++ticksOhneStoerung_;
    if (luege_ == Luege::altesDokument && zaehler_.ticks % 7 == 0)
        standdienst.dokument =
            R"({"phase":"Fährt mit","faehrt":true,"austritt":"203.0.113.7","proxy_gesetzt":true})";

    const auto dokument = nlohmann::json::parse(standdienst.dokument, nullptr, false);
    if (dokument.is_discarded())
        return verletzt("das Dokument ist JSON");
    if (luege_ != Luege::altesDokument &&
        ordner.lies("/heim/Library/Application Support/Mobilsteg Bordlotse/stand.json") !=
            standdienst.dokument)
        verletzt("die Datei gleicht dem, was der Dienst ausliefert");
    // A list that came late, or a forward that could not be moved, may still lead to a phone that is no
    // longer the first one, and carries all the same.
    const bool getragen = std::any_of(handys.begin(), handys.end(), [&](const auto& h) {
        return forwards.contains(socksPort) && h.serial == forwards[socksPort] && traegt(h);
    });
    if (ticksOhneWeg_ >= 0)
        ticksOhneWeg_ = getragen ? 0 : ticksOhneWeg_ + 1;
    ticksOhneBeweis_ = dokument.value("austritt", "").empty() ? ticksOhneBeweis_ + 1 : 0;
    if (const auto phase = dokument.value("phase", ""); phase != std::exchange(dokumentPhase_, phase))
        erzaehle("Tick: " + phase);
    dokumentAustritt_ = dokument.value("austritt", "");
    dokumentProxy_ = dokument.value("proxy_gesetzt", false);
    nachTick_ = true;
    if (dokumentAustritt_.empty() || ticksOhneWeg_ >= 2)
        bewiesenBis_ = std::min(bewiesenBis_, welt.jetzt());
    if (dokument.value("faehrt", false)) {
        ++zaehler_.fahrten;
        faehrtNurAufBewiesenemWeg(dokumentPhase_, dokumentAustritt_);
    }
    if (dokumentProxy_ && !socksAn[dokument.value("dienst", "")] && luege_ != Luege::altesDokument)
        verletzt("wo der Stand einen Proxy nennt, ist einer");
    proxyNieLaengerAlsZweiTicksOhneWeg();
    tunnelNieLaengerAlsZweiTicksOhneWeg();
}

void Sturmwelt::faehrtNurAufBewiesenemWeg(const std::string& phase, const std::string& austritt) {
    if (phase != "Fährt mit" || austritt.empty())
        verletzt("„Fährt mit“ nur mit Austrittsadresse");
    // The tick under way when the way was lost may still end well.
    if (ticksOhneWeg_ >= 2)
        verletzt("„Fährt mit“ nur, solange das Handy teilt und erlaubt");
}

void Sturmwelt::proxyNieLaengerAlsZweiTicksOhneWeg() {
    const bool an = std::any_of(socksAn.begin(), socksAn.end(), [](const auto& s) { return s.second; });
    if (an && std::max(ticksOhneWeg_, ticksOhneBeweis_) >= 2 && ticksOhneStoerung_ >= 2)
        verletzt("zwei Ticks nach dem Verlust des Weges ist der Proxy aus");
}

/// A tick takes down the helper that it meets; only one that comes up at that moment sees the next.
void Sturmwelt::tunnelNieLaengerAlsZweiTicksOhneWeg() {
    const bool vorher = std::exchange(marke_, existiert(stoppPfad() + ".laeuft"));
    if (vorher && marke_ && ticksOhneWeg_ >= 2)
        verletzt("zwei Ticks nach dem Verlust des Weges ist der Tunnel aus");
}

void Sturmwelt::nachAuftrag() {
    if (meisteHelfer > 1)
        verletzt("nie lebt mehr als ein Helfer");
    if (!kabel || !welt.ruht())
        return;
    standGleichtZustand();
    andereWegeSindAufgeschrieben();
    gespeichertIstWasGesetztWurde();
}

/// Only right after a tick: a click or a started tunnel may change the state before the next document.
void Sturmwelt::standGleichtZustand() {
    if (!nachTick_ || offeneKlicks_ > 0)
        return;
    nachTick_ = false;
    ohneVerbindungKeineWerte();
    const auto& z = kabel->speicher().zustand();
    if (z.phase.text() != dokumentPhase_ || z.austritt != dokumentAustritt_ ||
        z.proxyGesetzt != dokumentProxy_)
        verletzt("der Stand gleicht dem Zustand: " + dokumentPhase_ + "/" + z.phase.text() + ", " +
                 dokumentAustritt_ + "/" + z.austritt);
}

void Sturmwelt::ohneVerbindungKeineWerte() {
    if (luege_ == Luege::alteAnzeige && zaehler_.ticks % 7 == 0)
        kabel->speicher().aendere([](Zustand& z) { z.klasse = "2. Klasse"; });
    const auto& z = kabel->speicher().zustand();
    const bool faehrt = z.phase == Phase::Art::faehrt || z.phase == Phase::Art::pruefung ||
                        z.phase.art == Phase::Art::proxyFehler;
    if (!faehrt && !(z.austritt + z.klasse + z.rettung + verbunden(z.gleise, "")).empty())
        verletzt("ohne Verbindung zeigt nichts mehr auf sie: " + z.phase.text());
}

void Sturmwelt::gespeichertIstWasGesetztWurde() {
    for (const auto& [schluessel, wert] : gesetzt_)
        if (const auto stehender = einstellungen.werte.find(schluessel);
            stehender == einstellungen.werte.end() || stehender->second != wert)
            return verletzt("was der Benutzer setzt, steht gespeichert: " + schluessel);
}

void Sturmwelt::keineZweiGleichenZeilen() {
    constexpr std::size_t zeitstempel = 21;
    const std::string text = ordner.lies("/heim/Library/Logs/MobilstegBordlotse.log");
    std::string_view vorige;
    for (const auto zeile :
         teile(std::string_view(text).substr(std::min(lebensbeginn_, text.size())), '\n')) {
        const auto meldung = zeile.substr(std::min(zeitstempel, zeile.size()));
        if (meldung == vorige)
            return verletzt("keine zwei gleichen Zeilen nacheinander: " + std::string(meldung));
        vorige = meldung;
    }
}

/// Or a later run, which finds the usual port free, would not know of them.
void Sturmwelt::andereWegeSindAufgeschrieben() {
    const auto zeilen = einstellungen.text("kabel.gastport").value_or("");
    for (const auto& [port, serial] : forwards)
        if (port != socksPort && port != gastPortAmHandy &&
            zeilen.find(std::to_string(port)) == std::string::npos)
            verletzt("jede Weiterleitung an einem anderen Port ist aufgeschrieben: " + std::to_string(port));
}

void Sturmwelt::amEndeEinesLebens() {
    andereWegeSindAufgeschrieben();
    keineZweiGleichenZeilen();
}

/// What an earlier life left may still be there when this one never saw the phone.
void Sturmwelt::nachUngestoertemAufraeumen() {
    if (std::any_of(socksAn.begin(), socksAn.end(), [](const auto& s) { return s.second; }))
        verletzt("am Ende ist kein Proxy gesetzt");
    for (const auto& forward : forwards)
        if (!vorgefunden_.contains(forward.first))
            verletzt("am Ende steht keine Weiterleitung: " + std::to_string(forward.first));
}

void Sturmwelt::nachDemSturm() {
    const auto& z = zustand();
    const bool proxy = std::any_of(socksAn.begin(), socksAn.end(), [](const auto& s) { return s.second; });
    if (z.phase != Phase::Art::faehrt || proxy != z.proxyAutomatisch ||
        z.volltunnelAn != z.volltunnelLaeuft || helfer != (z.volltunnelAn ? 1 : 0))
        verletzt("nach dem Sturm fährt es wieder: " + z.phase.text() + ", Proxy " + std::to_string(proxy) +
                 ", Helfer " + std::to_string(helfer));
}

/// After a calm life that ended in order nothing may be left of this one or of any before it.
void Sturmwelt::amEnde() {
    if (std::any_of(socksAn.begin(), socksAn.end(), [](const auto& s) { return s.second; }))
        verletzt("am Ende ist kein Proxy gesetzt");
    if (einstellungen.werte.contains("proxy.dienst") || einstellungen.werte.contains("proxy.ungewiss"))
        verletzt("am Ende ist kein Proxy gemerkt");
    if (!forwards.empty())
        verletzt("am Ende steht keine Weiterleitung: " + std::to_string(forwards.begin()->first));
    if (helfer > 0)
        verletzt("am Ende lebt kein Helfer");
}

} // namespace mobilsteg
