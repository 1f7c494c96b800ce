#include "digitfilt/iir/iir_designer.h"

#include <cmath>
#include <cstdlib>
#include <cwctype>
#include <limits>
#include <vector>

#include "digitfilt/foundation/messages.h"

namespace {

constexpr double kPi = 3.141592653589793;
constexpr double kLn10 = 2.302585092994046;

bool equalsNoCase(const std::wstring& a, const wchar_t* b) {
  std::size_t i = 0;
  for (; i < a.size() && b[i] != L'\0'; ++i)
    if (std::towlower(static_cast<std::wint_t>(a[i])) !=
        std::towlower(static_cast<std::wint_t>(b[i])))
      return false;
  return i == a.size() && b[i] == L'\0';
}

// Element i of an array we own (bounds known) or one a host put in (taken on trust).
double element(const double* p, const std::shared_ptr<double[]>& owner, std::int64_t size,
               int i) {
  if (p == nullptr) return 0.0;
  if (p == owner.get() && (i < 0 || i >= size)) return 0.0;
  return p[i];
}

// p(z^-1) *= (1 + c1 z^-1 + c2 z^-2), coefficients constant term first; deg is p's degree.
void multiplyFactor(std::vector<double>& p, int& deg, double c1, double c2, int factorDeg) {
  for (int k = deg + factorDeg; k >= 1; --k) {
    double v = p[k] + c1 * p[k - 1];
    if (factorDeg == 2 && k >= 2) v += c2 * p[k - 2];
    p[k] = v;
  }
  deg += factorDeg;
}

}  // namespace

int CDigitFiltCoefMak08IIR::setPrototype(const std::wstring& name) {
  if (equalsNoCase(name, L"Butterworth")) prototype = kPrototypeButterworth;
  if (equalsNoCase(name, L"Chebyshev")) prototype = kPrototypeChebyshev;
  return 1;
}

int CDigitFiltCoefMak08IIR::setFilterType(const std::wstring& name) {
  if (equalsNoCase(name, L"LP")) filterType = 0;
  if (equalsNoCase(name, L"BP")) setFilterType(2);
  if (equalsNoCase(name, L"HP")) filterType = 1;
  return 1;
}

int CDigitFiltCoefMak08IIR::setFilterType(int type) {
  filterType = type;
  // A band-pass pairs every prototype pole, so its order is even.
  if (type == 2 && odd(order) && order < std::numeric_limits<std::int32_t>::max()) ++order;
  return 1;
}

int CDigitFiltCoefMak08IIR::setOrder(int n) {
  std::int64_t v = std::llabs(static_cast<long long>(n));
  if (v > std::numeric_limits<std::int32_t>::max() - 1)
    v = std::numeric_limits<std::int32_t>::max() - 1;
  if (filterType == 2 && (v & 1)) ++v;
  order = static_cast<std::int32_t>(v);
  return 1;
}

int CDigitFiltCoefMak08IIR::setRate(double fs) {
  rate = fs;
  nyquist = fs * 0.5;
  return 1;
}

double CDigitFiltCoefMak08IIR::getPReal(int i) const {
  return element(poleReal, poleRealOwner_, poleSize_, i);
}
double CDigitFiltCoefMak08IIR::getPImag(int i) const {
  return element(poleImag, poleImagOwner_, poleSize_, i);
}
double CDigitFiltCoefMak08IIR::getACoeff(int i) const {
  return element(aCoeff, aOwner_, coefSize_, i);
}
double CDigitFiltCoefMak08IIR::getBCoeff(int i) const {
  return element(bCoeff, bOwner_, coefSize_, i);
}

