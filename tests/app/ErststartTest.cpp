#include "app/Delegate.hpp"

#include "tests/hilfe/KabelWelt.hpp"

#include <gmock/gmock.h>

using namespace mobilsteg;

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
    Werte nachher; ///< what must stand then, beside the id and what stood before
};

TEST(Erststart, fragtWasNochNichtBeantwortetIst) {
    const char* bordlotse = "de.mobilsteg.bordlotse";
    const char* vpnLotse = "de.mobilsteg.vpnlotse";
    const std::string willkommenVpn = "Willkommen beim Mobilsteg Bordlotse · VPN";
    const Werte reise = {{"profil", std::string("reise")}};
    const Werte vpn = {{"profil", std::string("vpn")}};
    const Werte erklaert = {{"b2b.erklaert", true}, {"volltunnel.erklaert", true}};
    const auto mit = [](Werte werte, Werte weitere) {
        werte.merge(weitere);
        return werte;
    };
    const Werte vpnSchalter = mit(mit(vpn, erklaert), {{"vpnDurch", true}, {"nurVPN", true}});
    const Fall faelle[] = {
        {"nein", bordlotse, {}, {1}, {profil}, reise},
        {"anders geschlossen", bordlotse, {}, {-1}, {profil}, reise},
        {"ja",
         bordlotse,
         {},
         {0, 0, 0},
         {profil, erklaerung, willkommenVpn},
         mit(vpnSchalter, {{"volltunnel", true}})},
        {"ja, aber Stehendes bleibt",
         bordlotse,
         {{"volltunnel", false}},
         {0, 0},
         {profil, willkommenVpn},
         vpnSchalter},
        {"VPN-Ausgabe", vpnLotse, {}, {0}, {"Willkommen beim Mobilsteg VPN-Lotse"}, erklaert},
        {"alles beantwortet", vpnLotse, {{"b2b.erklaert", true}}, {}, {}, {}},
        {"später zum VPN gewechselt", bordlotse, vpn, {-1}, {willkommenVpn}, erklaert},
    };
    for (const auto& fall : faelle) {
        SCOPED_TRACE(fall.name);
        KabelWelt w;
        w.buendelkennung = fall.kennung;
        w.einstellungen.werte = fall.vorher;
        w.antworten = fall.antworten;
        w.baue();
        w.haupt.sync([&] { erststart(*w.kabel, w.einstellungen, w); });
        EXPECT_EQ(w.fragen, fall.fragen);
        w.einstellungen.werte.erase("kabel.id");
        EXPECT_EQ(w.einstellungen.werte, mit(fall.vorher, fall.nachher));
        EXPECT_THAT(w.aufrufe, testing::IsEmpty());
        // The second start asks nothing more.
        const auto gestellt = w.fragen.size();
        w.haupt.sync([&] { erststart(*w.kabel, w.einstellungen, w); });
        EXPECT_EQ(w.fragen.size(), gestellt);
    }
}

} // namespace
