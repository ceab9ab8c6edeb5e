// What the controller makes of the stored settings, and what it stores.

#include "tests/hilfe/KabelWelt.hpp"

#include <gmock/gmock.h>

using namespace mobilsteg;

namespace {

using Werte = std::map<std::string, SpeicherEinstellungen::Wert>;

TEST(Einstellungen, vorgabenFolgenAusgabeUndProfil) {
    struct Fall {
        const char* name;
        std::string kennung;
        Werte stehen;
        std::string profil;
        bool volltunnel, vpnDurch, nurVPN;
    };
    const std::string reise = "de.mobilsteg.bordlotse";
    const std::string vpn = "de.mobilsteg.vpnlotse";
    const Werte vpnOhneTunnel = {{"profil", std::string("vpn")}, {"volltunnel", false}};
    const Werte fremdes = {{"profil", std::string("alt")}};
    const Werte falscheArt = {
        {"volltunnel", std::string("true")}, {"profil", true}, {"proxy.automatisch", std::string("nein")}};
    const Fall faelle[] = {
        {"leer, Reise", reise, {}, "reise", false, false, false},
        {"leer, VPN", vpn, {}, "vpn", true, true, true},
        {"Profil VPN in der Reiseausgabe", reise, vpnOhneTunnel, "vpn", false, true, true},
        {"fremdes Profil", vpn, fremdes, "alt", false, false, false},
        {"falsche Art gilt als nicht da", reise, falscheArt, "reise", false, false, false},
        {"ohne Kennung", "", {}, "reise", false, false, false},
    };
    for (const auto& fall : faelle) {
        SCOPED_TRACE(fall.name);
        KabelWelt w;
        w.buendelkennung = fall.kennung;
        w.einstellungen.werte = fall.stehen;
        w.baue();
        EXPECT_EQ(w.zustand().profil, fall.profil);
        EXPECT_EQ(w.zustand().volltunnelAn, fall.volltunnel);
        EXPECT_EQ(w.zustand().vpnDurch, fall.vpnDurch);
        EXPECT_EQ(w.zustand().nurVPN, fall.nurVPN);
        EXPECT_TRUE(w.zustand().proxyAutomatisch);
        EXPECT_FALSE(w.zustand().experte);
        EXPECT_EQ(w.einstellungen.werte.size(), fall.stehen.size() + 1) << "only the id is stored";
    }
}

TEST(Einstellungen, idBleibtUndIstEineKleingeschriebeneUuid) {
    KabelWelt w;
    const std::string id = w.baue().id();
    const std::string vier = "[0-9a-f]{4}";
    const auto muster = vier + vier + "(-" + vier + "){4}" + vier + vier;
    EXPECT_THAT(id, testing::MatchesRegex(muster));
    EXPECT_EQ(w.baue().id(), id);
}

TEST(Einstellungen, aenderungenWerdenSofortGespeichertUndGezeigt) {
    KabelWelt w;
    w.baue();
    w.haupt.sync([&] {
        w.kabel->setzeExperte(true);
        w.kabel->setzeProxyAutomatisch(false);
        w.kabel->setzeProfil("vpn");
        w.kabel->setzeBrowserHinweisWeg(true);
        w.einstellungen.werte.erase("kabel.id");
        // At once, and the profile leaves the switches alone.
        EXPECT_EQ(w.einstellungen.werte, (Werte{{"experte", true},
                                                {"proxy.automatisch", false},
                                                {"profil", std::string("vpn")},
                                                {"browser.hinweisWeg", true}}));
    });
    const auto gilt = [](const Zustand& z) {
        return z.experte && !z.proxyAutomatisch && z.profilIstVpn() && z.browserHinweisWeg;
    };
    EXPECT_TRUE(gilt(w.zustand()));
    EXPECT_FALSE(w.zustand().volltunnelAn);
    EXPECT_TRUE(gilt(w.baue().speicher().zustand())) << "the next start reads what is stored";
}

} // namespace
