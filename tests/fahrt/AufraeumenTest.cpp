// What the options do besides a trip: the clean-up by hand ("my internet is gone"), the self-test.

#include "tests/fahrt/Fahrtbank.hpp"

#include <gmock/gmock.h>

using namespace mobilsteg;
using namespace testing;

namespace {

TEST(Aufraeumen, nachEinemAbschussMitKaputtenEinstellungen) {
    Fahrtbank bank;
    bank.mitTunnel(einstellungen);
    const auto handy = bank.handy();
    bank.starte();
    ASSERT_TRUE(bank.imStand(laeuftImStand));
    bank.toeteMitWaechter();
    EXPECT_TRUE(bank.kommt(tunnellog, "der Bordlotse ist weg")) << "the helper goes by itself";
    EXPECT_TRUE(warteBis([&] { return !bank.helferLaeuft(); }));
    EXPECT_TRUE(bank.proxyAn());
    bank.ordner.lege(einstellungen, "{ kaputt");
    const std::string fremder =
        handy->serial() + " tcp:" + bank.adb({"forward", "tcp:0", "tcp:8080"}) + " tcp:8080";

    const auto ergebnis = bank.rufe({"--aufraeumen"});
    EXPECT_EQ(ergebnis.status, 0) << ergebnis.fehler;
    EXPECT_THAT(ergebnis.ausgabe,
                AllOf(HasSubstr("System-Proxy: an „Wi-Fi“ ausgeschaltet"),
                      HasSubstr("Volltunnel: keiner läuft"), HasSubstr("Forwards: 2 entfernt")));
    EXPECT_FALSE(bank.proxyAn());
    EXPECT_EQ(bank.forwards(), fremder) << "nobody else's is taken away";
    EXPECT_EQ(bank.ordner.lies(einstellungen), "{ kaputt") << "not overwritten";
}

TEST(Aufraeumen, nebenEinemLaufendenUndMitLebendemHelfer) {
    Fahrtbank bank;
    bank.mitTunnel(einstellungen);
    const auto handy = bank.handy();
    bank.starte();
    ASSERT_TRUE(bank.imStand(laeuftImStand));
    const auto zweiter = bank.rufe({"--terminal"});
    EXPECT_EQ(zweiter.status, 1);
    EXPECT_THAT(zweiter.fehler, HasSubstr("mobilsteg-bordlotse: läuft schon (Prozess "));
    EXPECT_EQ(bank.rufe({"--anmeldung"}).ausgabe, "") << "nothing is taken from a running one";
    EXPECT_TRUE(bank.proxyAn() && bank.helferLaeuft());
    EXPECT_THAT(bank.rufe({"--selbsttest"}).ausgabe, ContainsRegex("Prozess [1-9][0-9]* · Wächter [1-9]"));
    EXPECT_THAT(bank.rufe({"--aufraeumen"}).ausgabe,
                AllOf(HasSubstr("Achtung: Ein Bordlotse läuft noch"),
                      HasSubstr("Volltunnel: beendet, Routen und DNS zurückgebaut")));
}

TEST(Aufraeumen, laesstFremdeProxysInRuheUndSagtWasNichtGeht) {
    const Fahrtbank bank;
    const std::tuple<const char*, const char*, int> faelle[] = {
        // what happens before, first the end of the real adb, whose server would stay; what is said; the
        // status
        {"rm opt/homebrew/bin/adb", "adb ist nicht da", 0},
        {"cp kaputt opt/homebrew/bin/adb", "Forwards: adb lässt sich nicht befragen: kein Server\n", 1},
        {"cp halb opt/homebrew/bin/adb", "Forwards: tcp:1080 nicht entfernt: fort\n", 1},
        {"rm opt/homebrew/bin/adb; usr/sbin/networksetup -setsocksfirewallproxy Wi-Fi 10.0.0.5 1080",
         "keiner zeigt auf 127.0.0.1:1080", 0},
        {"mv usr/sbin/networksetup usr/sbin/echt; cp kaputt usr/sbin/networksetup",
         "System-Proxy: „Wi-Fi“ lässt sich nicht befragen", 1},
        {R"(rm usr/sbin/networksetup; echo '{"proxy.dienst":"Wi-Fi"}' >"$1")",
         "an „Wi-Fi“ nicht ausgeschaltet", 1},
    };
    bank.ordner.lege("/mac/kaputt", R"(#!/bin/sh
        case $* in -getsocks*Wi-Fi | *forward*) echo kein Server >&2; exit 4 ;; esac
        exec "${0%/*}/echt" "$@")",
                     true);
    bank.ordner.lege("/mac/halb", R"(#!/bin/sh
        [ $# = 2 ] && exec echo A tcp:1080 tcp:1080
        echo fort >&2; exit 1)",
                     true);
    for (const auto& [davor, gesagt, status] : faelle) {
        const std::string befehl = "cd \"$0\" && " + std::string(davor);
        (void)lauf("/bin/sh", {"-c", befehl, bank.ordner.pfad() + "/mac", bank.ordner.pfad() + einstellungen},
                   60);
        const auto ergebnis = bank.rufe({"--aufraeumen"});
        EXPECT_EQ(ergebnis.status, status) << gesagt;
        EXPECT_THAT(ergebnis.ausgabe, HasSubstr(gesagt));
        EXPECT_EQ(ergebnis.ausgabe.find("von Hand: Systemeinstellungen") != std::string::npos, status == 1);
    }
    EXPECT_TRUE(bank.proxyAn()) << "somebody else's";
    EXPECT_THAT(bank.ordner.lies(einstellungen), HasSubstr("proxy.dienst")) << "the next one can try again";
}

