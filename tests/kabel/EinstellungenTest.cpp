// What the controller makes of the stored settings, and what it stores.

#include "tests/hilfe/KabelWelt.hpp"

#include <gtest/gtest.h>

using namespace mobilsteg;

namespace {

TEST(Einstellungen, vorgabenFolgenAusgabeUndProfil) {
    using Werte = std::map<std::string, SpeicherEinstellungen::Wert>;
    struct Fall {
        const char* name;
        std::string kennung;
        Werte stehen;
        std::string profil;
        bool volltunnel, vpnDurch, nurVPN;
    };
    const std::vector<Fall> faelle = {
        {"leer, Reise", "de.mobilsteg.bordlotse", {}, "reise", false, false, false},
        {"leer, VPN", "de.mobilsteg.vpnlotse", {}, "vpn", true, true, true},
        {"Profil VPN in der Reiseausgabe",
         "de.mobilsteg.bordlotse",
         {{"profil", std::string("vpn")}, {"volltunnel", false}},
         "vpn",
         false,
         true,
         true},
        {"fremdes Profil",
         "de.mobilsteg.vpnlotse",
         {{"profil", std::string("alt")}},
         "alt",
         false,
         false,
         false},
        {"falsche Art gilt als nicht da",
         "de.mobilsteg.bordlotse",
         {{"volltunnel", std::string("true")}, {"profil", true}, {"proxy.automatisch", std::string("nein")}},
         "reise",
         false,
         false,
         false},
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
    ASSERT_EQ(id.size(), 36U);
    for (std::size_t i = 0; i < id.size(); ++i) {
        const bool strich = i == 8 || i == 13 || i == 18 || i == 23;
        EXPECT_TRUE(strich ? id[i] == '-' : std::string("0123456789abcdef").find(id[i]) != std::string::npos)
            << id;
    }
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
        EXPECT_EQ(w.einstellungen.flagge("experte"), true);
        EXPECT_EQ(w.einstellungen.flagge("proxy.automatisch"), false);
        EXPECT_EQ(w.einstellungen.text("profil"), "vpn");
        EXPECT_EQ(w.einstellungen.flagge("browser.hinweisWeg"), true);
    });
    EXPECT_FALSE(w.einstellungen.werte.contains("volltunnel")) << "the profile leaves the switches alone";
    const auto gilt = [](const Zustand& z) {
        return z.experte && !z.proxyAutomatisch && z.profilIstVpn() && z.browserHinweisWeg;
    };
    EXPECT_TRUE(gilt(w.zustand()));
    EXPECT_FALSE(w.zustand().volltunnelAn);
    EXPECT_TRUE(gilt(w.baue().aushang().zustand())) << "the next start reads what is stored";
}

} // namespace
