// The system proxy through the whole controller.

#include "tests/hilfe/KabelWelt.hpp"

#include <gmock/gmock.h>

using namespace mobilsteg;
using namespace std::chrono_literals;
using testing::Contains;

namespace {

TEST(Proxy, fehlerBleibtStehenSolangeDerWegBewiesenIst) {
    KabelWelt w;
    w.handys = {Modellhandy{}};
    w.networksetupFehler = "** Error: Command requires admin privileges.";
    w.starte();
    w.laufeBisSekunde(10);
    const auto fehler =
        Phase::proxyFehler("System-Proxy nicht gesetzt: ** Error: Command requires admin privileges.");
    EXPECT_EQ(w.zustand().phase, fehler);
    EXPECT_FALSE(w.zustand().proxyGesetzt);
    EXPECT_FALSE(w.einstellungen.werte.contains("proxy.dienst"));

    w.networksetupFehler = "anders";
    w.haupt.sync([&] { w.kabel->proxyUmschalten(); });
    w.welt.laufe({});
    EXPECT_EQ(w.zustand().phase, Phase::proxyFehler("System-Proxy nicht gesetzt: anders"));

    w.networksetupFehler.clear();
    w.dienste = "";
    w.handys.clear();
    w.laufeBisSekunde(12.5);
    w.handys = {Modellhandy{}};
    w.laufeBisSekunde(15.5);
    EXPECT_EQ(w.zustand().phase,
              Phase::proxyFehler("Keinen Netzwerkdienst gefunden — Proxy von Hand setzen"));
}

TEST(Proxy, schalterUndSelbsttaetigesSetzen) {
    KabelWelt w;
    w.baue();
    w.haupt.sync([&] { w.kabel->setzeProxyAutomatisch(false); });
    w.handys = {Modellhandy{}};
    w.haupt.sync([&] { w.kabel->start(); });
    w.haupt.sync([&] { w.kabel->proxyUmschalten(); });
    w.laufeBisSekunde(0.1);
    EXPECT_EQ(w.zustand().meldung, "Erst muss das Handy freigeben.");
    w.laufeBisSekunde(1);
    EXPECT_EQ(w.zustand().phase, Phase::Art::faehrt);
    EXPECT_FALSE(w.zustand().proxyGesetzt);

    w.haupt.sync([&] { w.kabel->proxyUmschalten(); });
    w.welt.laufe({});
    EXPECT_TRUE(w.zustand().proxyGesetzt);
    EXPECT_EQ(w.zustand().meldung, "");
    EXPECT_EQ(std::get<std::string>(w.einstellungen.werte["proxy.dienst"]), "Wi-Fi");
    w.haupt.sync([&] { // twice quickly: off and on again
        w.kabel->proxyUmschalten();
        w.kabel->proxyUmschalten();
    });
    w.welt.laufe({});
    w.haupt.sync([&] {
        w.kabel->setzeProxyAutomatisch(true);
        w.kabel->setzeProxyAutomatisch(false);
    });
    w.welt.laufe(10s);
    EXPECT_TRUE(w.socksAn["Wi-Fi"]) << "what is set stays set";
    w.raeumeAuf();
    EXPECT_FALSE(w.socksAn["Wi-Fi"]);
    EXPECT_FALSE(w.einstellungen.werte.contains("proxy.dienst"));
}

TEST(Proxy, einVerungluecktesEntfernenWirdWiederholt) {
    KabelWelt w;
    w.fahreLos();
    w.networksetupFehler = "kaputt";
    w.handys.clear();
    w.laufeBisSekunde(3.5);
    EXPECT_TRUE(w.socksAn["Wi-Fi"]);
    EXPECT_THAT(w.protokoll(), Contains("System-Proxy entfernt von Wi-Fi"));
    w.networksetupFehler.clear();
    w.laufeBisSekunde(6.5);
    EXPECT_FALSE(w.socksAn["Wi-Fi"]) << "the remembered service lets the next tick try again";
}

} // namespace
