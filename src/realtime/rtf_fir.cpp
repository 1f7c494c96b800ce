#include "digitfilt/realtime/rtf_fir.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdint>
#include <cstring>

#include "digitfilt/foundation/design_base.h"

namespace {

// This filter talks to standard output, not to the message hook.
void say(const char* text) { std::fputs(text, stdout); }

// NaN fails as well.
bool isNormalized(double f) { return f >= 0.0 && f <= 0.5; }

// `taps` is public: hosts may change it without resizing, so every access also checks the array.
bool inRange(const std::vector<double>& v, int taps, int i) {
  return i >= 0 && i < taps && static_cast<std::size_t>(i) < v.size();
}

// Entry i of a tap-sized array, or null after printing `missing`.
double* entry(std::vector<double>& v, int taps, int i, const char* missing) {
  if (!inRange(v, taps, i)) {
    say(missing);
    return nullptr;
  }
  return &v[static_cast<std::size_t>(i)];
}

// Writes tap(n) at index n + taps/2 for n = -taps/2 .. taps/2 - 1. A host that wrote `taps`
// beyond the stored coefficients gets the stored ones written and one message for the rest,
// rather than a message per missing index (billions for a wild count).
template <class Tap>
void writeTaps(CRtf6Fir& fir, Tap tap) {
  const int half = fir.taps / 2;
  const std::int64_t stored = static_cast<std::int64_t>(fir.coeffs.size());
  const std::int64_t end = std::min<std::int64_t>(half, stored - half);
  for (std::int64_t n = -half; n < end; ++n)
    fir.setCoeff(tap(static_cast<int>(n)), static_cast<int>(n + half));
  if (end < half) say("\nThat coefficient does not exist\n");
}

}  // namespace

using digitfilt::kPi;
using digitfilt::kTwoPi;

CRtf6Fir::CRtf6Fir() : coeffs(4, 0.0), buffer(4, 0.0) {}

CRtf6Fir::CRtf6Fir(int n) {
  if (n < 0) {
    say("\nThe number of taps can not be less than 0\n");
    n = 0;
  }
  taps = n;
  coeffs.assign(static_cast<std::size_t>(n), 0.0);
  buffer.assign(static_cast<std::size_t>(n), 0.0);
}

void CRtf6Fir::setTaps(int n) {
  if (n <= 0) {
    say("\nThat value is not possible\n");
    return;
  }
  taps = n;
  coeffs.resize(static_cast<std::size_t>(n), 0.0);
  buffer.resize(static_cast<std::size_t>(n), 0.0);
}

double CRtf6Fir::getCoeff(int i) {
  const double* p = entry(coeffs, taps, i, "\nThat coefficient does not exist\n");
  return p ? *p : 0.0;
}

void CRtf6Fir::setCoeff(double value, int i) {
  if (double* p = entry(coeffs, taps, i, "\nThat coefficient does not exist\n")) *p = value;
}

double CRtf6Fir::getFreq(int i) {
  if (static_cast<unsigned>(i) > 1u) {
    say("\nThat frequency does not exist\n");
    return 0.0;
  }
  // Index 0 or 1 before a design has stored it: nothing there to read.
  if (static_cast<std::size_t>(i) >= freqs.size()) return 0.0;
  return freqs[static_cast<std::size_t>(i)];
}

void CRtf6Fir::setFreq(double f, int i) {
  if (!isNormalized(f) || i < 0 || static_cast<std::size_t>(i) > freqs.size()) {
    say("\nThat frequency is not normalized || the index does not exist\n");
    return;
  }
  // The index one past the stored frequencies is admitted: it appends.
  if (static_cast<std::size_t>(i) == freqs.size()) {
    freqs.push_back(f);
  } else {
    freqs[static_cast<std::size_t>(i)] = f;
  }
}

double CRtf6Fir::getBuffer(int i) {
  const double* p = entry(buffer, taps, i, "\nThat value does not exist\n");
  return p ? *p : 0.0;
}

void CRtf6Fir::setBuffer(double value, int i) {
  if (double* p = entry(buffer, taps, i, "\nThat index for the buffer does not exist\n")) *p = value;
}

int CRtf6Fir::setType(int t) { return (t >= 0 && type <= 4) ? 1 : 0; }

std::string CRtf6Fir::getType() const {
  switch (type) {
    case 0: return "\nLow-pass filter\n";
    case 1: return "\nHigh-pass filter\n";
    case 3: return "\nPass-band filter\n";
    case 4: return "\nStop-band filter\n";
    default: return "\n Unknown filter \n";
  }
}

void CRtf6Fir::lowpass(double fc) {
  freqs.resize(1);
  if (!isNormalized(fc)) {
    say("\nThe frequency is not normalized\n");
    return;
  }
  freqs[0] = fc;
  const double w = kTwoPi * fc;
  writeTaps(*this, [&](int n) { return n == 0 ? 2.0 * fc : std::sin(n * w) / (kPi * n); });
}

void CRtf6Fir::highpass(double fc) {
  freqs.resize(1);
  if (!isNormalized(fc)) {
    say("\nThe frequency is not normalized\n");
    return;
  }
  freqs[0] = fc;
  const double w = kTwoPi * fc;
  writeTaps(*this,
            [&](int n) { return n == 0 ? 1.0 - 2.0 * fc : -std::sin(n * w) / (kPi * n); });
}

void CRtf6Fir::passband(const double f[2]) {
  freqs.resize(2);
  if (f == nullptr || !isNormalized(f[0]) || !isNormalized(f[1])) {
    say("\nThe frequencies are not normalized\n");
    return;
  }
  freqs[0] = f[0];
  freqs[1] = f[1];
  const double w1 = kTwoPi * f[0], w2 = kTwoPi * f[1];
  writeTaps(*this, [&](int n) {
    return n == 0 ? (w2 - w1) / kPi : (std::sin(n * w2) - std::sin(n * w1)) / (kPi * n);
  });
}

void CRtf6Fir::stopband(const double f[2]) {
  freqs.resize(2);
  if (f == nullptr || !isNormalized(f[0]) || !isNormalized(f[1])) {
    say("\nThe frequencies are not normalized\n");
    return;
  }
  freqs[0] = f[0];
  freqs[1] = f[1];
  const double w1 = kTwoPi * f[0], w2 = kTwoPi * f[1];
  writeTaps(*this, [&](int n) {
    return n == 0 ? (w1 - w2) / kPi + 1.0 : (std::sin(n * w1) - std::sin(n * w2)) / (kPi * n);
  });
}

double CRtf6Fir::filter(double x) {
  const int n = std::min(taps, static_cast<int>(std::min(coeffs.size(), buffer.size())));
  if (n < 1) return 0.0;
  double* b = buffer.data();
  const double* c = coeffs.data();
  // A plain shifting line: buffer[i] is the input of i calls ago.
  std::memmove(b + 1, b, static_cast<std::size_t>(n - 1) * sizeof(double));
  b[0] = x;
  double s0 = 0.0, s1 = 0.0, s2 = 0.0, s3 = 0.0;
  int i = 0;
  for (; i + 4 <= n; i += 4) {
    s0 += c[i] * b[i];
    s1 += c[i + 1] * b[i + 1];
    s2 += c[i + 2] * b[i + 2];
    s3 += c[i + 3] * b[i + 3];
  }
  for (; i < n; ++i) s0 += c[i] * b[i];
  return (s0 + s1) + (s2 + s3);
}
