// Every runner of scripts and every package that this machine has; on a mac the native ones, too.

#include "plattform/Adapter.hpp"

#include "plattform/Dateien.hpp"
#include "tests/hilfe/Ordner.hpp"

#include <gtest/gtest.h>

using namespace mobilsteg;

namespace {

// The portable runner's own tests run the simulated mac's tool.
TEST(Adminskript, meldetNummerUndText) {
    std::vector<std::unique_ptr<Adminskript>> skripte;
    if (existiert("/usr/bin/osascript"))
        skripte.push_back(osascriptSkript({eigenesHeim(), ""}));
    if (auto natives = nativesSkript())
        skripte.push_back(std::move(natives));
    if (skripte.empty())
        GTEST_SKIP() << "only a mac runs AppleScript";
    for (const auto& skript : skripte)
        for (int i = 0; i < 2; ++i) { // nothing of a failed one sticks
            EXPECT_FALSE(skript->fuehreAus("return 1"));
            const auto fehler = skript->fuehreAus("error \"Nein, „so“ (nicht)\" number -128");
            ASSERT_TRUE(fehler && !fehler->nichtGebaut);
            EXPECT_EQ(fehler->nummer, -128);
            EXPECT_EQ(fehler->meldung, "Nein, „so“ (nicht)");
            EXPECT_TRUE(skript->fuehreAus("ein Satz, den keiner versteht ("));
        }
}

TEST(Buendel, kenntSichSelbst) {
    const Ordner ordner;
    std::filesystem::create_directories(ordner.pfad() + "/x/Resources");
    for (const auto* rest : {"/x/bin/lotse", "/x/MacOS/lotse", "/y/bin/lotse"}) {
        const auto ressourcen = ordnerBuendel("de.mobilsteg.bordlotse", ordner.pfad() + rest).ressourcen;
        EXPECT_EQ(ressourcen.value_or(""), rest[1] == 'x' ? ordner.pfad() + "/x/Resources" : "") << rest;
    }
    const Buendel eigenes = eigenesBuendel("de.mobilsteg.vpnlotse");
    EXPECT_TRUE(eigenes.kennung.starts_with("de.mobilsteg.")) << eigenes.kennung;
    for (const auto& version : {eigenes.version, eigenes.bauversion})
        EXPECT_TRUE(version && !version->empty() &&
                    version->find_first_not_of("0123456789.") == std::string::npos)
            << version.value_or("fehlt");
}

TEST(Adapter, einLaufAnEinemAnderenOrtRuehrtDenEchtenMacNichtAn) {
    const Ordner ordner;
    for (const Orte& orte : {Orte{ordner.pfad(), ""}, Orte{ordner.pfad(), ordner.pfad()}}) {
        const auto ablage = einstellungenFuer(orte, "de.mobilsteg.bordlotse");
        EXPECT_EQ(ablage.ort, ordner.pfad() + "/Library/Preferences/de.mobilsteg.bordlotse.json");
        ablage.speicher->setzeFlagge("experte", true);
        EXPECT_NE(ordner.lies("/Library/Preferences/de.mobilsteg.bordlotse.json"), "");
    }
    const auto fehler = adminskriptFuer({ordner.pfad(), ordner.pfad()})->fuehreAus("return 1");
    EXPECT_TRUE(fehler && fehler->nichtGebaut) << "this simulated mac has no osascript";
}

} // namespace
