// The virtual time itself: if it lied, every test on top of it would.

#include "probe/welt/VirtuelleWelt.hpp"

#include <gtest/gtest.h>

#include <string>

using namespace mobilsteg;
using namespace std::chrono_literals;

namespace {

TEST(VirtuelleWelt, andereSchlangenLaufenWeiterWaehrendEineWartet) {
    VirtuelleWelt welt;
    Schlange& a = welt.schlange("a");
    Schlange& b = welt.schlange("b");
    std::string folge;
    a.async([&] {
        folge += "a1 ";
        b.sync([&] {
            folge += "b1 ";
            welt.uhr().schlafe(5s);
            folge += "b2 ";
        });
        folge += "a2 ";
    });
    Schlange& c = welt.schlange("c");
    const auto zeitgeber = c.wiederhole(2s, 2s, [&] { folge += "c "; });
    welt.laufe(5500ms);
    EXPECT_EQ(folge, "a1 b1 c c b2 a2 ");
}

TEST(VirtuelleWelt, samenBestimmtDieReihenfolge) {
    const auto folge = [](std::uint64_t samen) {
        VirtuelleWelt welt(samen);
        std::string text;
        for (int i = 0; i < 4; ++i) {
            Schlange& s = welt.schlange("s");
            for (int n = 0; n < 4; ++n)
                s.async([&text, i] { text += std::to_string(i); });
        }
        welt.laufe(1s);
        return text;
    };
    EXPECT_EQ(folge(7), folge(7));
    EXPECT_NE(folge(7), folge(8));
}

TEST(VirtuelleWelt, erkenntVerklemmungUndEndetTrotzdem) {
    VirtuelleWelt welt;
    Schlange& a = welt.schlange("a");
    Schlange& b = welt.schlange("b");
    bool danach = false;
    a.async([&] {
        b.sync([&] { a.sync([] {}); });
        danach = true;
    });
    welt.laufe(1s);
    EXPECT_EQ(welt.verklemmte(), 2U);
    welt.beende();
    EXPECT_FALSE(danach);
}

} // namespace
