#pragma once

// What every store of settings promises, whichever system keeps it.

#include "plattform/Einstellungen.hpp"
#include "tests/plattform/vertrag/Art.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <thread>
#include <vector>

namespace mobilsteg {

/// An empty store for one test.
class Einstellungsbank {
public:
    virtual ~Einstellungsbank() = default;
    virtual Einstellungen& speicher() = 0;

    /// What another program has in hands that opens the same store; absent: it is this program's alone.
    virtual std::unique_ptr<Einstellungen> fremder() { return nullptr; }
};

using Einstellungsart = Art<std::unique_ptr<Einstellungsbank>()>;

class EinstellungenVertrag : public testing::TestWithParam<Einstellungsart> {
protected:
    /// The store as this program sees it, and as others do.
    [[nodiscard]] std::vector<const Einstellungen*> sichten() const {
        return fremder ? std::vector<const Einstellungen*>{&e, fremder.get()}
                       : std::vector<const Einstellungen*>{&e};
    }

    std::unique_ptr<Einstellungsbank> bank = GetParam().baue();
    Einstellungen& e = bank->speicher();
    std::unique_ptr<Einstellungen> fremder = bank->fremder();
};

TEST_P(EinstellungenVertrag, haeltDieArtenAuseinander) {
    const std::string k = "proxy.dienst"; // the dot is part of the name
    const std::function<void()> setzer[] = {[&] { e.setzeText(k, "1"); }, [&] { e.setzeFlagge(k, true); },
                                            [&] {
                                                e.setzeTabelle(k, {{"a", 1}});
                                            },
                                            [&] { e.entferne(k); }};
    e.entferne(k); // one that is not there
    for (const int art : {3, 0, 1, 2, 0, 2, 1, 3}) {
        setzer[art]();
        for (const auto* sicht : sichten()) {
            EXPECT_EQ(sicht->text(k).has_value(), art == 0);
            EXPECT_EQ(sicht->flagge(k).has_value(), art == 1) << "1 is no flag, and a flag is no number";
            EXPECT_EQ(sicht->tabelle(k).has_value(), art == 2);
        }
    }
    e.setzeFlagge(k, true);
    EXPECT_EQ(e.textOderNeu(k, "neu"), "neu") << "no text stood there";
    EXPECT_EQ(e.textOderNeu(k, "neuer"), "neu");
    EXPECT_EQ(e.text(k), "neu");
}

TEST_P(EinstellungenVertrag, gibtWerteGenauZurueck) {
    for (const std::string text : {"", " Büro „Süd“ 🚆\n", "\"\\{}<&>%@", "-1", "true"})
        for (const auto* sicht : (e.setzeText("text", text), sichten()))
            EXPECT_EQ(sicht->text("text"), text);
    for (const bool flagge : {false, true})
        for (const auto* sicht : (e.setzeFlagge("flagge", flagge), sichten()))
            EXPECT_EQ(sicht->flagge("flagge"), flagge);
    for (const auto& tabelle : {Einstellungen::Tabelle{},
                                {{"mac.log", INT64_MAX}, {"mac diagnose", INT64_MIN}, {"ü", 0}, {"eins", 1}}})
        for (const auto* sicht : (e.setzeTabelle("tabelle", tabelle), sichten()))
            EXPECT_EQ(sicht->tabelle("tabelle"), tabelle);
}

/// For those that outlive the program.
class GeteilteEinstellungenVertrag : public EinstellungenVertrag {};

TEST_P(GeteilteEinstellungenVertrag, sehenWasAndereProgrammeAendern) {
    fremder->setzeText("proxy.dienst", "Wi-Fi");
    e.setzeFlagge("experte", true);
    EXPECT_EQ(e.text("proxy.dienst"), "Wi-Fi") << "only the own key changes";
    fremder->entferne("proxy.dienst");
    EXPECT_FALSE(e.text("proxy.dienst"));
    EXPECT_EQ(fremder->flagge("experte"), true);

    std::vector<std::thread> faeden;
    std::vector<std::string> antworten(4);
    for (std::size_t f = 0; f < antworten.size(); ++f)
        faeden.emplace_back([&, f, eigener = f == 0 ? nullptr : bank->fremder()] {
            Einstellungen& meine = eigener ? *eigener : e;
            antworten[f] = meine.textOderNeu("kabel.id", std::to_string(f));
            for (int n = 0; n < 8; ++n)
                meine.setzeFlagge(std::to_string(f) + "." + std::to_string(n), true);
        });
    for (auto& faden : faeden)
        faden.join();
    for (std::size_t f = 0; f < antworten.size(); ++f) {
        EXPECT_EQ(e.text("kabel.id"), antworten[f]);
        for (int n = 0; n < 8; ++n)
            EXPECT_EQ(e.flagge(std::to_string(f) + "." + std::to_string(n)), true) << f << "." << n;
    }
}

} // namespace mobilsteg
