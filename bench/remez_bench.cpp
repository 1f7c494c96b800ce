#include <benchmark/benchmark.h>
#include <digitfilt/digitfilt.h>

#include <algorithm>

namespace {

using Remez = CDigitFiltCoefMak06Remez04;

// A 0-0.2 / stopEdge-0.5 low-pass, density 16, taps allocated.
Filter_Remez lowPass(std::int64_t numTaps, double stopEdge = 0.25) {
  Filter_Remez f;
  f.numTaps = numTaps;
  f.numBands = 2;
  f.gridDensity = 16;
  const double bands[] = {0.0, 0.2, stopEdge, 0.5}, des[] = {1.0, 1.0, 0.0, 0.0};
  std::copy(bands, bands + 4, f.bands);
  std::copy(des, des + 4, f.des);
  f.weight[0] = f.weight[1] = 1.0;
  f.allocCoefs(numTaps);
  return f;
}

// The designer's own entry point: its run stops at the first parameter step on the doubled arrays.
void BM_RemezPM03k(benchmark::State& state) {
  Filter_Remez f = lowPass(state.range(0));
  int result = 0;
  for (auto _ : state) benchmark::DoNotOptimize(result = Remez::remezPM03k(&f));
  state.counters["result"] = result;
}
BENCHMARK(BM_RemezPM03k)->Arg(51)->Arg(101)->Arg(201)->Unit(benchmark::kMicrosecond);

// The full exchange over the filled grid. At 201 taps the 0.05 transition asks for a ripple
// near 1e-8, where the barycentric weights lose their precision and the run fails (-1) within a
// few iterations; a 0.02 transition converges.
void BM_Remez00(benchmark::State& state) {
  Filter_Remez f = lowPass(state.range(0), state.range(1) / 1000.0);
  CRemezData data;
  const int iterations =
      Remez::rmzSearchX(f.numTaps, 2, f.bands, f.des, f.weight, &data, 16, 1);
  int result = 0;
  for (auto _ : state) benchmark::DoNotOptimize(result = Remez::remez00(&f));
  state.counters["result"] = result;
  state.counters["iterations"] = iterations;
}
BENCHMARK(BM_Remez00)
    ->Args({51, 250})
    ->Args({101, 250})
    ->Args({201, 250})
    ->Args({201, 220})
    ->Unit(benchmark::kMicrosecond);

void BM_SearchBestOrder(benchmark::State& state) {
  int result = 0;
  for (auto _ : state) {
    state.PauseTiming();
    Filter_Remez f = lowPass(state.range(0));
    state.ResumeTiming();
    benchmark::DoNotOptimize(result = Remez::searchBestOrder(&f));
  }
  state.counters["result"] = result;
}
BENCHMARK(BM_SearchBestOrder)->Arg(60)->Unit(benchmark::kMicrosecond);

}  // namespace
