// The link from the cable to the proven path, the controller's clocks, and what they show.

#include "tests/hilfe/KabelWelt.hpp"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

using namespace mobilsteg;
using namespace std::chrono_literals;
using namespace testing;

namespace {

TEST(Fahrt, kommtSchrittFuerSchrittAnsZiel) {
    KabelWelt w;
    w.starte();
    EXPECT_EQ(w.zustand().phase, Phase::Art::start);
    w.laufeBisSekunde(0.1);
    EXPECT_TRUE(w.aufrufe.empty()) << "the first tick comes 0.2 s after the start";

    EXPECT_EQ(w.phaseBei(0.3), Phase::Art::keinHandy);
    w.handys = {Modellhandy{.zustand = "unauthorized"}};
    EXPECT_EQ(w.phaseBei(3.3), Phase::Art::nichtAutorisiert);
    w.handys = {Modellhandy{.teilt = false}};
    EXPECT_EQ(w.phaseBei(6.3), Phase::Art::weitergabeAus);
    w.handys = {Modellhandy{.entscheid = "fragt"}};
    EXPECT_EQ(w.phaseBei(9.3), Phase::Art::wartetAufHandy);
    w.handys = {Modellhandy{}};
    EXPECT_EQ(w.phaseBei(12.3), Phase::Art::faehrt);

    EXPECT_THAT(w.protokoll(), ElementsAre("Kein Handy am Kabel — USB-Debugging an?",
                                           "Am Handy „USB-Debugging zulassen“ bestätigen",
                                           "In Mobilsteg: 2. oder 1. Klasse, Weitergabe an, Losfahren",
                                           "Warte auf das Ja am Handy …", "Prüfe den Weg durch das Handy …",
                                           "Beweis: draußen als 203.0.113.7",
                                           "System-Proxy gesetzt auf Wi-Fi: 127.0.0.1:1080", "Fährt mit"));
    EXPECT_EQ(w.zustand().handy, "Samsung Galaxy S23");
    EXPECT_EQ(w.zustand().austritt, "203.0.113.7");
    const auto anmeldung = nlohmann::json::parse(w.anmeldungen.back());
    EXPECT_EQ(anmeldung,
              (nlohmann::json{{"id", w.kabel->id()}, {"name", "Testmac"}, {"vpn", nlohmann::json::array()}}));
}

/// However the link is lost, one tick later the Mac is on its own again.
TEST(Fahrt, jederVerlustNimmtAllesZurueck) {
    using Art = Phase::Art;
    const std::tuple<const char*, std::function<void(KabelWelt&)>, Art> faelle[] = {
        {"abgesteckt", [](auto& w) { w.handys.clear(); }, Art::keinHandy},
        {"offline", [](auto& w) { w.handys[0].zustand = "offline"; }, Art::keinHandy},
        {"Debugging entzogen", [](auto& w) { w.handys[0].zustand = "unauthorized"; }, Art::nichtAutorisiert},
        {"Weitergabe aus", [](auto& w) { w.handys[0].teilt = false; }, Art::weitergabeAus},
        {"Forwards weg", [](auto& w) { w.forwards.clear(); }, Art::weitergabeAus},
        {"abgelehnt", [](auto& w) { w.handys[0].entscheid = "abgelehnt"; }, Art::abgelehnt},
        {"unentschieden", [](auto& w) { w.handys[0].entscheid = "Erlaubt"; }, Art::wartetAufHandy},
    };
    Modellhandy handy;
    handy.status = R"({"paths":[{"iface":"wifi","healthy":true,"rtt_ms":9}],"funkloecher":1,
                       "guests":[{"IP":"kabel:Testmac","BytesUp":2000,"BytesDown":0}]})";
    for (const auto& [name, geschieht, phase] : faelle) {
        SCOPED_TRACE(name);
        KabelWelt w;
        w.handys = {handy};
        w.starteBis(3.3);
        geschieht(w);
        EXPECT_EQ(w.phaseBei(6.3), phase);
        EXPECT_FALSE(w.socksAn["Wi-Fi"] || w.zustand().proxyGesetzt);
        EXPECT_EQ(w.zustand().austritt + w.zustand().klasse + w.zustand().rettung, "");
        EXPECT_THAT(w.zustand().gleise, IsEmpty());
        EXPECT_EQ(w.zustand().menge, "2 kB") << "the amount and the phone's name stay on show";
        EXPECT_EQ(w.zustand().handy, "Samsung Galaxy S23");
        EXPECT_THAT(w.protokoll(), Contains("System-Proxy entfernt von Wi-Fi"));
        // What mended itself is proven anew, not believed, and what it tells is shown even if it is the same.
        w.handys = {handy};
        EXPECT_EQ(w.phaseBei(12.3), Art::faehrt);
        EXPECT_EQ(w.zustand().austritt, "203.0.113.7");
        EXPECT_THAT(w.zustand().gleise, ElementsAre("WLAN · 9 ms"));
        EXPECT_TRUE(w.socksAn["Wi-Fi"]);
    }
}