int CDigitFiltCoefMak08IIR::locatePolesAndZeros() {
  if (order < 1 || order > kMaxOrder) {
    digitfilt::showMessageF(L"IIR filter order %d is out of range (1..%d)!", order, kMaxOrder);
    return 0;
  }
  // One spare entry: the band-pass step writes index m + 1 for odd m up to the order.
  poleSize_ = static_cast<std::int64_t>(order) + 2;
  poleRealOwner_.reset(new double[poleSize_]());
  poleImagOwner_.reset(new double[poleSize_]());
  zerosOwner_.reset(new double[poleSize_]());
  poleReal = poleRealOwner_.get();
  poleImag = poleImagOwner_.get();
  zeros = zerosOwner_.get();
  double* pr = poleReal;
  double* pi = poleImag;

  const int n = filterType == 2 ? order / 2 : order;
  const int ir = n % 2;
  const int kFirst = n + ir;
  const int kLast = (3 * n + ir) / 2 - 1;

  double f1 = 0.0;
  if (filterType == 0) f1 = freq2;
  if (filterType == 1) f1 = nyquist - freq1;
  if (filterType == 2) f1 = freq2 - freq1;
  // Pre-warped edge of the low-pass prototype; poles map through z = (1 + s) / (1 - s).
  const double w = std::tan(f1 * (kPi / 2) / nyquist);
  const double w2 = w * w;
  const bool chebyshev = prototype == kPrototypeChebyshev;

  double a = 1.0;  // Chebyshev sinh factor; stays 1 when no pair is placed (order 1)
  for (int k = kFirst; k <= kLast; ++k) {
    const double t = (2 * k + 1 - ir) * 0.5 * kPi / n;
    double r = 0.0, im = 0.0;
    if (chebyshev) {
      const double d = 1.0 - std::exp(-0.05 * ripple * kLn10);
      const double e = 1.0 / std::sqrt(1.0 / sqr(1.0 - d) - 1.0);
      const double x = std::pow(std::sqrt(e * e + 1.0) + e, 1.0 / n);
      a = (x - 1.0 / x) / 2.0;
      const double bb = (x + 1.0 / x) / 2.0;
      const double c3 = a * w * std::cos(t);
      const double c4 = bb * w * std::sin(t);
      const double c5 = sqr(1.0 - c3) + sqr(c4);
      r = 2.0 * (1.0 - c3) / c5 - 1.0;
      im = 2.0 * c4 / c5;
    } else {
      const double b3 = 1.0 - 2.0 * w * std::cos(t) + w2;
      r = (1.0 - w2) / b3;
      im = 2.0 * w * std::sin(t) / b3;
    }
    const int m = 2 * (kLast - k) + 1;
    pr[m + ir] = r;
    pi[m + ir] = std::fabs(im);
    pr[m + ir + 1] = r;
    pi[m + ir + 1] = -std::fabs(im);
  }
  if (odd(n)) {
    // Deliberate: a first-order Chebyshev keeps a = 1 and so equals the Butterworth design.
    pr[1] = chebyshev ? 2.0 / (1.0 + a * w) - 1.0 : (1.0 - w2) / (1.0 + 2.0 * w + w2);
    pi[1] = 0.0;
  }

  if (filterType == 0) {
    for (int k = 1; k <= n; ++k) zeros[k] = -1.0;
  } else if (filterType == 1) {
    // Low-pass at Nyquist - freq1 mirrored by z -> -z.
    for (int k = 1; k <= n; ++k) pr[k] = -pr[k];
    for (int k = 1; k <= n; ++k) zeros[k] = 1.0;
  } else if (filterType == 2) {
    for (int k = 1; k <= n; ++k) zeros[k] = 1.0;
    for (int k = n + 1; k <= 2 * n; ++k) zeros[k] = -1.0;
    // Low-pass to band-pass: each pole p gives the roots of z^2 - aa (1 + p) z + p.
    const double f4 = (kPi / 2) * freq1 / nyquist;
    const double f5 = (kPi / 2) * freq2 / nyquist;
    const double aa = std::cos(f4 + f5) / std::cos(f5 - f4);
    for (int m = 1; m <= order; m += 2) {
      const double aR = pr[m], aI = pi[m];
      if (std::fabs(aI) < 0.0001) {
        const double h1 = 0.5 * aa * (1.0 + aR);
        const double h2 = h1 * h1 - aR;
        if (h2 > 0.0) {
          pr[m] = h1 + std::sqrt(h2);
          pr[m + 1] = h1 - std::sqrt(h2);
          pi[m] = pi[m + 1] = 0.0;
        } else {
          pr[m] = pr[m + 1] = h1;
          pi[m] = std::sqrt(std::fabs(h2));
          pi[m + 1] = -std::sqrt(std::fabs(h2));
        }
      } else {
        const double fR = 0.5 * aa * (1.0 + aR);
        const double fI = 0.5 * aa * aI;
        const double gR = fR * fR - fI * fI - aR;
        const double gI = 2.0 * fR * fI - aI;
        const double sR = std::sqrt(0.5 * std::fabs(gR + std::sqrt(gR * gR + gI * gI)));
        const double sI = gI / (2.0 * sR);
        pr[m] = fR + sR;
        pi[m] = fI + sI;
        pr[m + 1] = fR - sR;
        pi[m + 1] = fI - sI;
      }
    }
    // Each of the first n poles stands for a conjugate pair. Kept as hosts get it: with an odd
    // half order above 1 the first n entries are not one pole per pair (index 2 holds the second
    // root of the real pole), so that pole set differs from the textbook band-pass.
    for (int k = n; k >= 1; --k) {
      const double re = pr[k], im = std::fabs(pi[k]);
      pr[2 * k - 1] = re;
      pi[2 * k - 1] = im;
      pr[2 * k] = re;
      pi[2 * k] = -im;
    }
  }
  return 1;
}

