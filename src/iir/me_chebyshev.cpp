#include "digitfilt/iir/me_chebyshev.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "digitfilt/foundation/design_base.h"
#include "digitfilt/iir/me_stage_sections.h"

namespace {

using digitfilt::kPi;
constexpr int kMaxSections = MeFilterChebyshevx::kMaxSections;

// Remainders as integer division gives them (toward zero).
int lowHighOrder(int order) {
  const int even = order - order % 2;
  return even < 2 ? 2 : std::min(even, kMaxSections);
}

// A working band order (already a multiple of 4) kept within 4..kMaxSections.
int clampBandOrder(int order) {
  return order < 4 ? 4 : std::min(order, kMaxSections);
}

// asinh(1 / eps), the spread of the Chebyshev poles.
double rippleSpread(double epsilon) {
  return std::log((std::sqrt(1.0 + epsilon * epsilon) + 1.0) / epsilon);
}

// N/2 second-order sections of a low-pass (or high-pass) with its ripple edge at cutoffHz.
void designLowHighSections(MeFilterChebyshevx& s, int n, double cutoffHz, double epsilon,
                           bool highpass) {
  const int order = 2 * n;
  const double a = std::tan(kPi * cutoffHz / s.sampleRate);
  const double a2 = a * a;
  const double u = rippleSpread(epsilon);
  const double su = std::sinh(u / order), cu = std::cosh(u / order);
  for (int i = 0; i < n; ++i) {
    const double phi = kPi * (2 * i + 1) / (2.0 * order);
    const double b = std::sin(phi) * su;
    const double c = (std::cos(phi) * cu) * (std::cos(phi) * cu) + b * b;
    if (highpass) {
      const double sd = a2 + 2.0 * a * b + c;
      s.A[i] = 1.0 / (4.0 * sd);
      s.d1[i] = 2.0 * (c - a2) / sd;
      s.d2[i] = -(a2 - 2.0 * a * b + c) / sd;
    } else {
      const double sd = a2 * c + 2.0 * a * b + 1.0;
      s.A[i] = a2 / (4.0 * sd);
      s.d1[i] = 2.0 * (1.0 - a2 * c) / sd;
      s.d2[i] = -(a2 * c - 2.0 * a * b + 1.0) / sd;
    }
  }
  s.gain = 2.0 / epsilon;
  s.numSections = n;
}

// order/4 fourth-order sections of a band-pass or band-stop between bandLowFreq and
// bandHighFreq.
void designBandSections(MeFilterChebyshevx& s, int order, double epsilon, bool bandpass) {
  const digitfilt::BandWarp warp = digitfilt::bandWarp(s.bandHighFreq, s.bandLowFreq, s.sampleRate);
  const double a = warp.centre, t = warp.width;
  const double t2 = t * t;
  const double u = rippleSpread(epsilon);
  const double su = std::sinh(2.0 * u / order), cu = std::cosh(2.0 * u / order);
  const int n = order / 4;
  for (int i = 0; i < n; ++i) {
    const double phi = kPi * (2 * i + 1) / order;
    const double b = std::sin(phi) * su;
    const double c0 = (std::cos(phi) * cu) * (std::cos(phi) * cu) + b * b;
    if (bandpass) {
      const double c = c0 * t2;
      const double sd = c + 2.0 * t * b + 1.0;
      s.A[i] = t2 / (4.0 * sd);
      s.d1[i] = 4.0 * a * (1.0 + t * b) / sd;
      s.d2[i] = 2.0 * (c - 2.0 * a * a - 1.0) / sd;
      s.d3[i] = 4.0 * a * (1.0 - t * b) / sd;
      s.d4[i] = -(c - 2.0 * t * b + 1.0) / sd;
    } else {
      const double c = c0;
      const double sd = 2.0 * t * b + t2 + c;
      s.A[i] = 1.0 / (4.0 * sd);
      s.d1[i] = 4.0 * a * (t * b + c) / sd;
      s.d2[i] = 2.0 * (t2 - 2.0 * a * a * c - c) / sd;
      s.d3[i] = 4.0 * a * (c - t * b) / sd;
      s.d4[i] = -(t2 - 2.0 * t * b + c) / sd;
    }
  }
  if (!bandpass) {
    s.stopR = 4.0 * a;
    s.stopS = 4.0 * a * a + 2.0;
  }
  s.gain = 2.0 / epsilon;
  // Band-stop stages record their section count too, so that they filter like the others.
  s.numSections = n;
}

// Section counts never exceed the arrays, whatever a host wrote into order or numSections.
int clampSections(int n) { return std::clamp(n, 0, kMaxSections); }

double lowHighStep(MeFilterChebyshevx& s, int n, double x) {
  return digitfilt::lowHighSectionsStep(s, n, x);
}

double bandStep(MeFilterChebyshevx& s, int n, double x, bool bandpass) {
  return digitfilt::bandSectionsStep(s, n, x, bandpass, s.stopS);
}

}  // namespace

