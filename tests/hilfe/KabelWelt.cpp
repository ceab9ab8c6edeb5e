#include "tests/hilfe/KabelWelt.hpp"

#include "plattform/Dateien.hpp"
#include "plattform/Text.hpp"

#include <gtest/gtest.h>

#include <algorithm>

namespace mobilsteg {

KabelWelt::KabelWelt(std::uint64_t samen) : welt(samen) {
    ordner.lege("/wurzel/opt/homebrew/bin/adb", "#!", true);
    ordner.lege("/Resources/mobilsteg-volltunnel", "#!", true);
}

Kabel& KabelWelt::baue() {
    q = &welt.schlange("kabel.takt");
    const auto laeufer = [this](const std::string& programm, const std::vector<std::string>& argumente,
                                double sekunden) { return werkzeug(programm, argumente, sekunden); };
    const Buendel buendel{buendelkennung, ordner.pfad() + "/Resources", version, bauversion};
    const Orte orte{ordner.pfad() + "/heim", ordner.pfad() + "/wurzel"};
    kabel = std::make_unique<Kabel>(
        Kabel::Anschluesse{haupt, *q, welt.schlange("volltunnel.start"), welt.uhr(), laeufer, *this,
                           einstellungen, standdienst, *this, *this, [this] { return browser; },
                           [this](const BrowserFund& fund) { geoeffnet.push_back(fund.name); }, buendel, orte,
                           "Testmac", [this](const std::string& warum) { abgebrochen = warum; },
                           haltGeraetewache, [this] { bewacht = true; }, [this] { bewacht = false; }});
    return *kabel;
}

void KabelWelt::starte() {
    baue();
    haupt.sync([this] { kabel->start(); });
}

void KabelWelt::stuerzeAb() {
    welt.begrabe();
    kabel.reset();
    if (einstellungen.aufDerPlatte)
        einstellungen.werte = *einstellungen.aufDerPlatte;
}

void KabelWelt::starteBis(double sekunden) {
    starte();
    laufeBisSekunde(sekunden);
}

void KabelWelt::fahreLos() {
    handys = {Modellhandy{}};
    starteBis(1);
    ASSERT_EQ(zustand().phase, Phase::Art::faehrt);
    ASSERT_TRUE(socksAn["Wi-Fi"]);
}

const Phase& KabelWelt::laufeBisSekunde(double sekunden) {
    welt.laufe(std::chrono::duration_cast<Dauer>(std::chrono::duration<double>(sekunden)) - welt.jetzt());
    return zustand().phase;
}

void KabelWelt::bediene(const std::function<void(Kabel&)>& was) {
    haupt.sync([&] { was(*kabel); });
    welt.laufe({});
}

void KabelWelt::raeumeAuf() {
    q->sync([this] { kabel->aufraeumen(); });
    welt.laufe({});
}

std::vector<std::string> KabelWelt::protokoll() const {
    constexpr std::size_t zeitstempel = 21;
    std::vector<std::string> meldungen;
    const std::string text = ordner.lies("/heim/Library/Logs/MobilstegBordlotse.log");
    for (const auto zeile : teile(text, '\n'))
        meldungen.emplace_back(zeile.substr(std::min(zeitstempel, zeile.size())));
    return meldungen;
}

Ergebnis KabelWelt::werkzeug(const std::string& programm, const std::vector<std::string>& argumente,
                             double sekunden) {
    const std::string name = programm.substr(programm.rfind('/') + 1);
    aufrufe.push_back(name + " " + verbunden(argumente, " "));
    fristen[aufrufe.back()] = sekunden;
    if (auto anderes = stattWerkzeug ? stattWerkzeug(aufrufe.back()) : std::nullopt)
        return *anderes;
    if (dauerWerkzeug > Dauer{})
        welt.uhr().schlafe(dauerWerkzeug);
    if (name == "adb")
        return adb(argumente);
    if (name == "networksetup")
        return networksetup(argumente);
    if (name == "route")
        return schnittstelle.empty()
                   ? Ergebnis{0, "", "route: writing to routing socket: not in table\n"}
                   : Ergebnis{0, "    gateway: 10.0.0.1\n  interface: " + schnittstelle + "\n", ""};
    if (const auto text = ausgaben.find(name); text != ausgaben.end())
        return {0, text->second, ""};
    return {-1, "", programm + ": Datei oder Ordner nicht gefunden"};
}

Ergebnis KabelWelt::adb(const std::vector<std::string>& worte) {
    if (worte.front() == "devices") {
        std::string liste = "List of devices attached\n";
        for (const auto& h : handys)
            liste += h.serial + "             " + h.zustand + (h.amKabel ? " usb:1-1" : "") + " product:x" +
                     (h.modell.empty() ? "" : " model:" + h.modell) + " transport_id:1\n";
        return {0, liste + "\n", ""};
    }
    if (worte.at(1) == "--list") {
        std::string liste;
        for (const auto& [lokal, handy] : forwards)
            liste += handy + " tcp:" + std::to_string(lokal) +
                     " tcp:" + (lokal == socksPort ? "1080" : "8080") + "\n";
        return {0, liste, ""};
    }
    const std::string& serial = worte.at(1);
    const auto port = [&](std::size_t wort) { return std::atoi(&worte.at(wort)[4]); }; // behind "tcp:"
    if (worte.at(3) == "--remove")
        return forwards.erase(port(4)) > 0 ? Ergebnis{0, "", ""}
                                           : Ergebnis{1, "", "adb: error: listener 'tcp:' not found"};
    if (bereites(serial) == nullptr)
        return {1, "", "adb: error: device '" + serial + "' not found"};
    if (!forwardFehler.empty())
        return {1, "", forwardFehler};
    if (belegtePorts.contains(port(3)))
        return {1, "", "adb: error: cannot bind listener: Address already in use"};
    forwards[port(3)] = serial;
    return {0, std::to_string(port(3)) + "\n", ""};
}

Ergebnis KabelWelt::networksetup(const std::vector<std::string>& worte) {
    if (worte.front() == "-listnetworkserviceorder")
        return {0, "An asterisk (*) denotes that a network service is disabled.\n" + dienste, ""};
    const std::string& dienst = worte.at(1);
    if (("\n" + dienste).find(") " + dienst + "\n") == std::string::npos)
        return {4,
                dienst + " is not a recognized network service.\n** Error: The parameters were not valid.\n",
                ""};
    if (worte.front() == "-getsocksfirewallproxy") {
        const std::string an = socksAn.contains(dienst) && socksAn.at(dienst) ? "Yes" : "No";
        const auto& [adresse, port] = socksZiel[dienst];
        const auto ziel = "\nServer: " + adresse + "\nPort: " + std::to_string(port);
        return {0, "Enabled: " + an + ziel + "\nAuthenticated Proxy Enabled: 0\n", ""};
    }
    if (!networksetupFehler.empty())
        return {4, networksetupFehler + "\n", ""};
    // Setting an address switches the proxy on, and switching it off keeps the address, as on the Mac.
    const bool setztZiel = worte.front() == "-setsocksfirewallproxy";
    if (setztZiel)
        socksZiel[dienst] = {worte.at(2), std::atoi(worte.at(3).c_str())};
    socksAn[dienst] = setztZiel || worte.at(2) == "on";
    return {0, "", ""};
}

std::string KabelWelt::stoppPfad() const {
    return ordner.pfad() + "/heim/Library/Application Support/Mobilsteg Bordlotse/volltunnel.stopp";
}

std::optional<Skriptfehler> KabelWelt::fuehreAus(const std::string& quelle) {
    EXPECT_TRUE(haupt.istHier()) << "the platform runs scripts on the main thread only";
    skripte.push_back(quelle);
    if (tunnel.passwort > Dauer{})
        welt.uhr().schlafe(tunnel.passwort);
    if (tunnel.skriptfehler)
        return tunnel.skriptfehler;
    meisteHelfer = std::max(meisteHelfer, ++helfer);
    // A helper of its own looks at the files ten times a second, as the real one does.
    auto leben = [this, art = tunnel, bereitAb = welt.jetzt() + tunnel.bisLaeuft, platz = helferleben.size(),
                  gebeten = std::optional<Dauer>(), oben = false]() mutable {
        const bool marke = existiert(stoppPfad() + ".laeuft");
        oben = oben || marke;
        if (!gebeten && !art.taub && existiert(stoppPfad()))
            gebeten = welt.jetzt();
        if (gebeten ? oben && welt.jetzt() - *gebeten < art.bisWeg : welt.jetzt() < bereitAb)
            return;
        if (gebeten || art.zurueckgebaut)
            beendeHelfer(platz, gebeten ? "" : *art.zurueckgebaut);
        else if (!art.stumm && !marke)
            schreibeAtomar(stoppPfad() + ".laeuft", "", Haltbarkeit::fluechtig);
    };
    constexpr Dauer abstand = std::chrono::milliseconds(100);
    helferleben.push_back(welt.schlange("helfer").wiederhole(abstand / 2, abstand, leben));
    return std::nullopt;
}

void KabelWelt::beendeHelfer(std::size_t platz, const std::string& grund) {
    helferleben[platz].reset();
    --helfer;
    if (!grund.empty())
        schreibeAtomar(stoppPfad() + ".fehler", grund, Haltbarkeit::fluechtig);
    std::filesystem::remove(stoppPfad() + ".laeuft");
}

int KabelWelt::frage(const Frage& frage) {
    EXPECT_TRUE(haupt.istHier());
    fragen.push_back(frage.nachricht);
    if (antworten.empty()) {
        ADD_FAILURE() << "unerwartete Frage: " << frage.nachricht;
        return -1;
    }
    const int antwort = antworten.front();
    antworten.erase(antworten.begin());
    return antwort;
}

const Modellhandy* KabelWelt::bereites(const std::string& serial) const {
    const auto handy = std::find_if(handys.begin(), handys.end(), [&](const auto& h) {
        return h.serial == serial && h.zustand == "device";
    });
    return handy == handys.end() ? nullptr : &*handy;
}

const Modellhandy* KabelWelt::anPort(int port) const {
    static const Modellhandy fremdes{.serial = "", .austritt = "198.51.100.66"};
    if (belegtePorts.contains(port) && !forwards.contains(port))
        return fremdesHandy ? &fremdes : nullptr;
    const auto* handy = forwards.contains(port) ? bereites(forwards.at(port)) : nullptr;
    return handy != nullptr && handy->teilt ? handy : nullptr;
}

bool KabelWelt::proxyGruesst() {
    const auto* handy = anPort(socksPort);
    return handy != nullptr && handy->gruesst;
}

std::optional<HttpErgebnis> KabelWelt::hole(const HttpAnfrage& anfrage) {
    const bool durchProxy = anfrage.weg == HttpAnfrage::Weg::durchProxy;
    const auto hinPort = std::string("http://127.0.0.1:").size();
    const auto* handy = anPort(durchProxy ? socksPort : std::atoi(anfrage.url.c_str() + hinPort));
    if (handy == nullptr || (durchProxy && !(handy->austritt && handy->gruesst)))
        return std::nullopt;
    if (durchProxy)
        return HttpErgebnis{200, *handy->austritt};
    if (const auto bericht = anfrage.url.find("/api/bericht?name="); bericht != std::string::npos) {
        berichte.emplace_back(anfrage.url.substr(bericht + 18), anfrage.koerper);
        return HttpErgebnis{nimmtBerichte ? 200 : 503, ""};
    }
    anmeldungen.push_back(anfrage.koerper);
    return HttpErgebnis{200, R"({"app":"mobilsteg","proxy_port":1080,"kabel":{},"zustand":")" +
                                 handy->entscheid + "\"" +
                                 (handy->status.empty() ? "" : ",\"status\":" + handy->status) + "}"};
}

} // namespace mobilsteg
