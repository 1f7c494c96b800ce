#include "digitfilt/fir/kaiser.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cwctype>
#include <limits>
#include <new>

#include "digitfilt/foundation/messages.h"

using digitfilt::kPi;
using digitfilt::truncToInt32;

namespace {

constexpr wchar_t kOrderError[] = L"Filter order error!";
constexpr wchar_t kInitError[] = L"Initialize filter error!";
// Offset of Kaiser's length formula, (A - 7.95) / (14.36 * transition width).
constexpr double kLengthOffsetDb = 7.95;

bool equalsNoCase(const std::wstring& a, const wchar_t* b) {
  std::size_t i = 0;
  for (; i < a.size() && b[i] != L'\0'; ++i)
    if (std::towupper(a[i]) != std::towupper(b[i])) return false;
  return i == a.size() && b[i] == L'\0';
}

std::shared_ptr<double[]> zeroedArray(std::int64_t n) {
  return std::shared_ptr<double[]>(new (std::nothrow) double[static_cast<std::size_t>(n)]());
}

// Kaiser's beta for an attenuation; the order estimate uses the constants in single precision,
// the half window in double precision, and existing designs depend on the difference.
double betaSinglePrecision(double A) {
  if (A >= 50.0) return static_cast<double>(0.1102f) * (A - static_cast<double>(8.7f));
  if (A > 21.0)
    return static_cast<double>(0.5842f) * std::pow(A - 21.0, static_cast<double>(0.4f)) +
           static_cast<double>(0.07886f) * (A - 21.0);
  return 0.0;
}

double betaDoublePrecision(double A) {
  if (A >= 50.0) return 0.1102 * (A - 8.7);
  if (A > 21.0) return 0.5842 * std::exp(0.4 * std::log(A - 21.0)) + 0.07886 * (A - 21.0);
  return 0.0;
}

// y[i] = sum of taps[k] * delay[k] for k < order, delay[0] being the newest sample; the delay
// line holds `order` values and its history is cleared first.
void runFir(const double* taps, std::int64_t tapCount, double* delay, std::int64_t order,
            double* x, unsigned long n) {
  std::fill(delay + std::min<std::int64_t>(1, order), delay + order, 0.0);
  const std::int64_t used = std::min(order, tapCount);
  for (unsigned long i = 0; i < n; ++i) {
    if (order > 0) delay[0] = x[i];
    double y = 0.0;
    for (std::int64_t k = 0; k < used; ++k) y += taps[k] * delay[k];
    x[i] = y;
    for (std::int64_t k = order - 1; k >= 1; --k) delay[k] = delay[k - 1];
  }
}

}  // namespace

int CDigitFiltCoefMak03KaiserWnd::setFilterType(std::wstring name) {
  if (equalsNoCase(name, L"KF_LOWPASS"))
    filterType = 0;
  else if (equalsNoCase(name, L"KF_HIGHPASS"))
    filterType = 1;
  else if (equalsNoCase(name, L"KF_BANDPASS"))
    filterType = 2;
  return 1;
}

int CDigitFiltCoefMak03KaiserWnd::setFilterType(int type) {
  filterType = type;
  return 1;
}

int CDigitFiltCoefMak03KaiserWnd::setRate(double fs) {
  rate = fs * 0.5;
  return 1;
}

int CDigitFiltCoefMak03KaiserWnd::setAtten(double dB) {
  atten = dB;
  return 1;
}

int CDigitFiltCoefMak03KaiserWnd::setTrBand(double hz) {
  trBand = hz;
  return 1;
}

int CDigitFiltCoefMak03KaiserWnd::setFreq1(double) { return 1; }

int CDigitFiltCoefMak03KaiserWnd::setFreq2(double) { return 1; }

int CDigitFiltCoefMak03KaiserWnd::setFreqPoints(int n) {
  freqPoints = n;
  return 1;
}

double CDigitFiltCoefMak03KaiserWnd::getCoeff(int i) {
  if (coefs == nullptr || i < 0 || i >= coefsLength_) return 0.0;
  return coefs[i];
}

double CDigitFiltCoefMak03KaiserWnd::besselI0(double x) {
  double sum = 1.0, term = 1.0, fact = 1.0, t = 0.0;
  int k = 0;
  do {
    ++k;
    term *= x / 2;
    fact *= k;
    t = term / fact;
    sum += t * t;
  } while (k + 1 < 15 && t > 1e-8);
  return sum;
}

double CDigitFiltCoefMak03KaiserWnd::I0(double x) {
  // The tolerance is 1e-6 as a float, widened.
  const double tolerance = static_cast<double>(1e-6f);
  const double y = x / 2;
  double sum = 1.0 + y * y;
  if (y * y <= tolerance) return sum;
  double term = y, fact = 1.0, t = 0.0;
  int k = 1;
  do {
    ++k;
    term *= y;
    fact *= k;
    t = term / fact;
    sum += t * t;
  } while (t * t > tolerance);
  return sum;
}

