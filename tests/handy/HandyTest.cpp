// What is said to adb, the phone and the service behind it, and what is made of their answers.

#include "handy/Handy.hpp"

#include "handy/Adb.hpp"
#include "tests/hilfe/Gegenstelle.hpp"
#include "tests/hilfe/Ordner.hpp"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

using namespace mobilsteg;
using namespace testing;
using namespace std::string_literals;
using nlohmann::json;

namespace {

using Faelle = std::map<std::string, std::string>; // what comes, what is made of it

TEST(Adb, liestDieListeWieSieIst) {
    for (const auto& [zeile, soll] :
         Faelle{{"R5   device usb:1-1 model:SM_S911B device:d", "R5|device|Samsung Galaxy S23"},
                {"emulator-5554          offline transport_id:2", "emulator-5554|offline|"},
                {"X device model:A_1 model:B_2", "X|device|A-1"},
                {"X device model:Pixel_8_Pro", "X|device|Google Pixel-8-Pro"},
                {"X device model:sm-s911b", "X|device|Samsung Galaxy S23"},
                {"X device model:SM-G986U1", "X|device|Samsung Galaxy S20+"},
                {"X device model:SM-S91/1B", "X|device|Samsung SM-S91/1B"},
                {"X device model:SM-\u00A0S911", "X|device|Samsung Galaxy S23"},
                {"X device model:SM-\u00A0\u00A0S911", "X|device|Samsung SM-\u00A0\u00A0S911"},
                {"abgeschnitten          dev", "abgeschnitten|dev|"}}) {
        const auto geraete = Adb::lies("List of devices attached\nallein\n\n" + zeile);
        ASSERT_EQ(geraete.size(), 1U) << zeile;
        EXPECT_EQ(geraete[0].serial + "|" + geraete[0].zustand + "|" + geraete[0].modell, soll);
        EXPECT_EQ(geraete[0].amKabel, soll.starts_with("R5"));
    }
    EXPECT_THAT(Adb::lies("R5CT20ABCDE device"), IsEmpty());
}

TEST(Adb, suchtInFesterReihenfolge) {
    const Ordner ordner;
    const std::string& o = ordner.pfad();
    const Adb adb(nullptr, {o + "/heim", o + "/wurzel"}, o + "/Resources");
    ordner.lege("/Resources/adb/ein-ordner", "");
    ordner.lege("/wurzel/usr/local/bin/adb", "nicht ausführbar");
    EXPECT_EQ(adb.finden(), std::nullopt);
    std::filesystem::remove_all(o + "/Resources/adb");
    for (const auto* ort : {"/wurzel/opt/homebrew/share/android-commandlinetools/platform-tools/adb",
                            "/wurzel/usr/local/bin/adb", "/heim/Library/Android/sdk/platform-tools/adb",
                            "/wurzel/opt/homebrew/bin/adb", "/Resources/adb"}) {
        ordner.lege(ort, "", true); // goes before the earlier ones
        EXPECT_EQ(adb.finden(), o + ort);
    }
}

const std::string voll = R"({"app":"mobilsteg","proxy_port":1080,"zustand":"erlaubt","mehr":[{"x":null}],
 "kabel":{"anfrage":null,"gast":{"id":"a1","name":"Mac","neu":1}},
 "status":{"paths":[{"iface":"wifi","healthy":true,"rtt_ms":42,"rtt_ruhe_ms":12.5},
                    {"iface":"cellular","healthy":false,"rtt_ms":-1e2}],
  "alles":false,"notlage":true,"notlage_grund":"Tunnel",
  "guests":[{"IP":"kabel:Mac","BytesUp":9223372036854775807,"BytesDown":-9223372036854775808}],
  "funkloecher":3,"gerettet":2.0}})";

TEST(Antwort, liestJedesFeldUndErfindetNichts) {
    const auto keinGast = Eq(std::nullopt);
    EXPECT_THAT(
        Antwort::ausJson(voll).value(),
        FieldsAre(
            "mobilsteg", 1080, "erlaubt", FieldsAre(keinGast, Optional(FieldsAre("a1", "Mac"))),
            Optional(FieldsAre(
                ElementsAre(FieldsAre("wifi", true, 42, 12.5), FieldsAre("cellular", false, -100, 0)), false,
                true, "Tunnel", ElementsAre(FieldsAre("kabel:Mac", INT64_MAX, INT64_MIN)), 3, 2))));
    const std::string knapp = R"({"app":"","proxy_port":0,"kabel":{})";
    for (const auto* rest : {"}", R"(,"status":null})"})
        EXPECT_THAT(Antwort::ausJson(knapp + rest).value(),
                    FieldsAre("", 0, Eq(std::nullopt), FieldsAre(keinGast, keinGast), Eq(std::nullopt)));
    EXPECT_THAT(Antwort::ausJson(knapp + R"(,"status":{}})")->status,
                Optional(FieldsAre(IsEmpty(), false, false, "", IsEmpty(), 0, 0)));
}

