#include "digitfilt/remez/remez_exchange.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

namespace {

using digitfilt::kPi;
using digitfilt::kTwoPi;
using Steps = CDigitFiltCoefMak06Remez02;

constexpr int kMaxIterations = 40;
// Longer than any run can design (r + 1 extremals fit the workspace limit).
constexpr std::int64_t kMaxTaps = 2 * static_cast<std::int64_t>(CRemezData::kMaxGridSize);

// A workspace that can be walked over its gridCap entries with r + 1 extremals.
bool usable(const CRemezData* d, std::int64_t r) {
  return d && d->grid && d->ext && d->gridCap >= 1 && d->gridCap <= d->gridLength() && r >= 0 &&
         r + 1 <= d->extLength();
}

// Every ext[0..r] points into the walked grid.
bool extremalsInGrid(const CRemezData* d, int r) {
  for (int i = 0; i <= r; ++i)
    if (d->ext[i] < 0 || d->ext[i] >= d->gridCap) return false;
  return true;
}

// Barycentric form of the Lagrange interpolation through (x[i], y[i]), i = 0..r, at abscissa c.
// A node closer than 1e-7 is taken as hit exactly. False (A = 1) for a zero denominator.
bool interpolate(double c, int r, const double* x, const double* ad, const double* y,
                 double& A) {
  double num = 0.0, den = 0.0;
  for (int i = 0; i <= r; ++i) {
    const double d = c - x[i];
    if (std::fabs(d) < 1e-7) {
      A = y[i];
      return true;
    }
    const double w = ad[i] / d;
    den += w;
    num += w * y[i];
  }
  if (den == 0.0) {
    A = 1.0;
    return false;
  }
  A = num / den;
  return true;
}

// interpolate() at kLanes abscissae at once, each lane summing in the same order, so the results
// are the same bit for bit; independent lanes let the divisions overlap. A lane that hits a node
// keeps accumulating (its sums are discarded), which keeps the node loop free of branches.
// Returns the first lane with a zero denominator, or kLanes when every lane succeeded.
constexpr int kLanes = 8;
int interpolateLanes(const double* c, int r, const double* x, const double* ad, const double* y,
                     double* A) {
  double num[kLanes] = {}, den[kLanes] = {};
  int hit[kLanes];
  for (int& h : hit) h = -1;
  for (int i = 0; i <= r; ++i) {
    const double xi = x[i], ai = ad[i], yi = y[i];
    bool near = false;
    for (int l = 0; l < kLanes; ++l) {
      const double d = c[l] - xi;
      near |= std::fabs(d) < 1e-7;
      const double w = ai / d;
      den[l] += w;
      num[l] += w * yi;
    }
    if (near)
      for (int l = 0; l < kLanes; ++l)
        if (hit[l] < 0 && std::fabs(c[l] - xi) < 1e-7) hit[l] = i;
  }
  for (int l = 0; l < kLanes; ++l) {
    if (hit[l] >= 0) {
      A[l] = y[hit[l]];
    } else if (den[l] == 0.0) {
      A[l] = 1.0;
      return l;
    } else {
      A[l] = num[l] / den[l];
    }
  }
  return kLanes;
}

// error[i] = weights[i] (desired[i] - A(grid[i])) over the walked grid; gridCos(i) gives
// cos(2 pi grid[i]).
template <class GridCos>
int weightedError(int r, CRemezData* data, GridCos gridCos) {
  const double* x = data->xCos;
  const double* ad = data->ad;
  const double* y = data->yVal;
  const double* desired = data->desired;
  const double* weights = data->weights;
  double* error = data->error;
  const std::int32_t n = data->gridCap;
  std::int32_t i = 0;
  for (; i + kLanes <= n; i += kLanes) {
    double c[kLanes], A[kLanes];
    for (int l = 0; l < kLanes; ++l) c[l] = gridCos(i + l);
    const int done = interpolateLanes(c, r, x, ad, y, A);
    for (int l = 0; l < done; ++l) error[i + l] = weights[i + l] * (desired[i + l] - A[l]);
    if (done < kLanes) return 0;  // the points before the failing one are written, as one by one
  }
  for (; i < n; ++i) {
    double A;
    if (!interpolate(gridCos(i), r, x, ad, y, A)) return 0;
    error[i] = weights[i] * (desired[i] - A);
  }
  return 1;
}

// Record-level entry points pass the record's six-slot arrays: at most three bands fit.
bool recordBandsFit(const Filter_Remez* f) { return f->numBands >= 1 && f->numBands <= 3; }

// The tap transform writes numTaps taps: refused when the record's own array is shorter.
bool tapsFit(const Filter_Remez* f) {
  const std::int64_t len = f->ownCoefsLength();
  return len < 0 || f->numTaps <= len;
}

int runExchange(std::int64_t numTaps, std::int64_t numBands, const double* bands,
                const double* des, const double* weight, CRemezData* data,
                std::int64_t gridDensity, std::int64_t type, bool filledGridOnly) {
  if (!data) return -1;
  const bool positive = type == 1;
  data->positiveSym = positive ? 1 : 0;
  const std::int64_t r64 = numTaps / 2;
  if (r64 < 0 || r64 >= CRemezData::kMaxGridSize) return -1;
  const int r = static_cast<int>(r64);
  const std::int64_t g = Steps::getGridSize01(gridDensity, r64, type, numBands, bands);
  if (g < 1 || g > CRemezData::kMaxGridSize) return -1;
  if (!data->newRemezData(static_cast<int>(g), r + 1)) return -1;

  std::int64_t weighted = g;
  const int filled =
      Steps::_01createDenseGrid(r64, numTaps, numBands, bands, des, weight, gridDensity, data);
  if (filledGridOnly) {
    if (filled < 1) return -1;
    data->gridCap = filled;
    // Again over the narrowed grid, so that its own last point gets the end-point rule.
    Steps::_01createDenseGrid(r64, numTaps, numBands, bands, des, weight, gridDensity, data);
    weighted = filled;
  }
  Steps::_02initialGuess(r, data);
  Steps::_07SetParksMcClellanDW(type, numTaps, weighted, data);

  // The grid stays put during the run, so its cosines are taken once, after the first
  // parameter step has accepted the workspace.
  std::vector<double> gridCos;
  const auto cachedCos = [&gridCos](std::int32_t i) { return gridCos[i]; };
  for (int iter = 0;;) {
    if (!Steps::_03calcParms(r, data)) return -1;
    if (gridCos.empty()) {
      gridCos.resize(static_cast<std::size_t>(data->gridCap));
      for (std::size_t i = 0; i < gridCos.size(); ++i)
        gridCos[i] = std::cos(kTwoPi * data->grid[i]);
    }
    if (!weightedError(r, data, cachedCos) || Steps::_05search(r, data) < 1) return -1;
    if (Steps::_06isDone(r, data)) return iter;
    if (++iter == kMaxIterations) return -1;
  }
}

// Parameters over rFinal + 1 extremals, amplitude samples and the tap transform into f->coefs.
int finishTaps(Filter_Remez* f, CRemezData* data, int rFinal) {
  if (!Steps::_03calcParms(rFinal, data)) return 0;
  if (!Steps::_08findTap(f->numTaps, rFinal, data)) return 0;
  Steps::freqSample(data->sampledA, f->coefs, f->numTaps, data->positiveSym);
  data->freeRemezData();
  return 1;
}

}  // namespace

