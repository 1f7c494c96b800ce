#include "digitfilt/realtime/rtf_biquad.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <limits>
#include <new>

#include "digitfilt/foundation/design_base.h"
#include "digitfilt/realtime/rtf_biquad_kernel.h"
#include "digitfilt/realtime/rtf_biquad_stages.h"

namespace {

using digitfilt::clampLowFirst;

// Rounds to single precision without the undefined conversion of values beyond float's range:
// those round to the largest float or to infinity as the hardware would.
double roundToFloat(double v) {
  if (!(std::fabs(v) > FLT_MAX)) return static_cast<float>(v);  // NaN converts to NaN
  const double halfUlpPastMax = 0x1.ffffffp127;
  return std::fabs(v) >= halfUlpPastMax ? std::copysign(HUGE_VAL, v)
                                        : std::copysign(static_cast<double>(FLT_MAX), v);
}

// Loads a ring-history section: prev = (r + 2) mod 3 holds the last sample, prev2 = (r + 1) mod 3
// the one before, slot r the oldest (overwritten first).
digitfilt::Df1Section loadRing(const BIQUAD_PARAM1& bq) {
  const unsigned r = bq.ringIndex;
  digitfilt::Df1Section s;
  s.b0 = bq.b0;
  s.b1 = bq.b1;
  s.b2 = bq.b2;
  s.a1 = bq.a1;
  s.a2 = bq.a2;
  s.x1 = bq.xHist[(r + 2) % 3];
  s.x2 = bq.xHist[(r + 1) % 3];
  s.x3 = bq.xHist[r];
  s.y1 = bq.yHist[(r + 2) % 3];
  s.y2 = bq.yHist[(r + 1) % 3];
  s.y3 = bq.yHist[r];
  return s;
}

// Stores the history back where `steps` ring steps would have left it.
void storeRing(BIQUAD_PARAM1& bq, const digitfilt::Df1Section& s, std::int64_t steps) {
  const auto r = static_cast<unsigned>((bq.ringIndex + steps % 3) % 3);
  bq.ringIndex = r;
  bq.xHist[(r + 2) % 3] = s.x1;
  bq.xHist[(r + 1) % 3] = s.x2;
  bq.xHist[r] = s.x3;
  bq.yHist[(r + 2) % 3] = s.y1;
  bq.yHist[(r + 1) % 3] = s.y2;
  bq.yHist[r] = s.y3;
}

}  // namespace

std::unique_ptr<digitfilt::BiquadStageRecord> BIQUAD_PARAM1::clone() const {
  return std::make_unique<BIQUAD_PARAM1>(*this);
}

// ---------------------------------------------------------------------------------------------
// CRtf0Basic

CRtf0Basic::CRtf0Basic(const CRtf0Basic& other) { copyBasicFrom(other); }

CRtf0Basic& CRtf0Basic::operator=(const CRtf0Basic& other) {
  if (this == &other) return *this;
  cleanCoefs();
  copyBasicFrom(other);
  return *this;
}

void CRtf0Basic::copyBasicFrom(const CRtf0Basic& other) {
  basicStatus = other.basicStatus;
  sampleRate = other.sampleRate;
  minFreq = other.minFreq;
  maxFreq = other.maxFreq;
  minHighEdge = other.minHighEdge;
  maxHighEdge = other.maxHighEdge;
  auxCount = other.auxCount;
  lastIndex = other.lastIndex;
  firstCall = other.firstCall;
  blockData = other.blockData;
  blockLength = other.blockLength;
  blockStart = other.blockStart;
  blockEnd = other.blockEnd;
  blockChannel = other.blockChannel;
  for (const auto& stage : other.biquadList)
    if (stage) biquadList.add(stage->clone());
}

double CRtf0Basic::freqBand2Q(double f1, double f2) { return std::sqrt(f1 * f2) / (f2 - f1); }

