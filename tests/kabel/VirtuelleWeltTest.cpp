// The virtual time itself: if it lied, every test on top of it would. What any queue promises is tested with
// the real ones.

#include "probe/welt/VirtuelleWelt.hpp"

#include <gtest/gtest.h>

using namespace mobilsteg;
using namespace std::chrono_literals;

namespace {

TEST(VirtuelleWelt, andereSchlangenLaufenWeiterInEinerFolgeDieDerSamenBestimmt) {
    const auto folge = [](std::uint64_t samen) {
        VirtuelleWelt welt(samen);
        std::string text;
        Schlange& a = welt.schlange("a");
        Schlange& b = welt.schlange("b");
        a.async([&] {
            b.sync([&] { welt.uhr().schlafe(5s); });
            text += "a";
        });
        const auto takt = welt.schlange("c").wiederhole(2s, 2s, [&] { text += "c"; });
        welt.laufe(5500ms);
        for (int n = 0; n < 9; ++n) {
            a.async([&] { text += "x"; });
            b.async([&] { text += "y"; });
        }
        welt.laufe(100ms);
        return text;
    };
    EXPECT_EQ(folge(7).substr(0, 3), "cca");
    EXPECT_EQ(folge(7), folge(7));
    EXPECT_NE(folge(7), folge(8));
}

} // namespace
