#include "digitfilt/fir/fourier.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <limits>
#include <new>
#include <vector>

#include "digitfilt/foundation/messages.h"

using digitfilt::kPi;
using digitfilt::kTwoPi;

namespace {

constexpr wchar_t kNoMemory[] = L"Memory enough?";
// The direct transform's angle uses this shortened pi; results of existing hosts match it.
constexpr double kDftPi = 3.141592654;

double sincOf(double x) { return x == 0.0 ? std::cos(x) : std::sin(x) / x; }

std::shared_ptr<double[]> zeroedArray(std::int64_t n) {
  return std::shared_ptr<double[]>(new (std::nothrow) double[static_cast<std::size_t>(n)]());
}

// Windowed-sinc half response and symmetric taps for the angular cut-off w (radians per sample).
// Returns M, or -1 when the arrays cannot be had.
std::int64_t designTaps(double w, int n, std::shared_ptr<double[]>& halfOwner, double*& half,
                        std::shared_ptr<double[]>& tapsOwner, double*& taps,
                        std::int32_t& count) {
  // A negative length designs the single centre tap.
  const std::int64_t M = std::max(n / 2, 0);
  auto h = zeroedArray(M + 1);
  auto t = zeroedArray(2 * (M + 1));
  if (!h || !t) {
    digitfilt::showMessage(kNoMemory);
    return -1;
  }
  for (std::int64_t k = 1; k <= M; ++k) h[k] = sincOf(k * w) * w / kPi;
  for (std::int64_t k = 1; k <= M; ++k) h[k] *= 0.54 + 0.46 * std::cos(k * kPi / M);
  t[M] = w / kPi;
  for (std::int64_t k = 1; k <= M; ++k) t[M - k] = t[M + k] = h[k];
  count = static_cast<std::int32_t>(M + 1);
  halfOwner = std::move(h);
  tapsOwner = std::move(t);
  half = halfOwner.get();
  taps = tapsOwner.get();
  return M;
}

// Radix-2 decimation in time over 2^m points, twiddles by the half-angle recurrence.
int fastTransform(int dir, int m, double* re, double* im) {
  // The count is formed by doubling in 32-bit arithmetic: from m = 31 on it wraps to a negative
  // number or to 0, and nothing is transformed.
  if (m >= 31) return 1;
  const std::int64_t n = m <= 0 ? 1 : (std::int64_t{1} << m);
  if (re == nullptr || im == nullptr) return 0;

  const std::int64_t half = n >> 1;
  std::int64_t j = 0;
  for (std::int64_t i = 0; i < n - 1; ++i) {
    if (i < j) {
      std::swap(re[i], re[j]);
      std::swap(im[i], im[j]);
    }
    std::int64_t k = half;
    while (k <= j) {
      j -= k;
      k >>= 1;
    }
    j += k;
  }

  double c1 = -1.0, c2 = 0.0;
  std::int64_t l2 = 1;
  for (int stage = 0; stage < m; ++stage) {
    const std::int64_t l1 = l2;
    l2 <<= 1;
    double u1 = 1.0, u2 = 0.0;
    for (std::int64_t jj = 0; jj < l1; ++jj) {
      for (std::int64_t i = jj; i < n; i += l2) {
        const std::int64_t i1 = i + l1;
        const double t1 = u1 * re[i1] - u2 * im[i1];
        const double t2 = u1 * im[i1] + u2 * re[i1];
        re[i1] = re[i] - t1;
        im[i1] = im[i] - t2;
        re[i] += t1;
        im[i] += t2;
      }
      const double z = u1 * c1 - u2 * c2;
      u2 = u1 * c2 + u2 * c1;
      u1 = z;
    }
    c2 = std::sqrt((1.0 - c1) / 2.0);
    if (dir == 1) c2 = -c2;
    c1 = std::sqrt((1.0 + c1) / 2.0);
  }

  if (dir == 1) {
    const double scale = static_cast<double>(n);
    for (std::int64_t i = 0; i < n; ++i) {
      re[i] /= scale;
      im[i] /= scale;
    }
  }
  return 1;
}

int directTransform(int dir, int n, double* re, double* im) {
  if (n < 0 || (n > 0 && (re == nullptr || im == nullptr))) return 0;
  std::vector<double> x, y;
  try {
    x.resize(static_cast<std::size_t>(n));
    y.resize(static_cast<std::size_t>(n));
  } catch (const std::bad_alloc&) {
    return 0;
  }
  const double count = static_cast<double>(n);
  for (int i = 0; i < n; ++i) {
    const double a = -static_cast<double>(dir) * 2.0 * kDftPi * static_cast<double>(i) / count;
    double sx = 0.0, sy = 0.0;
    for (int k = 0; k < n; ++k) {
      const double c = std::cos(k * a), s = std::sin(k * a);
      sx += re[k] * c - im[k] * s;
      sy += re[k] * s + im[k] * c;
    }
    x[i] = sx;
    y[i] = sy;
  }
  for (int i = 0; i < n; ++i) {
    re[i] = dir == 1 ? x[i] / count : x[i];
    im[i] = dir == 1 ? y[i] / count : y[i];
  }
  return 1;
}

enum class Transform { kFastPow2, kFastExact, kDirect };
enum class Mask { kLowPass, kHighPass, kBandPass, kNotch };

// Bin bounds are truncated: trunc(P f / fs) and trunc(P - P f / fs). A bound with no integer
// value (NaN, infinite, beyond int64: a zero or NaN rate, a wild edge) masks no bin at all; the
// lowest int64 makes every comparison of every mask false.
struct Cut {
  std::int64_t lo, hi;
};
Cut cutFor(double Pd, double fs, double f) {
  constexpr std::int64_t kNoBin = std::numeric_limits<std::int64_t>::min();
  constexpr double kLimit = 9.2233720368547758e18;
  const double c = Pd * f / fs;
  const double rest = Pd - c;
  if (!(c > -kLimit && c < kLimit && rest > -kLimit && rest < kLimit)) return {kNoBin, kNoBin};
  return {static_cast<std::int64_t>(c), static_cast<std::int64_t>(rest)};
}

void zeroBins(double* re, double* im, std::int64_t P, bool (*zero)(std::int64_t, Cut, Cut),
              Cut a, Cut b) {
  for (std::int64_t k = 0; k < P; ++k)
    if (zero(k, a, b)) re[k] = im[k] = 0.0;
}

bool lowPassBin(std::int64_t k, Cut a, Cut) { return a.lo < k && k < a.hi; }
// Both conditions at once: only an overlap (an edge above half the rate) zeroes anything.
bool highPassBin(std::int64_t k, Cut a, Cut) { return k <= a.lo && k >= a.hi; }
bool notchBin(std::int64_t k, Cut a, Cut b) {
  return k > a.lo && k < a.hi && k < b.lo && k > b.hi;
}

void applyMask(Mask mask, double* re, double* im, std::int64_t P, double fs, double f1,
               double f2) {
  const double Pd = static_cast<double>(P);
  const Cut c1 = cutFor(Pd, fs, f1), c2 = cutFor(Pd, fs, f2);
  switch (mask) {
    case Mask::kLowPass:
      zeroBins(re, im, P, lowPassBin, c1, c1);
      break;
    case Mask::kHighPass:
      zeroBins(re, im, P, highPassBin, c1, c1);
      break;
    case Mask::kBandPass:
      zeroBins(re, im, P, lowPassBin, c1, c1);
      zeroBins(re, im, P, highPassBin, c2, c2);
      break;
    case Mask::kNotch:
      zeroBins(re, im, P, notchBin, c1, c2);
      break;
  }
}

std::int64_t powerOfTwoCeiling(std::int64_t n) {
  std::int64_t v = n - 1;
  for (int s : {1, 2, 4, 8, 16, 32}) v |= v >> s;
  return v + 1;
}

int filterRecord(CDigitFiltCoefMak02Fourier& self, Transform transform, Mask mask, double* data,
                 int n, double fs, double f1, double f2) {
  if (data == nullptr || n < 1) return 0;
  const std::int64_t P = transform == Transform::kFastPow2 ? powerOfTwoCeiling(n) : n;
  // The fast forms hand P to FFTd as its exponent; below 32 that would run 2^P points over P
  // elements, so such records are refused.
  if (transform != Transform::kDirect && P < 32) return 0;
  std::unique_ptr<double[]> re(new (std::nothrow) double[static_cast<std::size_t>(P)]());
  std::unique_ptr<double[]> im(new (std::nothrow) double[static_cast<std::size_t>(P)]());
  if (!re || !im) {
    digitfilt::showMessage(kNoMemory);
    return 0;
  }
  std::copy(data, data + n, re.get());
  const int arg = static_cast<int>(std::min<std::int64_t>(P, INT_MAX));
  auto run = [&](int dir) {
    return transform == Transform::kDirect ? self.DFTd(dir, arg, re.get(), im.get())
                                           : self.FFTd(dir, arg, re.get(), im.get());
  };
  if (run(1) == 0) return 0;
  applyMask(mask, re.get(), im.get(), P, fs, f1, f2);
  if (run(-1) == 0) return 0;
  std::copy(re.get(), re.get() + n, data);
  return 1;
}

}  // namespace

