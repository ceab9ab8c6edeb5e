// The panel as a tree: what it shows for which state, and what its controls do.

#include "ansicht/Inhalt.hpp"

#include "ansicht/Ausfuehrung.hpp"
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
    const std::string text = alsText(baum, false);
    for (const auto zeile : teile(std::string_view(text).substr(0, text.find("\n>")), '\n'))
        if (!zeile.starts_with("─")) {
            const std::string ganz = std::regex_replace(std::string(zeile), std::regex("  +"), " | ");
            zeilen.emplace_back(ersteZeichen(ganz, 32));
        }
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
    EXPECT_THAT(kurzform(inhalt(Zustand{}, false)),
                ElementsAre("● Mobilsteg Bordlotse", "Starte …", "Handy | —", "Klasse | —",
                            "Durchs Handy | —", "[ ] Expertenmodus | [Beenden]"));
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
}

TEST(Inhalt, vpnBlock) {
    using Namen = std::vector<std::string>;
    const std::tuple<Namen, Namen, bool, Phase, Namen> faelle[] = {
        {{}, {}, true, Phase::Art::faehrt, {"Kein VPN verbunden — verbinden S"}},
        {{"A"}, {}, true, Phase::Art::faehrt, {"● A · gesichert", "Fällt WLAN oder Mobilfunk aus, l"}},
        {{"A", "A"},
         {"B", "C", "B"},
         false,
         Phase::Art::faehrt,
         {"● A · gesichert", "Fällt WLAN oder Mobilfunk aus, l", "○ B · ungesichert", "○ C · ungesichert",
          "Funkloch-Schutz einschalten, dan"}},
        {{}, {"B"}, true, Phase::Art::faehrt, {"○ B · noch nicht gesichert"}},
        {{},
         {"B"},
         false,
         Phase::proxyFehler("x"),
         {"○ B · ungesichert", "Sobald das Handy am Kabel freigi"}}};
    for (const auto& [gesichert, offen, tunnel, phase, zeilen] : faelle) {
        Zustand z;
        z.vpnsGesichert = gesichert;
        z.vpnsOffen = offen;
        z.volltunnelLaeuft = tunnel;
        z.phase = phase;
        EXPECT_EQ(kurzform(vpnBlock(z)), zeilen);
    }
}

TEST(Inhalt, punktFolgtDerPhase) {
    using Art = Phase::Art;
    const std::pair<Phase, Farbe> faelle[] = {
        {Art::start, Farbe::gelb},   {Art::wartetAufHandy, Farbe::gelb}, {Art::pruefung, Farbe::gelb},
        {Art::faehrt, Farbe::gruen}, {Art::keinAdb, Farbe::rot},         {Art::abgelehnt, Farbe::rot}};
    for (const auto& [phase, farbe] : faelle) {
        Zustand z;
        z.phase = phase;
        EXPECT_EQ(std::get<Kopf>(inhalt(z, false).front().inhalt).punkt, farbe) << phase.text();
    }
}

TEST(Ausfuehrung, jederGezeigteSchalterWirkt) {
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
        EXPECT_TRUE(!(w.zustand() == vorher) || beendet == 1) << angebot.text;
    }
    EXPECT_EQ(beendet, 1);
}

} // namespace
