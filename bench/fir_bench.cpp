#include <cmath>
#include <vector>

#include <benchmark/benchmark.h>
#include <digitfilt/digitfilt.h>

namespace {

std::vector<double> signal(std::size_t n) {
  std::vector<double> x(n);
  for (std::size_t i = 0; i < n; ++i) x[i] = std::sin(0.01 * i) + 0.1 * std::sin(0.9 * i);
  return x;
}

// Default chain (low-pass and high-pass), run passCount = 2 times, of either moving-average
// designer. The pointers are variables: CDigitFiltCoefMak00MovAvrg swaps them.
template <class MovAvrg>
void runDefaultChain(benchmark::State& state) {
  const std::int64_t n = state.range(0);
  MovAvrg f;
  f.initFiltRange4DataSizeSampleRate(n, 1000.0);
  f.setWndLowPass(1000.0, n, 40.0, 1);
  f.setWndHighPass(1000.0, n, 1.0, 1);
  const std::vector<double> x = signal(n);
  std::vector<double> a(n), b(n), c(n);
  for (auto _ : state) {
    a = x;
    double *data = a.data(), *work = b.data(), *spare = c.data();
    f.filterStd(data, n, work, spare);
    benchmark::DoNotOptimize(data);
  }
  state.SetItemsProcessed(state.iterations() * n);
}

void BM_MovAvrgFilterStd(benchmark::State& state) {
  runDefaultChain<CDigitFiltCoefMak00MovAvrg>(state);
}
BENCHMARK(BM_MovAvrgFilterStd)->Arg(1 << 12)->Arg(1000000);

void BM_MovAvrgXFilterStd(benchmark::State& state) {
  runDefaultChain<CDigitFiltCoefMak00MovAvrgX>(state);
}
BENCHMARK(BM_MovAvrgXFilterStd)->Arg(1 << 12)->Arg(1000000);

// 60 dB, 50 Hz transition at 1 kHz: order 74.
void BM_KaiserFilterX(benchmark::State& state) {
  const std::int64_t n = state.range(0);
  CDigitFiltCoefMak03KaiserWnd k;
  k.setRate(1000.0);
  k.setTrBand(50.0);
  k.estimatedOrder();
  k.design();
  const std::vector<double> x = signal(n);
  std::vector<double> a(n);
  for (auto _ : state) {
    a = x;
    benchmark::DoNotOptimize(k.filterX(a.data(), static_cast<unsigned long>(n)));
  }
  state.SetItemsProcessed(state.iterations() * n);
}
BENCHMARK(BM_KaiserFilterX)->Arg(1 << 12)->Arg(1000000);

}  // namespace
