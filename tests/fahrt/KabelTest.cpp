// The cable's ups and downs with the shipped program and the real adb.

#include "tests/fahrt/Fahrtbank.hpp"

#include <gmock/gmock.h>

#include <csignal>

using namespace mobilsteg;
using namespace testing;

namespace {

TEST(Kabel, vonDerStrassensperreBisZurFahrtUndZurueck) {
    Fahrtbank bank;
    const auto handy = bank.handy({"--stecken", "--ohne-debugging", "--weitergabe-aus"});
    handy->sage("proxy kaputt");
    bank.starte();
    bank.erwartePhase("Am Handy „USB-Debugging zulassen“");
    handy->sage("debugging an");
    bank.erwartePhase("In Mobilsteg");
    handy->sage("weitergabe an");
    bank.erwartePhase("Warte auf das Ja");
    handy->sage("erlauben");
    bank.erwartePhase("Der Proxy des Handys antwortet nicht");
    EXPECT_FALSE(bank.proxyAn());
    handy->sage("proxy heil");
    bank.erwartePhase("Fährt mit");
    EXPECT_THAT(bank.stand(), AllOf(HasSubstr(R"("austritt": "203.0.113.7")"), HasSubstr(R"("faehrt": true)"),
                                    HasSubstr(R"("dienst": "Wi-Fi")")));
    EXPECT_TRUE(bank.proxyAn());
    EXPECT_THAT(handy->sage("zustand"), HasSubstr("austritt.probe")) << "the name is resolved on the phone";

    handy->sage("weitergabe aus");
    bank.erwartePhase("In Mobilsteg", 5);
    EXPECT_FALSE(bank.proxyAn());
    handy->sage("weitergabe an");
    bank.erwartePhase("Fährt mit");
    EXPECT_TRUE(bank.proxyAn());
    handy->sage("ziehen");
    bank.erwartePhase("Kein Handy am Kabel", 4); // within one tick
    EXPECT_FALSE(bank.proxyAn());
    EXPECT_EQ(bank.adb({"forward", "--list"}), "");
    for (const auto* zeile : {"", "lauter", "beenden"})
        bank.programm->tippe(zeile);
    EXPECT_EQ(bank.programm->warteAufEnde(), 0);
    EXPECT_EQ(bank.zeilenMit("Signal"), 0);
    EXPECT_THAT(bank.ausgabe(),
                AllOf(HasSubstr("Samsung Galaxy S23"), HasSubstr("Unbekannter Befehl: „lauter“")));
}

TEST(Kabel, ausweichportWennJemandAuf8080Sitzt) {
    Fahrtbank bank;
    const Deskriptor jemand = besetze(8080);
    ASSERT_TRUE(jemand);
    const auto handy = bank.handy();
    bank.starte();
    bank.erwartePhase("Fährt mit");
    EXPECT_THAT(bank.adb({"forward", "--list"}),
                AllOf(HasSubstr("tcp:18080 tcp:8080"), Not(HasSubstr("tcp:8080 tcp:8080"))));
    EXPECT_EQ(bank.zeilenMit("Gästeseite lokal auf Port 18080 (8080 belegt)"), 1);
}

TEST(Kabel, anderesHandyBekommtNeueForwardsUndSeinenNamen) {
    Fahrtbank bank;
    const auto erstes = bank.handy();
    bank.starte();
    bank.erwartePhase("Fährt mit");
    erstes->sage("ziehen");
    const auto zweites = bank.handy({"--stecken", "--erlaubt", "--modell", "Pixel_8"});
    EXPECT_TRUE(bank.imStand(zweites->serial())) << bank.stand();
    bank.erwartePhase("Fährt mit");
    EXPECT_THAT(bank.adb({"forward", "--list"}),
                AllOf(HasSubstr(zweites->serial() + " tcp:1080 tcp:1080"), Not(HasSubstr(erstes->serial()))));
    EXPECT_TRUE(bank.zeigt("Google Pixel-8"));
}

TEST(Kabel, unmoeglicheZahlenLassenKeinenProxyZurueck) {
    Fahrtbank bank;
    const auto handy = bank.handy();
    bank.starte();
    bank.erwartePhase("Fährt mit");
    handy->sage(R"(antwort {"app":"mobilsteg","proxy_port":1080,"zustand":"erlaubt","kabel":{},)"
                R"("status":{"paths":[{"iface":"wlan0","healthy":true,"rtt_ms":1e300}]}})");
    EXPECT_EQ(bank.programm->warteAufEnde(), 128 + SIGABRT);
    EXPECT_EQ(bank.zeilenMit("Programmierfehler: Das Handy meldet unmögliche Zahlen"), 1);
    EXPECT_FALSE(bank.proxyAn());
    EXPECT_EQ(bank.adb({"forward", "--list"}), "");
}

TEST(Kabel, einNeuerAdbServerReisstNurKurzHeraus) {
    Fahrtbank bank;
    const auto handy = bank.handy();
    bank.starte();
    bank.erwartePhase("Fährt mit");
    (void)bank.adb({"kill-server"}); // all forwards are gone with it
    EXPECT_TRUE(warteBis([&] {
        return bank.adb({"forward", "--list"}).find("tcp:1080") != std::string::npos;
    }));
    bank.erwartePhase("Fährt mit");
    EXPECT_TRUE(bank.proxyAn());
}

} // namespace
