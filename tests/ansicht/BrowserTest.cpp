#include "ansicht/Browser.hpp"

#include "ansicht/Bedienpult.hpp"
#include "ansicht/Inhalt.hpp"
#include "tests/hilfe/Ordner.hpp"
#include "tests/hilfe/SpeicherEinstellungen.hpp"

#include <gmock/gmock.h>

using namespace mobilsteg;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr const char* profile = "/heim/Library/Application Support/";

TEST(Browser, findetSieInBeidenOrdnernUndDieErweiterungInJedemProfil) {
    const Ordner o;
    const SpeicherEinstellungen einstellungen;
    const Browser browser(nullptr, {o.pfad() + "/heim", o.pfad() + "/wurzel"}, einstellungen);
    EXPECT_THAT(browser.finden(), IsEmpty());

    o.lege("/wurzel/Applications/Vivaldi.app/x", "");
    o.lege("/heim/Applications/Google Chrome.app/x", "");
    o.lege("/wurzel/Applications/Brave Browser.app/x", "");
    o.lege("/wurzel/Applications/Arc.app/x", "");
    const auto erweiterung = [&](const std::string& wo, const char* datei = "notbetrieb.js") {
        o.lege(profile + wo + "/Extensions/abc/1.0_0/" + datei, "");
    };
    erweiterung("Google/Chrome/Default", "anderes.js");
    erweiterung("Google/Chrome/Profile 3");
    erweiterung("BraveSoftware/Brave-Browser/System Profile");
    erweiterung("BraveSoftware/Brave-Browser/Guest Profile");
    erweiterung("BraveSoftware/Brave-Browser/Profile3");
    o.lege(std::string(profile) + "Vivaldi/Default/Extensions", "keine Ordner, sondern eine Datei");
    std::filesystem::create_directories(o.pfad() + profile + "Arc/User Data/Default/Extensions/abc");
    std::filesystem::create_directory_symlink("..",
                                              o.pfad() + profile + "Arc/User Data/Default/Extensions/abc/1");

    const std::string w = o.pfad() + "/wurzel/Applications/";
    EXPECT_THAT(browser.finden(),
                ElementsAre(BrowserFund{"Chrome", "com.google.Chrome", true,
                                        o.pfad() + "/heim/Applications/Google Chrome.app"},
                            BrowserFund{"Brave", "com.brave.Browser", false, w + "Brave Browser.app"},
                            BrowserFund{"Arc", "company.thebrowser.Browser", false, w + "Arc.app"},
                            BrowserFund{"Vivaldi", "com.vivaldi.Vivaldi", false, w + "Vivaldi.app"}));
}

TEST(Browser, oeffnetDieSeiteInGenauDiesem) {
    std::vector<std::vector<std::string>> aufrufe;
    const auto laeufer = [&](const std::string& programm, std::vector<std::string> worte, double) {
        worte.insert(worte.begin(), programm);
        aufrufe.push_back(worte);
        return Ergebnis{1, "", "geht nicht"};
    };
    SpeicherEinstellungen einstellungen;
    const Browser browser(laeufer, {"/heim", "/w"}, einstellungen);
    for (const char* seite : {"", "https://store.example/x"}) {
        einstellungen.werte["fahrtwind.store"] = std::string(seite);
        browser.hinzufuegen({"Edge", "com.microsoft.edgemac", false, ""});
    }
    ASSERT_EQ(aufrufe.size(), 2U);
    EXPECT_THAT(aufrufe[0], ElementsAre("/w/usr/bin/open", "-b", "com.microsoft.edgemac",
                                        testing::EndsWith("/download/")));
    EXPECT_EQ(aufrufe[1][3], "https://store.example/x");
}

TEST(BrowserHinweis, nurAufReiseUndBisErWeggeklicktIst) {
    Zustand z;
    z.browserOhne = {{"Chrome", "c", false, "/a"}, {"Edge", "e", false, "/b"}};
    const auto knoepfe = [&] {
        std::vector<std::string> texte;
        for (const auto& angebot : angebote(inhalt(z, false)))
            texte.push_back(angebot.text);
        return texte;
    };
    EXPECT_THAT(knoepfe(), ElementsAre("In Chrome hinzufügen", "In Edge hinzufügen",
                                       "Hinweis nicht mehr zeigen", "Expertenmodus", "Beenden"));
    z.browserHinweisWeg = true;
    EXPECT_THAT(knoepfe(), ElementsAre("Expertenmodus", "Beenden"));
    z.browserHinweisWeg = false;
    z.profil = "vpn";
    EXPECT_THAT(knoepfe(), testing::Not(testing::Contains("In Edge hinzufügen")));
}

} // namespace
