#include <cmath>
#include <cstdint>

#include "digitfilt/remez/remez_exchange.h"
#include "digitfilt/remez/remez_records.h"

namespace {

using digitfilt::kPi;
using digitfilt::kTwoPi;

// count points from 0 to half the rate: frequency as a fraction of Nyquist, signed amplitude
// with the symmetry factor, gain in dB (-300 for a vanishing amplitude).
bool sampleResponse(std::int64_t sym, std::int64_t numTaps, std::int64_t r, CRemezData* data,
                    std::int64_t count, double* freq, double* amp, double* dB) {
  // Out-of-range r fails in the evaluation like any r without extremals.
  const int ri = r > INT32_MAX ? INT32_MAX : (r < -1 ? -1 : static_cast<int>(r));
  const bool odd = numTaps % 2 != 0;
  for (std::int64_t i = 0; i < count; ++i) {
    const double f = static_cast<double>(i) * 0.5 / static_cast<double>(count - 1);
    double c;
    if (sym == 1)
      c = odd ? 1.0 : std::cos(kPi * f);
    else
      c = odd ? std::sin(kTwoPi * f) : std::sin(kPi * f);
    double A;
    if (!CDigitFiltCoefMak06Remez01::_10Freq2FiltRspAmp(f, ri, data, A)) return false;
    const double v = A * c;
    freq[i] = 2.0 * f;
    amp[i] = v;
    dB[i] = std::fabs(v) > 1e-15 ? 20.0 * std::log10(std::fabs(v)) : -300.0;
  }
  return true;
}

}  // namespace

std::int64_t CFreqResp::freqResponseM(std::int64_t sym, std::int64_t numTaps, std::int64_t r,
                                      CRemezData* data, std::int64_t points) {
  if (!newFreqRespBuffer(points)) return 0;
  return sampleResponse(sym, numTaps, r, data, count, freqs, amps, gainsDb) ? count : 0;
}

std::int64_t CFreqResp::freqResponseS(std::int64_t sym, std::int64_t numTaps, std::int64_t r,
                                      CRemezData* data, double* freq, double* amp, double* dB,
                                      std::int64_t points) {
  if (points < 1) return 1;
  if (!freq || !amp || !dB) return 0;
  return sampleResponse(sym, numTaps, r, data, points, freq, amp, dB) ? 1 : 0;
}
