// The full tunnel with the shipped program: the quoting by running it, the password dialog, a helper that is
// left alone.

#include "netz/Volltunnel.hpp"
#include "plattform/Adapter.hpp"
#include "plattform/Dateien.hpp"
#include "tests/fahrt/Fahrtbank.hpp"

#include <gmock/gmock.h>

#include <csignal>

using namespace mobilsteg;
using namespace testing;

namespace {

constexpr const char* ordnerHeim = "/heim/Library/Application Support/Mobilsteg Bordlotse/volltunnel.stopp";

bool helferLaeuft(const Fahrtbank& bank) {
    return existiert(bank.ordner.pfad() + ordnerHeim + ".laeuft");
}

TEST(Volltunnel, anfuehrungUeberlebtBeideSprachen) {
    const Fahrtbank bank;
    const auto skript = osascriptSkript({bank.ordner.pfad(), bank.ordner.pfad() + "/mac"});
    const std::string helfer = bank.ordner.lege("/mein helfer", "#!/bin/sh\nprintf '%s\\n' \"$@\"\n", true);
    const std::string log = bank.ordner.pfad() + "/helfer.log";
    for (const std::string dienst :
         {"Wi-Fi", R"(Büro "Süd")", R"(a\b\\c)", R"(\"$HOME`id`;&)", "Zeile (2)"}) {
        std::remove(log.c_str());
        const auto befehl = tunnelbefehl(helfer, "/stopp datei", log, 42, {dienst, true, true});
        EXPECT_FALSE(skript->fuehreAus(skriptquelle(befehl, "Warum: „so“ — darum")).has_value());
        const std::string soll =
            "-proxy\n127.0.0.1:1080\n-stopp\n/stopp datei\n-dienst\n" + dienst + "\n-wache\n42\n-nur-vpn\n";
        EXPECT_TRUE(warteBis([&] { return liesDatei(log) == soll; }, 5)) << liesDatei(log).value_or("");
    }
    EXPECT_THAT(bank.ordner.lies("/mac/zustand/passwortdialoge"), HasSubstr("Grund: Warum: „so“ — darum\n"));
}

TEST(Volltunnel, skriptfehlerWerdenGelesen) {
    const std::tuple<const char*, int, std::optional<std::string>> faelle[] = {
        {"0:310: execution error: User canceled. (-128)\n", -128, "User canceled."},
        {"Warnung\n0:310: execution error: Der Name (oder das Passwort) ist falsch. (-60007)\n\n", -60007,
         "Der Name (oder das Passwort) ist falsch."},
        {"execution error: (-1)", -1, {}},
        {"execution error: ohne Nummer", 0, {}},
        {"execution error: krumm (12x)", 0, {}},
        {"", 0, {}},
    };
    for (const auto& [ausgabe, nummer, meldung] : faelle) {
        const auto fehler = liesSkriptfehler(ausgabe);
        EXPECT_EQ(fehler.nummer, nummer) << ausgabe;
        EXPECT_EQ(fehler.meldung, meldung) << ausgabe;
        EXPECT_FALSE(fehler.nichtGebaut);
    }
    EXPECT_TRUE(osascriptSkript({"/", "/gibt/es/nicht"})->fuehreAus("x")->nichtGebaut);
}

TEST(Volltunnel, mitWillkommenBisZumAbstecken) {
    Fahrtbank bank;
    bank.ordner.lege("/heim/Library/Preferences/de.mobilsteg.vpnlotse.json",
                     R"({"austritt.dienst":"http://austritt.probe/"})");
    const auto handy = bank.handy();
    bank.starte("mobilsteg-vpnlotse");
    ASSERT_TRUE(bank.zeigt("1) Verstanden")) << bank.ausgabe();
    EXPECT_EQ(bank.stand(), "") << "the clock waits for the answer";
    bank.programm->tippe("1");
    EXPECT_TRUE(bank.imStand(R"("volltunnel": true)"));
    EXPECT_TRUE(helferLaeuft(bank));
    handy->sage("ziehen");
    EXPECT_TRUE(bank.imStand(R"("volltunnel": false)"));
    EXPECT_FALSE(helferLaeuft(bank));
    EXPECT_THAT(bank.ordner.lies("/heim/Library/Logs/MobilstegVolltunnel.log"),
                HasSubstr("Routen und DNS zurückgebaut (auf Bitte)"));
}

TEST(Volltunnel, abgebrochenerPasswortdialogFragtBeimNaechstenStartWieder) {
    Fahrtbank bank;
    bank.alsVpnBenutzer();
    bank.ordner.lege("/mac/zustand/passwort", "abbruch");
    const auto handy = bank.handy();
    bank.starte("mobilsteg-vpnlotse");
    EXPECT_TRUE(bank.zeigt("Passwortdialog abgebrochen"));
    EXPECT_EQ(bank.zeilenMit("Volltunnel nicht gestartet: Abgebrochen"), 1);
    bank.programm->tippe("beenden");
    EXPECT_EQ(bank.programm->warteAufEnde(), 0);
    bank.ordner.lege("/mac/zustand/passwort", "ja");
    bank.starte("mobilsteg-vpnlotse");
    EXPECT_TRUE(bank.imStand(R"("volltunnel": true)"));
}

TEST(Volltunnel, endeWaehrendDesPasswortdialogsLaesstNichtsZurueck) {
    Fahrtbank bank;
    bank.alsVpnBenutzer();
    bank.ordner.lege("/mac/zustand/passwort", "haengt");
    const auto handy = bank.handy();
    bank.starte("mobilsteg-vpnlotse");
    EXPECT_TRUE(warteBis([&] { return existiert(bank.ordner.pfad() + "/mac/zustand/passwortdialoge"); }));
    bank.erwartePhase("Fährt mit"); // the ticks go on behind the dialog
    bank.programm->sende(SIGTERM);
    EXPECT_EQ(bank.programm->warteAufEnde(10), 0);
    EXPECT_FALSE(bank.proxyAn());
    bank.ordner.lege("/mac/zustand/passwort", "ja"); // the dialog outlives the program, and its user says yes
    EXPECT_TRUE(warteBis([&] {
        return bank.ordner.lies("/heim/Library/Logs/MobilstegVolltunnel.log").find("vor dem Anfang") !=
               std::string::npos;
    }));
    EXPECT_FALSE(helferLaeuft(bank));
}

TEST(Volltunnel, nachEinemAbschussGehtDerHelferVonSelbst) {
    Fahrtbank bank;
    bank.alsVpnBenutzer();
    const auto handy = bank.handy();
    bank.starte("mobilsteg-vpnlotse");
    EXPECT_TRUE(bank.imStand(R"("volltunnel": true)"));
    bank.programm->sende(SIGKILL);
    bank.programm->warteAufEnde();
    EXPECT_TRUE(warteBis([&] { return !helferLaeuft(bank); }));
    EXPECT_THAT(bank.ordner.lies("/heim/Library/Logs/MobilstegVolltunnel.log"),
                HasSubstr("der Bordlotse ist weg"));
    EXPECT_TRUE(bank.proxyAn());
    handy->sage("weitergabe aus");
    bank.starte("mobilsteg-vpnlotse");
    bank.erwartePhase("In Mobilsteg");
    EXPECT_FALSE(bank.proxyAn());
}

} // namespace
