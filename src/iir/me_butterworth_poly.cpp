#include "digitfilt/iir/me_butterworth_poly.h"

#include <cmath>
#include <cstdint>
#include <cstdlib>

#include "digitfilt/foundation/design_base.h"

namespace {

using digitfilt::kPi;

// Zero-filled array the caller releases with free.
template <class T>
T* callocArray(std::size_t count) {
  return static_cast<T*>(std::calloc(count, sizeof(T)));
}

// Angle of analogue prototype pole k of an order-n Butterworth filter.
double poleAngle(int k, int n) { return kPi * (2.0 * k + 1.0) / (2.0 * n); }

// 32-bit products and negations wrap rather than overflow: binomial coefficients leave 32 bits
// for orders above about 30, which callers do not use, and that must not be undefined behaviour.
int wrapMul(int x, int y) {
  return static_cast<int>(static_cast<std::uint32_t>(x) * static_cast<std::uint32_t>(y));
}
int wrapNeg(int x) { return static_cast<int>(0u - static_cast<std::uint32_t>(x)); }

// Keeps the real parts of the n complex coefficients below the implied leading 1 as d[1..n] and
// sets d[0] = 1. In place: ascending k reads index 2k - 2, which is never below k, so nothing
// is overwritten before it has been read.
void compactRealParts(double* d, int n) {
  d[1] = d[0];
  d[0] = 1.0;
  for (int k = 3; k <= n; ++k) d[k] = d[2 * k - 2];
}

}  // namespace

double* CMeFilterButterworth03Prcs::binomial_mult(int n, double* p) {
  if (n < 1) return nullptr;
  double* a = callocArray<double>(2 * static_cast<std::size_t>(n));
  if (a == nullptr) return nullptr;
  for (int i = 0; i < n; ++i) {
    const double pr = p[2 * i], pi = p[2 * i + 1];
    for (int j = i; j > 0; --j) {
      a[2 * j] += pr * a[2 * (j - 1)] - pi * a[2 * (j - 1) + 1];
      a[2 * j + 1] += pr * a[2 * (j - 1) + 1] + pi * a[2 * (j - 1)];
    }
    a[0] += pr;
    a[1] += pi;
  }
  return a;
}

double* CMeFilterButterworth03Prcs::trinomial_mult(int n, double* b, double* c) {
  if (n < 1) return nullptr;
  double* a = callocArray<double>(4 * static_cast<std::size_t>(n));
  if (a == nullptr) return nullptr;
  a[0] = b[0];
  a[1] = b[1];
  a[2] = c[0];
  a[3] = c[1];
  for (int i = 1; i < n; ++i) {
    const double br = b[2 * i], bi = b[2 * i + 1];
    const double cr = c[2 * i], ci = c[2 * i + 1];
    const int top = 2 * i + 1, below = 2 * i - 1;
    a[2 * top] += cr * a[2 * below] - ci * a[2 * below + 1];
    a[2 * top + 1] += cr * a[2 * below + 1] + ci * a[2 * below];
    for (int j = 2 * i; j > 1; --j) {
      a[2 * j] += br * a[2 * (j - 1)] - bi * a[2 * (j - 1) + 1] + cr * a[2 * (j - 2)] -
                  ci * a[2 * (j - 2) + 1];
      a[2 * j + 1] += br * a[2 * (j - 1) + 1] + bi * a[2 * (j - 1)] +
                      cr * a[2 * (j - 2) + 1] + ci * a[2 * (j - 2)];
    }
    a[2] += br * a[0] - bi * a[1] + cr;
    a[3] += br * a[1] + bi * a[0] + ci;
    a[0] += br;
    a[1] += bi;
  }
  return a;
}

double* CMeFilterButterworth03Prcs::dcof_bwlp(int n, double fcf) {
  if (n < 1) return nullptr;
  const double theta = kPi * fcf;
  const double st = std::sin(theta), ct = std::cos(theta);
  double* rcof = callocArray<double>(2 * static_cast<std::size_t>(n));
  if (rcof == nullptr) return nullptr;
  for (int k = 0; k < n; ++k) {
    const double phi = poleAngle(k, n);
    const double a = 1.0 + st * std::sin(phi);
    rcof[2 * k] = -ct / a;
    rcof[2 * k + 1] = -st * std::cos(phi) / a;
  }
  double* dcof = binomial_mult(n, rcof);
  std::free(rcof);
  if (dcof == nullptr) return nullptr;
  compactRealParts(dcof, n);
  return dcof;
}

double* CMeFilterButterworth03Prcs::dcof_bwhp(int n, double fcf) { return dcof_bwlp(n, fcf); }

