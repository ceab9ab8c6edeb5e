#include "tests/hilfe/KabelWelt.hpp"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using namespace mobilsteg;
using nlohmann::json;

namespace {

TEST(Stand, sagtWasDasHandySagtUndBleibtJson) {
    Standangaben angaben;
    angaben.name = "Mac";
    angaben.phase = Phase::proxyFehler("\"Zitat\"\n\x01 kaputt: \xC3( \xFF");
    const auto schluessel = json::parse(standDokument(angaben, std::nullopt)).size();
    EXPECT_EQ(schluessel, 15U);

    Antwort antwort;
    EXPECT_EQ(json::parse(standDokument(angaben, antwort)).size(), schluessel + 3);
    antwort.kabel.gast = KabelGast{"1", "Annas Mac"};
    antwort.status.emplace();
    antwort.status->alles = true;
    antwort.status->paths = {{"wifi", true, 42.7, 30}};
    antwort.status->guests = {{"kabel:Mac", 1, 2}, {"kabel:Mac", 10, 0}, {"10.0.0.9", 99, 99}};
    EXPECT_EQ(standDokument(angaben, antwort), R"({
  "adb": "",
  "app": "",
  "austritt": "",
  "dienst": "",
  "faehrt": false,
  "gleise": [
    {
      "gesund": true,
      "name": "wifi",
      "rtt_ms": 42.7,
      "ruhe_ms": 30.0
    }
  ],
  "handy": "",
  "id": "",
  "kabel_anfrage": "",
  "kabel_bytes": 13,
  "kabel_gast": "Annas Mac",
  "klasse": 1,
  "name": "Mac",
  "notlage": false,
  "notlage_grund": "",
  "nur_vpn": false,
  "phase": "\"Zitat\"\n\u0001 kaputt: )"
                                               "\uFFFD( \uFFFD"
                                               R"(",
  "proxy_automatisch": false,
  "proxy_gesetzt": false,
  "volltunnel": false,
  "vpn_durch": false,
  "zeit": "1970-01-01T00:00:00Z",
  "zustand": ""
})");
}

TEST(Stand, folgtDerFahrtInDateiUndDienst) {
    constexpr const char* datei = "/heim/Library/Application Support/Mobilsteg Bordlotse/stand.json";
    KabelWelt w;
    const auto erwarte = [&](const json& soll) {
        const auto dokument = json::parse(w.standdienst.dokument);
        for (const auto& [name, wert] : soll.items())
            EXPECT_EQ(dokument.value(name, json()), wert) << name;
        EXPECT_EQ(w.ordner.lies(datei), w.standdienst.dokument);
    };
    w.starteBis(1);
    EXPECT_EQ(w.standdienst.starts, 1);
    erwarte({{"phase", "Kein Handy am Kabel — USB-Debugging an?"}, {"zeit", "2025-03-14T08:41:07Z"}});
    w.handys = {Modellhandy{.status = R"({"alles":true})"}};
    w.laufeBisSekunde(4);
    erwarte({{"faehrt", true},
             {"austritt", "203.0.113.7"},
             {"handy", "R5CT1"},
             {"dienst", "Wi-Fi"},
             {"proxy_gesetzt", true},
             {"klasse", 1}});
    w.handys.clear();
    w.laufeBisSekunde(7); // an answer counts only in its own tick
    erwarte({{"faehrt", false}, {"handy", ""}, {"proxy_gesetzt", false}, {"klasse", nullptr}});
}

TEST(Stand, ohneSchreibrechtBedientDerDienstTrotzdem) {
    KabelWelt w;
    w.ordner.lege("/heim/Library", "hier ist kein Ordner");
    w.starteBis(1);
    EXPECT_EQ(json::parse(w.standdienst.dokument)["faehrt"], false);
}

} // namespace
