// What every store of settings promises; and those in a file, on which other programs, crashes and people's
// editors have their hands, too.

#include "plattform/Adapter.hpp"
#include "plattform/Dateien.hpp"
#include "plattform/Text.hpp"
#include "tests/hilfe/Ordner.hpp"
#include "tests/plattform/Deskriptoren.hpp"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstdlib>
#include <functional>
#include <future>

using namespace mobilsteg;
using nlohmann::json;

namespace {

using Oeffner = std::function<std::unique_ptr<Einstellungen>()>;

/// Lets `was` open a fresh store as often as it likes; on a mac the system's own as well.
void inJedem(const std::function<void(const Oeffner&)>& was) {
    const Ordner ordner;
    was([&] { return dateiEinstellungen(ordner.pfad() + "/Library/Preferences/de.mobilsteg.json"); });
    const std::string bereich = "de.mobilsteg.pruefung." + neueKennung(); // of the user's real defaults
    if (!nativeEinstellungen(bereich))
        return;
    was([&] { return nativeEinstellungen(bereich); });
    // The file alone is not enough: the system keeps the range and writes it anew.
    const auto weg = "defaults delete " + bereich + "; rm -f ~/Library/Preferences/" + bereich + ".plist";
    EXPECT_EQ(std::system(weg.c_str()), 0);
}

TEST(Einstellungen, gebenWerteGenauZurueckUndHaltenDieArtenAuseinander) {
    inJedem([](const Oeffner& neue) {
        const auto e = neue();
        const auto fremde = neue();
        const std::string k = "proxy.dienst"; // the dot is part of the name
        e->entferne(k);                       // one that is not there
        for (const std::string text : {"", " Büro „Süd“ 🚆\n", "\"\\{}<&>%@", "-1", "true"}) {
            e->setzeText(k, text);
            EXPECT_TRUE(fremde->text(k) == text && !fremde->flagge(k) && !fremde->tabelle(k)) << text;
        }
        using Tabelle = Einstellungen::Tabelle;
        for (const auto& tabelle : {Tabelle{}, {{"mac.log", INT64_MAX}, {"a b", INT64_MIN}, {"ü", 0}}}) {
            fremde->setzeTabelle(k, tabelle);
            EXPECT_TRUE(e->tabelle(k) == tabelle && !e->flagge(k) && !e->text(k));
        }
        for (const bool flagge : {false, true}) {
            e->setzeFlagge(k, flagge);
            EXPECT_TRUE(fremde->flagge(k) == flagge && !fremde->text(k) && !fremde->tabelle(k));
        }
        EXPECT_EQ(e->textOderNeu(k, "neu"), "neu") << "no text stood there";
        EXPECT_EQ(fremde->textOderNeu(k, "neuer"), "neu");
        fremde->entferne(k);
        EXPECT_FALSE(e->text(k));
    });
}

TEST(Einstellungen, programmeZugleichVerlierenNichts) {
    inJedem([](const Oeffner& neue) {
        const auto e = neue();
        e->setzeText("bleibt", "da");
        std::vector<std::future<std::string>> programme; // each with a store of its own, as processes have it
        for (int p = 0; p < 4; ++p)
            programme.push_back(std::async(std::launch::async, [&, p, eigene = neue()] {
                auto id = eigene->textOderNeu("kabel.id", std::to_string(p));
                for (int i = 12 * p; i < 12 * p + 12; ++i) {
                    eigene->setzeText(std::to_string(i), std::string(1'000, 'x'));
                    EXPECT_EQ(e->text("bleibt"), "da") << "half a file";
                }
                return id;
            }));
        for (auto& programm : programme) {
            const auto id = programm.get();
            EXPECT_EQ(id, e->text("kabel.id"));
        }
        for (int i = 0; i < 48; ++i)
            EXPECT_TRUE(e->text(std::to_string(i))) << i;
    });
}

class DateiEinstellungenTest : public testing::Test {
protected:
    [[nodiscard]] json inDerDatei() const { return json::parse(ordner.lies(datei), nullptr, false); }

    Ordner ordner;
    std::string datei = "/Library/Preferences/de.mobilsteg.bordlotse.json";
    // On a simulated Mac it is a file even where the system has a store of its own.
    Einstellungsort ort = einstellungenFuer({ordner.pfad(), ordner.pfad()}, "de.mobilsteg.bordlotse");
    Einstellungen& e = *ort.speicher;
};

TEST_F(DateiEinstellungenTest, legtUnverstaendlichesBeiseiteUndUeberschreibtEsNie) {
    const std::string tief = "{\"a\":" + std::string(200'000, '[') + std::string(200'000, ']') + "}";
    for (const auto& [name, inhalt] :
         std::map<std::string, std::string>{{".defekt", ""}, {".defekt-2", "[1]"}, {".defekt-3", tief}}) {
        ordner.lege(datei, inhalt);
        EXPECT_FALSE(e.text("a"));
        EXPECT_EQ(ordner.lies(datei), inhalt) << "looking changes nothing";
        e.setzeFlagge("experte", true);
        EXPECT_EQ(inDerDatei(), (json{{"experte", true}}));
        EXPECT_EQ(ordner.lies(datei + name), inhalt);
    }
}

TEST_F(DateiEinstellungenTest, merktSichWasKeinDatentraegerNimmt) {
    ordner.lege("/Library", "a file where the folder should be");
    EXPECT_EQ(e.textOderNeu("kabel.id", "eins"), "eins");
    EXPECT_EQ(e.textOderNeu("kabel.id", "zwei"), "eins") << "for this run one stands";
    e.setzeFlagge("experte", true);
    e.entferne("browser");
    std::filesystem::remove(ordner.pfad() + "/Library");
    ordner.lege(datei, R"({"alt": true, "browser": true, "kabel.id": "anderes"})");
    EXPECT_EQ(e.textOderNeu("kabel.id", "drei"), "eins");
    EXPECT_EQ(inDerDatei(), (json{{"alt", true}, {"experte", true}, {"kabel.id", "eins"}}));
}

// Too many open files is a moment's trouble: a good settings file must not be taken for a bad one then.
TEST_F(DateiEinstellungenTest, haeltDescriptormangelNichtFuerEineSchlechteDatei) {
    for (std::size_t frei = 0; frei < 4; ++frei) {
        ordner.lege(datei, R"({"kabel.id": "meine"})");
        EXPECT_EQ(e.text("kabel.id"), "meine");
        imEngpass(frei, [&] {
            EXPECT_EQ(e.text("kabel.id"), "meine") << "what was read last still holds";
            e.setzeFlagge("experte", true);
            EXPECT_EQ(e.flagge("experte"), true);
        });
        e.setzeFlagge("neu", true);
        EXPECT_EQ(inDerDatei(), (json{{"experte", true}, {"kabel.id", "meine"}, {"neu", true}})) << frei;
        EXPECT_FALSE(existiert(ordner.pfad() + datei + ".defekt"));
    }
}

} // namespace
