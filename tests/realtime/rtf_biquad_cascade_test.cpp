#include <cmath>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include <digitfilt/digitfilt.h>

#include "support/biquad_support.h"
#include "support/message_capture.h"

namespace {

using digitfilt::test::MessageCapture;
using digitfilt::test::Sos;
using digitfilt::test::sosMagnitude;

using digitfilt::test::expectSos;

Sos sosOf(const BIQUAD_PARAM2& bq) { return digitfilt::test::df1Sos(bq); }
// Transposed direct form II keeps the numerator in a0..a2 and the denominator in b1, b2.
Sos sosOf(const BIQUAD_PARAM3& bq) { return {bq.a0, bq.a1, bq.a2, bq.b1, bq.b2}; }

TEST(Rtf2Biquad, CookbookCoefficientsOfEveryType) {
  const Sos want[] = {digitfilt::test::kRbjLowPass,     digitfilt::test::kRbjHighPass,
                      digitfilt::test::kRbjBandPassSkirt, digitfilt::test::kRbjBandPass0Db,
                      digitfilt::test::kRbjNotch,       digitfilt::test::kRbjAllPass,
                      digitfilt::test::kRbjPeakOctaves, digitfilt::test::kRbjLowShelfSlope,
                      digitfilt::test::kRbjHighShelfSlope};
  CRtf2Biquad c;
  for (int t = 0; t <= 8; ++t) {
    SCOPED_TRACE(t);
    c.biquadParam.x1 = c.biquadParam.y2 = 5.0;
    BIQUAD_PARAM2* bq = c.calcBiquads(t, 6.0, 100.0, 1000.0, 0.8, 0.7);
    ASSERT_EQ(bq, &c.biquadParam);
    expectSos(sosOf(*bq), want[t]);
    EXPECT_EQ(bq->x1, 0.0);
    EXPECT_EQ(bq->y2, 0.0);
    EXPECT_EQ(bq->type, -1);  // parameter fields stay as they were
    EXPECT_EQ(bq->fc, 3.0);
  }
  EXPECT_EQ(c.calcBiquads(9, 6.0, 100.0, 1000.0, 0.8, 0.7), nullptr);
  EXPECT_EQ(c.calcBiquads(-1, 6.0, 100.0, 1000.0, 0.8, 0.7), nullptr);
}

TEST(Rtf2Biquad, CalcBiquadFromRecordAndUnknownType) {
  CRtf2Biquad c;
  BIQUAD_PARAM2 bq;  // defaults: type -1
  bq.x1 = 2.0;
  EXPECT_EQ(c.calcBiquad(&bq), 0);
  EXPECT_EQ(bq.x1, 2.0);
  EXPECT_EQ(bq.b0, 0.0);
  EXPECT_EQ(c.calcBiquad(nullptr), 0);
  bq.type = 5;
  bq.fc = 100.0;
  bq.sampleRate = 1000.0;
  bq.q = 0.8;
  EXPECT_EQ(c.calcBiquad(&bq), 1);
  EXPECT_EQ(bq.x1, 0.0);
  expectSos(sosOf(bq), digitfilt::test::kRbjAllPass);
  for (double f : {0.0, 37.0, 100.0, 321.0, 500.0})
    EXPECT_NEAR(sosMagnitude(sosOf(bq), f, 1000.0), 1.0, 1e-12);
  // filterB is direct form I.
  const double y0 = c.filterB(1.0, &bq), y1 = c.filterB(0.0, &bq);
  EXPECT_EQ(y0, bq.b0 * 1.0 + 0.0);
  EXPECT_EQ(y1, bq.b1 * 1.0 - bq.a1 * y0);
  EXPECT_EQ(bq.x2, 1.0);
  EXPECT_EQ(bq.y1, y1);
}

TEST(Rtf2Biquad, SettingsCascadeAllPassAndRealHighShelf) {
  CRtf2Biquad c;
  CFilterDcLtSetAcqqv s = digitfilt::test::inBandSettings();
  const auto want = digitfilt::test::fullSettingsStages(8);
  ASSERT_EQ(c.setCheckCoefs(s), static_cast<int>(want.size()));
  for (std::size_t i = 0; i < want.size(); ++i) {
    const auto* bq = static_cast<const BIQUAD_PARAM2*>(c.biquadList.at(i));
    EXPECT_EQ(bq->type, want[i].type) << i;
    EXPECT_EQ(bq->shelfSlope, 0.7);
    EXPECT_EQ(bq->q, 0.8);
  }
  EXPECT_EQ(c.makeAllBiquadCoeffs(0), static_cast<int>(want.size()));
  const auto* allPass = static_cast<const BIQUAD_PARAM2*>(c.biquadList.at(want.size() - 4));
  EXPECT_NEAR(sosMagnitude(sosOf(*allPass), 77.0, 1000.0), 1.0, 1e-12);
  const auto* shelf = static_cast<const BIQUAD_PARAM2*>(c.biquadList.at(want.size() - 1));
  const double boost = std::pow(10.0, 6.0 / 20.0);
  EXPECT_NEAR(sosMagnitude(sosOf(*shelf), 500.0, 1000.0), boost, 1e-12);  // a high shelf
  EXPECT_NEAR(sosMagnitude(sosOf(*shelf), 0.0, 1000.0), 1.0, 1e-12);
}

// Slow reference for the direct-form-I cascade: filterB on copies, stage after stage.
std::vector<double> referenceRtf2(CRtf2Biquad& c, std::vector<double> x) {
  for (const auto& stage : c.biquadList) {
    if (!stage || !stage->enabled) continue;
    BIQUAD_PARAM2 bq = *static_cast<const BIQUAD_PARAM2*>(stage.get());
    for (double& v : x) {
      const double y = c.filterB(v, &bq);
      v = std::isnan(static_cast<float>(y)) ? 0.0 : y;
    }
  }
  return x;
}

TEST(Rtf2Biquad, BlocksMatchReferenceAndNanRule) {
  CRtf2Biquad c;
  CFilterDcLtSetAcqqv s = digitfilt::test::inBandSettings();
  c.setCheckCoefs(s);
  c.makeAllBiquadCoeffs(0);
  std::vector<double> x = digitfilt::test::randomSignal(600, 3);
  x[400] = std::numeric_limits<double>::quiet_NaN();
  const std::vector<double> want = referenceRtf2(c, x);
  std::vector<double> y = x;
  c.filtDataAcq(y.data(), 600, 0, 250, 0);
  c.filtDataAcq(y.data(), 600, 251, 599, 0);
  EXPECT_EQ(y, want);
  // The first stage is stuck on its NaN; later stages only see its zeros.
  EXPECT_TRUE(std::isnan(static_cast<const BIQUAD_PARAM2*>(c.biquadList.at(0))->y1));
}

TEST(Rtf3Biquad, NormalisedCoefficientsOfEveryType) {
  const struct {
    int type;
    double gain;
    Sos want;
  } cases[] = {
      {0, 6.0, digitfilt::test::kRbjLowPass},
      {1, 6.0, digitfilt::test::kRbjHighPass},
      {2, 6.0, digitfilt::test::kRbjBandPass0Db},
      {3, 6.0, digitfilt::test::kRbjBandPass0Db},
      {4, 6.0, digitfilt::test::kRbjNotch},
      {6, 6.0, digitfilt::test::kNormPeakUp},
      {6, -6.0, digitfilt::test::kNormPeakDown},
      {7, 6.0, digitfilt::test::kNormLowShelfUp},
      {7, -6.0, digitfilt::test::kNormLowShelfDown},
      {8, 6.0, digitfilt::test::kNormHighShelfUp},
      {8, -6.0, digitfilt::test::kNormHighShelfDown},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << c.type << " " << c.gain);
    CRtf3Biquad f(c.type, 100.0, 1000.0, 0.8, c.gain);
    EXPECT_DOUBLE_EQ(f.biquadParam.fc, 0.1);
    EXPECT_EQ(f.biquadParam.sampleRate, 1.0);  // the rate itself is not stored
    expectSos(sosOf(f.biquadParam), c.want);
  }
  // Type 5 and unknown types keep whatever coefficients were there.
  CRtf3Biquad f(0, 100.0, 1000.0, 0.8, 0.0);
  const Sos before = sosOf(f.biquadParam);
  for (int t : {5, 9, -1}) {
    f.setType(t);
    expectSos(sosOf(f.biquadParam), before);
  }
}

