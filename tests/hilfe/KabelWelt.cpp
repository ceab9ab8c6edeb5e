#include "tests/hilfe/KabelWelt.hpp"

#include "plattform/Text.hpp"

#include <algorithm>
#include <cstdio>

namespace mobilsteg {

KabelWelt::KabelWelt(std::uint64_t samen) : welt(samen) {
    ordner.lege("/wurzel/opt/homebrew/bin/adb", "#!", true);
}

KabelWelt::~KabelWelt() {
    welt.beende();
}

Kabel& KabelWelt::baue() {
    q = &welt.schlange("kabel.takt");
    const auto laeufer = [this](const std::string& programm, const std::vector<std::string>& argumente,
                                double) { return werkzeug(programm, argumente); };
    const Buendel buendel{buendelkennung, std::nullopt, "1.0", "1"};
    const Orte orte{ordner.pfad() + "/heim", ordner.pfad() + "/wurzel"};
    kabel = std::make_unique<Kabel>(
        Kabel::Anschluesse{haupt, *q, welt.uhr(), laeufer, *this, einstellungen, standdienst, buendel, orte,
                           "Testmac", [this](const std::string& warum) { abgebrochen = warum; }});
    return *kabel;
}

Kabel& KabelWelt::starte() {
    baue();
    haupt.sync([this] { kabel->start(); });
    return *kabel;
}

void KabelWelt::laufeBisSekunde(double sekunden) {
    welt.laufe(std::chrono::duration_cast<Dauer>(std::chrono::duration<double>(sekunden)) - welt.jetzt());
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

bool KabelWelt::rief(const std::string& stueck) const {
    return std::any_of(aufrufe.begin(), aufrufe.end(),
                       [&](const auto& a) { return a.find(stueck) != std::string::npos; });
}

Ergebnis KabelWelt::werkzeug(const std::string& programm, const std::vector<std::string>& argumente) {
    const std::string name = programm.substr(programm.rfind('/') + 1);
    aufrufe.push_back(name + " " + verbunden(argumente, " "));
    if (vorWerkzeug)
        vorWerkzeug(aufrufe.back());
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
    if (!networksetupFehler.empty())
        return {4, networksetupFehler + "\n", ""};
    if (worte.front() == "-setsocksfirewallproxystate")
        socksAn[worte.at(1)] = worte.at(2) == "on";
    return {0, "", ""};
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
    anmeldungen.push_back(anfrage.koerper);
    return HttpErgebnis{200, R"({"app":"mobilsteg","proxy_port":1080,"kabel":{},"zustand":")" +
                                 handy->entscheid + "\"" +
                                 (handy->status.empty() ? "" : ",\"status\":" + handy->status) + "}"};
}

} // namespace mobilsteg
