// Many seeds at once, or one seed's story.

#include "tests/simulation/Zufallswelt.hpp"

#include <algorithm>
#include <atomic>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <map>
#include <mutex>
#include <thread>

using namespace mobilsteg;

namespace {

int eineGeschichte(std::uint64_t samen, int takte) {
    Zufallswelt welt(samen);
    welt.lebe(takte);
    for (const auto& zeile : welt.geschichte)
        std::puts(zeile.c_str());
    std::puts(welt.verstoss.empty() ? "kein Verstoß" : ("VERSTOSS: " + welt.verstoss).c_str());
    return welt.verstoss.empty() ? 0 : 1;
}

int vieleSamen(std::uint64_t ab, std::uint64_t anzahl, int takte) {
    const auto anfang = std::chrono::steady_clock::now();
    Zufallswelt::Zaehler summe;
    int verstoesse = 0;
    std::mutex schloss; // of the two
    std::atomic<std::uint64_t> naechster = ab;
    const auto arbeite = [&] {
        for (auto samen = naechster++; samen < ab + anzahl; samen = naechster++) {
            Zufallswelt welt(samen);
            welt.lebe(takte);
            const std::lock_guard wache(schloss);
            using Z = Zufallswelt::Zaehler;
            for (const auto was : {&Z::ticks, &Z::tode, &Z::starts, &Z::tunnel, &Z::fahrten, &Z::stoerungen})
                summe.*was += welt.zaehler.*was;
            if (!welt.verstoss.empty() && ++verstoesse <= 10)
                std::printf("Samen %ju: %s\n", std::uintmax_t{samen}, welt.verstoss.c_str());
        }
    };
    std::vector<std::jthread> arbeiter;
    for (unsigned i = 0; i < std::max(1U, std::thread::hardware_concurrency()); ++i)
        arbeiter.emplace_back(arbeite);
    arbeiter.clear();
    const std::chrono::duration<double> dauer = std::chrono::steady_clock::now() - anfang;
    std::printf("%ju Samen, %d Ticks (davon %d in „Fährt mit“), %d Starts, %d Tode mitten im Aufruf, "
                "%d Tunnelstarts, %d Störungen in %.0f s: %d Verstöße\n",
                std::uintmax_t{anzahl}, summe.ticks, summe.fahrten, summe.starts, summe.tode, summe.tunnel,
                summe.stoerungen, dauer.count(), verstoesse);
    return verstoesse == 0 ? 0 : 1;
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
