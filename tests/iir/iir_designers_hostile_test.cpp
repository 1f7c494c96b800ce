// Hostile values through the state-space Butterworth designer and its zero-phase filter, the
// pole-zero IIR designer, the biquad designer and the acquisition filter objects. The two process
// exits the state-space designer owes its callers are pinned with death tests.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include <digitfilt/digitfilt.h>

#include "support/message_capture.h"

namespace {

using digitfilt::test::MessageCapture;
using Vec = std::vector<double>;

constexpr int kIntMax = std::numeric_limits<int>::max(), kIntMin = std::numeric_limits<int>::min();
const double kNan = std::numeric_limits<double>::quiet_NaN(),
             kInf = std::numeric_limits<double>::infinity(),
             kDenorm = std::numeric_limits<double>::denorm_min();

struct Probe : CMcfButterworthqv {
  using CMcfButterworth::generate_initial_conditions;
};

Vec wave(int n, double offset = 0.0) {
  Vec x(static_cast<std::size_t>(n));
  for (int i = 0; i < n; ++i) x[static_cast<std::size_t>(i)] = offset + std::sin(0.37 * i);
  return x;
}

bool allFinite(const double* p, std::size_t n) {
  return std::all_of(p, p + n, [](double v) { return std::isfinite(v); });
}

// ---------------------------------------------------------------- state-space Butterworth

TEST(McfButterworthHostile, OrdersOutsideOneToHundredAreRefusedWithoutArrays) {
  for (int order : {0, -1, 101, kIntMax, kIntMin}) {
    SCOPED_TRACE(order);
    MessageCapture cap;
    CMcfButterworthqv f;
    EXPECT_EQ(f.mcButter(1, 1000.0, order, 100.0, 0.0), 0);
    EXPECT_TRUE(f.numer == nullptr && f.denom == nullptr && f.stateCount == 0);
    ASSERT_EQ(cap.messages.size(), 1u);
    EXPECT_EQ(cap.messages[0], L"Butterworth order " + std::to_wstring(order) +
                                   L" is out of range (1..100)!");
  }
  MessageCapture cap;
  CMcfButterworthqv f;
  EXPECT_EQ(f.mcButter(1, 1000.0, 100, 100.0, 0.0), 1);
  EXPECT_TRUE(cap.messages.empty());
}

TEST(McfButterworthHostile, EdgesAtAndBeyondNyquistAndNegativeRatesStillDesign) {
  // tan() of the pre-warp stays finite there: not useful filters, but finite designs.
  const struct { int type; double rate, f1, f2; } cases[] = {
      {1, 1000.0, 500.0, 0.0}, {1, 1000.0, 1e300, 0.0}, {2, 1000.0, -100.0, 0.0},
      {1, -1000.0, 100.0, 0.0}, {3, 1000.0, 100.0, 500.0}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.f1);
    CMcfButterworthqv f;
    ASSERT_EQ(f.mcButter(c.type, c.rate, 4, c.f1, c.f2), 1);
    const auto n = static_cast<std::size_t>(f.stateCount) + 1;
    EXPECT_TRUE(allFinite(f.numer, n) && allFinite(f.denom, n));
    EXPECT_NE(f.initialConditions, nullptr);
  }
}

