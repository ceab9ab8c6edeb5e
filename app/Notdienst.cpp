#include "app/Notdienst.hpp"

#include "ansicht/Browser.hpp"
#include "app/MobilstegBordlotseApp.hpp"
#include "handy/Adb.hpp"
#include "netz/SystemProxy.hpp"
#include "plattform/Dateien.hpp"
#include "plattform/Text.hpp"

#include <cstdio>
#include <set>

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
        : kennung(k), orte(orteAus(zeile)), buendel(ordnerBuendel(k, eigenesProgramm())),
          einstellungen(einstellungsPfad(orte, k)), proxy(lauf, orte, einstellungen),
          adb(lauf, orte, buendel.ressourcen) {}

    [[nodiscard]] Ergebnis networksetup(const std::vector<std::string>& argumente) const {
        return lauf(orte.imSystem("/usr/sbin/networksetup"), argumente, werkzeugSekunden);
    }

    std::string kennung;
    Orte orte;
    Buendel buendel;
    DateiEinstellungen einstellungen;
    SystemProxy proxy;
    Adb adb;
};

/// Whether the service's SOCKS proxy is on and points at our port.
bool zeigtAufUns(const Umfeld& umfeld, const std::string& dienst) {
    const auto ergebnis = umfeld.networksetup({"-getsocksfirewallproxy", dienst});
    bool an = false;
    bool hier = false;
    bool port = false;
    for (const auto zeile : teile(ergebnis.ausgabe, '\n')) {
        an = an || zeile == "Enabled: Yes";
        hier = hier || zeile == "Server: 127.0.0.1";
        port = port || zeile == "Port: " + std::to_string(socksPort);
    }
    return an && hier && port;
}

void nimmProxyWeg(Umfeld& umfeld) {
    std::set<std::string> betroffene;
    // The settings may be damaged, and another edition keeps its own: so every service is asked itself.
    for (const auto& dienst : SystemProxy::dienste(umfeld.networksetup({"-listnetworkserviceorder"}).ausgabe))
        if (zeigtAufUns(umfeld, dienst))
            betroffene.insert(dienst);
    if (const auto gemerkt = umfeld.proxy.gemerkterDienst())
        betroffene.insert(*gemerkt);
    if (betroffene.empty())
        sage("System-Proxy: keiner zeigt auf 127.0.0.1:" + std::to_string(socksPort));
    for (const auto& dienst : betroffene) {
        const auto grund = umfeld.proxy.entfernen(dienst);
        sage("System-Proxy: " + (grund ? "an „" + dienst + "“ nicht ausgeschaltet: " + *grund
                                       : "an „" + dienst + "“ ausgeschaltet"));
    }
}

void beendeHelfer(const Umfeld& umfeld) {
    Systemuhr uhr;
    AsioSchlange haupt("haupt", AsioSchlange::Faden::rufer);
    OsascriptSkript skript(umfeld.orte);
    const Variante variante(umfeld.buendel, umfeld.einstellungen);
    Volltunnel volltunnel({haupt, uhr, skript, variante, umfeld.buendel.ressourcen, umfeld.orte});
    if (!volltunnel.markeLiegt())
        return sage("Volltunnel: keiner läuft");
    volltunnel.stopp();
    if (!volltunnel.markeLiegt())
        return sage("Volltunnel: beendet, Routen und DNS zurückgebaut");
    sage("Volltunnel: der Helfer hat auf die Bitte aufzuhören nicht geantwortet; läuft kein anderer "
         "Bordlotse mehr, "
         "hilft ein Neustart des Mac");
}

bool istUnserForward(std::string_view lokal, std::string_view amHandy) {
    if (amHandy == "tcp:1080")
        return lokal == "tcp:1080";
    const std::set<std::string_view> gastports = {"tcp:8080", "tcp:18080", "tcp:18081", "tcp:18082",
                                                  "tcp:28080"};
    return amHandy == "tcp:8080" && gastports.contains(lokal);
}

void entferneForwards(const Umfeld& umfeld) {
    const auto adb = umfeld.adb.finden();
    if (!adb)
        return sage("Forwards: adb ist nicht da, also gibt es keine");
    const auto liste = lauf(*adb, {"forward", "--list"}, adbSekunden);
    int entfernte = 0;
    for (const auto zeile : teile(liste.ausgabe, '\n')) {
        const auto worte = teile(beschnitten(zeile), ' ');
        if (worte.size() != 3 || !istUnserForward(worte[1], worte[2]))
            continue;
        (void)lauf(*adb, {"-s", std::string(worte[0]), "forward", "--remove", std::string(worte[1])},
                   adbSekunden);
        ++entfernte;
    }
    sage(entfernte == 0 ? "Forwards: keine gefunden"
                        : "Forwards: " + std::to_string(entfernte) + " entfernt");
}

std::string oderNichts(const std::optional<std::string>& text) {
    return text.value_or("—");
}

} // namespace

int aufraeumdienst(const Befehlszeile& zeile, const std::string& kennung) {
    Umfeld umfeld(zeile, kennung);
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
    angabe("Kennung", u.kennung);
    angabe("Ausgabe", variante.anzeigename());
    angabe("Version", oderNichts(u.buendel.version) + " (" + oderNichts(u.buendel.bauversion) + ")");
    angabe("Ressourcen", oderNichts(u.buendel.ressourcen));
    angabe("Heim", u.orte.heim);
    angabe("Wurzel", u.orte.wurzel.empty() ? "/" : u.orte.wurzel);
    angabe("Einstellungen", einstellungsPfad(u.orte, u.kennung) + " · kabel.id " +
                                oderNichts(u.einstellungen.text("kabel.id")));
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
