// What parsers, state document and panel cost, and that it grows with the input and no faster.

#include "ansicht/terminal/Terminaltafel.hpp"

#include <benchmark/benchmark.h>

#include "bench/Vorgaenge.hpp"

using namespace mobilsteg;

namespace {

void adbLesen(benchmark::State& lauf) {
    const auto text = adbListe(static_cast<int>(lauf.range(0)));
    for (auto _ : lauf)
        benchmark::DoNotOptimize(Adb::lies(text));
    lauf.SetComplexityN(lauf.range(0));
}
BENCHMARK(adbLesen)->RangeMultiplier(8)->Range(1, 512)->Complexity(benchmark::oN);

void lsofLesen(benchmark::State& lauf) {
    const auto text = lsofListe(static_cast<int>(lauf.range(0)));
    for (auto _ : lauf)
        benchmark::DoNotOptimize(Erhebung::liesVerbindungen(text));
    lauf.SetComplexityN(lauf.range(0));
}
BENCHMARK(lsofLesen)
    ->Arg(500)
    ->Arg(5000)
    ->Arg(50000)
    ->Complexity(benchmark::oN)
    ->Unit(benchmark::kMicrosecond);

void antwortLesen(benchmark::State& lauf) {
    const auto text = antwortJson();
    for (auto _ : lauf)
        benchmark::DoNotOptimize(Antwort::ausJson(text));
}
BENCHMARK(antwortLesen);

void standSchreiben(benchmark::State& lauf) {
    const auto antwort = Antwort::ausJson(antwortJson());
    Standangaben angaben;
    angaben.phase = Phase::Art::faehrt;
    angaben.name = "Testmac";
    for (auto _ : lauf)
        benchmark::DoNotOptimize(standDokument(angaben, antwort));
}
BENCHMARK(standSchreiben);

void baumBauen(benchmark::State& lauf) {
    const auto z = fahrender();
    for (auto _ : lauf)
        benchmark::DoNotOptimize(inhalt(z, false));
}
BENCHMARK(baumBauen);

void baumVergleichen(benchmark::State& lauf) {
    const auto einer = inhalt(fahrender(), false);
    const auto anderer = inhalt(fahrender(), false);
    for (auto _ : lauf)
        benchmark::DoNotOptimize(einer == anderer);
}
BENCHMARK(baumVergleichen);

void alsTextZeichnen(benchmark::State& lauf) {
    const auto baum = inhalt(fahrender(), false);
    for (auto _ : lauf)
        benchmark::DoNotOptimize(alsText(baum, true));
}
BENCHMARK(alsTextZeichnen);

void takt(benchmark::State& lauf) {
    Taktwelt welt;
    for (auto _ : lauf)
        welt.takte(1);
}
BENCHMARK(takt)->Unit(benchmark::kMicrosecond);

} // namespace

BENCHMARK_MAIN();
