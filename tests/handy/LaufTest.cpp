// Running tools for real: small ones that every system has.

#include "handy/Lauf.hpp"

#include "plattform/AsioSchlange.hpp"
#include "tests/hilfe/Ordner.hpp"
#include "tests/plattform/Deskriptoren.hpp"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>

using namespace mobilsteg;

namespace {

using Faelle = std::map<std::string, Ergebnis>;

Ergebnis skript(const std::string& text, double sekunden = 20) {
    return lauf("/bin/sh", {"-c", text}, sekunden);
}

TEST(Lauf, bringtStatusUndBeideStroemeGetrennt) {
    ::setenv("PROBE", "geerbt", 1);
    for (const auto& [text, soll] :
         Faelle{{"printf \"aus $PROBE\"; printf feh >&2; exit 3", {3, "aus geerbt", "feh"}},
                {R"(printf 'a\377b\342\202'; printf '\200' >&2)", {0, "a\uFFFDb\uFFFD", "\uFFFD"}},
                {"printf vorher; kill -9 $$", {9, "vorher", ""}},
                {"exec >&- 2>&-; sleep 0.05; exit 5", {5, "", ""}},
                {"(sleep 0.1; printf spät) & printf früh-", {0, "früh-spät", ""}}}) // its child holds on
        EXPECT_EQ(skript(text), soll) << text;
    const auto e = skript("for i in 1 2 3; do head -c 200000 /dev/zero >&2; head -c 300000 /dev/zero; done");
    EXPECT_EQ(e.ausgabe.size(), 900'000U);
    EXPECT_EQ(e.fehler.size(), 600'000U);
}

TEST(Lauf, reichtArgumenteUndStandardstroemeWeiterUndSonstNichts) {
    EXPECT_EQ(lauf("/usr/bin/printf", {"<%s>", "a b", "$HOME", "*", "", "\"';ü"}, 20).ausgabe,
              "<a b><$HOME><*><><\"';ü>");
    const Deskriptor unmarkiert(::socket(AF_INET, SOCK_STREAM, 0));
    EXPECT_EQ(lauf("/bin/ls", {"/dev/fd"}, 20).ausgabe, "0\n1\n2\n3\n"); // 3 is the folder it reads
}

TEST(Lauf, sagtWarumEinWerkzeugNichtBeginnt) {
    const Ordner ordner;
    for (const auto& [pfad, grund] : std::map<std::string, std::string>{
             {"true", "Datei oder Ordner nicht gefunden"}, // PATH is not consulted
             {ordner.pfad(), "Keine Berechtigung"},
             {ordner.lege("/datei", "") + "/true", "Kein Ordner"},
             {ordner.lege("/skript", "echo ohne Shell", true), "Kein ausführbares Programm"}})
        EXPECT_EQ(lauf(pfad, {}, 20), (Ergebnis{-1, "", pfad + ": " + grund}));
    EXPECT_EQ(skript(std::string(3'000'000, 'x')).fehler, "/bin/sh: Zu viele oder zu lange Argumente");
}

TEST(Lauf, bittetAmLimitUmDasEndeUndErzwingtEsNicht) {
    for (const auto& [text, soll] :
         Faelle{{"trap 'printf nachher; exit 4' TERM; while :; do sleep 0.01; done", {4, "nachher", ""}},
                {"printf halt; kill -STOP $$", {SIGTERM, "halt", ""}},
                {"trap '' TERM; sleep 2.1; printf fertig; exit 7", {7, "fertig", ""}},
                {"trap '' TERM; exec >&- 2>&-; sleep 4", {SIGTERM, "", ""}}}) { // nobody waits for this one
        const auto beginn = std::chrono::steady_clock::now();
        EXPECT_EQ(skript(text, 0.05), soll) << text;
        EXPECT_LT(std::chrono::steady_clock::now() - beginn, std::chrono::seconds(4)) << text;
    }
}

TEST(Lauf, gibtDemWerkzeugDieUeblichenSignaleZurueck) {
    AsioSchlange q("signale");
    const auto quelle = beiSignal(SIGTERM, q, [](int) {});
    const auto frueher = std::signal(SIGPIPE, SIG_IGN);
    sigset_t alle;
    sigset_t vorher;
    sigfillset(&alle);
    ::pthread_sigmask(SIG_BLOCK, &alle, &vorher);
    for (const int signal : {SIGPIPE, SIGTERM, SIGINT})
        EXPECT_EQ(skript("kill -" + std::to_string(signal) + " $$; echo lebt"), (Ergebnis{signal, "", ""}));
    ::pthread_sigmask(SIG_SETMASK, &vorher, nullptr);
    std::signal(SIGPIPE, frueher);
}

TEST(Lauf, kommtMitDescriptormangelZurechtUndLaesstKeineZurueck) {
    const auto vorher = offeneDeskriptoren();
    const Ergebnis mangel{-1, "", "/bin/sh: Zu viele offene Dateien"};
    for (std::size_t frei = 0; frei <= 5; ++frei)
        imEngpass(frei, [&] {
            // Two pipes take four. Without a fifth, the tool's end is asked for instead of announced.
            EXPECT_EQ(skript("echo da; exec >&- 2>&-; sleep 0.02"),
                      frei < 4 ? mangel : (Ergebnis{0, "da\n", ""}))
                << frei;
        });
    (void)lauf("/fehlt", {}, 20);
    EXPECT_EQ(offeneDeskriptoren(), vorher);
}

} // namespace
