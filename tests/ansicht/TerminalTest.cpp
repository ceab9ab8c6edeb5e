#include "ansicht/Inhalt.hpp"
#include "ansicht/terminal/Eingabe.hpp"
#include "ansicht/terminal/Terminaltafel.hpp"
#include "probe/welt/VirtuelleWelt.hpp"

#include <gmock/gmock.h>

#include <fcntl.h>
#include <unistd.h>

using namespace mobilsteg;

namespace {

TEST(Terminaltafel, einBlockMitGemeinsamerSpalteUndBefehlen) {
    Zustand z;
    z.phase = Phase::proxyFehler("zwei\nZeilen \x1b[31m");
    z.handy = "Pixel";
    EXPECT_EQ(alsText(inhalt(z, false), false),
              "● Mobilsteg Bordlotse\n"
              "zwei Zeilen  [31m\n"
              "────────────────────────────────────────────────────────────\n"
              "Handy         Pixel\n"
              "Klasse        —\n"
              "Durchs Handy  —\n"
              "[ ] Expertenmodus   [Beenden]\n"
              "────────────────────────────────────────────────────────────\n"
              "> experte an  Expertenmodus\n"
              "> beenden     Beenden\n");
}

TEST(Terminaldialog, zeilenAntwortenUndDasEndeDerEingabeSchliesst) {
    int rohr[2];
    ASSERT_EQ(::pipe(rohr), 0);
    ::dup2(rohr[0], STDIN_FILENO);
    ::fcntl(STDIN_FILENO, F_SETFL, O_NONBLOCK); // as another program that shares the input may have left it
    VirtuelleWelt welt;
    Eingabe eingabe(welt.schlange("haupt"), {});
    eingabe.beginne();
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> ausgabe(std::tmpfile(), std::fclose);
    Terminaldialog dialog(ausgabe.get(), eingabe);
    const Frage frage{"Frage?", "Darum.", {"Ja", "Nein"}};
    const std::pair<std::string, std::vector<int>> faelle[] = {
        {"2\n", {1}}, {" Ja \t\n", {0}}, {"3\nNein!\n1", {-1, -1}}};
    for (const auto& [getippt, antworten] : faelle) {
        ASSERT_EQ(::write(rohr[1], getippt.data(), getippt.size()), std::ssize(getippt));
        for (const int antwort : antworten)
            EXPECT_EQ(dialog.frage(frage), antwort) << getippt;
    }
    ::close(rohr[1]); // the last line has no end
    for (const int antwort : {0, -1, -1})
        EXPECT_EQ(dialog.frage(frage), antwort);
}

TEST(Befehle, verstehenNurWasDasFeldZeigt) {
    Zustand reise, experte, vpn;
    experte.experte = true;
    experte.browserOhne = {{"Brave", "b", false, "/b"}};
    vpn.profil = "vpn";
    const auto verborgen = [](const std::string& zeile) {
        return "„" + zeile + "“ ist gerade nicht zu bedienen: Das Feld zeigt es nicht";
    };
    const std::tuple<const Zustand*, std::string, std::string> faelle[] = {
        {&reise, "  experte \t an ", ""},
        {&reise, "proxy", verborgen("proxy")},
        {&reise, "experte aus", "„experte aus“ gilt schon"},
        {&reise, "experte", "So geht der Befehl: experte an|aus"},
        {&reise, "beenden jetzt", "So geht der Befehl: beenden"},
        {&reise, "hinweis weg", verborgen("hinweis weg")},
        {&reise, "browser", "So geht der Befehl: browser NAME"},
        {&experte, "browser Edge", verborgen("browser Edge")},
        {&reise, "Experte an", "Unbekannter Befehl: „Experte an“"},
        {&experte, "profil firma", "So geht der Befehl: profil reise|vpn"},
        {&vpn, "vpn-durch an", verborgen("vpn-durch an")},
    };
    for (const auto& [zustand, zeile, antwort] : faelle) {
        const auto verstanden = verstehe(zeile, inhalt(*zustand, false));
        EXPECT_EQ(verstanden.antwort, antwort);
        EXPECT_EQ(verstanden.aktion.has_value(), antwort.empty()) << zeile;
    }
    for (const auto* zustand : {&reise, &experte, &vpn}) { // every command that is listed is understood
        const Baum baum = inhalt(*zustand, false);
        for (const auto& angebot : angebote(baum)) {
            EXPECT_EQ(verstehe(befehl(angebot.aktion), baum).aktion, angebot.aktion) << angebot.text;
            EXPECT_THAT(alsText(baum, false), testing::HasSubstr("> " + befehl(angebot.aktion)));
        }
    }
}

} // namespace
