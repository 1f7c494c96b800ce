#include "digitfilt/remez/remez_filter.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <new>

#include "digitfilt/foundation/messages.h"

namespace {

// A tapCount a host wrote beyond the record's own array leaves the record out.
bool appliesTaps(const Filter_Remez& f) {
  const std::int64_t len = f.ownCoefsLength();
  return f.enabled != 0 && f.tapCount > 0 && f.coefs && (len < 0 || f.tapCount <= len);
}

// y[i] = sum_k coefs[k] x[(start(i) + k) mod n] / scale, start(i) in [0, n).
template <class StartIndex>
void circularFir(const double* coefs, std::int64_t taps, const double* x, double* y,
                 std::int64_t i, StartIndex start, std::int64_t n, double scale) {
  double sum = 0.0;
  std::int64_t j = start(i);
  for (std::int64_t k = 0; k < taps; ++k) {
    sum += coefs[k] * x[j];
    if (++j == n) j = 0;
  }
  y[i] = sum / scale;
}

}  // namespace

CDigitFiltCoefMak06Remez::CDigitFiltCoefMak06Remez() { initInitRemez(); }

CDigitFiltCoefMak06Remez::~CDigitFiltCoefMak06Remez() {
  clearRemez();
  response.freeFreqRespBuffer();
  workspace.freeRemezData();
}

int CDigitFiltCoefMak06Remez::initInitRemez() {
  for (Filter_Remez& f : records) {
    f.enabled = 0;
    f.specCode = 3;
    f.specIndex = -1;
    f.remezType = 1;
    std::fill(std::begin(f.auxValue), std::end(f.auxValue), 0.0);
    f.unitValue = 1.0;
    f.auxWord = 0;
    std::fill(std::begin(f.bands), std::end(f.bands), 0.0);
    std::fill(std::begin(f.des), std::end(f.des), 0.0);
    std::fill(std::begin(f.weight), std::end(f.weight), 0.0);
    f.order = 0;
    f.tapCount = 0;
    f.releaseArrays();
  }
  return 1;
}

int CDigitFiltCoefMak06Remez::clearRemez() {
  for (Filter_Remez& f : records) f.releaseArrays();
  return 1;
}

Filter_Remez* CDigitFiltCoefMak06Remez::getFilterCoefficients(int i) {
  return i >= 0 && i < kRecordCount ? &records[i] : nullptr;
}

int CDigitFiltCoefMak06Remez::makeAllCoef() { return 0; }

int CDigitFiltCoefMak06Remez::filter(double* x, double* y, std::int64_t n) {
  if (!x || !y) return 0;
  int applied = 0;
  for (const Filter_Remez& f : records) {
    if (!appliesTaps(f)) continue;
    const double scale = static_cast<double>(f.tapCount);
    for (std::int64_t i = 0; i < n; ++i)
      circularFir(f.coefs, f.tapCount, x, y, i, [](std::int64_t s) { return s; }, n, scale);
    ++applied;
  }
  return applied;
}

int CDigitFiltCoefMak06Remez07::makeAllCoef() {
  int designed = 0;
  for (Filter_Remez& f : records)
    if (f.enabled != 0 && computeCoef(&f)) ++designed;
  return designed;
}

int CDigitFiltCoefMak06Remez07::filter(double* x, double* y, std::int64_t n) {
  if (!x || !y) return 0;
  int applied = 0;
  for (const Filter_Remez& f : records) {
    if (!appliesTaps(f)) continue;
    filtRmzFrwd(f.coefs, f.tapCount, x, y, n);
    ++applied;
  }
  return applied;
}

int CDigitFiltCoefMak06Remez07::filtRmzFrwd(const double* coefs, std::int64_t tapCount,
                                            const double* x, double* y, std::int64_t n) {
  if (!coefs || !x || !y) return 1;
  for (std::int64_t i = 0; i < n; ++i)
    circularFir(coefs, tapCount, x, y, i, [](std::int64_t s) { return s; }, n, 1.0);
  return 1;
}

