// The panel as a tree: what it shows for which state, and what its controls do.

#include "ansicht/Inhalt.hpp"

#include "ansicht/terminal/Terminaltafel.hpp"
#include "plattform/Text.hpp"
#include "tests/hilfe/KabelWelt.hpp"

#include <gmock/gmock.h>

#include <regex>

using namespace mobilsteg;
using namespace testing;

namespace {

/// The beginnings of the lines that a reader sees, without the dividers and the commands.
std::vector<std::string> kurzform(const Baum& baum) {
    std::vector<std::string> zeilen;
    const std::string text = std::regex_replace(alsText(baum, false), std::regex("  +"), " | ");
    for (const auto zeile : teile(std::string_view(text).substr(0, text.find("\n>")), '\n'))
        if (!zeile.starts_with("─"))
            zeilen.emplace_back(ersteZeichen(zeile, 32));
    return zeilen;
}

Zustand fahrend() {
    Zustand z;
    z.phase = Phase::Art::faehrt;
    z.handy = "Pixel";
    z.klasse = "1. Klasse";
    z.gleise = {"WLAN · 42 ms", "Mobilfunk · weg"};
    z.menge = "12,4 MB";
    return z;
}

TEST(Inhalt, reise) {
    Zustand z = fahrend();
    z.notlage = z.volltunnelLaeuft = true;
    z.rettung = "1 Funkloch";
    z.meldung = "Erst freigeben.";
    z.browserOhne = {{"Edge", "e", false, "/b"}};
    EXPECT_THAT(kurzform(inhalt(z, false)),
                ElementsAre("● Mobilsteg Bordlotse", "Fährt mit", "Handy | Pixel",
                            "Klasse | 1. Klasse · Notlage", "Gleis 1 | WLAN · 42 ms",
                            "Gleis 2 | Mobilfunk · weg", "Durchs Handy | 12,4 MB", "✓ 1 Funkloch",
                            "Volltunnel | aktiv — alles fährt", "Erst freigeben.",
                            "fahrtwind fehlt im Browser — die", "[In Edge hinzufügen] | [×]",
                            "[ ] Expertenmodus | [Beenden]"));
    z.klasse = "";
    z.browserHinweisWeg = true;
    const auto zeilen = kurzform(inhalt(z, false));
    EXPECT_THAT(zeilen, Contains("Klasse | —")) << "no emergency without a class";
    EXPECT_THAT(zeilen, Not(Contains(HasSubstr("Edge"))));
}

TEST(Inhalt, experte) {
    Zustand z = fahrend();
    z.experte = z.proxyGesetzt = z.volltunnelLaeuft = true;
    z.austritt = "203.0.113.7";
    z.durch = {"Safari (3)", "curl (1)"};
    z.vorbei = {"Mail (2)"};
    const auto zeilen = kurzform(inhalt(z, false));
    EXPECT_THAT(std::vector(zeilen.begin() + 7, zeilen.end()),
                ElementsAre("Proxy am Mac | 127.0.0.1:1080 an", "Draußen als | 203.0.113.7",
                            "Durch Proxy | Safari (3), curl (", "Am Proxy vorbei | Mail (2)",
                            "Diese Programme beachten den Sys", "[x] System-Proxy automatisch set",
                            "[Proxy entfernen]", "[ ] Volltunnel: alles vom Mac du",
                            "Volltunnel | aktiv — Standardrou", "[ ] VPNs durch das Handy (Tailsc",
                            "[ ] Nur VPNs durchs Handy (Stand", "An: VPN-Clients fahren gebündelt",
                            "Protokoll: ~/Library/Logs/Mobils", "Profil:", "(•) Reise (Bordlotse)",
                            "( ) Firmen-VPN (VPN-Lotse)", "[x] Expertenmodus | [Beenden]"));
    z = Zustand{};
    z.experte = true;
    EXPECT_THAT(kurzform(inhalt(z, false)), IsSupersetOf({"Proxy am Mac | aus", "Draußen als | —",
                                                          "[Proxy jetzt setzen]", "Volltunnel | aus"}));
}

TEST(Inhalt, vpn) {
    Zustand z;
    z.profil = "vpn";
    z.nurVPN = true;
    z.browserOhne = {{"Edge", "e", false, "/b"}};
    EXPECT_THAT(kurzform(inhalt(z, false)),
                ElementsAre("● Mobilsteg Bordlotse · VPN", "Ihr VPN übersteht Funklöcher", "Starte …",
                            "Kein VPN verbunden.", "Handy | —", "Klasse | —", "Durchs Handy | —",
                            "[ ] Funkloch-Schutz (Volltunnel,", "[x] Nur den VPN durchs Handy — a",
                            "[ ] Expertenmodus | [Beenden]"));
    z.experte = true;
    EXPECT_THAT(kurzform(inhalt(z, true)),
                AllOf(Contains("● Mobilsteg VPN-Lotse"), Not(Contains(HasSubstr("Funkloch-Schutz")))));
    const auto block = [&](bool tunnel, const Phase& phase, const char* gesichert, const char* offen) {
        z.volltunnelLaeuft = tunnel;
        z.phase = phase;
        const auto g = teile(gesichert, ' '), o = teile(offen, ' ');
        z.vpnsGesichert = {g.begin(), g.end()};
        z.vpnsOffen = {o.begin(), o.end()};
        return verbunden(kurzform(vpnBlock(z)), "\n");
    };
    const Phase faehrt = Phase::Art::faehrt;
    EXPECT_EQ(block(true, faehrt, "", ""), "Kein VPN verbunden — verbinden S");
    EXPECT_EQ(block(true, faehrt, "A", ""), "● A · gesichert\nFällt WLAN oder Mobilfunk aus, l");
    EXPECT_EQ(block(false, faehrt, "A A", "B C B"),
              "● A · gesichert\nFällt WLAN oder Mobilfunk aus, l\n"
              "○ B · ungesichert\n○ C · ungesichert\nFunkloch-Schutz einschalten, dan");
    EXPECT_EQ(block(true, faehrt, "", "B"), "○ B · noch nicht gesichert");
    EXPECT_EQ(block(false, Phase::proxyFehler("x"), "", "B"),
              "○ B · ungesichert\nSobald das Handy am Kabel freigi");
}

TEST(Inhalt, punktFolgtDerPhase) {
    using enum Phase::Art;
    const auto punkt = [](const Phase& phase) {
        Zustand z;
        z.phase = phase;
        return std::get<Kopf>(inhalt(z, false).front().inhalt).punkt;
    };
    for (const auto gelb : {start, wartetAufHandy, pruefung})
        EXPECT_EQ(punkt(gelb), Farbe::gelb);
    for (const auto rot : {keinAdb, abgelehnt})
        EXPECT_EQ(punkt(rot), Farbe::rot);
    EXPECT_EQ(punkt(faehrt), Farbe::gruen);
}

TEST(Bedienung, jederGezeigteSchalterWirkt) {
    KabelWelt w;
    w.einstellungen.werte["volltunnel.erklaert"] = true;
    w.baue();
    int beendet = 0;
    const auto bediene = [&](const Aktion& aktion) {
        w.haupt.sync([&] { fuehreAus(aktion, *w.kabel, [&] { ++beendet; }); });
    };
    bediene({Bedienung::experte, "an"});
    const auto liste = angebote(inhalt(w.zustand(), false));
    EXPECT_EQ(liste.size(), 8U);
    for (const auto& angebot : liste) {
        const auto vorher = w.zustand();
        bediene(angebot.aktion);
        w.welt.laufe({});
        EXPECT_FALSE(w.zustand() == vorher && beendet == 0) << angebot.text;
    }
    EXPECT_EQ(beendet, 1);
}

} // namespace
