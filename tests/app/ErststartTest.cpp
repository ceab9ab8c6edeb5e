#include "app/Delegate.hpp"
#include "plattform/Text.hpp"
#include "tests/hilfe/KabelWelt.hpp"

#include <gmock/gmock.h>

#include <future>

using namespace mobilsteg;

namespace {

using Werte = std::map<std::string, SpeicherEinstellungen::Wert>;

TEST(Erststart, fragtWasNochNichtBeantwortetIst) {
    const std::string profil = "Nutzt du unterwegs einen Firmen-VPN?";
    const std::string passwort = "Volltunnel: gleich fragt macOS nach deinem Administrator-Passwort";
    const std::string bordlotse = "Willkommen beim Mobilsteg Bordlotse · VPN";
    const Werte erklaert = {{"b2b.erklaert", true}, {"volltunnel.erklaert", true}};
    const Werte alles = {
        {"profil", std::string("vpn")}, {"volltunnel", true},         {"vpnDurch", true}, {"nurVPN", true},
        {"b2b.erklaert", true},         {"volltunnel.erklaert", true}};
    // Edition and settings before, the questions and their answers, and what must stand then beside the id
    // and what stood before.
    const std::tuple<const char*, Werte, std::vector<std::string>, std::vector<int>, Werte> faelle[] = {
        {"bordlotse", {}, {profil}, {1}, {{"profil", std::string("reise")}}},
        {"bordlotse", {}, {profil, passwort, bordlotse}, {0, 0, 0}, alles},
        {"bordlotse", {{"volltunnel", false}}, {profil, bordlotse}, {0, 0}, alles},
        // A closed question stores nothing, and the second start asks again.
        {"bordlotse", {}, {profil, profil}, {-1, 1}, {{"profil", std::string("reise")}}},
        {"bordlotse", {{"profil", std::string("vpn")}}, {bordlotse, bordlotse}, {-1, 0}, erklaert},
        {"vpnlotse", {}, {"Willkommen beim Mobilsteg VPN-Lotse"}, {0}, erklaert}};
    for (auto [ausgabe, soll, fragen, antworten, neue] : faelle) {
        KabelWelt w;
        w.buendelkennung = std::string("de.mobilsteg.") + ausgabe;
        w.einstellungen.werte = soll;
        w.antworten = antworten;
        w.baue();
        for (int start = 0; start < 2; ++start) // the second one asks nothing more
            w.haupt.sync([&] { erststart(*w.kabel, w.einstellungen, w); });
        EXPECT_EQ(w.fragen, fragen);
        soll.merge(neue);
        w.einstellungen.werte.erase("kabel.id");
        EXPECT_EQ(w.einstellungen.werte, soll);
        EXPECT_THAT(w.aufrufe, testing::IsEmpty());
    }
}

TEST(Delegate, sagtAmEndeWasEsZuruecknahm) {
    const std::tuple<bool, const char*, const char*> faelle[] = {
        {false, "", "Beendet. Am Mac war nichts zurückzunehmen."},
        {true, "", "Beendet. System-Proxy entfernt von Wi-Fi"},
        {true, "nein",
         "Beendet. System-Proxy nicht entfernt von Wi-Fi: nein · "
         "System-Proxy an „Wi-Fi“ steht noch: mit --aufraeumen noch einmal versuchen"}};
    for (const auto& [faehrt, fehler, soll] : faelle) {
        KabelWelt w;
        if (faehrt)
            w.fahreLos();
        else
            w.starteBis(1);
        w.networksetupFehler = fehler;
        Kabel::setzeGemeinsames(w.kabel.get());
        Delegate delegate(w.einstellungen, w, {});
        delegate.applicationWillTerminate();
        EXPECT_EQ(delegate.schlusswort(), soll);
    }
}

/// What holds the queue ends only with the process.
TEST(Delegate, beendetDasProgrammNebenEinerArbeitDieNieEndet) {
    KabelWelt w;
    w.fahreLos();
    Kabel::setzeGemeinsames(w.kabel.get());
    std::promise<void> prozessende;
    static std::promise<void> nie;
    std::string gesehen;
    const auto beende = [&](int status) {
        gesehen = std::to_string(status) + (w.socksAn["Wi-Fi"] ? " an " : " aus ") +
                  w.ordner.lies("/heim/Library/Application Support/Mobilsteg Bordlotse/stand.json") +
                  verbunden(w.protokoll(), "|");
        prozessende.set_value();
        nie.get_future().wait();
    };
    Delegate delegate(w.einstellungen, w, beende, {.beginn = Dauer{}});
    w.q->async([&] { prozessende.get_future().wait(); });
    delegate.applicationWillTerminate();
    EXPECT_THAT(
        gesehen,
        testing::AllOf(
            testing::StartsWith("0 aus "),
            testing::HasSubstr(
                "\"phase\": \"Beendet\",\n  \"proxy_automatisch\": true,\n  \"proxy_gesetzt\": false"),
            testing::EndsWith("schalte nur den System-Proxy aus|"
                              "System-Proxy entfernt von Wi-Fi|Beendet")));
}

} // namespace
