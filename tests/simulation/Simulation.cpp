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
#include <map>
#include <mutex>
#include <thread>
#include <utility>

using namespace mobilsteg;

namespace {

using Zahl = unsigned long long;

int vieleSamen(Zahl ab, Zahl anzahl, int takte) {
    const auto anfang = std::chrono::steady_clock::now();
    Sturmwelt::Zaehler summe;
    int verstoesse = 0;
    std::mutex schloss; // of the two
    std::atomic<Zahl> naechster = ab;
    const auto arbeite = [&] {
        for (auto samen = naechster++; samen < ab + anzahl; samen = naechster++) {
            Sturmwelt welt(samen);
            welt.lebe(takte);
            const std::lock_guard wache(schloss);
            using Z = Sturmwelt::Zaehler;
            for (const auto was : {&Z::ticks, &Z::tode, &Z::starts, &Z::tunnel, &Z::fahrten, &Z::stoerungen})
                summe.*was += welt.zaehler().*was;
            if (!welt.verstoss().empty() && ++verstoesse <= 10)
                std::printf("Samen %llu: %s\n", samen, welt.verstoss().c_str());
        }
    };
    std::vector<std::jthread> arbeiter;
    for (unsigned i = 0; i < std::max(1U, std::thread::hardware_concurrency()); ++i)
        arbeiter.emplace_back(arbeite);
    arbeiter.clear();
    const std::chrono::duration<double> dauer = std::chrono::steady_clock::now() - anfang;
    std::printf("%llu Samen, %d Ticks (davon %d in „Fährt mit“), %d Starts, %d Tode mitten im Aufruf, "
                "%d Tunnelstarts, %d Störungen in %.0f s: %d Verstöße\n",
                anzahl, summe.ticks, summe.fahrten, summe.starts, summe.tode, summe.tunnel, summe.stoerungen,
                dauer.count(), verstoesse);
    return verstoesse == 0 ? 0 : 1;
}

int eineGeschichte(Zahl samen, int takte) {
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
    HandyWelt welt;
    welt.handys[0].status =
        R"({"alles":false,"notlage":false,"paths":[{"iface":"wlan0","healthy":true,"rtt_ms":40}],)"
        R"("kunden":[{"name":"Testmac","bytes":123456}]})";
    const auto handys = welt.handys;
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
    std::ptrdiff_t bisher = 0;
    std::ptrdiff_t zeilenJeStunde = 0;
    for (int stunde = 1; stunde <= tage * 24; ++stunde) {
        gehe(std::chrono::minutes(59));
        welt.handys.clear();
        welt.forwards.clear();
        gehe(std::chrono::minutes(1));
        welt.handys = handys;
        const auto log = welt.ordner.lies("/heim/Library/Logs/MobilstegBordlotse.log");
        const auto alle = std::count(log.begin(), log.end(), '\n');
        const auto zeilen = alle - std::exchange(bisher, alle);
        if (stunde == 2)
            zeilenJeStunde = zeilen;
        if (stunde > 2 && zeilen != zeilenJeStunde) {
            std::printf("Stunde %d: %td Zeilen statt %td\n", stunde, zeilen, zeilenJeStunde);
            return 1;
        }
        if (stunde == 24)
            amErstenTag = belegteMebibyte();
    }
    const double amLetzten = belegteMebibyte();
    std::printf(
        "%d Tage, %d Ticks: %td Protokollzeilen je Stunde, Speicher nach dem ersten Tag %.2f MiB, am Ende "
        "%.2f MiB\n",
        tage, ticks, zeilenJeStunde, amErstenTag, amLetzten);
    return amLetzten <= amErstenTag + 1 ? 0 : 1;
}

} // namespace

int main(int argc, char** argv) {
    std::map<std::string, Zahl> werte = {
        {"--samen", 1000}, {"--ab", 1}, {"--takte", 100}, {"--geschichte", 0}, {"--tage", 0}};
    for (int i = 1; i + 1 < argc; i += 2) {
        if (!werte.contains(argv[i])) {
            std::fprintf(stderr, "mobilsteg-simulation: Unbekannte Option: %s\n", argv[i]);
            return 2;
        }
        werte[argv[i]] = std::strtoull(argv[i + 1], nullptr, 10);
    }
    const int takte = static_cast<int>(werte["--takte"]);
    if (werte["--tage"] != 0)
        return dauerlauf(static_cast<int>(werte["--tage"]));
    return werte["--geschichte"] != 0 ? eineGeschichte(werte["--geschichte"], takte)
                                      : vieleSamen(werte["--ab"], werte["--samen"], takte);
}