TEST(McfButterworthHostile, NonFiniteCoefficientGivesMinusOneAndFilteringIsRefused) {
  // Both band edges at 0: every pole sits on z = 1 with the zeros, the gain scale is 0/0.
  MessageCapture cap;
  CMcfButterworthqv f;
  EXPECT_EQ(f.mcButter(3, 1000.0, 4, 0.0, 0.0), -1);
  EXPECT_EQ(f.stateCount, 0);  // the count of the last complete design stays
  ASSERT_NE(f.numer, nullptr);  // allocated before the check, as designed
  EXPECT_TRUE(std::isnan(f.numer[0]));
  Vec x = wave(40), out(40, 7.0);
  f.filtfilt(x.data(), 40, out.data(), nullptr);  // no states: out = b[0] x
  EXPECT_TRUE(std::isnan(out[0]) && std::isnan(out[39]));
  EXPECT_TRUE(cap.messages.empty());
  // A good 4-state design, then a failing 2-state one: the old count would overrun the arrays.
  CMcfButterworthqv g;
  ASSERT_EQ(g.mcButter(1, 1000.0, 4, 100.0, 0.0), 1);
  ASSERT_EQ(g.mcButter(3, 1000.0, 1, 0.0, 0.0), -1);
  EXPECT_EQ(g.stateCount, 4);
  Vec out2(64, 7.0);
  g.filtfilt(x.data(), 40, out2.data(), nullptr);
  EXPECT_EQ(out2, Vec(64, 7.0));
  ASSERT_EQ(cap.messages.size(), 1u);
  EXPECT_EQ(cap.messages[0], L"filtfilt: design the filter with mcButter first!\n");
}

TEST(McfButterworthHostile, ShortEmptyAndNullRecordsLeaveTheOutputAlone) {
  MessageCapture cap;
  CMcfButterworthqv f;
  ASSERT_EQ(f.mcButter(1, 1000.0, 3, 100.0, 0.0), 1);  // N = 3, needs n > 9
  Vec x = wave(9), out(27, 7.0);
  f.filtfilt(x.data(), 9, out.data(), nullptr);
  f.filtfilt(x.data(), 1, out.data(), nullptr);
  ASSERT_EQ(cap.messages.size(), 2u);
  EXPECT_EQ(cap.messages[0], L"filtfilt: the record must be longer than 9 samples (got 9)!\n");
  f.filtfilt(x.data(), 0, out.data(), nullptr);
  f.filtfilt(x.data(), -5, out.data(), nullptr);
  f.filtfilt(nullptr, 20, out.data(), nullptr);
  f.filtfilt(x.data(), 20, nullptr, nullptr);
  EXPECT_EQ(cap.messages.size(), 2u);
  EXPECT_EQ(out, Vec(27, 7.0));
}

TEST(McfButterworthHostile, ShortestRecordAndConstantsNeedNoTransient) {
  // n = 3N + 1 reads exactly x[0..n-1]; a constant passes a unit-DC-gain low-pass unchanged.
  CMcfButterworthqv f;
  ASSERT_EQ(f.mcButter(1, 1000.0, 4, 50.0, 0.0), 1);
  for (double c : {0.0, -1e6, kDenorm}) {
    SCOPED_TRACE(c);
    Vec x(13, c), out(37), work(37);
    f.filtfilt(x.data(), 13, out.data(), work.data());
    for (int k = 0; k < 13; ++k) EXPECT_NEAR(out[k], c, 1e-9 * std::fabs(c) + 1e-300);
  }
}

TEST(McfButterworthHostile, NonFiniteSamplesStayInTheirBuffers) {
  CMcfButterworthqv f;
  ASSERT_EQ(f.mcButter(2, 1000.0, 2, 20.0, 0.0), 1);
  for (double bad : {kNan, -kInf, 1e308}) {
    SCOPED_TRACE(bad);
    Vec x = wave(50);
    x[25] = bad;
    Vec out(62), inPlace(62);
    f.filtfilt(x.data(), 50, out.data(), nullptr);
    std::copy(x.begin(), x.end(), inPlace.begin());
    f.filtfilt(inPlace.data(), 50, inPlace.data(), nullptr);  // same as a separate record
    for (int k = 0; k < 50; ++k)
      EXPECT_TRUE(out[k] == inPlace[k] || (std::isnan(out[k]) && std::isnan(inPlace[k])));
  }
}

