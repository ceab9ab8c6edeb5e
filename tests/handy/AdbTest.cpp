#include "handy/Adb.hpp"

#include "tests/hilfe/Ordner.hpp"

#include <gmock/gmock.h>

using namespace mobilsteg;
using testing::ElementsAre;

namespace {

/// What an adb with this output makes of it, a device a line; its status does not count.
std::string geraete(const std::string& ausgabe) {
    std::string aufruf;
    const Laeufer laeufer = [&](const std::string& programm, const std::vector<std::string>& worte,
                                double s) {
        aufruf += programm + " " + worte.at(0) + " " + worte.at(1) + " " + std::to_string(s);
        return Ergebnis{1, ausgabe, "* daemon started successfully\n"};
    };
    std::string gelesen;
    for (const auto& g : Adb(laeufer, {"/heim", ""}, std::nullopt).geraete("/x/adb"))
        gelesen += g.serial + "|" + g.zustand + "|" + g.modell + "\n";
    EXPECT_EQ(aufruf, "/x/adb devices -l 10.000000");
    return gelesen;
}

TEST(Adb, liestDieListeWieSieIst) {
    EXPECT_EQ(geraete(R"(List of devices attached
R5CT20ABCDE            device usb:1-1 product:dm1q model:SM_S911B device:dm1q transport_id:1
emulator-5554          offline transport_id:2
allein

adb-R5CT20ABCDE-x1y2z3._adb-tls-connect._tcp device product:p model:Pixel_8_Pro transport_id:3
127.0.0.1:5555         device product:x model:A_1 model:B_2
abgeschnitten          dev)"),
              R"(R5CT20ABCDE|device|Samsung Galaxy S23
emulator-5554|offline|
adb-R5CT20ABCDE-x1y2z3._adb-tls-connect._tcp|device|Google Pixel-8-Pro
127.0.0.1:5555|device|A-1
abgeschnitten|dev|
)");
    for (const auto* leer : {"", "\n", "R5CT20ABCDE device", "\n\n\nHeading\n"})
        EXPECT_EQ(geraete(leer), "") << leer;
    for (const auto& [code, name] :
         std::map<std::string, std::string>{{"sm-s911b", "Samsung Galaxy S23"},
                                            {"SM-S911B/DS", "Samsung Galaxy S23"},
                                            {"SM-S911", "Samsung Galaxy S23"},
                                            {"SM-S91/1B", "Samsung SM-S91/1B"},
                                            {"SM-\u00A0S911", "Samsung Galaxy S23"},
                                            {"SM-G986U1", "Samsung Galaxy S20+"},
                                            {"sm-x710", "Samsung sm-x710"}})
        EXPECT_EQ(geraete("Liste\nX device model:" + code), "X|device|" + name + "\n");
}

TEST(Adb, suchtInFesterReihenfolge) {
    const Ordner ordner;
    const std::string& o = ordner.pfad();
    const Adb adb(nullptr, {o + "/heim", o + "/wurzel"}, o + "/Resources");
    const auto kandidaten = adb.kandidaten();
    EXPECT_THAT(kandidaten,
                ElementsAre(o + "/Resources/adb", o + "/wurzel/opt/homebrew/bin/adb",
                            o + "/heim/Library/Android/sdk/platform-tools/adb",
                            o + "/wurzel/usr/local/bin/adb",
                            o + "/wurzel/opt/homebrew/share/android-commandlinetools/platform-tools/adb"));
    ordner.lege("/Resources/adb/ein-ordner", "");
    ordner.lege("/wurzel/opt/homebrew/bin/adb", "nicht ausführbar");
    EXPECT_EQ(adb.finden(), std::nullopt);
    for (auto k = kandidaten.rbegin(); k != kandidaten.rend() - 2; ++k) { // each goes before the later ones
        ordner.lege(k->substr(o.size()), "", true);
        EXPECT_EQ(adb.finden(), *k);
    }
}

} // namespace
