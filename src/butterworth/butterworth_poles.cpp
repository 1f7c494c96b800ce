#include "digitfilt/butterworth/butterworth_poles.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <new>

struct CDigitFiltCoefMak01Butterworth03qv::PoleArrays {
  std::unique_ptr<double[]> re, im;
};

struct CDigitFiltCoefMak01Butterworth03qv::SectionTables {
  std::unique_ptr<double[]> num[3], den[3];
  double* numViews[3] = {};
  double* denViews[3] = {};
};

namespace {

// Zero-filled array of n doubles, or null when n is out of reach.
std::unique_ptr<double[]> zeroArray(std::int64_t n) {
  if (n < 0 || static_cast<std::uint64_t>(n) > PTRDIFF_MAX / sizeof(double)) return nullptr;
  return std::unique_ptr<double[]>(new (std::nothrow) double[static_cast<std::size_t>(n)]());
}

constexpr double kShortPi = 3.1415926535;

// Largest pole or section count designed. Anything beyond is a corrupted argument, not a filter:
// refusing it keeps the allocations bounded and the index arithmetic (n + 2, an odd n rounded
// up) clear of overflow.
constexpr std::int64_t kMaxPoleCount = std::int64_t{1} << 20;

}  // namespace

bool CDigitFiltCoefMak01Butterworth03qv::placePoles(double f, std::int64_t n,
                                                    std::int64_t slots) {
  poleCount = n;
  // The earlier arrays are released (copies that share them keep theirs).
  poles_.reset();
  poleRe = poleIm = nullptr;
  if (n > kMaxPoleCount) return false;
  // The loop below writes index n + 1.
  if (n >= 0 && slots < n + 2) slots = n + 2;
  if (slots < 2) slots = 2;
  auto arrays = std::make_shared<PoleArrays>();
  arrays->re = zeroArray(slots);
  arrays->im = zeroArray(slots);
  if (!arrays->re || !arrays->im) return false;
  poles_ = arrays;
  poleRe = arrays->re.get();
  poleIm = arrays->im.get();
  const double t = std::sin(digitfilt::kPi * f) / std::cos(digitfilt::kPi * f);
  if (n < 0) return true;
  const double nd = static_cast<double>(n);
  for (std::int64_t i = 0; i <= n; ++i) {
    const double x = (2.0 * nd + 1.0 + 2.0 * static_cast<double>(i)) * digitfilt::kPi / (4.0 * nd);
    const double den = 1.0 - 2.0 * t * std::cos(x) + t * t;
    poleRe[i + 1] = (1.0 - t * t) / den;
    poleIm[i + 1] = 2.0 * t * std::sin(x) / den;
  }
  return true;
}

bool CDigitFiltCoefMak01Butterworth03qv::takeTables(std::int64_t n) {
  tables_.reset();
  numTables = denTables = nullptr;
  if (n > kMaxPoleCount) return false;
  auto tables = std::make_shared<SectionTables>();
  const std::int64_t size = n > 0 ? n : 0;
  for (int r = 0; r < 3; ++r) {
    tables->num[r] = zeroArray(size);
    tables->den[r] = zeroArray(size);
    if (!tables->num[r] || !tables->den[r]) return false;
    tables->numViews[r] = tables->num[r].get();
    tables->denViews[r] = tables->den[r].get();
  }
  tables_ = tables;
  numTables = tables->numViews;
  denTables = tables->denViews;
  return true;
}

int CDigitFiltCoefMak01Butterworth03qv::ukButterworthPoles(double f, std::int64_t n) {
  return placePoles(f, n, 0) ? 1 : 0;
}

int CDigitFiltCoefMak01Butterworth03qv::ukButterworthLowPass(double f, std::int64_t n) {
  if (!takeTables(n) || !placePoles(f, n, 0)) return 0;
  double *b0 = numTables[0], *b1 = numTables[1], *b2 = numTables[2];
  double *a1 = denTables[1], *a2 = denTables[2];
  for (std::int64_t i = 0; i < n; ++i) {
    const double re = poleRe[i + 1], im = poleIm[i + 1];
    a1[i] = -2.0 * re;
    a2[i] = re * re + im * im;
    const double g = 4.0 / (1.0 + a1[i] + a2[i]);
    b0[i] = 1.0 / g;
    b1[i] = 2.0 / g;
    b2[i] = 1.0 / g;
  }
  return 1;
}

