#include "digitfilt/realtime/rtf_biquad_cascade.h"

#include <algorithm>
#include <cmath>
#include <new>

#include "digitfilt/foundation/design_base.h"
#include "digitfilt/realtime/rtf_biquad_kernel.h"
#include "digitfilt/realtime/rtf_biquad_stages.h"

namespace {

struct Df1Coefs {
  double b0, b1, b2, a1, a2;
};

// Audio-EQ cookbook coefficients normalised by a0; false for a type outside 0..8.
bool cookbookCoefs(int type, double peakGain, double fc, double sampleRate, double q,
                   double shelfSlope, Df1Coefs& out) {
  if (static_cast<unsigned>(type) > 8u) return false;
  const double A = std::pow(10.0, peakGain / 40.0);
  const double w0 = digitfilt::kTwoPi * fc / sampleRate;
  const double c = std::cos(w0), s = std::sin(w0);
  const double alpha = s / (2.0 * q);
  digitfilt::CookbookTerms t;
  switch (type) {
    case 2:  // constant skirt gain
      t = {s / 2, 0, -s / 2, 1 + alpha, -2 * c, 1 - alpha};
      break;
    case 5:  // all-pass
      t = {1 - alpha, -2 * c, 1 + alpha, 1 + alpha, -2 * c, 1 - alpha};
      break;
    case 6: {
      // q is the bandwidth in octaves here.
      const double alphaBw = s * std::sinh(0.34657359027997264 * q * w0 / s);
      digitfilt::cookbookTerms(type, A, c, alphaBw, 0.0, t);
      break;
    }
    case 7:
    case 8: {
      const double beta =
          2 * std::sqrt(A) * (s / 2) * std::sqrt((A + 1 / A) * (1 / shelfSlope - 1) + 2);
      digitfilt::cookbookTerms(type, A, c, alpha, beta, t);
      break;
    }
    default:
      digitfilt::cookbookTerms(type, A, c, alpha, 0.0, t);
      break;
  }
  out = {t.b0 / t.a0, t.b1 / t.a0, t.b2 / t.a0, t.a1 / t.a0, t.a2 / t.a0};
  return true;
}

void setCoefsClearHistory(BIQUAD_PARAM2& bq, const Df1Coefs& c) {
  bq.b0 = c.b0, bq.b1 = c.b1, bq.b2 = c.b2, bq.a1 = c.a1, bq.a2 = c.a2;
  bq.x1 = bq.x2 = bq.y1 = bq.y2 = 0.0;
}

// Normalised-frequency design shared by CRtf3Biquad and CRtf3BiquadMutiChnl (fc is a fraction of
// the rate). Type 5 and unknown types leave the coefficients as they are.
void tdf2Coefs(int type, double fc, double q, double peakGain, double& a0, double& a1, double& a2,
               double& b1, double& b2) {
  const double V = std::pow(10.0, std::fabs(peakGain) / 20.0);
  const double K = std::tan(digitfilt::kPi * fc);
  const double r = std::sqrt(2.0);
  double norm;
  switch (type) {
    case 0:
      norm = 1 / (1 + K / q + K * K);
      a0 = K * K * norm;
      a1 = 2 * a0;
      a2 = a0;
      b1 = 2 * (K * K - 1) * norm;
      b2 = (1 - K / q + K * K) * norm;
      break;
    case 1:
      norm = 1 / (1 + K / q + K * K);
      a0 = 1 * norm;
      a1 = -2 * a0;
      a2 = a0;
      b1 = 2 * (K * K - 1) * norm;
      b2 = (1 - K / q + K * K) * norm;
      break;
    case 2:
    case 3:
      norm = 1 / (1 + K / q + K * K);
      a0 = K / q * norm;
      a1 = 0;
      a2 = -a0;
      b1 = 2 * (K * K - 1) * norm;
      b2 = (1 - K / q + K * K) * norm;
      break;
    case 4:
      norm = 1 / (1 + K / q + K * K);
      a0 = (1 + K * K) * norm;
      a1 = 2 * (K * K - 1) * norm;
      a2 = a0;
      b1 = a1;
      b2 = (1 - K / q + K * K) * norm;
      break;
    case 6: {
      const double p = V / q * K, k1 = K / q;
      if (peakGain >= 0) {
        norm = 1 / (1 + k1 + K * K);
        a0 = (1 + p + K * K) * norm;
        a2 = (1 - p + K * K) * norm;
        b2 = (1 - k1 + K * K) * norm;
      } else {
        norm = 1 / (1 + p + K * K);
        a0 = (1 + k1 + K * K) * norm;
        a2 = (1 - k1 + K * K) * norm;
        b2 = (1 - p + K * K) * norm;
      }
      a1 = 2 * (K * K - 1) * norm;
      b1 = a1;
      break;
    }
    case 7: {
      const double t = std::sqrt(2 * V) * K;
      if (peakGain >= 0) {
        norm = 1 / (1 + r * K + K * K);
        a0 = (1 + t + V * K * K) * norm;
        a1 = 2 * (V * K * K - 1) * norm;
        a2 = (1 - t + V * K * K) * norm;
        b1 = 2 * (K * K - 1) * norm;
        b2 = (1 - r * K + K * K) * norm;
      } else {
        norm = 1 / (1 + t + V * K * K);
        a0 = (1 + r * K + K * K) * norm;
        a1 = 2 * (K * K - 1) * norm;
        a2 = (1 - r * K + K * K) * norm;
        b1 = 2 * (V * K * K - 1) * norm;
        b2 = (1 - t + V * K * K) * norm;
      }
      break;
    }
    case 8: {
      const double t = std::sqrt(2 * V) * K;
      if (peakGain >= 0) {
        norm = 1 / (1 + r * K + K * K);
        a0 = (V + t + K * K) * norm;
        a1 = 2 * (K * K - V) * norm;
        a2 = (V - t + K * K) * norm;
        b1 = 2 * (K * K - 1) * norm;
        b2 = (1 - r * K + K * K) * norm;
      } else {
        norm = 1 / (V + t + K * K);
        a0 = (1 + r * K + K * K) * norm;
        a1 = 2 * (K * K - 1) * norm;
        a2 = (1 - r * K + K * K) * norm;
        b1 = 2 * (K * K - V) * norm;
        b2 = (V - t + K * K) * norm;
      }
      break;
    }
    default:
      break;
  }
}

// Runs the enabled Record stages of `list` over data[first..last] a chunk at a time, with
// `load` / `store` moving each stage's coefficients and state in and out of the kernel.
template <class Record, class Section, class Load, class Store, class Kernel>
void runStages(const digitfilt::PtrList<digitfilt::BiquadStageRecord>& list, double* data,
               std::int64_t first, std::int64_t last, Load load, Store store, Kernel kernel) {
  Section sections[digitfilt::kStageChunk];
  digitfilt::forEachEnabledChunk<Record>(list, [&](Record** stages, int n) {
    for (int k = 0; k < n; ++k) sections[k] = load(*stages[k]);
    kernel(sections, n, data, first, last);
    for (int k = 0; k < n; ++k) store(*stages[k], sections[k]);
  });
}

}  // namespace