TEST(Fahrt, nimmtDasErsteBereiteGeraetDerListe) {
    const std::tuple<const char*, const char*, Phase::Art, const char*> faelle[] = {
        {"unauthorized", "device", Phase::Art::faehrt, "B"},
        {"device", "device", Phase::Art::faehrt, "A"},
        {"offline", "unauthorized", Phase::Art::nichtAutorisiert, ""},
        {"recovery", "offline", Phase::Art::keinHandy, ""}};
    for (const auto& [a, b, phase, genutzt] : faelle) {
        KabelWelt w;
        w.handys = {Modellhandy{.serial = "A", .zustand = a, .modell = ""},
                    Modellhandy{.serial = "B", .zustand = b, .modell = ""}};
        w.starte();
        EXPECT_EQ(w.phaseBei(1), phase);
        EXPECT_EQ(w.forwards[1080], genutzt);
        EXPECT_EQ(w.zustand().handy, genutzt) << "without a model the serial names it";
    }
}

TEST(Fahrt, ohneAdbWirdBeiJedemTaktNeuGesucht) {
    HandyWelt w;
    std::filesystem::remove(w.ordner.pfad() + "/wurzel/opt/homebrew/bin/adb");
    w.starte();
    EXPECT_EQ(w.phaseBei(4), Phase::Art::keinAdb);
    EXPECT_THAT(w.protokoll(), ElementsAre("adb nicht gefunden — Android-Platform-Tools installieren (brew "
                                           "install --cask android-platform-tools)"));
    EXPECT_TRUE(w.aufrufe.empty());
    w.ordner.lege("/wurzel/usr/local/bin/adb", "#!", true);
    EXPECT_EQ(w.phaseBei(6.5), Phase::Art::faehrt);
}

TEST(Fahrt, weichtBelegtenPortsAusUndSagtWelcheNichtGehen) {
    const std::string belegt = "adb: error: cannot bind listener: Address already in use";
    const std::tuple<std::set<int>, std::string, std::string, std::string> faelle[] = {
        {{}, "", "8080 ", "Fährt mit"},
        {{8080}, "", "8080 8080 18080 ", "Gästeseite lokal auf Port 18080 (8080 belegt)"},
        {{8080, 18080, 18081, 18082, 28080},
         "",
         "8080 8080 18080 18081 18082 28080 ",
         "adb forward scheitert: Gästeseite -- " + belegt},
        {{1080}, "", "8080 ", "adb forward scheitert: 1080 -- " + belegt},
        // Any other failure than a taken port ends the search.
        {{}, "\n adb: closed \n", "8080 ", "adb forward scheitert: 1080 Gästeseite -- adb: closed"},
    };
    for (const auto& [ports, fehler, erwartet, zeile] : faelle) {
        SCOPED_TRACE(zeile);
        HandyWelt w;
        w.belegtePorts = ports;
        w.forwardFehler = fehler;
        w.starteBis(1);
        std::string versuche;
        for (const auto& aufruf : w.aufrufe)
            if (aufruf.ends_with(" tcp:8080"))
                versuche += aufruf.substr(25, aufruf.size() - 34) + " ";
        EXPECT_EQ(versuche, erwartet);
        EXPECT_EQ(w.zustand().phase == Phase::Art::faehrt, !zeile.starts_with("adb forward"));
        const auto zeilen = w.protokoll();
        EXPECT_THAT(zeilen, Contains(zeile));
        EXPECT_THAT(zeilen,
                    Contains(HasSubstr("Gästeseite lokal")).Times(zeile.starts_with("Gäste") ? 1 : 0));
    }
}

