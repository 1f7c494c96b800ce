#include "digitfilt/iir/me_butterworth.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "digitfilt/foundation/design_base.h"
#include "digitfilt/iir/me_stage_sections.h"

namespace {

using digitfilt::kPi;
constexpr int kMaxSections = MeFilterButterworthx::kMaxSections;

// Remainders as integer division gives them (toward zero), so -3 rounds to -2, not -4.
int roundToEven(int order) { return order - order % 2; }
int clampOrder(int order) { return order < 2 ? 2 : std::min(order, 20); }

// n second-order sections of a low- or high-pass with prototype poles at sin(pi (2i+1) / 4n).
void designLowHighSections(MeFilterButterworthx& s, int n, double cutoffHz, bool highpass) {
  const double a = std::tan(kPi * cutoffHz / s.sampleRate);
  const double a2 = a * a;
  for (int i = 0; i < n; ++i) {
    const double r = std::sin(kPi * (2 * i + 1) / (4.0 * n));
    const double sd = a2 + 2.0 * a * r + 1.0;
    s.d1[i] = 2.0 * (1.0 - a2) / sd;
    s.d2[i] = -(a2 - 2.0 * a * r + 1.0) / sd;
    s.A[i] = (highpass ? 1.0 : a2) / sd;
  }
  s.numSections = n;
}

// n fourth-order sections of a band design, the prototype pole angles taken for m pairs.
void designBandSections(MeFilterButterworthx& s, int n, int m, bool bandpass) {
  const digitfilt::BandWarp warp = digitfilt::bandWarp(s.bandHighFreq, s.bandLowFreq, s.sampleRate);
  const double a = warp.centre, b = warp.width;
  const double b2 = b * b;
  for (int i = 0; i < n; ++i) {
    const double r = std::sin(kPi * (2 * i + 1) / (4.0 * m));
    const double sd = b2 + 2.0 * b * r + 1.0;
    s.d1[i] = 4.0 * a * (1.0 + b * r) / sd;
    s.d2[i] = 2.0 * (b2 - 2.0 * a * a - 1.0) / sd;
    s.d3[i] = 4.0 * a * (1.0 - b * r) / sd;
    s.d4[i] = -(b2 - 2.0 * b * r + 1.0) / sd;
    s.A[i] = (bandpass ? b2 : 1.0) / sd;
  }
  if (!bandpass) {
    s.stopR = 4.0 * a;
    s.stopS = 4.0 * a * a + 2.0;
  }
  s.numSections = n;
}

bool knownType(const MeFilterButterworthx& s) { return s.filterType >= 0 && s.filterType <= 3; }

// A host may have written anything into numSections; only the stored sections exist.
int sectionCount(const MeFilterButterworthx& s) {
  return std::clamp(s.numSections, 0, kMaxSections);
}

// One sample through every section of a stage of known type. Low- and high-pass share the
// numerator 1 + 2z^-1 + z^-2: the high-pass keeps the low-pass numerator, deliberately, as hosts
// expect. `stopW2` is the band-stop coefficient of w2 (stopS, or the sample index in
// filtDataAcq).
double stageStep(MeFilterButterworthx& s, double x, double stopW2) {
  const int n = sectionCount(s);
  if (s.filterType <= 1) return digitfilt::lowHighSectionsStep(s, n, x);
  return digitfilt::bandSectionsStep(s, n, x, s.filterType == 2, stopW2);
}

// Every enabled stage over data[0..n), stage after stage; with `zeroPhase` each stage runs back
// again from the forward pass's end states: no reset, no padding, so the edge transients stay at
// both ends, as hosts expect. 0 for a null array or a stage of unknown type.
int filterEnabledStages(const digitfilt::PtrList<MeFilterButterworthx>& list, double* data,
                        std::int64_t n, bool zeroPhase) {
  if (n <= 0) return 1;
  if (data == nullptr) return 0;
  for (const auto& entry : list) {
    MeFilterButterworthx* s = entry.get();
    if (s == nullptr || !s->enabled) continue;
    if (!knownType(*s)) return 0;
    for (std::int64_t k = 0; k < n; ++k) data[k] = stageStep(*s, data[k], s->stopS);
    if (!zeroPhase) continue;
    for (std::int64_t k = n - 1; k >= 0; --k) data[k] = stageStep(*s, data[k], s->stopS);
  }
  return 1;
}

}  // namespace

