#include "app/Erststart.hpp"

#include "tests/hilfe/KabelWelt.hpp"

#include <gmock/gmock.h>

using namespace mobilsteg;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr const char* profil = "Nutzt du unterwegs einen Firmen-VPN?";
constexpr const char* erklaerung = "Volltunnel: gleich fragt macOS nach deinem Administrator-Passwort";
using Werte = std::map<std::string, SpeicherEinstellungen::Wert>;

struct Fall {
    const char* name;
    const char* kennung;
    Werte vorher;
    std::vector<int> antworten;
    std::vector<std::string> fragen;
    Werte nachher; ///< what must stand then, among others
};

TEST(Erststart, fragtWasNochNichtBeantwortetIst) {
    const Fall faelle[] = {
        {"nein", "de.mobilsteg.bordlotse", {}, {1}, {profil}, {{"profil", std::string("reise")}}},
        {"anders geschlossen",
         "de.mobilsteg.bordlotse",
         {},
         {-1},
         {profil},
         {{"profil", std::string("reise")}}},
        {"ja",
         "de.mobilsteg.bordlotse",
         {},
         {0, 0, 0},
         {profil, erklaerung, "Willkommen beim Mobilsteg Bordlotse · VPN"},
         {{"profil", std::string("vpn")},
          {"volltunnel", true},
          {"vpnDurch", true},
          {"nurVPN", true},
          {"b2b.erklaert", true},
          {"volltunnel.erklaert", true}}},
        {"ja, aber Stehendes bleibt",
         "de.mobilsteg.bordlotse",
         {{"volltunnel", false}},
         {0, 0},
         {profil, "Willkommen beim Mobilsteg Bordlotse · VPN"},
         {{"profil", std::string("vpn")}, {"volltunnel", false}, {"vpnDurch", true}}},
        {"VPN-Ausgabe",
         "de.mobilsteg.vpnlotse",
         {},
         {0},
         {"Willkommen beim Mobilsteg VPN-Lotse"},
         {{"b2b.erklaert", true}, {"volltunnel.erklaert", true}}},
        {"alles beantwortet", "de.mobilsteg.vpnlotse", {{"b2b.erklaert", true}}, {}, {}, {}},
        {"später zum VPN gewechselt",
         "de.mobilsteg.bordlotse",
         {{"profil", std::string("vpn")}},
         {-1},
         {"Willkommen beim Mobilsteg Bordlotse · VPN"},
         {{"b2b.erklaert", true}}},
    };
    for (const auto& fall : faelle) {
        SCOPED_TRACE(fall.name);
        KabelWelt w;
        w.buendelkennung = fall.kennung;
        w.einstellungen.werte = fall.vorher;
        w.antworten = fall.antworten;
        w.baue();
        w.haupt.sync([&] { erststart(*w.kabel, w.einstellungen, w.dialog); });
        EXPECT_EQ(w.fragen, fall.fragen);
        for (const auto& [schluessel, wert] : fall.nachher)
            EXPECT_TRUE(w.einstellungen.werte[schluessel] == wert) << schluessel;
        EXPECT_THAT(w.aufrufe, IsEmpty());
        // The second start asks nothing more.
        const auto gestellt = w.fragen.size();
        w.haupt.sync([&] { erststart(*w.kabel, w.einstellungen, w.dialog); });
        EXPECT_EQ(w.fragen.size(), gestellt);
    }
}

/// To the character, with the line breaks.
TEST(Erststart, wasDieFragenSagen) {
    const std::tuple<Frage, std::string, std::vector<std::string>> fragen[] = {
        {profilfrage(),
         "Ja: Der Lotse schützt deinen VPN vor Funklöchern — er fährt über das Handy, das WLAN und Mobilfunk "
         "bündelt, und bleibt verbunden, wenn ein Weg ausfällt. Das steht dann im Vordergrund.\n\nNein: Du "
         "bekommst den Bordlotse für schnelleres Internet unterwegs; die VPN-Themen bleiben ausgeblendet. "
         "Umschalten geht jederzeit im Expertenmodus.",
         {"Ja, VPN schützen", "Nein, nur schneller unterwegs"}},
        {willkommen("X"),
         "Der VPN-Lotse verbindet Ihren Mac über das USB-Kabel mit der Mobilsteg-App auf dem Handy. Das "
         "Handy bündelt WLAN und Mobilfunk; fällt eines aus, läuft Ihr VPN auf dem anderen weiter — ohne "
         "Abbruch, ohne neue Anmeldung.\n\nDafür legt der Lotse einmal pro Fahrt mit Administratorrechten "
         "eine Netzwerkschnittstelle an (macOS fragt nach Ihrem Passwort). Ihren VPN verbinden Sie danach "
         "wie gewohnt; der Aufklapper zeigt, ob er gesichert fährt.",
         {"Verstanden"}},
        {tunnelerklaerung(),
         "Der Volltunnel legt eine eigene Netzwerkschnittstelle an und setzt Routen und DNS, damit alles vom "
         "Mac durch das Handy fährt — nicht nur Programme, die den System-Proxy beachten. Das darf nur ein "
         "Administrator, deshalb die Abfrage (einmal je Aktivierung). Beim Abstecken, Ausschalten oder "
         "Beenden baut der Bordlotse alles wieder zurück; kommt kein Netz durch den Tunnel, baut er sich "
         "nach 15 Sekunden selbst zurück.",
         {"Weiter", "Abbrechen"}}};
    for (const auto& [frage, erlaeuterung, knoepfe] : fragen) {
        EXPECT_EQ(frage.erlaeuterung, erlaeuterung);
        EXPECT_EQ(frage.knoepfe, knoepfe);
    }
}

TEST(Erststart, neinLaesstDieTunnelschalterUngespeichert) {
    KabelWelt w;
    w.antworten = {1};
    w.baue();
    w.haupt.sync([&] { erststart(*w.kabel, w.einstellungen, w.dialog); });
    EXPECT_FALSE(w.einstellungen.werte.contains("volltunnel") || w.einstellungen.werte.contains("nurVPN"));
}

} // namespace
