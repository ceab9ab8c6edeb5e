// Every way in which the program ends, and what it may leave behind: nothing.

#include "tests/hilfe/Fahrtbank.hpp"

#include <gmock/gmock.h>

#include <iostream>
#include <random>

using namespace mobilsteg;
using namespace testing;

namespace {

/// How the phone is set, what is done to it, how the log ends when the signal comes, and which it is.
const std::tuple<const char*, std::vector<const char*>, const char*, int> abschnitte[] = {
    {"--erlaubt", {}, "Kein Handy am Kabel — USB-Debugging an?", SIGTERM},
    {"--ohne-debugging", {"stecken"}, "„USB-Debugging zulassen“ bestätigen", SIGTERM},
    {"--weitergabe-aus", {"stecken"}, "Klasse, Weitergabe an, Losfahren", SIGHUP},
    {"--erlaubt", {"vergessen", "stecken"}, "Warte auf das Ja am Handy …", SIGTERM},
    {"--erlaubt", {"ablehnen", "stecken"}, "Am Handy abgelehnt", SIGTERM},
    {"--erlaubt", {"proxy stumm", "stecken"}, "Prüfe den Weg durch das Handy …", SIGTERM},
    {"--erlaubt", {"stecken"}, "Fährt mit", SIGINT},
};

/// A terminal sends Ctrl-C to all in its foreground; the tool that takes the proxy back survives it.
TEST(Ende, inJederPhaseRaeumtEinSignalAllesAuf) {
    for (const auto& [option, befehle, phase, signal] : abschnitte) {
        SCOPED_TRACE(phase);
        Fahrtbank bank;
        bank.starte();
        bank.erwartePhase("Kein Handy am Kabel"); // by now it has started the adb server
        const auto handy = bank.handy({option});
        for (const char* befehl : befehle)
            handy.sage(befehl);
        const auto ende = std::string(phase) + "\n";
        ASSERT_TRUE(warteBis([&] { return bank.protokoll().ends_with(ende); })) << bank.protokoll();
        bank.ordner.lege("/mac/zustand/langsam.networksetup", "");
        const std::string aufrufe = "/mac/zustand/aufrufe", vorher = bank.ordner.lies(aufrufe);
        bank.programm->sendeGruppe(signal);
        if (bank.proxyAn()) { // a second one changes nothing: the tool is under way
            EXPECT_TRUE(warteBis([&] { return bank.ordner.lies(aufrufe) != vorher; }));
            bank.programm->sendeGruppe(signal);
        }
        EXPECT_EQ(bank.programm->warteAufEnde(), 0);
        const auto zeile = "Signal " + std::to_string(signal) + " -- räume auf und beende";
        EXPECT_THAT(bank.protokoll(), AllOf(HasSubstr(zeile), Not(ContainsRegex("Signal.*Signal"))));
        bank.erwarteNichts();
    }
}

/// The first two times with all of it up, then at random, in every third with the clean-up begun; every
/// fourth time the watchman dies with the program. MOBILSTEG_TODE=200 makes it a long one.
TEST(Ende, nachKeinemTodBleibtEtwas) {
    const char* wunsch = std::getenv("MOBILSTEG_TODE");
    const int tode = wunsch != nullptr ? std::atoi(wunsch) : 2;
    const unsigned samen = std::random_device{}();
    std::mt19937 zufall(samen);
    Fahrtbank bank;
    const auto handy = bank.handy();
    for (int tod = 0; tod < tode; ++tod) {
        SCOPED_TRACE("Samen " + std::to_string(samen) + ", Tod " + std::to_string(tod));
        handy.sage("weitergabe an");
        bank.starte(vpnLotse);
        if (tod < 2)
            EXPECT_TRUE(warteBis([&] { return bank.proxyAn() && bank.helferLaeuft(); }));
        else
            std::this_thread::sleep_for(std::chrono::milliseconds(zufall() % 1600));
        if (tod % 3 == 2) {
            bank.programm->sende(SIGTERM);
            std::this_thread::sleep_for(std::chrono::milliseconds(zufall() % 400));
        }
        if (tod % 4 == 1) {
            bank.toeteMitWaechter();
            EXPECT_TRUE(bank.proxyAn() || tod > 1);
            handy.sage("weitergabe aus");
            std::filesystem::remove(bank.ordner.pfad() + standdatei);
            bank.starte(vpnLotse);
            ASSERT_TRUE(bank.imStand(tod == 1 ? "\"phase\": \"In Mobilsteg" : "phase"));
            EXPECT_FALSE(tod == 1 && bank.proxyAn()) << "taken back by the start already";
            bank.programm->sende(SIGTERM);
            EXPECT_EQ(bank.programm->warteAufEnde(), 0);
        } else {
            constexpr int signale[] = {SIGKILL, SIGQUIT, SIGSEGV, SIGABRT, SIGTERM, SIGBUS, SIGUSR1, SIGXCPU};
            bank.programm->sende(tod == 0 ? SIGKILL : signale[zufall() % std::size(signale)]);
            EXPECT_TRUE(bank.programm->warteAufEnde());
        }
        const auto todeszeit = std::chrono::steady_clock::now();
        ASSERT_TRUE(warteBis([&] { return bank.verlassen(); }, 90));
        std::cout << std::chrono::duration<double>(std::chrono::steady_clock::now() - todeszeit).count()
                  << " s nach dem Ende ist alles fort\n";
        bank.erwarteNichts();
        EXPECT_TRUE(tod > 0 || bank.imStand("\"phase\": \"Beendet\""));
        // A tool that misses its limit makes it „nicht alles ließ sich aufräumen“.
        EXPECT_TRUE(tod > 0 || bank.protokoll().find("unerwartet beendet worden — ") != std::string::npos)
            << bank.protokoll();
    }
}

} // namespace
