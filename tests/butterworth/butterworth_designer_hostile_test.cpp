// Hostile records through the Butterworth designers: wild orders, zero, negative and NaN rates,
// edges beyond Nyquist, infinite and denormal edges. The acceptance rules are comparisons, so
// their outcome on such values is defined and asserted; every record sits alone on the heap, so
// a write past one is an AddressSanitizer report.
#include <climits>
#include <cmath>
#include <limits>
#include <memory>

#include <gtest/gtest.h>
#include <digitfilt/digitfilt.h>

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kDenorm = std::numeric_limits<double>::denorm_min();

std::unique_ptr<filter_iirspec> request(int type, int order, double low, double high,
                                        double rate) {
  auto s = std::make_unique<filter_iirspec>();
  s->enabled = 1;
  s->filterType = type;
  s->order = order;
  s->freqLow = low;
  s->freqHigh = high;
  s->sampleRate = rate;
  return s;
}

bool allCoefficientsFinite(const filter_iirspec& s) {
  for (int k = 0; k < s.numCoefs && k < 20; ++k)
    if (!std::isfinite(s.coefs[k]) || !std::isfinite(s.coefs[20 + k])) return false;
  return true;
}

TEST(ButterworthHostile, WildOrdersAreRefusedByBothDesigners) {
  CDigitFiltCoefMak01Butterworth designer;
  for (int order : {INT_MIN, -1, 0, 21, INT_MAX}) {
    SCOPED_TRACE(order);
    auto main = request(0, order, 0.0, 100.0, 1000.0);
    EXPECT_EQ(designer.ctfButterworthIirFilterCoef(main.get()), 0);
    EXPECT_EQ(main->enabled, 1);
    EXPECT_EQ(main->numCoefs, 0);
    // order - 1 taken as unsigned: INT_MIN - 1 wraps to 0x7fffffff, far above 19.
    auto strict = request(0, order, 0.0, 100.0, 1000.0);
    EXPECT_EQ(designer.mkiir(strict.get()), 0);
    EXPECT_EQ(strict->enabled, 0);
  }
  EXPECT_EQ(designer.ctfButterworthIirFilterCoef(nullptr), 0);
  EXPECT_EQ(designer.mkiir(nullptr), 0);
  EXPECT_EQ(designer.checkCorrectFilterSettings4SmplRate(nullptr), 0);
}

TEST(ButterworthHostile, EdgesBeyondNyquistInfiniteOrDenormalAreRefused) {
  CDigitFiltCoefMak01Butterworth designer;
  for (double edge : {600.0, kInf, -kInf, kDenorm, -100.0}) {
    SCOPED_TRACE(edge);
    auto lp = request(0, 4, 0.0, edge, 1000.0);
    EXPECT_EQ(designer.ctfButterworthIirFilterCoef(lp.get()), 0);
    EXPECT_EQ(lp->enabled, 0);
    auto hp = request(1, 4, edge, 0.0, 1000.0);
    EXPECT_EQ(designer.mkiir(hp.get()), 0);
    EXPECT_EQ(hp->enabled, 0);
  }
  // The check corrects instead: above the range to half the rate, below it to the minimum.
  auto lp = request(0, 4, 0.0, kInf, 1000.0);
  EXPECT_EQ(designer.checkCorrectFilterSettings4SmplRate(lp.get()), 1);
  EXPECT_EQ(lp->freqHigh, 500.0);
  auto bp = request(2, 4, -kInf, kDenorm, 1000.0);
  EXPECT_EQ(designer.checkCorrectFilterSettings4SmplRate(bp.get()), 0);  // both at wmin: no band
  EXPECT_EQ(bp->freqLow, 0.5);
  EXPECT_EQ(bp->freqHigh, 0.5);
  EXPECT_EQ(bp->enabled, 0);
}