std::unique_ptr<digitfilt::BiquadStageRecord> BIQUAD_PARAM2::clone() const {
  return std::make_unique<BIQUAD_PARAM2>(*this);
}

std::unique_ptr<digitfilt::BiquadStageRecord> BIQUAD_PARAM3::clone() const {
  return std::make_unique<BIQUAD_PARAM3>(*this);
}

// ---------------------------------------------------------------------------------------------
// CRtf2Biquad

CRtf2Biquad::CRtf2Biquad(const CRtf2Biquad& other) : CRtf0Basic() { *this = other; }

CRtf2Biquad& CRtf2Biquad::operator=(const CRtf2Biquad& other) {
  if (this == &other) return *this;
  cleanCoefs();
  copyBasicFrom(other);
  biquadParam = other.biquadParam;
  return *this;
}

BIQUAD_PARAM2* CRtf2Biquad::calcBiquads(int type, double peakGain, double fc, double sampleRate,
                                        double q, double shelfSlope) {
  Df1Coefs c;
  if (!cookbookCoefs(type, peakGain, fc, sampleRate, q, shelfSlope, c)) return nullptr;
  setCoefsClearHistory(biquadParam, c);
  return &biquadParam;
}

int CRtf2Biquad::calcBiquad(BIQUAD_PARAM2* bq) {
  if (!bq) return 0;
  Df1Coefs c;
  if (!cookbookCoefs(bq->type, bq->peakGain, bq->fc, bq->sampleRate, bq->q, bq->shelfSlope, c))
    return 0;
  setCoefsClearHistory(*bq, c);
  return 1;
}

