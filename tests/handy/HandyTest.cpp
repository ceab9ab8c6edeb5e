#include "handy/Handy.hpp"

#include "tests/hilfe/Gegenstelle.hpp"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using namespace mobilsteg;
using nlohmann::json;

namespace {

class HandyTest : public testing::Test {
protected:
    /// The last request's first lines.
    [[nodiscard]] std::string zeile() const {
        const HttpAnfrage& anfrage = http.gesendet.back();
        std::string z = anfrage.weg == HttpAnfrage::Weg::direkt ? "direkt " : "durchProxy ";
        z += anfrage.methode + " " + anfrage.url;
        for (const auto& [name, wert] : anfrage.kopf)
            z += " " + name + ": " + wert;
        return z;
    }

    Gegenstelle http;
    Handy handy{http, "https://austritt.example/"};
};

TEST_F(HandyTest, glaubtNurErfolgUndNurDerApp) {
    const std::string gut = R"({"app":"mobilsteg","proxy_port":1080,"kabel":{}})";
    const std::string fremd = R"({"app":"Mobilsteg","proxy_port":1080,"kabel":{}})";
    for (const auto& [antwort, gilt] : std::vector<std::pair<HttpErgebnis, bool>>{{{200, gut}, true},
                                                                                  {{299, gut}, true},
                                                                                  {{199, gut}, false},
                                                                                  {{300, gut}, false},
                                                                                  {{200, fremd}, false}}) {
        http.antwort = antwort;
        EXPECT_EQ(handy.anmelden("a", "b", {}).has_value(), gilt) << antwort.status << antwort.koerper;
    }
    http.antwort.reset();
    EXPECT_FALSE(handy.anmelden("a", "b", {}));
}

TEST_F(HandyTest, meldetSichMitKennungNamenUndServernAn) {
    handy.gastPort = 18081;
    (void)handy.anmelden("1f-2", "Annas „Mac“\xFF", {"vpn.example", "10.0.0.1"});
    EXPECT_EQ(zeile(), "direkt POST http://127.0.0.1:18081/api/kabel Content-Type: application/json");
    EXPECT_EQ(json::parse(http.gesendet.back().koerper),
              (json{{"id", "1f-2"}, {"name", "Annas „Mac“\uFFFD"}, {"vpn", {"vpn.example", "10.0.0.1"}}}));
    (void)handy.anmelden("1", "m", {});
    EXPECT_EQ(json::parse(http.gesendet.back().koerper)["vpn"], json::array());
}

TEST_F(HandyTest, laedtBerichteUnveraendertHoch) {
    const std::string daten("zeile\n\0\xFF", 8);
    http.antwort = HttpErgebnis{204, ""};
    EXPECT_TRUE(handy.bericht("mac log.ä-_~txt", daten));
    EXPECT_EQ(zeile(), "direkt POST http://127.0.0.1:8080/api/bericht?name=mac%20log%2E%C3%A4%2D%5F%7Etxt "
                       "Content-Type: text/plain");
    EXPECT_EQ(http.gesendet.back().koerper, daten);
    http.antwort->status = 302;
    EXPECT_FALSE(handy.bericht("x", ""));
}

TEST_F(HandyTest, nimmtNurWasEineAdresseSeinKann) {
    const std::string lang(45, '1');
    for (const auto& [koerper, soll] :
         std::map<std::string, std::string>{{"203.0.113.7\n", "203.0.113.7"},
                                            {"\r\n\t 2001:db8::1 \u00A0", "2001:db8::1"},
                                            {lang + "\n", lang},
                                            {lang + "1", "-"},
                                            {"10.0.0.1\n10.0.0.2", "-"},
                                            {" \n", "-"},
                                            {"a\xFF", "a\uFFFD"}}) {
        http.antwort = HttpErgebnis{200, koerper};
        EXPECT_EQ(handy.austrittsIP().value_or("-"), soll) << koerper;
    }
    EXPECT_EQ(zeile(), "durchProxy GET https://austritt.example/");
    http.antwort->status = 502;
    EXPECT_EQ(handy.austrittsIP(), std::nullopt);
}

} // namespace