namespace {

// Shared by band-pass and band-stop, which differ only in the sign of the imaginary parts of the
// second-order factors (sign = +1 band-pass, -1 band-stop).
double* bandDenominator(int n, double f1f, double f2f, double sign) {
  if (n < 1) return nullptr;
  const double cp = std::cos(kPi * (f2f + f1f) / 2.0);
  const double theta = kPi * (f2f - f1f) / 2.0;
  const double st = std::sin(theta), ct = std::cos(theta);
  const double s2t = 2.0 * st * ct;
  const double c2t = 2.0 * ct * ct - 1.0;
  double* rcof = callocArray<double>(2 * static_cast<std::size_t>(n));
  double* tcof = callocArray<double>(2 * static_cast<std::size_t>(n));
  if (rcof == nullptr || tcof == nullptr) {
    std::free(rcof);
    std::free(tcof);
    return nullptr;
  }
  for (int k = 0; k < n; ++k) {
    const double phi = poleAngle(k, n);
    const double a = 1.0 + s2t * std::sin(phi);
    rcof[2 * k] = c2t / a;
    rcof[2 * k + 1] = sign * s2t * std::cos(phi) / a;
    tcof[2 * k] = -2.0 * cp * (ct + st * std::sin(phi)) / a;
    tcof[2 * k + 1] = -sign * 2.0 * cp * st * std::cos(phi) / a;
  }
  double* dcof = CMeFilterButterworth03Prcs::trinomial_mult(n, tcof, rcof);
  std::free(tcof);
  std::free(rcof);
  if (dcof == nullptr) return nullptr;
  compactRealParts(dcof, 2 * n);
  return dcof;
}

}  // namespace

double* CMeFilterButterworth03Prcs::dcof_bwbp(int n, double f1f, double f2f) {
  return bandDenominator(n, f1f, f2f, 1.0);
}

double* CMeFilterButterworth03Prcs::dcof_bwbs(int n, double f1f, double f2f) {
  return bandDenominator(n, f1f, f2f, -1.0);
}

int* CMeFilterButterworth03Prcs::ccof_bwlp(int n) {
  if (n < 1) return nullptr;
  int* c = callocArray<int>(static_cast<std::size_t>(n) + 1);
  if (c == nullptr) return nullptr;
  c[0] = 1;
  c[1] = n;
  const int half = n / 2;
  for (int i = 2; i <= half; ++i) {
    c[i] = wrapMul(n - i + 1, c[i - 1]) / i;
    c[n - i] = c[i];
  }
  c[n - 1] = n;
  c[n] = 1;
  return c;
}

int* CMeFilterButterworth03Prcs::ccof_bwhp(int n) {
  int* c = ccof_bwlp(n);
  if (c == nullptr) return nullptr;
  for (int i = 1; i <= n; i += 2) c[i] = wrapNeg(c[i]);
  return c;
}

int* CMeFilterButterworth03Prcs::ccof_bwbp(int n) {
  if (n < 1) return nullptr;
  int* c = callocArray<int>(2 * static_cast<std::size_t>(n) + 1);
  if (c == nullptr) return nullptr;
  int* t = ccof_bwhp(n);
  if (t == nullptr) {
    std::free(c);
    return nullptr;
  }
  for (int i = 0; i < n; ++i) {
    c[2 * i] = t[i];
    c[2 * i + 1] = 0;
  }
  c[2 * n] = t[n];
  std::free(t);
  return c;
}

double* CMeFilterButterworth03Prcs::ccof_bwbs(int n, double f1f, double f2f) {
  if (n < 1) return nullptr;
  const double alpha =
      -2.0 * std::cos(kPi * (f2f + f1f) / 2.0) / std::cos(kPi * (f2f - f1f) / 2.0);
  double* c = callocArray<double>(2 * static_cast<std::size_t>(n) + 1);
  if (c == nullptr) return nullptr;
  c[0] = 1.0;
  c[1] = alpha;
  c[2] = 1.0;
  for (int i = 1; i < n; ++i) {
    c[2 * i + 2] += c[2 * i];
    for (int j = 2 * i; j > 1; --j) c[j + 1] += alpha * c[j] + c[j - 1];
    c[2] += alpha * c[1] + 1.0;
    c[1] += alpha;
  }
  return c;
}

namespace {

// sf of the low- and high-pass designs; they differ only in which of sin and cos of omega/2
// forms the numerator power.
double lowHighScale(int n, double fcf, bool highpass) {
  const double omega = kPi * fcf;
  const double fomega = std::sin(omega);
  double sf = 1.0;
  for (int k = 0; k < n / 2; ++k) sf *= 1.0 + fomega * std::sin(poleAngle(k, n));
  const double s = std::sin(omega / 2.0), c = std::cos(omega / 2.0);
  if (n % 2 != 0) sf *= highpass ? c + s : s + c;
  return std::pow(highpass ? c : s, n) / sf;
}

// sf of the band designs: the real part of a complex product over the poles; `cotOrTan` is
// 1/tan of the half band width for band-pass and tan of it for band-stop.
double bandScale(int n, double cotOrTan) {
  double sfr = 1.0, sfi = 0.0;
  for (int k = 0; k < n; ++k) {
    const double phi = poleAngle(k, n);
    const double s = cotOrTan + std::sin(phi);
    const double c = std::cos(phi);
    const double a = (sfr + sfi) * (s - c);
    const double b = sfr * s;
    const double cc = -sfi * c;
    sfr = b - cc;
    sfi = a - b - cc;
  }
  return 1.0 / sfr;
}

}  // namespace

double CMeFilterButterworth03Prcs::sf_bwlp(int n, double fcf) {
  return lowHighScale(n, fcf, false);
}

double CMeFilterButterworth03Prcs::sf_bwhp(int n, double fcf) {
  return lowHighScale(n, fcf, true);
}

double CMeFilterButterworth03Prcs::sf_bwbp(int n, double f1f, double f2f) {
  return bandScale(n, 1.0 / std::tan(kPi * (f2f - f1f) / 2.0));
}

double CMeFilterButterworth03Prcs::sf_bwbs(int n, double f1f, double f2f) {
  return bandScale(n, std::tan(kPi * (f2f - f1f) / 2.0));
}
