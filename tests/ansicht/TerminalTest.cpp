#include "ansicht/Inhalt.hpp"
#include "ansicht/terminal/Befehle.hpp"
#include "ansicht/terminal/Eingabe.hpp"
#include "ansicht/terminal/Terminaltafel.hpp"
#include "probe/welt/VirtuelleWelt.hpp"

#include <gmock/gmock.h>

#include <fcntl.h>
#include <unistd.h>

using namespace mobilsteg;
using testing::HasSubstr;

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
    const auto schreibe = [&](std::string_view text) { (void)!::write(rohr[1], text.data(), text.size()); };
    for (const auto& [zeile, antwort] : std::initializer_list<std::pair<const char*, int>>{
             {"2\n", 1}, {" Ja \t\n", 0}, {"3\nNein!\n", -1}, {"", -1}, {"1\n", 0}, {"2\n", 1}}) {
        schreibe(zeile);
        EXPECT_EQ(dialog.frage(frage), antwort) << zeile;
    }
    schreibe("1"); // the last one without its line end
    ::close(rohr[1]);
    for (const int antwort : {0, -1, -1})
        EXPECT_EQ(dialog.frage(frage), antwort);
}

TEST(Befehle, verstehenNurWasDasFeldZeigt) {
    Zustand reise;
    Zustand experte;
    experte.experte = true;
    Zustand vpn;
    vpn.profil = "vpn";
    const auto verborgen = [](const std::string& zeile) {
        return "„" + zeile + "“ ist gerade nicht zu bedienen: Das Feld zeigt es nicht";
    };
    const std::tuple<const Zustand*, const char*, std::optional<Aktion>, std::string> faelle[] = {
        {&reise, "experte an", Aktion{Bedienung::experte, "an"}, ""},
        {&reise, "  beenden\t", Aktion{Bedienung::beenden, ""}, ""},
        {&reise, "proxy", {}, verborgen("proxy")},
        {&reise, "experte aus", {}, "„experte aus“ gilt schon"},
        {&reise, "experte", {}, "So geht der Befehl: experte an|aus"},
        {&reise, "beenden jetzt", {}, "So geht der Befehl: beenden"},
        {&reise, "hinweis weg", {}, verborgen("hinweis weg")},
        {&reise, "Experte an", {}, "Unbekannter Befehl: „Experte an“"},
        {&experte, "proxy", Aktion{Bedienung::proxy, ""}, ""},
        {&experte, "vpn-durch an", Aktion{Bedienung::vpnDurch, "an"}, ""},
        {&experte, "profil   vpn", Aktion{Bedienung::profil, "vpn"}, ""},
        {&experte, "profil firma", {}, "So geht der Befehl: profil reise|vpn"},
        {&vpn, "nur-vpn an", Aktion{Bedienung::nurVPN, "an"}, ""},
        {&vpn, "vpn-durch an", {}, verborgen("vpn-durch an")},
    };
    for (const auto& [zustand, zeile, aktion, antwort] : faelle) {
        const auto verstanden = verstehe(zeile, inhalt(*zustand, false));
        EXPECT_EQ(verstanden.aktion, aktion) << zeile;
        EXPECT_EQ(verstanden.antwort, antwort) << zeile;
        if (aktion) { // every command that is listed is understood
            EXPECT_THAT(alsText(inhalt(*zustand, false), false), HasSubstr("> " + befehl(*aktion)));
        }
    }
}

} // namespace