double CDigitFiltCoefMak02Fourier::sinc(double x) { return sincOf(x); }

int CDigitFiltCoefMak02Fourier::nonRcsvLowPass(double fc, int n) {
  const double wc = fc * kTwoPi;
  return designTaps(wc, n, lpHalfOwner_, lpHalf, lpCoefsOwner_, lpCoefs, lpCount) < 0 ? 0 : 1;
}

int CDigitFiltCoefMak02Fourier::nonRcsvHighPass(double fc, int n) {
  const double wc = (0.5 - fc) * kTwoPi;
  const std::int64_t M =
      designTaps(wc, n, hpHalfOwner_, hpHalf, hpCoefsOwner_, hpCoefs, hpCount);
  if (M < 0) return 0;
  // Alternating signs shift the low-pass at 0.5 - fc up to a high-pass at fc.
  for (std::int64_t k = 1; k <= M; k += 2) {
    hpCoefs[M - k] = -hpCoefs[M - k];
    hpCoefs[M + k] = -hpCoefs[M + k];
  }
  return 1;
}

int CDigitFiltCoefMak02Fourier::nonRcsvBandPass(double f1, double f2, int n) {
  const double wb = (f2 - f1) * 0.5 * kTwoPi;
  const std::int64_t M =
      designTaps(wb, n, bpHalfOwner_, bpHalf, bpCoefsOwner_, bpCoefs, bpCount);
  if (M < 0) return 0;
  // Modulate the half-width low-pass up to the band centre.
  bpCoefs[M] *= 2.0;
  for (std::int64_t k = 1; k <= M; ++k) {
    const double m = 2.0 * std::cos(k * (f1 + f2) * kTwoPi * 0.5);
    bpCoefs[M - k] *= m;
    bpCoefs[M + k] *= m;
  }
  return 1;
}

