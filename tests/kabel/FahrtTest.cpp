// The link from the cable to the proven path, by the whole controller in virtual time.

#include "tests/hilfe/KabelWelt.hpp"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

using namespace mobilsteg;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

namespace {

Modellhandy handy(const std::function<void(Modellhandy&)>& abweichung = {}) {
    Modellhandy h;
    if (abweichung)
        abweichung(h);
    return h;
}

TEST(Fahrt, kommtSchrittFuerSchrittAnsZiel) {
    KabelWelt w;
    w.starte();
    EXPECT_EQ(w.zustand().phase, Phase::Art::start);
    w.laufeBisSekunde(0.1);
    EXPECT_TRUE(w.aufrufe.empty()) << "the first tick comes 0.2 s after the start";

    w.laufeBisSekunde(0.3);
    EXPECT_EQ(w.zustand().phase, Phase::Art::keinHandy);
    w.handys = {handy([](auto& h) { h.zustand = "unauthorized"; })};
    w.laufeBisSekunde(3.3);
    EXPECT_EQ(w.zustand().phase, Phase::Art::nichtAutorisiert);
    w.handys = {handy([](auto& h) { h.teilt = false; })};
    w.laufeBisSekunde(6.3);
    EXPECT_EQ(w.zustand().phase, Phase::Art::weitergabeAus);
    w.handys = {handy([](auto& h) { h.entscheid = "fragt"; })};
    w.laufeBisSekunde(9.3);
    EXPECT_EQ(w.zustand().phase, Phase::Art::wartetAufHandy);
    w.handys = {handy()};
    w.laufeBisSekunde(12.3);
    EXPECT_EQ(w.zustand().phase, Phase::Art::faehrt);

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

struct Verlust {
    const char* name;
    std::function<void(KabelWelt&)> geschieht;
    Phase::Art phase;
};

/// However the link is lost, one tick later the Mac is on its own again.
TEST(Fahrt, jederVerlustNimmtAllesZurueck) {
    const Verlust faelle[] = {
        {"abgesteckt", [](auto& w) { w.handys.clear(); }, Phase::Art::keinHandy},
        {"offline", [](auto& w) { w.handys[0].zustand = "offline"; }, Phase::Art::keinHandy},
        {"Debugging entzogen", [](auto& w) { w.handys[0].zustand = "unauthorized"; },
         Phase::Art::nichtAutorisiert},
        {"Weitergabe aus", [](auto& w) { w.handys[0].teilt = false; }, Phase::Art::weitergabeAus},
        {"Forwards weg", [](auto& w) { w.forwards.clear(); }, Phase::Art::weitergabeAus},
        {"abgelehnt", [](auto& w) { w.handys[0].entscheid = "abgelehnt"; }, Phase::Art::abgelehnt},
        {"unentschieden", [](auto& w) { w.handys[0].entscheid = "Erlaubt"; }, Phase::Art::wartetAufHandy},
    };
    for (const auto& fall : faelle) {
        SCOPED_TRACE(fall.name);
        KabelWelt w;
        w.fahreLos();
        w.handys[0].status = R"({"paths":[{"iface":"wifi","healthy":true,"rtt_ms":9}],"funkloecher":1,
                                 "guests":[{"IP":"kabel:Testmac","BytesUp":2000,"BytesDown":0}]})";
        w.laufeBisSekunde(3.3);
        ASSERT_TRUE(!w.zustand().gleise.empty() && !w.zustand().rettung.empty());
        fall.geschieht(w);
        w.laufeBisSekunde(6.3);
        EXPECT_EQ(w.zustand().phase, fall.phase);
        EXPECT_FALSE(w.socksAn["Wi-Fi"]);
        EXPECT_FALSE(w.zustand().proxyGesetzt);
        EXPECT_EQ(w.zustand().austritt, "");
        EXPECT_EQ(w.zustand().klasse + w.zustand().rettung, "");
        EXPECT_TRUE(w.zustand().gleise.empty());
        EXPECT_EQ(w.zustand().menge, "2 kB") << "the amount and the phone's name stay on show";
        EXPECT_EQ(w.zustand().handy, "Samsung Galaxy S23");
        EXPECT_THAT(w.protokoll(), Contains("System-Proxy entfernt von Wi-Fi"));
        // What mended itself is proven anew, not believed.
        w.handys = {handy()};
        w.laufeBisSekunde(12.3);
        EXPECT_EQ(w.zustand().phase, Phase::Art::faehrt);
        EXPECT_EQ(w.zustand().austritt, "203.0.113.7");
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
        w.handys.resize(2);
        std::tie(w.handys[0].serial, w.handys[0].zustand) = std::tuple("A", a);
        std::tie(w.handys[1].serial, w.handys[1].zustand) = std::tuple("B", b);
        w.starte();
        w.laufeBisSekunde(1);
        EXPECT_EQ(w.zustand().phase, phase);
        EXPECT_EQ(w.forwards[1080], genutzt);
    }
}

