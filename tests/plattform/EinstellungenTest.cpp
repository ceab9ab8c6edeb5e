// What every store of settings promises; and those in a file, on which other programs, crashes and people's
// editors have their hands, too.

#include "plattform/Adapter.hpp"
#include "plattform/Dateien.hpp"
#include "plattform/Kindprozess.hpp"
#include "plattform/Text.hpp"
#include "tests/hilfe/Ordner.hpp"
#include "tests/plattform/Deskriptoren.hpp"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <atomic>
#include <csignal>
#include <thread>

using namespace mobilsteg;
using namespace std::string_literals;
using nlohmann::json;

namespace {

class EinstellungenTest : public testing::TestWithParam<std::string> {
protected:
    ~EinstellungenTest() override {
        if (datei())
            return;
        // The file alone is not enough: the system keeps the range and writes it anew.
        if (auto versuch = starteProzess("/usr/bin/defaults", {"delete", bereich}); versuch.kind)
            (void)versuch.kind->warteUndErnte();
        std::filesystem::remove(eigenesHeim() + "/Library/Preferences/" + bereich + ".plist");
    }
    [[nodiscard]] static bool datei() { return GetParam() == "Datei"; }
    [[nodiscard]] std::unique_ptr<Einstellungen> neue() const {
        return datei() ? dateiEinstellungen(pfad) : nativeEinstellungen(bereich);
    }

    Ordner ordner;
    std::string pfad = ordner.pfad() + "/Library/Preferences/de.mobilsteg.pruefung.json";
    std::string bereich = "de.mobilsteg.pruefung." + neueKennung(); // of the user's real defaults
    std::unique_ptr<Einstellungen> eigene = neue();
    std::unique_ptr<Einstellungen> fremde = neue(); ///< what another program has in hands
};

std::vector<std::string> arten() {
    if (nativeEinstellungen("de.mobilsteg.pruefung"))
        return {"Datei", "Nativ"};
    return {"Datei"};
}
INSTANTIATE_TEST_SUITE_P(Plattform, EinstellungenTest, testing::ValuesIn(arten()));

TEST_P(EinstellungenTest, gebenWerteGenauZurueckUndHaltenDieArtenAuseinander) {
    const std::string k = "proxy.dienst"; // the dot is part of the name
    eigene->entferne(k);                  // one that is not there
    for (const std::string text : {"", " Büro „Süd“ 🚆\n", "\"\\{}<&>%@", "-1", "true"}) {
        eigene->setzeText(k, text);
        EXPECT_EQ(fremde->text(k), text);
        EXPECT_FALSE(fremde->flagge(k) || fremde->tabelle(k)) << text;
    }
    for (const auto& tabelle :
         {Einstellungen::Tabelle{},
          {{"mac.log", INT64_MAX}, {"mac diagnose", INT64_MIN}, {"ü", 0}, {"eins", 1}}}) {
        fremde->setzeTabelle(k, tabelle);
        EXPECT_EQ(eigene->tabelle(k), tabelle);
        EXPECT_FALSE(eigene->flagge(k) || eigene->text(k));
    }
    for (const bool flagge : {false, true}) {
        eigene->setzeFlagge(k, flagge);
        EXPECT_EQ(fremde->flagge(k), flagge);
        EXPECT_FALSE(fremde->text(k) || fremde->tabelle(k)) << "a flag is no number";
    }
    EXPECT_EQ(eigene->textOderNeu(k, "neu"), "neu") << "no text stood there";
    EXPECT_EQ(fremde->textOderNeu(k, "neuer"), "neu");
    fremde->entferne(k);
    EXPECT_FALSE(eigene->text(k));
}

TEST_P(EinstellungenTest, programmeZugleichVerlierenNichts) {
    eigene->setzeText("bleibt", "da");
    std::vector<std::string> antworten(4);
    std::vector<std::thread> programme; // each with a store of its own, as processes would have it
    std::atomic<int> laufende = 4;
    for (std::size_t p = 0; p < antworten.size(); ++p)
        programme.emplace_back([&, p, speicher = neue()] {
            antworten[p] = speicher->textOderNeu("kabel.id", std::to_string(p));
            for (std::size_t s = 0; s < 12; ++s)
                speicher->setzeText(std::to_string(p) + "." + std::to_string(s), std::string(s * 40, 'x'));
            --laufende;
        });
    while (laufende > 0)
        EXPECT_EQ(fremde->text("bleibt"), "da") << "half a file";
    for (auto& programm : programme)
        programm.join();
    for (std::size_t p = 0; p < antworten.size(); ++p) {
        EXPECT_EQ(antworten[p], eigene->text("kabel.id")) << p;
        for (int s = 0; s < 12; ++s)
            EXPECT_TRUE(eigene->text(std::to_string(p) + "." + std::to_string(s))) << p << "." << s;
    }
}

class DateiEinstellungenTest : public testing::Test {
protected:
    [[nodiscard]] json inDerDatei() const { return json::parse(ordner.lies(datei), nullptr, false); }

