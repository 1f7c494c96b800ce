#include "digitfilt/foundation/design_base.h"

#include <cmath>
#include <cstring>
#include <initializer_list>
#include <limits>

namespace digitfilt {

std::int64_t truncToInt64(double v) {
  if (!(v > -9.2233720368547758e18 && v < 9.2233720368547758e18)) return 0;
  return static_cast<std::int64_t>(v);
}

std::int64_t saturateToInt64(double v) {
  if (v != v) return 0;
  if (v >= 9.2233720368547758e18) return std::numeric_limits<std::int64_t>::max();
  if (v <= -9.2233720368547758e18) return std::numeric_limits<std::int64_t>::min();
  return static_cast<std::int64_t>(v);
}

std::int32_t truncToInt32(double v) {
  if (!(v > -2147483649.0 && v < 2147483648.0)) return 0;
  return static_cast<std::int32_t>(v);
}

}  // namespace digitfilt

using digitfilt::truncToInt64;

int CDigitFiltCoefMak::initFiltRange4SmplRate(double rate) {
  sampleRate = rate;
  freqMin = rate * 0.0001;
  freqMax = rate * 0.5;
  widthMin = rate * 0.0005;
  widthMax = rate * 0.5;
  return 1;
}

double CDigitFiltCoefMak::correctFilterRange(double& f) {
  return digitfilt::clampLowFirst(f, freqMin, freqMax);
}

double CDigitFiltCoefMak::correctFilterWidth(double& w) {
  return digitfilt::clampLowFirst(w, widthMin, widthMax);
}

double CDigitFiltCoefMak::correctFreqRange4SR(double& f) {
  return digitfilt::clampHighFirst(f, freqMin, freqMax);
}

double CDigitFiltCoefMak::correctFreqWidth4SR(double& w) {
  return digitfilt::clampHighFirst(w, widthMin, widthMax);
}

int CDigitFiltCoefMak::getFilterFreqRange(double& lo, double& hi) {
  lo = freqMin;
  hi = freqMax;
  return 1;
}

int CDigitFiltCoefMak::getFilterWndRange(double& lo, double& hi) {
  lo = widthMin;
  hi = widthMax;
  return 1;
}

int CDigitFiltCoefMak::swapDouble(double& x) {
  unsigned char b[sizeof(double)];
  std::memcpy(b, &x, sizeof b);
  for (int i = 0; i < 4; ++i) {
    const unsigned char t = b[i];
    b[i] = b[7 - i];
    b[7 - i] = t;
  }
  std::memcpy(&x, b, sizeof b);
  return 1;
}

std::int64_t CDigitFiltCoefMak::estimatFilterOrder(double passRippleDb, double stopAttenDb,
                                                   double transWidth) {
  const double dp = (1.0 - std::pow(10.0, -0.05 * passRippleDb)) * 0.5;
  const double ds = std::pow(10.0, -0.05 * stopAttenDb);
  // 14.6 as a float widened to double, kept so that lengths match existing hosts.
  const double k = static_cast<double>(14.6f);
  return truncToInt64((-10.0 * std::log10(ds * dp) - 13.0) / (transWidth * k));
}

std::int64_t CDigitFiltCoefMak::remezOrd(double* edges, double* amps, double passRippleDb,
                                         double stopAttenDb, double rate) {
  const double delta = std::fabs(edges[0] - edges[1]) * digitfilt::kTwoPi / rate;
  const double g = std::pow(10.0, passRippleDb / 20.0);
  double d1 = (g - 1.0) / (g + 1.0);
  double d2 = std::pow(10.0, -stopAttenDb / 20.0);
  if (amps[0] != 0.0) d1 /= amps[0];
  if (amps[1] != 0.0) d2 /= amps[1];
  const std::int64_t n =
      truncToInt64(std::ceil((-10.0 * std::log10(d1 * d2) - 13.0) / (2.324 * delta)) - 1.0);
  if (amps[1] == 0.0) return n;
  return n + (n & 1);
}

std::int64_t CDigitFiltCoefMak::estimateOrderQv(double rate, double fA, double fB, double passDb,
                                                double stopDb) {
  const double x = (std::pow(10.0, passDb / 20.0) - 1.0) / (std::pow(10.0, stopDb / 20.0) - 1.0);
  const double ratio = std::tan(digitfilt::kPi * fB / rate) / std::tan(digitfilt::kPi * fA / rate);
  return truncToInt64(std::ceil(std::log(std::sqrt(x)) / std::log(ratio)));
}

double CDigitFiltCoefMak::attenuation2Decibel(double a, double b) {
  const double x = a / b;
  if (x <= 0.0) return 0.0;
  return 20.0 * std::log10(x);
}

bool CDigitFiltCoefMak::isPower2(std::int64_t n) { return n >= 1 && (n & (n - 1)) == 0; }

std::int64_t CDigitFiltCoefMak::getPower2Ceiling(std::int64_t n) {
  // Unsigned arithmetic keeps n = INT64_MIN defined; the arithmetic right shift of the signed
  // value is reproduced by filling with the sign bit.
  std::uint64_t v = static_cast<std::uint64_t>(n) - 1u;
  const bool negative = (v >> 63) != 0;
  for (int s : {1, 2, 4, 8, 16, 32}) {
    std::uint64_t shifted = v >> s;
    if (negative) shifted |= ~(~std::uint64_t{0} >> s);
    v |= shifted;
  }
  return static_cast<std::int64_t>(v + 1u);
}

std::int64_t CDigitFiltCoefMak::set2odd(std::int64_t n) {
  if (n % 2 == 0) return n + 1;
  return n;
}

int CDigitFiltCoefMak::correctPNHarmonics(int& h) {
  if (h < 1) h = 1;
  if (h >= 61) h = 60;
  return h;
}

double CDigitFiltCoefMak::getFreqCutoff4SrPt(double rate, std::int64_t points) {
  const std::int64_t sq = static_cast<std::int64_t>(static_cast<std::uint64_t>(points) *
                                                    static_cast<std::uint64_t>(points)) - 1;
  return 0.442947 / std::sqrt(static_cast<double>(sq)) * rate;
}

std::int64_t CDigitFiltCoefMak::getPts4FrqSr(double rate, double f) {
  const double r = f / rate;
  return truncToInt64(std::sqrt(r * r + 0.196202) / r);
}
