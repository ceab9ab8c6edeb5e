// The controller's clocks: ticks, display timer, time limits, and who hears of what they change.

#include "tests/hilfe/KabelWelt.hpp"

#include <gmock/gmock.h>

using namespace mobilsteg;
using namespace std::chrono_literals;
using testing::ElementsAre;

namespace {

TEST(Takt, langeTakteVerschmelzenUndUeberlappenNie) {
    KabelWelt w;
    w.dauerWerkzeug = 4s; // every look at the devices takes longer than a period
    std::vector<Dauer> anfaenge;
    w.vorWerkzeug = [&](const std::string& aufruf) {
        if (aufruf == "adb devices -l")
            anfaenge.push_back(w.welt.jetzt());
    };
    w.starte();
    w.laufeBisSekunde(14);
    // Each begins as soon as the one before has ended, not once per missed firing.
    EXPECT_THAT(anfaenge, ElementsAre(200ms, 4200ms, 8200ms, 12200ms));
}

TEST(Takt, zehnMinutenFahrtMitFunkloechern) {
    KabelWelt w;
    w.dauerWerkzeug = 30ms;
    w.dauerHttp = 80ms;
    w.handys = {Modellhandy{}};
    w.starte();
    for (int minute = 0; minute < 10; ++minute) {
        w.laufeBisSekunde(minute * 60 + 40);
        EXPECT_EQ(w.zustand().phase, Phase::Art::faehrt);
        EXPECT_TRUE(w.socksAn["Wi-Fi"]);
        w.handys[0].teilt = false;
        w.laufeBisSekunde(minute * 60 + 50);
        EXPECT_EQ(w.zustand().phase, Phase::Art::weitergabeAus);
        EXPECT_FALSE(w.socksAn["Wi-Fi"]);
        w.handys[0].teilt = true;
    }
    const auto blicke = std::count(w.aufrufe.begin(), w.aufrufe.end(), "adb devices -l");
    EXPECT_EQ(blicke, 197) << "one tick every three seconds";
}

TEST(Aushang, beobachterHoerenVonEinemTaktEinmalUndVonNichtsNie) {
    KabelWelt w;
    w.starte();
    int gehoert = 0;
    const auto beobachtung = w.kabel->aushang().beobachte([&](const Zustand&) { ++gehoert; });
    w.laufeBisSekunde(0.5);
    EXPECT_EQ(gehoert, 1);
    w.laufeBisSekunde(30); // the same phase tick after tick
    EXPECT_EQ(gehoert, 1);
}

TEST(Aushang, unmoeglicheZahlenBeendenDasProgramm) {
    KabelWelt w;
    w.handys = {Modellhandy{}};
    w.handys[0].status = R"({"guests":[{"IP":"kabel:Testmac","BytesUp":9223372036854775807,"BytesDown":1}]})";
    w.starte();
    w.laufeBisSekunde(1);
    EXPECT_NE(w.abgebrochen, "");
}

} // namespace
