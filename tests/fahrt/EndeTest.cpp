// Every way in which the program ends, and what it may leave behind: nothing.

#include "plattform/Text.hpp"
#include "tests/fahrt/Fahrtbank.hpp"

#include <gmock/gmock.h>

#include <random>
#include <thread>

using namespace mobilsteg;
using testing::HasSubstr;

namespace {

struct Abschnitt {
    const char* name;
    const char* option;  ///< the phone's
    const char* befehle; ///< for the phone, with ; between them
    const char* phase;   ///< how the log ends when the signal comes
    int signal;
};

class InJederPhase : public testing::TestWithParam<Abschnitt> {};

TEST_P(InJederPhase, raeumtEinSignalAllesAuf) {
    const auto& abschnitt = GetParam();
    Fahrtbank bank;
    bank.starte();
    bank.erwartePhase("Kein Handy am Kabel"); // by now it has started the adb server
    const auto handy = bank.handy({abschnitt.option});
    for (const auto befehl : teile(abschnitt.befehle, ';'))
        handy->sage(std::string(befehl));
    ASSERT_TRUE(warteBis([&] { return bank.protokoll().ends_with(std::string(abschnitt.phase) + "\n"); }))
        << bank.protokoll();
    bank.programm->sende(abschnitt.signal);
    bank.programm->sende(abschnitt.signal); // a second one changes nothing
    EXPECT_EQ(bank.programm->warteAufEnde(), 0) << bank.ausgabe();
    EXPECT_EQ(bank.zeilenMit("Signal " + std::to_string(abschnitt.signal) + " -- räume auf und beende"), 1);
    EXPECT_EQ(bank.zeilenMit("Signal"), 1);
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
INSTANTIATE_TEST_SUITE_P(Ende, InJederPhase, testing::ValuesIn(abschnitte),
                         [](const auto& fall) { return std::string(fall.param.name); });

/// A terminal sends Ctrl-C to all in its foreground; the tool that takes the proxy back survives it.
TEST(Ende, einZweitesStrgCTrifftDasAufraeumenNicht) {
    Fahrtbank bank;
    const auto handy = bank.handy();
    // On a full disk the log cannot be written; all else goes on.
    bank.starte("mobilsteg-bordlotse",
                "mkdir Library/Logs && ln -s /dev/full Library/Logs/MobilstegBordlotse.log");
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

/// MOBILSTEG_TODE=200 makes it a long one.
TEST(Ende, nachKeinemAbschussBleibtEtwas) {
    const char* wunsch = std::getenv("MOBILSTEG_TODE");
    const int tode = wunsch != nullptr ? std::atoi(wunsch) : 4;
    const unsigned samen = std::random_device{}();
    std::mt19937 zufall(samen);
    Fahrtbank bank;
    bank.ordner.lege(vpnEinstellungen, vpnBenutzer);
    const auto handy = bank.handy();
    for (int tod = 0; tod < tode; ++tod) {
        SCOPED_TRACE("Samen " + std::to_string(samen) + ", Tod " + std::to_string(tod));
        handy->sage("weitergabe an");
        bank.starte(vpnLotse);
        std::this_thread::sleep_for(std::chrono::milliseconds(zufall() % 1600));
        bank.programm->toete();
        EXPECT_TRUE(portFrei(1081));
        if (zufall() % 2 == 0)
            handy->sage("weitergabe aus");
        std::filesystem::remove(bank.ordner.pfad() + standdatei);
        bank.starte(vpnLotse);
        ASSERT_TRUE(bank.imStand("phase")) << bank.ausgabe();
        bank.programm->sende(SIGTERM);
        EXPECT_EQ(bank.programm->warteAufEnde(), 0);
        bank.erwarteNichts();
    }
}

TEST(Befehlszeile, sagtWasFalschIst) {
    const std::tuple<std::vector<std::string>, int, const char*> faelle[] = {
        {{"--unsinn"}, 2, "Unbekannte Option: --unsinn"},
        {{"--heim"}, 2, "--heim braucht einen Ordner"},
        {{"--hilfe"}, 0, "--wurzel DIR"},
        {{"--version"}, 0, "mobilsteg-bordlotse 1."},
        {{}, 1, "Im Terminal läuft das Programm mit --terminal"},
    };
    for (const char* variable : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
        ::unsetenv(variable);
    for (const auto& [worte, status, text] : faelle) {
        const auto ergebnis = lauf(programmpfad("mobilsteg-bordlotse"), worte, 60);
        EXPECT_EQ(ergebnis.status, status) << text;
        EXPECT_THAT(status == 0 ? ergebnis.ausgabe : ergebnis.fehler, HasSubstr(text));
    }
}

} // namespace
