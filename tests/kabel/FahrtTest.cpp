// The link from the cable to the proven path, the system proxy, and what the user is shown of them.

#include "tests/hilfe/KabelWelt.hpp"

#include <gmock/gmock.h>

using namespace mobilsteg;
using namespace std::chrono_literals;
using namespace testing;

namespace {

TEST(Fahrt, kommtSchrittFuerSchrittAnsZiel) {
    KabelWelt w;
    std::filesystem::remove(w.ordner.pfad() + "/wurzel/opt/homebrew/bin/adb");
    w.starte();
    EXPECT_EQ(w.phaseBei(0.1), Phase::Art::start) << "the first tick comes 0.2 s after the start";
    EXPECT_EQ(w.phaseBei(0.3), Phase::Art::keinAdb);
    w.ordner.lege("/wurzel/usr/local/bin/adb", "#!", true); // each tick looks for it anew
    w.laufeBisSekunde(3.3);
    for (double sekunde = 3.3; const auto& handy : {Modellhandy{.zustand = "unauthorized"},
                                                    {.teilt = false},
                                                    {.entscheid = "fragt"},
                                                    {.entscheid = "abgelehnt"},
                                                    {}}) {
        w.handys = {handy};
        w.laufeBisSekunde(sekunde += 3);
    }
    EXPECT_EQ(w.zustand().phase, Phase::Art::faehrt);
    EXPECT_THAT(w.protokoll(),
                ElementsAre("Mobilsteg Bordlotse 1.0 (1)",
                            "adb nicht gefunden — Android-Platform-Tools installieren (brew install --cask "
                            "android-platform-tools)",
                            "Kein Handy am Kabel — USB-Debugging an?",
                            "Am Handy „USB-Debugging zulassen“ bestätigen",
                            "In Mobilsteg: 2. oder 1. Klasse, Weitergabe an, Losfahren",
                            "Warte auf das Ja am Handy …", "Am Handy abgelehnt",
                            "Prüfe den Weg durch das Handy …", "Beweis: draußen als 203.0.113.7",
                            "System-Proxy gesetzt auf Wi-Fi: 127.0.0.1:1080", "Fährt mit"));
    EXPECT_EQ(w.zustand().handy, "Samsung Galaxy S23");
    w.bediene([](Kabel& k) { k.protokollZeigen(); });
    EXPECT_THAT(w.aufrufe.back(), AllOf(StartsWith("open "), EndsWith("/MobilstegBordlotse.log")));
    EXPECT_EQ(w.anmeldungen.back(), R"({"id":")" + w.kabel->id() + R"(","name":"Testmac","vpn":[]})");
}

TEST(Fahrt, einVerlustNimmtAllesZurueckUndHeilt) {
    HandyWelt w;
    w.handys[0].status = R"({"paths":[{"iface":"wifi","healthy":true,"rtt_ms":9}],"funkloecher":1,
                             "guests":[{"IP":"kabel:Testmac","BytesUp":2000,"BytesDown":0}]})";
    w.starteBis(1);
    w.handys[0].teilt = false;
    EXPECT_EQ(w.phaseBei(3.5), Phase::Art::weitergabeAus);
    EXPECT_FALSE(w.socksAn["Wi-Fi"] || w.zustand().proxyGesetzt);
    EXPECT_EQ(w.zustand().austritt + w.zustand().klasse + w.zustand().rettung, "");
    EXPECT_THAT(w.zustand().gleise, IsEmpty());
    EXPECT_EQ(w.zustand().menge, "2 kB") << "the amount and the phone's name stay on show";
    EXPECT_EQ(w.zustand().handy, "Samsung Galaxy S23");
    w.handys[0].teilt = true;
    EXPECT_EQ(w.phaseBei(6.5), Phase::Art::faehrt);
    EXPECT_THAT(w.zustand().gleise, ElementsAre("WLAN · 9 ms"));
    EXPECT_EQ(w.zustand().austritt, "203.0.113.7") << "proven anew";
    EXPECT_TRUE(w.socksAn["Wi-Fi"]);
    w.handys[0].status = R"({"guests":[{"IP":"kabel:Testmac","BytesUp":9223372036854775807,"BytesDown":1}]})";
    w.laufeBisSekunde(9.5);
    EXPECT_EQ(w.abgebrochen, "Das Handy meldet unmögliche Zahlen");
    EXPECT_FALSE(w.socksAn["Wi-Fi"]);
    EXPECT_THAT(w.protokoll(), Contains("Programmierfehler: " + w.abgebrochen));
}

