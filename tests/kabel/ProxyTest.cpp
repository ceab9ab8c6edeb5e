// The system proxy through the whole controller.

#include "tests/hilfe/KabelWelt.hpp"

#include <gmock/gmock.h>

using namespace mobilsteg;
using namespace std::chrono_literals;
using testing::Contains;
using testing::Not;

namespace {

TEST(Proxy, fehlerBleibtStehenSolangeDerWegBewiesenIst) {
    HandyWelt w;
    w.networksetupFehler = "** Error: Command requires admin privileges.";
    w.starte();
    EXPECT_EQ(w.phaseBei(10), Phase::proxyFehler("System-Proxy nicht gesetzt: " + w.networksetupFehler));
    EXPECT_FALSE(w.zustand().proxyGesetzt);
    EXPECT_FALSE(w.einstellungen.werte.contains("proxy.dienst"));

    w.networksetupFehler = "anders";
    w.bediene([](Kabel& k) { k.proxyUmschalten(); });
    EXPECT_EQ(w.zustand().phase, Phase::proxyFehler("System-Proxy nicht gesetzt: anders"));

    w.networksetupFehler.clear();
    w.dienste = "";
    w.handys.clear();
    w.laufeBisSekunde(12.5);
    w.handys = {Modellhandy{}};
    EXPECT_EQ(w.phaseBei(15.5), Phase::proxyFehler("Keinen Netzwerkdienst gefunden — Proxy von Hand setzen"));
}

TEST(Proxy, schalterUndSelbsttaetigesSetzen) {
    HandyWelt w;
    w.einstellungen.werte["proxy.automatisch"] = false;
    w.starte();
    w.bediene([](Kabel& k) { k.proxyUmschalten(); });
    EXPECT_EQ(w.zustand().meldung, "Erst muss das Handy freigeben.");
    EXPECT_EQ(w.phaseBei(1), Phase::Art::faehrt);
    EXPECT_FALSE(w.zustand().proxyGesetzt);

    w.bediene([](Kabel& k) { k.proxyUmschalten(); });
    EXPECT_TRUE(w.zustand().proxyGesetzt);
    EXPECT_EQ(w.zustand().meldung, "");
    EXPECT_EQ(std::get<std::string>(w.einstellungen.werte["proxy.dienst"]), "Wi-Fi");
    w.bediene([](Kabel& k) { // twice quickly: off and on again
        k.proxyUmschalten();
        k.proxyUmschalten();
    });
    w.bediene([](Kabel& k) { k.setzeProxyAutomatisch(true); });
    w.bediene([](Kabel& k) { k.setzeProxyAutomatisch(false); });
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
    w.laufeBisSekunde(9.5);
    const auto zeilen = w.protokoll();
    EXPECT_EQ(std::count(zeilen.begin(), zeilen.end(), "System-Proxy nicht entfernt von Wi-Fi: kaputt"), 1);
    EXPECT_THAT(zeilen, Not(Contains("System-Proxy entfernt von Wi-Fi")));
    w.networksetupFehler.clear();
    w.handys = {Modellhandy{}};
    w.handys[0].austritt.reset(); // there it is again, but without a path
    w.laufeBisSekunde(12.5);
    EXPECT_FALSE(w.socksAn["Wi-Fi"]) << "the remembered service lets the next tick try again";
}

} // namespace
