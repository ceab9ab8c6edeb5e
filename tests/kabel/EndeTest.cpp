// What the controller takes back: at its end, and at the next start after a crash.

#include "tests/hilfe/KabelWelt.hpp"

#include <gmock/gmock.h>

using namespace mobilsteg;
using namespace std::chrono_literals;
using namespace testing;

namespace {

TEST(Ende, nachEinemAbsturzRaeumtDerNaechsteStartAufVorDemErstenTakt) {
    KabelWelt w;
    w.fahreLos();
    w.welt.laufe(1s);
    w.kabel->q().sync([&] {}); // between two ticks the process dies
    Kabel* const alter = w.kabel.release();
    w.handys.clear();
    w.aufrufe.clear();
    const auto versatz = w.welt.jetzt();
    w.starte();
    w.welt.laufe(100ms);
    EXPECT_FALSE(w.socksAn["Wi-Fi"]);
    EXPECT_THAT(w.aufrufe, Contains("networksetup -setsocksfirewallproxystate Wi-Fi off"));
    EXPECT_LT(w.welt.jetzt() - versatz, 200ms);
    EXPECT_FALSE(w.einstellungen.werte.contains("proxy.dienst"));
    w.welt.beende();
    delete alter;
}

TEST(Ende, aufraeumenNimmtAllesZurueckUndLaesstNichtsMehrZu) {
    KabelWelt w;
    w.belegtePorts = {8080};
    w.fahreLos();
    w.aufrufe.clear();
    w.raeumeAuf();
    EXPECT_THAT(w.aufrufe, ElementsAre("networksetup -setsocksfirewallproxystate Wi-Fi off",
                                       "adb -s R5CT1 forward --remove tcp:1080",
                                       "adb -s R5CT1 forward --remove tcp:18080"));
    EXPECT_TRUE(w.forwards.empty());
    // The process may still live for a tick or a click.
    w.bediene([](Kabel& k) { k.proxyUmschalten(); });
    w.welt.laufe(10s);
    EXPECT_EQ(w.aufrufe.size(), 3U);
}

/// A call that was cut off at its limit may have done its work, or none.
TEST(Ende, einAndererPortWirdNichtVergessenWennAdbHaengt) {
    for (const std::string haengt :
         {"adb -s R5CT1 forward tcp:18080 tcp:8080", "adb -s R5CT1 forward --remove tcp:18080"}) {
        SCOPED_TRACE(haengt);
        KabelWelt w;
        w.handys = {Modellhandy{}};
        w.belegtePorts = {8080};
        w.stattWerkzeug = [&](const std::string& aufruf) -> std::optional<Ergebnis> {
            if (aufruf != haengt)
                return std::nullopt;
            w.forwards[18080] = "R5CT1";
            return Ergebnis{15, "", ""};
        };
        w.starte();
        w.laufeBisSekunde(1);
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

/// The process is gone right after, and with it whoever would stop a helper that comes up later.
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

TEST(Ende, aufraeumenWartetDenLaufendenTaktAb) {
    HandyWelt w;
    w.dauerHttp = 2s;
    w.starte();
    EXPECT_EQ(w.phaseBei(3), Phase::Art::pruefung) << "in the middle of the proof";
    w.raeumeAuf();
    EXPECT_FALSE(w.socksAn["Wi-Fi"]);
    EXPECT_TRUE(w.forwards.empty());
    EXPECT_EQ(w.welt.verklemmte(), 0U);
}

} // namespace
