// A simulated phone for the real adb: after `adb connect 127.0.0.1:PORT` it offers the SOCKS5 proxy and the
// interface of the phone's app.

#include "plattform/Text.hpp"
#include "probe/handy/Handy.hpp"
#include "probe/handy/Kabel.hpp"
#include "probe/handy/Netz.hpp"

#include <sys/socket.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <iostream>
#include <map>
#include <thread>

using namespace mobilsteg;
using namespace mobilsteg::probehandy;

namespace {

constexpr const char* aufruf = R"(Aufruf: mobilsteg-probehandy [OPTIONEN]
        mobilsteg-probehandy --sage STEUERPORT BEFEHL…

  --port N           Port für adb (sonst irgendein freier)
  --steuerport N     Port für Befehle (sonst irgendein freier)
  --ordner DIR       legt Berichte hier unter berichte ab
  --modell NAME      Modell des Handys (SM_S911B)
  --ohne-debugging   der Rechner ist noch nicht zugelassen
  --weitergabe-aus   die App gibt noch nichts weiter
  --erlaubt          der Mac ist schon erlaubt
  --adb-server PORT  meldet sich beim Stecken und Ziehen selbst bei diesem adb-Server
  --stecken          steckt gleich beim Start (ohne --adb-server immer)

Die Befehle zeigt „mobilsteg-probehandy --sage STEUERPORT hilfe“.
)";

struct Optionen {
    int port = 0;
    int steuerport = 0;
    int adbServer = 0;
};

/// False: something in it is unknown.
bool liesOptionen(const std::vector<std::string>& worte, Optionen& optionen, Handy& handy) {
    const std::map<std::string, int*> ports = {{"--port", &optionen.port},
                                               {"--steuerport", &optionen.steuerport},
                                               {"--adb-server", &optionen.adbServer}};
    for (std::size_t i = 0; i < worte.size(); ++i) {
        const std::string& wort = worte[i];
        if (wort == "--ohne-debugging")
            handy.debugging = false;
        else if (wort == "--weitergabe-aus")
            handy.weitergabe = false;
        else if (wort == "--erlaubt")
            handy.entscheidung = "erlaubt";
        else if (wort == "--stecken")
            handy.gesteckt = true;
        else if (++i == worte.size())
            return false;
        else if (const auto port = ports.find(wort); port != ports.end()) {
            if (worte[i].find_first_not_of("0123456789") != std::string::npos)
                return false;
            *port->second = std::atoi(worte[i].c_str());
        } else if (wort == "--ordner")
            handy.ordner = worte[i];
        else if (wort == "--modell")
            handy.modell = worte[i];
        else
            return false;
    }
    handy.gesteckt = handy.gesteckt || optionen.adbServer == 0;
    return true;
}

/// The answer's lines; the last one is "ok" or begins with "fehler: ".
std::string beantworte(Handy& handy, Kabel& kabel, std::string_view befehl) {
    if (befehl == "hilfe")
        return std::string(befehlsliste) + "ok\n";
    if (befehl == "stecken") {
        const std::string fehler = kabel.stecke();
        return fehler.empty() ? "ok\n" : "fehler: " + fehler + "\n";
    }
    if (befehl == "ziehen") {
        kabel.ziehe();
        return "ok\n";
    }
    {
        const std::scoped_lock sperre(handy.schloss);
        if (befehl == "zustand")
            return zustandszeile(handy) + "\nok\n";
        if (!fuehreAus(handy, befehl))
            return "fehler: unbekannter Befehl „" + std::string(befehl) + "“, siehe „hilfe“\n";
    }
    kabel.wendeAn();
    return "ok\n";
}

/// Sends one command to the phone that runs and prints its answer.
int sage(const std::vector<std::string>& worte) {
    const Deskriptor buchse = verbinde(worte.empty() ? 0 : std::atoi(worte.front().c_str()));
    if (worte.size() < 2) {
        std::cerr << aufruf;
        return 2;
    }
    if (!buchse) {
        std::cerr << "probehandy: An Port " << worte.front() << " läuft kein Probehandy\n";
        return 1;
    }
    sende(buchse, verbunden({worte.begin() + 1, worte.end()}, " "));
    ::shutdown(buchse.nummer(), SHUT_WR); // that is all of it
    const std::string antwort = liesAlles(buchse);
    std::cout << antwort << std::flush;
    return antwort.ends_with("ok\n") ? 0 : antwort.find("unbekannt") != antwort.npos ? 2 : 1;
}

int betreibe(const Optionen& optionen, Handy& handy) {
    sigset_t signale;
    sigemptyset(&signale);
    sigaddset(&signale, SIGINT);
    sigaddset(&signale, SIGTERM);
    ::pthread_sigmask(SIG_BLOCK, &signale, nullptr); // before any thread: all inherit it

    Deskriptor horcher = horche(optionen.port);
    const Deskriptor steuerung = horche(optionen.steuerport);
    if (!horcher || !steuerung) {
        std::cerr << "probehandy: Port " << (horcher ? optionen.steuerport : optionen.port) << ": "
                  << fehlerbeschreibung(errno) << '\n';
        return 1;
    }
    const std::string ports = "probehandy: adb 127.0.0.1:" + std::to_string(portVon(horcher)) +
                              "\nprobehandy: steuerung 127.0.0.1:" + std::to_string(portVon(steuerung)) +
                              "\n";
    Kabel kabel(handy, std::move(horcher), optionen.adbServer);
    kabel.starte();
    std::thread([&] {
        while (true) {
            auto buchse = std::make_shared<Deskriptor>(nimmVerbindungAn(steuerung));
            std::thread([&, buchse] {
                sende(*buchse, beantworte(handy, kabel, liesAlles(*buchse)));
            }).detach();
        }
    }).detach();
    std::cout << ports << std::flush;

    int signal = 0;
    ::sigwait(&signale, &signal);
    kabel.ziehe(); // pulled out in good order, it does not linger in the adb server's list
    std::_Exit(0); // the threads still wait for the net
}

} // namespace

int main(int anzahl, char** worte) {
    std::signal(SIGPIPE, SIG_IGN);
    const std::vector<std::string> argumente(worte + 1, worte + anzahl);
    if (!argumente.empty() && argumente.front() == "--sage")
        return sage({argumente.begin() + 1, argumente.end()});
    if (argumente == std::vector<std::string>{"--hilfe"}) {
        std::cout << aufruf;
        return 0;
    }
    Handy handy;
    Optionen optionen;
    if (!liesOptionen(argumente, optionen, handy)) {
        std::cerr << aufruf;
        return 2;
    }
    if (!handy.ordner.empty())
        (void)legeElternordnerAn(handy.ordner + "/berichte/x");
    return betreibe(optionen, handy);
}