double CRtf0Basic::fltOrder(double p1, double p2, double p3, double p4, double fs) {
  const double ratio = (std::pow(10.0, p2 / 20.0) - 1.0) / (std::pow(10.0, p1 / 20.0) - 1.0);
  const double num = std::log(std::sqrt(ratio));
  const double den =
      std::log(std::tan(digitfilt::kPi * p4 / fs) / std::tan(digitfilt::kPi * p3 / fs));
  // Single precision first, so a quotient a hair above an integer does not add an order.
  return std::ceil(roundToFloat(num / den));
}

int CRtf0Basic::cleanCoefs() {
  biquadList.clear();
  lastIndex = -1;
  return 1;
}

int CRtf0Basic::reset() {
  firstCall = 1;
  blockData = nullptr;
  blockLength = 0;
  blockStart = 0;
  blockEnd = 0;
  blockChannel = 0;
  return 1;
}

int CRtf0Basic::getEnableFilters() {
  int n = 0;
  for (const auto& stage : biquadList)
    if (stage && stage->enabled != 0) ++n;
  return n;
}

std::string CRtf0Basic::getFilterInfo(int) { return std::string(); }

digitfilt::SampleSpan CRtf0Basic::beginBlock(double* data, std::int64_t length,
                                             std::int64_t start, std::int64_t end, int channel) {
  if (firstCall != 0 || start == 0) {
    blockChannel = channel;
    blockData = data;
    blockLength = length;
    blockStart = start;
    blockEnd = end;
    firstCall = 0;
  }
  return digitfilt::spanInArray(length, start, end);
}

void CRtf0Basic::endBlock(std::int64_t start, std::int64_t end) {
  blockEnd = end;
  blockStart = start;
}

int CRtf0Basic::buildSettingsCascade(CFilterDcLtSetAcqqv& settings, int highShelfType,
                                     const StageMaker& make) {
  cleanCoefs();
  if (!digitfilt::checkAcqSettingsReady(settings)) return 0;

  sampleRate = settings.acqSampleRate;
  minFreq = sampleRate * 0.0001;
  maxFreq = sampleRate * 0.5;
  minHighEdge = sampleRate * 0.0005;
  maxHighEdge = sampleRate * 0.5;

  int count = 0;
  // Appends a stage; false when it cannot be made, and the build then stops with 0.
  auto append = [&](int type, double fc) {
    auto stage = make(type, fc);
    if (!stage) return false;
    stage->enabled = 1;
    biquadList.add(std::move(stage));
    ++count;
    return true;
  };
  auto clampFreq = [&](double& f) { return clampLowFirst(f, minFreq, maxFreq); };

  if (settings.lowPassOn && !append(RTF_BQ_LOWPASS, clampFreq(settings.lowPassFreq))) return 0;
  if (settings.highPassOn && !append(RTF_BQ_HIGHPASS, clampFreq(settings.highPassFreq)))
    return 0;
  for (int k = 0; k < 6; ++k) {
    if (!settings.notchOn[k]) continue;
    const double low = clampFreq(settings.notchFreqLow[k]);
    // The upper edge is clamped into the width range, as hosts have always had it.
    const double high = clampLowFirst(settings.notchFreqHigh[k], minHighEdge, maxHighEdge);
    if (!append(RTF_BQ_NOTCH, std::sqrt(low * high))) return 0;
  }
  if (settings.powerLineOn) {
    // The custom base is used as it stands, before its own clamp below.
    const double base = digitfilt::powerLineBase(settings);
    digitfilt::limitPowerLineHarmonics(settings, base);
    clampFreq(settings.powerLineFreq);
    const double half = clampFreq(settings.powerLineWidth) * 0.5;
    settings.powerLineHarmonics = std::clamp(settings.powerLineHarmonics, 1, 60);
    for (int h = 1; h <= settings.powerLineHarmonics; ++h) {
      const double centre = h * base;
      if (centre + half >= sampleRate * 0.5) break;
      const double low = std::min(maxFreq, std::max(minFreq, centre - half));
      const double high = std::min(maxFreq, std::max(minFreq, centre + half));
      if (!append(RTF_BQ_NOTCH, std::sqrt(low * high))) return 0;
    }
  }
  if (settings.bqBandPassOn) {
    const double low = clampFreq(settings.bqBandPassFreq1);
    const double high = clampFreq(settings.bqBandPassFreq2);
    if (!append(RTF_BQ_BANDPASS, std::sqrt(low * high))) return 0;
  }
  if (settings.bqBandPass2On) {
    const double low = clampFreq(settings.bqBandPass2Freq1);
    const double high = clampFreq(settings.bqBandPass2Freq2);
    if (!append(RTF_BQ_BANDPASS2, std::sqrt(low * high))) return 0;
  }
  // One frequency serves both the type-5 and the peak stage.
  if (settings.bqType5On && !append(RTF_BQ_NONE, clampFreq(settings.bqPeakFreq))) return 0;
  if (settings.bqPeakOn && !append(RTF_BQ_PEAK, clampFreq(settings.bqPeakFreq))) return 0;
  if (settings.bqLowShelfOn && !append(RTF_BQ_LOWSHELF, clampFreq(settings.bqLowShelfFreq)))
    return 0;
  if (settings.bqHighShelfOn && !append(highShelfType, clampFreq(settings.bqHighShelfFreq)))
    return 0;
  return count;
}

