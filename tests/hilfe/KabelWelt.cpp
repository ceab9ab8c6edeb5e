#include "tests/hilfe/KabelWelt.hpp"

#include "plattform/Dateien.hpp"
#include "plattform/Text.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>

namespace mobilsteg {

KabelWelt::KabelWelt(std::uint64_t samen) : welt(samen) {
    ordner.lege("/wurzel/opt/homebrew/bin/adb", "#!", true);
    ordner.lege("/Resources/mobilsteg-volltunnel", "#!", true);
}

KabelWelt::~KabelWelt() {
    welt.beende();
}

Kabel& KabelWelt::baue() {
    q = &welt.schlange("kabel.takt");
    const auto laeufer = [this](const std::string& programm, const std::vector<std::string>& argumente,
                                double sekunden) { return werkzeug(programm, argumente, sekunden); };
    const Buendel buendel{buendelkennung, ordner.pfad() + "/Resources", version, bauversion};
    const Orte orte{ordner.pfad() + "/heim", ordner.pfad() + "/wurzel"};
    kabel = std::make_unique<Kabel>(
        Kabel::Anschluesse{haupt, *q, welt.schlange("volltunnel.start"), welt.uhr(), laeufer, *this,
                           einstellungen, standdienst, skript, dialog, [this] { return browser; },
                           [this](const BrowserFund& fund) { geoeffnet.push_back(fund.name); }, buendel, orte,
                           "Testmac", [this](const std::string& warum) { brichAb(warum); }});
    return *kabel;
}

Kabel& KabelWelt::starte() {
    baue();
    haupt.sync([this] { kabel->start(); });
    return *kabel;
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

void KabelWelt::laufeBisSekunde(double sekunden) {
    welt.laufe(std::chrono::duration_cast<Dauer>(std::chrono::duration<double>(sekunden)) - welt.jetzt());
}

const Phase& KabelWelt::phaseBei(double sekunden) {
    laufeBisSekunde(sekunden);
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
    if (vorWerkzeug)
        vorWerkzeug(aufrufe.back());
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
            liste += h.serial + "             " + h.zustand + " product:x" +
                     (h.modell.empty() ? "" : " model:" + h.modell) + " transport_id:1\n";
        return {0, liste + "\n", ""};
    }
    const auto port = [&](const std::string& wort) { return std::atoi(wort.c_str() + 4); }; // behind "tcp:"
    const std::string& serial = worte.at(1);
    if (worte.at(3) == "--remove") {
        const bool da = forwards.erase(port(worte.at(4))) > 0;
        return da ? Ergebnis{0, "", ""} : Ergebnis{1, "", "adb: error: listener 'tcp:' not found"};
    }
    const bool da = std::any_of(handys.begin(), handys.end(),
                                [&](const auto& h) { return h.serial == serial && h.zustand == "device"; });
    if (!da)
        return {1, "", "adb: error: device '" + serial + "' not found"};
    const int lokal = port(worte.at(3));
    if (!forwardFehler.empty())
        return {1, "", forwardFehler};
    if (belegtePorts.contains(lokal))
        return {1, "", "adb: error: cannot bind listener: Address already in use"};
    forwards[lokal] = serial;
    return {0, std::to_string(lokal) + "\n", ""};
}

Ergebnis KabelWelt::networksetup(const std::vector<std::string>& worte) {
    if (worte.front() == "-listnetworkserviceorder")
        return {0, "An asterisk (*) denotes that a network service is disabled.\n" + dienste, ""};
    if (("\n" + dienste).find(") " + worte.at(1) + "\n") == std::string::npos)
        return {4,
                worte.at(1) +
                    " is not a recognized network service.\n** Error: The parameters were not valid.\n",
                ""};
    const std::string& dienst = worte.at(1);
    if (worte.front() == "-getsocksfirewallproxy") {
        const auto an = socksAn.find(dienst);
        const auto& [adresse, port] = socksZiel[dienst];
        return {0,
                std::string("Enabled: ") + (an != socksAn.end() && an->second ? "Yes" : "No") + "\nServer: " +
                    adresse + "\nPort: " + std::to_string(port) + "\nAuthenticated Proxy Enabled: 0\n",
                ""};
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

std::optional<Skriptfehler> KabelWelt::fuehreSkriptAus(const std::string& quelle) {
    EXPECT_TRUE(haupt.istHier()) << "the platform runs scripts on the main thread only";
    skripte.push_back(quelle);
    if (tunnel.passwort > Dauer{})
        welt.uhr().schlafe(tunnel.passwort);
    if (tunnel.skriptfehler)
        return tunnel.skriptfehler;
    meisteHelfer = std::max(meisteHelfer, ++helfer);
    helferLebt(welt.jetzt() + tunnel.bisLaeuft);
    return std::nullopt;
}

/// A helper of its own, looking at the files ten times a second as the real one does.
void KabelWelt::helferLebt(Dauer bereitAb) {
    const auto art = tunnel;
    const auto platz = helferleben.size();
    auto leben = [this, art, bereitAb, platz, seit = std::optional<Dauer>()]() mutable {
        const bool gerufen = seit || (!art.taub && existiert(stoppPfad()));
        if (gerufen && existiert(stoppPfad() + ".laeuft")) {
            seit = seit.value_or(welt.jetzt());
            if (welt.jetzt() - *seit < art.bisWeg)
                return;
        }
        if (!gerufen && art.zurueckgebaut && welt.jetzt() >= bereitAb)
            schreibeAtomar(stoppPfad() + ".fehler", *art.zurueckgebaut, Haltbarkeit::fluechtig);
        if (gerufen || (art.zurueckgebaut && welt.jetzt() >= bereitAb)) {
            std::filesystem::remove(stoppPfad() + ".laeuft");
            --helfer;
            helferleben[platz].reset();
        } else if (!art.stumm && welt.jetzt() >= bereitAb && !existiert(stoppPfad() + ".laeuft")) {
            schreibeAtomar(stoppPfad() + ".laeuft", "", Haltbarkeit::fluechtig);
        }
    };
    helferleben.push_back(welt.schlange("helfer").wiederhole(std::chrono::milliseconds(50),
                                                             std::chrono::milliseconds(100), leben));
}

void KabelWelt::helferBautZurueck(const std::string& grund) {
    helferleben.back().reset();
    --helfer;
    if (!grund.empty())
        schreibeAtomar(stoppPfad() + ".fehler", grund, Haltbarkeit::fluechtig);
    std::filesystem::remove(stoppPfad() + ".laeuft");
}

int KabelWelt::beantworte(const Frage& frage) {
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

const Modellhandy* KabelWelt::handyHinter(int port) const {
    const auto forward = forwards.find(port);
    if (forward == forwards.end())
        return nullptr;
    const auto handy = std::find_if(handys.begin(), handys.end(), [&](const auto& h) {
        return h.serial == forward->second && h.zustand == "device" && h.teilt;
    });
    return handy == handys.end() ? nullptr : &*handy;
}

std::optional<HttpErgebnis> KabelWelt::hole(const HttpAnfrage& anfrage) {
    if (dauerHttp > Dauer{})
        welt.uhr().schlafe(dauerHttp);
    if (anfrage.weg == HttpAnfrage::Weg::durchProxy) {
        const auto* handy = handyHinter(socksPort);
        if (handy == nullptr || !handy->austritt)
            return std::nullopt;
        return HttpErgebnis{200, *handy->austritt};
    }
    const auto* handy =
        handyHinter(kabel ? std::atoi(anfrage.url.c_str() + std::string("http://127.0.0.1:").size()) : 0);
    if (handy == nullptr)
        return std::nullopt;
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