int CDigitFiltCoefMak01Butterworth03qv::ukButterworthHighPass(double f, std::int64_t n) {
  if (!takeTables(n) || !placePoles(0.5 - f, n, 0)) return 0;
  for (std::int64_t i = 1; i <= n; ++i) poleRe[i] = -poleRe[i];
  for (std::int64_t i = 0; i < n; ++i) {
    const double re = poleRe[i + 1], im = poleIm[i + 1];
    denTables[1][i] = -2.0 * re;
    denTables[2][i] = re * re + im * im;
    numTables[0][i] = 1.0;
    numTables[1][i] = -2.0;
    numTables[2][i] = 1.0;
  }
  return 1;
}

int CDigitFiltCoefMak01Butterworth03qv::ukButterworthBandPass(double f1, double f2,
                                                              std::int64_t n) {
  if (n > kMaxPoleCount) {
    // Refused whole: the earlier tables and poles are released and none are taken.
    takeTables(n);
    poles_.reset();
    poleRe = poleIm = nullptr;
    poleCount = n / 2;
    return 0;
  }
  if (n % 2 != 0) ++n;
  // The sections read poles up to index n, past the n/2 + 1 that are placed: spare slots.
  if (!takeTables(n) || !placePoles(f2 - f1, n / 2, n + 1)) return 0;
  // The band transform of the prototype poles does not enter the sections (they are built
  // from the prototype itself, as hosts expect), so it is not computed.
  for (std::int64_t i = 0; i < n; ++i) {
    const double re = poleRe[i + 1], im = poleIm[i + 1];
    denTables[1][i] = -2.0 * re;
    denTables[2][i] = re * re + im * im;
    numTables[0][i] = 1.0;
    numTables[1][i] = 0.0;
    numTables[2][i] = -1.0;
  }
  return 1;
}

int CDigitFiltCoefMak01Butterworth03qv::paButterworthCoef02(double f, double T, int n, double* a1,
                                                           double* a2, double* b1, double* b2,
                                                           double* g,
                                                           std::int64_t* sectionCount,
                                                           double* sum) {
  if (!a1 || !a2 || !b1 || !b2 || !g || !sectionCount || !sum) return 0;
  double x = T * kShortPi * f;
  if (std::fabs(x) > 6.283185307) x = x - 2.0 * std::trunc(x / (2.0 * kShortPi)) * kShortPi;
  const double t = std::tan(x);
  const bool odd = n % 2 != 0;
  *sectionCount = n / 2 + (odd ? 1 : 0);
  *sum = 0.0;
  for (int k = 1; k <= n / 2; ++k) {
    const double c = odd ? std::cos(k * kShortPi / n) : std::cos((k - 0.5) * kShortPi / n);
    *sum += c * t * T / (t * t);
    const double den = 2.0 * c * t + 1.0 + t * t;
    a1[k] = -2.0 * (t * t - 1.0) / den;
    a2[k] = -(1.0 - 2.0 * c * t + t * t) / den;
    b1[k] = 2.0;
    b2[k] = 1.0;
    g[k] = t * t / den;
  }
  // A negative odd n puts the first-order section before index 1, outside the arrays (which
  // are indexed from 1): its coefficients are then not written, only the sum is formed.
  if (odd && *sectionCount < 1) *sum += T / (2.0 * t);
  if (odd && *sectionCount >= 1) {
    const std::int64_t m = *sectionCount;
    a1[m] = (1.0 - t) / (1.0 + t);
    a2[m] = 0.0;
    b1[m] = 1.0;
    b2[m] = 0.0;
    g[m] = t / (1.0 + t);
    *sum += T / (2.0 * t);
  }
  return 1;
}
