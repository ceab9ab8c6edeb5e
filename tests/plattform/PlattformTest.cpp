// Paths, times and files; scripts, packages and settings, on a mac with the native adapters, too.

#include "plattform/Adapter.hpp"
#include "plattform/Autostart.hpp"
#include "plattform/Dateien.hpp"
#include "plattform/Laufsperre.hpp"
#include "plattform/Text.hpp"
#include "plattform/Uhr.hpp"
#include "tests/hilfe/Ordner.hpp"
#include "tests/plattform/Deskriptoren.hpp"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <pwd.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <future>

using namespace mobilsteg;
using nlohmann::json;

static std::atomic<int> fehlschlaege = 0, plattenfehler = 0, aufDiePlatte = 0;

// In place of the system's: a disk that may turn out to have no room only now.
int fsync(int) {
    ++aufDiePlatte;
    errno = plattenfehler;
    return fehlschlaege-- > 0 ? -1 : 0;
}

namespace {

using Faelle = std::map<std::string, std::string>; // what there is, what is made of it

TEST(Orte, heimIstAbsolutUndOhneSchraegstrichAmEnde) {
    const std::string konto = absoluterPfad(::getpwuid(::getuid())->pw_dir);
    ::setenv("HOME", "/nirgends", 1);
    EXPECT_EQ(eigenesHeim(), konto);
    EXPECT_EQ(absoluterPfad("/a/./b/../c//") + absoluterPfad("/.."), "/a/c");
    EXPECT_EQ(absoluterPfad("x"), std::filesystem::current_path().string() + "/x");
}

TEST(Uhr, schreibtOrtszeitAuchUeberDieGrenze) {
    for (const auto& [zone, soll] : Faelle{{"CET-1CEST,M3.5.0,M10.5.0/3", "30.03.2025 03:00:00"},
                                           {"GMT0BST,M3.5.0/1,M10.5.0", "30.03.2025 02:00:00"}}) {
        ::setenv("TZ", zone.c_str(), 1);
        EXPECT_EQ(ortszeit(std::chrono::system_clock::from_time_t(1743296400)), soll);
    }
}

TEST(Dateien, werdenGanzErsetztOderGarNicht) {
    const Ordner ordner;
    const std::string ziel = ordner.lege("/stand.json", "alt");
    ordner.lege("/ordner/darin", "");
    EXPECT_TRUE(schreibeAtomar(ziel, {"neu\0", 4}, Haltbarkeit::dauerhaft) && haengeAn(ziel, "er"));
    EXPECT_EQ(liesDatei(ziel), std::string("neu\0er", 6));
    EXPECT_FALSE(schreibeAtomar(ordner.pfad() + "/ordner", "x", Haltbarkeit::fluechtig));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(ordner.pfad()), {}), 2)
        << "a failed attempt must leave nothing behind";
    ASSERT_EQ(::mkfifo((ordner.pfad() + "/rohr").c_str(), 0777), 0);
    EXPECT_FALSE(haengeAn("/dev/full", "x") || oeffneSperrdatei(ordner.pfad() + "/rohr"));
    for (const auto* rest : {"/rohr", "/", "/fehlt"}) {
        const std::string pfad = ordner.pfad() + rest;
        EXPECT_FALSE(liesDatei(pfad) || haengeAn(pfad, "x") || istAusfuehrbar(pfad)) << pfad;
    }
    EXPECT_TRUE(liesDatei(ziel, 6) && !liesDatei(ziel, 5) && !istAusfuehrbar(ziel));
    EXPECT_EQ(std::filesystem::status(ziel).permissions(), std::filesystem::perms(0600));
    EXPECT_TRUE(vertrauteDatei(ziel) != "" &&
                (::chown(ziel.c_str(), 1, 0) != 0 || vertrauteDatei(ziel) == ""));
}