int CDigitFiltCoefMak06Remez01::checkIndexPositive(const std::int32_t* idx, std::int64_t count) {
  for (std::int64_t i = 0; i < count; ++i)
    if (idx[i] < 0) return 0;
  return 1;
}

int CDigitFiltCoefMak06Remez01::checkNoneZero(const double* v, std::int64_t count) {
  for (std::int64_t i = 0; i < count; ++i)
    if (v[i] == 0.0) return 0;
  return 1;
}

int CDigitFiltCoefMak06Remez01::_01createDenseGrid(std::int64_t r, std::int64_t numTaps,
                                                   std::int64_t numBands, const double* bands,
                                                   const double* des, const double* weight,
                                                   std::int64_t gridDensity, CRemezData* data) {
  if (!data || !bands || !des || !weight || !data->grid || data->gridCap < 1 ||
      data->gridCap > data->gridLength())
    return 0;
  const bool positive = data->positiveSym != 0;
  const double delf = 0.5 / (static_cast<double>(r) * static_cast<double>(gridDensity));
  const std::int64_t cap = data->gridCap;
  double* grid = data->grid;
  std::int64_t j = 0;
  for (std::int64_t b = 0; b < numBands; ++b) {
    double low = bands[2 * b];
    if (b == 0 && !positive && delf > bands[0]) low = delf;
    const double high = bands[2 * b + 1];
    const std::int64_t k = digitfilt::truncToInt64(std::floor((high - low) / delf + 0.5));
    const double d0 = des[2 * b], dd = des[2 * b + 1] - des[2 * b];
    for (std::int64_t i = 0; i < k; ++i, ++j) {
      if (j >= cap) {
        j = cap + 1;  // more points than the walk holds: none stored, no end point either
        break;
      }
      const double di = static_cast<double>(i);
      // A one-point band keeps its first amplitude rather than 0/0.
      data->desired[j] = k > 1 ? d0 + di * dd / static_cast<double>(k - 1) : d0;
      data->weights[j] = weight[b];
      grid[j] = low + di * delf;
    }
    if (j - 1 >= 0 && j - 1 < cap) grid[j - 1] = high;
  }
  if (!positive && numTaps % 2 != 0 && grid[cap - 1] > 0.5 - delf) grid[cap - 1] = 0.5 - delf;
  return static_cast<int>(std::min(j, cap));
}