int CDigitFiltCoefMak08IIR::design() {
  if (poleReal == nullptr || poleImag == nullptr || zeros == nullptr ||
      (poleReal == poleRealOwner_.get() && poleSize_ < static_cast<std::int64_t>(order) + 1)) {
    if (!locatePolesAndZeros()) return 0;
  }
  if (order < 1 || order > kMaxOrder) {
    digitfilt::showMessageF(L"IIR filter order %d is out of range (1..%d)!", order, kMaxOrder);
    return 0;
  }
  const int n = order;
  std::vector<double> num(static_cast<std::size_t>(n) + 1, 0.0);
  std::vector<double> den(static_cast<std::size_t>(n) + 1, 0.0);
  num[0] = den[0] = 1.0;
  int degNum = 0, degDen = 0;
  for (int k = 1; k <= n; ++k) multiplyFactor(num, degNum, -zeros[k], 0.0, 1);
  // Poles as real factors: a single real pole first when the layout has one, then conjugate
  // pairs as 1 - 2 Re(p) z^-1 + |p|^2 z^-2.
  int k = 1;
  if (filterType != 2 && odd(n)) {
    multiplyFactor(den, degDen, -poleReal[1], 0.0, 1);
    k = 2;
  }
  for (; k + 1 <= n; k += 2)
    multiplyFactor(den, degDen, -2.0 * poleReal[k], sqr(poleReal[k]) + sqr(poleImag[k]), 2);
  if (k == n) multiplyFactor(den, degDen, -poleReal[k], 0.0, 1);

  coefSize_ = static_cast<std::int64_t>(n) + 1;
  aOwner_.reset(new double[coefSize_]());
  bOwner_.reset(new double[coefSize_]());
  aCoeff = aOwner_.get();
  bCoeff = bOwner_.get();
  for (int i = 0; i <= n; ++i) {
    aCoeff[i] = num[i];
    bCoeff[i] = den[i];
  }
  return 1;
}

double* CDigitFiltCoefMak08IIR::filterGain() {
  if (freqPoints < 1) {
    digitfilt::showMessageF(L"The number of frequency points must be at least 1 (got %d)!",
                            freqPoints);
    return nullptr;
  }
  if (aCoeff == nullptr || bCoeff == nullptr ||
      (aCoeff == aOwner_.get() && coefSize_ < static_cast<std::int64_t>(order) + 1)) {
    if (!design()) return nullptr;
  }
  const int points = freqPoints;
  double* gain = new double[static_cast<std::size_t>(points) + 1];
  double peak = -100.0;
  for (int i = 0; i <= points; ++i) {
    double theta = i * kPi / points;
    // The ends are moved off 0 and pi, where the zeros of a band-pass sit.
    if (i == 0) theta = 0.0003141592653589793;
    if (i == points) theta = 3.141278494324434;
    double nr = 0.0, ni = 0.0, dr = 0.0, di = 0.0;
    for (int k = 0; k <= order; ++k) {
      const double c = std::cos(k * theta), s = std::sin(k * theta);
      nr += aCoeff[k] * c;
      ni -= aCoeff[k] * s;
      dr += bCoeff[k] * c;
      di -= bCoeff[k] * s;
    }
    gain[i] = (10.0 / kLn10) * std::log((nr * nr + ni * ni) / (dr * dr + di * di));
    if (gain[i] > peak) peak = gain[i];
  }
  for (int i = 0; i <= points; ++i) gain[i] -= peak;
  const double scale = std::pow(10.0, -0.05 * peak);
  for (int k = 0; k <= order; ++k) aCoeff[k] *= scale;
  return gain;
}