TEST(Fahrt, merktSichDenAusweichportUndNimmtFuerEinAnderesHandyNeueForwards) {
    HandyWelt w;
    w.belegtePorts = {8080};
    w.starteBis(1);
    w.belegtePorts.clear();
    w.handys[0].teilt = false;
    w.laufeBisSekunde(3.5); // the forwards count as lost
    w.handys[0].teilt = true;
    w.laufeBisSekunde(6.5);
    EXPECT_TRUE(w.forwards.contains(18080) && !w.forwards.contains(8080));
    // Within a tick another one is first, while the old forwards still lead to a willing phone.
    w.belegtePorts = {18080};
    w.handys.insert(w.handys.begin(), Modellhandy{.serial = "ANDERES", .modell = ""});
    w.laufeBisSekunde(9.5);
    EXPECT_EQ(w.forwards[8080], "ANDERES");
    EXPECT_EQ(w.forwards[1080], "ANDERES");
    EXPECT_EQ(w.zustand().handy, "ANDERES");
    EXPECT_THAT(w.protokoll(), Contains("Gästeseite lokal auf Port 8080"));
}

TEST(Fahrt, gescheiterterBeweisBautNichtsAbUndWirdWiederholt) {
    HandyWelt w;
    w.handys[0].austritt.reset();
    w.starte();
    EXPECT_EQ(w.phaseBei(3.5),
              Phase::proxyFehler("Der Proxy des Handys antwortet nicht — Weitergabe wirklich an?"));
    EXPECT_EQ(w.forwards.size(), 2U);
    EXPECT_EQ(w.zustand().klasse, "2. Klasse") << "the link values stay on show";
    EXPECT_THAT(w.aufrufe, Not(Contains(HasSubstr("networksetup"))));
    const auto zeilen = w.protokoll();
    EXPECT_EQ(std::count(zeilen.begin(), zeilen.end(), "Prüfe den Weg durch das Handy …"), 1);

    w.handys[0].austritt = "2001:db8::1";
    EXPECT_EQ(w.phaseBei(6.5), Phase::Art::faehrt);
    w.handys[0].austritt.reset(); // proven once, it is not asked for again
    EXPECT_EQ(w.phaseBei(20), Phase::Art::faehrt);
    EXPECT_EQ(w.zustand().austritt, "2001:db8::1");
}

TEST(Fahrt, einTaktAlleDreiSekunden) {
    HandyWelt w;
    w.dauerWerkzeug = 30ms;
    w.dauerHttp = 80ms;
    w.starteBis(600);
    EXPECT_EQ(std::count(w.aufrufe.begin(), w.aufrufe.end(), "adb devices -l"), 200);
}

TEST(Fahrt, jedesWerkzeugHatSeineFrist) {
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

TEST(Fahrt, dieMenueleisteWechseltAlleVierSekunden) {
    HandyWelt w;
    w.handys[0].status = R"({"paths":[{"iface":"wifi","healthy":false,"rtt_ms":0}]})";
    w.starte();
    std::string bilder;
    for (const double sekunde : {3.9, 4.1, 8.1, 12.1, 15.9}) {
        w.laufeBisSekunde(sekunde);
        bilder += w.zustand().symbol + " " + w.zustand().kurz + ", ";
    }
    const std::string faehrt = "cable.connector ";
    EXPECT_EQ(bilder, "cable.connector.slash , " + faehrt + "W✕, " + faehrt + "2., " + faehrt + "W✕, " +
                          faehrt + "W✕, ");
    w.handys.clear();
    w.laufeBisSekunde(20.1);
    EXPECT_EQ(w.zustand().symbol + w.zustand().kurz, "cable.connector.slash");
}

/// Or it would flicker.
TEST(Fahrt, dasPanelZeigtNichtsNeuesWaehrendDasHandyFragtOderAblehnt) {
    for (const char* entscheid : {"fragt", "abgelehnt"}) {
        HandyWelt w;
        w.handys[0].entscheid = entscheid;
        w.handys[0].status = R"({"paths":[{"iface":"wifi","healthy":true,"rtt_ms":9}]})";
        w.starte();
        std::vector<Zustand> bilder = {w.zustand()};
        w.welt.beobachte([&] { // between any two jobs, as a busy machine may draw
            if (w.zustand() != bilder.back())
                bilder.push_back(w.zustand());
        });
        w.laufeBisSekunde(60);
        EXPECT_EQ(bilder.size(), 2U) << entscheid;
    }
}

TEST(Fahrt, unmoeglicheZahlenBeendenDasProgramm) {
    HandyWelt w;
    w.handys[0].status = R"({"guests":[{"IP":"kabel:Testmac","BytesUp":9223372036854775807,"BytesDown":1}]})";
    w.starteBis(1);
    EXPECT_NE(w.abgebrochen, "");
}

} // namespace