int CDigitFiltCoefMak06Remez01::_02initialGuess(int r, CRemezData* data) {
  if (!usable(data, r)) return 0;
  if (r == 0) {
    data->ext[0] = 0;
    return 1;
  }
  const std::int64_t last = data->gridCap - 1;
  for (int i = 0; i <= r; ++i) data->ext[i] = static_cast<std::int32_t>(last * i / r);
  return 1;
}

int CDigitFiltCoefMak06Remez01::_03calcParms(int r, CRemezData* data) {
  if (!usable(data, r) || !checkIndexPositive(data->ext, r) || !extremalsInGrid(data, r))
    return 0;
  // A zero weight would divide by zero below. Refused before the O(r^2) weights, so that a
  // workspace with a zero tail fails at once.
  if (!checkNoneZero(data->weights, data->gridCap)) return 0;
  const std::int32_t* ext = data->ext;
  double* x = data->xCos;
  double* ad = data->ad;
  for (int i = 0; i <= r; ++i) x[i] = std::cos(kTwoPi * data->grid[ext[i]]);

  // Striding the product keeps its factors mixed in size, so it neither overflows nor
  // underflows for long filters.
  const int ld = (r - 1) / 15 + 1;
  for (int i = 0; i <= r; ++i) {
    double denom = 1.0;
    const double xi = x[i];
    for (int j = 0; j < ld; ++j)
      for (int k = j; k <= r; k += ld)
        if (k != i) denom *= 2.0 * (xi - x[k]);
    if (std::fabs(denom) < 0.00001) denom = 0.00001;
    ad[i] = 1.0 / denom;
  }

  const double* desired = data->desired;
  const double* weights = data->weights;
  double numer = 0.0, den = 0.0, sign = 1.0;
  for (int i = 0; i <= r; ++i) {
    numer += ad[i] * desired[ext[i]];
    den += sign * ad[i] / weights[ext[i]];
    sign = -sign;
  }
  const double delta = numer / den;
  sign = 1.0;
  for (int i = 0; i <= r; ++i) {
    data->yVal[i] = desired[ext[i]] - sign * delta / weights[ext[i]];
    sign = -sign;
  }
  return 1;
}

