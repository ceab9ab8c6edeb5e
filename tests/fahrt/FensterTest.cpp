// The menu-bar program on a virtual display: a real click on the item, a real click on a checkbox.

#include "tests/hilfe/Fahrtbank.hpp"

#include <gtest/gtest.h>

#include <regex>

using namespace mobilsteg;

namespace {

std::string xdotool(const std::string& worte) {
    return lauf("/bin/sh", {"-c", "xdotool " + worte}, 60).ausgabe;
}

void klicke(int x, int y) {
    (void)xdotool("mousemove " + std::to_string(x) + " " + std::to_string(y) + " click 1");
}

struct Fenster {
    int x = 0, y = 0, hoehe = 0;
};

/// The program's visible panel, told by its width of 330; height 0: there is none.
Fenster panel() {
    static const std::regex lage("X=(\\d+)\nY=(\\d+)\nWIDTH=330\nHEIGHT=(\\d+)");
    const auto fenster = xdotool("search --onlyvisible --class mobilsteg getwindowgeometry --shell %@");
    std::smatch zahlen;
    if (!std::regex_search(fenster, zahlen, lage))
        return {};
    return {std::stoi(zahlen[1]), std::stoi(zahlen[2]), std::stoi(zahlen[3])};
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
    const Programm anzeige({"Xvfb", "-displayfd", "1", "-screen", "0", "1280x900x24", "-nolisten", "tcp"},
                           ordner.pfad() + "/nummer");
    ASSERT_TRUE(warteBis([&] { return ordner.lies("/nummer").ends_with('\n'); }));
    ::setenv("DISPLAY", (":" + std::string(beschnitten(ordner.lies("/nummer")))).c_str(), 1);
    ::unsetenv("QT_QPA_PLATFORM");
    const Programm verwalter({"openbox"}, ordner.pfad() + "/rest");
    const Programm leiste(
        {"trayer", "--edge", "top", "--align", "right", "--widthtype", "request", "--height", "24"},
        ordner.pfad() + "/rest");
    Fahrtbank bank;
    bank.starte("mobilsteg-bordlotse", {});
    bank.erwartePhase("Kein Handy am Kabel");
    ASSERT_TRUE(oeffnePanel());

    const Fenster kleines = panel();
    klicke(kleines.x + 20, kleines.y + kleines.hoehe - 24); // the box at the left of the bottom row
    EXPECT_TRUE(bank.kommt(einstellungsdatei, "\"experte\": true"));
    EXPECT_TRUE(warteBis([&] { return panel().hoehe > kleines.hoehe; })) << "the expert's block";

    (void)xdotool("key Escape");
    EXPECT_TRUE(warteBis([] { return panel().hoehe == 0; }));
    EXPECT_TRUE(oeffnePanel()) << "it opens again";

    const Fenster grosses = panel();
    klicke(grosses.x + 290, grosses.y + grosses.hoehe - 24); // „Beenden“
    EXPECT_EQ(bank.programm->warteAufEnde(), 0);
    EXPECT_TRUE(portFrei(1081));
}

} // namespace
