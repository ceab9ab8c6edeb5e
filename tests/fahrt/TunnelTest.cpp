// The full tunnel with the shipped program: the quoting by running it, the welcome, the password dialog.

#include "netz/Volltunnel.hpp"
#include "plattform/Adapter.hpp"
#include "tests/fahrt/Fahrtbank.hpp"

#include <gmock/gmock.h>

using namespace mobilsteg;
using testing::HasSubstr;

namespace {

TEST(Volltunnel, anfuehrungUeberlebtBeideSprachen) {
    const Fahrtbank bank;
    const auto skript = osascriptSkript({bank.ordner.pfad(), bank.ordner.pfad() + "/mac"});
    const std::string helfer = bank.ordner.lege("/mein helfer", "#!/bin/sh\nprintf '%s\\n' \"$@\"\n", true);
    const std::string dienst = R"(Büro "Süd" (2) a\b\\c \"$HOME`id`;&)";
    const auto befehl =
        tunnelbefehl(helfer, "/stopp datei", bank.ordner.pfad() + "/log", 42, {dienst, true, true});
    EXPECT_FALSE(skript->fuehreAus(skriptquelle(befehl, "Warum: „so“ — darum")).has_value());
    EXPECT_TRUE(bank.kommt("/log", "-nur-vpn\n"));
    EXPECT_EQ(bank.ordner.lies("/log"), "-proxy\n127.0.0.1:1080\n-stopp\n/stopp datei\n-dienst\n" + dienst +
                                            "\n-wache\n42\n-nur-vpn\n");
    EXPECT_THAT(bank.ordner.lies("/mac/zustand/passwortdialoge"), HasSubstr("Grund: Warum: „so“ — darum\n"));
}

TEST(Volltunnel, mitWillkommenBisZumAbstecken) {
    Fahrtbank bank;
    bank.ordner.lege(vpnEinstellungen, R"({"austritt.dienst":"http://austritt.probe/"})");
    const auto handy = bank.handy();
    bank.starte(vpnLotse);
    ASSERT_TRUE(bank.zeigt("1) Verstanden"));
    EXPECT_EQ(bank.ordner.lies(standdatei), "") << "the clock waits for the answer";
    bank.programm->tippe("1");
    EXPECT_TRUE(bank.imStand(laeuftImStand));
    EXPECT_TRUE(bank.imStand(R"("app": "mobilsteg-vpnlotse")"));
    EXPECT_TRUE(bank.helferLaeuft());
    handy->sage("ziehen");
    EXPECT_TRUE(bank.imStand(R"("volltunnel": false)"));
    EXPECT_FALSE(bank.helferLaeuft());
    EXPECT_THAT(bank.ordner.lies(tunnellog), HasSubstr("Routen und DNS zurückgebaut (auf Bitte)"));
}

TEST(Volltunnel, endeWaehrendDesPasswortdialogsLaesstNichtsZurueck) {
    Fahrtbank bank;
    bank.ordner.lege("/mac/zustand/passwort", "haengt");
    const auto handy = bank.handy();
    bank.starte(vpnLotse);
    EXPECT_TRUE(bank.kommt("/mac/zustand/passwortdialoge", "Grund"));
    bank.erwartePhase("Fährt mit"); // the ticks go on behind the dialog
    bank.programm->sende(SIGTERM);
    EXPECT_EQ(bank.programm->warteAufEnde(), 0);
    EXPECT_FALSE(bank.proxyAn());
    bank.ordner.lege("/mac/zustand/passwort", "ja"); // the dialog outlives the program, and its user says yes
    EXPECT_TRUE(bank.kommt(tunnellog, "vor dem Anfang"));
    EXPECT_FALSE(bank.helferLaeuft());
}

} // namespace
