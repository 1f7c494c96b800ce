#include "digitfilt/butterworth/butterworth_designer.h"

#include <cmath>
#include <cstdint>

namespace digitfilt {

std::vector<Complex> butterworthPoles(int order) {
  std::vector<Complex> poles;
  if (order < 1) return poles;
  poles.reserve(static_cast<std::size_t>(order));
  const double step = kPi / order;
  double theta = (order % 2 == 0) ? step / 2.0 : step;
  for (int i = 0; i < order / 2; ++i) {
    poles.emplace_back(-std::cos(theta), std::sin(theta));
    poles.emplace_back(-std::cos(theta), -std::sin(theta));
    theta += step;
  }
  if (order % 2 == 1) poles.emplace_back(-1.0, 0.0);
  return poles;
}

AnalogueStage transformPrototype(const std::vector<Complex>& prototype, int filterType,
                                 double wLow, double wHigh) {
  AnalogueStage out;
  const int n = static_cast<int>(prototype.size());
  switch (filterType) {
    case 0:
      for (const Complex& p : prototype) out.poles.push_back(wHigh * p);
      out.gain = std::pow(wHigh, n);
      break;
    case 1:
      for (const Complex& p : prototype) out.poles.push_back(wLow / p);
      out.zeros.assign(static_cast<std::size_t>(n), Complex(0.0, 0.0));
      out.gain = 1.0;
      break;
    case 2: {
      const double bw = wHigh - wLow;
      const double w0sq = wHigh * wLow;
      for (const Complex& p : prototype) {
        const Complex q = std::sqrt((bw * p) * (bw * p) - 4.0 * w0sq);
        out.poles.push_back((bw * p + q) / 2.0);
        out.poles.push_back((bw * p - q) / 2.0);
      }
      out.zeros.assign(static_cast<std::size_t>(n), Complex(0.0, 0.0));
      out.gain = std::pow(bw, n);
      break;
    }
    case 3: {
      const double bw = wHigh - wLow;
      const double w0 = std::sqrt(wHigh * wLow);
      for (const Complex& p : prototype) {
        const Complex q = std::sqrt(bw * bw - 4.0 * w0 * w0 * p * p);
        out.poles.push_back((bw + q) / (2.0 * p));
        out.poles.push_back((bw - q) / (2.0 * p));
      }
      for (int i = 0; i < n; ++i) {
        out.zeros.emplace_back(0.0, w0);
        out.zeros.emplace_back(0.0, -w0);
      }
      out.gain = 1.0;
      break;
    }
    default:
      break;
  }
  return out;
}

AnalogueStage bilinearMap(const AnalogueStage& analogue) {
  AnalogueStage out;
  Complex num = analogue.gain, den = 1.0;
  for (const Complex& z : analogue.zeros) {
    num *= 1.0 - z;
    out.zeros.push_back((1.0 + z) / (1.0 - z));
  }
  for (const Complex& p : analogue.poles) {
    den *= 1.0 - p;
    out.poles.push_back((1.0 + p) / (1.0 - p));
  }
  while (out.zeros.size() < out.poles.size()) out.zeros.emplace_back(-1.0, 0.0);
  out.gain = num / den;
  return out;
}

std::vector<Complex> expandRoots(const std::vector<Complex>& roots) {
  std::vector<Complex> c(roots.size() + 1, Complex(0.0, 0.0));
  c[0] = 1.0;
  for (std::size_t i = 0; i < roots.size(); ++i)
    for (std::size_t j = i + 1; j >= 1; --j) c[j] -= roots[i] * c[j - 1];
  return c;
}

void designButterworthStage(filter_iirspec& s) {
  const int n = s.order;
  const bool band = s.filterType == 2 || s.filterType == 3;
  s.numCoefs = band ? 2 * n + 1 : n + 1;
  // Pre-warp so the digital -3 dB points land on the requested edges.
  const double wHigh = std::tan(kPi * s.freqHigh / s.sampleRate);
  const double wLow = std::tan(kPi * s.freqLow / s.sampleRate);
  const AnalogueStage digital =
      bilinearMap(transformPrototype(butterworthPoles(n), s.filterType, wLow, wHigh));
  const std::vector<Complex> b = expandRoots(digital.zeros);
  const std::vector<Complex> a = expandRoots(digital.poles);
  const double gain = std::abs(digital.gain);
  constexpr int kStore = static_cast<int>(sizeof(s.coefs) / sizeof(s.coefs[0]));
  for (int k = 0; k < s.numCoefs; ++k) {
    const std::size_t uk = static_cast<std::size_t>(k);
    s.coefs[k] = gain * (uk < b.size() ? b[uk].real() : 0.0);
    if (20 + k < kStore) s.coefs[20 + k] = uk < a.size() ? a[uk].real() : 0.0;
  }
}

}  // namespace digitfilt

