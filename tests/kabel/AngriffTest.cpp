// What others on this Mac and on the cable may try: to pass as the phone, to be heard, to be shown.

#include "plattform/Text.hpp"
#include "tests/hilfe/KabelWelt.hpp"

#include <gmock/gmock.h>

using namespace mobilsteg;
using namespace testing;

namespace {

TEST(Angriff, einBewiesenerWegBleibtNichtVonSelbstBewiesen) {
    const Modellhandy fremdes{.serial = "192.0.2.5:5555", .austritt = "198.51.100.66"};
    const Modellhandy ohneNetz{.serial = "ANDERES", .austritt = std::nullopt};
    using enum Phase::Art;
    // What happens, and at the next tick the phase, the exit address and the number of proofs.
    const std::tuple<const char*, std::function<void(KabelWelt&)>, Phase::Art, const char*, std::size_t>
        faelle[] = {
            {"forward verschwunden", [](auto& w) { w.forwards.erase(1080); }, faehrt, "203.0.113.7", 2},
            {"forward umgeleitet", [](auto& w) { w.forwards[1080] = "X"; }, faehrt, "203.0.113.7", 2},
            {"Proxy des Handys kaputt", [](auto& w) { w.handys[0].gruesst = false; }, proxyFehler, "", 1},
            {"fremder SOCKS",
             [](auto& w) {
                 w.forwards.erase(1080);
                 w.belegtePorts = {1080};
                 w.fremdesHandy = true;
             },
             weitergabeAus, "", 1},
            {"anderes Handy ohne Netz", [&](auto& w) { w.handys = {ohneNetz}; }, proxyFehler, "", 1},
            {"anderes Handy übers Netz", [&](auto& w) { (w.handys = {fremdes})[0].amKabel = false; }, faehrt,
             "198.51.100.66", 2},
            {"Netzgerät neben dem am Kabel",
             [&](auto& w) {
                 w.handys.insert(w.handys.begin(), fremdes);
                 w.handys[0].amKabel = false;
             },
             faehrt, "203.0.113.7", 1},
        };
    for (const auto& [name, geschieht, phase, austritt, beweise] : faelle) {
        SCOPED_TRACE(name);
        KabelWelt w;
        w.fahreLos();
        geschieht(w);
        EXPECT_EQ(w.phaseBei(3.5).art, phase);
        EXPECT_EQ(w.zustand().austritt, austritt);
        EXPECT_EQ(w.socksAn["Wi-Fi"], phase == faehrt);
        EXPECT_THAT(w.protokoll(), Contains(StartsWith("Beweis: draußen als ")).Times(beweise));
        EXPECT_THAT(
            w.protokoll(),
            Contains("System-Proxy entfernt von Wi-Fi").Times(beweise == 1 && phase == faehrt ? 0 : 1));
    }
}

TEST(Angriff, wasVonAussenKommtBleibtKurzUndInEinerZeile) {
    const std::string boese = "a\u009B31m\u202E\n01.01.2030 00:00:00  Fährt mit" + std::string(5000, 'x');
    HandyWelt w;
    w.networksetupFehler = boese;
    w.handys[0].modell = "SM\u009B";
    std::string pfade =
        R"({"iface":"a\u009b\n)" + std::string(5000, 'x') + R"(","healthy":false,"rtt_ms":0})";
    for (int i = 0; i < 20; ++i)
        pfade += R"(,{"iface":"wifi","healthy":false,"rtt_ms":0})";
    w.handys[0].status = R"({"paths":[)" + pfade + "]}";
    w.starteBis(1);
    const auto& z = w.zustand();
    EXPECT_THAT(z.phase.text(), StartsWith("System-Proxy nicht gesetzt: a 31m  01.01.2030"));
    EXPECT_EQ(z.gleise.size(), 16U);
    EXPECT_THAT(z.gleise[0], StartsWith("a  xxx"));
    EXPECT_THAT(w.protokoll(), Contains(StartsWith("System-Proxy nicht gesetzt: a 31m  01.01.2030")));
    EXPECT_THAT(w.protokoll(), Each(Not(StartsWith("x"))));
    std::string alles = z.phase.text() + z.handy + verbunden(z.gleise, "") + verbunden(w.protokoll(), "");
    EXPECT_LT(alles.size() + w.standdienst.dokument.size(), 5000U);
    alles += w.standdienst.dokument;
    EXPECT_TRUE(alles.find("\u009B") == alles.npos && alles.find("\u202E") == alles.npos);
}

TEST(Angriff, nichtsUnsicheresLaeuftMitAllenRechten) {
    namespace fs = std::filesystem;
    const std::string logs = "/heim/Library/Logs", anwendung = "/heim/Library/Application Support/";
    const auto verknuepft = [](const std::string& pfad) {
        return [pfad](KabelWelt& w) {
            fs::create_directories(fs::path(w.ordner.pfad() + pfad).parent_path());
            fs::create_symlink("/etc/nirgends", w.ordner.pfad() + pfad);
        };
    };
    const auto helfer = [](const KabelWelt& w) {
        return w.ordner.pfad() + "/Resources/mobilsteg-volltunnel";
    };
    const std::pair<std::function<void(KabelWelt&)>, std::string> faelle[] = {
        {[](auto& w) { w.dienste = "(1) Annas 'WLAN'\n(Hardware Port: Wi-Fi, Device: en0)\n"; },
         "Namen mit Apostroph kann der Volltunnel nicht nehmen: Annas 'WLAN'"},
        {verknuepft(logs + "/MobilstegVolltunnel.log"), "Eine Verknüpfung nimmt der Volltunnel nicht: "},
        {verknuepft(anwendung + "Mobilsteg Bordlotse/volltunnel.stopp.laeuft"), "Eine Verknüpfung nimmt"},
        {verknuepft(anwendung + "Mobilsteg Bordlotse/volltunnel.stopp.vpns.json"), "Eine Verknüpfung nimmt"},
        {[&](auto& w) { fs::permissions(helfer(w), fs::perms::group_write, fs::perm_options::add); },
         "Den Helfer mobilsteg-volltunnel könnten andere verändern"},
        {[](auto& w) { w.tunnel.passwort = std::chrono::seconds(1); },
         "Der Helfer mobilsteg-volltunnel wurde während des Passwortdialogs ausgetauscht"},
    };
    for (const auto& [geschieht, grund] : faelle) {
        SCOPED_TRACE(grund);
        HandyWelt w;
        w.einstellungen.werte = {{"volltunnel.erklaert", true}, {"volltunnel", true}};
        geschieht(w);
        w.starteBis(0.5);
        if (w.tunnel.passwort > Dauer{})
            w.ordner.lege("/Resources/mobilsteg-volltunnel", "#!b", true);
        w.laufeBisSekunde(4);
        EXPECT_THAT(w.protokoll(), Contains(StartsWith("Volltunnel nicht gestartet: " + grund)));
        EXPECT_EQ(w.skripte.size(), w.tunnel.passwort > Dauer{} ? 1U : 0U);
        EXPECT_EQ(w.helfer, 0);
    }
}

} // namespace
