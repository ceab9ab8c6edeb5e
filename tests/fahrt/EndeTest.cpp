// Every way in which the program ends, and what it may leave behind: nothing.

#include "plattform/Text.hpp"
#include "tests/fahrt/Fahrtbank.hpp"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <csignal>
#include <filesystem>
#include <ostream>

using namespace mobilsteg;
using testing::HasSubstr;

namespace {

struct Abschnitt {
    const char* name;
    const char* handy;  ///< the phone's options; empty: no phone
    const char* befehl; ///< for the phone before the start; may be empty
    const char* phase;  ///< how the log ends when the signal comes
    int signal;
};

void PrintTo(const Abschnitt& abschnitt, std::ostream* aus) {
    *aus << abschnitt.name;
}

class InJederPhase : public testing::TestWithParam<Abschnitt> {};

TEST_P(InJederPhase, raeumtEinSignalAllesAuf) {
    const auto& abschnitt = GetParam();
    Fahrtbank bank;
    std::unique_ptr<Probehandy> handy;
    const auto optionen = teile(abschnitt.handy, ' ');
    if (!optionen.empty())
        handy = bank.handy({optionen.begin(), optionen.end()});
    if (*abschnitt.befehl != '\0')
        handy->sage(abschnitt.befehl);
    bank.starte();
    ASSERT_TRUE(warteBis([&] { return bank.protokoll().ends_with(std::string(abschnitt.phase) + "\n"); }))
        << bank.protokoll();
    bank.programm->sende(abschnitt.signal);
    bank.programm->sende(abschnitt.signal); // a second one changes nothing
    EXPECT_EQ(bank.programm->warteAufEnde(), 0) << bank.ausgabe();
    EXPECT_EQ(bank.zeilenMit("Signal " + std::to_string(abschnitt.signal) + " -- räume auf und beende"), 1);
    EXPECT_EQ(bank.zeilenMit("Signal"), 1);
    EXPECT_EQ(bank.adb({"forward", "--list"}), "");
    EXPECT_TRUE(portFrei(1081)) << "an adb server that the program started must not have inherited it";
    EXPECT_FALSE(bank.proxyAn());
}

const Abschnitt abschnitte[] = {
    {"keinHandy", "", "", "Kein Handy am Kabel — USB-Debugging an?", SIGTERM},
    {"nichtAutorisiert", "--stecken --ohne-debugging", "", "„USB-Debugging zulassen“ bestätigen", SIGINT},
    {"weitergabeAus", "--stecken --weitergabe-aus", "", "Klasse, Weitergabe an, Losfahren", SIGHUP},
    {"wartetAufHandy", "--stecken", "", "Warte auf das Ja am Handy …", SIGTERM},
    {"abgelehnt", "--stecken", "ablehnen", "Am Handy abgelehnt", SIGTERM},
    {"pruefung", "--stecken --erlaubt", "proxy stumm", "Prüfe den Weg durch das Handy …", SIGTERM},
    {"faehrt", "--stecken --erlaubt", "", "Fährt mit", SIGTERM},
};
INSTANTIATE_TEST_SUITE_P(Ende, InJederPhase, testing::ValuesIn(abschnitte),
                         [](const auto& fall) { return std::string(fall.param.name); });

/// The terminal sends Ctrl-C to all in its foreground: the tool that is taking the proxy back must survive
/// it.
TEST(Ende, einZweitesStrgCTrifftDasAufraeumenNicht) {
    Fahrtbank bank;
    const auto handy = bank.handy();
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

TEST(Ende, derStandImDienstIstDieDatei) {
    Fahrtbank bank;
    const auto handy = bank.handy();
    bank.starte("mobilsteg-vpnlotse");
    bank.erwartePhase("Fährt mit");
    // A tick may pass between the two looks.
    EXPECT_TRUE(warteBis([&] {
        const std::string antwort = frage(1081, "GET /stand HTTP/1.1\r\nHost: x\r\n\r\n");
        return antwort.ends_with("\r\n\r\n" + bank.stand());
    }));
    EXPECT_EQ(nlohmann::json::parse(bank.stand())["app"], "mobilsteg-vpnlotse");
}

TEST(Befehlszeile, sagtWasFalschIst) {
    const std::tuple<std::vector<std::string>, int, const char*> faelle[] = {
        {{"--unsinn"}, 2, "Unbekannte Option: --unsinn"},
        {{"--heim"}, 2, "--heim braucht einen Ordner"},
        {{"--hilfe"}, 0, "--wurzel DIR"},
        {{"--version"}, 0, "mobilsteg-bordlotse 1."},
        {{}, 1, "Keine Anzeige gefunden"},
    };
    ::unsetenv("DISPLAY");
    ::unsetenv("WAYLAND_DISPLAY");
    ::unsetenv("QT_QPA_PLATFORM");
    for (const auto& [worte, status, text] : faelle) {
        const auto ergebnis = lauf(programmpfad("mobilsteg-bordlotse"), worte, 10);
        EXPECT_EQ(ergebnis.status, status) << text;
        EXPECT_THAT(ergebnis.ausgabe + ergebnis.fehler, HasSubstr(text));
        EXPECT_EQ(ergebnis.fehler.empty(), status == 0);
    }
    const Ordner ordner; // copied without the other file
    std::filesystem::copy_file(programmpfad("mobilsteg-bordlotse"), ordner.pfad() + "/allein");
    const auto allein = lauf(ordner.pfad() + "/allein", {}, 10);
    EXPECT_EQ(allein.status, 1);
    EXPECT_THAT(allein.fehler,
                HasSubstr("/allein-fenster lässt sich nicht starten: Datei oder Ordner nicht gefunden. "));
}

} // namespace