namespace {

bool outside(double e, double lo, double hi, double tol) { return e < lo - tol || e > hi + tol; }

// Corrects one edge into [lo, hi] when it lies outside the tolerance band; `below` replaces a
// value under the range.
void correctEdge(double& e, double lo, double hi, double tol, double below) {
  if (e < lo - tol) e = below;
  if (e > hi + tol) e = hi;
}

}  // namespace

int CDigitFiltCoefMak01Butterworth::initCtfButterworthFilter4SmplRate(double r) {
  initFiltRange4SmplRate(r);
  auto set = [&](int slot, int on, int type, double high, double low, int order) {
    filter_iirspec& s = iirSpecs[slot];
    s.enabled = on;
    s.filterType = type;
    s.freqHigh = high;
    s.freqLow = low;
    s.sampleRate = r;
    s.order = order;
  };
  set(0, 1, 0, 0.5 * r, 0.0001 * r, 4);
  set(1, 1, 1, 0.5 * r, 0.0001 * r, 4);
  set(2, 0, 2, 0.5 * r, 0.0001 * r, 4);
  set(3, 0, 3, 63.0, 57.0, 4);
  for (int k = 1; k <= 60; ++k) set(3 + k, 0, 3, k * 60.0 + 3.0, k * 60.0 - 3.0, 2);
  return 1;
}

int CDigitFiltCoefMak01Butterworth::checkCorrectFilterSettings4SmplRate(filter_iirspec* s) {
  if (s == nullptr) return 0;
  const double r = s->sampleRate;
  const double lo = 0.0001 * r, hi = 0.5 * r, wmin = 0.0005 * r, tol = lo * 0.1;
  switch (s->filterType) {
    case 0:
      correctEdge(s->freqHigh, lo, hi, tol, lo);
      return 1;
    case 1:
      correctEdge(s->freqLow, lo, hi, tol, lo);
      return 1;
    case 2:
    case 3: {
      const double below = s->filterType == 2 ? wmin : lo;
      correctEdge(s->freqHigh, lo, hi, tol, below);
      correctEdge(s->freqLow, lo, hi, tol, below);
      if (s->freqHigh - s->freqLow < wmin - tol) {
        s->enabled = 0;
        return 0;
      }
      return 1;
    }
    default:
      return 0;
  }
}

int CDigitFiltCoefMak01Butterworth::checkCorrectAllFilterSettings4SmplRate() {
  int passed = 0;
  for (filter_iirspec& s : iirSpecs)
    if (s.enabled != 0 && checkCorrectFilterSettings4SmplRate(&s) != 0) ++passed;
  return passed;
}

int CDigitFiltCoefMak01Butterworth::ctfButterworthIirFilterCoef(filter_iirspec* s) {
  if (s == nullptr || s->order < 1 || s->order > 20) return 0;
  const double r = s->sampleRate;
  const double lo = 0.0001 * r, hi = 0.5 * r, wmin = 0.0005 * r, tol = 0.00001 * r;
  bool ok = true;
  switch (s->filterType) {
    case 0:
      ok = !outside(s->freqHigh, lo, hi, tol);
      break;
    case 1:
      ok = !outside(s->freqLow, lo, hi, tol);
      break;
    case 2:
    case 3:
      ok = !outside(s->freqHigh, lo, hi, tol) && !outside(s->freqLow, lo, hi, tol) &&
           s->freqHigh - s->freqLow >= wmin - tol;
      break;
    default:
      return 0;
  }
  if (!ok) {
    s->enabled = 0;
    return 0;
  }
  digitfilt::designButterworthStage(*s);
  return 1;
}

int CDigitFiltCoefMak01Butterworth::makeAllButterworthCoeffs(bool onlyEnabled) {
  int made = 0;
  for (filter_iirspec& s : iirSpecs)
    if ((!onlyEnabled || s.enabled != 0) && ctfButterworthIirFilterCoef(&s) != 0) ++made;
  return made;
}

int CDigitFiltCoefMak01Butterworth::mkiir(filter_iirspec* s) {
  if (s == nullptr) return 0;
  const double r = s->sampleRate;
  auto bad = [&](double e) { return e < 0.001 * r || e >= 0.5 * r; };
  bool refuse = false;
  switch (s->filterType) {
    case 0:
      refuse = bad(s->freqHigh);
      break;
    case 1:
      refuse = bad(s->freqLow);
      break;
    case 2:
    case 3:
      refuse = bad(s->freqHigh) || bad(s->freqLow) || (s->freqHigh - s->freqLow) / r < 0.005;
      break;
    default:
      break;
  }
  // Orders 1..20: order - 1 as unsigned must not exceed 19.
  if (!refuse) refuse = static_cast<std::uint32_t>(s->order) - 1u > 19u;
  if (refuse) {
    s->enabled = 0;
    return 0;
  }
  if (s->filterType < 0 || s->filterType > 3) return 0;
  digitfilt::designButterworthStage(*s);
  return 1;
}