CMeFilterButterworth::CMeFilterButterworth(const CMeFilterButterworth& other) { *this = other; }

CMeFilterButterworth& CMeFilterButterworth::operator=(const CMeFilterButterworth& other) {
  if (this == &other) return *this;
  basicStatus = other.basicStatus;
  sampleRate = other.sampleRate;
  minFreq = other.minFreq;
  maxFreq = other.maxFreq;
  minHighEdge = other.minHighEdge;
  maxHighEdge = other.maxHighEdge;
  auxCount = other.auxCount;
  for (const auto& src : other.filterList) {
    if (!src) continue;
    auto copy = newStage();
    if (!copy) return *this;
    *copy = *src;
    filterList.add(std::move(copy));
  }
  lastIndex = other.lastIndex;
  firstCall = other.firstCall;
  blockData = other.blockData;
  blockLength = other.blockLength;
  blockStart = other.blockStart;
  blockEnd = other.blockEnd;
  blockChannel = other.blockChannel;
  return *this;
}

CMeFilterButterworth::~CMeFilterButterworth() { cleanCoefs(); }

std::unique_ptr<MeFilterButterworthx> CMeFilterButterworth::newStage() {
  return digitfilt::newStageOrNull<MeFilterButterworthx>();
}

int CMeFilterButterworth::initButterworthStage(MeFilterButterworthx* stage) {
  return digitfilt::resetStageToDefaults(stage);
}

int CMeFilterButterworth::makeCoefLopsHips(int order, double sampleRate, int lowpassOn,
                                           double lowpassFreq, int highpassOn,
                                           double highpassFreq) {
  return digitfilt::appendLowHighStages(
      filterList, 0, order, sampleRate, lowpassOn, lowpassFreq, highpassOn, highpassFreq,
      [](int o) { return clampOrder(roundToEven(o)); }, designLowHighSections);
}

int CMeFilterButterworth::makeCoefBndpasBndstp(int order, double sampleRate, double highFreq,
                                               double lowFreq, int bandpass) {
  int working = 0;
  auto s = digitfilt::newBandStage<MeFilterButterworthx>(order, sampleRate, highFreq, lowFreq,
                                                         bandpass != 0, 2, working);
  if (!s) return 0;
  // An order reduced to 0 is raised to 2, which still gives no four-pole section: such a stage
  // passes data unchanged.
  const int n = clampOrder(working) / 4;
  designBandSections(*s, n, n, bandpass != 0);
  filterList.add(std::move(s));
  return 1;
}

int CMeFilterButterworth::makeCoefs(MeFilterButterworthx* stage) {
  if (stage == nullptr) return 0;
  MeFilterButterworthx& s = *stage;
  switch (s.filterType) {
    case 0:
    case 1: {
      s.order = clampOrder(roundToEven(s.order));
      const int n = s.order / 2;
      designLowHighSections(s, n, s.filterType == 0 ? s.lowpassFreq : s.highpassFreq,
                            s.filterType == 1);
      return 1;
    }
    case 2:
    case 3: {
      // Both band types report with the band-pass wording here.
      s.order = clampOrder(roundToEven(digitfilt::reduceBandOrder(s.order, true)));
      // Deliberate: a band-pass remade here gets one section per unit of order, with 4 * order
      // in the pole angles, unlike every other band design of this class; hosts expect it.
      const int n = s.filterType == 2 ? s.order : s.order / 4;
      designBandSections(s, n, n, s.filterType == 2);
      return 1;
    }
    default:
      initButterworthStage(stage);
      return 0;
  }
}

int CMeFilterButterworth::makeAllButterworthCoeffs(int onlyEnabled) {
  int made = 0;
  for (const auto& entry : filterList) {
    MeFilterButterworthx* s = entry.get();
    if (s == nullptr || (onlyEnabled && !s->enabled)) continue;
    made += makeCoefs(s);
  }
  lastIndex = made - 1;
  return made;
}