TEST(McfButterworthHostile, CopiesKeepTheSharedDesignAfterTheOriginalRedesigns) {
  CMcfButterworthqv a, b;
  ASSERT_EQ(a.mcButter(1, 1000.0, 6, 100.0, 0.0), 1);
  b = a;
  EXPECT_EQ(b.numer, a.numer);
  Vec x = wave(100, 1.0), before(136), after(136);
  b.filtfilt(x.data(), 100, before.data(), nullptr);
  ASSERT_EQ(a.mcButter(3, 1000.0, 2, 10.0, 20.0), 1);  // new, shorter arrays in a only
  b.filtfilt(x.data(), 100, after.data(), nullptr);
  EXPECT_EQ(before, after);
}

TEST(McfButterworthHostile, InitialConditionsOfOddRecords) {
  Probe p;
  double b[3] = {1.0, 2.0, 1.0}, a[3] = {1.0, -0.5, 0.25};
  EXPECT_EQ(p.generate_initial_conditions(nullptr, a, 2), nullptr);
  EXPECT_EQ(p.generate_initial_conditions(b, nullptr, 2), nullptr);
  EXPECT_EQ(p.generate_initial_conditions(b, a, 0), nullptr);
  EXPECT_EQ(p.generate_initial_conditions(b, a, kIntMin), nullptr);
  EXPECT_EQ(p.initialConditions, nullptr);
  double bn[3] = {kNan, kInf, 1.0};  // non-finite numerators only reach the right-hand side
  double* zi = p.generate_initial_conditions(bn, a, 2);
  ASSERT_NE(zi, nullptr);
  EXPECT_TRUE(std::isnan(zi[0]));
  // Conditions without a design are not used by filtfilt.
  MessageCapture cap;
  Vec x = wave(20), out(32, 7.0);
  p.filtfilt(x.data(), 20, out.data(), nullptr);
  EXPECT_EQ(cap.messages.size(), 1u);
  // First column {1 + a[1], a[2]} = {0, NaN}: NaN is taken as the pivot, so no singular exit.
  double an[3] = {1.0, -1.0, kNan};
  zi = p.generate_initial_conditions(b, an, 2);
  ASSERT_NE(zi, nullptr);
  EXPECT_TRUE(std::isnan(zi[0]) || std::isnan(zi[1]));
}

using McfButterworthExitDeathTest = ::testing::Test;

void conditionsOfASingularRecord() {
  Probe p;
  double b[2] = {1.0, 1.0}, a[2] = {1.0, -1.0};  // 1 + a[1] = 0: the matrix is [0]
  p.generate_initial_conditions(b, a, 1);
}

void design(double rate, double f1) {
  CMcfButterworthqv f;
  f.mcButter(1, rate, 4, f1, 0.0);
}

TEST_F(McfButterworthExitDeathTest, SingularMatrixEndsTheProcess) {
  // A low-pass at 0 Hz puts every pole on z = 1, so 1 + a[1] + ... + a[N] = 0.
  EXPECT_EXIT(design(1000.0, 0.0), ::testing::ExitedWithCode(1),
              "invert_matrix: Singular Matrix\n");
  EXPECT_EXIT(conditionsOfASingularRecord(), ::testing::ExitedWithCode(1),
              "invert_matrix: Singular Matrix\n");
}

TEST_F(McfButterworthExitDeathTest, NonFiniteRateOrEdgeEndsTheEigenvalueIteration) {
  // The QR iteration can never split off an eigenvalue of a non-finite matrix.
  const double cases[][2] = {{kNan, 100.0}, {0.0, 100.0}, {1000.0, kInf}, {1000.0, kNan}};
  for (const auto& c : cases)
    EXPECT_EXIT(design(c[0], c[1]), ::testing::ExitedWithCode(1), "Too many iterations in hqr\n");
}

// ---------------------------------------------------------------- pole-zero IIR designer

