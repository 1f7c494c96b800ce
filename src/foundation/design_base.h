#pragma once
// Root of the filter classes and the designer base: the sample rate, the frequency and width
// ranges that follow from it, clamps with write-back and the small numeric services designers
// share.
#include <cstdint>

class CDigitFiltBsc {
 public:
  CDigitFiltBsc() = default;

  // Root word; the moving-average designers keep their record length here.
  std::int64_t baseWord = 0;
};

class CDigitFiltCoefMak : public CDigitFiltBsc {
 public:
  CDigitFiltCoefMak() = default;

  // freqMin = 0.0001 rate, freqMax = 0.5 rate, widthMin = 0.0005 rate, widthMax = 0.5 rate.
  // No check of the rate: 0 or negative gives empty or inverted ranges.
  int initFiltRange4SmplRate(double sampleRate);

  // Clamps with write-back; the corrected value is also returned. The first pair tests the lower
  // bound first, the "4SR" pair the upper bound first, so an inverted range ends at the maximum
  // for the first pair and at the minimum for the second.
  double correctFilterRange(double& f);
  double correctFilterWidth(double& w);
  double correctFreqRange4SR(double& f);
  double correctFreqWidth4SR(double& w);

  int getFilterFreqRange(double& lo, double& hi);
  int getFilterWndRange(double& lo, double& hi);

  // Reverses the byte order of x in place.
  int swapDouble(double& x);

  // Kaiser-type FIR length estimate for a normalised transition width.
  std::int64_t estimatFilterOrder(double passRippleDb, double stopAttenDb, double transWidth);
  // Equiripple FIR order estimate from two band edges (Hz) and the two band amplitudes.
  std::int64_t remezOrd(double* edges, double* amps, double passRippleDb, double stopAttenDb,
                        double sampleRate);
  // Butterworth order estimate; the decibels are divided by 20, deliberately.
  std::int64_t estimateOrderQv(double sampleRate, double fA, double fB, double passDb,
                               double stopDb);

  // 20 log10(a / b), or 0 when the ratio is not positive.
  double attenuation2Decibel(double a, double b);
  bool isPower2(std::int64_t n);
  std::int64_t getPower2Ceiling(std::int64_t n);
  static std::int64_t set2odd(std::int64_t n);
  // Power-line harmonic count clamped into 1..60 with write-back.
  int correctPNHarmonics(int& h);

  // -3 dB cut-off of a moving average of `points` samples; points must not be 1 (infinite).
  double getFreqCutoff4SrPt(double sampleRate, std::int64_t points);
  // Inverse of getFreqCutoff4SrPt: the moving-average length for a cut-off f.
  std::int64_t getPts4FrqSr(double sampleRate, double f);

  double sampleRate = 0.0;
  double freqMin = 0.0;
  double freqMax = 0.0;
  double widthMin = 0.0;
  double widthMax = 0.0;
  // Never read by the base; the moving-average designers use it as their harmonic count.
  std::int32_t designMode = 3;
};

namespace digitfilt {

// Clamp helpers shared by every class that keeps its own [lo, hi] pair. lowFirst tests the lower
// bound first (an inverted range then ends at hi), otherwise the upper bound first (ends at lo).
inline double clampLowFirst(double& v, double lo, double hi) {
  if (lo > v) v = lo;
  if (v > hi) v = hi;
  return v;
}
inline double clampHighFirst(double& v, double lo, double hi) {
  if (v > hi) v = hi;
  if (lo > v) v = lo;
  return v;
}

// Converts a double to int64 by truncation; NaN and out-of-range values give 0 instead of
// undefined behaviour.
std::int64_t truncToInt64(double v);
// Same for int32.
std::int32_t truncToInt32(double v);
// Truncation that saturates: values beyond the int64 range give its nearest end, NaN gives 0.
// For lengths derived from a quotient, where an infinite quotient means "as long as allowed".
std::int64_t saturateToInt64(double v);

constexpr double kPi = 3.14159265358979323846;
constexpr double kTwoPi = 6.283185307179586;

}  // namespace digitfilt