// ---------------------------------------------------------------------------------------------
// CRtf1Biquad: stage operations

BIQUAD_PARAM1* CRtf1Biquad::biquad_create(RTF_BQ_TYPEX type, int sampleRate, double fc, double q,
                                          double peakGain) {
  auto* bq = new (std::nothrow) BIQUAD_PARAM1();
  if (!bq) return nullptr;
  bq->type = type;
  bq->sampleRate = sampleRate;
  bq->fc = fc;
  bq->q = q;
  bq->peakGain = peakGain;
  bq->enabled = 0;
  biquad_clear(bq);
  biquad_calculate(bq);
  return bq;
}

void CRtf1Biquad::biquad_destroy(BIQUAD_PARAM1* bq) { delete bq; }

BIQUAD_PARAM1* CRtf1Biquad::biquad_clone(const BIQUAD_PARAM1* bq) {
  return new (std::nothrow) BIQUAD_PARAM1(*bq);
}

double CRtf1Biquad::biquad_process(BIQUAD_PARAM1* bq, double x) {
  const std::uint32_t i = bq->ringIndex;
  const std::uint32_t cur = i % 3, prev = (i + 2) % 3, prev2 = (i + 1) % 3;
  bq->xHist[cur] = x;
  const double y = bq->b0 * x + bq->b1 * bq->xHist[prev] + bq->b2 * bq->xHist[prev2] -
                   bq->a1 * bq->yHist[prev] - bq->a2 * bq->yHist[prev2];
  bq->yHist[cur] = y;
  bq->ringIndex = (i + 4) % 3;
  return y;
}

void CRtf1Biquad::biquad_clear(BIQUAD_PARAM1* bq) {
  for (int k = 0; k < 3; ++k) bq->xHist[k] = bq->yHist[k] = 0.0;
}

void CRtf1Biquad::biquad_calculate(BIQUAD_PARAM1* bq) {
  const double A = std::pow(10.0, bq->peakGain / 40.0);
  const double w0 = digitfilt::kTwoPi * bq->fc / bq->sampleRate;
  const double c = std::cos(w0), s = std::sin(w0);
  const double alpha = s / (2.0 * bq->q);
  const double beta = 2.0 * std::sqrt(A) * alpha;
  digitfilt::CookbookTerms t;  // 5 and unknown codes pass the signal through
  // Both band-pass codes take the 0 dB peak-gain form.
  digitfilt::cookbookTerms(bq->type == RTF_BQ_BANDPASS ? RTF_BQ_BANDPASS2 : bq->type, A, c, alpha,
                           beta, t);
  bq->a1 = t.a1 / t.a0;
  bq->a2 = t.a2 / t.a0;
  bq->b0 = t.b0 / t.a0;
  bq->b1 = t.b1 / t.a0;
  bq->b2 = t.b2 / t.a0;
  bq->a0 = t.a0 / t.a0;
  bq->ringIndex = 0;
}

void CRtf1Biquad::biquad_setFs(BIQUAD_PARAM1* bq, double sampleRate) {
  bq->sampleRate = sampleRate;
  biquad_calculate(bq);
}

