// What the options do beside a running program: the clean-up by hand ("my internet is gone"), the self-test.

#include "tests/hilfe/Fahrtbank.hpp"

#include <gmock/gmock.h>

using namespace mobilsteg;
using namespace testing;

namespace {

TEST(Aufraeumen, nebenEinemLaufendenUndNachKaputtenEinstellungen) {
    Fahrtbank bank;
    bank.mitTunnel(einstellungsdatei);
    const auto handy = bank.handy();
    bank.starte();
    ASSERT_TRUE(bank.imStand(laeuftImStand));
    const std::string fremder =
        handy.serial + " tcp:" + bank.adb({"forward", "tcp:0", "tcp:8080"}) + " tcp:8080";
    EXPECT_EQ(bank.rufe({"--anmeldung"}).ausgabe, "") << "nothing is taken from a running one";
    EXPECT_TRUE(bank.proxyAn() && bank.helferLaeuft());
    EXPECT_THAT(bank.rufe({"--selbsttest"}).ausgabe, Not(HasSubstr("✗")))
        << "what is its own is not in the way";
    const auto stand = bank.rufe({"--stand"});
    EXPECT_THAT(stand.ausgabe, ContainsRegex("^Fährt mit · [12]. Klasse · WLAN [0-9]+ ms · .*[kM]B\n$"));
    EXPECT_EQ(stand.status, 0);
    EXPECT_EQ(bank.rufe({"--aufraeumen"}).status, 1);
    EXPECT_TRUE(bank.proxyAn() && bank.helferLaeuft()) << "left alone";
    EXPECT_THAT(bank.rufe({"--aufraeumen", "--trotzdem"}).ausgabe,
                AllOf(StartsWith("Achtung: Ein Bordlotse läuft (Prozess "),
                      HasSubstr("Volltunnel … beendet, Routen und DNS zurückgebaut\n"
                                "Weiterleitungen … 2 entfernt\nAufgeräumt: ")));
    EXPECT_THAT(bank.protokoll(), HasSubstr("  Aufräumen: System-Proxy „Wi-Fi“: ausgeschaltet\n"));
    EXPECT_THAT(bank.forwards(), HasSubstr(fremder)) << "nobody else's is taken away";

    bank.programm->sende(SIGTERM);
    EXPECT_EQ(bank.programm->warteAufEnde(), 0);
    bank.ordner.lege(einstellungsdatei, "{ kaputt");
    bank.starte();
    bank.programm->tippe("nein");
    EXPECT_TRUE(bank.kommt(protokolldatei, "Die Einstellungen waren beschädigt und gelten nicht mehr; sie"));
    EXPECT_TRUE(bank.kommt(einstellungsdatei + ".defekt", "{ kaputt"));
}

} // namespace