int CDigitFiltCoefMak06Remez07::filtRmzBkwd(const double* coefs, std::int64_t tapCount,
                                            const double* x, double* y, std::int64_t n) {
  if (!coefs || !x || !y || n < 1) return 1;
  const auto start = [tapCount, n](std::int64_t i) {
    const std::int64_t s = (i - tapCount % n) % n;
    return s < 0 ? s + n : s;
  };
  for (std::int64_t i = n - 1; i >= 0; --i) circularFir(coefs, tapCount, x, y, i, start, n, 1.0);
  return 1;
}

int CDigitFiltCoefMak06Remez07::computeCoef(Filter_Remez* f) {
  if (!f || f->enabled == 0) return 0;
  const std::int64_t n = f->order % 2 != 0 && f->order < INT64_MAX ? f->order + 1 : f->order;
  f->numTaps = n;
  f->tapCount = n;
  if (!f->allocCoefs(n)) return 0;
  return remezPM03k(f) ? 1 : 0;
}

int CDigitFiltCoefMak06Remez07::checkBuffer(std::int64_t n) {
  if (buffer && bufferLen == n) return 1;
  bufferOwner_.reset();
  buffer = nullptr;
  if (n < 0 || n > static_cast<std::int64_t>(PTRDIFF_MAX / sizeof(double) / 2)) return 0;
  bufferOwner_.reset(new (std::nothrow) double[static_cast<std::size_t>(n)]());
  buffer = bufferOwner_.get();
  return buffer ? 1 : 0;
}

double* CDigitFiltCoefMak06Remezqv::filterGain(std::int64_t n, Filter_Remez* f) {
  if (!f || !f->coefs || n < -1 ||
      n >= static_cast<std::int64_t>(PTRDIFF_MAX / sizeof(double) / 2))
    return nullptr;
  const std::int64_t last = std::min(f->order, f->tapCount);
  const std::int64_t len = f->ownCoefsLength();
  if (len >= 0 && last >= len) return nullptr;
  double* gains = new (std::nothrow) double[static_cast<std::size_t>(n + 1)];
  if (!gains) return nullptr;
  for (std::int64_t i = 0; i <= n; ++i) {
    const double w = static_cast<double>(i) * digitfilt::kPi / static_cast<double>(n);
    double re = 0.0, im = 0.0;
    for (std::int64_t k = 0; k <= last; ++k) {
      re += f->coefs[k] * std::cos(static_cast<double>(k) * w);
      im += f->coefs[k] * std::sin(static_cast<double>(k) * w);
    }
    gains[i] = 10.0 * std::log10(re * re + im * im);
  }
  return gains;
}

double CDigitFiltCoefMak06Remezqv::getGaindBs(double a, double b) {
  return 20.0 * std::log10(b / a);
}

namespace {

// The checks both corrections share; true when tr may be corrected further.
bool transitionArgumentsValid(double tr, double low, double high) {
  if (low >= high) {
    digitfilt::showMessage(L"frequncy high edge must be larger than the low edge!");
    return false;
  }
  if (tr <= 0.0) {
    digitfilt::showMessage(L"transition frequncy must be large than 0!");
    return false;
  }
  return true;
}

}  // namespace

double CDigitFiltCoefMak06Remezqv::ckCorrectTrnUp(double tr, double low, double high) {
  if (!transitionArgumentsValid(tr, low, high)) return 0.0001;
  if (tr + low < high) return tr;
  // Kept as hosts have always had it: the width keeps shrinking and is never tested again. The
  // volatile makes the endless loop well-defined instead of something the optimiser may drop.
  volatile double t = tr;
  for (;;) t = t - 0.0001;
}

double CDigitFiltCoefMak06Remezqv::ckCorrectTrnDn(double tr, double low, double high) {
  if (!transitionArgumentsValid(tr, low, high)) return 0.0001;
  constexpr double kStep = 0.0001;
  constexpr int kStepLimit = 2000000;
  for (int i = 0; i < kStepLimit; ++i) {
    if (!(low >= high - tr)) return tr;
    tr -= kStep;
  }
  // Still outside the band after two million steps: the width was far above the band width, or
  // too large (infinite) for a step to move it. Stepping again from just above the band width
  // ends within a step of where the long stepping would; with edges too large for a step to
  // tell apart, the checks' fallback.
  if (!(std::fabs(low) < 1e6 && std::fabs(high) < 1e6)) return kStep;
  tr = (high - low) + 2.0 * kStep;
  while (low >= high - tr) tr -= kStep;
  return tr;
}
