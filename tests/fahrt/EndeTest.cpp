// Every way in which the program ends, and what it may leave behind: nothing.

#include "tests/fahrt/Fahrtbank.hpp"

#include <gmock/gmock.h>

#include <algorithm>
#include <iostream>
#include <random>

using namespace mobilsteg;
using namespace testing;

namespace {

struct Abschnitt {
    const char *name, *option;
    const char* befehle; ///< for the phone, with ; between them
    const char* phase;   ///< how the log ends when the signal comes
    int signal;
};

class InJederPhase : public TestWithParam<Abschnitt> {};

TEST_P(InJederPhase, raeumtEinSignalAllesAuf) {
    const auto& abschnitt = GetParam();
    Fahrtbank bank;
    bank.starte();
    bank.erwartePhase("Kein Handy am Kabel"); // by now it has started the adb server
    const auto handy = bank.handy({abschnitt.option});
    for (const auto befehl : teile(abschnitt.befehle, ';'))
        handy->sage(std::string(befehl));
    const auto ende = std::string(abschnitt.phase) + "\n";
    ASSERT_TRUE(warteBis([&] { return bank.protokoll().ends_with(ende); })) << bank.protokoll();
    bank.programm->sende(abschnitt.signal);
    bank.programm->sende(abschnitt.signal); // a second one changes nothing
    EXPECT_EQ(bank.programm->warteAufEnde(), 0);
    const auto zeile = "Signal " + std::to_string(abschnitt.signal) + " -- räume auf und beende";
    EXPECT_THAT(bank.protokoll(), AllOf(HasSubstr(zeile), Not(ContainsRegex("Signal.*Signal"))));
    bank.erwarteNichts();
}

const Abschnitt abschnitte[] = {
    {"keinHandy", "--erlaubt", "", "Kein Handy am Kabel — USB-Debugging an?", SIGTERM},
    {"nichtAutorisiert", "--ohne-debugging", "stecken", "„USB-Debugging zulassen“ bestätigen", SIGINT},
    {"weitergabeAus", "--weitergabe-aus", "stecken", "Klasse, Weitergabe an, Losfahren", SIGHUP},
    {"wartetAufHandy", "--erlaubt", "vergessen;stecken", "Warte auf das Ja am Handy …", SIGTERM},
    {"abgelehnt", "--erlaubt", "ablehnen;stecken", "Am Handy abgelehnt", SIGTERM},
    {"pruefung", "--erlaubt", "proxy stumm;stecken", "Prüfe den Weg durch das Handy …", SIGTERM},
    {"faehrt", "--erlaubt", "stecken", "Fährt mit", SIGTERM},
};
INSTANTIATE_TEST_SUITE_P(Ende, InJederPhase, ValuesIn(abschnitte),
                         [](const auto& fall) { return std::string(fall.param.name); });

/// A terminal sends Ctrl-C to all in its foreground; the tool that takes the proxy back survives it.
TEST(Ende, einZweitesStrgCTrifftDasAufraeumenNicht) {
    Fahrtbank bank;
    const auto handy = bank.handy();
    // On a full disk the log cannot be written; all else goes on.
    std::filesystem::create_directory(bank.ordner.pfad() + "/heim/Library/Logs");
    std::filesystem::create_symlink("/dev/full", bank.ordner.pfad() + protokolldatei);
    bank.starte();
    bank.erwartePhase("Fährt mit");
    bank.ordner.lege("/mac/zustand/langsam.networksetup", "");
    const std::string vorher = bank.ordner.lies("/mac/zustand/aufrufe");
    bank.programm->sendeGruppe(SIGINT);
    ASSERT_TRUE(warteBis([&] { return bank.ordner.lies("/mac/zustand/aufrufe") != vorher; }));
    bank.programm->sendeGruppe(SIGINT);
    bank.programm->sendeGruppe(SIGHUP);
    EXPECT_EQ(bank.programm->warteAufEnde(), 0);
    EXPECT_FALSE(bank.proxyAn());
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
    std::vector<double> sekunden;
    for (int tod = 0; tod < tode; ++tod) {
        SCOPED_TRACE("Samen " + std::to_string(samen) + ", Tod " + std::to_string(tod));
        handy->sage("weitergabe an");
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
            handy->sage("weitergabe aus");
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
        if (tod % 4 != 1)
            sekunden.push_back(
                std::chrono::duration<double>(std::chrono::steady_clock::now() - todeszeit).count());
        bank.erwarteNichts();
        EXPECT_TRUE(tod > 0 || bank.imStand("\"phase\": \"Beendet\""));
        // A tool that misses its limit makes it „nicht alles ließ sich aufräumen“.
        EXPECT_TRUE(tod > 0 || bank.protokoll().find("unerwartet beendet worden — ") != std::string::npos)
            << bank.protokoll();
    }
    std::ranges::sort(sekunden);
    std::cout << "nach " << sekunden[sekunden.size() / 2] << " s, spätestens nach " << sekunden.back()
              << " s ist alles fort\n";
}

} // namespace