TEST(Rtf3Biquad, LowPassSettlesAndPeaksAreReciprocal) {
  CRtf3Biquad lp(0, 1000.0, 8000.0, 0.707, 0.0);
  EXPECT_DOUBLE_EQ(lp.biquadParam.fc, 0.125);
  double y = 0.0;
  for (int n = 0; n < 200; ++n) y = lp.process(1.0);
  EXPECT_NEAR(y, 1.0, 1e-12);

  CRtf3Biquad up(6, 300.0, 8000.0, 2.0, 6.0), down(6, 300.0, 8000.0, 2.0, -6.0);
  for (double f : {0.0, 100.0, 300.0, 1234.0, 4000.0})
    EXPECT_NEAR(sosMagnitude(sosOf(up.biquadParam), f, 8000.0) *
                    sosMagnitude(sosOf(down.biquadParam), f, 8000.0),
                1.0, 1e-12);
  // The recomputation keeps the state.
  lp.setQ(2.0);
  EXPECT_NE(lp.biquadParam.z1, 0.0);
}

TEST(Rtf3Biquad, SettingsCascadeStoresParametersButPassesData) {
  CRtf3Biquad c;
  CFilterDcLtSetAcqqv s = digitfilt::test::fullSettings();
  const auto want = digitfilt::test::fullSettingsStages(8);
  ASSERT_EQ(c.setCheckCoefs(s), static_cast<int>(want.size()));
  for (std::size_t i = 0; i < want.size(); ++i) {
    const auto* bq = static_cast<const BIQUAD_PARAM3*>(c.biquadList.at(i));
    EXPECT_EQ(bq->type, want[i].type) << i;
    EXPECT_NEAR(bq->fc, want[i].fc, 1e-12);  // in Hz
    EXPECT_EQ(bq->sampleRate, 1000.0);
  }
  // makeAllBiquadCoeffs designs the object's own record once per stage, never the stages.
  c.biquadParam.type = 0;
  c.biquadParam.fc = 0.1;
  c.biquadParam.q = 0.8;
  EXPECT_EQ(c.makeAllBiquadCoeffs(1), static_cast<int>(want.size()));
  expectSos(sosOf(c.biquadParam), digitfilt::test::kRbjLowPass);
  const auto* first = static_cast<const BIQUAD_PARAM3*>(c.biquadList.at(0));
  expectSos(sosOf(*first), {1.0, 0.0, 0.0, 0.0, 0.0});
  BIQUAD_PARAM3 other;
  other.type = 1;
  EXPECT_EQ(c.makeCoefs(&other), 1);
  EXPECT_EQ(other.a0, 1.0);  // the argument is ignored

  std::vector<double> x = digitfilt::test::randomSignal(300, 5);
  const std::vector<double> before = x;
  EXPECT_EQ(c.filtDataAcq(x.data(), 300, 0, 299, 0), 1);
  EXPECT_EQ(x, before);
}

