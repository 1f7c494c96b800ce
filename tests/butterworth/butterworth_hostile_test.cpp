// Hostile values through the Butterworth filters: zero-phase classes, whole-record and stretch
// acquisition filters, the prototype-pole sections and the acquisition bank. Where the result is
// defined it is asserted; elsewhere the calls must fail cleanly and stay inside their buffers
// (the sanitizer build proves the latter).
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <digitfilt/digitfilt.h>

#include "support/butterworth_support.h"
#include "support/message_capture.h"

namespace {

using digitfilt::test::designedStage;
using digitfilt::test::literalStage;
using digitfilt::test::MessageCapture;
using digitfilt::test::testSignal;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kDenorm = std::numeric_limits<double>::denorm_min();
constexpr std::int64_t kMax64 = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kMin64 = std::numeric_limits<std::int64_t>::min();

// Exposes the protected stage routines.
class ZeroPhase : public CDigitFiltCoefMak01Butterworth01ctf {
 public:
  using CDigitFiltCoefMak01Butterworth01ctf::ctfZeroPhaseShiftIIRDigitFilter;
};
class Stretch : public CDigitFiltCoefMak01ButterworthAcq02Prcs {
 public:
  using CDigitFiltCoefMak01ButterworthAcq02Prcs::bdiir;
};

bool allNaN(const std::vector<double>& v) {
  for (double x : v)
    if (!std::isnan(x)) return false;
  return true;
}

// ---- zero-phase classes ------------------------------------------------------------------------

TEST(ZeroPhaseHostile, EmptyNegativeAndUnreachableLengthsTouchNothing) {
  MessageCapture capture;
  ZeroPhase zp;
  zp.iirSpecs[0] = designedStage(0, 4, 0.0, 100.0, 1000.0);
  std::vector<double> data = {1.0, 2.0, 3.0};
  const std::vector<double> before = data;
  EXPECT_EQ(zp.ctfZeroPhaseShiftIIRDigitFilter(data.data(), data.data(), 0, &zp.iirSpecs[0]), 0);
  EXPECT_EQ(zp.tmpTSLen, 0);
  // A negative count or one no array can hold: the work array cannot be had, result 0.
  for (std::int64_t n : {std::int64_t{-1}, kMin64, kMax64}) {
    EXPECT_EQ(zp.ctfFilterStd(data.data(), n, 1, zp.getFilterCoeffPt()), 0);
    EXPECT_EQ(zp.ctfFilterIOF(data.data(), data.data(), n, zp.getFilterCoeffPt(), 1), 0);
    EXPECT_EQ(zp.ctfZeroPhaseShiftIIRDigitFilter(data.data(), data.data(), n, &zp.iirSpecs[0]),
              0);
  }
  EXPECT_EQ(data, before);
  EXPECT_EQ(zp.tmpAry, nullptr);
  EXPECT_EQ(zp.tmpIO, nullptr);
  EXPECT_TRUE(capture.messages.empty());
}

TEST(ZeroPhaseHostile, OneSampleIsCopiedWithTheStageMessage) {
  MessageCapture capture;
  CDigitFiltCoefMak01Butterworth01ctf zp;
  zp.iirSpecs[0] = designedStage(0, 1, 0.0, 100.0, 1000.0);  // numCoefs 2 > 1 sample
  double x = 7.5;
  EXPECT_EQ(zp.ctfFilterStd(&x, 1, 1, zp.getFilterCoeffPt()), 1);
  EXPECT_EQ(x, 7.5);
  ASSERT_EQ(capture.messages.size(), 1u);
  EXPECT_EQ(capture.messages[0], L"Do filter zeroPhaseShiftIIRDigitFilter error!");
}

TEST(ZeroPhaseHostile, ConstantRecordsOfExtremeValues) {
  CDigitFiltCoefMak01Butterworth01ctf zp;
  zp.iirSpecs[0] = designedStage(0, 4, 0.0, 100.0, 1000.0);
  // Huge and denormal constants cancel against their offset exactly: zeros.
  for (double c : {1e300, -1e300, kDenorm}) {
    std::vector<double> data(40, c);
    ASSERT_EQ(zp.ctfFilterStd(data.data(), 40, 1, zp.getFilterCoeffPt()), 1);
    for (double v : data) EXPECT_EQ(v, 0.0) << c;
  }
  // An infinite constant minus itself is NaN, and so is everything after.
  std::vector<double> inf(40, kInf);
  zp.ctfFilterStd(inf.data(), 40, 1, zp.getFilterCoeffPt());
  EXPECT_TRUE(allNaN(inf));
  // A NaN in the first sample is the forward offset: every output is NaN.
  std::vector<double> nan = testSignal(40);
  nan[0] = kNaN;
  zp.ctfFilterStd(nan.data(), 40, 1, zp.getFilterCoeffPt());
  EXPECT_TRUE(allNaN(nan));
}

TEST(ZeroPhaseHostile, WildCoefficientCountsStayInsideTheRecord) {
  CDigitFiltCoefMak01Butterworth01ctf zp;
  // No terms at all: every sum is empty and the record comes out as zeros.
  filter_iirspec& none = zp.iirSpecs[0];
  none.enabled = 1;
  none.numCoefs = -5;
  std::vector<double> data = testSignal(30);
  ASSERT_EQ(zp.ctfFilterStd(data.data(), 30, 1, zp.getFilterCoeffPt()), 1);
  for (double v : data) EXPECT_EQ(v, 0.0);
  // More terms than the record stores: cut at its 60 slots, the missing a[k] counting as 0.
  none.numCoefs = 1000;
  for (int k = 0; k < 60; ++k) none.coefs[k] = (k == 0) ? 1.0 : 0.0;
  std::vector<double> longer = testSignal(1200);
  const std::vector<double> before = longer;
  zp.ctfFilterStd(longer.data(), 1200, 1, zp.getFilterCoeffPt());
  // b = {1}: each pass only subtracts its offset.
  const double w_last = before.back() - before[0];
  for (std::size_t i = 0; i < longer.size(); ++i)
    EXPECT_DOUBLE_EQ(longer[i], (before[i] - before[0]) - w_last);
}

TEST(ZeroPhaseHostile, UndesignableRecordsShowTheDesignMessage) {
  MessageCapture capture;
  CDigitFiltCoefMak01Butterworth01ctf zp;
  // Rates 0 and negative, an edge beyond Nyquist, an unknown type, order 25: never designed.
  const double rates[] = {0.0, -1000.0, 1000.0, 1000.0, 1000.0};
  const double edges[] = {10.0, 10.0, 900.0, 10.0, 10.0};
  const int types[] = {0, 0, 0, 7, 0};
  const int orders[] = {4, 4, 4, 4, 25};
  for (int i = 0; i < 5; ++i) {
    filter_iirspec& s = zp.iirSpecs[i];
    s.enabled = 1;
    s.filterType = types[i];
    s.order = orders[i];
    s.sampleRate = rates[i];
    s.freqHigh = edges[i];
    s.numCoefs = 0;
  }
  std::vector<double> data = testSignal(50);
  EXPECT_EQ(zp.ctfFilterStd(data.data(), 50, 5, zp.getFilterCoeffPt()), 1);
  // No stage wrote; after an odd count the chain ends in the work array, taken zero-filled.
  EXPECT_EQ(data, std::vector<double>(50, 0.0));
  ASSERT_EQ(capture.messages.size(), 5u);
  for (const std::wstring& m : capture.messages)
    EXPECT_EQ(m, L"Do filter getButterworthIirFilterCoef error!");
}

TEST(ZeroPhaseHostile, CallerArrayVariantWithTinyAndNegativeLengths) {
  MessageCapture capture;
  CDigitFiltCoefMak01Butterworth02ctfqv qv;
  qv.iirSpecs[0] = designedStage(1, 2, 10.0, 0.0, 1000.0);
  double a[2] = {1.0, 2.0}, b[2] = {0.0, 0.0}, w[2] = {0.0, 0.0};
  double* data = a;
  double* other = b;
  // Shorter than numCoefs (3): copied, message, and the result now sits in `other`.
  EXPECT_EQ(qv.ctfFilterQv(data, other, w, 2), 1);
  EXPECT_EQ(data, b);
  EXPECT_EQ(data[1], 2.0);
  data = a;
  other = b;
  EXPECT_EQ(qv.ctfFilterQv(data, other, w, -4), 1);  // negative: nothing copied
  EXPECT_EQ(b[0], 1.0);
  EXPECT_EQ(capture.messages.size(), 2u);
}

// ---- acquisition filters ------------------------------------------------------------------------

TEST(AcqHostile, WholeRecordFiltersWithEmptyAndNegativeLengths) {
  Stretch acq;
  acq.iirSpecs[0] = designedStage(0, 4, 0.0, 100.0, 1000.0);
  acq.iirSpecs[0].coefs[20] = 1.0;
  // Zero and negative lengths write nothing (a[0] of the record is still cleared).
  EXPECT_EQ(acq.bdiir(nullptr, nullptr, nullptr, 0, &acq.iirSpecs[0]), 1);
  EXPECT_EQ(acq.iirSpecs[0].coefs[20], 0.0);
  EXPECT_EQ(acq.fastFilterIn(nullptr, nullptr, nullptr, -3), 1);
  EXPECT_EQ(acq.fastFilterInOut(nullptr, nullptr, nullptr, nullptr, kMin64), 1);
  EXPECT_EQ(acq.bdiir(nullptr, nullptr, nullptr, 0, nullptr), 0);
  // One sample: the forward offset is the sample itself, so the result is 0.
  double x = 42.0, tmp = 0.0, work = 0.0;
  EXPECT_EQ(acq.fastFilterIn(&x, &tmp, &work, 1), 1);
  EXPECT_EQ(x, 0.0);
}

TEST(AcqHostile, StretchesOutsideTheBufferAreCutOrIgnored) {
  CDigitFiltCoefMak01ButterworthAcq02Prcs acq;
  acq.iirSpecs[0] = designedStage(0, 4, 0.0, 100.0, 1000.0);
  const std::vector<double> signal = testSignal(64);
  std::vector<double> data = signal, tmp(64, -1.0);
  acq.reset4RunTimeFilter();
  // Reversed, empty and entirely outside: nothing is written, the stretch is still recorded.
  for (auto [first, last] : {std::pair<std::int64_t, std::int64_t>{10, 5}, {kMax64, kMin64}, {64, kMax64}, {-50, -10}, {kMin64, -1}}) {
    EXPECT_EQ(acq.fastFilterInC(data.data(), tmp.data(), 64, first, last, 0), 1);
    EXPECT_EQ(acq.runFirst, first);
    EXPECT_EQ(acq.runLast, last);
  }
  EXPECT_EQ(data, signal);
  EXPECT_EQ(tmp, std::vector<double>(64, -1.0));
  // An empty stretch first = last still copies data[last] back from tmp (one stage: odd).
  EXPECT_EQ(acq.fastFilterInC(data.data(), tmp.data(), 64, 7, 7, 0), 1);
  EXPECT_EQ(data[7], -1.0);
  data = signal;
  // A stretch from far before the buffer to far past it covers exactly [0, length).
  acq.reset4RunTimeFilter();
  ASSERT_EQ(acq.fastFilterInC(data.data(), tmp.data(), 64, kMin64, kMax64, 3), 1);
  std::vector<double> expect(64);
  literalStage(signal.data(), expect.data(), 0, 64, acq.iirSpecs[0], 0.0);
  for (int i = 0; i < 64; ++i) EXPECT_EQ(data[i], expect[i]) << i;
  // Length 0 or negative: nothing is filtered however wide the stretch.
  data = signal;
  for (std::int64_t length : {std::int64_t{0}, std::int64_t{-5}, kMin64})
    EXPECT_EQ(acq.fastFilterInC(data.data(), tmp.data(), length, 0, 64, 0), 1);
  EXPECT_EQ(data, signal);
}

TEST(AcqHostile, StageRoutinesStartANegativeStretchAtZero) {
  CDigitFiltCoefMak01ButterworthAcq02Prcs acq;
  filter_iirspec s = designedStage(1, 2, 5.0, 0.0, 1000.0);
  const std::vector<double> x = testSignal(32);
  std::vector<double> y(32, 0.0), expect(32, 0.0);
  acq.reset4RunTimeFilter();
  ASSERT_EQ(acq.diirInC(const_cast<double*>(x.data()), y.data(), -100, 32, &s), 1);
  EXPECT_EQ(acq.baseline, x[0]);
  literalStage(x.data(), expect.data(), 0, 32, s, x[0]);
  EXPECT_EQ(y, expect);
  // diirInOutC computes the first sample of its stretch only: none when that lies before 0.
  std::vector<double> z(32, 9.0);
  EXPECT_EQ(acq.diirInOutC(x.data(), z.data(), -1, 5, &s), 1);
  EXPECT_EQ(z, std::vector<double>(32, 9.0));
  EXPECT_EQ(acq.diirInC(const_cast<double*>(x.data()), y.data(), kMax64, kMin64, &s), 0);
  EXPECT_EQ(acq.diirInC(const_cast<double*>(x.data()), y.data(), 0, 5, nullptr), 0);
}

TEST(AcqHostile, InOutStretchAtOrPastTheLengthWritesNothing) {
  CDigitFiltCoefMak01ButterworthAcq02Prcs acq;
  const std::vector<double> in = testSignal(16);
  std::vector<double> out(16, 3.0), tmp(16, 4.0);
  acq.reset4RunTimeFilter();
  // No stage: the pass-through copy is cut at the buffer.
  EXPECT_EQ(acq.fastFilterInOutC(in.data(), out.data(), tmp.data(), 16, 10, kMax64, 0), 0);
  for (int i = 0; i < 16; ++i) EXPECT_EQ(out[i], i >= 10 ? in[i] : 3.0) << i;
  acq.iirSpecs[0] = designedStage(0, 2, 0.0, 100.0, 1000.0);
  std::fill(out.begin(), out.end(), 3.0);
  EXPECT_EQ(acq.fastFilterInOutC(in.data(), out.data(), tmp.data(), 16, 16, 40, 0), 1);
  EXPECT_EQ(acq.fastFilterInOutC(in.data(), out.data(), tmp.data(), 16, kMin64, -3, 0), 1);
  EXPECT_EQ(out, std::vector<double>(16, 3.0));
}

TEST(AcqHostile, NaNAndInfiniteCoefficientsOrSamplesStayInTheStretch) {
  CDigitFiltCoefMak01ButterworthAcq02Prcs acq;
  acq.iirSpecs[0] = designedStage(0, 4, 0.0, 100.0, 1000.0);
  acq.iirSpecs[0].coefs[22] = kNaN;
  acq.iirSpecs[1] = designedStage(1, 4, 0.0, 1e300, 1000.0);  // refused: stays undesigned
  acq.iirSpecs[1].enabled = 1;
  acq.iirSpecs[1].numCoefs = 3;
  acq.iirSpecs[1].coefs[0] = kInf;
  std::vector<double> data = testSignal(48), tmp(48, 0.0);
  data[20] = kNaN;
  acq.reset4RunTimeFilter();
  ASSERT_EQ(acq.fastFilterInC(data.data(), tmp.data(), 48, 8, 24, 0), 1);
  // Outside the stretch (and data[24], copied back from tmp) nothing is touched.
  for (int i = 0; i < 48; ++i) {
    if (i < 8 || i > 24) {
      EXPECT_FALSE(std::isnan(data[i])) << i;
    }
  }
  EXPECT_EQ(acq.stagesRun, 2);
}

// ---- prototype-pole sections --------------------------------------------------------------------

TEST(PolesHostile, CountsBeyondAMillionPolesAreRefused) {
  CDigitFiltCoefMak01Butterworth03qv p;
  ASSERT_EQ(p.ukButterworthLowPass(0.1, 4), 1);
  // A copy keeps the shared arrays of the design it was taken from.
  CDigitFiltCoefMak01Butterworth03qv copy(p);
  const double a1 = copy.denTables[1][0];
  for (std::int64_t n : {kMax64, std::int64_t{1} << 40, (std::int64_t{1} << 20) + 1}) {
    EXPECT_EQ(p.ukButterworthPoles(0.1, n), 0) << n;
    EXPECT_EQ(p.poleRe, nullptr);
    EXPECT_EQ(p.ukButterworthLowPass(0.1, n), 0) << n;
    EXPECT_EQ(p.numTables, nullptr);
    EXPECT_EQ(p.ukButterworthHighPass(0.1, n), 0) << n;
    // INT64_MAX is odd: rounding it up would overflow.
    EXPECT_EQ(p.ukButterworthBandPass(0.1, 0.2, n), 0) << n;
    EXPECT_EQ(p.denTables, nullptr);
  }
  EXPECT_EQ(copy.denTables[1][0], a1);
}

TEST(PolesHostile, NegativeAndZeroCountsPlaceNothing) {
  CDigitFiltCoefMak01Butterworth03qv p;
  for (std::int64_t n : {std::int64_t{0}, std::int64_t{-1}, kMin64}) {
    EXPECT_EQ(p.ukButterworthPoles(0.1, n), 1) << n;
    EXPECT_EQ(p.poleCount, n);
    EXPECT_EQ(p.ukButterworthLowPass(0.1, n), 1) << n;
    EXPECT_EQ(p.ukButterworthHighPass(0.1, n), 1) << n;
    EXPECT_EQ(p.ukButterworthBandPass(0.1, 0.2, n), 1) << n;
  }
  // n = 0 places one pole pair at x = pi / 0: NaN, as the formula gives.
  ASSERT_EQ(p.ukButterworthPoles(0.1, 0), 1);
  EXPECT_TRUE(std::isnan(p.poleRe[1]));
}

TEST(PolesHostile, WildFrequenciesGiveTheFormulasValues) {
  CDigitFiltCoefMak01Butterworth03qv p;
  // f = 0.5: t = tan(pi/2) is huge, the poles sit at z = -1 within rounding.
  ASSERT_EQ(p.ukButterworthLowPass(0.5, 2), 1);
  EXPECT_NEAR(p.poleRe[1], -1.0, 1e-9);
  ASSERT_EQ(p.ukButterworthLowPass(kNaN, 2), 1);
  EXPECT_TRUE(std::isnan(p.denTables[1][0]));
  ASSERT_EQ(p.ukButterworthBandPass(kInf, -kInf, 3), 1);  // designs for 4
  EXPECT_TRUE(std::isnan(p.denTables[1][0]));
  EXPECT_EQ(p.denTables[1][3], 0.0);  // read from the zero-filled spare slots

  double a1[4] = {}, a2[4] = {}, b1[4] = {}, b2[4] = {}, g[4] = {};
  std::int64_t sections = -1;
  double sum = -1.0;
  EXPECT_EQ(p.paButterworthCoef02(100.0, 0.001, 0, a1, a2, b1, b2, g, &sections, &sum), 1);
  EXPECT_EQ(sections, 0);
  EXPECT_EQ(sum, 0.0);
  // n = -1 is odd: one first-order section at index 1.
  EXPECT_EQ(p.paButterworthCoef02(100.0, 0.001, -1, a1, a2, b1, b2, g, &sections, &sum), 1);
  EXPECT_EQ(sections, 1);
  EXPECT_EQ(b1[1], 1.0);
  // n = -5 and INT_MIN + 1 put the first-order section at index -1 and below: not written.
  for (int n : {-5, std::numeric_limits<int>::min() + 1}) {
    b1[0] = 7.0;
    EXPECT_EQ(p.paButterworthCoef02(100.0, 0.001, n, a1 + 1, a2 + 1, b1 + 1, b2 + 1, g + 1,
                                    &sections, &sum), 1);
    EXPECT_EQ(sections, n / 2 + 1);
    EXPECT_EQ(b1[0], 7.0);
    EXPECT_TRUE(std::isfinite(sum));
  }
  // f = 0: t = 0, the sum divides by t^2 = 0 and the gain is 0.
  EXPECT_EQ(p.paButterworthCoef02(0.0, 0.001, 2, a1, a2, b1, b2, g, &sections, &sum), 1);
  EXPECT_TRUE(std::isnan(sum));
  EXPECT_EQ(g[1], 0.0);
  // Huge arguments are reduced by whole turns of the shortened pi before tan.
  EXPECT_EQ(p.paButterworthCoef02(1e300, 1.0, 2, a1, a2, b1, b2, g, &sections, &sum), 1);
  EXPECT_EQ(p.paButterworthCoef02(1.0, 1.0, 2, nullptr, a2, b1, b2, g, &sections, &sum), 0);
}

// ---- acquisition bank ---------------------------------------------------------------------------

CFilterDcLtSetAcqqv lowPassSettings(double rate, double low) {
  CFilterDcLtSetAcqqv s;
  s.acqSampleRate = rate;
  s.channelCount = 1;
  s.lowPassOn = 1;
  s.lowPassFreq = low;
  return s;
}

TEST(BankHostile, RatesThatAreNotPositiveAreRefusedUntouched) {
  for (double rate : {0.0, -0.0, -1000.0, -kInf, -kDenorm}) {
    MessageCapture capture;
    CDigitFiltCoefMak01ButterworthAcqqv bank;
    CFilterDcLtSetAcqqv s = lowPassSettings(rate, kInf);
    EXPECT_EQ(bank.setCheckCoefs(s), 0) << rate;
    EXPECT_EQ(s.lowPassFreq, kInf);
    ASSERT_EQ(capture.messages.size(), 1u);
    EXPECT_EQ(capture.messages[0], L"Please setup the filter parameters first!");
  }
}

TEST(BankHostile, WildFrequenciesAreClampedAndFilterFinitely) {
  MessageCapture capture;
  CDigitFiltCoefMak01ButterworthAcqqv bank;
  CFilterDcLtSetAcqqv s = lowPassSettings(1000.0, kInf);
  s.highPassOn = 1;
  s.highPassFreq = -kInf;
  s.notchOn[0] = 1;
  s.notchFreqLow[0] = kDenorm;
  s.notchFreqHigh[0] = 1e300;
  s.powerLineOn = 1;
  s.powerLineType = 2;
  s.powerLineFreq = -50.0;  // negative base: limit < 0, so every count is cut
  s.powerLineWidth = kInf;
  s.powerLineHarmonics = std::numeric_limits<std::int32_t>::max();
  EXPECT_EQ(bank.setCheckCoefs(s), 4);
  EXPECT_EQ(s.lowPassFreq, 500.0);
  EXPECT_EQ(s.highPassFreq, 0.1);
  EXPECT_EQ(s.notchFreqLow[0], 0.1);
  EXPECT_EQ(s.notchFreqHigh[0], 500.0);
  EXPECT_EQ(s.powerLineWidth, 500.0);
  // limit = 1000 / -50 * 0.5 = -10: floor(-10.01) = -11, then clamped to 1.
  EXPECT_EQ(s.powerLineHarmonics, 1);
  ASSERT_EQ(capture.messages.size(), 1u);
  EXPECT_EQ(capture.messages[0],
            L"Power-line noise harmonic is out of the filtering range (2147483647->-11)!?");
  // Centre -50 with half width 250: the edges -300 and 200 are limited to 0.1 and 200.
  EXPECT_EQ(bank.iirSpecs[6].enabled, 1);
  EXPECT_EQ(bank.iirSpecs[6].freqLow, 0.1);
  EXPECT_EQ(bank.iirSpecs[6].freqHigh, 200.0);
  EXPECT_EQ(bank.makeAllButterworthCoeffs(true), 4);
  std::vector<double> data = testSignal(200), tmp(200);
  bank.reset4RunTimeFilter();
  ASSERT_EQ(bank.fastFilterInC(data.data(), tmp.data(), 200, 0, 200, 0), 1);
  for (double v : data) EXPECT_TRUE(std::isfinite(v));
}

TEST(BankHostile, NaNRatePassesTheGuardAndKeepsEveryValue) {
  CDigitFiltCoefMak01ButterworthAcqqv bank;
  CFilterDcLtSetAcqqv s = lowPassSettings(kNaN, 123.0);
  // Every comparison with NaN is false: nothing is clamped and every edge passes the check.
  EXPECT_EQ(bank.setCheckCoefs(s), 1);
  EXPECT_EQ(s.lowPassFreq, 123.0);
  EXPECT_EQ(bank.iirSpecs[0].freqHigh, 123.0);
  EXPECT_TRUE(std::isnan(bank.iirSpecs[0].freqLow));
  bank.makeAllButterworthCoeffs(true);
  std::vector<double> data = testSignal(20), tmp(20);
  bank.reset4RunTimeFilter();
  EXPECT_EQ(bank.fastFilterInC(data.data(), tmp.data(), 20, 0, 20, 0), 1);
  EXPECT_FALSE(bank.getFilterInfo(0).empty());
}

TEST(BankHostile, HostStagesWithWildCountsAreDumpedAndRunInsideTheRecord) {
  CDigitFiltCoefMak01ButterworthAcqqv bank;
  CFilterDcLtSetAcqqv s = lowPassSettings(1000.0, 100.0);
  ASSERT_EQ(bank.setCheckCoefs(s), 1);
  bank.makeAllButterworthCoeffs(true);
  filter_iirspec& host = bank.iirSpecs[80];
  host.enabled = 1;
  host.numCoefs = std::numeric_limits<std::int32_t>::max();
  for (double& c : host.coefs) c = 0.0;
  host.coefs[0] = 1.0;
  const std::string info = bank.getFilterInfo(0);
  // 60 pairs listed for the host stage, a[k] past the store printing as 0.
  EXPECT_NE(info.find("0.000000  0.000000 \n\n"), std::string::npos);
  std::vector<double> data = testSignal(100), tmp(100);
  bank.reset4RunTimeFilter();
  EXPECT_EQ(bank.fastFilterInC(data.data(), tmp.data(), 100, 0, 100, 0), 1);
  EXPECT_EQ(bank.stagesRun, 2);
  host.numCoefs = std::numeric_limits<std::int32_t>::min();
  EXPECT_EQ(bank.fastFilterInC(data.data(), tmp.data(), 100, 0, 100, 0), 1);
  for (double v : data) EXPECT_EQ(v, 0.0);  // no terms: the last stage outputs zeros
}

}  // namespace
