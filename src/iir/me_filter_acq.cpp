#include "digitfilt/iir/me_filter_acq.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "digitfilt/foundation/design_base.h"
#include "digitfilt/foundation/messages.h"

namespace {

constexpr int kRing = CMeFilterAcq::kRing;
constexpr int kDenominator = 20;  // a[k] lives at coefs[20 + k]
constexpr int kMaxCoefs = 40;     // the last a[k] the 60-slot store holds is a[39]
constexpr std::int64_t kFlatRing = std::int64_t{kRing} * kRing;
// Most grid points the resampling remover puts between two samples (rates below mains / 1024).
constexpr double kMaxGridPointsPerSample = 1024.0;

std::int64_t wrap(std::int64_t i, std::int64_t n) {
  i %= n;
  return i < 0 ? i + n : i;
}

}  // namespace

CMeFilterAcq::CMeFilterAcq(double freq, int n, double* values) {
  passFreq = freq;
  extraCount = n > 0 ? n : 0;
  if (extraCount > 0) {
    extraOwner_.reset(new double[static_cast<std::size_t>(extraCount)]());
    extra = extraOwner_.get();
    if (values != nullptr) std::copy(values, values + extraCount, extra);
  }
}

CMeFilterAcq::CMeFilterAcq(const filter_iirspec& s) { spec = s; }

CMeFilterAcq::CMeFilterAcq(const CMeFilterAcq& other)
    : CMeFilterAcq(other.passFreq, other.extra != nullptr ? other.extraCount : 0, other.extra) {}

void CMeFilterAcq::setFilterParameters(const filter_iirspec& s) {
  spec = s;
  if (spec.enabled != 0 && spec.filterType >= 0 && spec.filterType <= 3) spec.order = 2;
}

void CMeFilterAcq::filter(double* data, std::int64_t n) {
  if (spec.enabled == 0 || n <= 0 || data == nullptr) return;
  const double* b = spec.coefs;
  const double* a = spec.coefs + kDenominator;
  // More than 20 coefficients wrap into the same ring; the store ends at a[39].
  const int count = std::min(spec.numCoefs, kMaxCoefs);
  double* xr = xRing[0];
  double* yr = yRing[0];
  std::int64_t i = wrap(ringIndex, kRing);
  for (std::int64_t s = 0; s < n; ++s) {
    xr[i] = data[s];
    yr[i] = 0.0;
    for (int k = 0; k < count; ++k) {
      const std::int64_t j = wrap(i - k, kRing);
      yr[i] += b[k] * xr[j] - a[k] * yr[j];
    }
    data[s] = yr[i];
    i = (i + 1) % kRing;
  }
  ringIndex = i;
}

int CMeFilterAcq::PassFilter(double freq, int flag, int arg) {
  passFreq = freq;
  passOn = 1;
  passArg = arg;
  passMode = flag != 0 ? 1 : 0;
  return 0;
}

void CMeFilterAcqHPFilter::setFilterParameters(const filter_iirspec& s) {
  CMeFilterAcq::setFilterParameters(s);
  spec.coefs[0] = digitfilt::kTwoPi * spec.freqLow / spec.sampleRate;
  yRing[0][0] = 0.0;
}

void CMeFilterAcqHPFilter::filter(double* data, std::int64_t n) {
  if (n <= 0 || data == nullptr) return;
  const double alpha = spec.coefs[0];
  double s = yRing[0][0];
  for (std::int64_t k = 0; k < n; ++k) {
    s = alpha * data[k] + (1.0 - alpha) * s;
    data[k] -= s;
  }
  yRing[0][0] = s;
}

double CMeFilterAcqHPFilter::getSettlingTime() const {
  return passFreq == 0.0 ? 0.0 : 0.275 / passFreq;
}