TEST(Fahrt, weichtBelegtenPortsAusUndWerDortHorchtGiltNichtAlsHandy) {
    const std::string belegt = " -- adb: error: cannot bind listener: Address already in use";
    const std::string scheitert = "adb forward scheitert: ";
    // The taken ports, adb's own failure, the ports tried for the guests' page, the log's line, the panel's.
    const std::tuple<std::set<int>, std::string, std::string, std::string, std::string> faelle[] = {
        {{8080}, "", "8080 8080 18080 ", "Gästeseite lokal auf Port 18080 (8080 belegt)", ""},
        {{8080, 18080, 18081, 18082, 28080},
         "",
         "8080 8080 18080 18081 18082 28080 ",
         scheitert + "Gästeseite" + belegt,
         "Ports 8080, 18080, 18081, 18082 und 28080 sind auf diesem Mac belegt"},
        {{1080}, "", "8080 ", scheitert + "1080" + belegt, "Port 1080 ist auf diesem Mac belegt"},
        // Any other failure than a taken port ends the search.
        {{}, "\n adb: closed \n", "8080 ", scheitert + "1080 Gästeseite -- adb: closed", ""},
    };
    for (const auto& [ports, fehler, erwartet, zeile, meldung] : faelle) {
        SCOPED_TRACE(zeile);
        const bool faehrt = zeile.starts_with("Gästeseite");
        HandyWelt w;
        w.belegtePorts = ports;
        w.fremdesHandy = true;
        w.forwardFehler = fehler;
        w.starteBis(1);
        std::string versuche;
        for (const auto& aufruf : w.aufrufe)
            if (aufruf.ends_with(" tcp:8080"))
                versuche += aufruf.substr(25, aufruf.size() - 34) + " ";
        EXPECT_EQ(versuche, erwartet);
        EXPECT_EQ(w.protokoll().at(1), zeile);
        int geschrieben = 0;
        w.einstellungen.vorAenderung = [&] { ++geschrieben; };
        EXPECT_EQ(w.phaseBei(60), faehrt ? Phase::Art::faehrt : Phase::Art::weitergabeAus);
        EXPECT_EQ(geschrieben, 0) << "it may last for days";
        EXPECT_EQ(w.anmeldungen.empty(), !faehrt);
        EXPECT_EQ(w.socksAn["Wi-Fi"], faehrt);
        EXPECT_EQ(w.zustand().meldung, meldung);
        const std::string andere = ports.size() > 1 ? "Erst muss das Handy freigeben." : "";
        if (!andere.empty())
            w.bediene([](Kabel& k) { k.proxyUmschalten(); });
        const auto handys = std::exchange(w.handys, {});
        w.laufeBisSekunde(63);
        EXPECT_EQ(w.zustand().meldung, andere)
            << "without a phone no port is wanted; any other message stays";
        w.handys = handys;
        w.belegtePorts.clear();
        w.forwardFehler.clear();
        EXPECT_EQ(w.phaseBei(66), Phase::Art::faehrt);
        EXPECT_EQ(w.zustand().meldung, "");
        w.raeumeAuf();
        EXPECT_FALSE(w.einstellungen.werte.contains("kabel.gastport"));
    }
}

TEST(Fahrt, jedesWerkzeugHatSeineFrist) {
    HandyWelt w;
    w.einstellungen.werte = {{"experte", true}, {"kabel.gastport", std::string("28080")}};
    w.ordner.lege("/wurzel/usr/local/bin/tailscale", "#!", true);
    w.handys[0].austritt.reset(); // one report
    w.starteBis(1);
    w.handys[0].austritt = "203.0.113.7";
    w.laufeBisSekunde(15); // to the fifth tick, which looks at the connections
    std::set<std::string> fristen;
    for (const auto& [aufruf, sekunden] : w.fristen)
        fristen.insert(aufruf.substr(0, aufruf.find(aufruf.starts_with("adb") ? " tcp" : " ")) + " " +
                       std::to_string(static_cast<int>(sekunden)));
    EXPECT_FALSE(w.einstellungen.werte.contains("kabel.gastport")) << "adb knows no such forward";
    EXPECT_THAT(fristen, ElementsAre("adb -s R5CT1 forward --remove 5", "adb -s R5CT1 forward 10",
                                     "adb devices -l 10", "adb forward --list 5", "lsof 8", "mdfind 8",
                                     "netstat 5", "networksetup 10", "networksetup 5", "pgrep 3", "route 5",
                                     "scutil 5", "tailscale 10", "tailscale 25"));
}

TEST(Fahrt, dieMenueleisteFolgtDerPhaseUndWechseltAlleVierSekunden) {
    HandyWelt w;
    w.handys[0].status = R"({"paths":[{"iface":"wifi","healthy":false,"rtt_ms":0}]})";
    w.starte();
    std::vector<std::string> bilder;
    for (const double sekunde : {0.1, 3.9, 4.1, 8.1, 12.1, 15.9}) {
        w.laufeBisSekunde(sekunde);
        bilder.push_back(w.zustand().symbol + " " + w.zustand().kurz);
    }
    EXPECT_THAT(bilder, ElementsAre("cable.connector.slash ", "cable.connector 2.", "cable.connector W✕",
                                    "cable.connector 2.", "cable.connector W✕", "cable.connector W✕"));
}

