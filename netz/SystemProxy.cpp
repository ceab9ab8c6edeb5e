#include "netz/SystemProxy.hpp"

#include "plattform/Text.hpp"

namespace mobilsteg {

namespace {

constexpr double fragenSekunden = 5;
constexpr double aendernSekunden = 10;
const std::string merkschluessel = "proxy.dienst";

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
    return dienstFuer(schnittstelle(route.ausgabe), reihenfolge.ausgabe);
}

std::optional<std::string> SystemProxy::setzen(const std::string& dienst, int port) {
    // Written down first: whoever dies between the tool's work and the remembering would leave the proxy on
    // for good.
    const auto vorher = ungewisse_.lies();
    auto jetzt = vorher;
    jetzt.insert(dienst);
    if (const auto anderer = gemerkterDienst(); anderer && *anderer != dienst)
        jetzt.insert(*anderer); // it was to be switched off and could not; the next line forgets it
    ungewisse_.schreibe(jetzt);

    const auto adresse =
        networksetup({"-setsocksfirewallproxy", dienst, "127.0.0.1", std::to_string(port)}, aendernSekunden);
    if (adresse.status != 0) {
        // The address alone switches the proxy on. What refused has changed nothing; nor is a proxy of the
        // user's own to be switched off then.
        if (abgeschnitten(adresse))
            (void)schalteAus(dienst);
        else
            ungewisse_.schreibe(vorher);
        return fehlertext(adresse);
    }
    const auto an = networksetup({"-setsocksfirewallproxystate", dienst, "on"}, aendernSekunden);
    if (an.status != 0) {
        (void)schalteAus(dienst); // a tool that was cut off may have done its work all the same
        return fehlertext(an);
    }
    einstellungen_.setzeText(merkschluessel, dienst);
    ungewisse_.vergiss(dienst);
    return std::nullopt;
}

std::optional<std::string> SystemProxy::entfernen(const std::string& dienst) {
    const auto aus = schalteAus(dienst);
    if (aus.status != 0)
        return fehlertext(aus);
    einstellungen_.entferne(merkschluessel);
    return std::nullopt;
}

Ergebnis SystemProxy::schalteAus(const std::string& dienst) {
    auto aus = networksetup({"-setsocksfirewallproxystate", dienst, "off"}, aendernSekunden);
    if (aus.status == 0)
        ungewisse_.vergiss(dienst);
    return aus;
}

void SystemProxy::nimmUngewisseZurueck() {
    for (const auto& dienst : ungewisse_.lies())
        (void)schalteAus(dienst);
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

std::optional<std::string> SystemProxy::dienstFuer(const std::optional<std::string>& schnittstelle,
                                                   std::string_view reihenfolge) {
    std::optional<std::string> laufender;
    std::optional<std::string> ersatz;
    for (const auto roh : teile(reihenfolge, '\n')) {
        const auto zeile = ohneRandblanks(roh);
        if (zeile.starts_with("(Hardware Port:")) {
            // The line belongs to the service above it. The parenthesis keeps en1 from matching en10.
            if (schnittstelle && laufender &&
                zeile.find("Device: " + *schnittstelle + ")") != std::string_view::npos)
                return laufender;
        } else if (const auto zu = zeile.find(')'); zeile.starts_with('(') && zu != std::string_view::npos) {
            const auto name = ohneRandblanks(zeile.substr(zu + 1));
            laufender = name.empty() ? std::nullopt : std::optional(std::string(name));
            if (!ersatz && laufender && !zeile.starts_with("(*)"))
                ersatz = laufender;
        }
    }
    return ersatz;
}

std::vector<std::string> SystemProxy::dienste(std::string_view reihenfolge) {
    std::vector<std::string> namen;
    for (const auto roh : teile(reihenfolge, '\n')) {
        const auto zeile = ohneRandblanks(roh);
        const auto zu = zeile.find(')');
        if (!zeile.starts_with('(') || zeile.starts_with("(Hardware Port:") || zu == std::string_view::npos)
            continue;
        if (const auto name = ohneRandblanks(zeile.substr(zu + 1)); !name.empty())
            namen.emplace_back(name);
    }
    return namen;
}

std::string SystemProxy::fehlertext(const Ergebnis& ergebnis) {
    const std::string roh = ergebnis.fehler + " " + ergebnis.ausgabe;
    const auto text = beschnitten(roh);
    if (!text.empty())
        return std::string(text);
    return "networksetup: Rückgabe " + std::to_string(ergebnis.status);
}

} // namespace mobilsteg
