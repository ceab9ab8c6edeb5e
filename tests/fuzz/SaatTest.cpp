// Every seed and everything that a fuzzer ever found, once more; and that no reader's cost grows faster than
// its input.

#include "tests/fuzz/Pruefungen.hpp"

#include <gtest/gtest.h>

#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>

using namespace mobilsteg;
namespace fs = std::filesystem;

namespace {

#ifdef NDEBUG
constexpr int viele = 50'000;
#else
constexpr int viele = 5'000; // sanitizers take their time
#endif

class Saat : public testing::TestWithParam<std::size_t> {
protected:
    const fuzz::Pruefung& pruefung = fuzz::pruefungen()[GetParam()];

    /// The processor time that this process takes for so many lines, at best.
    [[nodiscard]] double sekunden(int zeilen, int versuche) const {
        const std::string eingabe = pruefung.lange(zeilen);
        double beste = 1e9;
        for (int versuch = 0; versuch < versuche; ++versuch) {
            const std::clock_t anfang = std::clock();
            pruefung.pruefe(eingabe);
            beste = std::min(beste, static_cast<double>(std::clock() - anfang) / CLOCKS_PER_SEC);
        }
        return beste;
    }
};

TEST_P(Saat, haelt) {
    int saat = 0;
    for (const char* art : {"saat", "funde"}) {
        const fs::path ordner = fs::path(MOBILSTEG_FUZZORDNER) / art / pruefung.name;
        if (!fs::exists(ordner))
            continue;
        for (const auto& datei : fs::directory_iterator(ordner)) {
            std::ifstream strom(datei.path(), std::ios::binary);
            const std::string bytes{std::istreambuf_iterator<char>(strom), {}};
            EXPECT_NO_THROW(pruefung.pruefe(bytes)) << datei.path();
            saat += std::string_view(art) == "saat" ? 1 : 0;
        }
    }
    EXPECT_GT(saat, 0);
}

TEST_P(Saat, kostetNurNachLaenge) {
    const double kurze = sekunden(viele / 8, 3);
    const double lange = sekunden(viele, 1);
    EXPECT_LT(lange, 24 * kurze + 0.05) << "eight times as long took " << lange << " s instead of " << kurze;
}

std::string name(const testing::TestParamInfo<std::size_t>& info) {
    return fuzz::pruefungen()[info.param].name;
}

INSTANTIATE_TEST_SUITE_P(alle, Saat, testing::Range<std::size_t>(0, fuzz::pruefungen().size()), name);

} // namespace
