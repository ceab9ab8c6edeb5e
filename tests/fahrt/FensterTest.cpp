// The menu-bar program on a virtual display: a real click on the item, a real click on a checkbox.

#include "plattform/Text.hpp"
#include "tests/fahrt/Fahrtbank.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <regex>

using namespace mobilsteg;

namespace {

std::string xdotool(const std::vector<std::string>& worte) {
    return lauf("/usr/bin/xdotool", worte, 60).ausgabe;
}

void klicke(int x, int y) {
    (void)xdotool({"mousemove", std::to_string(x), std::to_string(y), "click", "1"});
}

struct Fenster {
    int x = 0, y = 0, hoehe = 0;
};

/// The program's visible panel, told by its width of 330; height 0: there is none.
Fenster panel() {
    static const std::regex lage("X=(\\d+)\nY=(\\d+)\nWIDTH=330\nHEIGHT=(\\d+)");
    const std::string fenster =
        xdotool({"search", "--onlyvisible", "--class", "mobilsteg", "getwindowgeometry", "--shell", "%@"});
    std::smatch zahlen;
    return std::regex_search(fenster, zahlen, lage)
               ? Fenster{std::stoi(zahlen[1]), std::stoi(zahlen[2]), std::stoi(zahlen[3])}
               : Fenster{};
}

/// Clicks on the item until the panel is there: the tray takes the item in when it likes, and a click that
/// comes right after the panel has closed counts as the one that closed it.
bool oeffnePanel() {
    return warteBis([] {
        klicke(1268, 12);
        return warteBis([] { return panel().hoehe != 0; }, 2);
    });
}

TEST(Fenster, einKlickOeffnetDasPanelUndEinKlickStelltUm) {
    const Ordner ordner;
    const auto starte = [&](const std::string& name, const std::string& worte) {
        const std::vector<std::string> befehl = {"/bin/sh", "-c", "exec " + name + " " + worte};
        return std::make_unique<Programm>(befehl, ordner.pfad() + "/" + name);
    };
    const auto anzeige = starte("Xvfb", "-displayfd 1 -screen 0 1280x900x24 -nolisten tcp");
    ASSERT_TRUE(warteBis([&] { return ordner.lies("/Xvfb").ends_with('\n'); }));
    ::setenv("DISPLAY", (":" + std::string(beschnitten(ordner.lies("/Xvfb")))).c_str(), 1);
    ::unsetenv("QT_QPA_PLATFORM");
    const auto verwalter = starte("openbox", "");
    const auto leiste = starte("trayer", "--edge top --align right --widthtype request --height 24");
    Fahrtbank bank;
    bank.starte("mobilsteg-bordlotse", ":", {});
    bank.erwartePhase("Kein Handy am Kabel");
    ASSERT_TRUE(oeffnePanel()) << bank.ausgabe();

    const Fenster kleines = panel();
    const std::string experte = "\"experte\": true";
    EXPECT_EQ(bank.ordner.lies(einstellungen).find(experte), std::string::npos);
    klicke(kleines.x + 20, kleines.y + kleines.hoehe - 24); // the box at the left of the bottom row
    EXPECT_TRUE(bank.kommt(einstellungen, experte)) << bank.ausgabe();
    EXPECT_TRUE(warteBis([&] { return panel().hoehe > kleines.hoehe; })) << "the expert's block";

    (void)xdotool({"key", "Escape"});
    EXPECT_TRUE(warteBis([] { return panel().hoehe == 0; }));
    EXPECT_TRUE(oeffnePanel()) << "it opens again";

    const Fenster grosses = panel();
    klicke(grosses.x + 290, grosses.y + grosses.hoehe - 24); // „Beenden“
    EXPECT_EQ(bank.programm->warteAufEnde(), 0);
    EXPECT_TRUE(portFrei(1081));
}

} // namespace
