#include <benchmark/benchmark.h>

#include <random>
#include <vector>

#include <digitfilt/digitfilt.h>

namespace {

struct MedianProbe : CRtfMedian {
  using CRtfMedian::medianWirth;
  using CRtfMedian::quick_select;
  using CRtfMedian::torben;
};

// 64 different inputs taken in turn: with one input repeated, the branch predictor learns its
// partition pattern and the figures come out too good.
constexpr int kInputs = 64;

struct Inputs {
  explicit Inputs(std::int64_t n) : n(n), values(static_cast<std::size_t>(n * kInputs)) {
    std::mt19937 gen(42);
    std::normal_distribution<double> g(0.0, 1.0);
    for (double& x : values) x = g(gen);
  }
  const double* at(std::int64_t k) const { return values.data() + (k % kInputs) * n; }
  std::int64_t n;
  std::vector<double> values;
};

// The selections reorder their input, so each iteration copies it first; BM_CopyOnly is that
// cost alone.
void BM_CopyOnly(benchmark::State& state) {
  const Inputs in(state.range(0));
  std::vector<double> work(static_cast<std::size_t>(in.n));
  std::int64_t k = 0;
  for (auto _ : state) {
    work.assign(in.at(k), in.at(k) + in.n);
    ++k;
    benchmark::DoNotOptimize(work.data());
    benchmark::ClobberMemory();
  }
}

void BM_QuickMedianStd(benchmark::State& state) {
  const Inputs in(state.range(0));
  std::vector<double> work(static_cast<std::size_t>(in.n));
  CRtfMedian m;
  std::int64_t k = 0;
  for (auto _ : state) {
    work.assign(in.at(k), in.at(k) + in.n);
    ++k;
    benchmark::DoNotOptimize(m.quickMedianStd(work));
  }
  state.SetItemsProcessed(state.iterations() * in.n);
}

void BM_MedianWirth(benchmark::State& state) {
  const Inputs in(state.range(0));
  std::vector<double> work(static_cast<std::size_t>(in.n));
  MedianProbe m;
  std::int64_t k = 0;
  for (auto _ : state) {
    work.assign(in.at(k), in.at(k) + in.n);
    ++k;
    benchmark::DoNotOptimize(m.medianWirth(work.data(), in.n));
  }
  state.SetItemsProcessed(state.iterations() * in.n);
}

void BM_Torben(benchmark::State& state) {
  const Inputs in(state.range(0));
  MedianProbe m;
  std::int64_t k = 0;
  for (auto _ : state) benchmark::DoNotOptimize(m.torben(in.at(k++), static_cast<int>(in.n)));
  state.SetItemsProcessed(state.iterations() * in.n);
}

}  // namespace

BENCHMARK(BM_CopyOnly)->Arg(2048);
BENCHMARK(BM_QuickMedianStd)->Arg(256)->Arg(2048)->Arg(1 << 14);
BENCHMARK(BM_MedianWirth)->Arg(256)->Arg(2048)->Arg(1 << 14);
BENCHMARK(BM_Torben)->Arg(256)->Arg(2048)->Arg(1 << 14);