TEST(Fahrt, ohneAdbWirdBeiJedemTaktNeuGesucht) {
    KabelWelt w;
    w.handys = {handy()};
    const std::string adb = w.ordner.pfad() + "/wurzel/opt/homebrew/bin/adb";
    std::filesystem::remove(adb);
    w.starte();
    w.laufeBisSekunde(4);
    EXPECT_EQ(w.zustand().phase, Phase::Art::keinAdb);
    EXPECT_THAT(w.protokoll(), ElementsAre("adb nicht gefunden — Android-Platform-Tools installieren (brew "
                                           "install --cask android-platform-tools)"));
    EXPECT_TRUE(w.aufrufe.empty());
    w.ordner.lege("/wurzel/usr/local/bin/adb", "#!", true);
    w.laufeBisSekunde(6.5);
    EXPECT_EQ(w.zustand().phase, Phase::Art::faehrt);
}

TEST(Fahrt, weichtBelegtenPortsAus) {
    struct Fall {
        const char* name;
        std::set<int> belegt;
        std::vector<std::string> versuche;
        int port;
        std::string zeile; ///< nothing: no line about the port
    };
    const std::vector<Fall> faelle = {
        {"frei", {}, {"8080"}, 8080, ""},
        {"8080 belegt",
         {8080},
         {"8080", "8080", "18080"},
         18080,
         "Gästeseite lokal auf Port 18080 (8080 belegt)"},
        {"fast alle belegt",
         {8080, 18080, 18081, 18082},
         {"8080", "8080", "18080", "18081", "18082", "28080"},
         28080,
         "Gästeseite lokal auf Port 28080 (8080 belegt)"},
    };
    for (const auto& fall : faelle) {
        SCOPED_TRACE(fall.name);
        KabelWelt w;
        w.handys = {handy()};
        w.belegtePorts = fall.belegt;
        w.starte();
        w.laufeBisSekunde(1);
        std::vector<std::string> versuche;
        for (const auto& aufruf : w.aufrufe)
            if (aufruf.ends_with(" tcp:8080"))
                versuche.push_back(aufruf.substr(25, aufruf.size() - 34));
        EXPECT_EQ(versuche, fall.versuche);
        EXPECT_TRUE(w.forwards.contains(fall.port));
        EXPECT_EQ(w.zustand().phase, Phase::Art::faehrt);
        if (fall.zeile.empty())
            EXPECT_THAT(w.protokoll(), Not(Contains(HasSubstr("Gästeseite"))));
        else
            EXPECT_THAT(w.protokoll(), Contains(fall.zeile));
    }
}