TEST(Antwort, ganzeZahlenWieSieGeschriebenSind) {
    const auto port = [](const std::string& zahl) {
        const auto a = Antwort::ausJson(R"({"app":"","kabel":{},"proxy_port":)" + zahl + "}");
        return a ? std::to_string(a->proxy_port) : "-";
    };
    for (const auto* zahl : {"1080.0", "1.08e+3", "108000E-2", "0.00108e6"})
        EXPECT_EQ(port(zahl), "1080") << zahl;
    EXPECT_EQ(port("-0.0e-99") + port("1e18"), "01000000000000000000");
    // No double is one of these.
    for (const std::string zahl : {"9007199254740993", "9223372036854775807", "-9223372036854775808"})
        EXPECT_EQ(port(zahl + ".0"), zahl);
    for (const auto* zahl : {"9223372036854775808", "9223372036854775808.0", "-9223372036854775809", "1080.5",
                             "1.00000000000000000001", "1e-1", "1e19", "1e400", "\"1080\"", "true"})
        EXPECT_EQ(port(zahl), "-") << zahl;
}

TEST(Antwort, einFalschesFeldVerdirbtDasGanze) {
    const auto gilt = [](const std::string& aenderung) {
        const auto pfeil = aenderung.find("->");
        std::string dokument = voll;
        dokument.replace(dokument.find(aenderung.substr(0, pfeil)), pfeil, aenderung.substr(pfeil + 2));
        return Antwort::ausJson(dokument).has_value();
    };
    for (const auto* a :
         {R"("mobilsteg"->null)", "mobilsteg->\xFF", R"("erlaubt"->1)", R"("Mac","neu"->null,"neu")",
          R"("anfrage":null->"anfrage":{})", R"("healthy":true->"healthy":1)", "42->true",
          R"("rtt_ms":42,->)", R"("alles":false->"alles":0)", R"([{"IP"->[null,{"IP")",
          "9223372036854775807->1.5", R"("guests":[->"guests":{},"y":[)", "2.0}}->2.0}"})
        EXPECT_FALSE(gilt(a)) << a;
    for (const auto* a : {R"("erlaubt"->null)", "12.5->null", R"("guests":[->"guests":null,"y":[)"})
        EXPECT_TRUE(gilt(a)) << a;
    for (const std::size_t tiefe : {510U, 511U})
        EXPECT_EQ(gilt("{\"x\":null}->" + std::string(tiefe, '[') + std::string(tiefe, ']')), tiefe == 510);
    for (const auto* muell : {"", "null", "[]"})
        EXPECT_FALSE(Antwort::ausJson(muell)) << muell;
}

struct HandyTest : Test {
    Gegenstelle http;
    Handy handy{http, "https://austritt.example/"};
};

TEST_F(HandyTest, glaubtNurErfolgUndNurDerApp) {
    const auto gilt = [&](int status, const std::string& app) {
        http.antwort = HttpErgebnis{status, R"({"app":")" + app + R"(","proxy_port":1080,"kabel":{}})"};
        return handy.anmelden("", "", {}).has_value();
    };
    EXPECT_TRUE(gilt(200, "mobilsteg") && gilt(299, "mobilsteg"));
    EXPECT_FALSE(gilt(199, "mobilsteg") || gilt(300, "mobilsteg") || gilt(200, "Mobilsteg"));
    http.antwort.reset();
    EXPECT_FALSE(handy.anmelden("", "", {}));
}

TEST_F(HandyTest, meldetSichMitKennungNamenUndServernAn) {
    handy.gastPort = 18081;
    (void)handy.anmelden("1f-2", "Annas „Mac“\xFF", {"vpn.example", "10.0.0.1"});
    EXPECT_THAT(http.gesendet.back(),
                FieldsAre(HttpAnfrage::Weg::direkt, "POST", "http://127.0.0.1:18081/api/kabel",
                          ElementsAre(Pair("Content-Type", "application/json")),
                          R"({"id":"1f-2","name":"Annas „Mac“�","vpn":["vpn.example","10.0.0.1"]})"));
}

TEST_F(HandyTest, laedtBerichteUnveraendertHoch) {
    const std::string daten("zeile\n\0\xFF", 8);
    http.antwort = HttpErgebnis{204, ""};
    EXPECT_TRUE(handy.bericht("azAZ09 log.ä-_~/:@[`{", daten));
    EXPECT_THAT(
        http.gesendet.back(),
        FieldsAre(HttpAnfrage::Weg::direkt, "POST",
                  "http://127.0.0.1:8080/api/bericht?name=azAZ09%20log%2E%C3%A4%2D%5F%7E%2F%3A%40%5B%60%7B",
                  ElementsAre(Pair("Content-Type", "text/plain")), daten));
    http.antwort->status = 302;
    EXPECT_FALSE(handy.bericht("x", ""));
}

TEST_F(HandyTest, nimmtNurWasEineAdresseSeinKann) {
    const std::string lang(45, '1');
    for (const auto& [koerper, soll] :
         Faelle{{"203.0.113.7\n", "203.0.113.7"},
                {"\u00A0\n\u2028à\u00A0à\u3000\v", "à\u00A0à"}, // à ends like U+00A0
                {lang + "\n", lang},
                {lang + "1", "-"},
                {"10.0.0.1\n10.0.0.2", "-"},
                {"1\x7F"
                 "1",
                 "-"},
                {" \n", "-"},
                {"a\xFF", "a\uFFFD"}}) {
        http.antwort = HttpErgebnis{200, koerper};
        EXPECT_EQ(handy.austrittsIP().value_or("-"), soll) << koerper;
    }
    EXPECT_THAT(http.gesendet.back(),
                FieldsAre(HttpAnfrage::Weg::durchProxy, "GET", "https://austritt.example/", IsEmpty(), ""));
}

} // namespace