TEST(ButterworthHostile, NegativeRatesRefuseEveryEdge) {
  // With the range inverted every edge lies below its minimum or above its maximum.
  CDigitFiltCoefMak01Butterworth designer;
  for (double edge : {-250.0, 0.0, 250.0}) {
    auto s = request(3, 2, edge, edge + 10.0, -1000.0);
    EXPECT_EQ(designer.ctfButterworthIirFilterCoef(s.get()), 0);
    EXPECT_EQ(s->enabled, 0);
  }
  // The check moves a single edge below the minimum up to it and then down to the maximum.
  designer.initCtfButterworthFilter4SmplRate(-1000.0);
  EXPECT_EQ(designer.checkCorrectAllFilterSettings4SmplRate(), 2);
  EXPECT_EQ(designer.iirSpecs[0].freqHigh, -500.0);
  EXPECT_EQ(designer.makeAllButterworthCoeffs(false), 0);
}

TEST(ButterworthHostile, ZeroRateAcceptsOnlyZeroEdgesAndNaNPassesEveryComparison) {
  CDigitFiltCoefMak01Butterworth designer;
  auto atZero = request(0, 2, 0.0, 0.0, 0.0);  // 0 lies in [0, 0]; tan(0 / 0) is NaN
  EXPECT_EQ(designer.ctfButterworthIirFilterCoef(atZero.get()), 1);
  EXPECT_EQ(atZero->numCoefs, 3);
  EXPECT_FALSE(allCoefficientsFinite(*atZero));
  auto above = request(0, 2, 0.0, 10.0, 0.0);
  EXPECT_EQ(designer.ctfButterworthIirFilterCoef(above.get()), 0);
  EXPECT_EQ(above->enabled, 0);
  // NaN rates and edges are neither below nor above a bound: a low-pass is designed with NaN
  // coefficients, and nothing is written outside the record.
  auto lp = request(0, 19, 0.0, kNaN, 1000.0);
  EXPECT_EQ(designer.ctfButterworthIirFilterCoef(lp.get()), 1);
  EXPECT_EQ(lp->numCoefs, 20);
  EXPECT_FALSE(allCoefficientsFinite(*lp));
  // A band's width test is "at least", which NaN fails in the main designer; the strict one asks
  // "below", which NaN passes.
  for (auto& s : {request(2, 9, 100.0, 200.0, kNaN), request(3, 9, kNaN, 200.0, 1000.0)}) {
    EXPECT_EQ(designer.ctfButterworthIirFilterCoef(s.get()), 0);
    EXPECT_EQ(s->enabled, 0);
    s->enabled = 1;
    EXPECT_EQ(designer.mkiir(s.get()), 1);
    EXPECT_EQ(s->numCoefs, 19);
    EXPECT_FALSE(allCoefficientsFinite(*s));
  }
  designer.initCtfButterworthFilter4SmplRate(kNaN);
  EXPECT_EQ(designer.makeAllButterworthCoeffs(false), 2);  // the low-pass and high-pass slots
}

TEST(ButterworthHostile, HugeAndTinyRatesDesignFiniteStagesWhereTheEdgesFit) {
  CDigitFiltCoefMak01Butterworth designer;
  for (double rate : {1e-300, 1e300}) {
    SCOPED_TRACE(rate);
    auto s = request(2, 4, 0.1 * rate, 0.2 * rate, rate);
    ASSERT_EQ(designer.ctfButterworthIirFilterCoef(s.get()), 1);
    EXPECT_TRUE(allCoefficientsFinite(*s));
    // Unity gain at the band centre, whatever the scale.
    const double centre = rate * std::atan(std::sqrt(std::tan(0.1 * digitfilt::kPi) *
                                                     std::tan(0.2 * digitfilt::kPi))) /
                          digitfilt::kPi;
    EXPECT_NEAR(CMFilterFaceqv::freqResponse(s.get(), rate, centre), 1.0, 1e-9);
  }
}

}  // namespace
