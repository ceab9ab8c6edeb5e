// The panel as a tree and in the terminal: what it shows for which state, and what its controls do.

#include "ansicht/Inhalt.hpp"

#include "ansicht/terminal/Befehle.hpp"
#include "ansicht/terminal/Eingabe.hpp"
#include "ansicht/terminal/Terminaltafel.hpp"
#include "plattform/AsioSchlange.hpp"
#include "plattform/Text.hpp"
#include "tests/hilfe/KabelWelt.hpp"

#include <gmock/gmock.h>

#include <fcntl.h>
#include <unistd.h>

using namespace mobilsteg;
using namespace testing;

namespace {

/// The beginnings of the panel's lines, without the commands.
std::vector<std::string> kurzform(const Baum& baum) {
    std::vector<std::string> zeilen;
    const std::string text = alsText(baum);
    for (const auto zeile : teile(std::string_view(text).substr(0, text.find("\n>")), '\n'))
        zeilen.emplace_back(ersteZeichen(zeile, zeile.starts_with("──") ? 1 : 32));
    zeilen.pop_back(); // the rule above the commands
    return zeilen;
}

struct Inhalt : Test {
    Zustand z;
};

TEST_F(Inhalt, reise) {
    z.phase = Phase::Art::faehrt;
    z.handy = "Pixel";
    z.klasse = "1. Klasse";
    z.gleise = {"WLAN · 42 ms", "Mobilfunk · weg"};
    z.menge = "12,4 MB";
    z.notlage = z.volltunnelLaeuft = true;
    z.rettung = "1 Funkloch";
    z.meldung = "zwei\nZeilen \x1b[31m";
    z.browserOhne = {{"Edge", "e", false, "/b"}};
    EXPECT_THAT(kurzform(inhalt(z, false)),
                ElementsAre("● Mobilsteg Bordlotse", "Fährt mit", "─", "Handy         Pixel",
                            "Klasse        1. Klasse · Notlag", "Gleis 1       WLAN · 42 ms",
                            "Gleis 2       Mobilfunk · weg", "Durchs Handy  12,4 MB", "✓ 1 Funkloch",
                            "Volltunnel    aktiv — alles fähr", "zwei Zeilen  [31m", "─",
                            "fahrtwind fehlt im Browser — die", "[In Edge hinzufügen]   [×]",
                            "[ ] Expertenmodus   [Beenden]"));
    z.browserHinweisWeg = true, z.volltunnelLaeuft = false;
    EXPECT_THAT(kurzform(inhalt(z, false)), Not(Contains(ContainsRegex("Edge|Volltunnel"))));
}

TEST_F(Inhalt, experte) {
    z.experte = true;
    EXPECT_THAT(kurzform(inhalt(z, false)), IsSupersetOf({"Proxy am Mac  aus", "Draußen als   —",
                                                          "[Proxy jetzt setzen]", "Volltunnel    aus"}));
    z.proxyGesetzt = z.volltunnelLaeuft = true;
    z.austritt = "203.0.113.7";
    z.durch = {"Safari (3)", "curl (1)"};
    z.vorbei = {"Mail (2)"};
    const auto zeilen = kurzform(inhalt(z, false));
    EXPECT_THAT(std::vector(zeilen.begin() + 6, zeilen.end()),
                ElementsAre("─", "Proxy am Mac     127.0.0.1:1080 ", "Draußen als      203.0.113.7",
                            "Durch Proxy      Safari (3), cur", "Am Proxy vorbei  Mail (2)",
                            "Diese Programme beachten den Sys", "[x] System-Proxy automatisch set",
                            "[Proxy entfernen]", "[ ] Volltunnel: alles vom Mac du",
                            "Volltunnel       aktiv — Standar", "[ ] VPNs durch das Handy (Tailsc",
                            "[ ] Nur VPNs durchs Handy (Stand", "An: VPN-Clients fahren gebündelt",
                            "Protokoll: ~/Library/Logs/Mobils", "Profil:", "(•) Reise (Bordlotse)",
                            "( ) Firmen-VPN (VPN-Lotse)", "[x] Expertenmodus   [Beenden]"));
}

TEST_F(Inhalt, vpn) {
    z.profil = "vpn";
    z.nurVPN = true;
    z.browserOhne = {{"Edge", "e", false, "/b"}};
    EXPECT_THAT(kurzform(inhalt(z, true)),
                ElementsAre("● Mobilsteg VPN-Lotse", "Ihr VPN übersteht Funklöcher", "Starte …", "─",
                            "Kein VPN verbunden.", "─", "Handy         —", "Klasse        —",
                            "Durchs Handy  —", "[ ] Funkloch-Schutz (Volltunnel,",
                            "[x] Nur den VPN durchs Handy — a", "[ ] Expertenmodus   [Beenden]"));
}

TEST_F(Inhalt, jederVpnStehtEinmalDaUndWieErGesichertIst) {
    using Vpns = std::vector<std::string>;
    const Phase faehrt = Phase::Art::faehrt;
    const std::tuple<bool, Phase, Vpns, Vpns, const char*> faelle[] = {
        {true, faehrt, {}, {}, "Kein VPN verbunden — verbinden S"},
        {true, faehrt, {"A"}, {}, "● A · gesichert\nFällt WLAN oder Mobilfunk aus, l"},
        {true, faehrt, {}, {"B", "C", "B"}, "○ B · noch nicht gesichert\n○ C · noch nicht gesichert"},
        {false, faehrt, {}, {"B"}, "○ B · ungesichert\nFunkloch-Schutz einschalten, dan"},
        {false, Phase::Art::pruefung, {}, {"B"}, "○ B · ungesichert\nSobald das Handy am Kabel freigi"}};
    for (const auto& [tunnel, phase, gesichert, offen, soll] : faelle) {
        z.volltunnelLaeuft = tunnel;
        z.phase = phase;
        z.vpnsGesichert = gesichert;
        z.vpnsOffen = offen;
        EXPECT_EQ(verbunden(kurzform(vpnBlock(z)), "\n"), soll);
    }
}

TEST_F(Inhalt, punktFolgtDerPhase) {
    using enum Phase::Art;
    for (const auto& [phase, punkt] : std::map<Phase::Art, std::string>{{start, "33m◐"},
                                                                        {wartetAufHandy, "33m◐"},
                                                                        {pruefung, "33m◐"},
                                                                        {faehrt, "32m●"},
                                                                        {abgelehnt, "31m○"}}) {
        z.phase = phase;
        EXPECT_THAT(alsText(inhalt(z, false), {true, 60}), StartsWith("\x1b[" + punkt + " \x1b[0m"));
    }
}

TEST(Bedienung, jederGezeigteSchalterWirkt) {
    KabelWelt w;
    w.einstellungen.werte = {{"experte", true}, {"volltunnel.erklaert", true}};
    w.baue();
    int beendet = 0;
    for (const auto& angebot : angebote(inhalt(w.zustand(), false))) {
        const auto vorher = w.zustand();
        w.bediene([&](Kabel& k) { fuehreAus(angebot.aktion, k, [&] { ++beendet; }); });
        EXPECT_FALSE(w.zustand() == vorher && beendet == 0) << angebot.text;
    }
    EXPECT_EQ(beendet, 1);
}

TEST(Befehle, verstehenNurWasDasPanelZeigt) {
    Zustand reise, experte, vpn;
    experte.experte = true;
    experte.browserOhne = {{"Brave", "b", false, "/b"}};
    vpn.profil = "vpn";
    EXPECT_THAT(alsText(inhalt(reise, false)),
                EndsWith("\n> experte an  Expertenmodus\n> beenden     Beenden\n"));
    const std::string verborgen = "“ ist gerade nicht zu bedienen: Das Panel zeigt es nicht";
    const std::tuple<const Zustand*, std::string, std::string> faelle[] = {
        {&reise, "  experte \t an ", ""},
        {&reise, "experte aus", "„experte aus“ ist schon so eingestellt"},
        {&reise, "experte", "So geht der Befehl: experte an|aus"},
        {&reise, "beenden jetzt", "So geht der Befehl: beenden"},
        {&reise, "browser", "So geht der Befehl: browser NAME"},
        {&experte, "browser Edge", "„browser Edge" + verborgen},
        {&experte, "browser brave", ""},
        {&reise, "Experte AN", ""},
        {&experte, "experten an", "Unbekannter Befehl: „experten an“"},
        {&vpn, "vpn-durch an", "„vpn-durch an" + verborgen}};
    for (const auto& [zustand, zeile, antwort] : faelle)
        EXPECT_EQ(verstehe(zeile, inhalt(*zustand, false)).antwort, antwort);
    for (const char* frage : {"hilfe", "Help", "?"})
        EXPECT_THAT(verstehe(frage, {}).antwort, StartsWith("Befehle: hilfe · experte an|aus · proxy"));
    for (const auto* zustand : {&experte, &vpn}) { // every command that is listed is understood
        const Baum baum = inhalt(*zustand, false);
        for (const auto& angebot : angebote(baum))
            EXPECT_EQ(verstehe(befehl(angebot.aktion), baum).aktion, angebot.aktion) << angebot.text;
    }
}

TEST(Eingabe, bringtJedeZeileUndDannDasEnde) {
    int rohr[2];
    ASSERT_EQ(::pipe(rohr), 0);
    ::dup2(rohr[0], STDIN_FILENO);
    std::string getippt, gehoert;
    for (int i = 0; i < 3000; ++i) // more than may wait
        getippt += std::to_string(i) + "\n";
    ASSERT_EQ(::write(rohr[1], getippt.data(), getippt.size() - 1), std::ssize(getippt) - 1);
    ::close(rohr[1]);
    AsioSchlange haupt("haupt", AsioSchlange::Faden::rufer);
    Eingabe eingabe(
        haupt, [&](const std::string& zeile) { gehoert += zeile + "\n"; }, [&] { haupt.halt(); });
    eingabe.beginne(nullptr);
    haupt.laufe();
    EXPECT_EQ(gehoert, getippt);
}

TEST(Terminaldialog, fragtBisZurAntwortOderZumEndeDerEingabe) {
    int rohr[2];
    ASSERT_EQ(::pipe(rohr), 0);
    ::dup2(rohr[0], STDIN_FILENO);
    ::fcntl(STDIN_FILENO, F_SETFL, O_NONBLOCK); // as another program that shares the input may have left it
    VirtuelleWelt welt;
    Eingabe eingabe(welt.schlange("haupt"), {}, [] {});
    eingabe.beginne(nullptr);
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> ausgabe(std::tmpfile(), std::fclose);
    Terminaltafel tafel(ausgabe.get(), nullptr);
    for (int i = 0; i < 2; ++i) // is drawn once
        tafel.zeichne(inhalt({}, false));
    Terminaldialog dialog(tafel, eingabe);
    const auto frage = [&] { return dialog.frage({"Frage?", "Darum.", {"Ja, gern", "Nein, danke"}}); };
    const std::string getippt = "2\n JA \t\n3\n\nnein, danke!\nx\nNein, d\n1"; // the last line has no end
    ASSERT_EQ(::write(rohr[1], getippt.data(), getippt.size()), std::ssize(getippt));
    for (const int antwort : {1, 0, 1})
        EXPECT_EQ(frage(), antwort);
    ::close(rohr[1]);
    for (const int antwort : {0, -1})
        EXPECT_EQ(frage(), antwort);
    std::string alles(4096, '\0');
    std::rewind(ausgabe.get());
    alles.resize(std::fread(alles.data(), 1, alles.size(), ausgabe.get()));
    const std::string frag = "Frage?\nDarum.\n1) Ja, gern\n2) Nein, danke\n\n",
                      hilf = "Antworten sind: 1 oder „Ja, gern“, 2 oder „Nein, danke“\n\n";
    EXPECT_EQ(alles, alsText(inhalt({}, false)) + "\n" + frag + frag + frag + hilf + hilf + hilf + hilf +
                         frag + frag);
    const Frage tunnel{"", "", {"Weiter", "Weg damit"}}, hinweis{"", "", {"Verstanden"}};
    EXPECT_EQ(antwortAuf(tunnel, "ja"), 0);
    EXPECT_EQ(antwortAuf(tunnel, "nein"), 1);
    EXPECT_EQ(antwortAuf(tunnel, "we"), std::nullopt); // two begin so
    EXPECT_EQ(antwortAuf(hinweis, "nein"), std::nullopt);
}

} // namespace
