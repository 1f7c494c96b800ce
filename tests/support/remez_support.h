#pragma once
// Design requests and a slow response oracle for the Remez tests.
#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdint>
#include <initializer_list>
#include <vector>

#include <digitfilt/digitfilt.h>

namespace digitfilt::test {

// A record with the given bands (edge pairs), one amplitude per band and weights, taps allocated.
inline Filter_Remez remezSpec(std::int64_t numTaps, std::initializer_list<double> bands,
                              std::initializer_list<double> amps,
                              std::initializer_list<double> weights) {
  Filter_Remez f;
  f.numTaps = numTaps;
  f.numBands = static_cast<std::int64_t>(amps.size());
  f.gridDensity = 16;
  std::copy(bands.begin(), bands.end(), f.bands);
  int i = 0;
  for (double a : amps) f.des[2 * i] = f.des[2 * i + 1] = a, ++i;
  std::copy(weights.begin(), weights.end(), f.weight);
  f.allocCoefs(numTaps);
  return f;
}

// The 0-0.2 / 0.25-0.5 low-pass used throughout.
inline Filter_Remez lowPassSpec(std::int64_t numTaps, double stopWeight = 1.0) {
  return remezSpec(numTaps, {0.0, 0.2, 0.25, 0.5}, {1.0, 0.0}, {1.0, stopWeight});
}

// |H(f)| of taps h by direct summation, f a fraction of the rate.
inline double magnitudeAt(const double* h, std::int64_t n, double f) {
  std::complex<double> sum = 0.0;
  for (std::int64_t k = 0; k < n; ++k)
    sum += h[k] * std::polar(1.0, -2.0 * kPi * f * static_cast<double>(k));
  return std::abs(sum);
}

// Largest | |H| - amp | over [lo, hi], sampled densely.
inline double bandDeviation(const double* h, std::int64_t n, double lo, double hi, double amp) {
  double worst = 0.0;
  for (int i = 0; i <= 2000; ++i) {
    const double f = lo + (hi - lo) * i / 2000.0;
    worst = std::max(worst, std::fabs(magnitudeAt(h, n, f) - amp));
  }
  return worst;
}

}  // namespace digitfilt::test