TEST(Fahrt, eineMeldungVonAdbZiehtDenBlickVor) {
    KabelWelt w;
    int gehalten = 0;
    w.haltGeraetewache = [&] { ++gehalten; };
    w.fahreLos();
    w.handys.clear();
    w.aufrufe.clear();
    w.q->async([&] { // two while the queue is busy are one look
        w.kabel->siehNach();
        w.kabel->siehNach();
    });
    w.laufeBisSekunde(1.1);
    EXPECT_EQ(w.zustand().phase, Phase::Art::keinHandy);
    EXPECT_FALSE(w.socksAn["Wi-Fi"]);
    EXPECT_THAT(w.aufrufe, Contains("adb devices -l").Times(1));
    EXPECT_EQ(gehalten, 2);
    w.aufrufe.clear();
    w.bediene([](Kabel& k) { k.siehNach(); });
    EXPECT_THAT(w.aufrufe, Contains("adb devices -l")) << "the next one looks again";
    w.raeumeAuf();
    w.aufrufe.clear();
    w.kabel->siehNach();
    w.laufeBisSekunde(4);
    EXPECT_THAT(w.aufrufe, IsEmpty());
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

TEST(Proxy, fehlerBleibtStehenSolangeDerWegBewiesenIst) {
    HandyWelt w;
    const auto schalteUm = [](Kabel& k) { k.proxyUmschalten(); };
    w.einstellungen.aufDerPlatte.emplace(); // it is full
    w.starte();
    EXPECT_EQ(w.phaseBei(4),
              Phase::proxyFehler("System-Proxy nicht gesetzt: Es lässt sich nicht merken (voll)"));
    EXPECT_THAT(w.aufrufe, Not(Contains(HasSubstr("-setsocks"))));
    w.einstellungen.aufDerPlatte.reset();
    w.networksetupFehler = "** Error: Command requires admin privileges.";
    w.bediene(schalteUm);
    EXPECT_EQ(w.phaseBei(10), Phase::proxyFehler("System-Proxy nicht gesetzt: " + w.networksetupFehler));
    w.networksetupFehler.clear();
    w.bediene(schalteUm);
    EXPECT_EQ(w.zustand().phase, Phase::Art::faehrt) << "set by hand at last";
    EXPECT_TRUE(w.socksAn["Wi-Fi"]);
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
    const auto schalteUm = [](Kabel& k) { k.proxyUmschalten(); };
    w.bediene(schalteUm);
    EXPECT_EQ(w.zustand().meldung, "Erst muss das Handy freigeben.");
    EXPECT_EQ(w.phaseBei(1), Phase::Art::faehrt);
    EXPECT_FALSE(w.zustand().proxyGesetzt);
    w.bediene(schalteUm);
    EXPECT_TRUE(w.zustand().proxyGesetzt);
    EXPECT_EQ(w.zustand().meldung, "");
    w.bediene([](Kabel& k) { k.setzeProxyAutomatisch(true); });
    w.bediene([](Kabel& k) { k.setzeProxyAutomatisch(false); });
    w.welt.laufe(10s);
    EXPECT_TRUE(w.socksAn["Wi-Fi"]) << "what is set stays set";
    w.bediene(schalteUm);
    EXPECT_FALSE(w.zustand().proxyGesetzt || w.socksAn["Wi-Fi"]);
    w.forwards.erase(1080);
    w.bediene(schalteUm);
    EXPECT_FALSE(w.socksAn["Wi-Fi"]) << "the path may be gone since the last tick";
    EXPECT_EQ(w.zustand().meldung, "Erst muss das Handy freigeben.");
}

TEST(Proxy, einVerungluecktesEntfernenWirdWiederholt) {
    KabelWelt w;
    w.fahreLos();
    w.networksetupFehler = "kaputt";
    w.handys.clear();
    w.laufeBisSekunde(9.5);
    EXPECT_TRUE(w.socksAn["Wi-Fi"]);
    EXPECT_THAT(w.protokoll(), Contains("System-Proxy nicht entfernt von Wi-Fi: kaputt").Times(1));
    w.networksetupFehler.clear();
    w.handys = {Modellhandy{.austritt = std::nullopt}}; // there it is again, but without a path
    w.laufeBisSekunde(12.5);
    EXPECT_FALSE(w.socksAn["Wi-Fi"]) << "the remembered service lets the next tick try again";
    w.handys = {Modellhandy{}};
    w.laufeBisSekunde(15.5);
    w.networksetupFehler = "kaputt";
    w.handys.clear();
    w.laufeBisSekunde(21.5);
    EXPECT_THAT(w.protokoll(), Contains("System-Proxy nicht entfernt von Wi-Fi: kaputt").Times(2));
}

} // namespace