TEST(IirDesignerHostile, OrdersAtTheEndsOfIntAreRefused) {
  MessageCapture cap;
  CDigitFiltCoefMak08IIR d;
  d.setOrder(kIntMin);
  EXPECT_EQ(d.getOrder(), kIntMax - 1);
  EXPECT_EQ(d.locatePolesAndZeros(), 0);
  EXPECT_EQ(d.design(), 0);
  EXPECT_EQ(d.filterGain(), nullptr);
  EXPECT_EQ(d.aCoeff, nullptr);
  ASSERT_FALSE(cap.messages.empty());
  EXPECT_EQ(cap.messages[0], L"IIR filter order 2147483646 is out of range (1..100)!");
  d.setFilterType(2);  // making INT_MAX - 1 even changes nothing, and nothing overflows
  d.setOrder(kIntMax);
  EXPECT_EQ(d.getOrder(), kIntMax - 1);
  d.setOrder(0);
  EXPECT_EQ(d.locatePolesAndZeros(), 0);
  d.order = -4;  // a host writing the field directly
  EXPECT_EQ(d.design(), 0);
  EXPECT_EQ(d.getPReal(1), 0.0);
  EXPECT_EQ(d.getACoeff(0), 0.0);
}

TEST(IirDesignerHostile, TooFewFrequencyPointsGiveNoCurve) {
  MessageCapture cap;
  CDigitFiltCoefMak08IIR d;
  d.setOrder(4);
  for (int points : {0, -1, kIntMin}) {
    d.setFreqPoints(points);
    EXPECT_EQ(d.filterGain(), nullptr);
  }
  ASSERT_EQ(cap.messages.size(), 3u);
  EXPECT_EQ(cap.messages[0], L"The number of frequency points must be at least 1 (got 0)!");
  d.setFreqPoints(1);  // both ends only
  std::unique_ptr<double[]> gain(d.filterGain());
  ASSERT_NE(gain, nullptr);
  EXPECT_EQ(std::max(gain[0], gain[1]), 0.0);
}

TEST(IirDesignerHostile, ZeroRateGivesNaNPolesAndTheFloorPeak) {
  // Nyquist 0 makes every pole NaN; NaN gains never beat the -100 dB floor, so the numerator
  // (1 + z^-1)^2 is scaled by 10^5.
  CDigitFiltCoefMak08IIR d;
  d.setRate(0.0);
  d.setOrder(2);
  d.setFreqPoints(16);
  std::unique_ptr<double[]> gain(d.filterGain());
  ASSERT_NE(gain, nullptr);
  EXPECT_TRUE(std::isnan(d.getBCoeff(1)));
  EXPECT_DOUBLE_EQ(d.getACoeff(0), 1e5);
  EXPECT_DOUBLE_EQ(d.getACoeff(1), 2e5);
  EXPECT_DOUBLE_EQ(d.getACoeff(2), 1e5);
}

TEST(IirDesignerHostile, WildRatesEdgesAndRipplesStayInTheArrays) {
  for (int type : {0, 1, 2, 3, -1})
    for (int proto : {1, 5})
      for (double v : {kNan, kInf, -kInf, 0.0, -625.0, kDenorm, 1e308}) {
        CDigitFiltCoefMak08IIR d;
        d.setPrototype(proto);
        d.setFilterType(type);
        d.setOrder(5);
        d.setFreqPoints(8);
        d.setFreq2(v);
        d.setRipple(v);
        std::unique_ptr<double[]> a(d.filterGain());
        ASSERT_NE(a, nullptr);
        d.setRate(v);
        d.setFreq1(v);
        std::unique_ptr<double[]> b(d.filterGain());
        ASSERT_NE(b, nullptr);
        EXPECT_EQ(d.getPReal(d.getOrder() + 5), 0.0);  // beyond our arrays: 0, no read
        EXPECT_EQ(d.getPImag(-1), 0.0);
      }
}

TEST(IirDesignerHostile, EdgeBeyondNyquistIsAFiniteDesign) {
  CDigitFiltCoefMak08IIR d;
  d.setRate(625.0);
  d.setOrder(4);
  d.setFreq2(400.0);  // beyond 312.5 Hz: tan() of an angle past pi/2
  d.setFreqPoints(64);
  std::unique_ptr<double[]> gain(d.filterGain());
  ASSERT_NE(gain, nullptr);
  EXPECT_TRUE(allFinite(gain.get(), 65));
  EXPECT_EQ(*std::max_element(gain.get(), gain.get() + 65), 0.0);
}

