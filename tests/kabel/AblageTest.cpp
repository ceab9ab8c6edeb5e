// What the controller reads and writes: the settings and the status document.

#include "kabel/Stand.hpp"
#include "tests/hilfe/KabelWelt.hpp"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

using namespace mobilsteg;
using nlohmann::json;

namespace {

using Werte = std::map<std::string, SpeicherEinstellungen::Wert>;

TEST(Einstellungen, vorgabenFolgenAusgabeUndProfil) {
    const Werte vpnOhneTunnel = {{"profil", std::string("vpn")}, {"volltunnel", false}};
    const std::tuple<const char*, Werte, const char*, Schalterstellungen> faelle[] = {
        {"bordlotse", {}, "reise", {true, false, false, false, false}},
        {"vpnlotse", {}, "vpn", {true, false, true, true, true}},
        {"bordlotse", vpnOhneTunnel, "vpn", {true, false, false, true, true}},
    };
    for (const auto& [ausgabe, gespeichert, profil, schalter] : faelle) {
        KabelWelt w;
        w.buendelkennung = ausgabe;
        w.einstellungen.werte = gespeichert;
        w.baue();
        EXPECT_EQ(w.zustand().profil, profil);
        EXPECT_EQ(static_cast<const Schalterstellungen&>(w.zustand()), schalter) << ausgabe << profil;
        EXPECT_FALSE(w.zustand().browserHinweisWeg);
        EXPECT_EQ(w.einstellungen.werte.size(), gespeichert.size() + 1) << "only the id is stored";
    }
}

TEST(Einstellungen, aenderungenWerdenSofortGespeichertUndGezeigt) {
    KabelWelt w;
    const std::string id = w.baue().id();
    EXPECT_THAT(id, testing::MatchesRegex("[0-9a-f]{8}(-[0-9a-f]{4}){4}[0-9a-f]{8}"));
    w.haupt.sync([&] {
        w.kabel->setzeExperte(true);
        w.kabel->setzeProxyAutomatisch(false);
        w.kabel->setzeProfil("vpn");
        w.kabel->setzeBrowserHinweisWeg(true);
        EXPECT_EQ(w.einstellungen.werte, (Werte{{"kabel.id", id},
                                                {"experte", true},
                                                {"proxy.automatisch", false},
                                                {"profil", std::string("vpn")},
                                                {"browser.hinweisWeg", true}}));
    });
    for (int start = 0; start < 2; ++start) { // the next start reads what is stored
        const Zustand& z = w.zustand();
        EXPECT_TRUE(z.experte && !z.proxyAutomatisch && z.profilIstVpn() && z.browserHinweisWeg);
        EXPECT_EQ(z.volltunnelAn, start == 1) << "the profile changes no switch while the program runs";
        EXPECT_EQ(w.baue().id(), id);
    }
}

TEST(Einstellungen, profilUebernehmenNimmtWasGespeichertIst) {
    KabelWelt w;
    w.buendelkennung = "de.mobilsteg.vpnlotse";
    w.baue();
    const auto uebernimm = [&] {
        w.haupt.sync([&] { w.kabel->profilUebernehmen(); });
        return static_cast<const Schalterstellungen&>(w.zustand());
    };
    EXPECT_EQ(uebernimm(), Schalterstellungen{}) << "nothing stored is off";
    EXPECT_EQ(w.einstellungen.text("profil"), "vpn") << "the current one stays, and is stored";
    EXPECT_EQ(w.einstellungen.flagge("nurVPN"), false);
    w.einstellungen.werte = {{"profil", std::string("reise")}, {"vpnDurch", true}};
    EXPECT_EQ(uebernimm(), (Schalterstellungen{.vpnDurch = true}));
    EXPECT_EQ(w.zustand().profil, "reise");
}

TEST(Stand, erzaehltDieFahrtInDateiUndDienst) {
    KabelWelt w;
    w.buendelkennung = "de.mobilsteg.vpnlotse";
    w.einstellungen.werte = {{"kabel.id", std::string("ID")}, {"vpnDurch", false}};
    w.handys = {Modellhandy{}};
    w.handys[0].status =
        R"({"alles":true,"notlage":true,"notlage_grund":"Akku","paths":[{"iface":"wifi","healthy":true,
            "rtt_ms":42.7,"rtt_ruhe_ms":30}],"guests":[{"IP":"kabel:Testmac","BytesUp":1,"BytesDown":2}]})";
    w.starteBis(4);
    EXPECT_EQ(w.standdienst.starts, 1);
    json soll = json::parse(
        R"({"app":"mobilsteg-vpnlotse","zeit":"2025-03-14T08:41:10Z","phase":"Fährt mit","faehrt":true,
            "austritt":"203.0.113.7","handy":"R5CT1","id":"ID","name":"Testmac","proxy_gesetzt":true,
            "volltunnel":true,"vpn_durch":false,"nur_vpn":true,"proxy_automatisch":true,"dienst":"Wi-Fi",
            "zustand":"erlaubt","kabel_gast":"","kabel_anfrage":"","klasse":1,"notlage":true,
            "notlage_grund":"Akku","kabel_bytes":3,
            "gleise":[{"name":"wifi","gesund":true,"rtt_ms":42.7,"ruhe_ms":30.0}]})");
    soll["adb"] = w.ordner.pfad() + "/wurzel/opt/homebrew/bin/adb";
    EXPECT_EQ(w.standdienst.dokument, soll.dump(2));
    EXPECT_EQ(w.ordner.lies("/heim/Library/Application Support/Mobilsteg Bordlotse/stand.json"),
              w.standdienst.dokument);
    w.handys.clear();
    w.laufeBisSekunde(7);
    soll = json::parse(w.standdienst.dokument);
    EXPECT_TRUE(soll["faehrt"] == false && soll["handy"] == "" && soll["proxy_gesetzt"] == false);
    EXPECT_EQ(soll.size(), 15U) << "an answer counts only in its own tick";
}

