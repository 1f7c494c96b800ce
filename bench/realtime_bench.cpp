// Real-time biquad cascades: samples per second through 2- and 4-stage cascades on a record of
// 1e6 samples, and the multichannel section over 64 channels in blocks of 100.
#include <cstdint>
#include <random>
#include <vector>

#include <benchmark/benchmark.h>

#include <digitfilt/digitfilt.h>

namespace {

constexpr std::int64_t kRecord = 1000000;

std::vector<double> noise(std::size_t n) {
  std::mt19937 gen(42);
  std::uniform_real_distribution<double> u(-1.0, 1.0);
  std::vector<double> x(n);
  for (double& v : x) v = u(gen);
  return x;
}

// Low-pass and high-pass, then two notches for the 4-stage case (rate 1000 Hz).
CFilterDcLtSetAcqqv cascadeSettings(int stages) {
  CFilterDcLtSetAcqqv s;
  s.acqSampleRate = 1000.0;
  s.channelCount = 1;
  s.bqQ = 0.707;
  s.lowPassOn = s.highPassOn = 1;
  s.lowPassFreq = 200.0;
  s.highPassFreq = 1.0;
  for (int k = 0; k + 2 < stages; ++k) {
    s.notchOn[k] = 1;
    s.notchFreqLow[k] = 45.0 + 50.0 * k;
    s.notchFreqHigh[k] = 55.0 + 50.0 * k;
  }
  return s;
}

// The signal is restored outside the timed region so every pass filters the same noise.
template <class Cascade>
void runRecord(benchmark::State& state, Cascade& c) {
  const std::vector<double> source = noise(kRecord);
  std::vector<double> data = source;
  for (auto _ : state) {
    c.filtDataAcq(data.data(), kRecord, 0, kRecord - 1, 0);
    benchmark::DoNotOptimize(data.data());
    state.PauseTiming();
    data = source;
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * kRecord);
}

// A cascade built and designed from the settings, as a host does it.
template <class Cascade>
void runDesignedCascade(benchmark::State& state) {
  Cascade c;
  CFilterDcLtSetAcqqv s = cascadeSettings(static_cast<int>(state.range(0)));
  c.setCheckCoefs(s);
  c.makeAllBiquadCoeffs(0);
  runRecord(state, c);
}

void BM_Rtf1Cascade(benchmark::State& state) { runDesignedCascade<CRtf1Biquad>(state); }
BENCHMARK(BM_Rtf1Cascade)->Arg(2)->Arg(4)->Unit(benchmark::kMillisecond);

void BM_Rtf2Cascade(benchmark::State& state) { runDesignedCascade<CRtf2Biquad>(state); }
BENCHMARK(BM_Rtf2Cascade)->Arg(2)->Arg(4)->Unit(benchmark::kMillisecond);

// The settings leave CRtf3Biquad stages undesigned; design them as a host would, so the pass
// runs real sections (the arithmetic per sample is the same either way).
void BM_Rtf3Cascade(benchmark::State& state) {
  CRtf3Biquad c;
  CFilterDcLtSetAcqqv s = cascadeSettings(static_cast<int>(state.range(0)));
  c.setCheckCoefs(s);
  for (std::int64_t i = 0; i < c.biquadList.size(); ++i) {
    auto* bq = static_cast<BIQUAD_PARAM3*>(c.biquadList.at(i));
    *bq = CRtf3Biquad(bq->type, bq->fc, bq->sampleRate, bq->q, bq->peakGain).biquadParam;
    bq->enabled = 1;
  }
  runRecord(state, c);
}
BENCHMARK(BM_Rtf3Cascade)->Arg(2)->Arg(4)->Unit(benchmark::kMillisecond);

void BM_Rtf3MutiChnl(benchmark::State& state) {
  constexpr int kChannels = 64, kBlock = 100;
  CRtf3BiquadMutiChnl m(kChannels, 0, 0.1, 0.707, 0.0);
  const std::vector<double> source = noise(kChannels * kBlock);
  std::vector<double> out(source.size());
  for (auto _ : state) {
    for (int i = 0; i < kBlock; ++i)
      for (int ch = 0; ch < kChannels; ++ch)
        out[ch * kBlock + i] = m.process(source[ch * kBlock + i], ch);
    benchmark::DoNotOptimize(out.data());
  }
  state.SetItemsProcessed(state.iterations() * kChannels * kBlock);
}
BENCHMARK(BM_Rtf3MutiChnl);

}  // namespace