TEST(Rtf3Biquad, BlocksMatchProcessxReference) {
  // A host may design the stages itself; the cascade then runs them in transposed form II.
  CRtf3Biquad c;
  CFilterDcLtSetAcqqv s = digitfilt::test::readySettings();
  s.lowPassOn = s.highPassOn = s.bqPeakOn = 1;
  s.lowPassFreq = 200.0;
  s.highPassFreq = 5.0;
  s.bqPeakFreq = 50.0;
  ASSERT_EQ(c.setCheckCoefs(s), 3);
  for (std::int64_t i = 0; i < 3; ++i) {
    auto* bq = static_cast<BIQUAD_PARAM3*>(c.biquadList.at(i));
    const CRtf3Biquad design(bq->type, bq->fc, bq->sampleRate, bq->q, bq->peakGain);
    *bq = design.biquadParam;
    bq->enabled = 1;
  }
  CRtf3Biquad ref = c;
  std::vector<double> x = digitfilt::test::randomSignal(500, 9);
  x[450] = std::numeric_limits<double>::infinity();  // inf - inf: NaN from here on
  std::vector<double> want = x;
  for (std::int64_t i = 0; i < 3; ++i) {
    auto* bq = static_cast<BIQUAD_PARAM3*>(ref.biquadList.at(i));
    for (double& v : want) {
      const double y = ref.processx(v, bq);
      v = std::isnan(static_cast<float>(y)) ? 0.0 : y;
    }
  }
  c.filtDataAcq(x.data(), 500, 0, 99, 0);
  c.filtDataAcq(x.data(), 500, 100, 499, 0);
  EXPECT_EQ(x, want);
  EXPECT_EQ(x[499], 0.0);
}

TEST(Rtf3BiquadMutiChnl, ChannelsKeepTheirOwnState) {
  CRtf3BiquadMutiChnl m(3, 0, 0.1, 0.8, 0.0);
  std::vector<CRtf3Biquad> single(3, CRtf3Biquad(0, 0.1, 1.0, 0.8, 0.0));
  expectSos({m.a0, m.a1, m.a2, m.b1, m.b2}, digitfilt::test::kRbjLowPass);
  for (int n = 0; n < 50; ++n)
    for (int ch = 0; ch < 3; ++ch) {
      const double x = std::sin(0.3 * n * (ch + 1));
      EXPECT_EQ(m.process(x, ch), single[ch].process(x));
    }
  EXPECT_EQ(m.process(1.0, 3), 0.0);  // no state for that channel
  EXPECT_EQ(m.process(1.0, -1), 0.0);
  CRtf3BiquadMutiChnl shared = m;  // copies share the state arrays
  shared.process(1.0, 0);
  EXPECT_EQ(m.z1s[0], shared.z1s[0]);
  m.setBiquad(6, 0.2, 1.0, 6.0);
  const BIQUAD_PARAM3 peak = CRtf3Biquad(6, 0.2, 1.0, 1.0, 6.0).biquadParam;
  expectSos({m.a0, m.a1, m.a2, m.b1, m.b2}, sosOf(peak));
  CRtf3BiquadMutiChnl empty;
  EXPECT_EQ(empty.process(1.0, 0), 0.0);
}

}  // namespace