TEST(IirDesignerHostile, OddBandPassOrderAndGrowingOrderRedesign) {
  CDigitFiltCoefMak08IIR d;
  d.setFilterType(2);
  d.order = 5;  // written by the host; the setters would have made it 6: uses the spare slot
  d.setFreq1(20.0);
  d.setFreq2(60.0);
  EXPECT_EQ(d.locatePolesAndZeros(), 1);
  EXPECT_EQ(d.design(), 1);
  EXPECT_NE(std::unique_ptr<double[]>(d.filterGain()), nullptr);

  CDigitFiltCoefMak08IIR e, shared;
  e.setOrder(2);
  ASSERT_EQ(e.design(), 1);
  shared = e;
  e.setOrder(12);
  e.setFreqPoints(32);
  ASSERT_NE(std::unique_ptr<double[]>(e.filterGain()), nullptr);
  EXPECT_NE(e.getBCoeff(12), 0.0);
  EXPECT_EQ(e.getBCoeff(13), 0.0);
  EXPECT_EQ(shared.getBCoeff(3), 0.0);  // the copy keeps its order-2 arrays
  EXPECT_NE(shared.getBCoeff(2), 0.0);
}

TEST(IirDesignerHostile, TextSettersIgnoreOtherTexts) {
  CDigitFiltCoefMak08IIR d;
  for (const wchar_t* t : {L"", L"L", L"LPX", L"chebyshev ", L"\x0100P"}) {
    d.setFilterType(t);
    d.setPrototype(t);
  }
  EXPECT_EQ(d.getFilterType(), 0);
  EXPECT_EQ(d.getPrototype(), 1);
  d.setOrder(5);
  d.setFilterType(L"bP");
  EXPECT_EQ(d.getOrder(), 6);
  d.setPrototype(L"CHEBYSHEV");
  EXPECT_EQ(d.getPrototype(), 5);
}

// ---------------------------------------------------------------- biquad designer

TEST(BiquadDesignerHostile, UnsupportedTypesChangeNothing) {
  CDigitFiltCoefMak07BiQuad q;
  ASSERT_EQ(q.BiQuad_new(0, 0.0, 100.0, 1000.0, 0.7, 1.0), 1);
  q.BiQuad(1.0);
  const double cb0 = q.cb0, cy1 = q.cy1;
  for (int type : {kIntMin, kIntMax}) {
    EXPECT_EQ(q.BiQuad_new(type, kNan, kNan, 0.0, 0.0, 0.0), 0);
    EXPECT_TRUE(q.cb0 == cb0 && q.cy1 == cy1);
  }
}

TEST(BiquadDesignerHostile, DegenerateParametersGiveNonFiniteCoefficientsNotFailures) {
  for (int type : {0, 1, 3, 4, 5, 6, 7, 8, 9})
    for (double v : {kNan, kInf, 0.0, -1.0, kDenorm, 1e308}) {
      CDigitFiltCoefMak07BiQuad q;
      EXPECT_EQ(q.BiQuad_new(type, v, 100.0, 1000.0, 0.7, 1.0), 1);
      EXPECT_EQ(q.BiQuad_new(type, 6.0, v, 1000.0, 0.7, 1.0), 1);
      EXPECT_EQ(q.BiQuad_new(type, 6.0, 100.0, v, 0.7, 1.0), 1);
      EXPECT_EQ(q.BiQuad_new(type, 6.0, 100.0, 1000.0, v, v), 1);
      q.BiQuad(v);
    }
  CDigitFiltCoefMak07BiQuad q;  // rate 0: omega infinite, sin and cos NaN, and every output
  ASSERT_EQ(q.BiQuad_new(0, 0.0, 100.0, 0.0, 0.7, 1.0), 1);
  EXPECT_TRUE(std::isnan(q.BiQuad(1.0)));
}

