// Nothing is left behind, under every seed of a world that fails, hangs and changes.

#include "plattform/Dateien.hpp"
#include "tests/simulation/Zufallswelt.hpp"

#include <gmock/gmock.h>

using namespace mobilsteg;

namespace {

TEST(Simulation, keinSamenBrichtEineInvariante) {
    for (std::uint64_t samen = 1; samen <= SAMENZAHL; ++samen) {
        Zufallswelt welt(samen);
        welt.lebe(100);
        ASSERT_EQ(welt.verstoss, "") << "mobilsteg-simulation --geschichte " << samen;
    }
}

/// What is broken here on purpose must be noticed, or a fault of the program would pass, too.
TEST(Simulation, jedeInvarianteKannBrechen) {
    if (SAMENZAHL < 100)
        GTEST_SKIP() << "this looks at the checks, not at the program; a sanitizer has nothing to find here";
    using W = Zufallswelt;
    const auto beiWerkzeug = [](auto was) {
        return [was](W& w) {
            w.stattWerkzeug = [&w, was](const std::string& aufruf) { return was(w, aufruf); };
        };
    };
    const auto klapptNurScheinbar = [&](const char* ende) {
        return beiWerkzeug([ende](W&, const std::string& aufruf) {
            return aufruf.find(ende) == aufruf.npos ? std::nullopt : std::optional(Ergebnis{0, "", ""});
        });
    };
    const auto immer = [&](auto was) {
        return beiWerkzeug([was](W& w, const std::string&) -> std::optional<Ergebnis> {
            was(w);
            return std::nullopt;
        });
    };
    const auto zeigt = [](auto was) {
        return [was](W& w) {
            w.standdienst.nachDokument = [&w, was, dann = w.standdienst.nachDokument] {
                dann();
                w.haupt.async([&w, was] { w.kabel->speicher().aendere(was); });
            };
        };
    };
    const std::pair<std::function<void(W&)>, const char*> brueche[] = {
        {klapptNurScheinbar(" off"), "zwei Ticks nach dem Verlust des Weges ist der Proxy aus"},
        {klapptNurScheinbar("--remove"), "am Ende steht keine Weiterleitung"},
        {immer([](W& w) { schreibeAtomar(w.stoppPfad() + ".laeuft", "", Haltbarkeit::fluechtig); }),
         "zwei Ticks nach dem Verlust des Weges ist der Tunnel aus"},
        {immer([](W& w) { w.meisteHelfer += w.helfer; }), "nie lebt mehr als ein Helfer"},
        {immer([](W& w) { w.haupt.sync([&] { w.q->sync([] {}); }); }), "keine Schlange wartet im Kreis"},
        {[](W& w) {
             w.stattWerkzeug = [](const std::string& aufruf) -> std::optional<Ergebnis> {
                 if (aufruf == "adb forward --list")
                     return Ergebnis{0, "R5CT1 tcp:1080 tcp:1080\nZWEITES tcp:1080 tcp:1080\n", ""};
                 return std::nullopt;
             };
         },
         "„Fährt mit“ nur, solange der Proxy der des Handys ist"},
        {zeigt([](Zustand& z) { z.austritt = "203.0.113.9"; }), "der Stand gleicht dem Zustand"},
        {zeigt([](Zustand& z) { z.klasse = "2. Klasse"; }), "ohne Verbindung zeigt nichts mehr auf sie"},
        {zeigt([](Zustand& z) { z.menge = "0 kB"; }), "die Menge ist die des Handys"},
        {[](W& w) { w.verfaelsche = [](bool durchProxy, auto& a) { durchProxy ? a.reset() : void(); }; },
         "nach den Störungen fährt es wieder"},
        {[](W& w) {
             w.verfaelsche = [](bool durchProxy, auto& a) {
                 a = {200, durchProxy
                               ? "203.0.113.9"
                               : R"({"app":"mobilsteg","proxy_port":1,"kabel":{},"zustand":"erlaubt"})"};
             };
         },
         "„Fährt mit“ nur, solange das Handy teilt und erlaubt"},
    };
    for (const auto& [bruch, invariante] : brueche) {
        std::set<std::string> gesehen;
        for (std::uint64_t samen = 0; samen < 40 && !gesehen.contains(invariante); ++samen) {
            Zufallswelt welt(samen);
            bruch(welt);
            welt.lebe(100);
            gesehen.insert(welt.verstoss.substr(0, std::string(invariante).size()));
        }
        EXPECT_TRUE(gesehen.contains(invariante)) << invariante;
    }
}

} // namespace
