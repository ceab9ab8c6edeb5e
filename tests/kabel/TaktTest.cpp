// The controller's clocks: ticks, display timer, time limits, and who hears of what they change.

#include "tests/hilfe/KabelWelt.hpp"

#include <gmock/gmock.h>

using namespace mobilsteg;
using namespace std::chrono_literals;
using namespace testing;

namespace {

TEST(Takt, zehnMinutenFahrtMitFunkloechern) {
    HandyWelt w;
    w.dauerWerkzeug = 30ms;
    w.dauerHttp = 80ms;
    w.starte();
    for (int minute = 0; minute < 10; ++minute) {
        EXPECT_EQ(w.phaseBei(minute * 60 + 40), Phase::Art::faehrt);
        EXPECT_TRUE(w.socksAn["Wi-Fi"]);
        w.handys[0].teilt = false;
        EXPECT_EQ(w.phaseBei(minute * 60 + 50), Phase::Art::weitergabeAus);
        EXPECT_FALSE(w.socksAn["Wi-Fi"]);
        w.handys[0].teilt = true;
    }
    const auto blicke = std::count(w.aufrufe.begin(), w.aufrufe.end(), "adb devices -l");
    EXPECT_EQ(blicke, 197) << "one tick every three seconds";
}

TEST(Takt, jedesWerkzeugHatSeineFrist) {
    HandyWelt w;
    w.einstellungen.werte = {{"experte", true}, {"kabel.gastport", std::string("28080")}};
    w.ordner.lege("/wurzel/usr/local/bin/tailscale", "#!", true);
    w.handys[0].austritt.reset(); // one report
    w.starteBis(1);
    w.handys[0].austritt = "203.0.113.7";
    w.laufeBisSekunde(15); // to the fifth tick, which looks at the connections
    w.raeumeAuf();
    EXPECT_EQ(w.fristen, (std::map<std::string, double>{
                             {"adb devices -l", 10},
                             {"adb -s R5CT1 forward tcp:1080 tcp:1080", 10},
                             {"adb -s R5CT1 forward tcp:8080 tcp:8080", 10},
                             {"adb -s R5CT1 forward --remove tcp:28080", 5},
                             {"adb -s R5CT1 forward --remove tcp:1080", 5},
                             {"adb -s R5CT1 forward --remove tcp:8080", 5},
                             {"route -n get default", 5},
                             {"networksetup -listnetworkserviceorder", 5},
                             {"networksetup -setsocksfirewallproxy Wi-Fi 127.0.0.1 1080", 10},
                             {"networksetup -setsocksfirewallproxystate Wi-Fi on", 10},
                             {"networksetup -setsocksfirewallproxystate Wi-Fi off", 10},
                             {"scutil --nc list", 5},
                             {"pgrep -x openvpn", 3},
                             {"lsof -i -nP", 8},
                             {"netstat -rn -f inet", 5},
                             {"scutil --dns", 5},
                             {"scutil --nwi", 5},
                             {"mdfind kMDItemCFBundleIdentifier == 'io.tailscale.ipn.macsys' || "
                              "kMDItemCFBundleIdentifier == 'io.tailscale.ipn.macos'",
                              8},
                             {"tailscale status", 10},
                             {"tailscale netcheck", 25}}));
}

TEST(Takt, dieMenueleisteWechseltAlleVierSekunden) {
    HandyWelt w;
    w.handys[0].status = R"({"paths":[{"iface":"wifi","healthy":false,"rtt_ms":0}]})";
    w.starte();
    std::vector<std::pair<std::string, std::string>> bilder;
    for (const double sekunde : {3.9, 4.1, 8.1, 12.1, 15.9}) {
        w.laufeBisSekunde(sekunde);
        bilder.emplace_back(w.zustand().symbol, w.zustand().kurz);
    }
    const std::string faehrt = "cable.connector";
    EXPECT_THAT(bilder, ElementsAre(Pair("cable.connector.slash", ""), Pair(faehrt, "W✕"), Pair(faehrt, "2."),
                                    Pair(faehrt, "W✕"), Pair(faehrt, "W✕")));
    w.handys.clear();
    w.laufeBisSekunde(20.1);
    EXPECT_EQ(w.zustand().symbol + w.zustand().kurz, "cable.connector.slash");
}

TEST(Zustandsspeicher, beobachterHoerenVonEinemTaktEinmalUndVonNichtsNie) {
    KabelWelt w;
    w.starte();
    int gehoert = 0;
    const auto beobachtung = w.kabel->speicher().beobachte([&](const Zustand&) { ++gehoert; });
    w.laufeBisSekunde(0.5);
    EXPECT_EQ(gehoert, 1);
    w.laufeBisSekunde(30); // the same phase tick after tick
    EXPECT_EQ(gehoert, 1);
}

TEST(Zustandsspeicher, unmoeglicheZahlenBeendenDasProgramm) {
    HandyWelt w;
    w.handys[0].status = R"({"guests":[{"IP":"kabel:Testmac","BytesUp":9223372036854775807,"BytesDown":1}]})";
    w.starteBis(1);
    EXPECT_NE(w.abgebrochen, "");
}

} // namespace
