// What parsers, state document and panel cost, and that it grows with the input and no faster.

#include "ansicht/qt/Panelfenster.hpp"
#include "ansicht/qt/QtBetrieb.hpp"
#include "ansicht/terminal/Terminaltafel.hpp"

#include <benchmark/benchmark.h>

#include <cstdlib>

#include "bench/Vorgaenge.hpp"

using namespace mobilsteg;

namespace {

void groessen(benchmark::internal::Benchmark* messung) {
    messung->RangeMultiplier(8)->Range(1, 512)->Unit(benchmark::kMicrosecond);
}

int groesse(const benchmark::State& lauf) {
    return static_cast<int>(lauf.range(0));
}

void adbLesen(benchmark::State& lauf) {
    const auto text = adbListe(groesse(lauf));
    for (auto _ : lauf)
        benchmark::DoNotOptimize(Adb::lies(text));
}
BENCHMARK(adbLesen)->Apply(groessen);

void lsofLesen(benchmark::State& lauf) {
    const auto text = lsofListe(groesse(lauf));
    for (auto _ : lauf)
        benchmark::DoNotOptimize(Erhebung::liesVerbindungen(text));
}
BENCHMARK(lsofLesen)->Arg(500)->Arg(5000)->Arg(50000)->Unit(benchmark::kMicrosecond);

void antwortLesen(benchmark::State& lauf) {
    const auto text = antwortJson(groesse(lauf));
    for (auto _ : lauf)
        benchmark::DoNotOptimize(Antwort::ausJson(text).value());
}
BENCHMARK(antwortLesen)->Apply(groessen);

void standSchreiben(benchmark::State& lauf) {
    const auto antwort = Antwort::ausJson(antwortJson(groesse(lauf))).value();
    for (auto _ : lauf)
        benchmark::DoNotOptimize(standDokument(fahrtangaben(), antwort));
}
BENCHMARK(standSchreiben)->Apply(groessen);

void baumBauen(benchmark::State& lauf) {
    const auto z = fahrender(groesse(lauf));
    for (auto _ : lauf)
        benchmark::DoNotOptimize(inhalt(z, false));
}
BENCHMARK(baumBauen)->Apply(groessen);

void baumVergleichen(benchmark::State& lauf) {
    const auto einer = inhalt(fahrender(groesse(lauf)), false);
    const auto anderer = inhalt(fahrender(groesse(lauf)), false);
    for (auto _ : lauf)
        benchmark::DoNotOptimize(einer == anderer);
}
BENCHMARK(baumVergleichen)->Apply(groessen);

void alsTextZeichnen(benchmark::State& lauf) {
    const auto baum = inhalt(fahrender(groesse(lauf)), false);
    for (auto _ : lauf)
        benchmark::DoNotOptimize(alsText(baum, true));
}
BENCHMARK(alsTextZeichnen)->Apply(groessen);

/// One value has changed, as in most ticks; its widgets and the picture follow.
void alsFensterZeichnen(benchmark::State& lauf) {
    auto z = fahrender(groesse(lauf));
    const Baum vorher = inhalt(z, false);
    z.gleise.back() = "WLAN · weg";
    const Baum nachher = inhalt(z, false);
    Panelfenster fenster([](const Aktion&) {});
    fenster.zeichne(vorher);
    fenster.show(); // Qt prepares every picture of a hidden window from the beginning
    bool neu = false;
    for (auto _ : lauf) {
        fenster.zeichne((neu = !neu) ? nachher : vorher);
        benchmark::DoNotOptimize(fenster.grab());
    }
}
BENCHMARK(alsFensterZeichnen)->Apply(groessen);

void takt(benchmark::State& lauf) {
    Taktwelt welt;
    for (auto _ : lauf)
        welt.takte(1);
    if (!welt.faehrt())
        lauf.SkipWithError("not in „Fährt mit“");
}
// The controller has a thread of its own, whose time counts as well.
BENCHMARK(takt)->Unit(benchmark::kMicrosecond)->MeasureProcessCPUTime();

} // namespace

int main(int anzahl, char** worte) {
    ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
    benchmark::Initialize(&anzahl, worte);
    const QtBetrieb qt(anzahl, worte);
    benchmark::RunSpecifiedBenchmarks();
}