void CRtf1Biquad::biquad_setType(BIQUAD_PARAM1* bq, RTF_BQ_TYPEX type) {
  bq->type = type;
  biquad_calculate(bq);
}

void CRtf1Biquad::biquad_setFc(BIQUAD_PARAM1* bq, double fc) {
  bq->fc = fc;
  biquad_calculate(bq);
}

void CRtf1Biquad::biquad_setQ(BIQUAD_PARAM1* bq, double q) {
  bq->q = q;
  biquad_calculate(bq);
}

void CRtf1Biquad::biquad_setPeakGain(BIQUAD_PARAM1* bq, double peakGain) {
  bq->peakGain = peakGain;
  biquad_calculate(bq);
}

const char* CRtf1Biquad::biquad_getFilterName(const BIQUAD_PARAM1* bq) {
  switch (bq->type) {
    case RTF_BQ_LOWPASS: return "low-pass";
    case RTF_BQ_HIGHPASS: return "high-pass";
    case RTF_BQ_BANDPASS:
    case RTF_BQ_BANDPASS2: return "band-pass";
    case RTF_BQ_NOTCH: return "notch";
    case RTF_BQ_PEAK: return "peak";
    case RTF_BQ_LOWSHELF: return "low-shelf";
    case RTF_BQ_HIGHSHELF: return "high-shelf";
    default: return "none";
  }
}

// ---------------------------------------------------------------------------------------------
// CRtf1Biquad: cascade

CRtf1Biquad::CRtf1Biquad(const CRtf1Biquad& other) : CRtf0Basic() { *this = other; }

CRtf1Biquad& CRtf1Biquad::operator=(const CRtf1Biquad& other) {
  if (this == &other) return *this;
  cleanCoefs();
  copyBasicFrom(other);
  biquadParam = other.biquadParam;
  return *this;
}

int CRtf1Biquad::setCheckCoefs(CFilterDcLtSetAcqqv& settings) {
  const double rate = settings.acqSampleRate, q = settings.bqQ, gain = settings.bqPeakGainDb;
  // The settings' rate is kept whole; biquad_create would truncate it to an integer.
  return buildSettingsCascade(settings, RTF_BQ_LOWSHELF, [&](int type, double fc) {
    return std::unique_ptr<digitfilt::BiquadStageRecord>(
        digitfilt::newSettingsStage<BIQUAD_PARAM1>(type, rate, fc, q, gain));
  });
}

int CRtf1Biquad::makeAllBiquadCoeffs(int onlyEnabled) {
  const int count =
      digitfilt::forEachCascadeStage<BIQUAD_PARAM1>(biquadList, onlyEnabled, biquad_calculate);
  lastIndex = count - 1;
  return count;
}

int CRtf1Biquad::filtDataAcq(double* data, std::int64_t length, std::int64_t start,
                             std::int64_t end, int channel) {
  if (!data) return 0;
  const digitfilt::SampleSpan span = beginBlock(data, length, start, end, channel);
  const std::int64_t first = span.first, last = span.last;
  if (first > last) {
    endBlock(start, end);
    return 1;
  }

  digitfilt::Df1Section sections[digitfilt::kStageChunk];
  digitfilt::forEachEnabledChunk<BIQUAD_PARAM1>(biquadList, [&](BIQUAD_PARAM1** stages, int n) {
    std::int64_t from = first;
    // Ring positions beyond 2 wrap oddly in 32 bits; take one literal step to bring them home.
    if (std::any_of(stages, stages + n, [](const BIQUAD_PARAM1* s) { return s->ringIndex > 2; })) {
      double x = data[from];
      for (int k = 0; k < n; ++k) {
        const double y = biquad_process(stages[k], x);
        x = std::isnan(y) ? 0.0 : y;
      }
      data[from++] = x;
    }
    for (int k = 0; k < n; ++k) sections[k] = loadRing(*stages[k]);
    digitfilt::filterDf1Cascade(sections, n, data, from, last);
    for (int k = 0; k < n; ++k) storeRing(*stages[k], sections[k], last - from + 1);
  });
  endBlock(start, end);
  return 1;
}