int CDigitFiltCoefMak06Remez01::_04calcError(int r, CRemezData* data) {
  if (!usable(data, r)) return 0;
  const double* grid = data->grid;
  return weightedError(r, data, [grid](std::int32_t i) { return std::cos(kTwoPi * grid[i]); });
}

int CDigitFiltCoefMak06Remez01::_05search(int r, CRemezData* data) {
  if (!usable(data, r) || !checkIndexPositive(data->ext, static_cast<std::int64_t>(r) + 1))
    return 0;
  const double* e = data->error;
  std::int32_t* found = data->foundExt;
  const std::int32_t n = data->gridCap;
  if (n < 2) return -2;
  const std::int64_t limit = 2 * static_cast<std::int64_t>(r);
  std::int64_t k = 0;

  if ((e[0] > 0.0 && e[0] > e[1]) || (e[0] < 0.0 && e[0] < e[1])) {
    if (k >= limit) return -3;
    found[k++] = 0;
  }
  for (std::int32_t i = 1; i < n - 1; ++i) {
    if ((e[i] >= e[i - 1] && e[i] > e[i + 1] && e[i] > 0.0) ||
        (e[i] <= e[i - 1] && e[i] < e[i + 1] && e[i] < 0.0)) {
      if (k >= limit) return -3;
      found[k++] = i;
    }
  }
  const std::int32_t last = n - 1;
  if ((e[last] > 0.0 && e[last] > e[last - 1]) || (e[last] < 0.0 && e[last] < e[last - 1])) {
    if (k >= limit) return -3;
    found[k++] = last;
  }
  if (k < r + 1) return -2;

  // Drop the surplus: the smallest error up to the first pair that fails to alternate, or,
  // when all alternate and one is left over, the smaller end.
  for (std::int64_t extra = k - (r + 1); extra > 0; --extra) {
    bool up = e[found[0]] > 0.0;
    bool alternating = true;
    std::int64_t l = 0;
    for (std::int64_t j = 1; j < k; ++j) {
      if (std::fabs(e[found[j]]) < std::fabs(e[found[l]])) l = j;
      if (up && e[found[j]] < 0.0) {
        up = false;
      } else if (!up && e[found[j]] > 0.0) {
        up = true;
      } else {
        alternating = false;
        break;
      }
    }
    if (alternating && extra == 1)
      l = std::fabs(e[found[0]]) > std::fabs(e[found[k - 1]]) ? k - 1 : 0;
    for (std::int64_t j = l; j < k - 1; ++j) found[j] = found[j + 1];
    --k;
  }
  for (int i = 0; i <= r; ++i) data->ext[i] = found[i];
  return 1;
}

int CDigitFiltCoefMak06Remez01::_06isDone(int r, CRemezData* data) {
  if (!usable(data, r) || !checkIndexPositive(data->ext, r) || !extremalsInGrid(data, r))
    return 0;
  double lo = std::fabs(data->error[data->ext[0]]);
  double hi = lo;
  for (int i = 1; i <= r; ++i) {
    const double v = std::fabs(data->error[data->ext[i]]);
    lo = std::min(lo, v);
    hi = std::max(hi, v);
  }
  if (hi == 0.0) return 0;
  return (hi - lo) / hi < 0.0001 ? 1 : 0;
}

