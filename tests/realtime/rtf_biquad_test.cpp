#include <cmath>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <digitfilt/digitfilt.h>

#include "support/biquad_support.h"
#include "support/message_capture.h"

namespace {

using digitfilt::test::MessageCapture;
using digitfilt::test::Sos;

BIQUAD_PARAM1* stageAt(CRtf0Basic& c, std::int64_t i) {
  return static_cast<BIQUAD_PARAM1*>(c.biquadList.at(i));
}

Sos sosOf(const BIQUAD_PARAM1& bq) { return digitfilt::test::df1Sos(bq); }

void expectCoefs(const BIQUAD_PARAM1& bq, const Sos& want) {
  digitfilt::test::expectSos(sosOf(bq), want);
  EXPECT_DOUBLE_EQ(bq.a0, 1.0);
}

// Slow reference: each enabled stage, cloned, runs biquad_process over the whole signal in turn.
std::vector<double> referenceCascade(const CRtf1Biquad& c, std::vector<double> x) {
  for (const auto& stage : c.biquadList) {
    if (!stage || !stage->enabled) continue;
    BIQUAD_PARAM1 bq = *static_cast<const BIQUAD_PARAM1*>(stage.get());
    for (double& v : x) {
      const double y = CRtf1Biquad::biquad_process(&bq, v);
      v = std::isnan(static_cast<float>(y)) ? 0.0 : y;
    }
  }
  return x;
}

TEST(Rtf0Basic, BandQAndOrderEstimate) {
  CRtf0Basic b;
  EXPECT_DOUBLE_EQ(b.freqBand2Q(90.0, 110.0), std::sqrt(9900.0) / 20.0);
  // p2 makes the quotient q (numpy): den = ln(tan(0.2 pi) / tan(0.1 pi)),
  // p2 = 20 log10(1 + exp(2 q den) (10^(3/20) - 1)). q = 3.0000001 is 3.0f in single precision,
  // so no extra order; q = 3.000001 is not.
  EXPECT_EQ(b.fltOrder(3.0, 34.41429712501207, 100.0, 200.0, 1000.0), 3.0);
  EXPECT_EQ(b.fltOrder(3.0, 34.414309467131829, 100.0, 200.0, 1000.0), 4.0);
}

TEST(Rtf1Stage, CookbookCoefficientsOfEveryType) {
  const struct {
    RTF_BQ_TYPEX type;
    Sos want;
  } cases[] = {
      {RTF_BQ_LOWPASS, digitfilt::test::kRbjLowPass},
      {RTF_BQ_HIGHPASS, digitfilt::test::kRbjHighPass},
      {RTF_BQ_BANDPASS, digitfilt::test::kRbjBandPass0Db},
      {RTF_BQ_BANDPASS2, digitfilt::test::kRbjBandPass0Db},
      {RTF_BQ_NOTCH, digitfilt::test::kRbjNotch},
      {RTF_BQ_NONE, {1, 0, 0, 0, 0}},
      {RTF_BQ_PEAK, digitfilt::test::kRbjPeak},
      {RTF_BQ_LOWSHELF, digitfilt::test::kRbjLowShelf},
      {RTF_BQ_HIGHSHELF, digitfilt::test::kRbjHighShelf},
      {static_cast<RTF_BQ_TYPEX>(-1), {1, 0, 0, 0, 0}},
      {static_cast<RTF_BQ_TYPEX>(9), {1, 0, 0, 0, 0}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.type);
    std::unique_ptr<BIQUAD_PARAM1> bq(CRtf1Biquad::biquad_create(c.type, 1000, 100.0, 0.8, 6.0));
    EXPECT_EQ(bq->enabled, 0);
    expectCoefs(*bq, c.want);
  }
}

TEST(Rtf1Stage, NamesOfTypes) {
  const char* want[] = {"none",  "low-pass", "high-pass", "band-pass", "band-pass", "notch",
                        "none",  "peak",     "low-shelf", "high-shelf", "none"};
  for (int t = -1; t <= 9; ++t) {
    BIQUAD_PARAM1 bq;
    bq.type = static_cast<RTF_BQ_TYPEX>(t);
    EXPECT_STREQ(CRtf1Biquad::biquad_getFilterName(&bq), want[t + 1]);
  }
}

TEST(Rtf1Stage, ResponseProperties) {
  auto make = [](RTF_BQ_TYPEX t, double q) {
    std::unique_ptr<BIQUAD_PARAM1> bq(CRtf1Biquad::biquad_create(t, 1000, 100.0, q, 6.0));
    return sosOf(*bq);
  };
  const double r = 1000.0, half = std::sqrt(0.5), g = std::pow(10.0, 6.0 / 20.0);
  using digitfilt::test::sosMagnitude;
  const Sos lp = make(RTF_BQ_LOWPASS, half), hp = make(RTF_BQ_HIGHPASS, half);
  EXPECT_NEAR(sosMagnitude(lp, 0.0, r), 1.0, 1e-12);
  EXPECT_NEAR(sosMagnitude(lp, 100.0, r), half, 1e-12);
  EXPECT_NEAR(sosMagnitude(lp, 500.0, r), 0.0, 1e-12);
  EXPECT_NEAR(sosMagnitude(hp, 0.0, r), 0.0, 1e-12);
  EXPECT_NEAR(sosMagnitude(hp, 100.0, r), half, 1e-12);
  EXPECT_NEAR(sosMagnitude(hp, 500.0, r), 1.0, 1e-12);
  EXPECT_NEAR(sosMagnitude(make(RTF_BQ_BANDPASS, 2.0), 100.0, r), 1.0, 1e-12);
  EXPECT_NEAR(sosMagnitude(make(RTF_BQ_NOTCH, 2.0), 100.0, r), 0.0, 1e-12);
  EXPECT_NEAR(sosMagnitude(make(RTF_BQ_PEAK, 2.0), 100.0, r), g, 1e-12);
  EXPECT_NEAR(sosMagnitude(make(RTF_BQ_LOWSHELF, 2.0), 0.0, r), g, 1e-12);
  EXPECT_NEAR(sosMagnitude(make(RTF_BQ_LOWSHELF, 2.0), 500.0, r), 1.0, 1e-12);
  EXPECT_NEAR(sosMagnitude(make(RTF_BQ_HIGHSHELF, 2.0), 500.0, r), g, 1e-12);
}

TEST(Rtf1Stage, RingHistoryAndRecalculation) {
  std::unique_ptr<BIQUAD_PARAM1> bq(CRtf1Biquad::biquad_create(RTF_BQ_LOWPASS, 1000, 100, 0.8, 0));
  // Direct form I by hand against the ring.
  double x1 = 0, x2 = 0, y1 = 0, y2 = 0;
  for (int n = 0; n < 7; ++n) {
    const double x = n == 0 ? 1.0 : 0.25 * n;
    const double want = bq->b0 * x + bq->b1 * x1 + bq->b2 * x2 - bq->a1 * y1 - bq->a2 * y2;
    EXPECT_EQ(CRtf1Biquad::biquad_process(bq.get(), x), want);
    x2 = x1, x1 = x, y2 = y1, y1 = want;
  }
  EXPECT_EQ(bq->ringIndex, 1u);
  CRtf1Biquad::biquad_setFc(bq.get(), 50.0);  // rewinds the ring but keeps the history
  EXPECT_EQ(bq->ringIndex, 0u);
  EXPECT_EQ(bq->yHist[0], y1);
  std::unique_ptr<BIQUAD_PARAM1> copy(CRtf1Biquad::biquad_clone(bq.get()));
  CRtf1Biquad::biquad_process(bq.get(), 1.0);
  CRtf1Biquad::biquad_clear(bq.get());
  EXPECT_EQ(bq->ringIndex, 1u);
  EXPECT_EQ(bq->xHist[0], 0.0);
  EXPECT_EQ(copy->yHist[0], y1);  // the clone is a separate record
}

TEST(Rtf1Cascade, NotReadySettingsAreRefused) {
  CRtf1Biquad c;
  CFilterDcLtSetAcqqv s = digitfilt::test::fullSettings();
  s.channelCount = 0;
  MessageCapture cap;
  EXPECT_EQ(c.setCheckCoefs(s), 0);
  ASSERT_EQ(cap.messages.size(), 1u);
  EXPECT_EQ(cap.messages[0], L"Please setup the filter parameters first!");
  EXPECT_EQ(s.lowPassFreq, 700.0);  // untouched
  EXPECT_EQ(c.lastIndex, -1);
}

TEST(Rtf1Cascade, StageOrderFromFullSettings) {
  CRtf1Biquad c;
  CFilterDcLtSetAcqqv s = digitfilt::test::fullSettings();
  MessageCapture cap;
  const auto want = digitfilt::test::fullSettingsStages(RTF_BQ_LOWSHELF);
  ASSERT_EQ(c.setCheckCoefs(s), static_cast<int>(want.size()));
  EXPECT_TRUE(cap.messages.empty());
  ASSERT_EQ(c.biquadList.size(), static_cast<std::int64_t>(want.size()));
  for (std::size_t i = 0; i < want.size(); ++i) {
    SCOPED_TRACE(i);
    const BIQUAD_PARAM1* bq = stageAt(c, i);
    EXPECT_EQ(bq->type, want[i].type);
    EXPECT_NEAR(bq->fc, want[i].fc, 1e-12);
    EXPECT_EQ(bq->enabled, 1);
    EXPECT_EQ(bq->sampleRate, 1000.0);
    EXPECT_EQ(bq->q, 0.8);
    EXPECT_EQ(bq->peakGain, 6.0);
    EXPECT_EQ(bq->b0, 0.0);  // designed only by makeAllBiquadCoeffs
  }
  // Clamped values are written back.
  EXPECT_EQ(s.lowPassFreq, 500.0);
  EXPECT_EQ(s.highPassFreq, 0.1);
  EXPECT_EQ(s.notchFreqHigh[5], 0.5);
  EXPECT_EQ(s.bqPeakFreq, 500.0);
  EXPECT_EQ(c.minHighEdge, 0.5);
  // The high-shelf request made a second low-shelf stage.
  EXPECT_STREQ(CRtf1Biquad::biquad_getFilterName(stageAt(c, want.size() - 1)), "low-shelf");

  EXPECT_EQ(c.makeAllBiquadCoeffs(1), static_cast<int>(want.size()));
  EXPECT_EQ(c.lastIndex, static_cast<int>(want.size()) - 1);
  EXPECT_EQ(stageAt(c, 0)->a0, 1.0);
  stageAt(c, 3)->enabled = 0;
  EXPECT_EQ(c.getEnableFilters(), static_cast<int>(want.size()) - 1);
  EXPECT_EQ(c.makeAllBiquadCoeffs(1), static_cast<int>(want.size()) - 1);
  EXPECT_EQ(c.makeAllBiquadCoeffs(0), static_cast<int>(want.size()));
  EXPECT_EQ(c.cleanCoefs(), 1);
  EXPECT_EQ(c.biquadList.size(), 0);
  EXPECT_EQ(c.lastIndex, -1);
}

TEST(Rtf1Cascade, AllFlagsOffBuildsNothingAndPassesData) {
  CRtf1Biquad c;
  CFilterDcLtSetAcqqv s = digitfilt::test::readySettings();
  MessageCapture cap;
  EXPECT_EQ(c.setCheckCoefs(s), 0);
  EXPECT_TRUE(cap.messages.empty());
  EXPECT_EQ(c.makeAllBiquadCoeffs(0), 0);
  std::vector<double> x = digitfilt::test::randomSignal(64, 1);
  const std::vector<double> before = x;
  EXPECT_EQ(c.filtDataAcq(x.data(), 64, 0, 63, 0), 1);
  EXPECT_EQ(x, before);
  EXPECT_EQ(c.filtDataAcq(nullptr, 64, 0, 63, 0), 0);
  EXPECT_EQ(c.getFilterInfo(0), "");
}

TEST(Rtf1Cascade, PowerLineHarmonicsLimitedWithMessage) {
  CRtf1Biquad c;
  CFilterDcLtSetAcqqv s = digitfilt::test::readySettings(1000.0);
  s.powerLineOn = 1;
  s.powerLineType = 1;
  s.powerLineHarmonics = 20;
  s.powerLineWidth = 120.0;  // half 60: the 9th harmonic's upper edge reaches 510 Hz
  MessageCapture cap;
  EXPECT_EQ(c.setCheckCoefs(s), 8);
  ASSERT_EQ(cap.messages.size(), 1u);
  EXPECT_EQ(cap.messages[0], L"Power-line noise harmonic is out of the filtering range (20->9)!?");
  EXPECT_EQ(s.powerLineHarmonics, 9);
  EXPECT_NEAR(stageAt(c, 0)->fc, std::sqrt(0.1 * 110.0), 1e-12);  // lower edge raised to minFreq
  EXPECT_NEAR(stageAt(c, 7)->fc, std::sqrt(340.0 * 460.0), 1e-12);

  s.powerLineWidth = 4.0;
  s.powerLineHarmonics = 20;
  EXPECT_EQ(c.setCheckCoefs(s), 9);
  // A custom base is used unclamped, then clamped in the record; the count is kept in 1..60.
  s.powerLineType = 2;
  s.powerLineFreq = 0.05;
  s.powerLineHarmonics = 0;
  EXPECT_EQ(c.setCheckCoefs(s), 1);
  EXPECT_EQ(s.powerLineFreq, 0.1);
  EXPECT_EQ(s.powerLineHarmonics, 1);
}

TEST(Rtf1Cascade, BlocksMatchStageAfterStageReference) {
  CRtf1Biquad c;
  CFilterDcLtSetAcqqv s = digitfilt::test::inBandSettings();
  c.setCheckCoefs(s);
  c.makeAllBiquadCoeffs(0);
  stageAt(c, 2)->enabled = 0;
  c.biquadList.setAtGrow(c.biquadList.size() + 1, nullptr);  // null entries are skipped
  stageAt(c, 0)->ringIndex = 0xFFFFFFFFu;  // a host-set ring position wraps in 32 bits
  stageAt(c, 1)->ringIndex = 4;
  const std::vector<double> x = digitfilt::test::randomSignal(1000, 7);
  const std::vector<double> want = referenceCascade(c, x);
  std::vector<double> y = x;
  ASSERT_EQ(c.filtDataAcq(y.data(), 1000, 5, 4, 0), 1);  // an empty block changes nothing
  std::int64_t start = 0;
  for (std::int64_t len : {1, 2, 5, 100, 333, 559}) {
    ASSERT_EQ(c.filtDataAcq(y.data(), 1000, start, start + len - 1, 0), 1);
    start += len;
  }
  EXPECT_EQ(y, want);  // bit for bit, across block boundaries
  EXPECT_EQ(c.blockStart, 441);
  EXPECT_EQ(c.blockEnd, 999);
  EXPECT_EQ(c.blockLength, 1000);
  EXPECT_EQ(c.blockData, y.data());
}

TEST(Rtf1Cascade, NanOutputWrittenAsZeroAndStageStaysAtZero) {
  CRtf1Biquad c;
  CFilterDcLtSetAcqqv s = digitfilt::test::readySettings();
  s.lowPassOn = 1;
  s.lowPassFreq = 100.0;
  c.setCheckCoefs(s);
  c.makeAllBiquadCoeffs(0);
  std::vector<double> x(12, 1.0);
  x[3] = std::numeric_limits<double>::quiet_NaN();
  c.filtDataAcq(x.data(), 12, 0, 11, 0);
  EXPECT_NE(x[2], 0.0);
  for (int i = 3; i < 12; ++i) EXPECT_EQ(x[i], 0.0) << i;
  EXPECT_TRUE(std::isnan(stageAt(c, 0)->yHist[(stageAt(c, 0)->ringIndex + 2) % 3]));
  std::vector<double> more(4, 1.0);
  c.filtDataAcq(more.data(), 4, 12, 3, 0);  // start > end: nothing filtered
  EXPECT_EQ(more[0], 1.0);
  c.filtDataAcq(more.data(), 4, 0, 3, 0);
  EXPECT_EQ(more, std::vector<double>(4, 0.0));  // no recovery until the history is cleared
  CRtf1Biquad::biquad_clear(stageAt(c, 0));
  more.assign(4, 1.0);
  c.filtDataAcq(more.data(), 4, 0, 3, 0);
  EXPECT_GT(more[3], 0.0);
}

TEST(Rtf1Cascade, BlockBookkeepingAndReset) {
  CRtf1Biquad c;
  double d[8] = {};
  c.filtDataAcq(d, 8, 2, 5, 3);  // first call remembers everything
  EXPECT_EQ(c.firstCall, 0);
  EXPECT_EQ(c.blockChannel, 3);
  c.filtDataAcq(d + 1, 7, 4, 6, 9);  // later calls only move start and end
  EXPECT_EQ(c.blockChannel, 3);
  EXPECT_EQ(c.blockData, d);
  EXPECT_EQ(c.blockLength, 8);
  EXPECT_EQ(c.blockStart, 4);
  EXPECT_EQ(c.blockEnd, 6);
  EXPECT_EQ(c.reset(), 1);
  EXPECT_EQ(c.firstCall, 1);
  EXPECT_EQ(c.blockData, nullptr);
  EXPECT_EQ(c.blockEnd, 0);
}

TEST(Rtf1Cascade, AssignmentCopiesStagesDeeply) {
  CRtf1Biquad a;
  CFilterDcLtSetAcqqv s = digitfilt::test::readySettings();
  s.lowPassOn = s.highPassOn = 1;
  s.lowPassFreq = 100.0;
  s.highPassFreq = 5.0;
  a.setCheckCoefs(s);
  a.makeAllBiquadCoeffs(0);
  a.biquadList.setAtGrow(1, nullptr);  // replaces the high-pass by a null entry
  a.basicStatus = 7;
  CRtf1Biquad b;
  CFilterDcLtSetAcqqv full = digitfilt::test::fullSettings();
  b.setCheckCoefs(full);
  b = a;
  ASSERT_EQ(b.biquadList.size(), 1);  // null entries are not copied
  EXPECT_EQ(b.basicStatus, 7);
  EXPECT_EQ(b.sampleRate, 1000.0);
  EXPECT_NE(b.biquadList.at(0), a.biquadList.at(0));
  std::vector<double> x(10, 1.0);
  b.filtDataAcq(x.data(), 10, 0, 9, 0);
  EXPECT_EQ(stageAt(a, 0)->xHist[0], 0.0);  // the source's history is untouched
  EXPECT_NE(stageAt(b, 0)->xHist[0], 0.0);
  const CRtf1Biquad c(b);
  EXPECT_EQ(static_cast<const BIQUAD_PARAM1*>(c.biquadList.at(0))->xHist[0],
            stageAt(b, 0)->xHist[0]);
}

}  // namespace
