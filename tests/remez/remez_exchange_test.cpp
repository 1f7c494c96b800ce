#include <digitfilt/digitfilt.h>
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "support/message_capture.h"
#include "support/remez_support.h"

namespace {

using digitfilt::kPi;
using digitfilt::test::bandDeviation;
using digitfilt::test::lowPassSpec;
using digitfilt::test::magnitudeAt;
using digitfilt::test::MessageCapture;
using digitfilt::test::remezSpec;
using Remez = CDigitFiltCoefMak06Remez04;

struct CheckCase {
  std::int64_t numTaps, numBands;
  std::vector<double> bands;
  const wchar_t* message;  // null: passes without a message
  int result;
};

TEST(RemezInputCheck, EachRejectionShowsItsText) {
  const CheckCase cases[] = {
      {3, 2, {0, 0.2, 0.3, 0.5}, L"remez: number of taps must be an integer greater than 3", 0},
      {20, 0, {0, 0.2, 0.3, 0.5}, L"remez: must have an even number of band edges", 0},
      {20, 3, {0, 0.1, 0.2, 0.3, 0.4, 0.5}, L"remez: must have an even number of band edges", 0},
      {20, 2, {0, 0.2, 0.3, 1.5}, L"Band edges must be in the range [0,1]", 0},
      {20, 2, {-0.1, 0.2, 0.3, 0.5}, L"Band edges must be in the range [0,1]", 0},
      {20, 2, {0, 0.3, 0.2, 0.5}, L"The frequency values must be ascending!!", 0},
      // Range before order: the out-of-range edge is reported although an earlier one descends.
      {20, 2, {0.3, 0.2, 0.4, 1.5}, L"Band edges must be in the range [0,1]", 0},
      // Edges up to 1 pass, though only 0..0.5 is meaningful; equal edges pass.
      {20, 2, {0, 0.2, 0.2, 0.7}, nullptr, 1},
  };
  for (const CheckCase& c : cases) {
    SCOPED_TRACE(c.numTaps * 100 + c.numBands);
    MessageCapture capture;
    std::vector<double> bands = c.bands, des(6, 0.5), weight(6, 1.0);
    std::int64_t density = 16;
    EXPECT_EQ(Remez::checkCorrectRemezInputs(c.numTaps, c.numBands, density, bands.data(),
                                             des.data(), weight.data(), 1),
              c.result);
    EXPECT_EQ(capture.messages, c.message ? std::vector<std::wstring>{c.message}
                                          : std::vector<std::wstring>{});
  }
}

TEST(RemezInputCheck, GridDensityIsClampedInto16To320) {
  double bands[] = {0, 0.2, 0.3, 0.5}, des[] = {1, 1, 0, 0}, weight[] = {1, 1};
  MessageCapture capture;
  std::int64_t density = 10;
  EXPECT_EQ(Remez::checkCorrectRemezInputs(20, 2, density, bands, des, weight, 1), 1);
  EXPECT_EQ(density, 16);
  ASSERT_EQ(capture.messages.size(), 1u);
  EXPECT_EQ(capture.messages[0], L"remez: griddensity is too low; must be greater than 16");
  density = 400;
  EXPECT_EQ(Remez::checkCorrectRemezInputs(20, 2, density, bands, des, weight, 1), 1);
  EXPECT_EQ(density, 320);
  EXPECT_EQ(capture.messages.size(), 1u);  // silently
}

TEST(RemezInputCheck, WeightsAndOnlyTheFirstAmplitudesAreCorrected) {
  double bands[] = {0, 0.2, 0.3, 0.5}, des[] = {1.5, -0.2, 1.5, -0.2}, weight[] = {900, -1};
  MessageCapture capture;
  std::int64_t density = 16;
  EXPECT_EQ(Remez::checkCorrectRemezInputs(20, 2, density, bands, des, weight, 1), 1);
  EXPECT_TRUE(weight[0] == 800.0 && weight[1] == 1.0);
  EXPECT_EQ(capture.messages, std::vector<std::wstring>(2, L"Weights must all be > 0\n"));
  // Deliberate: des[0..numBands-1] only, so the second band's edge amplitudes stay.
  EXPECT_EQ(std::vector<double>(des, des + 4), (std::vector<double>{1.0, 0.0, 1.5, -0.2}));
}

TEST(RemezBase, GridSizeRippleRatioAndRanges) {
  const double bands[] = {0, 0.2, 0.3, 0.5};
  // 2*10*16*0.2 twice = 128; ceil(128.5) = 129; one less for odd symmetry.
  EXPECT_EQ(Remez::getGridSize01(16, 10, 1, 2, bands), 129);
  EXPECT_EQ(Remez::getGridSize01(16, 10, 3, 2, bands), 128);
  // (1 - 10^-0.05) / 2 * 100
  EXPECT_NEAR(Remez::getRippleRatio(1, 40), 5.43746, 1e-5);
  Remez d;
  EXPECT_EQ(d.initFiltRange4SmplRateRmz(1000.0), 1);
  EXPECT_DOUBLE_EQ(d.freqMin, 0.1);
  EXPECT_DOUBLE_EQ(d.freqMax, 499.9);
  EXPECT_DOUBLE_EQ(d.widthMin, 0.5);
  EXPECT_DOUBLE_EQ(d.widthMax, 500.0);
}

// The grid example: 0-0.2 / 0.3-0.5, r = 10, density 16, spacing 1/320, 64 points per band.
struct ExampleGrid : ::testing::Test {
  void build(std::int32_t positive, std::int64_t numTaps) {
    d.positiveSym = positive;
    const std::int64_t g = Remez::getGridSize01(16, 10, positive ? 1 : 3, 2, bands);
    ASSERT_EQ(d.newRemezData(static_cast<int>(g), 11), 1);
    filled = Remez::_01createDenseGrid(10, numTaps, 2, bands, des, weight, 16, &d);
  }
  double bands[4] = {0, 0.2, 0.3, 0.5}, des[4] = {1, 0.5, 0, 0}, weight[2] = {1, 3};
  CRemezData d;
  int filled = 0;
};

TEST_F(ExampleGrid, BandsFillHalfTheDoubledArrays) {
  build(1, 20);
  EXPECT_EQ(filled, 128);
  EXPECT_EQ(d.gridCap, 258);
  EXPECT_DOUBLE_EQ(d.grid[10], 10.0 / 320);
  EXPECT_EQ(d.grid[63], 0.2);  // each band ends on its edge
  EXPECT_DOUBLE_EQ(d.grid[64], 0.3);
  EXPECT_EQ(d.grid[127], 0.5);
  EXPECT_DOUBLE_EQ(d.desired[21], 1.0 - 21 * 0.5 / 63);  // linear between edge amplitudes
  EXPECT_EQ(d.weights[100], 3.0);
  for (int i = 128; i < 258; ++i) ASSERT_EQ(d.weights[i], 0.0);
}

TEST_F(ExampleGrid, OddSymmetryStartsOneSpacingUpAndEndRuleSeesTheTail) {
  build(0, 21);
  EXPECT_DOUBLE_EQ(d.grid[0], 1.0 / 320);
  EXPECT_EQ(filled, 127);  // floor((0.2 - 1/320) 320 + 0.5) = 63 in the first band
  EXPECT_EQ(d.grid[126], 0.5);  // the last walked entry is the zero tail, so 0.5 stays
  d.gridCap = filled;
  Remez::_01createDenseGrid(10, 21, 2, bands, des, weight, 16, &d);
  EXPECT_DOUBLE_EQ(d.grid[126], 0.5 - 1.0 / 320);
}

TEST_F(ExampleGrid, InitialGuessSpansTheTailAndParametersRefuseIt) {
  build(1, 20);
  ASSERT_EQ(Remez::_02initialGuess(10, &d), 1);
  EXPECT_EQ(d.ext[5], 128);  // 257 * 5 / 10: already past the filled points
  EXPECT_EQ(d.ext[10], 257);
  EXPECT_EQ(Remez::_03calcParms(10, &d), 0);  // weight 0 in the tail
  d.gridCap = filled;
  ASSERT_EQ(Remez::_02initialGuess(10, &d), 1);
  EXPECT_EQ(d.ext[10], 127);
  EXPECT_EQ(Remez::_03calcParms(10, &d), 1);
  // The ordinates interpolate: A at an extremal is its ordinate.
  double A = 0.0;
  EXPECT_EQ(Remez::_10Freq2FiltRspAmp(d.grid[d.ext[3]], 10, &d, A), 1);
  EXPECT_EQ(A, d.yVal[3]);
}

TEST_F(ExampleGrid, SymmetryWeighting) {
  build(1, 20);
  ASSERT_EQ(Remez::_07SetParksMcClellanDW(1, 20, 129, &d), 1);
  const double c = std::cos(kPi * 10 / 320);
  EXPECT_DOUBLE_EQ(d.desired[10], 1.0 * (1.0 - 10 * 0.5 / 63) / c);
  EXPECT_DOUBLE_EQ(d.weights[10], c);
  // A differentiator cannot weight by 1/f at f = 0: refused, nothing changed.
  build(1, 20);
  EXPECT_EQ(Remez::_07SetParksMcClellanDW(10, 20, 129, &d), -1);
  EXPECT_EQ(d.weights[10], 1.0);
}

// A 10-point walk with errors set by hand.
struct SearchCase : ::testing::Test {
  int run(int r, std::vector<double> e) {
    d.newRemezData(5, 4);  // gridCap 10, extCap 8
    for (int i = 0; i < 10; ++i) d.error[i] = e[i];
    return Remez::_05search(r, &d);
  }
  std::vector<int> ext(int r) { return std::vector<int>(d.ext, d.ext + r + 1); }
  CRemezData d;
};

TEST_F(SearchCase, KeepsAlternatingExtremaDroppingTheSurplus) {
  // All alternate, one surplus: the smaller end goes.
  EXPECT_EQ(run(2, {0, 0.5, 0, -1, 0, 1, 0, -0.9, 0, 0}), 1);
  EXPECT_EQ(ext(2), (std::vector<int>{3, 5, 7}));
  EXPECT_EQ(run(2, {0, 1, 0, -1, 0, 1, 0, -0.5, 0, 0}), 1);
  EXPECT_EQ(ext(2), (std::vector<int>{1, 3, 5}));
  // Two maxima in a row: the smallest error up to and including the second goes.
  EXPECT_EQ(run(2, {0, 1, 0, 0.3, 0, -1, 0, 1, 0, 0}), 1);
  EXPECT_EQ(ext(2), (std::vector<int>{1, 5, 7}));
  // Two surplus: the smallest overall (0.5), then the first of the pair it leaves behind.
  EXPECT_EQ(run(3, {0.9, -1, 0.5, -1, 1, -0.8, 0, 0, 0, 0}), 1);
  EXPECT_EQ(ext(3), (std::vector<int>{1, 3, 4, 5}));
  // Both ends of the walk count.
  EXPECT_EQ(run(1, {-1, 0, 0, 0, 0, 0, 0, 0, 0, 1}), 1);
  EXPECT_EQ(ext(1), (std::vector<int>{0, 9}));
}

TEST_F(SearchCase, FailureCodes) {
  EXPECT_EQ(run(2, std::vector<double>(10, 0.0)), -2);
  EXPECT_EQ(run(2, {1, -1, 1, -1, 1, -1, 1, -1, 1, -1}), -3);  // more than 2 r candidates
  d.ext[2] = -1;
  EXPECT_EQ(Remez::_05search(2, &d), 0);
}

TEST_F(SearchCase, ConvergesWhenRippleMagnitudesAgree) {
  run(2, std::vector<double>(10, 0.0));
  d.ext[0] = 0, d.ext[1] = 1, d.ext[2] = 2;
  const auto done = [&](double a, double b, double c) {
    d.error[0] = a, d.error[1] = b, d.error[2] = c;
    return Remez::_06isDone(2, &d);
  };
  EXPECT_EQ(done(1, -1, 0.99995), 1);
  EXPECT_EQ(done(1, -1, 0.9998), 0);
  EXPECT_EQ(done(0, 0, 0), 0);
}

TEST(RemezResponseAmplitude, FailsWithoutExtremalsOrDenominator) {
  CRemezData d;
  ASSERT_EQ(d.newRemezData(4, 2), 1);
  double A = 0.0;
  for (int r : {-1, 1}) {  // no extremals; ad all zero
    A = 0.0;
    EXPECT_EQ(Remez::_10Freq2FiltRspAmp(0.1, r, &d, A), 0);
    EXPECT_EQ(A, 1.0);
  }
}

// Zero-phase amplitude samples of symmetric taps, A[k] = sum_n h[n] s(2 pi k (n - M) / N).
std::vector<double> amplitudeSamples(const std::vector<double>& h, bool positive) {
  const int N = static_cast<int>(h.size());
  const double M = (N - 1) / 2.0;
  std::vector<double> A(N / 2 + 1, 0.0);
  for (int k = 0; k <= N / 2; ++k)
    for (int n = 0; n < N; ++n) {
      const double x = 2 * kPi * k * (n - M) / N;
      A[k] += h[n] * (positive ? std::cos(x) : std::sin(x));
    }
  return A;
}

TEST(RemezTapTransform, InvertsAmplitudeSamplingForAllFourClasses) {
  for (int N : {7, 8}) {
    for (bool positive : {true, false}) {
      SCOPED_TRACE(N * 10 + positive);
      std::vector<double> h(N);
      for (int n = 0; n < N / 2; ++n) {
        h[n] = 0.1 * (n + 1) - 0.03 * n * n;
        h[N - 1 - n] = positive ? h[n] : -h[n];
      }
      if (N % 2) h[N / 2] = positive ? 0.7 : 0.0;
      const std::vector<double> A = amplitudeSamples(h, positive);
      std::vector<double> back(N);
      ASSERT_EQ(Remez::freqSample(A.data(), back.data(), N, positive ? 1 : 0), 1);
      for (int n = 0; n < N; ++n) EXPECT_NEAR(back[n], h[n], 1e-14) << n;
    }
  }
}

// Taps of scipy.signal.remez(32, [0, 0.2, 0.25, 0.5], [1, 0], fs=1.0), first half (scipy 1.10.1).
const double kScipyLowPass32[16] = {
    -0.00039444937475101083, 0.017375091704723268, 0.0028881502587573445, -0.013025206603826995,
    -0.0088306251014419312,  0.015380851595071895, 0.018346476578137368,  -0.015094389187233109,
    -0.032090782692026434,   0.0098533614612943306, 0.051883881123728909, 0.005165823324048132,
    -0.084753794806455021,   -0.047680042945324644, 0.1795377221558479,   0.41309620875675845};
// scipy.signal.remez(40, [0, 0.1, 0.15, 0.3, 0.35, 0.5], [0, 1, 0], fs=1.0), first half.
const double kScipyBandPass40[20] = {
    0.0010269147298677052, -0.003358371163906798, -0.013403464893622263, 0.0042606678638826331,
    0.0057030719970049973, 0.00027224857777605107, 0.021032974804275715, 0.012333279779708875,
    -0.024284625219430839, -0.0078702969607769065, -0.0097996971475638028, -0.040892633061464317,
    0.027739678762731285,  0.067887855624383348,  -0.0021067399759119483, 0.041701633996784171,
    0.033545177864166012,  -0.23044714761670912,  -0.17768043197254021,  0.29909315242469137};

// Both exchanges walk the same dense grid (spacing 1/(32 r), band edges on grid points) to the
// same discrete minimax optimum, so the taps agree to rounding (measured 6e-16); 1e-10 leaves
// room for another libm without hiding a wrong extremal set, which moves taps by 1e-4 or more.
constexpr double kScipyTolerance = 1e-10;

void expectSymmetricMatch(const Filter_Remez& f, const double* half) {
  const std::int64_t n = f.numTaps;
  for (std::int64_t i = 0; i < n / 2; ++i) {
    EXPECT_NEAR(f.coefs[i], half[i], kScipyTolerance) << i;
    EXPECT_NEAR(f.coefs[n - 1 - i], f.coefs[i], 1e-14) << i;
  }
}

TEST(RemezDesign, LowPassMatchesScipyWithEqualRipple) {
  Filter_Remez f = lowPassSpec(32);
  ASSERT_EQ(Remez::remez00(&f), 1);
  expectSymmetricMatch(f, kScipyLowPass32);
  const double pass = bandDeviation(f.coefs, 32, 0.0, 0.2, 1.0),
               stop = bandDeviation(f.coefs, 32, 0.25, 0.5, 0.0);
  EXPECT_LT(pass, 0.025);
  EXPECT_LT(stop, 0.025);
  EXPECT_NEAR(stop / pass, 1.0, 0.02);
}

TEST(RemezDesign, BandPassMatchesScipyWithEqualRipple) {
  Filter_Remez f = remezSpec(40, {0, 0.1, 0.15, 0.3, 0.35, 0.5}, {0, 1, 0}, {1, 1, 1});
  ASSERT_EQ(Remez::remez00(&f), 1);
  expectSymmetricMatch(f, kScipyBandPass40);
  const double lower = bandDeviation(f.coefs, 40, 0.0, 0.1, 0.0),
               pass = bandDeviation(f.coefs, 40, 0.15, 0.3, 1.0),
               upper = bandDeviation(f.coefs, 40, 0.35, 0.5, 0.0);
  EXPECT_LT(pass, 0.0125);
  EXPECT_NEAR(lower / pass, 1.0, 0.02);
  EXPECT_NEAR(upper / pass, 1.0, 0.02);
}

TEST(RemezDesign, WeightsScaleTheRipple) {
  Filter_Remez f = lowPassSpec(32, 10.0);
  ASSERT_EQ(Remez::remez00(&f), 1);
  const double pass = bandDeviation(f.coefs, 32, 0.0, 0.2, 1.0),
               stop = bandDeviation(f.coefs, 32, 0.25, 0.5, 0.0);
  EXPECT_NEAR(pass / stop, 10.0, 0.2);
}

// scipy.signal.remez(31, [0, 0.2, 0.25, 0.5], [1, 0], fs=1.0), first half.
const double kScipyLowPass31[16] = {
    0.0066086117833236147, 0.016426240359850151, -0.0087751619554349326, -0.013543685012104699,
    0.0025597494648761446, 0.022173794303114027, 0.0039882743729614924,  -0.030052489592829391,
    -0.017253353678557893, 0.037823249861860544, 0.041158866244813866,   -0.044293821772366196,
    -0.091574669676690812, 0.048576715475175336, 0.31328768344470853,    0.44992395104283583};

TEST(RemezDesign, OddLengthDesignsTwoTapsShorter) {
  // r = numTaps / 2 is not raised for odd lengths: 33 taps get the 31-tap optimum, zero-padded.
  Filter_Remez f = lowPassSpec(33);
  ASSERT_EQ(Remez::remez00(&f), 1);
  EXPECT_TRUE(std::fabs(f.coefs[0]) < 1e-12 && std::fabs(f.coefs[32]) < 1e-12);
  for (int i = 0; i < 16; ++i) {
    EXPECT_NEAR(f.coefs[i + 1], kScipyLowPass31[i], kScipyTolerance) << i;
    EXPECT_NEAR(f.coefs[31 - i], kScipyLowPass31[i], kScipyTolerance) << i;
  }
}

TEST(RemezDesign, DoubledRunsFailEverywhere) {
  Filter_Remez f = lowPassSpec(32);
  CRemezData d;
  EXPECT_EQ(Remez::rmzSearch(32, 2, f.bands, f.des, f.weight, &d, 16, 1), -1);
  EXPECT_GE(Remez::rmzSearchX(32, 2, f.bands, f.des, f.weight, &d, 16, 1), 1);
  EXPECT_EQ(Remez::remezPM03k(&f), 0);
  for (int i = 0; i < 32; ++i) ASSERT_EQ(f.coefs[i], 0.0);
  f.numBands = 4;  // more bands than the record holds
  EXPECT_EQ(Remez::remez00(&f), 0);
  EXPECT_EQ(Remez::remezPM03k(nullptr), 0);
}

TEST(RemezDesign, RunsThatCannotConvergeReturnTheirCode) {
  Filter_Remez f = lowPassSpec(32, 0.0);
  CRemezData d;
  EXPECT_EQ(Remez::rmzSearchX(32, 2, f.bands, f.des, f.weight, &d, 16, 1), -1);  // weight 0
  // 201 taps over a 0.05 transition want a ripple near 1e-8, beyond what the clamped
  // barycentric weights resolve: the search loses its extremals within a few passes.
  Filter_Remez g = lowPassSpec(201);
  EXPECT_EQ(Remez::rmzSearchX(201, 2, g.bands, g.des, g.weight, &d, 16, 1), -1);
  EXPECT_EQ(Remez::remez00(&g), 0);
}

TEST(RemezOrderSearch, NoLengthIsChosenSinceEveryRunFails) {
  // Each of the 118 trial runs stops at its first parameter step (the zero tail's weight), so
  // the best iteration count stays 40 and the record is left as it was.
  Filter_Remez f = lowPassSpec(60);
  f.order = 7;
  EXPECT_EQ(Remez::searchBestOrder(&f), 0);
  EXPECT_EQ(f.numTaps, 60);
  EXPECT_EQ(f.order, 7);
  EXPECT_EQ(Remez::searchBestOrder(nullptr), 0);
}

TEST(RemezOrderSearch, LowAndHighPassTransitionsAreWidenedBeforeTheSearch) {
  MessageCapture capture;
  Filter_Remez f = lowPassSpec(30);
  f.bands[2] = 0.2;  // no transition: widened by the minimum 0.0001
  EXPECT_EQ(Remez::findParameterLP(&f), 0);
  EXPECT_DOUBLE_EQ(f.bands[2], 0.2001);
  f.bands[2] = 0.45;  // capped at half the room above the pass band
  Remez::findParameterLP(&f);
  EXPECT_DOUBLE_EQ(f.bands[2], 0.35);
  f.bands[2] = 0.3;
  Remez::findParameterHP(&f);
  EXPECT_DOUBLE_EQ(f.bands[1], 0.15);
  f.bands[2] = 0.0;
  Remez::findParameterHP(&f);
  EXPECT_DOUBLE_EQ(f.bands[2], 0.0002);
  EXPECT_DOUBLE_EQ(f.bands[1], 0.0001);
  EXPECT_TRUE(capture.messages.empty());
  f.numTaps = 3;
  EXPECT_EQ(Remez::findParameterLP(&f), 0);
  ASSERT_EQ(capture.messages.size(), 1u);
  EXPECT_EQ(capture.messages[0], L"remez: number of taps must be an integer greater than 3");
}

TEST(RemezSampledResponse, MatchesTheDesignedTaps) {
  Filter_Remez f = lowPassSpec(32);
  ASSERT_EQ(Remez::remez00(&f), 1);
  CRemezData d;
  ASSERT_GE(Remez::rmzSearchX(32, 2, f.bands, f.des, f.weight, &d, 16, 1), 1);
  ASSERT_EQ(Remez::_03calcParms(16, &d), 1);
  CFreqResp r;
  ASSERT_EQ(r.freqResponseM(1, 32, 16, &d, 0), 250);
  EXPECT_EQ(r.freqs[0], 0.0);
  EXPECT_EQ(r.freqs[249], 1.0);
  for (int i = 0; i < 249; ++i)
    ASSERT_NEAR(std::fabs(r.amps[i]), magnitudeAt(f.coefs, 32, r.freqs[i] / 2), 1e-9) << i;
  EXPECT_NEAR(r.gainsDb[0], 20 * std::log10(r.amps[0]), 1e-12);
  EXPECT_EQ(r.gainsDb[249], -300.0);  // cos(pi/2) makes the even-length amplitude vanish
  std::vector<double> fr(250), amp(250), db(250);
  EXPECT_EQ(r.freqResponseS(1, 32, 16, &d, fr.data(), amp.data(), db.data(), 250), 1);
  for (int i = 0; i < 250; ++i) ASSERT_EQ(amp[i], r.amps[i]);
  EXPECT_EQ(r.freqResponseS(1, 32, 16, &d, fr.data(), amp.data(), db.data(), 0), 1);
  EXPECT_EQ(r.freqResponseM(1, 32, -1, &d, 10), 0);
}

}  // namespace
