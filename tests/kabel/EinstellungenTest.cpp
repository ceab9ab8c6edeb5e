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
    const Werte vpnOhneTunnel = {{"profil", std::string("vpn")}, {"volltunnel", false}};
    const Werte falscheArt = {{"volltunnel", std::string("true")},
                              {"proxy.automatisch", std::string("nein")}};
    const Fall faelle[] = {
        {"leer, Reise", reise, {}, "reise", false, false, false},
        {"leer, VPN", "de.mobilsteg.vpnlotse", {}, "vpn", true, true, true},
        {"Profil VPN in der Reiseausgabe", reise, vpnOhneTunnel, "vpn", false, true, true},
        {"fremdes Profil", "", {{"profil", std::string("alt")}}, "alt", false, false, false},
        {"falsche Art gilt als nicht da", reise, falscheArt, "reise", false, false, false},
    };
    for (const auto& fall : faelle) {
        SCOPED_TRACE(fall.name);
        KabelWelt w;
        w.buendelkennung = fall.kennung;
        w.einstellungen.werte = fall.stehen;
        w.baue();
        const auto& z = w.zustand();
        EXPECT_EQ(z.profil, fall.profil);
        EXPECT_TRUE(z.volltunnelAn == fall.volltunnel && z.vpnDurch == fall.vpnDurch &&
                    z.nurVPN == fall.nurVPN);
        EXPECT_TRUE(z.proxyAutomatisch && !z.experte);
        EXPECT_EQ(w.einstellungen.werte.size(), fall.stehen.size() + 1) << "only the id is stored";
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
        // At once, and the profile leaves the switches alone.
        EXPECT_EQ(w.einstellungen.werte, (Werte{{"kabel.id", id},
                                                {"experte", true},
                                                {"proxy.automatisch", false},
                                                {"profil", std::string("vpn")},
                                                {"browser.hinweisWeg", true}}));
    });
    EXPECT_FALSE(w.zustand().volltunnelAn);
    const auto gilt = [](const Zustand& z) {
        return z.experte && !z.proxyAutomatisch && z.profilIstVpn() && z.browserHinweisWeg;
    };
    EXPECT_TRUE(gilt(w.zustand()));
    EXPECT_EQ(w.baue().id(), id);
    EXPECT_TRUE(gilt(w.zustand())) << "the next start reads what is stored";
}

} // namespace
