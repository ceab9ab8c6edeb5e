// Many seeds at once, or one seed's story.

#include "tests/simulation/Zufallswelt.hpp"

#include <algorithm>
#include <atomic>
#include <charconv>
#include <cstdio>
#include <map>
#include <mutex>
#include <thread>

using namespace mobilsteg;

namespace {

int eineGeschichte(std::uint64_t samen, int takte) {
    Zufallswelt welt(samen);
    welt.erzaehlt = true;
    welt.lebe(takte);
    return welt.verstoss.empty() ? 0 : 1;
}

int vieleSamen(std::uint64_t ab, std::uint64_t anzahl, int takte) {
    std::map<std::string, int> summe{{"Verstöße", 0}};
    std::mutex schloss; // of `summe`
    std::atomic<std::uint64_t> naechster = ab;
    const auto arbeite = [&] {
        for (auto samen = naechster++; samen < ab + anzahl; samen = naechster++) {
            Zufallswelt welt(samen);
            welt.lebe(takte);
            const std::lock_guard wache(schloss);
            for (const auto& [was, wieOft] : welt.zaehler)
                summe[was] += wieOft;
            if (!welt.verstoss.empty() && ++summe["Verstöße"] <= 10)
                std::printf("Samen %ju: %s\n", std::uintmax_t{samen}, welt.verstoss.c_str());
        }
    };
    std::vector<std::jthread> arbeiter;
    for (unsigned i = 0; i < std::max(1U, std::thread::hardware_concurrency()); ++i)
        arbeiter.emplace_back(arbeite);
    arbeiter.clear();
    for (const auto& [was, wieOft] : summe)
        std::printf("%d %s\n", wieOft, was.c_str());
    return summe["Verstöße"] > 0 ? 1 : 0;
}

} // namespace

int main(int argc, char** argv) {
    std::map<std::string, std::uint64_t> werte = {
        {"--samen", 1000}, {"--ab", 1}, {"--takte", 100}, {"--geschichte", 0}};
    for (int i = 1; i < argc; i += 2) {
        const std::string_view zahl = i + 1 < argc ? argv[i + 1] : "";
        const auto wert = werte.find(argv[i]);
        if (wert == werte.end() || zahl.empty() ||
            std::from_chars(zahl.begin(), zahl.end(), wert->second).ptr != zahl.end()) {
            std::fputs("mobilsteg-simulation [--samen N] [--ab N] [--takte N] | --geschichte SAMEN\n",
                       stderr);
            return 2;
        }
    }
    const int takte = static_cast<int>(werte["--takte"]);
    return werte["--geschichte"] != 0 ? eineGeschichte(werte["--geschichte"], takte)
                                      : vieleSamen(werte["--ab"], werte["--samen"], takte);
}
