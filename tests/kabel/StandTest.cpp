#include "tests/hilfe/KabelWelt.hpp"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <set>

using namespace mobilsteg;
using nlohmann::json;
using testing::HasSubstr;

namespace {

const std::set<std::string> grundschluessel = {
    "app",           "zeit",       "phase",     "faehrt",  "austritt",          "handy",  "id", "name",
    "proxy_gesetzt", "volltunnel", "vpn_durch", "nur_vpn", "proxy_automatisch", "dienst", "adb"};

std::set<std::string> schluessel(const json& dokument) {
    std::set<std::string> namen;
    for (const auto& [name, wert] : dokument.items())
        namen.insert(name);
    return namen;
}

/// Whether these stand there so, whatever else does.
void erwarte(const json& dokument, const json& soll) {
    for (const auto& [name, wert] : soll.items())
        EXPECT_EQ(dokument.value(name, json()), wert) << name;
}

constexpr const char* datei = "/heim/Library/Application Support/Mobilsteg Bordlotse/stand.json";

TEST(Stand, folgtDerFahrtInDateiUndDienst) {
    KabelWelt w;
    w.starteBis(1);
    EXPECT_EQ(w.standdienst.starts, 1);
    json dokument = json::parse(w.standdienst.dokument);
    EXPECT_EQ(schluessel(dokument), grundschluessel);
    erwarte(dokument,
            {{"phase", "Kein Handy am Kabel — USB-Debugging an?"}, {"zeit", "2025-03-14T08:41:07Z"}});

    w.handys = {Modellhandy{}};
    w.laufeBisSekunde(4);
    dokument = json::parse(w.standdienst.dokument);
    auto mehr = grundschluessel;
    mehr.merge(std::set<std::string>{"zustand", "kabel_gast", "kabel_anfrage"});
    EXPECT_EQ(schluessel(dokument), mehr);
    erwarte(dokument, {{"faehrt", true},
                       {"austritt", "203.0.113.7"},
                       {"handy", "R5CT1"},
                       {"dienst", "Wi-Fi"},
                       {"proxy_gesetzt", true}});
    EXPECT_EQ(w.ordner.lies(datei), w.standdienst.dokument);

    w.handys.clear();
    w.laufeBisSekunde(7);
    dokument = json::parse(w.standdienst.dokument);
    EXPECT_EQ(schluessel(dokument), grundschluessel) << "an answer counts only in its own tick";
    erwarte(dokument, {{"faehrt", false}, {"handy", ""}, {"proxy_gesetzt", false}});
}

TEST(Stand, nimmtDenStatusDesHandysAuf) {
    HandyWelt w;
    w.handys[0].status = R"({"alles":true,"notlage":true,"notlage_grund":"Tunnel","paths":[
        {"iface":"wifi","healthy":true,"rtt_ms":42.7,"rtt_ruhe_ms":30},{"iface":"eth","healthy":false,"rtt_ms":7}],
        "guests":[{"IP":"kabel:Testmac","BytesUp":1,"BytesDown":2},{"IP":"kabel:Testmac","BytesUp":10,"BytesDown":0},
        {"IP":"10.0.0.9","BytesUp":99,"BytesDown":99}]})";
    w.starteBis(1);
    erwarte(json::parse(w.standdienst.dokument), json::parse(R"({
        "klasse":1,"notlage":true,"notlage_grund":"Tunnel","kabel_bytes":13,
        "gleise":[{"name":"wifi","gesund":true,"rtt_ms":42.7,"ruhe_ms":30.0},
                  {"name":"eth","gesund":false,"rtt_ms":7.0,"ruhe_ms":0.0}]})"));
    w.handys[0].status = "{}";
    w.laufeBisSekunde(4);
    erwarte(json::parse(w.standdienst.dokument),
            json::parse(R"({"klasse":2,"notlage":false,"notlage_grund":"","gleise":[],"kabel_bytes":0})"));
}

TEST(Stand, bleibtGueltigesJsonWasAuchDrinSteht) {
    Standangaben angaben;
    angaben.phase = Phase::proxyFehler("\"Zitat\"\n\x01 kaputt: \xC3( \xFF");
    const auto dokument = standDokument(angaben, std::nullopt);
    EXPECT_EQ(json::parse(dokument)["phase"], "\"Zitat\"\n\x01 kaputt: \uFFFD( \uFFFD");
    EXPECT_LT(dokument.find("\"adb\""), dokument.find("\"zeit\"")) << "sorted";
    EXPECT_THAT(dokument, HasSubstr("\n  \"app\"")) << "indented";
}

TEST(Stand, ohneSchreibrechtBedientDerDienstTrotzdem) {
    KabelWelt w;
    w.ordner.lege("/heim/Library", "hier ist kein Ordner");
    w.starteBis(1);
    EXPECT_EQ(schluessel(json::parse(w.standdienst.dokument)), grundschluessel);
}

} // namespace
