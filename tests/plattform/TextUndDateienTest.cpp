#include "plattform/Dateien.hpp"
#include "plattform/Orte.hpp"
#include "plattform/Text.hpp"
#include "plattform/Uhr.hpp"
#include "tests/hilfe/Ordner.hpp"

#include <gtest/gtest.h>

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>

using namespace mobilsteg;

namespace {

using Faelle = std::vector<std::pair<std::string, std::string>>; // what comes, what is made of it

TEST(Text, ersetztJedeUngueltigeFolgeDurchEinZeichen) {
    const std::string e = "\uFFFD";
    for (const auto& [roh, soll] : Faelle{{"Grüße, 🚆\U0010FFFF", "Grüße, 🚆\U0010FFFF"},
                                          {"a\xFFz", "a" + e + "z"},
                                          {"\xE2\x82", e},             // cut off at the end
                                          {"\xF0\x9F\x9Ax", e + "x"},  // cut off by another character
                                          {"\xC3\xC3\xA4", e + "ä"},   // the second byte begins its own
                                          {"\xE0\x80\xAF", e + e + e}, // overlong
                                          {"\xED\xA0\x80", e + e + e}, // a surrogate
                                          {"\xF4\x90\x80\x80", e + e + e + e}}) // beyond the last
        EXPECT_EQ(alsUtf8(roh), soll) << testing::PrintToString(roh);
    EXPECT_EQ(beschnitten("\u00A0\n\u2028à\u00A0à\u3000\v"), "à\u00A0à"); // à ends with the byte of U+00A0
}

TEST(Orte, machtPfadeAbsolutUndOhneSchraegstrichAmEnde) {
    const std::string hier = std::filesystem::current_path().string();
    for (const auto& [roh, soll] :
         Faelle{{"/a/./b/../c//", "/a/c"}, {"/", ""}, {"/..", ""}, {"x", hier + "/x"}, {"./", hier}})
        EXPECT_EQ(absoluterPfad(roh), soll) << roh;
    const std::string konto = absoluterPfad(::getpwuid(::getuid())->pw_dir);
    for (const auto& [umgebung, soll] : Faelle{{"/a/./b/", "/a/b"}, {"", konto}, {"nirgends", konto}}) {
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
    EXPECT_FALSE(schreibeAtomar(ordner.pfad() + "/fehlt/x", "x", Haltbarkeit::fluechtig));
    const std::filesystem::directory_iterator uebrige(ordner.pfad());
    EXPECT_EQ(std::distance(uebrige, {}), 2) << "a failed attempt must leave nothing behind";
}

TEST(Dateien, haltenSichAnNichtsAufWasKeineDateiIst) {
    const Ordner ordner;
    ASSERT_EQ(::mkfifo((ordner.pfad() + "/rohr").c_str(), 0777), 0);
    for (const auto* rest : {"/rohr", "/", "/fehlt"}) {
        const std::string pfad = ordner.pfad() + rest;
        EXPECT_FALSE(liesDatei(pfad) || haengeAn(pfad, "x") || istAusfuehrbar(pfad)) << pfad;
    }
    EXPECT_FALSE(existiert(ordner.pfad() + "/fehlt"));
}

} // namespace