TEST(BiquadDesignerHostile, ResonatorRecoversFromNonFiniteInputAfterClear) {
  CDigitFiltCoefMak07BiQuad q;
  q.tickRate = 0.0;
  q.setFreqAndReson(10.0, 0.9);  // theta infinite: cos NaN
  EXPECT_TRUE(std::isnan(q.poleCoef1));
  EXPECT_DOUBLE_EQ(q.poleCoef2, -0.81);
  q.setPoleCoeffs(nullptr);
  q.setZeroCoeffs(nullptr);
  EXPECT_TRUE(std::isnan(q.tick(kInf)));
  double zero[2] = {0.0, 0.0};
  q.setPoleCoeffs(zero);
  q.setZeroCoeffs(zero);
  q.setGain(3.0);
  q.clear();
  EXPECT_EQ(q.tick(1.0), 3.0);
  EXPECT_EQ(q.lastOutput, 3.0);
}

TEST(BiquadDesignerHostile, OrderEstimateOfDegenerateSchemesIsNotANumberOrInfinite) {
  CDigitFiltCoefMak07BiQuad q;
  EXPECT_TRUE(std::isinf(q.estimateFilterOrder(1.0, 40.0, 100.0, 100.0, 1000.0)));  // ln 1 = 0
  EXPECT_FALSE(std::isfinite(q.estimateFilterOrder(0.0, 40.0, 100.0, 200.0, 1000.0)));
  EXPECT_TRUE(std::isnan(q.estimateFilterOrder(1.0, 40.0, 100.0, 200.0, kNan)));
  // A pass edge at 0: tan 0 = 0 makes the divisor infinite and the estimate 0.
  EXPECT_EQ(q.estimateFilterOrder(1.0, 40.0, 0.0, 200.0, 1000.0), 0.0);
}

// ---------------------------------------------------------------- acquisition filter objects

filter_iirspec stage(double rate, double low, double high) {
  filter_iirspec s;
  s.enabled = 1;
  s.filterType = 0;
  s.sampleRate = rate;
  s.freqLow = low;
  s.freqHigh = high;
  s.order = 2;
  return s;
}

TEST(MeFilterAcqHostile, StageCoefficientCountsOutsideTheStore) {
  for (int count : {-1, kIntMin, 0, 41, kIntMax}) {
    SCOPED_TRACE(count);
    CMeFilterAcq f;
    filter_iirspec s = stage(1000.0, 1.0, 100.0);
    s.numCoefs = count;
    for (double& c : s.coefs) c = 0.01;
    f.setFilterParameters(s);
    Vec d = wave(50);
    f.filter(d.data(), 50);
    if (count <= 0)
      EXPECT_EQ(d, Vec(50, 0.0));  // no term: every output is the cleared sum
    else
      EXPECT_TRUE(allFinite(d.data(), 50));  // stops at a[39], the last slot of the store
  }
}

TEST(MeFilterAcqHostile, WildRingIndexAndBlocksWithoutSamples) {
  CMeFilterAcq f;
  filter_iirspec s = stage(1000.0, 1.0, 100.0);
  s.numCoefs = 3;
  s.coefs[0] = 1.0;
  f.setFilterParameters(s);
  for (std::int64_t ring : {std::int64_t{-1}, std::numeric_limits<std::int64_t>::min(),
                            std::numeric_limits<std::int64_t>::max()}) {
    f.ringIndex = ring;
    double v = 2.0;
    f.filter(&v, 1);
    EXPECT_EQ(v, 2.0);
    EXPECT_TRUE(f.ringIndex >= 0 && f.ringIndex < 20);
  }
  Vec d = wave(4);
  const Vec before = d;
  f.filter(d.data(), 0);
  f.filter(d.data(), -3);
  f.filter(nullptr, 4);
  CMeFilterAcqHPFilter hp;
  hp.setFilterParameters(s);
  hp.filter(nullptr, 4);
  hp.filter(d.data(), -1);
  CMeFilterAcqPowerLineqv pl;
  pl.setFilterParameters(stage(1000.0, 45.0, 55.0));
  pl.filter(nullptr, 4);
  pl.filterIntPol(d.data(), 0);
  pl.filterIntPol(nullptr, 4);
  EXPECT_EQ(d, before);
}

