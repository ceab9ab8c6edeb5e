// Many seeds at once, one seed's story, or one calm life of many days.
// Usage: mobilsteg-simulation [--samen N] [--ab N] [--takte N] | --geschichte SAMEN | --tage N

#include "tests/simulation/Sturmwelt.hpp"

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <thread>

using namespace mobilsteg;

namespace {

struct Summe {
    std::mutex schloss;
    Sturmwelt::Zaehler zaehler;
    int verstoesse = 0;

    void nimm(std::uint64_t samen, const Sturmwelt& welt) {
        const std::lock_guard wache(schloss);
        const auto& z = welt.zaehler();
        zaehler.ticks += z.ticks;
        zaehler.tode += z.tode;
        zaehler.starts += z.starts;
        zaehler.tunnel += z.tunnel;
        zaehler.fahrten += z.fahrten;
        zaehler.stoerungen += z.stoerungen;
        if (!welt.verstoss().empty() && ++verstoesse <= 10)
            std::printf("Samen %llu: %s\n", static_cast<unsigned long long>(samen), welt.verstoss().c_str());
    }
};

int vieleSamen(std::uint64_t ab, std::uint64_t anzahl, int takte) {
    const auto anfang = std::chrono::steady_clock::now();
    Summe summe;
    std::atomic<std::uint64_t> naechster = ab;
    const auto arbeite = [&] {
        for (auto samen = naechster++; samen < ab + anzahl; samen = naechster++) {
            Sturmwelt welt(samen);
            welt.lebe(takte);
            summe.nimm(samen, welt);
        }
    };
    std::vector<std::jthread> arbeiter;
    for (unsigned i = 0; i < std::max(1U, std::thread::hardware_concurrency()); ++i)
        arbeiter.emplace_back(arbeite);
    arbeiter.clear();
    const auto sekunden = std::chrono::duration<double>(std::chrono::steady_clock::now() - anfang).count();
    const auto& z = summe.zaehler;
    std::printf("%llu Samen, %d Ticks (davon %d in „Fährt mit“), %d Starts, %d Tode mitten im Aufruf, %d "
                "Tunnelstarts, "
                "%d Störungen in %.0f s: %d Verstöße\n",
                static_cast<unsigned long long>(anzahl), z.ticks, z.fahrten, z.starts, z.tode, z.tunnel,
                z.stoerungen, sekunden, summe.verstoesse);
    return summe.verstoesse == 0 ? 0 : 1;
}

int eineGeschichte(std::uint64_t samen, int takte) {
    Sturmwelt welt(samen);
    welt.lebe(takte);
    std::printf("%s%s\n", welt.geschichte().c_str(),
                welt.verstoss().empty() ? "kein Verstoß" : ("VERSTOSS: " + welt.verstoss()).c_str());
    return welt.verstoss().empty() ? 0 : 1;
}

} // namespace

int main(int argc, char** argv) {
    std::uint64_t ab = 1;
    std::uint64_t anzahl = 1000;
    int takte = 100;
    std::uint64_t geschichte = 0;
    for (int i = 1; i + 1 < argc; i += 2) {
        const std::string option = argv[i];
        const auto wert = std::strtoull(argv[i + 1], nullptr, 10);
        if (option == "--samen")
            anzahl = wert;
        else if (option == "--ab")
            ab = wert;
        else if (option == "--takte")
            takte = static_cast<int>(wert);
        else if (option == "--geschichte")
            geschichte = wert;
        else
            return std::fprintf(stderr, "mobilsteg-simulation: Unbekannte Option: %s\n", option.c_str()), 2;
    }
    return geschichte != 0 ? eineGeschichte(geschichte, takte) : vieleSamen(ab, anzahl, takte);
}
