#include "ansicht/Browser.hpp"

#include "plattform/Text.hpp"
#include "tests/hilfe/Ordner.hpp"
#include "tests/hilfe/SpeicherEinstellungen.hpp"

#include <gmock/gmock.h>

using namespace mobilsteg;
using namespace testing;

namespace {

TEST(Browser, findetSieInBeidenOrdnernUndDieErweiterungInJedemProfil) {
    const Ordner o;
    const std::string w = "/wurzel/Applications/", h = "/heim/Applications/";
    for (const auto& app :
         {w + "Brave Browser", w + "Microsoft Edge", h + "Microsoft Edge", w + "Arc", h + "Google Chrome"})
        o.lege(app + ".app/x", "");
    const std::string version = "/Extensions/abc/1.0_0/";
    for (const auto& datei : {"Google/Chrome/Default" + version + "anderes.js",
                              "Google/Chrome/Profile 3" + version + "notbetrieb.js",
                              "Microsoft Edge/Default" + version + "notbetrieb.js",
                              "BraveSoftware/Brave-Browser/Profile3" + version + "notbetrieb.js"})
        o.lege("/heim/Library/Application Support/" + datei, "");
    const SpeicherEinstellungen einstellungen;
    const auto& p = o.pfad();
    EXPECT_THAT(Browser(nullptr, {p + "/heim", p + "/wurzel"}, einstellungen).finden(),
                ElementsAre(BrowserFund{"Chrome", "com.google.Chrome", true, p + h + "Google Chrome.app"},
                            BrowserFund{"Brave", "com.brave.Browser", false, p + w + "Brave Browser.app"},
                            BrowserFund{"Edge", "com.microsoft.edgemac", true, p + w + "Microsoft Edge.app"},
                            BrowserFund{"Arc", "company.thebrowser.Browser", false, p + w + "Arc.app"}));
}

TEST(Browser, oeffnetDieSeiteInGenauDiesem) {
    std::vector<std::string> aufrufe;
    const auto laeufer = [&](const std::string& programm, const std::vector<std::string>& worte, double) {
        aufrufe.push_back(programm + " " + verbunden(worte, " "));
        return Ergebnis{};
    };
    SpeicherEinstellungen einstellungen;
    for (const char* seite : {"", "https://store.example/x"}) {
        einstellungen.werte["fahrtwind.store"] = std::string(seite);
        Browser(laeufer, {"/heim", "/w"}, einstellungen).hinzufuegen({"Edge", "edge", false, ""});
    }
    EXPECT_THAT(aufrufe, ElementsAre(MatchesRegex("/w/usr/bin/open -b edge http.*/download/"),
                                     "/w/usr/bin/open -b edge https://store.example/x"));
}

} // namespace