void CMeFilterAcqLPFilter::setFilterParameters(const filter_iirspec& s) {
  CMeFilterAcq::setFilterParameters(s);
  spec.coefs[0] = digitfilt::kTwoPi * spec.freqHigh / spec.sampleRate;
  yRing[0][0] = 0.0;
}

void CMeFilterAcqLPFilter::filter(double* data, std::int64_t n) {
  if (n <= 0 || data == nullptr) return;
  const double alpha = spec.coefs[0];
  double s = yRing[0][0];
  for (std::int64_t k = 0; k < n; ++k) {
    s = alpha * data[k] + (1.0 - alpha) * s;
    data[k] = s;
  }
  yRing[0][0] = s;
}

double CMeFilterAcqLPFilter::getSettlingTime() const {
  return passFreq == 0.0 ? 0.0 : 1.0 / (digitfilt::kTwoPi * passFreq);
}

CMeFilterAcqNotchFilter::CMeFilterAcqNotchFilter(double f1, double f2) {
  passFreq = f1;
  passFreq2 = f2;
  passMode = 3;
  passOn = 1;
}

double CMeFilterAcqNotchFilter::getSettlingTime() const {
  if (passFreq == 0.0 || passFreq2 == 0.0) return 0.0;
  return 1.0 / (2.0 * passFreq) + 1.0 / (passFreq2 * 3.14);
}

double CMeFilterAcqPowerLine::mainsFrequency() const {
  return (spec.freqHigh + spec.freqLow) / 2.0 < 55.0 ? 50.0 : 60.0;
}

bool CMeFilterAcqPowerLine::setPeriod(double samplesPerPeriod) {
  period = digitfilt::truncToInt64(std::rint(samplesPerPeriod));
  if (period >= 1 && period <= kMaxPeriod) return true;
  digitfilt::showMessageF(
      L"Power-line filter: %lld samples per mains period are out of range (1..%lld)!",
      static_cast<long long>(period), static_cast<long long>(kMaxPeriod));
  period = 0;
  return false;
}

double* CMeFilterAcqPowerLine::phaseValues() {
  if (period <= kFlatRing) return &yRing[0][0];
  if (static_cast<std::int64_t>(phaseOverflow_.size()) < period)
    phaseOverflow_.resize(static_cast<std::size_t>(period), 0.0);
  return phaseOverflow_.data();
}

void CMeFilterAcqPowerLine::clearPhases() {
  if (period <= kFlatRing) {
    std::fill(&yRing[0][0], &yRing[0][0] + std::max<std::int64_t>(period, 0), 0.0);
  } else {
    phaseOverflow_.assign(static_cast<std::size_t>(period), 0.0);
  }
}

void CMeFilterAcqPowerLine::setFilterParameters(const filter_iirspec& s) {
  CMeFilterAcq::setFilterParameters(s);
  const double mains = mainsFrequency();
  setPeriod(spec.sampleRate / mains);
  // The mean runs over one mains period, as in the resampling remover.
  meanLength = static_cast<double>(period);
  spec.coefs[0] = (spec.freqHigh - spec.freqLow) * 0.5 / 10.0;
  spec.coefs[kDenominator] = 0.0;
  ringIndex = 0;
  clearPhases();
}

void CMeFilterAcqPowerLine::runComb(double* v, std::int64_t count, double p) {
  double* c = phaseValues();
  const double alpha = spec.coefs[0];
  double m = spec.coefs[kDenominator];
  std::int64_t i = wrap(ringIndex, period);
  for (std::int64_t k = 0; k < count; ++k) {
    const double x = v[k];
    m = m + x / p - m / p;
    c[i] = alpha * x + (1.0 - alpha) * c[i];
    v[k] = x - (c[i] - m);
    if (++i == period) i = 0;
  }
  spec.coefs[kDenominator] = m;
  ringIndex = i;
}

void CMeFilterAcqPowerLine::filter(double* data, std::int64_t n) {
  if (n <= 0 || data == nullptr || period < 1) return;
  runComb(data, n, meanLength);
}