int CDigitFiltCoefMak06Remez01::_07SetParksMcClellanDW(std::int64_t type, std::int64_t numTaps,
                                                       std::int64_t gridSize, CRemezData* data) {
  if (!data || !data->grid || data->gridCap > data->gridLength()) return 0;
  const std::int64_t n = std::max<std::int64_t>(0, std::min<std::int64_t>(gridSize, data->gridCap));
  const double* grid = data->grid;
  double* desired = data->desired;
  double* weights = data->weights;
  if (type == 10) {
    for (std::int64_t i = 0; i < n; ++i)
      if (grid[i] == 0.0) return -1;
    for (std::int64_t i = 0; i < n; ++i)
      if (desired[i] > 0.0001) weights[i] /= grid[i];
  }
  const bool positive = data->positiveSym != 0;
  const bool even = numTaps % 2 == 0;
  if (positive && !even) return 1;
  const double scale = !positive && !even ? kTwoPi : kPi;
  for (std::int64_t i = 0; i < n; ++i) {
    const double c = positive ? std::cos(kPi * grid[i]) : std::sin(scale * grid[i]);
    desired[i] /= c;
    weights[i] *= c;
  }
  return 1;
}

int CDigitFiltCoefMak06Remez01::_08findTap(std::int64_t numTaps, int r, CRemezData* data) {
  if (!usable(data, r) || numTaps < 1 || numTaps / 2 >= data->extLength()) return 0;
  const bool positive = data->positiveSym != 0;
  const bool even = numTaps % 2 == 0;
  const double n = static_cast<double>(numTaps);
  for (std::int64_t i = 0; i <= numTaps / 2; ++i) {
    const double di = static_cast<double>(i);
    double c = 1.0;
    if (positive && even) c = std::cos(kPi * di / n);
    if (!positive) c = even ? std::sin(kPi * di / n) : std::sin(kTwoPi * di / n);
    double A;
    if (!interpolate(std::cos(kTwoPi * (di / n)), r, data->xCos, data->ad, data->yVal, A))
      return 0;
    data->sampledA[i] = A * c;
  }
  return 1;
}

int CDigitFiltCoefMak06Remez01::_10Freq2FiltRspAmp(double f, int r, CRemezData* data,
                                                   double& A) {
  if (r < 0 || !data || !data->xCos ||
      static_cast<std::int64_t>(r) + 1 > data->extLength()) {
    A = 1.0;
    return 0;
  }
  return interpolate(std::cos(kTwoPi * f), r, data->xCos, data->ad, data->yVal, A) ? 1 : 0;
}

int CDigitFiltCoefMak06Remez02::freqSample(const double* A, double* h, std::int64_t N,
                                           std::int64_t positiveSym) {
  if (!A || !h || N < 1 || N > kMaxTaps) return 0;
  const double M = (static_cast<double>(N) - 1.0) / 2.0;
  const double dn = static_cast<double>(N);
  // k x = pi k (2n - N + 1) / N: every angle is a multiple of pi / N, so one period of 2N
  // values serves all n and k.
  const std::int64_t period = 2 * N;
  std::vector<double> cosTab(static_cast<std::size_t>(period)), sinTab(cosTab.size());
  for (std::int64_t j = 0; j < period; ++j) {
    cosTab[j] = std::cos(kPi * static_cast<double>(j) / dn);
    sinTab[j] = std::sin(kPi * static_cast<double>(j) / dn);
  }
  const bool odd = N % 2 != 0;
  const std::int64_t kEnd = odd ? (N - 1) / 2 : N / 2 - 1;
  for (std::int64_t n = 0; n < N; ++n) {
    const std::int64_t m = 2 * n - N + 1;
    double val;
    if (positiveSym != 0)
      val = A[0];
    else
      val = odd ? 0.0 : A[N / 2] * std::sin(kPi * (static_cast<double>(n) - M));
    const std::vector<double>& tab = positiveSym != 0 ? cosTab : sinTab;
    for (std::int64_t k = 1; k <= kEnd; ++k) {
      std::int64_t j = (m * k) % period;
      if (j < 0) j += period;
      val += 2.0 * A[k] * tab[j];
    }
    h[n] = val / dn;
  }
  return 1;
}