TEST(Dateien, gehenAufEinenVollenDatentraegerWoDieAltenStanden) {
    const Ordner ordner;
    const std::string ziel = ordner.pfad() + "/stand.json";
    aufDiePlatte = 0;
    EXPECT_TRUE(schreibeAtomar(ziel, "x", Haltbarkeit::fluechtig) && aufDiePlatte == 0);
    EXPECT_TRUE(schreibeAtomar(ziel, "x", Haltbarkeit::dauerhaft));
    if (aufDiePlatte == 0)
        GTEST_SKIP() << "Dieses System nimmt einen anderen Weg auf die Platte";
    EXPECT_EQ(aufDiePlatte, 2) << "the file, and its name in the folder";
    // What fails how often, what is to be written, what stands there then.
    for (const auto& [grund, wieOft, neu, soll, sicher] :
         std::vector<std::tuple<int, int, std::string, std::string, bool>>{
             {ENOSPC, 1, "neu", "neu  ", true},
             {EDQUOT, 2, "neues", "neues", false}, // it may be gone with the power
             {ENOSPC, 1, "zu lang", "altes", false},
             {EIO, 1, "neu", "altes", false}}) {
        ordner.lege("/stand.json", "altes");
        plattenfehler = grund;
        fehlschlaege = wieOft;
        EXPECT_EQ(schreibeAuchWennVoll(ziel, neu, Haltbarkeit::dauerhaft), sicher) << neu;
        EXPECT_EQ(errno, grund);
        EXPECT_EQ(liesDatei(ziel), soll);
    }
}

/// A full disk takes the first bytes and no more.
TEST(Dateien, nehmenDenAnfangEinerZeileZurueck) {
    const Ordner ordner;
    const std::string ziel = ordner.lege("/log", "Zeile\n");
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit grenze{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &grenze), 0);
    const rlimit voll{10, grenze.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &voll), 0);
    EXPECT_FALSE(haengeAn(ziel, "noch eine\n") ||
                 schreibeAtomar(ziel, "noch eine Zeile\n", Haltbarkeit::fluechtig));
    EXPECT_EQ(liesDatei(ziel), "Zeile\n");
    EXPECT_TRUE(haengeAn(ziel, "gut\n"));
    ::setrlimit(RLIMIT_FSIZE, &grenze);
}

TEST(Dateien, keineWirdZumStandardstrom) {
    EXPECT_EXIT((::close(0), sichereStandardstroeme(), ::_exit(::fcntl(0, F_GETFD))),
                testing::ExitedWithCode(0), "");
}

TEST(Laufsperre, gehtVomTotenAnSeinenWaechter) {
    const Ordner heim;
    EXPECT_FALSE(Laufsperre::inhaber(heim.pfad()) || existiert(Laufsperre::pfad(heim.pfad())));
    std::optional<Laufsperre> erste(heim.pfad());
    Laufsperre waechter(heim.pfad());
    EXPECT_FALSE(erste->nimm() || Laufsperre::inhaber(heim.pfad())->waechter != 0);
    erste->nenneWaechter(7);
    EXPECT_TRUE(!waechter.nimmNach(7) && Laufsperre::inhaber(heim.pfad())->waechter == 7);
    erste.reset();
    EXPECT_TRUE(waechter.nimmNach(::getpid()) && Laufsperre::inhaber(heim.pfad())->laeufer == 0);
}

