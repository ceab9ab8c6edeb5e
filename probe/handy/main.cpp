#include "probe/handy/AdbGeraet.hpp"
#include "probe/handy/Befehle.hpp"
#include "probe/handy/Gedaechtnis.hpp"
#include "probe/handy/HandyApi.hpp"
#include "probe/handy/Handyzustand.hpp"
#include "probe/handy/Optionen.hpp"
#include "probe/handy/Sage.hpp"
#include "probe/handy/Socks.hpp"
#include "probe/handy/Steckplatz.hpp"
#include "probe/handy/Steuerung.hpp"
#include "probe/handy/Tastatur.hpp"

#include <asio/io_context.hpp>
#include <asio/signal_set.hpp>

#include <csignal>
#include <iostream>
#include <string>
#include <variant>

using namespace mobilsteg::probehandy;

namespace {

constexpr std::uint16_t ersterPort = 5600;
constexpr std::uint16_t letzterPort = 5699;

Handyzustand anfangszustand(const Optionen& optionen) {
    Handyzustand zustand;
    if (!optionen.modell.empty()) {
        zustand.modell = optionen.modell;
    }
    if (!optionen.austritt.empty()) {
        zustand.austritt = optionen.austritt;
    }
    zustand.debugging = optionen.debugging;
    zustand.weitergabe = optionen.weitergabe;
    zustand.insNetz = optionen.netz;
    zustand.entscheidung = optionen.erlaubt ? Entscheidung::erlaubt : Entscheidung::fragt;
    return zustand;
}

Dienstwahl dienstwahl(Handyzustand& zustand, Gedaechtnis& gedaechtnis) {
    return [&zustand, &gedaechtnis](std::string_view ziel) -> Dienst {
        if (!zustand.weitergabe) {
            return nullptr;
        }
        if (ziel == "tcp:" + std::to_string(proxyPort)) {
            return [&zustand](std::shared_ptr<Strom> strom) { bedieneSocks(std::move(strom), zustand); };
        }
        if (ziel == "tcp:" + std::to_string(apiPort)) {
            return [&](std::shared_ptr<Strom> strom) { bedieneApi(std::move(strom), zustand, gedaechtnis); };
        }
        return nullptr;
    };
}

std::error_code oeffne(AdbGeraet& geraet, std::optional<std::uint16_t> gewuenscht) {
    if (gewuenscht) {
        return geraet.oeffne(*gewuenscht);
    }
    std::error_code fehler;
    for (std::uint16_t port = ersterPort; port <= letzterPort; ++port) {
        fehler = geraet.oeffne(port);
        if (!fehler) {
            break;
        }
    }
    return fehler;
}

int misslungen(const std::string& grund) {
    std::cerr << "probehandy: " << grund << '\n';
    return 1;
}

std::string belegt(std::uint16_t port, std::error_code fehler) {
    const bool vergeben = fehler == asio::error::address_in_use;
    return "Port " + std::to_string(port) + (vergeben ? " ist belegt" : " lässt sich nicht öffnen");
}

int betreibe(const Optionen& optionen) {
    asio::io_context schleife(1);
    Handyzustand zustand = anfangszustand(optionen);
    Gedaechtnis gedaechtnis;
    if (!optionen.ordner.empty() && gedaechtnis.oeffne(optionen.ordner)) {
        return misslungen("der Ordner „" + optionen.ordner + "“ lässt sich nicht anlegen");
    }
    AdbGeraet geraet(schleife, zustand, dienstwahl(zustand, gedaechtnis));
    if (const auto fehler = oeffne(geraet, optionen.port)) {
        return misslungen(belegt(optionen.port.value_or(ersterPort), fehler));
    }
    Steckplatz steckplatz(schleife, geraet, optionen.adbServer);
    Befehle befehle(zustand, geraet, steckplatz);
    // Pulled out in good order, the phone does not linger in the adb server's list after its end.
    const auto beende = [&] { steckplatz.ziehe(false, [&](const Befehlsantwort&) { schleife.stop(); }); };
    Steuerung steuerung(schleife, befehle, beende);
    if (const auto fehler = steuerung.oeffne(optionen.steuerport)) {
        return misslungen(belegt(optionen.steuerport, fehler));
    }
    asio::signal_set signale(schleife, SIGINT, SIGTERM);
    signale.async_wait([&](std::error_code, int) {
        signale.async_wait([&](std::error_code, int) { schleife.stop(); });
        beende();
    });
    std::cout << "probehandy: adb 127.0.0.1:" << geraet.port()
              << "\nprobehandy: steuerung 127.0.0.1:" << steuerung.port() << std::endl;
    if (optionen.stecken) {
        steckplatz.steckeBeimStart();
    }
    liesTastatur(schleife, befehle, beende);
    schleife.run();
    geraet.trenneAlle();
    return 0;
}

struct Ausfuehrung {
    int operator()(const Optionen& optionen) const { return betreibe(optionen); }
    int operator()(const Sageauftrag& auftrag) const { return sage(auftrag.steuerport, auftrag.befehl); }
    int operator()(Hilfewunsch) const {
        std::cout << hilfe;
        return 0;
    }
    int operator()(Versionswunsch) const {
        std::cout << "mobilsteg-probehandy " << MOBILSTEG_VERSION << '\n';
        return 0;
    }
    int operator()(const Optionsfehler& fehler) const {
        std::cerr << "probehandy: " << fehler.grund << '\n';
        return 2;
    }
};

} // namespace

int main(int anzahl, char** worte) {
    // A reader of our output that goes away must not take us along, and neither must a terminal that wants a
    // program in the background to stop when it reads.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGTTIN, SIG_IGN);
    return std::visit(Ausfuehrung{}, liesOptionen(anzahl, worte));
}
