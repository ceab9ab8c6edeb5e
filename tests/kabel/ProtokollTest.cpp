#include "kabel/Protokoll.hpp"

#include "probe/welt/VirtuelleWelt.hpp"
#include "tests/hilfe/Ordner.hpp"

#include <gtest/gtest.h>

using namespace mobilsteg;
using namespace std::chrono_literals;

namespace {

TEST(Protokoll, schreibtZeilenUndLaesstWiederholungenWeg) {
    const Ordner ordner;
    VirtuelleWelt welt;
    const std::string pfad = ordner.pfad() + "/fehlt/noch/b.log";
    Protokoll(pfad, welt.uhr()).schreibe("alt");
    welt.laufe(24h);
    Protokoll protokoll(pfad, welt.uhr()); // appends to what is there
    for (const auto* text : {"Fährt mit", "Fährt mit", "B", "Fährt mit"})
        protokoll.schreibe(text);
    EXPECT_EQ(ordner.lies("/fehlt/noch/b.log"), "14.03.2025 09:41:07  alt\n"
                                                "15.03.2025 09:41:07  Fährt mit\n"
                                                "15.03.2025 09:41:07  B\n"
                                                "15.03.2025 09:41:07  Fährt mit\n");
}

TEST(Protokoll, ueberstehtEinenUnbeschreiblichenOrt) {
    const Ordner ordner;
    VirtuelleWelt welt;
    ordner.lege("/belegt", "eine Datei, kein Ordner");
    Protokoll(ordner.pfad() + "/belegt/b.log", welt.uhr()).schreibe("verloren");
    EXPECT_EQ(ordner.lies("/belegt"), "eine Datei, kein Ordner");
    // A folder under the log's own name can be neither opened nor replaced.
    std::filesystem::create_directory(ordner.pfad() + "/b.log");
    Protokoll(ordner.pfad() + "/b.log", welt.uhr()).schreibe("verloren");
    EXPECT_TRUE(std::filesystem::is_directory(ordner.pfad() + "/b.log"));
}

} // namespace
