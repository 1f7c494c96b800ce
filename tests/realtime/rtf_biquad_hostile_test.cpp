// Hostile values through the biquad cascades, the facade and the single sections: settings that
// are not ready or not finite, block bounds outside the buffer, non-finite samples and
// parameters, foreign records in a stage list. Buffers are sized exactly, so AddressSanitizer
// reports any access outside them.
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include <digitfilt/digitfilt.h>

#include "support/biquad_support.h"
#include "support/message_capture.h"

namespace {

using digitfilt::test::MessageCapture;
using digitfilt::test::fullSettings;
using digitfilt::test::randomSignal;
using digitfilt::test::readySettings;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kDenorm = std::numeric_limits<double>::denorm_min();
constexpr std::int64_t kMin64 = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t kMax64 = std::numeric_limits<std::int64_t>::max();
constexpr std::int32_t kMin32 = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t kMax32 = std::numeric_limits<std::int32_t>::max();

const std::wstring kNotReady = L"Please setup the filter parameters first!";

bool anyNan(const std::vector<double>& v) {
  for (double x : v)
    if (std::isnan(x)) return true;
  return false;
}

// A one-stage low-pass cascade at 1000 Hz. The stages of CRtf3Biquad are never designed, so a
// gain is set by hand to make its writes visible.
template <class C>
void buildLowPass(C& c) {
  CFilterDcLtSetAcqqv s = readySettings(1000.0);
  s.lowPassOn = 1;
  s.lowPassFreq = 100.0;
  ASSERT_EQ(c.setCheckCoefs(s), 1);
  c.makeAllBiquadCoeffs(0);
  if constexpr (std::is_same_v<C, CRtf3Biquad>)
    static_cast<BIQUAD_PARAM3*>(c.biquadList.at(0))->a0 = 2.0;
}

template <class C>
void expectNotReadyRefused(double rate, std::int32_t channels) {
  SCOPED_TRACE(testing::Message() << "rate " << rate << " channels " << channels);
  C c;
  CFilterDcLtSetAcqqv s = fullSettings();
  s.acqSampleRate = rate;
  s.channelCount = channels;
  MessageCapture cap;
  EXPECT_EQ(c.setCheckCoefs(s), 0);
  ASSERT_EQ(cap.messages.size(), 1u);
  EXPECT_EQ(cap.messages[0], kNotReady);
  EXPECT_EQ(s.lowPassFreq, 700.0);  // untouched
  EXPECT_EQ(s.bqPeakFreq, 900.0);
}

TEST(BiquadHostileSettings, NonPositiveRatesAndChannelCountsAreRefused) {
  for (double rate : {0.0, -0.0, -1.0, -kInf, -kDenorm}) {
    expectNotReadyRefused<CRtf1Biquad>(rate, 1);
    expectNotReadyRefused<CRtf2Biquad>(rate, 1);
    expectNotReadyRefused<CRtf3Biquad>(rate, 1);
  }
  for (std::int32_t channels : {0, -1, kMin32}) {
    expectNotReadyRefused<CRtf1Biquad>(1000.0, channels);
    expectNotReadyRefused<CRtf2Biquad>(1000.0, channels);
    expectNotReadyRefused<CRtf3Biquad>(1000.0, channels);
  }
  for (std::int32_t cls : {0, 1, 2}) {
    CRtfBiquadFace face;
    face.classIndex = cls;
    CFilterDcLtSetAcqqv s = fullSettings();
    s.acqSampleRate = -1000.0;
    MessageCapture cap;
    EXPECT_EQ(face.setCheckCoefs(s), 0);
    EXPECT_EQ(cap.messages, std::vector<std::wstring>{kNotReady});
  }
}

// A NaN rate passes the guard (it is not <= 0); every clamp compares false and keeps the values,
// the coefficients come out NaN and the NaN rule writes zeros.
TEST(BiquadHostileSettings, NanRateBuildsStagesThatWriteZeros) {
  const std::size_t stages = digitfilt::test::fullSettingsStages(8).size();
  auto check = [&](auto& c, bool passesData) {
    CFilterDcLtSetAcqqv s = fullSettings();
    s.acqSampleRate = kNaN;
    MessageCapture cap;
    EXPECT_EQ(c.setCheckCoefs(s), static_cast<int>(stages));
    EXPECT_TRUE(cap.messages.empty());  // the harmonic limit is NaN: no count is reduced
    EXPECT_EQ(s.lowPassFreq, 700.0);
    EXPECT_EQ(s.powerLineHarmonics, 3);
    c.makeAllBiquadCoeffs(0);
    const std::vector<double> x = randomSignal(32, 5);
    std::vector<double> y = x;
    EXPECT_EQ(c.filtDataAcq(y.data(), 32, 0, 31, 0), 1);
    EXPECT_EQ(y, passesData ? x : std::vector<double>(32, 0.0));
  };
  CRtf1Biquad one;
  check(one, false);
  CRtf2Biquad two;
  check(two, false);
  CRtf3Biquad three;  // its stages are never designed: the data passes unchanged
  check(three, true);
}

TEST(BiquadHostileSettings, InfiniteRateRaisesEveryFrequencyToInfinity) {
  CRtf1Biquad c;
  CFilterDcLtSetAcqqv s = fullSettings();
  s.acqSampleRate = kInf;
  MessageCapture cap;
  // Half the power-line width is infinite too, so the comb stops at its first harmonic.
  EXPECT_EQ(c.setCheckCoefs(s), static_cast<int>(digitfilt::test::fullSettingsStages(7).size()) - 3);
  EXPECT_TRUE(cap.messages.empty());
  EXPECT_EQ(s.lowPassFreq, kInf);
  EXPECT_EQ(s.highPassFreq, kInf);
  EXPECT_EQ(s.notchFreqHigh[0], kInf);
  EXPECT_EQ(s.powerLineWidth, kInf);
  c.makeAllBiquadCoeffs(0);
  std::vector<double> y(16, 1.0);
  c.filtDataAcq(y.data(), 16, 0, 15, 0);
  EXPECT_EQ(y, std::vector<double>(16, 0.0));
}

TEST(BiquadHostileSettings, NonFiniteAndOutOfRangeFrequenciesAreClamped) {
  CRtf2Biquad c;
  CFilterDcLtSetAcqqv s = readySettings(1000.0);
  s.lowPassOn = s.highPassOn = s.notchOn[0] = s.bqLowShelfOn = s.bqHighShelfOn = 1;
  s.lowPassFreq = 1e300;
  s.highPassFreq = -5.0;
  s.notchFreqLow[0] = -kInf;
  s.notchFreqHigh[0] = kInf;  // the width range tops out at half the rate too
  s.bqLowShelfFreq = kDenorm;
  s.bqHighShelfFreq = kNaN;   // comparisons with NaN are false: kept as it is
  EXPECT_EQ(c.setCheckCoefs(s), 5);
  EXPECT_EQ(s.lowPassFreq, 500.0);
  EXPECT_EQ(s.highPassFreq, 0.1);
  EXPECT_EQ(s.notchFreqLow[0], 0.1);
  EXPECT_EQ(s.notchFreqHigh[0], 500.0);
  EXPECT_EQ(s.bqLowShelfFreq, 0.1);
  EXPECT_TRUE(std::isnan(s.bqHighShelfFreq));
  c.makeAllBiquadCoeffs(0);
  std::vector<double> y = randomSignal(64, 9);
  c.filtDataAcq(y.data(), 64, 0, 63, 0);
  EXPECT_FALSE(anyNan(y));
  EXPECT_EQ(y.back(), 0.0);  // the NaN-centred shelf silences the cascade
}

struct PowerLineCase {
  std::int32_t type;
  double base;
  std::int32_t harmonics;
  int stages;
  std::int32_t harmonicsAfter;
  std::vector<std::wstring> messages;
};

TEST(BiquadHostileSettings, WildPowerLineValuesKeepTheCombBounded) {
  const std::wstring limitText = L"Power-line noise harmonic is out of the filtering range ";
  const PowerLineCase cases[] = {
      {1, 0.0, kMax32, 9, 9, {limitText + L"(2147483647->9)!?"}},
      {1, 0.0, kMin32, 1, 1, {}},
      // A zero base gives an infinite limit: the count is only clamped, every centre is 0 Hz.
      {2, 0.0, 500, 60, 60, {}},
      {2, 1e-300, kMax32, 60, 60, {}},
      // A negative base makes the limit negative: the count drops below 1, then back to 1.
      {2, -50.0, 3, 1, 1, {limitText + L"(3->-11)!?"}},
      // A limit too large to convert keeps the count.
      {2, -1e-300, 5, 5, 5, {limitText + L"(5->5)!?"}},
      {2, kNaN, 5, 5, 5, {}},
  };
  for (const PowerLineCase& k : cases) {
    SCOPED_TRACE(testing::Message() << "base " << k.base << " harmonics " << k.harmonics);
    CRtf1Biquad c;
    CFilterDcLtSetAcqqv s = readySettings(1000.0);
    s.powerLineOn = 1;
    s.powerLineType = k.type;
    s.powerLineFreq = k.base;
    s.powerLineWidth = 4.0;
    s.powerLineHarmonics = k.harmonics;
    MessageCapture cap;
    EXPECT_EQ(c.setCheckCoefs(s), k.stages);
    EXPECT_EQ(s.powerLineHarmonics, k.harmonicsAfter);
    EXPECT_EQ(cap.messages, k.messages);
    for (const auto& stage : c.biquadList) {
      const double fc = static_cast<const BIQUAD_PARAM1*>(stage.get())->fc;
      EXPECT_TRUE(fc >= 0.1 && fc <= 500.0) << fc;  // every edge clamped into range
    }
  }
}

struct Bounds {
  std::int64_t length, start, end;
  std::int64_t first, last;  // the part of the buffer that may change
};

template <class C>
void checkBoundsStayInsideTheBuffer() {
  constexpr std::int64_t n = 16;
  const std::vector<double> x = randomSignal(n, 3);
  const Bounds cases[] = {
      {n, 3, 9, 3, 9},          {n, -5, n + 5, 0, n - 1}, {n, kMin64, kMax64, 0, n - 1},
      {n, 4, 2, 4, 3},          {n, n, n + 3, n, n - 1},  {n, kMax64, kMin64, n, -1},
      {1, 0, 0, 0, 0},          {1, -1, kMax64, 0, 0},    {0, 0, 0, 0, -1},
      {-1, 0, 5, 0, -1},        {kMin64, 0, n, 0, -1},
  };
  for (const Bounds& k : cases) {
    SCOPED_TRACE(testing::Message() << "length " << k.length << " start " << k.start << " end "
                                    << k.end);
    const std::int64_t size = k.length < 1 ? 1 : k.length;  // exactly what the caller owns
    std::vector<double> y(x.begin(), x.begin() + size), want = y;
    if (k.first <= k.last) {
      C ref;
      buildLowPass(ref);
      ref.filtDataAcq(want.data() + k.first, k.last - k.first + 1, 0, k.last - k.first, 0);
    }
    C c;
    buildLowPass(c);
    EXPECT_EQ(c.filtDataAcq(y.data(), k.length, k.start, k.end, 7), 1);
    EXPECT_EQ(y, want);
    EXPECT_EQ(c.blockLength, k.length);  // the arguments are remembered as given
    EXPECT_EQ(c.blockStart, k.start);
    EXPECT_EQ(c.blockEnd, k.end);
    EXPECT_EQ(c.blockChannel, 7);
  }
  C c;
  buildLowPass(c);
  EXPECT_EQ(c.filtDataAcq(nullptr, n, 0, n - 1, 0), 0);
  EXPECT_EQ(c.firstCall, 1);  // refused before any bookkeeping
}

TEST(BiquadHostileBlocks, BoundsOutsideTheBufferAreClipped) {
  checkBoundsStayInsideTheBuffer<CRtf1Biquad>();
  checkBoundsStayInsideTheBuffer<CRtf2Biquad>();
  checkBoundsStayInsideTheBuffer<CRtf3Biquad>();
}

template <class C>
void checkEnormousBlock() {
  CFilterDcLtSetAcqqv s = digitfilt::test::inBandSettings();
  C whole, pieces;
  whole.setCheckCoefs(s);
  pieces = whole;
  whole.makeAllBiquadCoeffs(0);
  pieces.makeAllBiquadCoeffs(0);
  constexpr std::int64_t n = std::int64_t{1} << 16;
  const std::vector<double> x = randomSignal(n, 11);
  std::vector<double> a = x, b = x;
  ASSERT_EQ(whole.filtDataAcq(a.data(), n, 0, n - 1, 0), 1);
  std::int64_t start = 0, len = 1;
  while (start < n) {
    const std::int64_t end = std::min(n - 1, start + len - 1);
    ASSERT_EQ(pieces.filtDataAcq(b.data(), n, start, end, 0), 1);
    start = end + 1;
    len = len * 3 % 4097 + 1;
  }
  EXPECT_EQ(a, b);  // bit for bit
  EXPECT_FALSE(anyNan(a));
}

TEST(BiquadHostileBlocks, EnormousBlockEqualsManySmallOnes) {
  checkEnormousBlock<CRtf1Biquad>();
  checkEnormousBlock<CRtf2Biquad>();
}

TEST(BiquadHostileSamples, NonFiniteSamplesSilenceAStageUntilItsHistoryIsCleared) {
  CRtf1Biquad c;
  buildLowPass(c);
  std::vector<double> y(40, 1.0);
  y[10] = kInf;
  c.filtDataAcq(y.data(), 40, 0, 39, 0);
  EXPECT_FALSE(anyNan(y));
  EXPECT_NE(y[9], 0.0);
  for (int i = 20; i < 40; ++i) EXPECT_EQ(y[i], 0.0) << i;
  CRtf1Biquad::biquad_clear(static_cast<BIQUAD_PARAM1*>(c.biquadList.at(0)));
  std::vector<double> z(4, 1.0);
  c.filtDataAcq(z.data(), 4, 0, 3, 0);
  EXPECT_GT(z[3], 0.0);

  // A CRtf3Biquad cascade from the settings passes data through, but an infinite sample leaves
  // inf * 0 = NaN in the state: the sample itself comes out, everything after it as 0.
  CRtf3Biquad three;
  CFilterDcLtSetAcqqv s = readySettings();
  s.lowPassOn = 1;
  three.setCheckCoefs(s);
  three.makeAllBiquadCoeffs(0);
  std::vector<double> w = {1.0, 2.0, -kInf, 3.0, 4.0};
  three.filtDataAcq(w.data(), 5, 0, 4, 0);
  EXPECT_EQ(w, (std::vector<double>{1.0, 2.0, -kInf, 0.0, 0.0}));
  CRtf3Biquad other;
  other.setCheckCoefs(s);
  w = {1.0, kNaN, 3.0};
  other.filtDataAcq(w.data(), 3, 0, 2, 0);
  EXPECT_EQ(w, (std::vector<double>{1.0, 0.0, 0.0}));
}

TEST(BiquadHostileSamples, DenormalAndHugeSamplesNeverComeOutNan) {
  CRtf2Biquad c;
  CFilterDcLtSetAcqqv s = fullSettings();
  c.setCheckCoefs(s);
  c.makeAllBiquadCoeffs(0);
  std::vector<double> y(256);
  for (std::size_t i = 0; i < y.size(); ++i) y[i] = (i % 2 ? -1 : 1) * kDenorm * double(i);
  c.filtDataAcq(y.data(), 256, 0, 255, 0);
  for (double v : y) EXPECT_TRUE(std::isfinite(v)) << v;
  std::vector<double> big(64, 1e308);
  c.filtDataAcq(big.data(), 64, 0, 63, 0);
  EXPECT_FALSE(anyNan(big));
}

TEST(BiquadHostileSections, WildParametersGiveNumbersNotCrashes) {
  // An unknown type passes through whatever the other parameters are.
  for (std::int32_t type : {-1, 9, kMin32, kMax32}) {
    BIQUAD_PARAM1* bq = CRtf1Biquad::biquad_create(static_cast<RTF_BQ_TYPEX>(type), 0, kNaN, 0.0,
                                                   kNaN);
    ASSERT_NE(bq, nullptr);
    EXPECT_EQ(CRtf1Biquad::biquad_process(bq, 3.5), 3.5);
    EXPECT_STREQ(CRtf1Biquad::biquad_getFilterName(bq), "none");
    CRtf1Biquad::biquad_destroy(bq);
  }
  // A zero rate makes w0 infinite: the single-sample step has no NaN rule.
  BIQUAD_PARAM1* lp = CRtf1Biquad::biquad_create(RTF_BQ_LOWPASS, 0, 100.0, 0.7, 0.0);
  EXPECT_TRUE(std::isnan(CRtf1Biquad::biquad_process(lp, 1.0)));
  // A host-set ring position stays inside the three slots: (2^32 - 1) mod 3 = 0, and the step
  // after it wraps in 32 bits to 3 mod 3 = 0 again.
  CRtf1Biquad::biquad_setFc(lp, 100.0);
  CRtf1Biquad::biquad_setFs(lp, 1000.0);
  lp->ringIndex = 0xFFFFFFFFu;
  CRtf1Biquad::biquad_process(lp, 2.0);
  EXPECT_EQ(lp->xHist[0], 2.0);
  EXPECT_EQ(lp->ringIndex, 0u);
  CRtf1Biquad::biquad_destroy(lp);

  CRtf2Biquad two;
  for (int type : {-1, 9, kMin32, kMax32})
    EXPECT_EQ(two.calcBiquads(type, 0.0, 100.0, 1000.0, 0.7, 1.0), nullptr);
  EXPECT_EQ(two.calcBiquad(nullptr), 0);
  for (int type = 0; type <= 8; ++type) {
    // Zero q, zero slope and a zero centre divide by zero; the record is still written.
    ASSERT_NE(two.calcBiquads(type, kInf, 0.0, 1000.0, 0.0, 0.0), nullptr);
    two.filterB(1.0, &two.biquadParam);
  }

  CRtf3Biquad three(0, 100.0, 0.0, 0.7, 0.0);  // fc / 0 = inf
  EXPECT_EQ(three.biquadParam.fc, kInf);
  EXPECT_TRUE(std::isnan(three.process(1.0)));
  CRtf3Biquad keep(0, 100.0, 1000.0, 0.7, 0.0);
  const double a0 = keep.biquadParam.a0;
  keep.setType(kMin32);  // unknown: the old coefficients stay
  EXPECT_EQ(keep.biquadParam.a0, a0);
}

TEST(BiquadHostileSections, MultichannelStateOnlyForItsChannels) {
  for (int count : {0, -1, kMin32}) {
    CRtf3BiquadMutiChnl m(count, 0, 0.1, 0.7, 0.0);
    EXPECT_EQ(m.z1s, nullptr);
    for (int ch : {0, 1, -1}) EXPECT_EQ(m.process(1.0, ch), 0.0);
  }
  CRtf3BiquadMutiChnl m(2, 0, 0.1, 0.7, 0.0);
  m.process(1.0, 0);
  const double z1 = m.z1s[0], z2 = m.z2s[0];
  for (int ch : {2, -1, kMin32, kMax32}) EXPECT_EQ(m.process(5.0, ch), 0.0);
  EXPECT_EQ(m.z1s[0], z1);
  EXPECT_EQ(m.z2s[0], z2);
  EXPECT_EQ(m.z1s[1], 0.0);
}

TEST(BiquadHostileFacade, UnknownClassIndicesAnswerZero) {
  for (std::int32_t cls : {-1, 3, kMin32, kMax32}) {
    SCOPED_TRACE(cls);
    CRtfBiquadFace face;
    face.classIndex = cls;
    CFilterDcLtSetAcqqv s = fullSettings();
    MessageCapture cap;
    EXPECT_EQ(face.setBiquadClass(0, 1), 0);
    EXPECT_EQ(face.getBiquad(1), nullptr);
    EXPECT_EQ(face.setCheckCoefs(s), 0);
    EXPECT_EQ(s.lowPassFreq, 700.0);
    EXPECT_TRUE(cap.messages.empty());
    EXPECT_EQ(face.makeAllBiquadCoeffs(0), 0);
    std::vector<double> y = {1.0, 2.0};
    EXPECT_EQ(face.filtDataAcq(y.data(), 2, 0, 1, 0), 0);
    EXPECT_EQ(y, (std::vector<double>{1.0, 2.0}));
    EXPECT_EQ(face.reset(), 0);
    EXPECT_EQ(face.getEnableFilters(), 0);
    EXPECT_EQ(face.cleanCoefs(), 0);
    EXPECT_EQ(face.getFilterInfo(cls), "");
    CRtfBiquadFace copy;
    copy.classIndex = 0;
    copy.setBiquadClass(0, 1);
    copy = face;
    EXPECT_EQ(copy.classIndex, cls);
    EXPECT_EQ(copy.biquad1, nullptr);
    EXPECT_EQ(face.cleanFlt(), 1);
  }
}

TEST(BiquadHostileList, ForeignAndNullRecordsAreSkipped) {
  CRtf1Biquad one, plain;
  buildLowPass(one);
  buildLowPass(plain);
  auto foreign2 = std::make_unique<BIQUAD_PARAM2>();
  foreign2->enabled = 1;
  auto foreign3 = std::make_unique<BIQUAD_PARAM3>();
  foreign3->enabled = 1;
  one.biquadList.add(std::move(foreign2));
  one.biquadList.add(nullptr);
  one.biquadList.add(std::move(foreign3));
  EXPECT_EQ(one.makeAllBiquadCoeffs(0), 1);
  std::vector<double> a = randomSignal(32, 2), b = a;
  one.filtDataAcq(a.data(), 32, 0, 31, 0);
  plain.filtDataAcq(b.data(), 32, 0, 31, 0);
  EXPECT_EQ(a, b);

  CRtf2Biquad two;
  buildLowPass(two);
  auto foreign1 = std::make_unique<BIQUAD_PARAM1>();
  foreign1->enabled = 1;
  two.biquadList.add(std::move(foreign1));
  EXPECT_EQ(two.makeAllBiquadCoeffs(0), 1);
  std::vector<double> c = randomSignal(8, 4);
  EXPECT_EQ(two.filtDataAcq(c.data(), 8, 0, 7, 0), 1);

  CRtf3Biquad three;
  buildLowPass(three);
  three.biquadList.add(std::make_unique<BIQUAD_PARAM1>());
  EXPECT_EQ(three.makeAllBiquadCoeffs(0), 1);

  one = one;  // self-assignment keeps the stages
  EXPECT_EQ(one.biquadList.size(), 4);
}

TEST(BiquadHostileOrder, OrderEstimateAndBandQAtDegenerateEdges) {
  CRtf0Basic b;
  EXPECT_EQ(b.fltOrder(3.0, 40.0, 100.0, 100.0, 1000.0), kInf);  // equal edges: ln 1 = 0
  EXPECT_TRUE(std::isnan(b.fltOrder(3.0, 40.0, 100.0, 200.0, kNaN)));
  EXPECT_EQ(b.fltOrder(3.0, 1e300, 100.0, 200.0, 1000.0), kInf);
  EXPECT_EQ(b.freqBand2Q(100.0, 100.0), kInf);
  EXPECT_TRUE(std::isnan(b.freqBand2Q(-1.0, 1.0)));
}

}  // namespace