void CMeFilterAcqPowerLine02IntPol::setFilterParametersIntPol(const filter_iirspec& s) {
  CMeFilterAcq::setFilterParameters(s);
  const double mains = mainsFrequency();
  spec.coefs[0] = 0.8;
  ringIndex = 0;
  invRate = 1.0 / spec.sampleRate;
  const double gridRate = std::ceil(spec.sampleRate / mains) * mains;
  invGridRate = 1.0 / gridRate;
  if (setPeriod(gridRate / mains) && !(spec.sampleRate * kMaxGridPointsPerSample >= gridRate)) {
    // Below mains / kMaxGridPointsPerSample every sample would spread over that many grid
    // points (and over none the stepping can tell apart, for the smallest rates).
    digitfilt::showMessageF(
        L"Power-line filter: a sample rate of %g Hz is too low for a %g Hz mains grid!",
        spec.sampleRate, mains);
    period = 0;
  }
  spec.coefs[kDenominator] = 0.0;
  std::memset(xRing, 0, sizeof xRing);
  std::memset(yRing, 0, sizeof yRing);
  clearPhases();
  gridPhase = lastSample = lastGridValue = gridStep = 0.0;
}

void CMeFilterAcqPowerLine02IntPol::reserveWork(std::int64_t need) {
  if (need <= workCapacity && work != nullptr) return;
  std::shared_ptr<double[]> grown(new double[static_cast<std::size_t>(need)]());
  if (work != nullptr) std::copy(work, work + workCapacity, grown.get());
  workOwner_ = std::move(grown);
  work = workOwner_.get();
  workCapacity = need;
}

void CMeFilterAcqPowerLine02IntPol::filterIntPol(double* data, std::int64_t n) {
  if (n <= 0 || data == nullptr || period < 1) return;
  const bool fresh = gridPhase == 0.0;
  if (fresh) gridStep = spec.sampleRate * invGridRate;
  // Not set up, or carried values no block leaves behind (the next grid point lies within one
  // step after the last sample): the stepping below would not end.
  if (!(gridStep * kMaxGridPointsPerSample >= 1.0 && gridStep <= 1.0)) return;
  if (!(gridPhase >= 0.0 && gridPhase <= 1.0)) return;
  if (fresh) {
    // The first grid point sits on the first sample.
    gridPhase = 1.0;
    lastSample = data[0];
  }
  const double h = gridStep;
  reserveWork(digitfilt::truncToInt64(std::ceil(static_cast<double>(n) / h)) + 2);

  // Grid points in (t[k-1], t[k]], interpolated between the two samples. Positions are in
  // samples after t[k-1] and carried by the same recurrence in both passes below.
  std::int64_t g = 0;
  double q = gridPhase;
  double prev = lastSample;
  for (std::int64_t k = 0; k < n; ++k) {
    const double x = data[k];
    double p = q;
    for (; p <= 1.0; p += h) {
      if (g == workCapacity) reserveWork(2 * workCapacity + 2);
      work[g++] = (1.0 - p) * prev + p * x;
    }
    q = p - 1.0;
    prev = x;
  }

  runComb(work, g, static_cast<double>(period));

  // Back onto the sample times, one sample late: the value at t[k-1] lies between the last grid
  // point at or before it and the first one after it, which is the first grid point of sample k.
  std::int64_t idx = 0;
  double left = lastGridValue;
  q = gridPhase;
  for (std::int64_t k = 0; k < n; ++k) {
    const double right = idx < g ? work[idx] : left;
    if (fresh && k == 0) {
      data[k] = right;
    } else {
      const double w = (h - q) / h;
      data[k] = (1.0 - w) * left + w * right;
    }
    double p = q;
    for (; p <= 1.0; p += h) ++idx;
    q = p - 1.0;
    if (idx > 0) left = work[idx - 1];
  }
  gridPhase = q;
  lastSample = prev;
  lastGridValue = left;
}