int CDigitFiltCoefMak06Remez02::rmzSearch(std::int64_t numTaps, std::int64_t numBands,
                                          const double* bands, const double* des,
                                          const double* weight, CRemezData* data,
                                          std::int64_t gridDensity, std::int64_t type) {
  return runExchange(numTaps, numBands, bands, des, weight, data, gridDensity, type, false);
}

int CDigitFiltCoefMak06Remez02::rmzSearchX(std::int64_t numTaps, std::int64_t numBands,
                                           const double* bands, const double* des,
                                           const double* weight, CRemezData* data,
                                           std::int64_t gridDensity, std::int64_t type) {
  return runExchange(numTaps, numBands, bands, des, weight, data, gridDensity, type, true);
}

int CDigitFiltCoefMak06Remez03::remezPM03k(Filter_Remez* f) {
  if (!f || !recordBandsFit(f) || !f->coefs || !tapsFit(f)) return 0;
  CRemezData data;
  if (rmzSearch(f->numTaps, f->numBands, f->bands, f->des, f->weight, &data, f->gridDensity,
                f->remezType) < 1)
    return 0;
  // Deliberately over the doubled extremal arrays: extCap - 1 = 2 r + 1.
  return finishTaps(f, &data, data.extCap - 1);
}

int CDigitFiltCoefMak06Remez03::remez00(Filter_Remez* f) {
  if (!f || !recordBandsFit(f) || !f->coefs || !tapsFit(f)) return 0;
  CRemezData data;
  if (rmzSearchX(f->numTaps, f->numBands, f->bands, f->des, f->weight, &data, f->gridDensity,
                 f->remezType) < 0)
    return 0;
  return finishTaps(f, &data, static_cast<int>(f->numTaps / 2));
}

int CDigitFiltCoefMak06Remez04::searchBestOrder(Filter_Remez* f) {
  if (!f || !recordBandsFit(f)) return 0;
  // Only keeps the counters below overflow; no length that far out is ever run.
  constexpr std::int64_t kFar = INT64_MAX - 64;
  const std::int64_t start = std::clamp<std::int64_t>(f->numTaps, -kFar, kFar);
  std::int64_t up = start + 1, down = start - 1, chosen = 0;
  int best = kMaxIterations;
  CRemezData data;
  for (int step = 0; step < 59; ++step, ++up, --down) {
    if (up < 1001) {
      const int it = rmzSearch(up, f->numBands, f->bands, f->des, f->weight, &data,
                               f->gridDensity, 1);
      if (it >= 1 && it < best) best = it, chosen = up;
    }
    if (down > 4) {
      const int it = rmzSearch(down, f->numBands, f->bands, f->des, f->weight, &data,
                               f->gridDensity, 1);
      if (it >= 1 && it < best) best = it, chosen = down;
    }
  }
  if (best == kMaxIterations) return 0;
  f->numTaps = chosen;
  f->order = chosen - chosen % 2;
  return 1;
}

int CDigitFiltCoefMak06Remez04::findParameterLP(Filter_Remez* f) {
  if (!f || f->numBands > 3) return 0;
  double* b = f->bands;
  b[2] = b[1] + std::max(0.0001, std::min((0.5 - b[1]) * 0.5, b[2] - b[1]));
  if (!checkCorrectRemezInputs(f->numTaps, f->numBands, f->gridDensity, f->bands, f->des,
                               f->weight, 1))
    return 0;
  return searchBestOrder(f);
}

int CDigitFiltCoefMak06Remez04::findParameterHP(Filter_Remez* f) {
  if (!f || f->numBands > 3) return 0;
  double* b = f->bands;
  b[2] = std::max(b[2], 0.0002);
  b[1] = b[2] - std::min(b[2] * 0.5, std::max(0.0001, b[2]));
  if (!checkCorrectRemezInputs(f->numTaps, f->numBands, f->gridDensity, f->bands, f->des,
                               f->weight, 1))
    return 0;
  return searchBestOrder(f);
}