double CRtf2Biquad::filterB(double x, BIQUAD_PARAM2* bq) {
  const double y = bq->b0 * x + bq->b1 * bq->x1 + bq->b2 * bq->x2 - bq->a1 * bq->y1 -
                   bq->a2 * bq->y2;
  bq->x2 = bq->x1;
  bq->x1 = x;
  bq->y2 = bq->y1;
  bq->y1 = y;
  return y;
}

int CRtf2Biquad::setCheckCoefs(CFilterDcLtSetAcqqv& settings) {
  const double rate = settings.acqSampleRate, q = settings.bqQ, gain = settings.bqPeakGainDb;
  const double slope = settings.bqParam3;
  return buildSettingsCascade(settings, 8, [&](int type, double fc) {
    auto bq = digitfilt::newSettingsStage<BIQUAD_PARAM2>(type, rate, fc, q, gain);
    if (bq) bq->shelfSlope = slope;
    return std::unique_ptr<digitfilt::BiquadStageRecord>(std::move(bq));
  });
}

int CRtf2Biquad::makeAllBiquadCoeffs(int onlyEnabled) {
  const int count = digitfilt::forEachCascadeStage<BIQUAD_PARAM2>(
      biquadList, onlyEnabled, [this](BIQUAD_PARAM2* bq) { calcBiquad(bq); });
  lastIndex = count - 1;
  return count;
}

int CRtf2Biquad::filtDataAcq(double* data, std::int64_t length, std::int64_t start,
                             std::int64_t end, int channel) {
  if (!data) return 0;
  const digitfilt::SampleSpan span = beginBlock(data, length, start, end, channel);
  runStages<BIQUAD_PARAM2, digitfilt::Df1Section>(
      biquadList, data, span.first, span.last,
      [](const BIQUAD_PARAM2& bq) {
        digitfilt::Df1Section s;
        s.b0 = bq.b0, s.b1 = bq.b1, s.b2 = bq.b2, s.a1 = bq.a1, s.a2 = bq.a2;
        s.x1 = bq.x1, s.x2 = bq.x2, s.y1 = bq.y1, s.y2 = bq.y2;
        return s;
      },
      [](BIQUAD_PARAM2& bq, const digitfilt::Df1Section& s) {
        bq.x1 = s.x1, bq.x2 = s.x2, bq.y1 = s.y1, bq.y2 = s.y2;
      },
      digitfilt::filterDf1Cascade);
  endBlock(start, end);
  return 1;
}

// ---------------------------------------------------------------------------------------------
// CRtf3Biquad

CRtf3Biquad::CRtf3Biquad(int type, double fc, double sampleRate, double q, double peakGain) {
  setBiquad(type, fc, sampleRate, q, peakGain);
  biquadParam.z1 = biquadParam.z2 = 0.0;
}

CRtf3Biquad::CRtf3Biquad(const CRtf3Biquad& other) : CRtf0Basic() { *this = other; }

CRtf3Biquad& CRtf3Biquad::operator=(const CRtf3Biquad& other) {
  if (this == &other) return *this;
  cleanCoefs();
  copyBasicFrom(other);
  biquadParam = other.biquadParam;
  return *this;
}

void CRtf3Biquad::calcBiquad() {
  BIQUAD_PARAM3& bq = biquadParam;
  tdf2Coefs(bq.type, bq.fc, bq.q, bq.peakGain, bq.a0, bq.a1, bq.a2, bq.b1, bq.b2);
}

void CRtf3Biquad::setBiquad(int type, double fc, double sampleRate, double q, double peakGain) {
  biquadParam.type = type;
  biquadParam.fc = fc / sampleRate;
  biquadParam.q = q;
  biquadParam.peakGain = peakGain;
  calcBiquad();
}

void CRtf3Biquad::setType(int type) {
  biquadParam.type = type;
  calcBiquad();
}

void CRtf3Biquad::setQ(double q) {
  biquadParam.q = q;
  calcBiquad();
}

void CRtf3Biquad::setFc(double normalisedFc) {
  biquadParam.fc = normalisedFc;
  calcBiquad();
}

void CRtf3Biquad::setPeakGain(double peakGainDb) {
  biquadParam.peakGain = peakGainDb;
  calcBiquad();
}

