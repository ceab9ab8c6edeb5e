#include "app/Delegate.hpp"
#include "tests/hilfe/KabelWelt.hpp"

#include <gmock/gmock.h>

using namespace mobilsteg;

namespace {

using Werte = std::map<std::string, SpeicherEinstellungen::Wert>;

struct Fall {
    const char* name;
    bool vpnLotse;
    Werte vorher;
    std::vector<std::pair<std::string, int>> fragen; ///< with their answers
    Werte nachher; ///< what must stand then, beside the id and what stood before
};

Werte mit(Werte werte, Werte weitere) {
    werte.merge(weitere);
    return werte;
}

TEST(Erststart, fragtWasNochNichtBeantwortetIst) {
    const std::string profil = "Nutzt du unterwegs einen Firmen-VPN?";
    const std::string passwort = "Volltunnel: gleich fragt macOS nach deinem Administrator-Passwort";
    const std::string willkommen = "Willkommen beim Mobilsteg Bordlotse · VPN";
    const Werte reise = {{"profil", std::string("reise")}};
    const Werte vpn = {{"profil", std::string("vpn")}};
    const Werte erklaert = {{"b2b.erklaert", true}, {"volltunnel.erklaert", true}};
    const Werte schalter = mit(mit(vpn, erklaert), {{"vpnDurch", true}, {"nurVPN", true}});
    const Werte alles = mit(schalter, {{"volltunnel", true}});
    const Fall faelle[] = {
        {"nein", false, {}, {{profil, 1}}, reise},
        {"anders geschlossen", false, {}, {{profil, -1}}, reise},
        {"ja", false, {}, {{profil, 0}, {passwort, 0}, {willkommen, 0}}, alles},
        {"Stehendes bleibt", false, {{"volltunnel", false}}, {{profil, 0}, {willkommen, 0}}, schalter},
        {"VPN-Ausgabe", true, {}, {{"Willkommen beim Mobilsteg VPN-Lotse", 0}}, erklaert},
        {"alles beantwortet", true, {{"b2b.erklaert", true}}, {}, {}},
        {"später zum VPN gewechselt", false, vpn, {{willkommen, -1}}, erklaert},
    };
    for (const auto& fall : faelle) {
        SCOPED_TRACE(fall.name);
        KabelWelt w;
        w.buendelkennung = fall.vpnLotse ? "de.mobilsteg.vpnlotse" : "de.mobilsteg.bordlotse";
        w.einstellungen.werte = fall.vorher;
        std::vector<std::string> fragen;
        for (const auto& [frage, antwort] : fall.fragen) {
            fragen.push_back(frage);
            w.antworten.push_back(antwort);
        }
        w.baue();
        for (int start = 0; start < 2; ++start) // the second one asks nothing more
            w.haupt.sync([&] { erststart(*w.kabel, w.einstellungen, w); });
        EXPECT_EQ(w.fragen, fragen);
        w.einstellungen.werte.erase("kabel.id");
        EXPECT_EQ(w.einstellungen.werte, mit(fall.vorher, fall.nachher));
        EXPECT_THAT(w.aufrufe, testing::IsEmpty());
    }
}

} // namespace
