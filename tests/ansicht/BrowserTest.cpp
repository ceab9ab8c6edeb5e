#include "ansicht/Browser.hpp"

#include "plattform/Text.hpp"
#include "tests/hilfe/Ordner.hpp"
#include "tests/hilfe/SpeicherEinstellungen.hpp"

#include <gmock/gmock.h>

using namespace mobilsteg;
using namespace testing;

namespace {

constexpr const char* profile = "/heim/Library/Application Support/";

TEST(Browser, findetSieInBeidenOrdnernUndDieErweiterungInJedemProfil) {
    const Ordner o;
    const SpeicherEinstellungen einstellungen;
    const Browser browser(nullptr, {o.pfad() + "/heim", o.pfad() + "/wurzel"}, einstellungen);
    EXPECT_THAT(browser.finden(), IsEmpty());

    for (const char* name : {"Vivaldi", "Brave Browser", "Arc", "Microsoft Edge"})
        o.lege("/wurzel/Applications/" + std::string(name) + ".app/x", "");
    for (const char* name : {"Google Chrome", "Microsoft Edge", "Chromium"})
        o.lege("/heim/Applications/" + std::string(name) + ".app/x", "");
    const auto erweiterung = [&](const std::string& wo, const char* datei = "notbetrieb.js") {
        o.lege(profile + wo + "/Extensions/abc/1.0_0/" + datei, "");
    };
    erweiterung("Google/Chrome/Default", "anderes.js");
    erweiterung("Google/Chrome/Profile 3");
    erweiterung("Microsoft Edge/Default");
    erweiterung("Chromium/Profile 1");
    erweiterung("BraveSoftware/Brave-Browser/System Profile");
    erweiterung("BraveSoftware/Brave-Browser/Guest Profile");
    erweiterung("BraveSoftware/Brave-Browser/Profile3");
    o.lege(std::string(profile) + "Vivaldi/Default/Extensions", "keine Ordner, sondern eine Datei");
    std::filesystem::create_directories(o.pfad() + profile + "Arc/User Data/Default/Extensions/abc");
    std::filesystem::create_directory_symlink("..",
                                              o.pfad() + profile + "Arc/User Data/Default/Extensions/abc/1");

    const std::string w = o.pfad() + "/wurzel/Applications/";
    const std::string h = o.pfad() + "/heim/Applications/";
    EXPECT_THAT(browser.finden(),
                ElementsAre(BrowserFund{"Chrome", "com.google.Chrome", true, h + "Google Chrome.app"},
                            BrowserFund{"Brave", "com.brave.Browser", false, w + "Brave Browser.app"},
                            BrowserFund{"Edge", "com.microsoft.edgemac", true, w + "Microsoft Edge.app"},
                            BrowserFund{"Arc", "company.thebrowser.Browser", false, w + "Arc.app"},
                            BrowserFund{"Vivaldi", "com.vivaldi.Vivaldi", false, w + "Vivaldi.app"},
                            BrowserFund{"Chromium", "org.chromium.Chromium", true, h + "Chromium.app"}));
}

TEST(Browser, oeffnetDieSeiteInGenauDiesem) {
    std::vector<std::string> aufrufe;
    const auto laeufer = [&](const std::string& programm, const std::vector<std::string>& worte,
                             double frist) {
        aufrufe.push_back(programm + " " + verbunden(worte, " ") + (frist == 10 ? "" : " ohne die Frist"));
        return Ergebnis{1, "", "geht nicht"};
    };
    SpeicherEinstellungen einstellungen;
    for (const char* seite : {"", "https://store.example/x"}) {
        einstellungen.werte["fahrtwind.store"] = std::string(seite);
        Browser(laeufer, {"/heim", "/w"}, einstellungen).hinzufuegen({"Edge", "edge", false, ""});
    }
    EXPECT_THAT(aufrufe,
                ElementsAre(AllOf(StartsWith("/w/usr/bin/open -b edge http"), EndsWith("/download/")),
                            "/w/usr/bin/open -b edge https://store.example/x"));
}

} // namespace
