#include "netz/SystemProxy.hpp"

#include "handy/Ports.hpp"
#include "plattform/Text.hpp"

#include <algorithm>
#include <utility>

namespace mobilsteg {

namespace {

constexpr double fragenSekunden = 5;
constexpr double aendernSekunden = 10;
constexpr const char* merkschluessel = "proxy.dienst";
constexpr const char* eigeneAdresse = "127.0.0.1";

/// networksetup's answer about a service that was renamed or removed.
bool kenntDienstNicht(const Ergebnis& ergebnis) {
    return ergebnis.status != 0 &&
           SystemProxy::fehlertext(ergebnis).find("is not a recognized network service") != std::string::npos;
}

} // namespace

SystemProxy::SystemProxy(Laeufer laeufer, Orte orte, Einstellungen& einstellungen)
    : laeufer_(std::move(laeufer)), orte_(std::move(orte)), einstellungen_(einstellungen),
      ungewisse_(einstellungen, "proxy.ungewiss") {}

Ergebnis SystemProxy::networksetup(const std::vector<std::string>& argumente, double sekunden) const {
    return laeufer_(orte_.imSystem("/usr/sbin/networksetup"), argumente, sekunden);
}

std::optional<std::string> SystemProxy::dienst() const {
    // Without a default route the tool still ends with status 0: only its text tells.
    const auto route = laeufer_(orte_.imSystem("/sbin/route"), {"-n", "get", "default"}, fragenSekunden);
    const auto reihenfolge = networksetup({"-listnetworkserviceorder"}, fragenSekunden);
    return dienstFuer(schnittstelle(route.ausgabe), liesDienste(reihenfolge.ausgabe));
}

SystemProxy::Setzung SystemProxy::setze() {
    const auto gefunden = dienst();
    if (!gefunden)
        return {Ausgang::keinDienst, ""};
    if (const auto grund = setzen(*gefunden))
        return {Ausgang::misslungen, *grund};
    dienst_ = gefunden;
    proxyGesetztIntern_ = true;
    return {Ausgang::gesetzt, *gefunden};
}

std::optional<std::string> SystemProxy::setzen(const std::string& dienst) {
    // Noted before the tool runs: a crash between its work and the remembering would leave the proxy on.
    auto noten = ungewisse_.lies();
    const bool neu = noten.insert(dienst).second;
    if (const auto anderer = gemerkterDienst(); anderer && *anderer != dienst)
        noten.insert(*anderer); // it could not be switched off so far, and its key is about to be replaced
    ungewisse_.schreibe(noten);
    if (const auto fehler = einstellungen_.speicherfehler()) {
        if (neu)
            ungewisse_.vergiss(dienst);
        return "Es lässt sich nicht merken (" + *fehler + ")";
    }

    auto ergebnis = networksetup({"-setsocksfirewallproxy", dienst, eigeneAdresse, std::to_string(socksPort)},
                                 aendernSekunden);
    if (ergebnis.gelungen())
        ergebnis = networksetup({"-setsocksfirewallproxystate", dienst, "on"}, aendernSekunden);
    if (!ergebnis.gelungen()) {
        // The address alone switches the proxy on, and a tool that was cut off may have done its work. One
        // that merely refused has changed nothing, and a proxy of the user's own must stay: so look.
        if (!klaere(dienst, ziel(dienst), false))
            vergiss(dienst);
        return fehlertext(ergebnis);
    }
    einstellungen_.setzeText(merkschluessel, dienst);
    vergiss(dienst);
    return std::nullopt;
}

std::optional<SystemProxy::Wegnahme> SystemProxy::nimmWeg() {
    const auto gemerkt = gemerkterDienst();
    if (!proxyGesetztIntern_ && !gemerkt)
        return std::nullopt;
    const std::string dienst = dienst_ ? *dienst_ : gemerkt.value_or("Wi-Fi");
    proxyGesetztIntern_ = false;
    return Wegnahme{dienst, entfernen(dienst)};
}

std::optional<std::string> SystemProxy::entfernen(const std::string& dienst, Fehlerworte worte) {
    const auto aus = schalteAus(dienst);
    const bool verschwunden = kenntDienstNicht(aus);
    if (!aus.gelungen() && !verschwunden)
        return worte(aus, "networksetup");
    if (verschwunden)
        schalteUmbenanntenAus();
    if (const auto gemerkt = gemerkterDienst()) { // else nothing is written: the settings may be damaged
        if (*gemerkt != dienst)
            ungewisse_.merke(*gemerkt);
        einstellungen_.entferne(merkschluessel);
    }
    vergiss(dienst);
    return verschwunden ? std::optional(fehlertext(aus)) : std::nullopt;
}

/// A service that was renamed keeps its proxy under the new name.
void SystemProxy::schalteUmbenanntenAus() {
    std::string grund;
    for (const auto& dienst : dienste(grund).value_or(std::vector<Netzwerkdienst>{}))
        if (ziel(dienst.name) == Ziel::wir)
            (void)schalteAus(dienst.name);
}

Ergebnis SystemProxy::schalteAus(const std::string& dienst) {
    return networksetup({"-setsocksfirewallproxystate", dienst, "off"}, aendernSekunden);
}

std::vector<SystemProxy::Wegnahme> SystemProxy::klaereUngewisse(bool endgueltig) {
    std::vector<Wegnahme> misslungene;
    for (const auto& dienst : ungewisse_.lies()) {
        const bool eigener = proxyGesetztIntern_ && dienst == dienst_; // remembered as set, and to stay on
        if (auto grund = klaere(dienst, eigener ? Ziel::andere : ziel(dienst), endgueltig))
            misslungene.push_back({dienst, std::move(grund)});
    }
    return misslungene;
}

/// Absent: the service's proxy does not point at us (any more).
std::optional<std::string> SystemProxy::klaere(const std::string& dienst, Ziel wohin, bool endgueltig) {
    switch (wohin) {
    case Ziel::unbekannt:
        return "sein Proxy lässt sich nicht befragen";
    case Ziel::wir:
        if (const auto aus = schalteAus(dienst); !aus.gelungen())
            return fehlertext(aus);
        break;
    case Ziel::keinDienst:
        schalteUmbenanntenAus();
        fruehere_.erase(dienst);
        ungewisse_.vergiss(dienst);
        return "den Netzwerkdienst gibt es nicht mehr";
    case Ziel::andere:
        break;
    }
    if (endgueltig) {
        fruehere_.erase(dienst);
        ungewisse_.vergiss(dienst);
    }
    return std::nullopt;
}

void SystemProxy::vergiss(const std::string& dienst) {
    if (!fruehere_.contains(dienst))
        ungewisse_.vergiss(dienst);
}

SystemProxy::Ziel SystemProxy::ziel(const std::string& dienst) const {
    const auto antwort = networksetup({"-getsocksfirewallproxy", dienst}, fragenSekunden);
    if (!antwort.gelungen())
        return kenntDienstNicht(antwort) ? Ziel::keinDienst : Ziel::unbekannt;
    const auto wohin = liesAdresse(antwort.ausgabe);
    if (!wohin)
        return Ziel::unbekannt; // half an answer; the proxy may be ours all the same
    return *wohin == amMac(socksPort) ? Ziel::wir : Ziel::andere;
}

std::optional<std::string> SystemProxy::adresse(const std::string& dienst) const {
    const auto antwort = networksetup({"-getsocksfirewallproxy", dienst}, fragenSekunden);
    return antwort.gelungen() ? liesAdresse(antwort.ausgabe) : std::nullopt;
}

std::optional<std::vector<Netzwerkdienst>> SystemProxy::dienste(std::string& grund) const {
    const auto liste = networksetup({"-listnetworkserviceorder"}, fragenSekunden);
    auto gelesene = liesDienste(liste.ausgabe);
    if (liste.gelungen() && !gelesene.empty()) // else it may have written half of its list
        return gelesene;
    grund = scheitern(liste);
    return std::nullopt;
}

std::optional<std::string> SystemProxy::gemerkterDienst() const {
    return einstellungen_.text(merkschluessel);
}

std::optional<std::string> SystemProxy::schnittstelle(std::string_view routeAusgabe) {
    for (const auto zeile : teile(routeAusgabe, '\n')) {
        constexpr std::string_view marke = "interface:";
        const auto stelle = zeile.find(marke);
        if (stelle == std::string_view::npos)
            continue;
        const auto stuecke = teile(zeile.substr(stelle + marke.size()), ':');
        const auto name = stuecke.empty() ? std::string_view() : ohneRandblanks(stuecke.back());
        // An empty name would fit the services that have no device at all, as VPNs.
        return name.empty() ? std::nullopt : std::optional(std::string(name));
    }
    return std::nullopt;
}

std::vector<Netzwerkdienst> SystemProxy::liesDienste(std::string_view reihenfolge) {
    std::vector<Netzwerkdienst> dienste;
    bool benannt = false; // the last service line had a name; a nameless one owns the lines below it, too
    for (const auto roh : teile(reihenfolge, '\n')) {
        const auto zeile = ohneRandblanks(roh);
        if (zeile.starts_with("(Hardware Port:")) {
            if (benannt)
                dienste.back().anschluss += std::string(zeile) + "\n";
        } else if (const auto zu = zeile.find(')'); zeile.starts_with('(') && zu != std::string_view::npos) {
            const auto name = ohneRandblanks(zeile.substr(zu + 1));
            benannt = !name.empty();
            if (benannt)
                dienste.push_back({std::string(name), !zeile.starts_with("(*)"), ""});
        }
    }
    return dienste;
}

std::optional<std::string> SystemProxy::dienstFuer(const std::optional<std::string>& schnittstelle,
                                                   const std::vector<Netzwerkdienst>& dienste) {
    const auto ersterMit = [&](const auto& passt) {
        const auto treffer = std::find_if(dienste.begin(), dienste.end(), passt);
        return treffer == dienste.end() ? std::nullopt : std::optional(treffer->name);
    };
    if (schnittstelle) {
        const std::string geraet = "Device: " + *schnittstelle + ")"; // so that en1 does not match en10
        if (auto treffer =
                ersterMit([&](const auto& d) { return d.anschluss.find(geraet) != std::string::npos; }))
            return treffer;
    }
    return ersterMit([](const auto& d) { return d.eingeschaltet; });
}

std::optional<std::string> SystemProxy::liesAdresse(std::string_view ausgabe) {
    std::optional<std::string> an, server, port;
    for (const auto zeile : teile(ausgabe.substr(0, ausgabe.rfind('\n') + 1), '\n')) {
        const auto eine = beschnitten(zeile);
        for (const auto& [name, wert] :
             {std::pair{"Enabled:", &an}, std::pair{"Server:", &server}, std::pair{"Port:", &port}})
            if (eine.starts_with(name))
                *wert = beschnitten(eine.substr(std::string_view(name).size()));
    }
    if (!an || !server || !port)
        return std::nullopt;
    return *an == "Yes" ? *server + ":" + *port : "";
}

std::string SystemProxy::fehlertext(const Ergebnis& ergebnis, const char* werkzeug) {
    const std::string roh = ergebnis.fehler + " " + ergebnis.ausgabe;
    const auto text = beschnitten(roh);
    if (!text.empty())
        return std::string(text);
    return std::string(werkzeug) + ": Rückgabe " + std::to_string(ergebnis.status);
}

std::string SystemProxy::scheitern(const Ergebnis& ergebnis, const char* werkzeug) {
    return ergebnis.abgelaufen ? std::string(werkzeug) + " antwortet nicht" : fehlertext(ergebnis, werkzeug);
}

} // namespace mobilsteg
