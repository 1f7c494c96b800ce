#include <benchmark/benchmark.h>

#include <random>
#include <vector>

#include <digitfilt/digitfilt.h>

namespace {

std::vector<double> noisyRamp(std::int64_t n, unsigned seed) {
  std::mt19937 gen(seed);
  std::normal_distribution<double> g(0.0, 1.0);
  std::vector<double> v(static_cast<std::size_t>(n));
  for (std::int64_t i = 0; i < n; ++i) v[i] = 0.001 * i + 3.0 + g(gen);
  return v;
}

// Both passes (sums, then the subtraction) over the whole record; the record keeps shrinking
// towards zero, which does not change the work.
void BM_LinearTrendOff(benchmark::State& state) {
  std::vector<double> x = noisyRamp(state.range(0), 1);
  CRemovOffsetTrendqv d;
  for (auto _ : state) {
    benchmark::DoNotOptimize(d.linearTrendOff(x.data(), state.range(0), 0, state.range(0) - 1));
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

void BM_DcOffset(benchmark::State& state) {
  std::vector<double> x = noisyRamp(state.range(0), 2);
  CRemovOffsetTrendqv d;
  for (auto _ : state) {
    benchmark::DoNotOptimize(d.dcOffset(x.data(), state.range(0), 0, state.range(0) - 1));
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

// 64 channels, one object each, blocks of 100 samples arriving in turn; the histories are full
// (window 2048) after the first 21 blocks, so the steady state is what is timed.
enum class AcqOp { kDc, kMedian, kTrend };

template <AcqOp op>
void BM_Acquisition(benchmark::State& state) {
  constexpr int kChannels = 64;
  constexpr std::int64_t kBlock = 100, kRecord = 100 * 1000;
  std::vector<CRemovOffsetTrendAcqqv> chans(kChannels);
  std::vector<std::vector<double>> data;
  for (int c = 0; c < kChannels; ++c) data.push_back(noisyRamp(kRecord, 10 + c));
  std::int64_t start = 0;
  auto run = [&] {
    for (int c = 0; c < kChannels; ++c) {
      double* d = data[c].data();
      const std::int64_t end = start + kBlock - 1;
      switch (op) {
        case AcqOp::kDc: chans[c].dcOffset(d, kRecord, start, end, c); break;
        case AcqOp::kMedian: chans[c].medianFlt(d, kRecord, start, end, c); break;
        case AcqOp::kTrend: chans[c].linearTrendOff(d, kRecord, start, end, c); break;
      }
    }
    start += kBlock;
    if (start >= kRecord) start = kBlock;  // wrap without index 0: no restart
  };
  for (int warm = 0; warm < 25; ++warm) run();
  for (auto _ : state) {
    run();
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * kChannels * kBlock);
}

}  // namespace

BENCHMARK(BM_LinearTrendOff)->Arg(1 << 12)->Arg(1000000);
BENCHMARK(BM_DcOffset)->Arg(1 << 12)->Arg(1000000);
BENCHMARK_TEMPLATE(BM_Acquisition, AcqOp::kDc);
BENCHMARK_TEMPLATE(BM_Acquisition, AcqOp::kMedian);
BENCHMARK_TEMPLATE(BM_Acquisition, AcqOp::kTrend);
