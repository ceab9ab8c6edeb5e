// Many seeds at once, one seed's story, or one calm life of many days.
// Usage: mobilsteg-simulation [--samen N] [--ab N] [--takte N] | --geschichte SAMEN | --tage N

#include "tests/simulation/Sturmwelt.hpp"

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
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

double belegteMebibyte() {
    std::ifstream statm("/proc/self/statm");
    long gesamt = 0;
    long belegt = 0;
    statm >> gesamt >> belegt;
    return static_cast<double>(belegt) * static_cast<double>(::sysconf(_SC_PAGESIZE)) / (1024 * 1024);
}

/// An ordinary life: the phone drives along, and once an hour it is off the cable for a minute.
int dauerlauf(int tage) {
    KabelWelt welt;
    Modellhandy handy;
    handy.status = R"({"alles":false,"notlage":false,"paths":[{"iface":"wlan0","healthy":true,"rtt_ms":40}],)"
                   R"("kunden":[{"name":"Testmac","bytes":123456}]})";
    welt.handys = {handy};
    int ticks = 0;
    welt.standdienst.nachDokument = [&] { ++ticks; };
    welt.starte();
    const auto gehe = [&](Dauer dauer) {
        welt.welt.laufe(dauer);
        welt.aufrufe.clear();
        welt.anmeldungen.clear();
        welt.berichte.clear();
    };
    double amErstenTag = 0;
    std::size_t zeilenJeStunde = 0;
    for (int stunde = 1; stunde <= tage * 24; ++stunde) {
        const auto vorher = welt.ordner.lies("/heim/Library/Logs/MobilstegBordlotse.log").size();
        gehe(std::chrono::minutes(59));
        welt.handys.clear();
        welt.forwards.clear();
        gehe(std::chrono::minutes(1));
        welt.handys = {handy};
        const auto text = welt.ordner.lies("/heim/Library/Logs/MobilstegBordlotse.log").substr(vorher);
        const auto zeilen = static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
        if (stunde == 2)
            zeilenJeStunde = zeilen;
        if (stunde > 2 && zeilen != zeilenJeStunde)
            return std::printf("Stunde %d: %zu Zeilen statt %zu:\n%s", stunde, zeilen, zeilenJeStunde,
                               text.c_str()),
                   1;
        if (stunde == 24)
            amErstenTag = belegteMebibyte();
    }
    const double amLetzten = belegteMebibyte();
    std::printf(
        "%d Tage, %d Ticks: %zu Protokollzeilen je Stunde, Speicher nach dem ersten Tag %.2f MiB, am Ende %.2f MiB\n",
        tage, ticks, zeilenJeStunde, amErstenTag, amLetzten);
    return amLetzten <= amErstenTag + 1 ? 0 : 1;
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
        else if (option == "--tage")
            return dauerlauf(static_cast<int>(wert));
        else if (option == "--geschichte")
            geschichte = wert;
        else
            return std::fprintf(stderr, "mobilsteg-simulation: Unbekannte Option: %s\n", option.c_str()), 2;
    }
    return geschichte != 0 ? eineGeschichte(geschichte, takte) : vieleSamen(ab, anzahl, takte);
}