int CRtf3Biquad::makeCoefs(BIQUAD_PARAM3*) {
  calcBiquad();
  return 1;
}

double CRtf3Biquad::process(double x) { return processx(x, &biquadParam); }

double CRtf3Biquad::processx(double x, BIQUAD_PARAM3* rec) {
  const double out = x * rec->a0 + rec->z1;
  rec->z1 = x * rec->a1 + rec->z2 - rec->b1 * out;
  rec->z2 = x * rec->a2 - rec->b2 * out;
  return out;
}

int CRtf3Biquad::setCheckCoefs(CFilterDcLtSetAcqqv& settings) {
  const double rate = settings.acqSampleRate, q = settings.bqQ, gain = settings.bqPeakGainDb;
  return buildSettingsCascade(settings, 8, [&](int type, double fc) {
    return std::unique_ptr<digitfilt::BiquadStageRecord>(
        digitfilt::newSettingsStage<BIQUAD_PARAM3>(type, rate, fc, q, gain));
  });
}

int CRtf3Biquad::makeAllBiquadCoeffs(int onlyEnabled) {
  // makeCoefs recomputes the own record only.
  const int count = digitfilt::forEachCascadeStage<BIQUAD_PARAM3>(
      biquadList, onlyEnabled, [this](BIQUAD_PARAM3* bq) { makeCoefs(bq); });
  lastIndex = count - 1;
  return count;
}

int CRtf3Biquad::filtDataAcq(double* data, std::int64_t length, std::int64_t start,
                             std::int64_t end, int channel) {
  if (!data) return 0;
  const digitfilt::SampleSpan span = beginBlock(data, length, start, end, channel);
  runStages<BIQUAD_PARAM3, digitfilt::Tdf2Section>(
      biquadList, data, span.first, span.last,
      [](const BIQUAD_PARAM3& bq) {
        digitfilt::Tdf2Section s;
        s.a0 = bq.a0, s.a1 = bq.a1, s.a2 = bq.a2, s.b1 = bq.b1, s.b2 = bq.b2;
        s.z1 = bq.z1, s.z2 = bq.z2;
        return s;
      },
      [](BIQUAD_PARAM3& bq, const digitfilt::Tdf2Section& s) { bq.z1 = s.z1, bq.z2 = s.z2; },
      digitfilt::filterTdf2Cascade);
  endBlock(start, end);
  return 1;
}

// ---------------------------------------------------------------------------------------------
// CRtf3BiquadMutiChnl

CRtf3BiquadMutiChnl::CRtf3BiquadMutiChnl(int channelCount, int type, double fc, double q,
                                         double peakGain)
    : channelCount(channelCount), type(type), fc(fc), q(q), peakGain(peakGain) {
  calcBiquad();
  if (channelCount > 0) {
    z1sOwner_.reset(new double[channelCount]());
    z2sOwner_.reset(new double[channelCount]());
    z1s = z1sOwner_.get();
    z2s = z2sOwner_.get();
  }
}

void CRtf3BiquadMutiChnl::calcBiquad() { tdf2Coefs(type, fc, q, peakGain, a0, a1, a2, b1, b2); }

void CRtf3BiquadMutiChnl::setType(int t) {
  type = t;
  calcBiquad();
}

void CRtf3BiquadMutiChnl::setQ(double value) {
  q = value;
  calcBiquad();
}

void CRtf3BiquadMutiChnl::setFc(double normalisedFc) {
  fc = normalisedFc;
  calcBiquad();
}

void CRtf3BiquadMutiChnl::setPeakGain(double peakGainDb) {
  peakGain = peakGainDb;
  calcBiquad();
}

void CRtf3BiquadMutiChnl::setBiquad(int t, double normalisedFc, double value, double gainDb) {
  type = t;
  fc = normalisedFc;
  q = value;
  peakGain = gainDb;
  calcBiquad();
}

double CRtf3BiquadMutiChnl::process(double x, int channel) {
  // Hosts index by channel unchecked; an index without state must not reach memory.
  if (!z1s || !z2s || channel < 0 || channel >= channelCount) return 0.0;
  const double out = x * a0 + z1s[channel];
  z1s[channel] = x * a1 + z2s[channel] - b1 * out;
  z2s[channel] = x * a2 - b2 * out;
  return out;
}
