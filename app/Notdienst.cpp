#include "app/Notdienst.hpp"

#include "ansicht/Browser.hpp"
#include "app/MobilstegBordlotseApp.hpp"
#include "handy/Adb.hpp"
#include "handy/Http.hpp"
#include "kabel/Verbindung.hpp"
#include "netz/SystemProxy.hpp"
#include "plattform/Dateien.hpp"
#include "plattform/Text.hpp"
#include "standdienst/Standdienst.hpp"

#include <algorithm>
#include <cstdio>

namespace mobilsteg {

namespace {

constexpr double werkzeugSekunden = 10;
constexpr double adbSekunden = 5;

void sage(const std::string& text) {
    std::fputs((text + "\n").c_str(), stdout);
    std::fflush(stdout);
}

/// What both services look at, without a controller.
struct Umfeld {
    explicit Umfeld(const Befehlszeile& zeile, const std::string& k)
        : orte(orteAus(zeile)), buendel(eigenesBuendel(k)), ablage(einstellungenFuer(orte, k)),
          einstellungen(*ablage.speicher), proxy(lauf, orte, einstellungen),
          adb(lauf, orte, buendel.ressourcen) {}

    [[nodiscard]] Ergebnis networksetup(const std::vector<std::string>& argumente) const {
        return lauf(orte.imSystem("/usr/sbin/networksetup"), argumente, werkzeugSekunden);
    }

