// Hostile values through the classic IIR designers: the polynomial Butterworth functions, the
// Butterworth object and its acquisition bank, the Chebyshev object. Orders and section counts
// at the ends of int, non-finite and non-positive rates and edges, NaN/Inf/denormal samples,
// empty, one-sample, null and enormous blocks, and index ranges reaching outside the block.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include <digitfilt/digitfilt.h>

#include "support/acq_support.h"
#include "support/iir_poly_support.h"
#include "support/message_capture.h"

namespace {

using P = CMeFilterButterworth03Prcs;
using digitfilt::test::CArray;
using digitfilt::test::MessageCapture;
using Vec = std::vector<double>;
using Messages = std::vector<std::wstring>;

constexpr int kIntMax = std::numeric_limits<int>::max(), kIntMin = std::numeric_limits<int>::min();
constexpr std::int64_t kI64Max = std::numeric_limits<std::int64_t>::max(),
                       kI64Min = std::numeric_limits<std::int64_t>::min();
const double kNan = std::numeric_limits<double>::quiet_NaN(),
             kInf = std::numeric_limits<double>::infinity(),
             kDenorm = std::numeric_limits<double>::denorm_min();

const std::wstring kBandstopText = L"Order for bandpass/bandstop must be 4,8,12,16,...\n";
const std::wstring kBandpassText = L"Order for bandpass must be 4,8,12,16,...\n";

Vec ramp(int n) {
  Vec x(static_cast<std::size_t>(n));
  for (int i = 0; i < n; ++i) x[static_cast<std::size_t>(i)] = std::sin(0.3 * i) + 1.0;
  return x;
}

// ---------------------------------------------------------------- polynomial designer

TEST(ButterworthPolynomialHostile, OrdersBelowOneGiveNoArrayAndNeutralScales) {
  for (int n : {0, -1, kIntMin}) {
    SCOPED_TRACE(n);
    EXPECT_EQ(P::binomial_mult(n, nullptr), nullptr);
    EXPECT_EQ(P::trinomial_mult(n, nullptr, nullptr), nullptr);
    EXPECT_EQ(P::dcof_bwlp(n, 0.3), nullptr);
    EXPECT_EQ(P::dcof_bwhp(n, 0.3), nullptr);
    EXPECT_EQ(P::dcof_bwbp(n, 0.2, 0.4), nullptr);
    EXPECT_EQ(P::ccof_bwlp(n), nullptr);
    EXPECT_EQ(P::ccof_bwhp(n), nullptr);
    EXPECT_EQ(P::ccof_bwbp(n), nullptr);
  }
  // The empty product: no pole factors, sin^0 / 1.
  for (double sf : {P::sf_bwlp(0, 0.3), P::sf_bwhp(0, 0.3), P::sf_bwbp(0, 0.2, 0.4),
                    P::sf_bwbs(-4, 0.2, 0.4)})
    EXPECT_EQ(sf, 1.0);
}

// Binomial coefficients leave 32 bits past order 30; they wrap (no undefined behaviour, which
// the sanitizer build checks) and keep their symmetric shape and exact ends.
TEST(ButterworthPolynomialHostile, OrdersPastThirtyWrapInsideTheArray) {
  for (int n : {31, 40, 64}) {
    SCOPED_TRACE(n);
    CArray<int> lp(P::ccof_bwlp(n)), hp(P::ccof_bwhp(n)), bp(P::ccof_bwbp(n));
    ASSERT_TRUE(lp && hp && bp);
    EXPECT_TRUE(lp[0] == 1 && lp[1] == n);
    for (int i = 0; i <= n; ++i) {
      EXPECT_EQ(lp[i], lp[n - i]) << i;
      const auto neg = static_cast<int>(0u - static_cast<std::uint32_t>(lp[i]));
      EXPECT_EQ(hp[i], i % 2 ? neg : lp[i]) << i;
      EXPECT_EQ(bp[2 * i], hp[i]) << i;
    }
  }
  CArray<double> d(P::dcof_bwlp(200, 0.3));
  ASSERT_TRUE(d);
  EXPECT_EQ(d[0], 1.0);
}

TEST(ButterworthPolynomialHostile, NonFiniteAndOutOfBandEdgesStayInsideTheArrays) {
  for (double f : {kNan, kInf, -0.5, 1.5, 0.0, 1.0}) {
    SCOPED_TRACE(f);
    CArray<double> lp(P::dcof_bwlp(5, f)), bs(P::dcof_bwbs(3, f, 0.5)),
        cs(P::ccof_bwbs(3, 0.2, f));
    ASSERT_TRUE(lp && bs && cs);
    // (1 + alpha z^-1 + z^-2)^3 keeps its unit ends, alpha may be NaN.
    EXPECT_TRUE(lp[0] == 1.0 && bs[0] == 1.0 && cs[0] == 1.0 && cs[6] == 1.0);
    P::sf_bwlp(5, f);
    P::sf_bwbp(3, f, 0.5);
  }
  CArray<double> nanEdge(P::dcof_bwlp(4, kNan));
  for (int k = 1; k <= 4; ++k) EXPECT_TRUE(std::isnan(nanEdge[k])) << k;
}

// ---------------------------------------------------------------- Butterworth object

TEST(MeButterworthHostile, OrdersAtTheEndsOfIntAreClamped) {
  MessageCapture cap;
  CMeFilterButterworth f;
  ASSERT_EQ(f.makeCoefLopsHips(kIntMax, 1000.0, 1, 100.0, 1, 50.0), 1);
  ASSERT_EQ(f.makeCoefLopsHips(kIntMin, 1000.0, 0, 0.0, 1, 50.0), 1);
  ASSERT_EQ(f.makeCoefBndpasBndstp(kIntMax, 1000.0, 200.0, 50.0, 0), 1);
  ASSERT_EQ(f.makeCoefBndpasBndstp(kIntMin, 1000.0, 200.0, 50.0, 0), 1);
  ASSERT_EQ(f.filterList.size(), 5);
  EXPECT_EQ(f.filterList[0]->order, kIntMax);  // stored as given
  EXPECT_EQ(f.filterList[1]->order, 20);
  EXPECT_EQ(f.filterList[2]->order, kIntMin);
  // Band stages: INT_MAX - 3 clamped to 20, four poles each; INT_MIN is a multiple of 4.
  const int sections[] = {10, 10, 1, 5, 0};
  for (int i = 0; i < 5; ++i) EXPECT_EQ(f.filterList[i]->numSections, sections[i]) << i;
  EXPECT_EQ(cap.messages, Messages{kBandstopText});

  f.filterList[3]->filterType = 2;
  f.filterList[3]->order = kIntMax;
  EXPECT_EQ(f.makeCoefs(f.filterList[3]), 1);
  EXPECT_EQ(f.filterList[3]->order, 20);
  EXPECT_EQ(f.filterList[3]->numSections, 20);
  f.filterList[4]->filterType = kIntMin;
  EXPECT_EQ(f.makeCoefs(f.filterList[4]), 0);
  EXPECT_EQ(f.filterList[4]->filterType, -1);  // re-initialised
}

// A host may write any section count; only the stored sections are run and dumped.
TEST(MeButterworthHostile, HostWrittenSectionCountsStayWithinTheArrays) {
  MessageCapture cap;
  CMeFilterButterworthqv wild, full;
  for (CMeFilterButterworthqv* f : {&wild, &full}) {
    // A band-pass remade with order 20 fills all twenty sections.
    ASSERT_EQ(f->makeCoefBndpasBndstp(20, 1000.0, 200.0, 50.0, 1), 1);
    f->filterList[0]->enabled = 1;
    ASSERT_EQ(f->makeCoefs(f->filterList[0]), 1);
    ASSERT_EQ(f->filterList[0]->numSections, 20);
  }
  wild.filterList[0]->numSections = kIntMax;
  Vec a = ramp(64), b = a;
  ASSERT_EQ(wild.filtData(a.data(), 64), 1);
  ASSERT_EQ(full.filtData(b.data(), 64), 1);
  EXPECT_EQ(a, b);
  std::string info = wild.getFilterInfo(0);
  EXPECT_EQ(std::count(info.begin(), info.end(), '\n'), 20);

  wild.filterList[0]->numSections = -7;
  Vec c = ramp(16);
  ASSERT_EQ(wild.filtDataAcq(c.data(), 16, 0, 15, 0), 1);
  EXPECT_EQ(c, ramp(16));
  EXPECT_EQ(wild.getFilterInfo(0), "");
}

// The rate check follows its comparisons: a zero rate pulls the cut-off to 0, a negative one to
// the (negative) top, a NaN rate leaves it alone. Coefficients then come out NaN, not a crash.
TEST(MeButterworthHostile, ZeroNegativeAndNanSampleRates) {
  const double cases[][2] = {{0.0, 0.0}, {-1000.0, -500.0}, {kNan, 100.0}};  // rate, cut-off
  for (const auto& c : cases) {
    SCOPED_TRACE(c[0]);
    CMeFilterButterworth f;
    ASSERT_EQ(f.makeCoefLopsHips(4, c[0], 1, 100.0, 0, 0.0), 1);
    EXPECT_EQ(f.checkCorrectFilterSettings4SmpRate(f.filterList[0]), 1);
    EXPECT_EQ(f.filterList[0]->lowpassFreq, c[1]);
  }
  CMeFilterButterworth f;
  ASSERT_EQ(f.makeCoefLopsHips(4, 0.0, 1, 100.0, 0, 0.0), 1);
  Vec x = ramp(8);
  EXPECT_EQ(f.filtData(x.data(), 8), 1);
  for (double v : x) EXPECT_TRUE(std::isnan(v));
}

TEST(MeButterworthHostile, EmptyNullAndOneSampleBlocks) {
  CMeFilterButterworth f;
  ASSERT_EQ(f.makeCoefLopsHips(4, 1000.0, 1, 100.0, 0, 0.0), 1);
  Vec x = {1.0, 2.0, 3.0};
  EXPECT_EQ(f.filtData(nullptr, 0), 1);
  EXPECT_EQ(f.filtData(nullptr, 5), 0);
  EXPECT_EQ(f.filtData(x.data(), -3), 1);
  EXPECT_EQ(f.filtDataZeroShift(nullptr, 5), 0);
  EXPECT_EQ(f.filtDataZeroShift(x.data(), kI64Min), 1);
  EXPECT_EQ(x, (Vec{1.0, 2.0, 3.0}));
  EXPECT_EQ(f.filtDataAcq(nullptr, 0, 0, 0, 0), 0);
  // Length 0: nothing is filtered however far the range reaches, but the block is recorded.
  EXPECT_EQ(f.filtDataAcq(x.data(), 0, 0, 2, 3), 1);
  EXPECT_EQ(x, (Vec{1.0, 2.0, 3.0}));
  EXPECT_EQ(f.blockEnd, 2);
  EXPECT_EQ(f.blockChannel, 3);
  // Length 1: only the first sample.
  EXPECT_EQ(f.filtDataAcq(x.data(), 1, 0, 2, 0), 1);
  EXPECT_NE(x[0], 1.0);
  EXPECT_TRUE(x[1] == 2.0 && x[2] == 3.0);
}

// Only indices inside [0, length) are filtered, so a range reaching far out on both sides equals
// the whole block, and the band-stop still sees each sample's true index.
TEST(MeButterworthHostile, AcqRangeIsClippedToTheBlock) {
  auto notch = [] {
    CMeFilterButterworth f;
    f.makeCoefBndpasBndstp(4, 1000.0, 60.0, 40.0, 0);
    f.makeCoefLopsHips(4, 1000.0, 1, 100.0, 0, 0.0);
    return f;
  };
  CMeFilterButterworth wide = notch(), exact = notch();
  const double guard = -12345.0;
  Vec buf(24, guard), ref = ramp(16);
  std::copy(ref.begin(), ref.end(), buf.begin() + 4);
  ASSERT_EQ(wide.filtDataAcq(buf.data() + 4, 16, kI64Min, kI64Max, 0), 1);
  ASSERT_EQ(exact.filtDataAcq(ref.data(), 16, 0, 15, 0), 1);
  EXPECT_EQ(Vec(buf.begin(), buf.begin() + 4), Vec(4, guard));
  EXPECT_EQ(Vec(buf.begin() + 20, buf.end()), Vec(4, guard));
  EXPECT_EQ(Vec(buf.begin() + 4, buf.begin() + 20), ref);
  EXPECT_EQ(wide.blockStart, kI64Min);  // recorded as given
  EXPECT_EQ(wide.blockEnd, kI64Max);
}

TEST(MeButterworthHostile, NonFiniteAndDenormalSamples) {
  CMeFilterButterworth low;
  ASSERT_EQ(low.makeCoefLopsHips(4, 1000.0, 1, 100.0, 0, 0.0), 1);
  Vec tiny(64, kDenorm);
  ASSERT_EQ(low.filtData(tiny.data(), 64), 1);
  for (double v : tiny) EXPECT_TRUE(std::isfinite(v) && std::fabs(v) < 1e-300);

  // During acquisition the high-pass never outputs a NaN, whatever comes in.
  CMeFilterButterworth high;
  ASSERT_EQ(high.makeCoefLopsHips(4, 1000.0, 0, 0.0, 1, 5.0), 1);
  high.filterList[0]->enabled = 1;
  Vec y = {1.0, kInf, -kInf, kNan, 1e308, -1e308, kDenorm, 2.0, kInf, kInf, 3.0, kNan};
  ASSERT_EQ(high.filtDataAcq(y.data(), 12, 0, 11, 0), 1);
  for (double v : y) EXPECT_FALSE(std::isnan(v));
}

TEST(MeButterworthHostile, EnormousBlockSettlesToUnityDcGain) {
  CMeFilterButterworth f;
  ASSERT_EQ(f.makeCoefLopsHips(8, 1000.0, 1, 10.0, 0, 0.0), 1);
  const std::int64_t n = std::int64_t{1} << 20;
  Vec x(static_cast<std::size_t>(n), 1.0);
  ASSERT_EQ(f.filtDataAcq(x.data(), n, 0, n - 1, 0), 1);
  EXPECT_NEAR(x.back(), 1.0, 1e-9);
}

// ---------------------------------------------------------------- acquisition bank

using digitfilt::test::readyAcqSettings;

TEST(MeButterworthBankHostile, NegativeAndInfiniteNegativeRatesAreRejectedUntouched) {
  for (double rate : {-1000.0, -kInf, -kDenorm}) {
    SCOPED_TRACE(rate);
    MessageCapture cap;
    CMeFilterButterworthqv bank;
    CFilterDcLtSetAcqqv s = readyAcqSettings(rate);
    s.lowPassOn = 1;
    s.lowPassFreq = kNan;
    CFilterDcLtSetAcqqv before = s;
    EXPECT_EQ(bank.setCheckCoefs(s), 0);
    EXPECT_EQ(std::memcmp(&s, &before, sizeof s), 0);
    EXPECT_EQ(cap.messages, Messages{L"Please setup the filter parameters first!"});
  }
}

// A NaN frequency survives the clamps (every comparison with it is false) and is written back;
// the low-pass made from it outputs NaN, the high-pass outputs 0 and restarts.
TEST(MeButterworthBankHostile, NanFrequenciesReachTheStagesAndTheOutputShowsIt) {
  CMeFilterButterworthqv bank;
  CFilterDcLtSetAcqqv s = readyAcqSettings(1000.0);
  s.lowPassOn = 1;
  s.lowPassFreq = kNan;
  ASSERT_EQ(bank.setCheckCoefs(s), 1);
  EXPECT_TRUE(std::isnan(s.lowPassFreq));
  ASSERT_EQ(bank.makeAllButterworthCoeffs(1), 1);
  Vec x = ramp(8);
  ASSERT_EQ(bank.filtDataAcq(x.data(), 8, 0, 7, 0), 1);
  for (double v : x) EXPECT_TRUE(std::isnan(v));

  s.lowPassOn = 0;
  s.highPassOn = 1;
  s.highPassFreq = kNan;
  ASSERT_EQ(bank.setCheckCoefs(s), 1);
  ASSERT_EQ(bank.makeAllButterworthCoeffs(1), 1);
  Vec y = ramp(8);
  ASSERT_EQ(bank.filtDataAcq(y.data(), 8, 0, 7, 0), 1);
  EXPECT_EQ(y, Vec(8, 0.0));
}

// The comb is bounded by the 1..60 clamp whatever the count, base frequency or rate.
TEST(MeButterworthBankHostile, WildHarmonicCountsAndBaseFrequencies) {
  MessageCapture cap;
  CMeFilterButterworthqv bank;
  CFilterDcLtSetAcqqv s = readyAcqSettings(1000.0);
  s.lowPassOn = 1;
  s.lowPassFreq = 100.0;
  s.powerLineOn = 1;
  s.powerLineType = 1;
  s.powerLineHarmonics = kIntMax;
  EXPECT_EQ(bank.setCheckCoefs(s), 1 + 9);
  EXPECT_EQ(s.powerLineHarmonics, 9);
  EXPECT_EQ(cap.messages,
            Messages{L"Power-line noise harmonic is out of the filtering range (2147483647->9)!?"});

  s.powerLineHarmonics = kIntMin;
  EXPECT_EQ(bank.setCheckCoefs(s), 1 + 1);
  EXPECT_EQ(s.powerLineHarmonics, 1);

  // Custom base 0 or NaN: no harmonic ever reaches half the rate, so all 60 are counted.
  for (double base : {0.0, kNan}) {
    SCOPED_TRACE(base);
    s.powerLineType = 7;
    s.powerLineFreq = base;
    s.powerLineHarmonics = 60;
    EXPECT_EQ(bank.setCheckCoefs(s), 1 + 60);
    EXPECT_EQ(bank.filterList.size(), 1);
  }
  // An infinite rate passes the guard; every clamp goes to infinity and the comb stops at once.
  CFilterDcLtSetAcqqv inf = readyAcqSettings(kInf);
  inf.lowPassOn = 1;
  inf.lowPassFreq = 100.0;
  inf.powerLineOn = 1;
  inf.powerLineHarmonics = 5;
  EXPECT_EQ(bank.setCheckCoefs(inf), 1);
  EXPECT_EQ(inf.lowPassFreq, kInf);
}

TEST(MeButterworthBankHostile, NullEntriesAreSkippedEverywhere) {
  CMeFilterButterworthqv bank;
  ASSERT_EQ(bank.initIIRFilters4Acq(), 2);
  bank.filterList.reset(0);
  EXPECT_EQ(bank.makeAllButterworthCoeffs(0), 1);
  EXPECT_EQ(bank.checkCorrectAllFilterSettings4SmplRate(), 1);
  EXPECT_EQ(bank.getEnableFilters(), 1);
  const std::string info = bank.getFilterInfo(0);
  EXPECT_EQ(std::count(info.begin(), info.end(), '\n'), 2);
  Vec x = ramp(10);
  EXPECT_EQ(bank.filtDataAcq(x.data(), 10, 0, 9, 0), 1);
  EXPECT_EQ(bank.filtDataZeroShift(x.data(), 10), 1);
  CMeFilterButterworthqv copy;
  copy = bank;
  EXPECT_EQ(copy.filterList.size(), 1);  // only the non-null stage is copied
  EXPECT_EQ(CMeFilterButterworth::initButterworthStage(nullptr), 0);
}

TEST(MeButterworthBankHostile, CoefLowpassWithWildArguments) {
  CMeFilterButterworthqv bank;
  EXPECT_EQ(bank.coefLowpass(kIntMin, 0.5, 0), nullptr);
  for (double f : {kNan, kInf, 1e300, -3.0}) {
    SCOPED_TRACE(f);
    CArray<double> d(bank.coefLowpass(3, f, 1));  // the scaled numerator may be NaN or huge
    ASSERT_TRUE(d);
    EXPECT_EQ(d[0], 1.0);
  }
}

// ---------------------------------------------------------------- Chebyshev object

// Epsilon is not checked: 0 gives an infinite gain, a negative one NaN coefficients. The filter
// still runs and returns 1.
TEST(MeChebyshevHostile, NonPositiveEpsilonGivesNonFiniteValuesNotACrash) {
  CMeFilterChebyshev f;
  ASSERT_EQ(f.makeCoefLopsHips(4, 1000.0, 1, 100.0, 0, 0.0, 0.0), 1);
  ASSERT_EQ(f.makeCoefLopsHips(4, 1000.0, 1, 100.0, 0, 0.0, -1.0), 1);
  EXPECT_EQ(f.stageList[0]->gain, kInf);
  EXPECT_TRUE(std::isnan(f.stageList[1]->A[0]));
  Vec x = ramp(8);
  EXPECT_EQ(f.filtData(x.data(), 8), 1);
  for (double v : x) EXPECT_FALSE(std::isfinite(v));
}

TEST(MeChebyshevHostile, WildOrdersAndSectionCountsStayWithinTheArrays) {
  MessageCapture cap;
  CMeFilterChebyshev f;
  ASSERT_EQ(f.makeCoefLopsHips(kIntMax, 1000.0, 1, 100.0, 0, 0.0, 0.5), 1);
  ASSERT_EQ(f.makeCoefLopsHips(kIntMin, 1000.0, 0, 0.0, 1, 100.0, 0.5), 1);
  ASSERT_EQ(f.makeCoefBndpasBndstp(kIntMin, 1000.0, 200.0, 50.0, 0, 0.5), 1);
  ASSERT_EQ(f.makeCoefBndpasBndstp(kIntMax, 1000.0, 200.0, 50.0, 1, 0.5), 1);
  EXPECT_EQ(f.stageList[0]->order, kIntMax);
  const int sections[] = {18, 1, 1, 9};
  for (int i = 0; i < 4; ++i) EXPECT_EQ(f.stageList[i]->numSections, sections[i]) << i;
  EXPECT_EQ(cap.messages, Messages{kBandpassText});

  // The high-pass runs `order` sections: a huge order runs all 36, a negative one none (and
  // the high-pass has no gain factor, so the data pass unchanged).
  CMeFilterChebyshev high;
  ASSERT_EQ(high.makeCoefLopsHips(4, 1000.0, 0, 0.0, 1, 100.0, 0.5), 1);
  high.stageList[0]->enabled = 1;
  high.stageList[0]->order = -5;
  Vec x = ramp(16);
  ASSERT_EQ(high.filtData(x.data(), 16), 1);
  EXPECT_EQ(x, ramp(16));
  high.stageList[0]->order = kIntMax;
  f.stageList[0]->numSections = kIntMax;
  f.stageList[2]->numSections = kIntMin;
  ASSERT_EQ(high.filtData(x.data(), 16), 1);
  ASSERT_EQ(f.filtData(x.data(), 16), 1);
}

TEST(MeChebyshevHostile, EmptyNullBlocksNullEntriesAndZeroRate) {
  CMeFilterChebyshevqv f;
  ASSERT_EQ(f.makeCoefLopsHips(4, 0.0, 1, 100.0, 0, 0.0, 0.5), 1);
  Vec x = {1.0, 2.0};
  EXPECT_EQ(f.filtData(nullptr, 0), 1);
  EXPECT_EQ(f.filtData(nullptr, 2), 0);
  EXPECT_EQ(f.filtData(x.data(), kI64Min), 1);
  EXPECT_EQ(x, (Vec{1.0, 2.0}));
  EXPECT_TRUE(std::isnan(f.stageList[0]->d1[0]));  // tan of an infinite angle
  f.stageList.setAtGrow(3, nullptr);                // holes and a null at the end
  CMeFilterChebyshev copy(f);
  EXPECT_EQ(copy.stageList.size(), 4);
  EXPECT_EQ(copy.stageList[3], nullptr);
  EXPECT_EQ(copy.filtData(x.data(), 2), 1);
  EXPECT_TRUE(std::isnan(x[1]));
}

}  // namespace
