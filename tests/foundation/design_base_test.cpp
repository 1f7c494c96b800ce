#include <cmath>
#include <cstring>
#include <limits>

#include <gtest/gtest.h>
#include <digitfilt/digitfilt.h>

namespace {

CDigitFiltCoefMak designerFor(double rate) {
  CDigitFiltCoefMak d;
  d.initFiltRange4SmplRate(rate);
  return d;
}

TEST(DesignBase, ConstructedEmptyWithDesignModeThree) {
  CDigitFiltCoefMak d;
  EXPECT_EQ(d.baseWord, 0);
  EXPECT_EQ(d.sampleRate, 0.0);
  EXPECT_EQ(d.widthMax, 0.0);
  EXPECT_EQ(d.designMode, 3);
  CDigitFiltBsc root;
  EXPECT_EQ(root.baseWord, 0);
}

TEST(DesignBase, RangesFollowSampleRate) {
  CDigitFiltCoefMak d = designerFor(2000.0);
  double lo = 0, hi = 0;
  EXPECT_EQ(d.getFilterFreqRange(lo, hi), 1);
  EXPECT_DOUBLE_EQ(lo, 0.2);
  EXPECT_DOUBLE_EQ(hi, 1000.0);
  EXPECT_EQ(d.getFilterWndRange(lo, hi), 1);
  EXPECT_DOUBLE_EQ(lo, 1.0);
  EXPECT_DOUBLE_EQ(hi, 1000.0);
  // No check of the rate: a negative one inverts the ranges.
  CDigitFiltCoefMak neg = designerFor(-10.0);
  EXPECT_GT(neg.freqMin, neg.freqMax);
}

TEST(DesignBaseClamp, WritesBackInBothBoundOrders) {
  CDigitFiltCoefMak d = designerFor(1000.0);  // freq [0.1, 500], width [0.5, 500]
  double f = 900.0;
  EXPECT_EQ(d.correctFilterRange(f), 500.0);
  EXPECT_EQ(f, 500.0);
  f = -3.0;
  EXPECT_EQ(d.correctFreqRange4SR(f), 0.1);
  EXPECT_EQ(f, 0.1);
  double w = 0.2;
  EXPECT_EQ(d.correctFilterWidth(w), 0.5);
  EXPECT_EQ(w, 0.5);
  w = 600.0;
  EXPECT_EQ(d.correctFreqWidth4SR(w), 500.0);
  EXPECT_EQ(w, 500.0);
  double inside = 123.0;
  EXPECT_EQ(d.correctFilterRange(inside), 123.0);
}

TEST(DesignBaseClamp, InvertedRangeEndsAtMaxOrMinByOrder) {
  CDigitFiltCoefMak d;
  d.freqMin = 10.0;
  d.freqMax = 5.0;
  d.widthMin = 10.0;
  d.widthMax = 5.0;
  double a = 7.0, b = 7.0, c = 7.0, e = 7.0;
  EXPECT_EQ(d.correctFilterRange(a), 5.0);
  EXPECT_EQ(d.correctFreqRange4SR(b), 10.0);
  EXPECT_EQ(d.correctFilterWidth(c), 5.0);
  EXPECT_EQ(d.correctFreqWidth4SR(e), 10.0);
  EXPECT_EQ(a, 5.0);
  EXPECT_EQ(b, 10.0);
}

TEST(DesignBaseEstimates, FirLengthAndEquirippleOrder) {
  CDigitFiltCoefMak d;
  // dp = (1 - 10^-0.005) / 2, ds = 1e-3: (-10 log10(ds dp) - 13) / (0.05 * 14.6f) = 54.0047.
  EXPECT_EQ(d.estimatFilterOrder(0.1, 60.0, 0.05), 54);
  double edges[] = {100.0, 150.0};
  double lowPass[] = {1.0, 0.0};
  double raised[] = {1.0, 0.5};
  // Worked out with the closed form: 40 for a stop band; 25 rounded up to even otherwise.
  EXPECT_EQ(d.remezOrd(edges, lowPass, 1.0, 60.0, 1000.0), 40);
  EXPECT_EQ(d.remezOrd(edges, lowPass, 1.0, 45.0, 1000.0), 30);
  EXPECT_EQ(d.remezOrd(edges, raised, 1.0, 45.0, 1000.0), 26);
  EXPECT_EQ(d.remezOrd(edges, raised, 1.0, 60.0, 1000.0), 36);
}

TEST(DesignBaseEstimates, ButterworthOrderUsesTwentyForBothLevels) {
  CDigitFiltCoefMak d;
  // x = (10^2 - 1) / (10^0.15 - 1); ln(sqrt x) / ln(tan(0.2 pi) / tan(0.1 pi)) = 3.41 -> 4.
  EXPECT_EQ(d.estimateOrderQv(1000.0, 100.0, 200.0, 40.0, 3.0), 4);
}

TEST(DesignBaseNumeric, DecibelsAndPowersOfTwo) {
  CDigitFiltCoefMak d;
  EXPECT_EQ(d.attenuation2Decibel(0.0, 1.0), 0.0);
  EXPECT_EQ(d.attenuation2Decibel(1.0, -1.0), 0.0);
  EXPECT_NEAR(d.attenuation2Decibel(10.0, 1.0), 20.0, 1e-12);
  EXPECT_NEAR(d.attenuation2Decibel(1.0, 1000.0), -60.0, 1e-12);
  EXPECT_TRUE(d.isPower2(1));
  EXPECT_TRUE(d.isPower2(1024));
  EXPECT_FALSE(d.isPower2(0));
  EXPECT_FALSE(d.isPower2(-8));
  EXPECT_FALSE(d.isPower2(12));
  EXPECT_EQ(d.getPower2Ceiling(0), 0);
  EXPECT_EQ(d.getPower2Ceiling(1), 1);
  EXPECT_EQ(d.getPower2Ceiling(5), 8);
  EXPECT_EQ(d.getPower2Ceiling(8), 8);
  EXPECT_EQ(d.getPower2Ceiling(1025), 2048);
  EXPECT_EQ(d.getPower2Ceiling(std::int64_t{1} << 40), std::int64_t{1} << 40);
  EXPECT_EQ(CDigitFiltCoefMak::set2odd(0), 1);
  EXPECT_EQ(CDigitFiltCoefMak::set2odd(-2), -1);
  EXPECT_EQ(CDigitFiltCoefMak::set2odd(7), 7);
}

TEST(DesignBaseNumeric, SwapDoubleReversesBytes) {
  CDigitFiltCoefMak d;
  double x = 1.0;  // 0x3FF0000000000000
  EXPECT_EQ(d.swapDouble(x), 1);
  unsigned char bytes[8];
  std::memcpy(bytes, &x, 8);
  EXPECT_EQ(bytes[0], 0x3F);
  EXPECT_EQ(bytes[1], 0xF0);
  d.swapDouble(x);
  EXPECT_EQ(x, 1.0);
}

TEST(DesignBaseNumeric, PowerLineHarmonicClamp) {
  CDigitFiltCoefMak d;
  int h = 0;
  EXPECT_EQ(d.correctPNHarmonics(h), 1);
  EXPECT_EQ(h, 1);
  h = 61;
  EXPECT_EQ(d.correctPNHarmonics(h), 60);
  EXPECT_EQ(h, 60);
  h = 60;
  EXPECT_EQ(d.correctPNHarmonics(h), 60);
}

TEST(DesignBaseNumeric, MovingAverageCutoffRelations) {
  CDigitFiltCoefMak d;
  // 0.442947 / sqrt(99) * 1000
  EXPECT_NEAR(d.getFreqCutoff4SrPt(1000.0, 10), 44.517848515562214, 1e-12);
  EXPECT_TRUE(std::isinf(d.getFreqCutoff4SrPt(1000.0, 1)));
  // r = 0.02: trunc(sqrt(0.0004 + 0.196202) / 0.02) = trunc(22.17)
  EXPECT_EQ(d.getPts4FrqSr(1000.0, 20.0), 22);
  // The two relations invert each other to within the truncation.
  for (std::int64_t n : {5, 11, 40, 101}) {
    const double f = d.getFreqCutoff4SrPt(1000.0, n);
    EXPECT_NEAR(static_cast<double>(d.getPts4FrqSr(1000.0, f)), static_cast<double>(n), 1.0);
  }
}

TEST(DesignBaseNumeric, WildValuesConvertWithoutUndefinedBehaviour) {
  CDigitFiltCoefMak d;
  EXPECT_EQ(d.getPts4FrqSr(1000.0, 0.0), 0);  // infinite length is not representable
  EXPECT_EQ(digitfilt::truncToInt64(std::numeric_limits<double>::quiet_NaN()), 0);
  EXPECT_EQ(digitfilt::truncToInt32(1e300), 0);
  EXPECT_EQ(digitfilt::truncToInt32(-7.9), -7);
}

}  // namespace
