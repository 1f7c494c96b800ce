// Hostile values through the designer base, the acquisition-settings helpers and the frequency
// response: NaN, infinities, denormals, zero and negative rates, wrapped integers. Where the
// operations' comparisons define the outcome it is asserted; where a conversion has no defined
// result the library's failure value (0) is. Records sit alone on the heap, so a read past one is
// an AddressSanitizer report.
#include <climits>
#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>

#include <gtest/gtest.h>
#include <digitfilt/digitfilt.h>

#include "support/message_capture.h"

namespace {

using digitfilt::test::MessageCapture;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kDenorm = std::numeric_limits<double>::denorm_min();
constexpr std::int64_t kMax64 = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kMin64 = std::numeric_limits<std::int64_t>::min();

// Runs v through the four clamps and returns the results in declaration order.
struct Clamped {
  double range, width, range4SR, width4SR;
};
Clamped clampAll(CDigitFiltCoefMak& d, double v) {
  Clamped c{v, v, v, v};
  d.correctFilterRange(c.range);
  d.correctFilterWidth(c.width);
  d.correctFreqRange4SR(c.range4SR);
  d.correctFreqWidth4SR(c.width4SR);
  return c;
}

TEST(DesignBaseHostile, ZeroNegativeAndNaNRatesGiveTheRangesTheirComparisonsDefine) {
  CDigitFiltCoefMak d;
  d.initFiltRange4SmplRate(0.0);  // every range collapses to 0
  Clamped c = clampAll(d, 7.0);
  EXPECT_EQ(c.range, 0.0);
  EXPECT_EQ(c.range4SR, 0.0);
  // Negative rate: freqMin -0.1 above freqMax -500, so the bound tested last wins.
  d.initFiltRange4SmplRate(-1000.0);
  c = clampAll(d, 7.0);
  EXPECT_EQ(c.range, -500.0);
  EXPECT_EQ(c.range4SR, -0.1);
  EXPECT_EQ(c.width, -500.0);
  EXPECT_EQ(c.width4SR, -0.5);
  // A NaN range compares false both ways: values pass unchanged.
  d.initFiltRange4SmplRate(kNaN);
  c = clampAll(d, 7.0);
  EXPECT_EQ(c.range, 7.0);
  EXPECT_EQ(c.width4SR, 7.0);
}

TEST(DesignBaseHostile, ClampsKeepNaNAndPinInfinities) {
  CDigitFiltCoefMak d;
  d.initFiltRange4SmplRate(1000.0);
  const Clamped nan = clampAll(d, kNaN);
  EXPECT_TRUE(std::isnan(nan.range) && std::isnan(nan.width) && std::isnan(nan.range4SR) &&
              std::isnan(nan.width4SR));
  const Clamped up = clampAll(d, kInf), down = clampAll(d, -kInf), tiny = clampAll(d, kDenorm);
  EXPECT_EQ(up.range, 500.0);
  EXPECT_EQ(up.width4SR, 500.0);
  EXPECT_EQ(down.range4SR, 0.1);
  EXPECT_EQ(down.width, 0.5);
  EXPECT_EQ(tiny.range, 0.1);
  EXPECT_EQ(tiny.width4SR, 0.5);
}

TEST(DesignBaseHostile, OrderEstimatesWithoutARepresentableResultGiveZero) {
  CDigitFiltCoefMak d;
  EXPECT_EQ(d.estimatFilterOrder(0.1, 60.0, 0.0), 0);   // +inf length
  EXPECT_EQ(d.estimatFilterOrder(0.0, 60.0, 0.1), 0);   // no ripple: log10(0)
  EXPECT_EQ(d.estimatFilterOrder(kNaN, 60.0, 0.1), 0);
  EXPECT_EQ(d.estimatFilterOrder(0.1, 60.0, kDenorm), 0);
  double edges[2] = {100.0, 100.0};
  double stop[2] = {1.0, 0.0}, pass[2] = {0.0, 1.0};
  EXPECT_EQ(d.remezOrd(edges, stop, 1.0, 60.0, 1000.0), 0);  // no transition band
  // A zero rate makes the transition infinitely wide: ceil(0) - 1 = -1, which the pass-band
  // branch rounds up to even: -1 + (-1 & 1) = 0.
  edges[1] = 150.0;
  EXPECT_EQ(d.remezOrd(edges, stop, 1.0, 60.0, 0.0), -1);
  EXPECT_EQ(d.remezOrd(edges, pass, 1.0, 60.0, 0.0), 0);
  EXPECT_EQ(d.estimateOrderQv(1000.0, 100.0, 100.0, 3.0, 40.0), 0);  // equal edges: ln 1 = 0
  EXPECT_EQ(d.estimateOrderQv(0.0, 100.0, 200.0, 3.0, 40.0), 0);
  EXPECT_EQ(d.estimateOrderQv(1000.0, 100.0, 600.0, 3.0, 40.0), 0);  // tan beyond Nyquist < 0
  EXPECT_EQ(d.estimateOrderQv(1000.0, 100.0, 200.0, kNaN, 40.0), 0);
}

TEST(DesignBaseHostile, DecibelsOfDegenerateRatios) {
  CDigitFiltCoefMak d;
  EXPECT_EQ(d.attenuation2Decibel(1.0, 0.0), kInf);
  EXPECT_EQ(d.attenuation2Decibel(-1.0, 0.0), 0.0);  // -inf is not positive
  EXPECT_TRUE(std::isnan(d.attenuation2Decibel(0.0, 0.0)));  // NaN is not <= 0 either
  EXPECT_TRUE(std::isnan(d.attenuation2Decibel(kNaN, 1.0)));
}

TEST(DesignBaseHostile, IntegerHelpersWrapInsteadOfOverflowing) {
  CDigitFiltCoefMak d;
  // No power of two above 2^62 fits: the smeared value plus one wraps to the sign bit.
  EXPECT_EQ(d.getPower2Ceiling(std::int64_t{1} << 62), std::int64_t{1} << 62);
  EXPECT_EQ(d.getPower2Ceiling((std::int64_t{1} << 62) + 1), kMin64);
  EXPECT_EQ(d.getPower2Ceiling(kMax64), kMin64);
  EXPECT_EQ(d.getPower2Ceiling(kMin64), kMin64);
  EXPECT_EQ(d.getPower2Ceiling(-5), 0);  // the arithmetic shift smears the sign: -1 + 1
  EXPECT_FALSE(d.isPower2(kMin64));
  EXPECT_TRUE(d.isPower2(std::int64_t{1} << 62));
  EXPECT_EQ(CDigitFiltCoefMak::set2odd(kMax64), kMax64);
  EXPECT_EQ(CDigitFiltCoefMak::set2odd(kMax64 - 1), kMax64);
  EXPECT_EQ(CDigitFiltCoefMak::set2odd(kMin64), kMin64 + 1);
  int h = INT_MIN;
  EXPECT_EQ(d.correctPNHarmonics(h), 1);
  h = INT_MAX;
  EXPECT_EQ(d.correctPNHarmonics(h), 60);
  EXPECT_EQ(h, 60);
}

TEST(DesignBaseHostile, ConversionsOfValuesWithoutAnInt64) {
  // truncToInt64 gives 0 (the failure value), saturateToInt64 the nearest end of the range.
  for (double v : {kNaN, kInf, -kInf, 1e300, -9.3e18}) {
    EXPECT_EQ(digitfilt::truncToInt64(v), 0) << v;
    EXPECT_EQ(digitfilt::truncToInt32(v), 0) << v;
  }
  EXPECT_EQ(digitfilt::saturateToInt64(kNaN), 0);
  EXPECT_EQ(digitfilt::saturateToInt64(kInf), kMax64);
  EXPECT_EQ(digitfilt::saturateToInt64(9.2233720368547758e18), kMax64);
  EXPECT_EQ(digitfilt::saturateToInt64(-kInf), kMin64);
  EXPECT_EQ(digitfilt::saturateToInt64(-9.2233720368547758e18), kMin64);
  EXPECT_EQ(digitfilt::saturateToInt64(-7.9), -7);
  EXPECT_EQ(digitfilt::saturateToInt64(9.2233720368547748e18), 9223372036854774784);
}

TEST(DesignBaseHostile, MovingAverageRelationsAtTheirPoles) {
  CDigitFiltCoefMak d;
  EXPECT_TRUE(std::isnan(d.getFreqCutoff4SrPt(1000.0, 0)));  // sqrt(-1)
  EXPECT_EQ(d.getFreqCutoff4SrPt(1000.0, -3), d.getFreqCutoff4SrPt(1000.0, 3));
  // 3037000500^2 passes 2^63: the 64-bit square wraps negative.
  EXPECT_TRUE(std::isnan(d.getFreqCutoff4SrPt(1000.0, 3037000500LL)));
  EXPECT_EQ(d.getFreqCutoff4SrPt(0.0, 10), 0.0);
  // r = -0.05: sqrt(0.0025 + 0.196202) / -0.05 = -8.91...
  EXPECT_EQ(d.getPts4FrqSr(1000.0, -50.0), -8);
  EXPECT_EQ(d.getPts4FrqSr(0.0, 50.0), 0);      // inf / inf
  EXPECT_EQ(d.getPts4FrqSr(1000.0, kNaN), 0);
  EXPECT_EQ(d.getPts4FrqSr(1000.0, 1e-300), 0);  // 4.4e302 points do not fit
}

CFilterDcLtSetAcqqv settingsFor(double rate, int harmonics) {
  CFilterDcLtSetAcqqv s;
  s.acqSampleRate = rate;
  s.channelCount = 1;
  s.powerLineHarmonics = harmonics;
  return s;
}

TEST(AcqSettingsHostile, GuardRejectsNonPositiveRatesAndChannelCounts) {
  MessageCapture capture;
  CFilterDcLtSetAcqqv s = settingsFor(-kInf, 3);
  EXPECT_FALSE(digitfilt::checkAcqSettingsReady(s));
  s = settingsFor(-kDenorm, 3);
  EXPECT_FALSE(digitfilt::checkAcqSettingsReady(s));
  s = settingsFor(1000.0, 3);
  s.channelCount = INT_MIN;
  EXPECT_FALSE(digitfilt::checkAcqSettingsReady(s));
  EXPECT_EQ(capture.messages.size(), 3u);
  // NaN is not <= 0: the guard lets it through, and so do the banks' comparisons after it.
  s = settingsFor(kNaN, 3);
  EXPECT_TRUE(digitfilt::checkAcqSettingsReady(s));
  EXPECT_EQ(capture.messages.size(), 3u);
}

TEST(AcqSettingsHostile, HarmonicLimitForWildBaseFrequencies) {
  MessageCapture capture;
  // Negative base: limit -10, and any count reaches it: floor(-10.01) = -11 is written back
  // (the banks clamp it to 1 afterwards).
  CFilterDcLtSetAcqqv s = settingsFor(1000.0, 3);
  digitfilt::limitPowerLineHarmonics(s, -50.0);
  EXPECT_EQ(s.powerLineHarmonics, -11);
  ASSERT_EQ(capture.messages.size(), 1u);
  EXPECT_EQ(capture.messages[0],
            L"Power-line noise harmonic is out of the filtering range (3->-11)!?");
  // A limit below the int range cannot be converted: the count is kept, the message still shown.
  s = settingsFor(1000.0, 3);
  digitfilt::limitPowerLineHarmonics(s, -1e-300);
  EXPECT_EQ(s.powerLineHarmonics, 3);
  ASSERT_EQ(capture.messages.size(), 2u);
  EXPECT_EQ(capture.messages[1],
            L"Power-line noise harmonic is out of the filtering range (3->3)!?");
  // NaN and infinite limits compare false: nothing changes, nothing is shown.
  for (double f0 : {kNaN, kDenorm, 1e-300}) {
    s = settingsFor(1000.0, INT_MAX);
    digitfilt::limitPowerLineHarmonics(s, f0);
    EXPECT_EQ(s.powerLineHarmonics, INT_MAX);
  }
  s = settingsFor(kInf, 7);
  digitfilt::limitPowerLineHarmonics(s, 50.0);
  EXPECT_EQ(s.powerLineHarmonics, 7);
  EXPECT_EQ(capture.messages.size(), 2u);
}

std::unique_ptr<filter_iirspec> twoTapAverage() {
  auto s = std::make_unique<filter_iirspec>();
  s->enabled = 1;
  s->numCoefs = 2;
  s->coefs[0] = s->coefs[1] = 0.5;
  return s;
}

TEST(FreqResponseHostile, CorruptCoefficientCountsStayInsideTheRecord) {
  auto s = twoTapAverage();
  s->numCoefs = -7;  // nothing summed: N = 0, D = 1
  EXPECT_EQ(CMFilterFaceqv::freqResponse(s.get(), 1000.0, 100.0), 0.0);
  // Past the 60-slot store only the 40 coefficients that exist are summed.
  s->numCoefs = INT_MAX;
  const double wild = CMFilterFaceqv::freqResponse(s.get(), 1000.0, 100.0);
  s->numCoefs = 40;
  EXPECT_EQ(wild, CMFilterFaceqv::freqResponse(s.get(), 1000.0, 100.0));
  EXPECT_NEAR(wild, std::cos(digitfilt::kPi * 0.1), 1e-12);
  EXPECT_EQ(CMFilterFaceqv::freqResponse(nullptr, 1000.0, 100.0), 1.0);
}

TEST(FreqResponseHostile, WildRatesAndFrequencies) {
  auto s = twoTapAverage();
  EXPECT_TRUE(std::isnan(CMFilterFaceqv::freqResponse(s.get(), 0.0, 100.0)));  // cos(inf)
  EXPECT_TRUE(std::isnan(CMFilterFaceqv::freqResponse(s.get(), 0.0, 0.0)));    // 0 / 0
  EXPECT_TRUE(std::isnan(CMFilterFaceqv::freqResponse(s.get(), 1000.0, kNaN)));
  EXPECT_TRUE(std::isnan(CMFilterFaceqv::freqResponse(s.get(), 1000.0, kInf)));
  // The response repeats every sample rate, beyond Nyquist and below 0 Hz alike.
  for (double f : {100.0, 450.0}) {
    const double base = CMFilterFaceqv::freqResponse(s.get(), 1000.0, f);
    EXPECT_NEAR(CMFilterFaceqv::freqResponse(s.get(), 1000.0, f + 3000.0), base, 1e-12);
    EXPECT_NEAR(CMFilterFaceqv::freqResponse(s.get(), 1000.0, -f), base, 1e-12);
  }
  EXPECT_NEAR(CMFilterFaceqv::freqResponse(s.get(), -1000.0, 100.0), std::cos(digitfilt::kPi * 0.1),
              1e-12);
}

}  // namespace