int CDigitFiltCoefMak02Fourier::FFTd(int dir, int m, double* re, double* im) {
  return fastTransform(dir, m, re, im);
}

int CDigitFiltCoefMak02Fourier::DFTd(int dir, int n, double* re, double* im) {
  return directTransform(dir, n, re, im);
}

int CDigitFiltCoefMak02Fourier::fftLowPass(double* data, int n, double fs, double f1) {
  return filterRecord(*this, Transform::kFastPow2, Mask::kLowPass, data, n, fs, f1, 0.0);
}

int CDigitFiltCoefMak02Fourier::fftHighPass(double* data, int n, double fs, double f1) {
  return filterRecord(*this, Transform::kFastPow2, Mask::kHighPass, data, n, fs, f1, 0.0);
}

int CDigitFiltCoefMak02Fourier::fftBandPass(double* data, int n, double fs, double f1,
                                            double f2) {
  return filterRecord(*this, Transform::kFastPow2, Mask::kBandPass, data, n, fs, f1, f2);
}

int CDigitFiltCoefMak02Fourier::fftNotch(double* data, int n, double fs, double f1, double f2) {
  return filterRecord(*this, Transform::kFastPow2, Mask::kNotch, data, n, fs, f1, f2);
}

int CDigitFiltCoefMak02Fourier::fftBandPassD(double* data, int n, double fs, double f1,
                                             double f2) {
  return filterRecord(*this, Transform::kFastExact, Mask::kBandPass, data, n, fs, f1, f2);
}

int CDigitFiltCoefMak02Fourier::dftLowPass(double* data, int n, double fs, double f1) {
  return filterRecord(*this, Transform::kDirect, Mask::kLowPass, data, n, fs, f1, 0.0);
}

int CDigitFiltCoefMak02Fourier::dftHighPass(double* data, int n, double fs, double f1) {
  return filterRecord(*this, Transform::kDirect, Mask::kHighPass, data, n, fs, f1, 0.0);
}

int CDigitFiltCoefMak02Fourier::dftBandPass(double* data, int n, double fs, double f1,
                                            double f2) {
  return filterRecord(*this, Transform::kDirect, Mask::kBandPass, data, n, fs, f1, f2);
}

int CDigitFiltCoefMak02Fourier::dftNotch(double* data, int n, double fs, double f1, double f2) {
  return filterRecord(*this, Transform::kDirect, Mask::kNotch, data, n, fs, f1, f2);
}
