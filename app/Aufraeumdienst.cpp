#include "app/Dienste.hpp"
#include "app/MobilstegBordlotseApp.hpp"
#include "handy/Adb.hpp"
#include "handy/Ports.hpp"
#include "kabel/Verbindung.hpp"
#include "netz/SystemProxy.hpp"
#include "plattform/Dateien.hpp"
#include "plattform/Laufsperre.hpp"
#include "plattform/Text.hpp"

#include <algorithm>
#include <cstdio>

namespace mobilsteg {

namespace {

constexpr double adbSekunden = 5;

void sage(const std::string& text) {
    std::fputs((einzeilig(text) + "\n").c_str(), stdout);
    std::fflush(stdout);
}

bool schalteAus(Umfeld& umfeld, const std::string& dienst) {
    const auto grund = umfeld.proxy.entfernen(dienst);
    sage("System-Proxy: an „" + dienst + "“ " + (grund ? "nicht ausgeschaltet: " + *grund : "ausgeschaltet"));
    return !grund;
}

bool nimmProxyWeg(Umfeld& umfeld) {
    const auto gemerkt = umfeld.proxy.gemerkterDienst();
    bool gefunden = gemerkt.has_value();
    bool alleAus = !gemerkt || schalteAus(umfeld, *gemerkt);
    // The settings may be damaged, and another edition keeps its own: so every service is asked itself.
    std::string grund;
    const auto dienste = umfeld.proxy.dienste(grund);
    if (!dienste) {
        sage("System-Proxy: die Netzwerkdienste lassen sich nicht befragen: " + grund);
        return false;
    }
    for (const auto& dienst : *dienste) {
        const auto ziel = umfeld.proxy.ziel(dienst.name);
        if (ziel == SystemProxy::Ziel::unbekannt)
            sage("System-Proxy: „" + dienst.name + "“ lässt sich nicht befragen");
        alleAus = alleAus && ziel != SystemProxy::Ziel::unbekannt;
        if (ziel == SystemProxy::Ziel::wir)
            alleAus = schalteAus(umfeld, dienst.name) && alleAus;
        gefunden = gefunden || ziel == SystemProxy::Ziel::wir || ziel == SystemProxy::Ziel::unbekannt;
    }
    if (alleAus) // a note that stayed would switch off a proxy which the user sets from now on
        umfeld.proxy.vergissUngewisse();
    if (!gefunden)
        sage("System-Proxy: keiner zeigt auf " + amMac(socksPort));
    return alleAus;
}

bool beendeHelfer(const Umfeld& umfeld) {
    Systemuhr uhr;
    AsioSchlange haupt("haupt", AsioSchlange::Faden::rufer);
    const auto skript = adminskriptFuer(umfeld.orte);
    const Variante variante(umfeld.buendel, *umfeld.ablage.speicher);
    Volltunnel volltunnel({haupt, uhr, *skript, variante, umfeld.buendel.ressourcen, umfeld.orte});
    const auto ende = volltunnel.raeumeWeg();
    sage(ende == Volltunnel::Ende::keinHelfer ? "Volltunnel: keiner läuft"
         : ende == Volltunnel::Ende::gegangen ? "Volltunnel: beendet, Routen und DNS zurückgebaut"
                                              : "Volltunnel: der Helfer antwortet nicht und gilt als tot");
    return ende != Volltunnel::Ende::verstummt;
}

bool istUnserForward(std::string_view lokal, std::string_view amHandy) {
    if (amHandy == tcp(socksPort))
        return lokal == tcp(socksPort);
    return amHandy == tcp(gastPortAmHandy) &&
           std::any_of(gastPorts.begin(), gastPorts.end(), [&](int port) { return lokal == tcp(port); });
}

bool entferneForwards(const Umfeld& umfeld) {
    const auto adb = umfeld.adb.finden();
    if (!adb) {
        sage("Forwards: adb ist nicht da, also gibt es keine");
        return true;
    }
    const auto liste = lauf(*adb, {"forward", "--list"}, adbSekunden);
    if (liste.status != 0) {
        sage("Forwards: adb lässt sich nicht befragen: " + SystemProxy::fehlertext(liste));
        return false;
    }
    int gefundene = 0;
    int entfernte = 0;
    for (const auto zeile : teile(liste.ausgabe, '\n')) {
        const auto worte = teile(beschnitten(zeile), ' ');
        if (worte.size() != 3 || !istUnserForward(worte[1], worte[2]))
            continue;
        const std::vector<std::string> weg = {"-s", std::string(worte[0]), "forward", "--remove",
                                              std::string(worte[1])};
        ++gefundene;
        if (const auto ergebnis = lauf(*adb, weg, adbSekunden); ergebnis.status == 0)
            ++entfernte;
        else
            sage("Forwards: " + std::string(worte[1]) +
                 " nicht entfernt: " + SystemProxy::fehlertext(ergebnis));
    }
    if (gefundene == 0)
        sage("Forwards: keine gefunden");
    else if (entfernte > 0)
        sage("Forwards: " + std::to_string(entfernte) + " entfernt");
    return entfernte == gefundene;
}

} // namespace

Umfeld::Umfeld(const Befehlszeile& zeile, const std::string& kennung)
    : orte(orteAus(zeile)), buendel(eigenesBuendel(kennung)), ablage(einstellungenFuer(orte, kennung)),
      proxy(lauf, orte, *ablage.speicher), adb(lauf, orte, buendel.ressourcen) {}

bool raeumeAuf(Umfeld& umfeld) {
    // The proxy first: it is what cuts the Mac off.
    const bool proxy = nimmProxyWeg(umfeld);
    const bool helfer = beendeHelfer(umfeld);
    return entferneForwards(umfeld) && proxy && helfer;
}

int aufraeumdienst(const Befehlszeile& zeile, const std::string& kennung) {
    Umfeld umfeld(zeile, kennung);
    if (Laufsperre::inhaber(umfeld.orte.heim)) {
        if (zeile.tat == Befehlszeile::Tat::anmeldung)
            return 0; // it has cleaned up itself, and its own proxy is to stay
        sage("Achtung: Ein Bordlotse läuft noch und setzt alles wieder, sobald das Handy freigibt — "
             "erst beenden.");
    }
    if (raeumeAuf(umfeld))
        return 0;
    sage(
        "Was blieb, von Hand: Systemeinstellungen → Netzwerk → der Dienst → Details → Proxys → SOCKS-Proxy aus; "
        "„adb kill-server“ nimmt die Forwards; gegen Routen eines toten Helfers hilft ein Neustart.");
    return 1;
}

} // namespace mobilsteg