TEST(Fahrt, merktSichDenAusweichport) {
    KabelWelt w;
    w.handys = {handy()};
    w.belegtePorts = {8080};
    w.starte();
    w.laufeBisSekunde(1);
    w.belegtePorts.clear();
    w.handys[0].teilt = false;
    w.laufeBisSekunde(3.5); // the forwards count as lost
    w.handys[0].teilt = true;
    w.laufeBisSekunde(6.5);
    EXPECT_TRUE(w.forwards.contains(18080));
    EXPECT_FALSE(w.forwards.contains(8080));
    w.belegtePorts = {18080};
    w.handys[0].serial = "ANDERES";
    w.laufeBisSekunde(9.5);
    EXPECT_EQ(w.forwards[8080], "ANDERES");
    EXPECT_THAT(w.protokoll(), Contains("Gästeseite lokal auf Port 8080"));
}

TEST(Fahrt, meldetGescheiterteForwards) {
    struct Fall {
        std::function<void(KabelWelt&)> macht;
        const char* zeile;
    };
    const Fall faelle[] = {
        {[](auto& w) { w.belegtePorts = {1080}; },
         "adb forward scheitert: 1080 -- adb: error: cannot bind listener: Address already in use"},
        {[](auto& w) {
             w.belegtePorts = {8080, 18080, 18081, 18082, 28080};
         },
         "adb forward scheitert: Gästeseite -- adb: error: cannot bind listener: Address already in use"},
        {[](auto& w) { w.forwardFehler = "\n adb: error: device offline \n"; },
         "adb forward scheitert: 1080 Gästeseite -- adb: error: device offline"},
    };
    for (const auto& fall : faelle) {
        SCOPED_TRACE(fall.zeile);
        KabelWelt w;
        w.handys = {handy()};
        fall.macht(w);
        w.starte();
        w.laufeBisSekunde(1);
        EXPECT_THAT(w.protokoll(), Contains(fall.zeile));
        EXPECT_NE(w.zustand().phase, Phase::Art::faehrt);
    }
    KabelWelt w; // any other failure than a taken port ends the search
    w.handys = {handy()};
    w.forwardFehler = "adb: error: closed";
    w.starte();
    w.laufeBisSekunde(1);
    EXPECT_FALSE(w.rief("tcp:18080"));
}

TEST(Fahrt, anderesHandyBekommtEigeneForwardsUndNamen) {
    KabelWelt w;
    w.fahreLos();
    w.handys[0].serial = "PX8";
    w.handys[0].modell = "";
    w.laufeBisSekunde(3.3);
    EXPECT_EQ(w.forwards, (std::map<int, std::string>{{1080, "PX8"}, {8080, "PX8"}}));
    EXPECT_EQ(w.zustand().handy, "PX8") << "without a model the serial names it";
}

TEST(Fahrt, gescheiterterBeweisBautNichtsAbUndWirdWiederholt) {
    KabelWelt w;
    w.handys = {handy([](auto& h) { h.austritt.reset(); })};
    w.starte();
    w.laufeBisSekunde(3.5);
    EXPECT_EQ(w.zustand().phase,
              Phase::proxyFehler("Der Proxy des Handys antwortet nicht — Weitergabe wirklich an?"));
    EXPECT_EQ(w.forwards.size(), 2U);
    EXPECT_EQ(w.zustand().klasse, "2. Klasse") << "the link values stay on show";
    EXPECT_FALSE(w.rief("networksetup"));
    const auto zeilen = w.protokoll();
    EXPECT_EQ(std::count(zeilen.begin(), zeilen.end(), "Prüfe den Weg durch das Handy …"), 2);

    w.handys[0].austritt = "2001:db8::1";
    w.laufeBisSekunde(6.5);
    EXPECT_EQ(w.zustand().phase, Phase::Art::faehrt);
    w.handys[0].austritt.reset(); // proven once, it is not asked for again
    w.laufeBisSekunde(20);
    EXPECT_EQ(w.zustand().phase, Phase::Art::faehrt);
    EXPECT_EQ(w.zustand().austritt, "2001:db8::1");
}

} // namespace
