// What the controller takes back: at its end, and at the next start after a crash.

#include "tests/hilfe/KabelWelt.hpp"

#include <gmock/gmock.h>

using namespace mobilsteg;
using namespace std::chrono_literals;
using namespace testing;

namespace {

/// The second and the third are in the middle of switching the proxy on, which is on by then.
TEST(Ende, woDerProzessAuchStirbtDerNaechsteStartNimmtDenProxyVorDemErstenTakt) {
    for (const std::string beim :
         {"adb devices -l", "networksetup -setsocksfirewallproxy Wi-Fi 127.0.0.1 1080",
          "networksetup -setsocksfirewallproxystate Wi-Fi on"}) {
        SCOPED_TRACE(beim);
        HandyWelt w;
        w.stattWerkzeug = [&](const std::string& aufruf) -> std::optional<Ergebnis> {
            if (aufruf == beim && aufruf.ends_with(" 1080")) {
                w.socksAn["Wi-Fi"] = true;
                w.socksZiel["Wi-Fi"] = {"127.0.0.1", 1080};
            }
            if (aufruf == beim && w.socksAn["Wi-Fi"])
                w.welt.stirb();
            return std::nullopt;
        };
        w.starteBis(4);
        ASSERT_TRUE(w.socksAn["Wi-Fi"]);
        w.stuerzeAb();
        w.stattWerkzeug = nullptr;
        w.starte();
        w.welt.laufe(100ms);
        EXPECT_FALSE(w.socksAn["Wi-Fi"]);
        EXPECT_FALSE(w.einstellungen.werte.contains("proxy.dienst"));
        EXPECT_FALSE(w.einstellungen.werte.contains("proxy.ungewiss"));
    }
}

TEST(Ende, aufraeumenNimmtAllesZurueckUndLaesstNichtsMehrZu) {
    KabelWelt w;
    w.einstellungen.werte["volltunnel.erklaert"] = true;
    w.belegtePorts = {8080};
    w.fahreLos();
    w.aufrufe.clear();
    w.raeumeAuf();
    EXPECT_THAT(w.aufrufe, ElementsAre("networksetup -setsocksfirewallproxystate Wi-Fi off",
                                       "adb -s R5CT1 forward --remove tcp:1080",
                                       "adb -s R5CT1 forward --remove tcp:18080"));
    EXPECT_TRUE(w.forwards.empty());
    // The process may still live for a tick or a click.
    w.bediene([](Kabel& k) {
        k.proxyUmschalten();
        k.setzeVolltunnelAn(true);
    });
    w.welt.laufe(10s);
    EXPECT_EQ(w.aufrufe.size(), 3U);
    EXPECT_THAT(w.skripte, IsEmpty());
}

/// A call that was cut off at its limit may have done its work, or none.
TEST(Ende, einAndererPortWirdNichtVergessenWennAdbHaengt) {
    for (const std::string haengt :
         {"adb -s R5CT1 forward tcp:18080 tcp:8080", "adb -s R5CT1 forward --remove tcp:18080"}) {
        SCOPED_TRACE(haengt);
        HandyWelt w;
        w.belegtePorts = {8080};
        w.stattWerkzeug = [&](const std::string& aufruf) -> std::optional<Ergebnis> {
            if (aufruf != haengt)
                return std::nullopt;
            w.forwards[18080] = "R5CT1";
            return Ergebnis{15, "", ""};
        };
        w.starteBis(1);
        w.raeumeAuf();
        w.stattWerkzeug = nullptr;
        w.belegtePorts.clear();
        w.starte(); // the next run needs no other port
        w.welt.laufe(1s);
        EXPECT_TRUE(w.forwards.contains(8080));
        EXPECT_FALSE(w.forwards.contains(18080));
    }
}

TEST(Ende, dieForwardsGehenAuchWennAdbDasHandyGeradeNichtNennt) {
    KabelWelt w;
    w.fahreLos();
    w.handys.clear(); // the list was cut off; the forwards stand
    ASSERT_EQ(w.phaseBei(3.5), Phase::Art::keinHandy);
    w.raeumeAuf();
    EXPECT_TRUE(w.forwards.empty());
}

/// The process is gone right after; nothing would stop a helper that comes up later.
TEST(Ende, keinHelferKommtMehrHoch) {
    for (std::uint64_t samen = 0; samen < 40; ++samen) {
        KabelWelt w(samen);
        w.einstellungen.werte["volltunnel.erklaert"] = true;
        w.tunnel.bisLaeuft = 5s;
        w.fahreLos();
        w.haupt.sync([&] {
            w.kabel->setzeVolltunnelAn(true);
            w.q->async([&] { w.kabel->aufraeumen(); });
        });
        w.welt.laufe(500ms);
        ASSERT_EQ(w.helfer, 0) << "Samen " << samen;
    }
}

TEST(Ende, einHelferDerErstNachVierzigSekundenHochkommtMussWiederGehen) {
    HandyWelt w;
    w.einstellungen.werte = {{"volltunnel.erklaert", true}, {"volltunnel", true}};
    w.tunnel.bisLaeuft = 42s;
    w.starteBis(41.5);
    EXPECT_FALSE(w.zustand().volltunnelAn);
    w.laufeBisSekunde(45);
    EXPECT_EQ(w.helfer, 0);
}

TEST(Ende, aufraeumenWartetDenLaufendenTaktAb) {
    HandyWelt w;
    w.dauerHttp = 2s;
    w.starteBis(3);
    w.raeumeAuf(); // in the middle of the proof
    EXPECT_FALSE(w.socksAn["Wi-Fi"]);
    EXPECT_TRUE(w.forwards.empty());
    EXPECT_EQ(w.welt.verklemmte(), 0U);
}

} // namespace