TEST(Stand, wirdEineZeileUndAmEndeBeendet) {
    const Ordner ordner;
    const std::string ganzes =
        R"({"phase":"Fährt\nmit","faehrt":true,"klasse":2,"adb":"/x","kabel_bytes":12400000,"austritt":"1.1.1.1",
            "gleise":[{"name":"wifi","gesund":true,"rtt_ms":42.9},{"name":"cellular","gesund":false,"rtt_ms":1},
                      {"name":"x","gesund":true},{"gesund":true},{"name":1},7]})";
    const std::string rest =
        R"("austritt":"","faehrt":false,"phase":"Beendet","proxy_gesetzt":true,"volltunnel":false})";
    const std::string tief =
        R"({"phase":"a","x":)" + std::string(200'000, '[') + std::string(200'000, ']') + "}";
    for (const auto& [dokument, zeile, danach] : std::vector<std::array<std::string, 3>>{
             {ganzes, "Fährt mit · 2. Klasse · WLAN 42 ms · Mobilfunk weg · x weg · 12,4 MB",
              R"({"adb":"/x",)" + rest},
             {R"({"phase":1,"kabel_bytes":1})", "", "{" + rest},
             {R"({"phase":"a","kabel_bytes":""})", "a", "{" + rest},
             {R"({"faehrt":true})", "", R"({"faehrt":true})"},
             {tief, "a", R"({"x":[[[[[[[]]]]]]],)" + rest}, // all of it would exhaust the stack
             {"[", "", "["}}) {
        EXPECT_EQ(standzeile(dokument), zeile);
        beendeStand(ordner.lege("/stand.json", dokument), true);
        EXPECT_EQ(json::parse(ordner.lies("/stand.json"), nullptr, false).dump(),
                  json::parse(danach, nullptr, false).dump());
    }
}

} // namespace
