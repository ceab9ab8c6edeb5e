// The full tunnel with the shipped program: the welcome, the password dialog, a killed helper.

#include "tests/hilfe/Fahrtbank.hpp"

#include <gmock/gmock.h>

using namespace mobilsteg;
using namespace testing;

namespace {

TEST(Volltunnel, nachDemWillkommenLaesstEinEndeImPasswortdialogNichtsZurueck) {
    Fahrtbank bank;
    bank.ordner.lege(vpnEinstellungen, R"({"austritt.dienst":"http://austritt.probe/"})");
    bank.ordner.lege("/mac/zustand/passwort", "haengt");
    const auto handy = bank.handy();
    // On a full disk the log cannot be written; all else goes on.
    std::filesystem::create_directory(bank.ordner.pfad() + "/heim/Library/Logs");
    std::filesystem::create_symlink("/dev/full", bank.ordner.pfad() + protokolldatei);
    bank.starte(vpnLotse);
    ASSERT_TRUE(bank.zeigt("1) Verstanden"));
    EXPECT_EQ(bank.ordner.lies(standdatei), "") << "the clock waits for the answer";
    bank.programm->tippe("1");
    EXPECT_TRUE(bank.kommt("/mac/zustand/passwortdialoge", "Grund: Mobilsteg"));
    bank.erwartePhase("Fährt mit"); // the ticks go on behind the dialog
    EXPECT_TRUE(bank.imStand(R"("app": "mobilsteg-vpnlotse")"));
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
