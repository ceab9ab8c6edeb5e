// One thing many times over, for a counter of instructions. Usage: mobilsteg-zaehlung takt|stand|lsof

#include <cstdio>

#include "bench/Vorgaenge.hpp"

using namespace mobilsteg;

int main(int argc, char** argv) {
    const std::string was = argc > 1 ? argv[1] : "";
    std::size_t ergebnis = 0;
    if (was == "takt") {
        Taktwelt welt;
        welt.takte(1000);
        ergebnis = welt.faehrt() ? 1 : 0;
    } else if (was == "stand") {
        const auto antwort = Antwort::ausJson(antwortJson(2));
        for (int i = 0; i < 1000 && antwort; ++i)
            ergebnis += standDokument(fahrtangaben(), antwort).size();
    } else if (was == "lsof") {
        ergebnis = Erhebung::liesVerbindungen(lsofListe(50000)).durch.size();
    } else {
        std::fputs("mobilsteg-zaehlung takt|stand|lsof\n", stderr);
        return 2;
    }
    return ergebnis > 0 ? 0 : 1; // nothing: what was to be counted did not happen
}