TEST(Text, einzeiligBleibtNurWasEinTerminalZeigt) {
    for (const auto& [roh, soll] :
         Faelle{{"ä„€“\U0001F600", "ä„€“\U0001F600"},
                {"a\nb\r\tc\x1b[31m\x7f", "a b  c [31m "},
                {"\u009B31m\u0080|\u00A0", " 31m |\u00A0"},
                {"\u2028\u2029\u200E\u200F\u202A\u202E\u2066\u2069\u061C|", "         |"},
                {"\u200D\u202F\u2065\u206A\u2027", "\u200D\u202F\u2065\u206A\u2027"},
                {"\u0080|\u0800|\uD7FF|\U00010000|\U0010FFFF", " |\u0800|\uD7FF|\U00010000|\U0010FFFF"}})
        EXPECT_EQ(einzeilig(roh), soll);
    EXPECT_EQ(einzeilig("äöü", 2), "äö");
    EXPECT_EQ(einzeilig("ä\x80\xE0\x9F\xED\xA0\xF0\x8F\xF4\x90\xC1\xF5\xFF\xC2"), "ä�������������");
    EXPECT_EQ(inGrossbuchstaben("`az{ä") + inKleinbuchstaben("@AZ[Ä"), "`AZ{ä@az[Ä");
    EXPECT_EQ(klammertiefe(R"(]}[][{"[[\"":[]},{}])"), 3U);
    EXPECT_EQ(einzeilig(std::string(9999, '\x80')).size(), 500 * std::string("\uFFFD").size());
}

TEST(Adminskript, meldetNummerUndText) {
    const Ordner ordner; // its osascript says on standard error what it is to run
    ordner.lege("/usr/bin/osascript", "#!/bin/sh\ncat >&2; exec [ \"$*\" != - ]", true);
    const auto skript = osascriptSkript({"", ordner.pfad()});
    for (const auto& [ausgabe, soll] :
         Faelle{{"vorher\n0:5: execution error: Nein, „so“ (nicht) (-128)\n", "-128 Nein, „so“ (nicht)"},
                {"execution error: (7)", "7 -"},
                {"execution error: Nein (x)", "0 -"},
                {"(1) execution error: x)", "0 -"}, // the only bracket stands too early
                {"syntax error: Nein (-1)", "0 -"}}) {
        const auto fehler = skript->fuehreAus(ausgabe).value();
        EXPECT_EQ(std::to_string(fehler.nummer) + " " + fehler.meldung.value_or("-"), soll) << ausgabe;
    }
    ordner.lege("/usr/bin/osascript", "#!/bin/sh\ncat >$0.bekam");
    EXPECT_FALSE(skript->fuehreAus("return 1"));
    EXPECT_EQ(ordner.lies("/usr/bin/osascript.bekam"), "return 1");
    EXPECT_TRUE(adminskriptFuer({"", ordner.pfad() + "/fehlt"})->fuehreAus("return 1")->nichtGebaut);
    if (const auto natives = nativesSkript()) {
        EXPECT_EQ(natives->fuehreAus("error \"Nein\" number -128")->nummer, -128);
        EXPECT_FALSE(natives->fuehreAus("return 1")) << "nothing of a failed one sticks";
    }
}

// --- settings: what every store promises; and those in a file, which other programs, crashes and people edit

using Oeffner = std::function<std::unique_ptr<Einstellungen>()>;

/// Lets `was` open a fresh store as often as it likes; on a mac the system's own as well.
void inJedem(const std::function<void(const Oeffner&)>& was) {
    const Ordner ordner;
    was([&] { return dateiEinstellungen(ordner.pfad() + "/Library/Preferences/de.mobilsteg.json"); });
    const std::string bereich = "de.mobilsteg.pruefung." + neueKennung(); // of the user's real defaults
    if (!nativeEinstellungen(bereich))
        return;
    was([&] { return nativeEinstellungen(bereich); });
    // The file alone is not enough: the system keeps the range and writes it anew.
    const auto weg = "defaults delete " + bereich + "; rm -f ~/Library/Preferences/" + bereich + ".plist";
    EXPECT_EQ(std::system(weg.c_str()), 0);
}

TEST(Einstellungen, gebenWerteGenauZurueckUndHaltenDieArtenAuseinander) {
    inJedem([](const Oeffner& neue) {
        const auto e = neue();
        const auto fremde = neue();
        const std::string k = "proxy.dienst"; // the dot is part of the name
        for (const std::string text : {"", " Büro „Süd“ 🚆\n", "\"\\{}<&>%@", "-1", "true"}) {
            e->setzeText(k, text);
            EXPECT_TRUE(fremde->text(k) == text && !fremde->flagge(k) && !fremde->tabelle(k)) << text;
        }
        const Einstellungen::Tabelle tabelle = {{"mac.log", INT64_MAX}, {"a b", INT64_MIN}, {"ü", 0}};
        fremde->setzeTabelle(k, tabelle);
        EXPECT_TRUE(e->tabelle(k) == tabelle && !e->flagge(k) && !e->text(k));
        for (const bool flagge : {false, true}) {
            e->setzeFlagge(k, flagge);
            EXPECT_TRUE(fremde->flagge(k) == flagge && !fremde->text(k) && !fremde->tabelle(k));
        }
        EXPECT_EQ(e->textOderNeu(k, "neu"), "neu") << "no text stood there";
        fremde->entferne(k);
        EXPECT_FALSE(e->text(k));
    });
}

TEST(Einstellungen, programmeZugleichVerlierenNichts) {
    inJedem([](const Oeffner& neue) {
        const auto e = neue();
        e->setzeText("bleibt", "da");
        std::vector<std::future<std::string>> programme; // each with a store of its own, as processes have it
        for (int p = 0; p < 4; ++p)
            programme.push_back(std::async(std::launch::async, [&, p, eigene = neue()] {
                auto id = eigene->textOderNeu("kabel.id", std::to_string(p));
                for (int i = 12 * p; i < 12 * p + 12; ++i) {
                    eigene->setzeText(std::to_string(i), std::string(1'000, 'x'));
                    EXPECT_EQ(e->text("bleibt"), "da") << "half a file";
                }
                return id;
            }));
        for (auto& programm : programme) {
            const auto id = programm.get();
            EXPECT_EQ(id, e->text("kabel.id"));
        }
        for (int i = 0; i < 48; ++i)
            EXPECT_TRUE(e->text(std::to_string(i))) << i;
    });
}

struct DateiEinstellungenTest : testing::Test {
    [[nodiscard]] json inDerDatei() const { return json::parse(ordner.lies(datei), nullptr, false); }

    Ordner ordner;
    std::string datei = "/Library/Preferences/de.mobilsteg.bordlotse.json";
    // On a simulated Mac it is a file even where the system has a store of its own.
    Einstellungsort ort = einstellungenFuer({ordner.pfad(), ordner.pfad()}, "de.mobilsteg.bordlotse");
    Einstellungen& e = *ort.speicher;
};

TEST_F(DateiEinstellungenTest, legtUnverstaendlichesBeiseiteUndUeberschreibtEsNie) {
    const auto rest = ordner.lege(datei + ".neu-a1B2c3", "");
    const std::string tief = "{\"a\":" + std::string(200'000, '[') + std::string(200'000, ']') + "}";
    for (const auto& [name, inhalt] : Faelle{{".defekt", ""}, {".defekt-2", "[1]"}, {".defekt-3", tief}}) {
        ordner.lege(datei, inhalt);
        EXPECT_FALSE(e.text("a"));
        EXPECT_EQ(ordner.lies(datei), inhalt) << "looking changes nothing";
        e.setzeFlagge("experte", true);
        EXPECT_FALSE(existiert(rest)) << "of a run that was killed";
        EXPECT_EQ(inDerDatei(), (json{{"experte", true}}));
        EXPECT_EQ(ordner.lies(datei + name), inhalt);
        EXPECT_EQ(e.beiseitegelegt(), ordner.pfad() + datei + name);
        EXPECT_FALSE(e.beiseitegelegt()) << "told once";
    }
}

TEST(Autostart, ruftDasProgrammMitJedemPfad) {
    const std::string programm = R"(/A & <B>/c"$`\%)";
    const auto xml = launchAgent({"/heim", ""}, "de.x", programm);
    EXPECT_EQ(xml.pfad, "/heim/Library/LaunchAgents/de.x.plist");
    EXPECT_THAT(xml.inhalt, testing::HasSubstr(R"(<string>/A &amp; &lt;B&gt;/c"$`\%</string>)"));
    EXPECT_THAT(desktopEintrag({"/heim", ""}, "de.x", "X", programm).inhalt,
                testing::HasSubstr(R"(Exec="/A & <B>/c\\"\\$\\`\\\\%%")"));
}

TEST_F(DateiEinstellungenTest, merktSichWasKeinDatentraegerNimmt) {
    ordner.lege("/Library", "a file where the folder should be");
    EXPECT_EQ(e.textOderNeu("kabel.id", "eins"), "eins");
    EXPECT_EQ(e.textOderNeu("kabel.id", "zwei"), "eins") << "for this run one stands";
    e.entferne("browser");
    std::filesystem::remove(ordner.pfad() + "/Library");
    ordner.lege(datei, R"({"alt": true, "browser": true, "kabel.id": "anderes"})");
    EXPECT_EQ(e.textOderNeu("kabel.id", "drei"), "eins");
    EXPECT_EQ(inDerDatei(), (json{{"alt", true}, {"kabel.id", "eins"}}));
}

// Too many open files is a moment's trouble: a good settings file must not be taken for a bad one then.
TEST_F(DateiEinstellungenTest, haeltDescriptormangelNichtFuerEineSchlechteDatei) {
    for (std::size_t frei = 0; frei < 4; ++frei) {
        ordner.lege(datei, R"({"kabel.id": "meine"})");
        EXPECT_EQ(e.text("kabel.id"), "meine");
        imEngpass(frei, [&] {
            EXPECT_EQ(e.text("kabel.id"), "meine") << "what was read last still holds";
            e.setzeFlagge("experte", true);
        });
        e.setzeFlagge("neu", true);
        EXPECT_EQ(inDerDatei(), (json{{"experte", true}, {"kabel.id", "meine"}, {"neu", true}})) << frei;
    }
}

} // namespace
