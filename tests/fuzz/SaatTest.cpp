// Every seed and everything that a fuzzer ever found, once more; and that no reader's cost grows faster than
// its input.

#include "plattform/Dateien.hpp"
#include "tests/fuzz/Pruefungen.hpp"

#include <gtest/gtest.h>

#include <ctime>
#include <filesystem>

using namespace mobilsteg;
namespace fs = std::filesystem;

namespace {

#ifdef NDEBUG
constexpr int viele = 50'000;
#else
constexpr int viele = 5'000; // sanitizers take their time
#endif

class Saat : public testing::TestWithParam<fuzz::Pruefung> {
protected:
    /// The processor time that this process takes for so many lines, at best of two.
    [[nodiscard]] static double sekunden(int zeilen) {
        std::string eingabe = GetParam().anfang;
        for (int i = 1; i <= zeilen; ++i)
            for (const char c : GetParam().zeile)
                eingabe += c == '#' ? std::to_string(i) : std::string(1, c);
        eingabe += GetParam().ende;
        const auto einmal = [&] {
            const std::clock_t anfang = std::clock();
            GetParam().pruefe(eingabe);
            return static_cast<double>(std::clock() - anfang) / CLOCKS_PER_SEC;
        };
        return std::min(einmal(), einmal());
    }
};

TEST_P(Saat, haelt) {
    ASSERT_FALSE(fs::is_empty(MOBILSTEG_FUZZORDNER "/saat/" + GetParam().name));
    for (const char* art : {"/saat/", "/funde/"}) {
        std::error_code fehlt; // not every reader has had a find
        for (const auto& datei :
             fs::directory_iterator(MOBILSTEG_FUZZORDNER + (art + GetParam().name), fehlt))
            EXPECT_NO_THROW(GetParam().pruefe(liesDatei(datei.path()).value())) << datei.path();
    }
}

TEST_P(Saat, kostetNurNachLaenge) {
    const double kurze = sekunden(viele / 8), lange = sekunden(viele);
    EXPECT_LT(lange, 24 * kurze + 0.05) << "eight times as long took " << lange << " s instead of " << kurze;
}

INSTANTIATE_TEST_SUITE_P(alle, Saat, testing::ValuesIn(fuzz::pruefungen()),
                         [](const auto& lauf) { return lauf.param.name; });

} // namespace