TEST(MeFilterAcqHostile, FirstOrderFiltersWithNonFiniteRates) {
  for (double rate : {0.0, kNan, -kInf, kDenorm}) {
    CMeFilterAcqLPFilter lp;
    CMeFilterAcqHPFilter hp;
    lp.setFilterParameters(stage(rate, 1.0, 10.0));
    hp.setFilterParameters(stage(rate, 1.0, 10.0));
    Vec d = wave(10);
    lp.filter(d.data(), 10);
    hp.filter(d.data(), 10);
    lp.setFilterParameters(stage(1000.0, 1.0, 10.0));  // a finite rate starts from a cleared state
    Vec c(5, 1.0);
    lp.filter(c.data(), 5);
    EXPECT_TRUE(allFinite(c.data(), 5));
  }
}

TEST(MeFilterAcqHostile, SettlingTimesWithoutFrequencies) {
  CMeFilterAcqNotchFilter notch(50.0, 0.0), other(0.0, 3.0);
  CMeFilterAcqHPFilter hp;
  CMeFilterAcqLPFilter lp;
  EXPECT_EQ(notch.getSettlingTime() + other.getSettlingTime() + hp.getSettlingTime() +
                lp.getSettlingTime(), 0.0);
  hp.PassFilter(kNan, 1, 0);
  EXPECT_TRUE(std::isnan(hp.getSettlingTime()));
}

TEST(MeFilterAcqHostile, ExtraValuesWithOddCounts) {
  CMeFilterAcq none(10.0, -5, nullptr), zeros(10.0, 3, nullptr);
  EXPECT_EQ(none.extraCount, 0);
  EXPECT_EQ(none.extra, nullptr);
  ASSERT_NE(zeros.extra, nullptr);
  EXPECT_EQ(zeros.extra[2], 0.0);
  EXPECT_EQ(CMeFilterAcq(zeros).extraCount, 3);
}

TEST(MeFilterAcqHostile, PowerLineRatesWithoutAWholePeriodAreReported) {
  // Averaging remover, then the resampling one; tiny rates would put a huge number of grid
  // points (for denormal rates: more than the stepping can count) between two samples.
  const wchar_t* kLow = L"Power-line filter: a sample rate of ";
  const struct { bool intPol; double rate; const wchar_t* prefix = nullptr; } cases[] = {
      {false, 0.0}, {false, -1000.0}, {false, kNan}, {false, kInf}, {false, 1e300}, {false, 20.0},
      {true, 1e-300, kLow}, {true, 0.048, kLow}, {true, 0.0}, {true, -20.0}, {true, kNan},
      {true, -kInf}, {true, 1e300}, {true, kDenorm}};
  for (const auto& c : cases) {
    SCOPED_TRACE(std::to_string(c.intPol) + " " + std::to_string(c.rate));
    MessageCapture cap;
    CMeFilterAcqPowerLineqv f;
    Vec d = wave(30);
    const Vec before = d;
    if (c.intPol) {
      f.setFilterParametersIntPol(stage(c.rate, 45.0, 55.0));
      f.filterIntPol(d.data(), 30);
    } else {
      f.setFilterParameters(stage(c.rate, 45.0, 55.0));
      f.filter(d.data(), 30);
    }
    EXPECT_EQ(f.period, 0);
    ASSERT_EQ(cap.messages.size(), 1u);
    if (c.prefix) {
      EXPECT_EQ(cap.messages[0].rfind(c.prefix, 0), 0u);
    }
    EXPECT_EQ(d, before);
  }
  // 50 / 1024 Hz is the lowest rate taken: 1024 grid points per sample.
  MessageCapture cap;
  CMeFilterAcqPowerLineqv f;
  f.setFilterParametersIntPol(stage(50.0 / 1024.0, 45.0, 55.0));
  EXPECT_EQ(f.period, 1);
  EXPECT_TRUE(cap.messages.empty());
  Vec d = wave(30);
  f.filterIntPol(d.data(), 30);
  EXPECT_TRUE(allFinite(d.data(), 30));
  EXPECT_GE(f.workCapacity, 30 * 1024);
}