int CMeFilterButterworth::checkCorrectFilterSettings4SmpRate(MeFilterButterworthx* stage) {
  if (stage == nullptr) return 0;
  MeFilterButterworthx& s = *stage;
  const double fs = s.sampleRate;
  const double lo = 0.0001 * fs, hi = 0.5 * fs, eps = 0.1 * lo, loBand = 0.0005 * fs;
  // Values a little outside the range (within eps) are accepted as they are.
  auto clampTo = [&](double& v, double floor) {
    if (v < lo - eps) v = floor;
    if (v > hi + eps) v = hi;
  };
  switch (s.filterType) {
    case 0:
      clampTo(s.lowpassFreq, lo);
      return 1;
    case 1:
      clampTo(s.highpassFreq, lo);
      return 1;
    case 2:
    case 3: {
      // Deliberate pairing kept for hosts: the upper band edge is checked together with the
      // band-stop pair, and the width is judged on stopLowFreq/stopHighFreq.
      const double floor = s.filterType == 2 ? loBand : lo;
      clampTo(s.bandHighFreq, floor);
      clampTo(s.stopHighFreq, floor);
      if (s.stopHighFreq - s.stopLowFreq < loBand - eps) {
        s.enabled = 0;
        return 0;
      }
      return 1;
    }
    default:
      return 0;
  }
}

int CMeFilterButterworth::checkCorrectAllFilterSettings4SmplRate() {
  int passed = 0;
  for (const auto& entry : filterList) {
    if (entry && entry->enabled) passed += checkCorrectFilterSettings4SmpRate(entry.get());
  }
  return passed;
}

int CMeFilterButterworth::filtData(double* data, std::int64_t n) {
  return filterEnabledStages(filterList, data, n, false);
}

int CMeFilterButterworth::filtDataZeroShift(double* data, std::int64_t n) {
  return filterEnabledStages(filterList, data, n, true);
}

int CMeFilterButterworth::filtDataAcq(double* data, std::int64_t length, std::int64_t start,
                                      std::int64_t end, int channel) {
  if (data == nullptr) return 0;
  if (firstCall != 0 || start == 0) {
    blockChannel = channel;
    blockData = data;
    blockLength = length;
    blockStart = start;
    blockEnd = end;
    firstCall = 0;
  }
  // Only indices inside the caller's array are filtered.
  const std::int64_t first = std::max<std::int64_t>(start, 0);
  const std::int64_t last = length > 0 ? std::min(end, length - 1) : -1;
  for (const auto& entry : filterList) {
    MeFilterButterworthx* s = entry.get();
    if (s == nullptr || !s->enabled) continue;
    if (!knownType(*s)) return 0;
    for (std::int64_t k = first; k <= last; ++k) {
      if (s->filterType == 1) {
        // A gap (NaN) in the signal restarts the high-pass instead of poisoning it for good.
        // Testing the double is the same as testing its single-precision conversion.
        const double x = std::isnan(data[k]) ? 0.0 : data[k];
        double y = stageStep(*s, x, s->stopS);
        if (std::isnan(y)) {
          for (int i = 0; i < sectionCount(*s); ++i) s->w0[i] = s->w1[i] = s->w2[i] = 0.0;
          y = 0.0;
        }
        data[k] = y;
      } else if (s->filterType == 3) {
        // Deliberate: during acquisition the band-stop's w2 coefficient is the sample index,
        // not stopS; hosts depend on this output.
        data[k] = stageStep(*s, data[k], static_cast<double>(k));
      } else {
        data[k] = stageStep(*s, data[k], s->stopS);
      }
    }
  }
  blockStart = start;
  blockEnd = end;
  return 1;
}

int CMeFilterButterworth::reset() {
  firstCall = 0;  // deliberately 0, not the constructor's 1
  blockData = nullptr;
  blockLength = 0;
  blockStart = 0;
  blockEnd = 0;
  blockChannel = 0;
  return 1;
}

int CMeFilterButterworth::cleanCoefs() {
  filterList.clear();
  lastIndex = -1;
  return 1;
}

double CMeFilterButterworth::correctFilterRange(double& f) {
  return digitfilt::clampLowFirst(f, minFreq, maxFreq);
}

double CMeFilterButterworth::correctFilterWidth(double& w) {
  return digitfilt::clampLowFirst(w, minHighEdge, maxHighEdge);
}
