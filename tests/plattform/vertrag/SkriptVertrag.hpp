#pragma once

// What every runner of AppleScript promises. The scripts ask nobody for a password.

#include "plattform/Anschluesse.hpp"
#include "tests/plattform/vertrag/Art.hpp"

#include <gtest/gtest.h>

#include <memory>

namespace mobilsteg {

using Skriptart = Art<std::unique_ptr<Adminskript>()>;

class SkriptVertrag : public testing::TestWithParam<Skriptart> {};

TEST_P(SkriptVertrag, meldetNummerUndText) {
    struct Fall {
        const char* quelle;
        std::optional<int> nummer;
        const char* meldung; ///< null: whatever the system says, or nothing
    };
    const auto skript = GetParam().baue();
    for (const Fall& fall : {Fall{"return 1", {}, nullptr},
                             {"error \"Nein, „so“ (nicht)\" number -128", -128, "Nein, „so“ (nicht)"},
                             {"return 2", {}, nullptr}, // nothing sticks from the failed one
                             {"error number -60007", -60007, nullptr}}) {
        const auto fehler = skript->fuehreAus(fall.quelle);
        ASSERT_EQ(fehler.has_value(), fall.nummer.has_value()) << fall.quelle;
        if (!fehler)
            continue;
        EXPECT_EQ(fehler->nummer, fall.nummer) << fall.quelle;
        EXPECT_FALSE(fehler->nichtGebaut);
        EXPECT_TRUE(fall.meldung == nullptr || fehler->meldung == fall.meldung)
            << fehler->meldung.value_or("");
    }
    EXPECT_TRUE(skript->fuehreAus("ein Satz, den keiner versteht (").has_value());
}

} // namespace mobilsteg