int CDigitFiltCoefMak03KaiserWnd::halfKaiserWnd2Spec(double attenDb, double trWidth, int maxLen) {
  // The shape parameter here is a local value, independent of the one estimatedOrder keeps.
  const double b = betaDoublePrecision(attenDb);
  // A length past the int64 range (a vanishing transition width) is as long as maxLen allows.
  std::int64_t n = 0;
  if (!(attenDb < kLengthOffsetDb)) {
    const std::int64_t t =
        digitfilt::saturateToInt64((attenDb - kLengthOffsetDb) / (28.72 * trWidth));
    n = t == std::numeric_limits<std::int64_t>::max() ? t : t + 1;
  }
  const std::int64_t len = n >= maxLen ? std::int64_t{maxLen} - 1 : n;
  // Element 0 is never written and elements 1..len+1 hold the window, hence len + 2 slots.
  auto w = zeroedArray(std::max<std::int64_t>(len + 2, 2));
  if (!w) return 0;
  halfWndOwner_ = std::move(w);
  halfWnd = halfWndOwner_.get();
  halfWndCount = static_cast<std::int32_t>(
      std::max<std::int64_t>(len + 1, std::numeric_limits<std::int32_t>::min()));
  const double i0Beta = besselI0(b);
  halfWnd[1] = 1.0;
  for (std::int64_t k = 1; k <= len; ++k) {
    const double r = static_cast<double>(k) / static_cast<double>(len);
    halfWnd[k + 1] = besselI0(b * std::sqrt(1.0 - r * r)) / i0Beta;
  }
  return 1;
}

int CDigitFiltCoefMak03KaiserWnd::estimatedOrder() {
  const double A = atten;
  const std::int32_t half = truncToInt32((A - kLengthOffsetDb) / (14.36 * trBand / rate) + 1.0);
  // A length past the int range is meaningless; it gives order 0 instead of overflowing.
  order = (half > INT_MAX / 2 || half < INT_MIN / 2) ? 0 : 2 * half;
  beta = betaSinglePrecision(A);
  return order;
}

int CDigitFiltCoefMak03KaiserWnd::design() {
  if (order < 0) return 0;
  const std::int64_t M = order / 2;
  const double i0Beta = I0(beta);
  // Orders reach 2^31: running out of memory is a failure result, not an exception.
  const std::unique_ptr<double[]> w(new (std::nothrow) double[static_cast<std::size_t>(M + 1)]);
  if (!w) return 0;
  for (std::int64_t k = 1; k <= M; ++k) {
    const double r = static_cast<double>(k) / static_cast<double>(M);
    w[k] = I0(beta * std::sqrt(1.0 - r * r)) / i0Beta;
  }

  double w0 = 0.0, wc = 0.0;
  switch (filterType) {
    case 0:
      wc = (trBand * 0.5 + freq2) * kPi / rate;
      break;
    case 1:
      w0 = kPi;
      wc = (1.0 - (freq1 - trBand * 0.5) / rate) * kPi;
      break;
    case 2:
      w0 = (freq1 + freq2) * (kPi / 2) / rate;
      wc = (freq2 - freq1 + trBand) * (kPi / 2) / rate;
      break;
    default:
      break;
  }

  auto taps = zeroedArray(std::int64_t{order} + 1);
  if (!taps) return 0;
  coefsOwner_ = std::move(taps);
  coefs = coefsOwner_.get();
  coefsLength_ = std::int64_t{order} + 1;
  for (std::int64_t k = 1; k <= M; ++k) {
    const double g = std::sin(k * wc) * std::cos(k * w0) * w[k] / (k * kPi);
    coefs[M + k] = coefs[M - k] = g;
  }
  coefs[M] = wc / kPi;
  return 1;
}

double* CDigitFiltCoefMak03KaiserWnd::filterGain() {
  const int P = freqPoints;
  if (P < 1 || coefs == nullptr) return nullptr;
  double* gain = new (std::nothrow) double[static_cast<std::size_t>(P) + 1];
  if (gain == nullptr) return nullptr;
  const std::int64_t taps = std::min<std::int64_t>(std::int64_t{order} + 1, coefsLength_);
  double peak = -100.0;
  for (std::int64_t i = 0; i <= P; ++i) {  // 64-bit: P may be INT_MAX
    const double omega = i * kPi / P;
    double re = 0.0, im = 0.0;
    for (std::int64_t k = 0; k < taps; ++k) {
      re += coefs[k] * std::cos(k * omega);
      im += coefs[k] * std::sin(k * omega);
    }
    gain[i] = std::log(re * re + im * im) * 10.0 / std::log(10.0);
    peak = std::max(peak, gain[i]);
  }
  for (std::int64_t i = 0; i <= P; ++i) gain[i] -= peak;
  const double scale = std::pow(10.0, -0.05 * peak);
  for (std::int64_t k = 0; k < coefsLength_; ++k) coefs[k] *= scale;
  return gain;
}

double* CDigitFiltCoefMak03KaiserWnd::filterX(double* x, unsigned long n) {
  if (n == 0 || x == nullptr || coefs == nullptr) return x;
  const std::unique_ptr<double[]> delay(
      new (std::nothrow) double[static_cast<std::size_t>(std::max(order, 1))]);
  if (!delay) return x;
  runFir(coefs, coefsLength_, delay.get(), std::max(order, 0), x, n);
  return x;
}

int CDigitFiltCoefMak03KaiserWnd::filterBegin() {
  filterEnd();
  if (order < 2) {
    digitfilt::showMessage(kOrderError);
    return 0;
  }
  auto line = zeroedArray(order);
  if (!line) {
    digitfilt::showMessage(kInitError);
    return 0;
  }
  delayOwner_ = std::move(line);
  delayLine = delayOwner_.get();
  delayLength_ = order;
  return 1;
}

double* CDigitFiltCoefMak03KaiserWnd::filterDo(double* x, unsigned long n) {
  if (n == 0 || x == nullptr || coefs == nullptr || delayLine == nullptr) return x;
  runFir(coefs, coefsLength_, delayLine, std::min<std::int64_t>(order, delayLength_), x, n);
  return x;
}

int CDigitFiltCoefMak03KaiserWnd::filterEnd() {
  delayOwner_.reset();
  delayLine = nullptr;
  delayLength_ = 0;
  return 1;
}
