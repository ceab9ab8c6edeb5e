// The menu-bar program on a virtual display: a real click on the item, a real click on a checkbox.

#include "plattform/Text.hpp"
#include "tests/fahrt/Fahrtbank.hpp"

#include <gmock/gmock.h>

#include <cstdlib>
#include <deque>

using namespace mobilsteg;

namespace {

/// A display with a window manager and a tray at the top right.
class Anzeige {
public:
    Anzeige() {
        starte("Xvfb -displayfd 1 -screen 0 1280x900x24 -nolisten tcp");
        std::string nummer;
        EXPECT_TRUE(warteBis([&] { return (nummer = ordner_.lies("/Xvfb")).ends_with('\n'); }));
        ::setenv("DISPLAY", (":" + std::string(beschnitten(nummer))).c_str(), 1);
        ::unsetenv("QT_QPA_PLATFORM");
        starte("openbox");
        starte("trayer --edge top --align right --widthtype request --height 24");
    }
    ~Anzeige() { ::unsetenv("DISPLAY"); }
    Anzeige(const Anzeige&) = delete;
    Anzeige& operator=(const Anzeige&) = delete;

    struct Fenster {
        int x = 0, y = 0, breite = 0, hoehe = 0;
    };

    /// The program's visible window of that width; width 0: there is none.
    static Fenster fenster(int breite) {
        const std::string nummern = xdotool({"search", "--onlyvisible", "--class", "mobilsteg"});
        for (const auto nummer : teile(nummern, '\n')) {
            const std::string lage = xdotool({"getwindowgeometry", "--shell", std::string(nummer)});
            const auto zahl = [&](const std::string& name) {
                const auto stelle = lage.find(name + "=");
                return stelle == std::string::npos ? 0 : std::atoi(lage.c_str() + stelle + name.size() + 1);
            };
            if (zahl("WIDTH") == breite)
                return {zahl("X"), zahl("Y"), zahl("WIDTH"), zahl("HEIGHT")};
        }
        return {};
    }

    static void klicke(int x, int y) {
        (void)xdotool({"mousemove", std::to_string(x), std::to_string(y), "click", "1"});
    }

    static std::string xdotool(const std::vector<std::string>& worte) {
        return lauf("/usr/bin/xdotool", worte, 10).ausgabe;
    }

private:
    void starte(const std::string& befehl) {
        const auto teileDavon = teile(befehl, ' ');
        std::vector<std::string> worte(teileDavon.begin(), teileDavon.end());
        const std::string ausgabe = ordner_.pfad() + "/" + worte[0];
        worte[0].insert(0, "/usr/bin/");
        programme_.push_front(std::make_unique<Programm>(worte, ausgabe));
    }

    Ordner ordner_;
    std::deque<std::unique_ptr<Programm>> programme_; // the display goes last
};

constexpr int panelbreite = 330;

bool panelOffen() {
    return Anzeige::fenster(panelbreite).breite == panelbreite;
}

/// Clicks on the item until the panel is there: the tray takes the item in when it likes, and a click that
/// comes right after the panel has closed counts as the one that closed it.
bool oeffnePanel() {
    return warteBis([] {
        Anzeige::klicke(1268, 12);
        return warteBis(panelOffen, 1);
    });
}

TEST(Fenster, einKlickOeffnetDasPanelUndEinKlickStelltUm) {
    const Anzeige anzeige;
    Fahrtbank bank;
    bank.starteFenster();
    bank.erwartePhase("Kein Handy am Kabel");
    ASSERT_TRUE(oeffnePanel()) << bank.ausgabe();

    const auto panel = Anzeige::fenster(panelbreite);
    const auto gespeichert = [&] {
        return bank.ordner.lies("/heim/Library/Preferences/de.mobilsteg.bordlotse.json")
                   .find("\"experte\": true") != std::string::npos;
    };
    EXPECT_FALSE(gespeichert());
    Anzeige::klicke(panel.x + 20, panel.y + panel.hoehe - 24); // the box at the left of the bottom row
    EXPECT_TRUE(warteBis(gespeichert)) << bank.ausgabe();
    EXPECT_TRUE(warteBis([&] { return Anzeige::fenster(panelbreite).hoehe > panel.hoehe; }))
        << "the expert's block";

    (void)Anzeige::xdotool({"key", "Escape"});
    EXPECT_TRUE(warteBis([] { return !panelOffen(); }));
    EXPECT_TRUE(oeffnePanel()) << "it opens again";

    const auto grosses = Anzeige::fenster(panelbreite);
    Anzeige::klicke(grosses.x + grosses.breite - 40, grosses.y + grosses.hoehe - 24); // „Beenden“
    EXPECT_EQ(bank.programm->warteAufEnde(), 0);
    EXPECT_TRUE(portFrei(1081));
}

} // namespace