    Ordner ordner;
    std::string datei = "/Library/Preferences/de.mobilsteg.bordlotse.json";
    std::unique_ptr<Einstellungen> speicher = dateiEinstellungen(ordner.pfad() + datei);
    Einstellungen& e = *speicher;
};

TEST_F(DateiEinstellungenTest, falscherTypIstWieNichts) {
    const json inhalt = json::parse(R"({"text": "ja", "tabelle": {"mac.log": 7, "leer": -1}, "zahl": 1,
        "null": null, "bruch": {"a": 1.5}, "riesig": {"a": 9223372036854775808}})");
    ordner.lege(datei, inhalt.dump());
    for (const auto& [schluessel, wert] : inhalt.items()) {
        EXPECT_EQ(e.text(schluessel).has_value(), schluessel == "text") << schluessel;
        EXPECT_FALSE(e.flagge(schluessel)) << schluessel;
        EXPECT_EQ(e.tabelle(schluessel).has_value(), schluessel == "tabelle") << schluessel;
    }
}

TEST_F(DateiEinstellungenTest, legtUnverstaendlichesBeiseiteUndUeberschreibtEsNie) {
    const std::string tief = "{\"a\":" + std::string(200'000, '[') + std::string(200'000, ']') + "}";
    int nummer = 0;
    for (const std::string& inhalt : {""s, "kein json"s, "[1]"s, R"({"a":1} x)"s, "\xFF"s, tief}) {
        ordner.lege(datei, inhalt);
        EXPECT_FALSE(e.text("a"));
        EXPECT_EQ(ordner.lies(datei), inhalt) << "looking changes nothing";
        e.setzeFlagge("experte", true);
        EXPECT_EQ(inDerDatei(), (json{{"experte", true}}));
        const std::string zweiter = ++nummer == 1 ? ".defekt" : ".defekt-" + std::to_string(nummer);
        EXPECT_EQ(ordner.lies(datei + zweiter), inhalt);
    }
}

TEST_F(DateiEinstellungenTest, merktSichWasKeinDatentraegerNimmt) {
    ordner.lege("/Library", "a file where the folder should be");
    e.setzeText("proxy.dienst", "Wi-Fi");
    EXPECT_EQ(e.textOderNeu("kabel.id", "eins"), "eins");
    EXPECT_EQ(e.textOderNeu("kabel.id", "zwei"), "eins") << "for this run one stands";
    EXPECT_EQ(e.text("proxy.dienst"), "Wi-Fi");

    std::filesystem::remove(ordner.pfad() + "/Library");
    ordner.lege(datei, R"({"alt": true, "browser": true, "kabel.id": "anderes"})");
    EXPECT_EQ(e.textOderNeu("kabel.id", "drei"), "eins");
    rlimit vorher{};
    ::getrlimit(RLIMIT_FSIZE, &vorher);
    const rlimit voll{0, vorher.rlim_max};
    std::signal(SIGXFSZ, SIG_IGN);
    ::setrlimit(RLIMIT_FSIZE, &voll); // as if the disk were full
    e.setzeFlagge("experte", true);
    e.entferne("browser");
    ::setrlimit(RLIMIT_FSIZE, &vorher);
    EXPECT_EQ(e.flagge("experte"), true);
    EXPECT_FALSE(e.flagge("browser"));
    e.entferne("experte");
    EXPECT_EQ(inDerDatei(), (json{{"alt", true}, {"kabel.id", "eins"}, {"proxy.dienst", "Wi-Fi"}}));
}

// Too many open files is a moment's trouble: a good settings file must not be taken for a bad one then.
TEST_F(DateiEinstellungenTest, haeltDescriptormangelNichtFuerEineSchlechteDatei) {
    for (int frei = 0; frei < 4; ++frei) {
        const std::string wert = std::to_string(frei);
        ordner.lege(datei, R"({"kabel.id": "meine", "proxy.dienst": ")" + wert + "\"}");
        EXPECT_EQ(e.text("kabel.id"), "meine");
        {
            const Engpass engpass(frei);
            EXPECT_EQ(e.text("proxy.dienst"), wert) << "what was read last still holds";
            e.setzeFlagge("experte", true);
            EXPECT_EQ(e.flagge("experte"), true);
        }
        EXPECT_EQ(e.text("proxy.dienst"), wert) << frei << " frei";
        e.setzeFlagge("neu", true);
        EXPECT_EQ(inDerDatei().size(), 4U) << frei << " frei";
        EXPECT_FALSE(existiert(ordner.pfad() + datei + ".defekt"));
    }
}

} // namespace
