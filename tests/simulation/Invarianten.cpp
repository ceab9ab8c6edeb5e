// What must hold whatever happens. The first broken invariant ends the run.

#include "kabel/Anzeige.hpp"
#include "plattform/Dateien.hpp"
#include "tests/simulation/Zufallswelt.hpp"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <utility>

namespace mobilsteg {

using namespace std::string_literals;

void Zufallswelt::pruefe(bool haelt, const std::string& invariante) {
    if (haelt || !verstoss.empty())
        return;
    verstoss = invariante;
    erzaehle("VERLETZT: " + invariante);
}

/// The first usable phone carries; or, after a list that came late or a forward that could not be moved, the
/// one to which the forward leads.
bool Zufallswelt::wegGueltig() const {
    const auto traegt = [](const auto& h) { return h.teilt && h.entscheid == "erlaubt"; };
    const auto erstes =
        std::find_if(handys.begin(), handys.end(), [](const auto& h) { return h.zustand == "device"; });
    const auto forward = forwards.find(socksPort);
    const auto* ziel = forward == forwards.end() ? nullptr : bereites(forward->second);
    return (erstes != handys.end() && traegt(*erstes)) || (ziel != nullptr && traegt(*ziel));
}

bool Zufallswelt::unser(const std::string& dienst) const {
    const auto an = socksAn.find(dienst);
    return an != socksAn.end() && an->second && socksZiel.at(dienst) == std::pair("127.0.0.1"s, socksPort);
}

/// On the work queue, right when a tick has written its document.
void Zufallswelt::pruefeTick() {
    const auto dokument = nlohmann::json::parse(standdienst.dokument);
    if (dokument["phase"] == "Beendet")
        return;
    ++zaehler["Ticks"];
    ++ticksOhneStoerung_;
    ticksOhneWeg_ = wegGueltig() ? 0 : ticksOhneWeg_ + 1;
    const std::string phase = dokument["phase"];
    const std::string austritt = dokument["austritt"];
    if (phase != std::exchange(phase_, phase))
        erzaehle("Tick: " + phase);
    ticksOhneBeweis_ = austritt.empty() ? ticksOhneBeweis_ + 1 : 0;
    if (austritt.empty() || ticksOhneWeg_ >= 2)
        bewiesenBis_ = std::min(bewiesenBis_, welt.jetzt());
    const auto* handy = anPort(socksPort);
    const bool mitProxy = handy != nullptr && handy->gruesst && !handy->serial.empty();
    ticksOhneProxy_ = mitProxy || !dokument["faehrt"] ? 0 : ticksOhneProxy_ + 1;
    if (dokument["faehrt"]) {
        ++zaehler["Ticks in „Fährt mit“"];
        pruefe(phase == "Fährt mit" && !austritt.empty(), "„Fährt mit“ nur mit Austrittsadresse");
        // The tick under way when the way was lost may still end well.
        pruefe(ticksOhneWeg_ < 2, "„Fährt mit“ nur, solange das Handy teilt und erlaubt");
        pruefe(ticksOhneProxy_ < 3, "„Fährt mit“ nur, solange der Proxy der des Handys ist");
    }
    if (dokument["proxy_gesetzt"])
        pruefe(unser(dokument["dienst"]), "wo der Stand einen Proxy nennt, ist einer");
    pruefe(!proxyAn() || std::max(ticksOhneWeg_, ticksOhneBeweis_) < 2 || ticksOhneStoerung_ < 2,
           "zwei Ticks nach dem Verlust des Weges ist der Proxy aus");
    // A tick takes down the helper that it meets; only one that comes up at that moment sees the next.
    const bool vorher = std::exchange(marke_, existiert(stoppPfad() + ".laeuft"));
    pruefe(!vorher || !marke_ || ticksOhneWeg_ < 2,
           "zwei Ticks nach dem Verlust des Weges ist der Tunnel aus");
    nachTick_ = true;
}

void Zufallswelt::pruefeNachAuftrag() {
    pruefe(meisteHelfer <= 1, "nie lebt mehr als ein Helfer");
    // A click or a started tunnel may change the state before the next document.
    if (!kabel || !welt.ruht() || endet_ || offeneKlicks_ > 0 || !std::exchange(nachTick_, false))
        return;
    const auto& z = kabel->speicher().zustand();
    const auto dokument = nlohmann::json::parse(standdienst.dokument);
    pruefe(z.phase.text() == dokument["phase"] && z.austritt == dokument["austritt"] &&
               z.proxyGesetzt == dokument["proxy_gesetzt"],
           "der Stand gleicht dem Zustand: " + z.phase.text());
    if (gemeldet_)
        pruefe(z.menge.starts_with(Anzeige::mengeText(*gemeldet_)),
               "die Menge ist die des Handys: " + z.menge);
    const bool verbunden = z.phase == Phase::Art::faehrt || z.phase == Phase::Art::pruefung ||
                           z.phase.art == Phase::Art::proxyFehler;
    pruefe(verbunden || (z.gleise.empty() && (z.austritt + z.klasse + z.rettung).empty()),
           "ohne Verbindung zeigt nichts mehr auf sie: " + z.phase.text());
}

/// After a calm life that ended in order nothing may be left of this one or of any before it.
void Zufallswelt::pruefeEnde() {
    pruefe(!einstellungen.werte.contains("proxy.dienst") && !einstellungen.werte.contains("proxy.ungewiss"),
           "am Ende ist kein Proxy gemerkt");
    pruefe(!proxyAn(), "am Ende ist kein Proxy gesetzt");
    pruefe(forwards.empty(), "am Ende steht keine Weiterleitung");
    pruefe(helfer == 0, "am Ende lebt kein Helfer");
}

} // namespace mobilsteg