TEST(Befehlszeile, sagtWasFalschIstUndWasSieSiehtUndAendertNichts) {
    const Fahrtbank bank;
    const auto vorher = bank.ordner.lies(einstellungen);
    bank.ordner.lege("/mac/Applications/Google Chrome.app/Contents/Info.plist", "");
    for (const char* variable : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
        ::unsetenv(variable);
    const std::vector<std::string> hilfe = {"--hilfe"};
    const std::tuple<std::vector<std::string>, int, const char*> faelle[] = {
        {{"--unsinn"}, 2, "Unbekannte Option: --unsinn"},
        {{"--heim"}, 2, "--heim braucht einen Ordner"},
        {{"--heim", "--version"}, 2, "--heim braucht einen Ordner"},
        {{"--heim="}, 2, "--heim braucht einen Ordner"},
        {{"--hilfe=ja"}, 2, "--hilfe nimmt keinen Wert"},
        {{"--hilfe", "--aufraeumen"}, 2, "--hilfe und --aufraeumen schließen sich aus"},
        {{"--terminal", "--version"}, 2, "--terminal und --version schließen sich aus"},
        {{"--heim=/anderswo", "--selbsttest"}, 0, "/anderswo"},
        {hilfe, 0, "Internet weg?"},
        {{"--version"}, 0, "mobilsteg-bordlotse 1."},
        {{}, 1, "Im Terminal läuft das Programm mit --terminal"},
        {{"--selbsttest"}, 0, "de.mobilsteg.bordlotse"},
        {{"--selbsttest"}, 0, "Netzwerkdienst  Wi-Fi"},
        {{"--selbsttest"}, 0, "/mac/opt/homebrew/bin/adb"},
        {{"--selbsttest"}, 0, "Chrome ohne fahrtwind"},
    };
    for (const auto& [worte, status, text] : faelle) {
        const auto ergebnis = bank.rufe(worte);
        EXPECT_EQ(ergebnis.status, status) << text;
        EXPECT_THAT(status == 0 ? ergebnis.ausgabe : ergebnis.fehler, HasSubstr(text));
        for (const auto zeile : teile(worte == hilfe ? ergebnis.ausgabe : "", '\n'))
            EXPECT_LE(zeichenzahl(zeile), 80U) << zeile;
    }
    EXPECT_EQ(bank.ordner.lies(einstellungen), vorher);
    EXPECT_FALSE(existiert(bank.ordner.pfad() + "/heim/Library/Logs"));
}

TEST(Befehlszeile, ergaenztInDerBashWasPasst) {
    const Ordner ordner;
    ordner.lege("/mit blank/datei", "");
    const std::pair<std::string, std::string> faelle[] = {
        {"--te", "--terminal;"},
        {"--waech", ""}, // the program's own are shown to nobody
        {"--terminal --", "--heim;--wurzel;"},
        {"--heim " + ordner.pfad() + "/m", ordner.pfad() + "/mit blank;"},
        {"--heim = " + ordner.pfad() + "/m", ordner.pfad() + "/mit blank;"}, // "--heim=…": three words to it
    };
    for (const auto& [getippt, soll] : faelle) {
        const auto ergebnis =
            lauf("/bin/bash",
                 {"-c",
                  R"(. "$0"; COMP_WORDS=(x $1); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _mobilsteg_bordlotse
                     printf '%s' "${COMPREPLY[@]/%/;}")",
                  BIN_ORDNER "/../anleitung/mobilsteg-bordlotse.bash", getippt},
                 60);
        EXPECT_EQ(ergebnis.ausgabe, soll) << getippt << ergebnis.fehler;
    }
}

} // namespace
