// Paths, times and files; scripts and packages, on a mac with the native adapters, too.

#include "plattform/Adapter.hpp"
#include "plattform/Dateien.hpp"
#include "plattform/Uhr.hpp"
#include "tests/hilfe/Ordner.hpp"

#include <gtest/gtest.h>

#include <pwd.h>
#include <sys/stat.h>

using namespace mobilsteg;

namespace {

TEST(Orte, machtPfadeAbsolutUndOhneSchraegstrichAmEnde) {
    EXPECT_EQ(absoluterPfad("x"), std::filesystem::current_path().string() + "/x");
    const std::string konto = absoluterPfad(::getpwuid(::getuid())->pw_dir);
    for (const auto& [umgebung, soll] : std::map<std::string, std::string>{
             {"/a/./b/../c//", "/a/c"}, {"/..", ""}, {"", konto}, {"nirgends", konto}}) {
        ::setenv("HOME", umgebung.c_str(), 1);
        EXPECT_EQ(eigenesHeim(), soll) << umgebung;
    }
}

TEST(Uhr, schreibtOrtszeitAuchUeberDieGrenze) {
    const auto vorher = std::chrono::system_clock::from_time_t(1743296399);
    const auto nachher = vorher + std::chrono::seconds(1);
    ::setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1);
    EXPECT_EQ(ortszeit(vorher) + ", " + ortszeit(nachher), "30.03.2025 01:59:59, 30.03.2025 03:00:00");
    ::setenv("TZ", "GMT0BST,M3.5.0/1,M10.5.0", 1); // the train has left the tunnel
    EXPECT_EQ(ortszeit(nachher) + ", " + isoZeit(nachher), "30.03.2025 02:00:00, 2025-03-30T01:00:00Z");
}

TEST(Dateien, werdenGanzErsetztOderGarNicht) {
    const Ordner ordner;
    const std::string ziel = ordner.lege("/stand.json", "alt");
    ordner.lege("/ordner/darin", "");
    EXPECT_TRUE(schreibeAtomar(ziel, std::string_view("neu\0", 4), Haltbarkeit::dauerhaft));
    EXPECT_TRUE(haengeAn(ziel, "er"));
    EXPECT_EQ(liesDatei(ziel), std::string("neu\0er", 6));
    EXPECT_FALSE(schreibeAtomar(ordner.pfad() + "/ordner", "x", Haltbarkeit::fluechtig));
    const std::filesystem::directory_iterator uebrige(ordner.pfad());
    EXPECT_EQ(std::distance(uebrige, {}), 2) << "a failed attempt must leave nothing behind";
    EXPECT_FALSE(haengeAn("/dev/full", "x"));
    ASSERT_EQ(::mkfifo((ordner.pfad() + "/rohr").c_str(), 0777), 0);
    for (const auto* rest : {"/rohr", "/", "/fehlt"}) {
        const std::string pfad = ordner.pfad() + rest;
        EXPECT_FALSE(liesDatei(pfad) || haengeAn(pfad, "x") || istAusfuehrbar(pfad)) << pfad;
    }
}

TEST(Adminskript, meldetNummerUndText) {
    const Ordner ordner; // its osascript says on standard error what it is to run
    ordner.lege("/usr/bin/osascript", "#!/bin/sh\ncat >&2; exec [ \"$*\" != - ]", true);
    const auto skript = osascriptSkript({"", ordner.pfad()});
    for (const auto& [ausgabe, nummer, meldung] : std::vector<std::tuple<std::string, int, std::string>>{
             {"vorher\n0:5: execution error: Nein, „so“ (nicht) (-128)\n", -128, "Nein, „so“ (nicht)"},
             {"execution error: (7)", 7, ""},
             {"execution error: Nein (x)", 0, ""},
             {"(1) execution error: x)", 0, ""}, // the only bracket stands too early
             {"syntax error: Nein (-1)", 0, ""}}) {
        const auto fehler = skript->fuehreAus(ausgabe).value();
        EXPECT_EQ(fehler.nummer, nummer) << ausgabe;
        EXPECT_EQ(fehler.meldung.value_or(""), meldung) << ausgabe;
    }
    ordner.lege("/usr/bin/osascript", "#!/bin/sh");
    EXPECT_FALSE(skript->fuehreAus("return 1"));
    EXPECT_TRUE(adminskriptFuer({"", ordner.pfad() + "/fehlt"})->fuehreAus("return 1")->nichtGebaut);
    if (const auto natives = nativesSkript()) {
        EXPECT_EQ(natives->fuehreAus("error \"Nein\" number -128")->nummer, -128);
        EXPECT_FALSE(natives->fuehreAus("return 1")) << "nothing of a failed one sticks";
    }
}

TEST(Buendel, kenntSichSelbst) {
    const Ordner ordner;
    const std::string ressourcen = std::filesystem::path(ordner.lege("/x/Resources/y", "")).parent_path();
    EXPECT_EQ(ordnerBuendel("", ordner.pfad() + "/x/bin/lotse").ressourcen, ressourcen);
    EXPECT_FALSE(ordnerBuendel("", ordner.pfad() + "/y/bin/lotse").ressourcen);
    EXPECT_TRUE(eigenesBuendel("de.mobilsteg.vpnlotse").kennung.starts_with("de.mobilsteg."));
}

} // namespace
