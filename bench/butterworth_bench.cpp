// Butterworth filtering speed: zero-phase records and the acquisition bank run block by block.
#include <cmath>
#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

#include <benchmark/benchmark.h>
#include <digitfilt/digitfilt.h>

namespace {

std::vector<double> signal(std::int64_t n, double rate) {
  std::vector<double> x(static_cast<std::size_t>(n));
  for (std::int64_t i = 0; i < n; ++i) {
    const double t = static_cast<double>(i) / rate;
    x[static_cast<std::size_t>(i)] = 20.0 * std::sin(6.283185307179586 * 10.0 * t) +
                                     5.0 * std::sin(6.283185307179586 * 50.0 * t) + 0.3 * t;
  }
  return x;
}

// ctfFilterStd over n samples at 1000 Hz: order-4 low-pass at 70 Hz and order-4 45-55 Hz
// band-stop, each forwards and backwards.
void BM_ZeroPhaseLowPassBandStop(benchmark::State& state) {
  const std::int64_t n = state.range(0);
  CDigitFiltCoefMak01Butterworth01ctf f;
  filter_iirspec* specs = f.getFilterCoeffPt();
  for (int slot = 0; slot < 2; ++slot) {
    filter_iirspec& s = specs[slot];
    s.enabled = 1;
    s.filterType = slot == 0 ? 0 : 3;
    s.order = 4;
    s.sampleRate = 1000.0;
    s.freqLow = slot == 0 ? 0.1 : 45.0;
    s.freqHigh = slot == 0 ? 70.0 : 55.0;
    f.ctfButterworthIirFilterCoef(&s);
  }
  const std::vector<double> source = signal(n, 1000.0);
  std::vector<double> data(source.size());
  for (auto _ : state) {
    state.PauseTiming();
    data = source;
    state.ResumeTiming();
    f.ctfFilterStd(data.data(), n, 2, specs);
    benchmark::DoNotOptimize(data.data());
  }
  state.SetItemsProcessed(state.iterations() * n);
  state.counters["ns_per_sample"] = benchmark::Counter(
      static_cast<double>(n) * static_cast<double>(state.iterations()),
      benchmark::Counter::kIsRate | benchmark::Counter::kInvert, benchmark::Counter::kIs1000);
}
BENCHMARK(BM_ZeroPhaseLowPassBandStop)->Arg(1000000)->Unit(benchmark::kMillisecond);

// An acquisition host: 64 channels at 1000 Hz for 60 s, high-pass 0.5 Hz, low-pass 70 Hz, 50 Hz
// mains with 3 harmonics; every 100 ms a block of 100 samples per channel lands in the channel's
// buffer and goes through that channel's bank with fastFilterInC.
void BM_AcquisitionBank(benchmark::State& state) {
  constexpr int kChannels = 64;
  constexpr double kRate = 1000.0;
  constexpr double kSeconds = 60.0;
  constexpr std::int64_t kLength = static_cast<std::int64_t>(kRate * kSeconds);
  const std::int64_t block = state.range(0);

  CFilterDcLtSetAcqqv settings;
  settings.acqSampleRate = kRate;
  settings.channelCount = kChannels;
  settings.highPassOn = 1;
  settings.highPassFreq = 0.5;
  settings.lowPassOn = 1;
  settings.lowPassFreq = 70.0;
  settings.powerLineOn = 1;
  settings.powerLineType = 1;
  settings.powerLineWidth = 4.0;
  settings.powerLineHarmonics = 3;

  std::vector<std::unique_ptr<CDigitFiltCoefMak01ButterworthAcqqv>> banks;
  for (int c = 0; c < kChannels; ++c) {
    banks.push_back(std::make_unique<CDigitFiltCoefMak01ButterworthAcqqv>());
    banks.back()->setCheckCoefs(settings);
    banks.back()->makeAllButterworthCoeffs(true);
  }
  const std::vector<double> source = signal(kLength, kRate);
  std::vector<std::vector<double>> data(kChannels, std::vector<double>(kLength));
  std::vector<std::vector<double>> tmp(kChannels, std::vector<double>(kLength));

  for (auto _ : state) {
    for (auto& bank : banks) bank->reset4RunTimeFilter();
    for (std::int64_t first = 0; first < kLength; first += block) {
      const std::int64_t last = std::min(first + block, kLength);
      for (int c = 0; c < kChannels; ++c) {
        double* d = data[c].data();
        std::memcpy(d + first, source.data() + first,
                    static_cast<std::size_t>(last - first) * sizeof(double));
        banks[c]->fastFilterInC(d, tmp[c].data(), kLength, first, last, c);
      }
    }
    benchmark::DoNotOptimize(data[0].data());
  }
  const double samples = static_cast<double>(kChannels) * static_cast<double>(kLength);
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(samples));
  state.counters["x_real_time"] = benchmark::Counter(
      kSeconds * static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}
BENCHMARK(BM_AcquisitionBank)->Arg(100)->Unit(benchmark::kMillisecond);

// The default bank for a rate designed from scratch: defaults, then every enabled slot.
void BM_DesignDefaultBank(benchmark::State& state) {
  for (auto _ : state) {
    CDigitFiltCoefMak01Butterworth designer;
    designer.initCtfButterworthFilter4SmplRate(1000.0);
    benchmark::DoNotOptimize(designer.makeAllButterworthCoeffs(true));
  }
}
BENCHMARK(BM_DesignDefaultBank)->Unit(benchmark::kMicrosecond);

// One order-4 band-stop's magnitude at 1000 frequencies, as a host plots it.
void BM_FreqResponse1000(benchmark::State& state) {
  CDigitFiltCoefMak01Butterworth designer;
  designer.initCtfButterworthFilter4SmplRate(1000.0);
  filter_iirspec s = designer.iirSpecs[3];
  s.enabled = 1;
  s.freqLow = 48.0;
  s.freqHigh = 52.0;
  designer.ctfButterworthIirFilterCoef(&s);
  for (auto _ : state)
    for (int i = 0; i < 1000; ++i)
      benchmark::DoNotOptimize(CMFilterFaceqv::freqResponse(&s, 1000.0, 0.5 * i));
  state.SetItemsProcessed(state.iterations() * 1000);
}
BENCHMARK(BM_FreqResponse1000)->Unit(benchmark::kMicrosecond);

}  // namespace