    Orte orte;
    Buendel buendel;
    Einstellungsort ablage;
    Einstellungen& einstellungen;
    SystemProxy proxy;
    Adb adb;
};

/// A copy that runs sets everything again as soon as the phone shares.
void warneVorLaufendem() {
    CurlHttp http;
    HttpAnfrage anfrage;
    anfrage.url = "http://127.0.0.1:" + std::to_string(Standdienst::standardPort) + "/stand";
    const auto stand = http.hole(anfrage);
    if (stand && stand->koerper.find("\"app\": \"mobilsteg-") != std::string::npos)
        sage("Achtung: Ein Bordlotse läuft noch und setzt alles wieder, sobald das Handy freigibt — "
             "erst beenden.");
}

enum class Ziel { wir, andere, unbekannt };

/// Where the service's SOCKS proxy points, if it is on.
Ziel proxyZiel(const Umfeld& umfeld, const std::string& dienst) {
    const auto ergebnis = umfeld.networksetup({"-getsocksfirewallproxy", dienst});
    if (ergebnis.status != 0)
        return Ziel::unbekannt;
    const auto hat = [&](const std::string& gesuchte) {
        const auto zeilen = teile(ergebnis.ausgabe, '\n');
        return std::find(zeilen.begin(), zeilen.end(), gesuchte) != zeilen.end();
    };
    const bool wir =
        hat("Enabled: Yes") && hat("Server: 127.0.0.1") && hat("Port: " + std::to_string(socksPort));
    return wir ? Ziel::wir : Ziel::andere;
}

/// Switches one off and says what came of it. The remembered one's memory goes only with success.
void schalteAus(Umfeld& umfeld, const std::string& dienst, bool gemerkt) {
    std::optional<std::string> grund;
    if (gemerkt)
        grund = umfeld.proxy.entfernen(dienst);
    else if (const auto aus = umfeld.networksetup({"-setsocksfirewallproxystate", dienst, "off"});
             aus.status != 0)
        grund = SystemProxy::fehlertext(aus);
    sage("System-Proxy: " + (grund ? "an „" + dienst + "“ nicht ausgeschaltet: " + *grund
                                   : "an „" + dienst + "“ ausgeschaltet"));
}

void nimmProxyWeg(Umfeld& umfeld) {
    const auto gemerkt = umfeld.proxy.gemerkterDienst();
    if (gemerkt)
        schalteAus(umfeld, *gemerkt, true);
    // The settings may be damaged, and another edition keeps its own: so every service is asked itself.
    const auto liste = umfeld.networksetup({"-listnetworkserviceorder"});
    const auto dienste = SystemProxy::dienste(liste.ausgabe);
    if (liste.status != 0 || dienste.empty())
        return sage("System-Proxy: die Netzwerkdienste lassen sich nicht befragen: " +
                    SystemProxy::fehlertext(liste));
    bool gefunden = gemerkt.has_value();
    for (const auto& dienst : dienste) {
        const Ziel ziel = proxyZiel(umfeld, dienst);
        if (ziel == Ziel::unbekannt)
            sage("System-Proxy: „" + dienst + "“ lässt sich nicht befragen");
        else if (ziel == Ziel::wir)
            schalteAus(umfeld, dienst, false);
        gefunden = gefunden || ziel != Ziel::andere;
    }
    if (!gefunden)
        sage("System-Proxy: keiner zeigt auf 127.0.0.1:" + std::to_string(socksPort));
}

void beendeHelfer(const Umfeld& umfeld) {
    Systemuhr uhr;
    AsioSchlange haupt("haupt", AsioSchlange::Faden::rufer);
    const auto skript = adminskriptFuer(umfeld.orte);
    const Variante variante(umfeld.buendel, umfeld.einstellungen);
    Volltunnel volltunnel({haupt, uhr, *skript, variante, umfeld.buendel.ressourcen, umfeld.orte});
    if (!volltunnel.markeLiegt())
        return sage("Volltunnel: keiner läuft");
    sage(volltunnel.stoppeUebriggebliebenen() ? "Volltunnel: beendet, Routen und DNS zurückgebaut"
                                              : "Volltunnel: der Helfer antwortet nicht und gilt als tot; "
                                                "ist das Netz noch gestört, hilft ein Neustart");
}

bool istUnserForward(std::string_view lokal, std::string_view amHandy) {
    if (amHandy == tcp(socksPort))
        return lokal == tcp(socksPort);
    return amHandy == tcp(gastPortAmHandy) &&
           std::any_of(gastPorts.begin(), gastPorts.end(), [&](int port) { return lokal == tcp(port); });
}

void entferneForwards(const Umfeld& umfeld) {
    const auto adb = umfeld.adb.finden();
    if (!adb)
        return sage("Forwards: adb ist nicht da, also gibt es keine");
    const auto liste = lauf(*adb, {"forward", "--list"}, adbSekunden);
    if (liste.status != 0)
        return sage("Forwards: adb lässt sich nicht befragen: " + SystemProxy::fehlertext(liste));
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
}

std::string oderNichts(const std::optional<std::string>& text) {
    return text.value_or("—");
}

} // namespace

int aufraeumdienst(const Befehlszeile& zeile, const std::string& kennung) {
    Umfeld umfeld(zeile, kennung);
    warneVorLaufendem();
    // The proxy first: it is what cuts the Mac off.
    nimmProxyWeg(umfeld);
    beendeHelfer(umfeld);
    entferneForwards(umfeld);
    return 0;
}

int selbsttest(const Befehlszeile& zeile, const std::string& kennung) {
    const Umfeld u(zeile, kennung);
    const auto angabe = [](const std::string& name, const std::string& wert) {
        sage(name + std::string(name.size() < 16 ? 16 - name.size() : 1, ' ') + wert);
    };
    const Variante variante(u.buendel, u.einstellungen);
    angabe("Kennung", u.buendel.kennung);
    angabe("Ausgabe", variante.anzeigename());
    angabe("Version", oderNichts(u.buendel.version) + " (" + oderNichts(u.buendel.bauversion) + ")");
    angabe("Ressourcen", oderNichts(u.buendel.ressourcen));
    angabe("Heim", u.orte.heim);
    angabe("Wurzel", u.orte.wurzel.empty() ? "/" : u.orte.wurzel);
    angabe("Einstellungen", u.ablage.ort + " · kabel.id " + oderNichts(u.einstellungen.text("kabel.id")));
    angabe("Rechnername", rechnername());
    const auto adb = u.adb.finden();
    angabe("adb", oderNichts(adb));
    if (adb)
        for (const auto& geraet : u.adb.geraete(*adb))
            angabe("", geraet.serial + " · " + geraet.zustand + " · " + geraet.modell);
    angabe("Netzwerkdienst", oderNichts(u.proxy.dienst()));
    angabe("Eigener Proxy", oderNichts(u.proxy.gemerkterDienst()));
    for (const char* werkzeug :
         {"/sbin/route", "/usr/sbin/networksetup", "/usr/sbin/scutil", "/usr/sbin/lsof", "/usr/sbin/netstat",
          "/usr/bin/pgrep", "/usr/bin/mdfind", "/usr/bin/open", "/usr/bin/osascript"})
        angabe(werkzeug, istAusfuehrbar(u.orte.imSystem(werkzeug)) ? "da" : "fehlt");
    for (const auto& fund : Browser(lauf, u.orte, u.einstellungen).finden())
        angabe("Browser",
               fund.name + (fund.fahrtwind ? " mit fahrtwind" : " ohne fahrtwind") + " · " + fund.appPfad);
    return 0;
}

} // namespace mobilsteg
