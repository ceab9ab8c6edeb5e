// What the tunnel's side of the program does with the files between it and the helper.

#include "netz/Volltunnel.hpp"

#include "plattform/Dateien.hpp"
#include "tests/hilfe/KabelWelt.hpp"

#include <gtest/gtest.h>

using namespace mobilsteg;
using namespace std::chrono_literals;

namespace {

/// A world whose password dialog does what the test says.
struct Tunnelwelt : KabelWelt {
    std::optional<Skriptfehler> fuehreAus(const std::string& /*quelle*/) override {
        gebeten = existiert(stopp);
        return beimDialog();
    }
    /// The reason; empty: none.
    std::string im(const std::function<std::optional<std::string>()>& was) {
        std::optional<std::string> grund;
        haupt.sync([&] { grund = was(); });
        return grund.value_or("");
    }

    std::function<std::optional<Skriptfehler>()> beimDialog;
    bool gebeten = false; ///< to stop, when the dialog came
    std::string stopp = stoppPfad();
    Variante variante{Buendel{"de.mobilsteg.bordlotse", {}, {}, {}}, einstellungen};
    Volltunnel tunnel{{haupt, welt.uhr(), *this, variante, ordner.pfad() + "/Resources",
                       Orte{ordner.pfad() + "/heim", ordner.pfad() + "/wurzel"}}};
};

TEST(Volltunnel, nimmtZurueckWasEinGetoeteterHelferHinterliess) {
    for (const std::string grund : {"", "Abgebrochen", "DNS", "siehe "}) { // the last one says nothing
        Tunnelwelt w;
        const auto notiz = w.ordner.lege(rueckbaunotiz("/wurzel"), "[]");
        w.beimDialog = [&]() -> std::optional<Skriptfehler> {
            EXPECT_TRUE(w.gebeten) << "it must not start a tunnel";
            if (grund == "Abgebrochen")
                return Skriptfehler{false, -128, {}};
            if (grund == "DNS")
                w.ordner.lege(w.stopp.substr(w.ordner.pfad().size()) + ".fehler", " DNS \n");
            if (grund.empty())
                std::filesystem::remove(notiz);
            return std::nullopt;
        };
        const auto beginn = w.welt.jetzt();
        EXPECT_TRUE(w.im([&] { return w.tunnel.nimmZurueck(); }).starts_with(grund)) << grund;
        EXPECT_EQ(w.tunnel.hinterliess(), !grund.empty());
        EXPECT_EQ(w.welt.jetzt() - beginn >= 10s, grund == "siehe ");
    }
}

/// The request is a file made in advance: a full disk hinders no stop.
TEST(Volltunnel, bittetMitEinerDateiDieSchonDaIst) {
    Tunnelwelt w;
    w.beimDialog = [&] {
        EXPECT_TRUE(!w.gebeten && existiert(w.stopp + ".bereit"));
        w.tunnel.beendeFuerImmer(); // while the dialog is open
        EXPECT_TRUE(existiert(w.stopp) && !existiert(w.stopp + ".bereit"));
        return std::optional<Skriptfehler>();
    };
    w.tunnel.beginne();
    EXPECT_EQ(w.im([&] { return w.tunnel.start({"Wi-Fi"}); }), "") << "it came up and went";
    EXPECT_EQ(w.im([&] { return w.tunnel.start({"Wi-Fi"}); }), "Das Programm endet");
    EXPECT_TRUE(w.tunnel.stoppGebeten()) << "the clean-up's";
}

} // namespace
