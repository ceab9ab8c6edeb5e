// The controller's side of the system proxy: what becomes of its errors, and what is logged.

#include "handy/Ports.hpp"
#include "kabel/Kabel.hpp"
#include "kabel/Stand.hpp"

#include <utility>

namespace mobilsteg {

namespace {

std::string gelungen(const std::string& dienst) {
    return "System-Proxy entfernt von " + dienst;
}

std::string misslungen(const std::string& dienst, const std::string& grund) {
    return "System-Proxy nicht entfernt von " + dienst + ": " + grund;
}

} // namespace

void Kabel::proxyAn() {
    const auto setzung = proxy_.setze();
    switch (setzung.ausgang) {
    case SystemProxy::Ausgang::keinDienst:
        return setze(Phase::proxyFehler("Keinen Netzwerkdienst gefunden — Proxy von Hand setzen"));
    case SystemProxy::Ausgang::misslungen:
        return setze(Phase::proxyFehler("System-Proxy nicht gesetzt: " + setzung.text));
    case SystemProxy::Ausgang::gesetzt:
        break;
    }
    protokoll("System-Proxy gesetzt auf " + setzung.text + ": " + amMac(socksPort));
    letzteProxyfehler_.clear();
    lageIntern_.proxyGesetzt = true;
    lageIntern_.meldung.clear();
}

void Kabel::proxyWeg() {
    if (const auto dienst = nimmProxyWeg())
        protokoll(gelungen(*dienst));
}

/// Logs failures, each once until something changes. Returns the service from which the proxy was removed;
/// absent: from none.
std::optional<std::string> Kabel::nimmProxyWeg() {
    auto wegnahmen = proxy_.klaereUngewisse(tick_ >= fruehereTakte);
    std::optional<std::string> entfernt;
    if (auto wegnahme = proxy_.nimmWeg()) {
        lageIntern_.proxyGesetzt = false;
        if (!wegnahme->grund)
            entfernt = wegnahme->dienst;
        wegnahmen.push_back(std::move(*wegnahme));
    }
    letzteProxyfehler_ = meldeMisslungene(wegnahmen);
    return entfernt;
}

/// The log lines for those that failed; what stood there last is not logged again.
std::set<std::string> Kabel::meldeMisslungene(const std::vector<SystemProxy::Wegnahme>& wegnahmen) {
    std::set<std::string> fehler;
    for (const auto& [dienst, grund] : wegnahmen)
        if (grund)
            fehler.insert(misslungen(dienst, *grund));
    for (const auto& zeile : fehler)
        if (!letzteProxyfehler_.contains(zeile))
            protokoll(zeile);
    return fehler;
}

/// Its success ends the error of an earlier try.
void Kabel::proxyVonHandAn() {
    proxyAn();
    if (proxy_.gesetzt() && lageIntern_.phase.art == Phase::Art::proxyFehler)
        setze(Phase::Art::faehrt);
}

void Kabel::proxyUmschalten() {
    aufQ([this] {
        if (proxy_.gesetzt())
            proxyWeg();
        else if (verbindung_.zuletztGueltig() && verbindung_.wegSteht())
            proxyVonHandAn();
        else
            lageIntern_.meldung = "Erst muss das Handy freigeben.";
    });
}

void Kabel::nimmProxyNotfallsWeg() {
    protokoll("Das Aufräumen kommt nicht voran -- schalte nur den System-Proxy aus");
    // One of its own: the other one's queue may be in the middle of using it.
    SystemProxy proxy(anschluesse_.laeufer, anschluesse_.orte, anschluesse_.einstellungen);
    auto wegnahmen = proxy.klaereUngewisse(false); // the tool that hangs may be the one that sets it
    if (auto wegnahme = proxy.nimmWeg())
        wegnahmen.push_back(std::move(*wegnahme));
    for (const auto& [dienst, grund] : wegnahmen)
        protokoll(grund ? misslungen(dienst, *grund) : gelungen(dienst));
    beendeStand(standPfad_, proxy.gemerkterDienst().has_value());
    protokoll(Phase(Phase::Art::beendet).text());
}

} // namespace mobilsteg
