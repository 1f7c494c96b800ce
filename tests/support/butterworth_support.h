#pragma once
// Helpers for the Butterworth filtering tests: designed stages, a test signal, and slow literal
// oracles that evaluate a stage term by term into the output array, exactly in the order the
// filters document (sum from 0 in increasing k, the output slot itself holding the partial sum).
#include <cmath>
#include <cstdint>
#include <vector>

#include <digitfilt/digitfilt.h>

namespace digitfilt::test {

inline filter_iirspec designedStage(int type, int order, double low, double high, double rate) {
  filter_iirspec s;
  s.enabled = 1;
  s.filterType = type;
  s.order = order;
  s.freqLow = low;
  s.freqHigh = high;
  s.sampleRate = rate;
  CDigitFiltCoefMak01Butterworth designer;
  designer.ctfButterworthIirFilterCoef(&s);
  return s;
}

// A drifting mixture of a fast and a slow sine: x[i] = sin(0.3 i) + 0.5 sin(0.05 i + 1) + 0.002 i^2.
inline std::vector<double> testSignal(std::int64_t n) {
  std::vector<double> x(static_cast<std::size_t>(n));
  for (std::int64_t i = 0; i < n; ++i) {
    const double t = static_cast<double>(i);
    x[static_cast<std::size_t>(i)] = std::sin(0.3 * t) + 0.5 * std::sin(0.05 * t + 1.0) + 0.002 * t * t;
  }
  return x;
}

// y[i] := 0, then y[i] += b[k] (x[i-k] - x0) - a[k] y[i-k] for k = 0 .. numCoefs-1 while i-k >= 0.
inline void literalStage(const double* x, double* y, std::int64_t first, std::int64_t last,
                         const filter_iirspec& s, double x0) {
  for (std::int64_t i = first; i < last; ++i) {
    y[i] = 0.0;
    for (int k = 0; k < s.numCoefs && i - k >= 0; ++k)
      y[i] += s.coefs[k] * (x[i - k] - x0) - s.coefs[20 + k] * y[i - k];
  }
}

// Zero-phase stage written out plainly: forward into w with offset x[0], then backward with
// offset w[n-1] on reversed copies.
inline std::vector<double> literalZeroPhase(const std::vector<double>& x, filter_iirspec s) {
  s.coefs[20] = 0.0;
  const std::int64_t n = static_cast<std::int64_t>(x.size());
  std::vector<double> w(x.size()), rw(x.size()), ry(x.size()), y(x.size());
  literalStage(x.data(), w.data(), 0, n, s, x[0]);
  for (std::int64_t i = 0; i < n; ++i) rw[i] = w[n - 1 - i];
  literalStage(rw.data(), ry.data(), 0, n, s, w[n - 1]);
  for (std::int64_t i = 0; i < n; ++i) y[i] = ry[n - 1 - i];
  return y;
}

// One block call of the acquisition filter, written out plainly: enabled stages in slot order
// alternate between data and tmp with offset `baseline`; an odd count copies tmp[first .. last]
// (both ends) back into data.
inline void literalBlock(std::vector<filter_iirspec>& stages, double* data, double* tmp,
                         std::int64_t first, std::int64_t last, double baseline) {
  double* src = data;
  double* dst = tmp;
  for (filter_iirspec& s : stages) {
    if (s.enabled == 0) continue;
    literalStage(src, dst, first, last, s, baseline);
    std::swap(src, dst);
  }
  if (src != data)
    for (std::int64_t i = first; i <= last; ++i) data[i] = src[i];
}

}  // namespace digitfilt::test