CMeFilterChebyshev::CMeFilterChebyshev(const CMeFilterChebyshev& other) { *this = other; }

CMeFilterChebyshev& CMeFilterChebyshev::operator=(const CMeFilterChebyshev& other) {
  if (this == &other) return *this;
  stageList.clear();
  for (const auto& src : other.stageList) {
    if (!src) {
      stageList.add(nullptr);
      continue;
    }
    auto copy = newStage();
    if (!copy) return *this;
    *copy = *src;
    stageList.add(std::move(copy));
  }
  return *this;
}

std::unique_ptr<MeFilterChebyshevx> CMeFilterChebyshev::newStage() {
  return digitfilt::newStageOrNull<MeFilterChebyshevx>();
}

int CMeFilterChebyshev::initChebyshevStage(MeFilterChebyshevx* stage) {
  return digitfilt::resetStageToDefaults(stage);
}

int CMeFilterChebyshev::makeCoefLopsHips(int order, double sampleRate, int lowpassOn,
                                         double lowpassFreq, int highpassOn, double highpassFreq,
                                         double epsilon) {
  return digitfilt::appendLowHighStages(
      stageList, 2, order, sampleRate, lowpassOn, lowpassFreq, highpassOn, highpassFreq,
      lowHighOrder, [epsilon](MeFilterChebyshevx& s, int n, double cutoffHz, bool highpass) {
        designLowHighSections(s, n, cutoffHz, epsilon, highpass);
      });
}

int CMeFilterChebyshev::makeCoefBndpasBndstp(int order, double sampleRate, double highFreq,
                                             double lowFreq, int bandpass, double epsilon) {
  int working = 0;
  auto s = digitfilt::newBandStage<MeFilterChebyshevx>(order, sampleRate, highFreq, lowFreq,
                                                       bandpass != 0, 3, working);
  if (!s) return 0;
  designBandSections(*s, clampBandOrder(working), epsilon, bandpass != 0);
  stageList.add(std::move(s));
  return 1;
}

int CMeFilterChebyshev::filtData(double* data, std::int64_t n) {
  if (n <= 0) return 1;
  if (data == nullptr) return 0;
  for (const auto& entry : stageList) {
    MeFilterChebyshevx* s = entry.get();
    if (s == nullptr || !s->enabled) continue;
    switch (s->filterType) {
      case 1: {
        // Deliberate, kept for hosts: the high-pass runs `order` sections (not numSections),
        // with the low-pass numerator and no gain factor.
        const int sections = clampSections(s->order);
        for (std::int64_t k = 0; k < n; ++k) data[k] = lowHighStep(*s, sections, data[k]);
        break;
      }
      case 2: {
        const int sections = clampSections(s->numSections);
        for (std::int64_t k = 0; k < n; ++k) {
          data[k] = lowHighStep(*s, sections, data[k]) * s->gain;
        }
        break;
      }
      case 3:
      case 4: {
        const int sections = clampSections(s->numSections);
        const bool bandpass = s->filterType == 3;
        for (std::int64_t k = 0; k < n; ++k) {
          data[k] = bandStep(*s, sections, data[k], bandpass) * s->gain;
        }
        break;
      }
      default:
        break;  // unknown type: the stage is skipped
    }
  }
  return 1;
}
