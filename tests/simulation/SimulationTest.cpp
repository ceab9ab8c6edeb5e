// Nothing is left behind, under every seed of a world that fails, hangs and changes.

#include "tests/simulation/Zufallswelt.hpp"

#include <gmock/gmock.h>

using namespace mobilsteg;

namespace {

/// MOBILSTEG_SAMEN=1-10000 makes it a long one, MOBILSTEG_SAMEN=737 tells the story of one seed.
TEST(Simulation, keinSamenBrichtEineInvariante) {
    const char* wunsch = std::getenv("MOBILSTEG_SAMEN");
    std::uintmax_t ab = 1, bis = SAMENZAHL;
    const int zahlen = wunsch == nullptr ? 2 : std::sscanf(wunsch, "%ju-%ju", &ab, &bis);
    ASSERT_GT(zahlen, 0) << wunsch;
    bis = zahlen == 1 ? ab : bis;
    std::map<std::string, int> summe;
    for (std::uintmax_t samen = ab; samen <= bis; ++samen) {
        Zufallswelt welt(samen);
        welt.erzaehlt = zahlen == 1;
        welt.lebe();
        ASSERT_EQ(welt.verstoss, "") << "MOBILSTEG_SAMEN=" << samen;
        for (const auto& [was, wieOft] : welt.zaehler)
            summe[was] += wieOft;
    }
    std::cout << testing::PrintToString(summe) << '\n';
}

using W = Zufallswelt;
using Bruch = std::function<void(W&)>;

/// What also happens at each call of a tool with that in it, and what the call ends with instead.
Bruch beiAufruf(const char* stueck, const Bruch& was, const std::optional<Ergebnis>& statt = {}) {
    return [=](W& w) {
        w.stattWerkzeug = [=, &w](const std::string& aufruf) {
            const bool trifft = aufruf.find(stueck) != aufruf.npos;
            if (trifft)
                was(w);
            return trifft ? statt : std::nullopt;
        };
    };
}

/// The state document with other words.
Bruch imStand(const std::string& diese, const std::string& andere) {
    return [=](W& w) {
        w.vorPruefung = [=, &dokument = w.standdienst.dokument] {
            if (const auto stelle = dokument.find(diese); stelle != dokument.npos)
                dokument.replace(stelle, diese.size(), andere);
        };
    };
}

/// The panel with other values.
Bruch imFeld(const std::function<void(Zustand&)>& andere) {
    return [=](W& w) {
        w.vorPruefung = [=, &w] { w.haupt.async([=, &w] { w.kabel->speicher().aendere(andere); }); };
    };
}

/// What is broken here on purpose must be noticed, or a fault of the program would pass, too.
TEST(Simulation, jedeInvarianteKannBrechen) {
    if (SAMENZAHL < 100)
        GTEST_SKIP() << "this looks at the checks, not at the program; a sanitizer has nothing to find here";
    const Ergebnis gelogen{0, "", ""}, unser{0, "Enabled: Yes\nServer: 127.0.0.1\nPort: 1080\n", ""};
    const Ergebnis viele{0, "R5CT1 tcp:1080 tcp:1080\nZWEITES tcp:1080 tcp:1080\n", ""};
    const auto nichts = [](W&) {};
    const auto lege = [](const std::string& datei) { schreibeAtomar(datei, "", Haltbarkeit::fluechtig); };
    const std::pair<Bruch, const char*> brueche[] = {
        {beiAufruf(" off", nichts, gelogen), "zwei Ticks nach dem Verlust des Weges ist der Proxy aus"},
        {beiAufruf(" off", nichts, gelogen), "am Ende ist kein Proxy gesetzt"},
        {beiAufruf(" off", [](W& w) { w.welt.uhr().schlafe(500s); }), "das Aufräumen endet"},
        {beiAufruf("-getsocks", nichts, unser), "der Proxy des Benutzers bleibt an"},
        {beiAufruf("--remove", nichts, gelogen), "am Ende steht keine Weiterleitung"},
        {beiAufruf("--remove", [](W& w) { w.einstellungen.werte["proxy.ungewiss"] = "Wi-Fi"; }),
         "am Ende ist kein Proxy gemerkt"},
        {beiAufruf("", [&](W& w) { lege(w.stoppPfad() + ".laeuft"); }),
         "zwei Ticks nach dem Verlust des Weges ist der Tunnel aus"},
        {beiAufruf("", [](W& w) { w.tunnel.taub = w.zaehler["Ticks"] > 140; }), "am Ende lebt kein Helfer"},
        {beiAufruf("", [&](W& w) { w.haupt.async([&] { lege(w.stoppPfad()); }); }),
         "beim Start liegt keine alte Bitte um Stopp"},
        {beiAufruf("", [](W& w) { w.meisteHelfer += w.helfer; }), "nie lebt mehr als ein Helfer"},
        {beiAufruf("", [](W& w) { w.abgebrochen = "mit Absicht"; }), "kein Programmierfehler"},
        {beiAufruf("", [](W& w) { w.haupt.sync([&] { w.q->sync([] {}); }); }),
         "keine Schlange wartet im Kreis"},
        {beiAufruf("", [](W& w) { w.haupt.async([&w] { (void)static_cast<KabelWelt&>(w).fuehreAus(""); }); }),
         "kein Start ohne bewiesenen Weg"},
        {beiAufruf("", [](W& w) { std::ranges::for_each(w.handys, [](auto& h) { h.austritt.reset(); }); }),
         "nach den Störungen fährt es wieder"},
        {imStand("203.0.113.7", ""), "„Fährt mit“ nur mit Austrittsadresse"},
        {imStand("\"proxy_gesetzt\": false", "\"proxy_gesetzt\": true"),
         "wo der Stand einen Proxy nennt, ist einer"},
        {imStand("203.0.113.7", "203.0.113.9"), "der Stand gleicht dem Zustand"},
        {[](W& w) {
             w.vorPruefung = [alter = std::string(), &dokument = w.standdienst.dokument]() mutable {
                 const bool faehrt = dokument.find("\"faehrt\": true") != std::string::npos;
                 (faehrt || alter.empty() ? alter : dokument) = faehrt ? dokument : alter;
             };
         },
         "„Fährt mit“ nur, solange das Handy teilt und erlaubt"},
        {beiAufruf("adb forward --list", nichts, viele),
         "„Fährt mit“ nur, solange der Proxy der des Handys ist"},
        {imFeld([](Zustand& z) { z.klasse = "2. Klasse"; }), "ohne Verbindung zeigt nichts mehr auf sie"},
        {imFeld([](Zustand& z) { z.menge = "0 kB"; }), "die Menge ist die des Handys"},
    };
    for (const auto& [bruch, invariante] : brueche) {
        std::map<std::string, int> gesehen;
        for (std::uint64_t samen = 0; samen < 400 && !gesehen.contains(invariante); ++samen) {
            Zufallswelt welt(samen);
            bruch(welt);
            welt.lebe();
            ++gesehen[welt.verstoss.substr(0, std::string(invariante).size())];
        }
        EXPECT_TRUE(gesehen.contains(invariante)) << invariante << testing::PrintToString(gesehen);
    }
}

} // namespace
