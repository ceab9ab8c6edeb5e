// One thing many times over, for a counter of instructions. Usage: mobilsteg-zaehlung takt|stand|lsof|nichts

#include <cstdio>

#include "bench/Vorgaenge.hpp"

using namespace mobilsteg;

int main(int argc, char** argv) {
    const std::string was = argc > 1 ? argv[1] : "";
    std::size_t ergebnis = 0;
    if (was == "takt") {
        Taktwelt().takte(200);
    } else if (was == "stand") {
        const auto antwort = Antwort::ausJson(antwortJson());
        for (int i = 0; i < 1000; ++i)
            ergebnis += standDokument({}, antwort)->size();
    } else if (was == "lsof") {
        ergebnis = Erhebung::liesVerbindungen(lsofListe(50000)).durch.size();
    } else {
        std::fputs("mobilsteg-zaehlung takt|stand|lsof\n", stderr);
        return 2;
    }
    return std::printf("%zu\n", ergebnis) > 0 ? 0 : 1;
}