TEST(MeFilterAcqHostile, ResamplingRemoverGuardsGridValuesAHostChanged) {
  // A grid step far below one sample or negative, and carried step/phase values written between
  // blocks: refused rather than stepped for ever.
  CMeFilterAcqPowerLineqv g;
  g.setFilterParametersIntPol(stage(1024.0, 45.0, 55.0));
  Vec d = wave(30);
  const Vec before = d;
  for (double inv : {1e-300, -1.0}) {
    CMeFilterAcqPowerLineqv h = g;
    h.invGridRate = inv;
    h.filterIntPol(d.data(), 30);
    EXPECT_EQ(d, before);
  }
  Vec first = wave(30);
  g.filterIntPol(first.data(), 30);
  const double stepPhase[][2] = {{1e-300, -1e300}, {0.0, kNan}, {kNan, kInf}, {2.0, 1.5}};
  for (const auto& v : stepPhase) {
    CMeFilterAcqPowerLineqv step = g, phase = g;
    step.gridStep = v[0];
    phase.gridPhase = v[1];
    step.filterIntPol(d.data(), 30);
    phase.filterIntPol(d.data(), 30);
    EXPECT_EQ(d, before);
  }
}

TEST(MeFilterAcqHostile, NonFiniteSamplesAndLongBlocksThroughTheRemovers) {
  CMeFilterAcqPowerLineqv f;
  f.setFilterParametersIntPol(stage(1024.0, 45.0, 55.0));
  Vec d = wave(200000);
  d[7] = kNan;
  d[8] = kInf;
  f.filterIntPol(d.data(), static_cast<std::int64_t>(d.size()));
  EXPECT_GE(f.workCapacity, 205079);  // ceil(200000 * 1050 / 1024) + 2
  for (int i = 0; i < 50; ++i) {  // one-sample blocks after the long one
    double v = kDenorm;
    f.filterIntPol(&v, 1);
  }
  CMeFilterAcqPowerLine p;
  p.setFilterParameters(stage(1000.0, 45.0, 55.0));
  p.meanLength = 0.0;  // a host zeroing the divisor gets non-finite output, not a crash
  Vec e = wave(40);
  p.filter(e.data(), 40);
  EXPECT_FALSE(std::isfinite(e[0]));
}

TEST(MeFilterAcqHostile, CopiesOfSetUpRemoversStartSwitchedOff) {
  CMeFilterAcqPowerLineqv f;
  f.setFilterParametersIntPol(stage(1024.0, 45.0, 55.0));
  Vec d = wave(64);
  f.filterIntPol(d.data(), 64);
  CMeFilterAcqPowerLineqv copy(f);  // period 0
  Vec e = wave(64);
  const Vec before = e;
  copy.filterIntPol(e.data(), 64);
  copy.filter(e.data(), 64);
  EXPECT_EQ(e, before);
  // Assignment shares the work array; either side growing it leaves the other's intact.
  CMeFilterAcqPowerLineqv assigned;
  assigned = f;
  Vec big = wave(5000), small = wave(64);
  f.filterIntPol(big.data(), 5000);
  assigned.filterIntPol(small.data(), 64);
  EXPECT_TRUE(allFinite(small.data(), 64));
}

}  // namespace
