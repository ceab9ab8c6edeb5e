// The full tunnel with the shipped program: the quoting by running it, the welcome, the password dialog.

#include "netz/Volltunnel.hpp"
#include "plattform/Adapter.hpp"
#include "tests/fahrt/Fahrtbank.hpp"

#include <gmock/gmock.h>

using namespace mobilsteg;
using namespace testing;

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
    EXPECT_THAT(bank.ordner.lies(tunnellog), HasSubstr("Ende: auf Bitte"));
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
    EXPECT_TRUE(bank.kommt(tunnellog, "Ende: auf Bitte"));
    EXPECT_THAT(bank.ordner.lies(tunnellog), Not(HasSubstr("Wege über"))) << "it never came up";
    EXPECT_FALSE(bank.helferLaeuft());
}

/// With the first death of the helper goes everything but the name servers.
TEST(Volltunnel, dnsEinesGetoetetenHelfersNimmtDasAufraeumenZurueck) {
    Fahrtbank bank;
    if (bank.helfer == attrappe)
        GTEST_SKIP() << "Nur der echte Helfer setzt DNS";
    const std::string vorher = "192.168.178.1\n";
    const auto dns = [&] { return bank.ordner.lies("/mac/zustand/dns"); };
    bank.ordner.lege("/mac/zustand/dns", vorher);
    bank.mitTunnel(einstellungsdatei);
    const auto handy = bank.handy();
    bank.starte();
    ASSERT_TRUE(bank.imStand(laeuftImStand));
    EXPECT_EQ(dns(), "1.1.1.1\n9.9.9.9\n");
    const std::string erster = R"(cd /proc && for p in $(ls -v | grep '^[0-9]'); do
        tr '\0' ' ' <$p/cmdline | grep -q "^$0/Resources/mobilsteg-volltunnel " && kill -9 $p && exit; done; exit 1)";
    EXPECT_EQ(lauf("/bin/sh", {"-c", erster, bank.ordner.pfad()}, 60).status, 0) << "its child comes later";
    EXPECT_TRUE(bank.kommt(protokolldatei, "hat sich zurückgebaut — der Helfer wurde beendet"));
    bank.programm->sende(SIGTERM);
    EXPECT_EQ(bank.programm->warteAufEnde(), 0);
    EXPECT_EQ(bank.rufe({"--anmeldung"}).status, 1) << "nobody is asked for a password at the login";
    bank.ordner.lege("/mac/zustand/passwort", "abbruch");
    const auto nein = bank.rufe({"--aufraeumen"});
    EXPECT_THAT(nein.ausgabe, HasSubstr("DNS und Wege eines getöteten Helfers … bleiben: Abgebrochen\n"));
    EXPECT_EQ(nein.status, 1);
    EXPECT_NE(dns(), vorher);
    bank.ordner.lege("/mac/zustand/passwort", "ja");
    EXPECT_THAT(bank.rufe({"--aufraeumen"}).ausgabe,
                AllOf(HasSubstr("getöteten Helfers … zurückgenommen\n"), HasSubstr("\nAufgeräumt: ")));
    EXPECT_EQ(dns(), vorher);
    EXPECT_THAT(bank.rufe({"--aufraeumen"}).ausgabe, HasSubstr("\nNichts zu tun: "));
}

} // namespace
