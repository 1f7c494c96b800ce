// Hostile values through the Remez line: non-finite and denormal design requests, wild lengths
// and counts, edited workspace caps, and host-written tap counts. Each case asserts the result
// the operation's steps define or its failure value; the sanitizer build proves nothing is read
// or written outside the arrays.
#include <digitfilt/digitfilt.h>
#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <vector>

#include "support/message_capture.h"
#include "support/remez_support.h"

namespace {

using digitfilt::test::lowPassSpec;
using digitfilt::test::MessageCapture;
using Designer = CDigitFiltCoefMak06Remezqv;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN(),
                 kInf = std::numeric_limits<double>::infinity(),
                 kDenorm = std::numeric_limits<double>::denorm_min();

struct OpenDesigner : Designer {
  using CDigitFiltCoefMak06Remez07::checkBuffer;
  using CDigitFiltCoefMak06Remez07::computeCoef;
  using CDigitFiltCoefMak06Remez07::filtRmzBkwd;
};

TEST(RemezHostileCheck, NonFiniteValuesFollowTheComparisons) {
  MessageCapture capture;
  std::int64_t density = INT64_MIN;
  // NaN edges fail neither the range nor the order comparison, so they pass.
  double bands[] = {0.0, kNaN, 0.3, 0.5}, des[] = {kNaN, -kInf, 0, 0}, weight[] = {kNaN, kDenorm};
  EXPECT_EQ(Designer::checkCorrectRemezInputs(20, 2, density, bands, des, weight, 0), 1);
  EXPECT_EQ(density, 16);
  // The clamps leave NaN alone; a denormal weight is tiny but > 0.
  EXPECT_TRUE(std::isnan(des[0]) && des[1] == 0.0 && std::isnan(weight[0]) && weight[1] == kDenorm);
  EXPECT_EQ(capture.messages.size(), 1u);

  capture.messages.clear();
  double infWeights[] = {kInf, -kInf}, okBands[] = {0.0, 0.2, 0.3, 0.5};
  density = INT64_MAX;
  EXPECT_EQ(Designer::checkCorrectRemezInputs(INT64_MAX, 2, density, okBands, des, infWeights, 0),
            1);
  EXPECT_TRUE(density == 320 && infWeights[0] == 800.0 && infWeights[1] == 1.0);
  EXPECT_EQ(capture.messages.size(), 2u);

  capture.messages.clear();
  double infBands[] = {0.0, kInf, 0.3, 0.5};
  EXPECT_EQ(Designer::checkCorrectRemezInputs(20, 2, density, infBands, des, weight, 0), 0);
  EXPECT_EQ(Designer::checkCorrectRemezInputs(INT64_MIN, 2, density, okBands, des, weight, 0), 0);
  EXPECT_EQ(Designer::checkCorrectRemezInputs(20, INT64_MIN, density, okBands, des, weight, 0), 0);
  EXPECT_EQ(Designer::checkCorrectRemezInputs(20, 2, density, nullptr, des, weight, 0), 0);
  ASSERT_EQ(capture.messages.size(), 3u);
  EXPECT_EQ(capture.messages[0], L"Band edges must be in the range [0,1]");
}

TEST(RemezHostileGrid, SizesOfNonsenseBandsAndDensities) {
  const double nanBands[] = {0.0, kNaN}, hugeBands[] = {0.0, 1e300}, negative[] = {0.5, 0.0};
  EXPECT_EQ(Designer::getGridSize01(16, 10, 1, 1, nanBands), 0);
  EXPECT_EQ(Designer::getGridSize01(16, 10, 2, 1, hugeBands), -1);
  EXPECT_EQ(Designer::getGridSize01(16, 10, 1, 1, negative), -159);
  EXPECT_EQ(Designer::getGridSize01(16, 10, 1, 0, nullptr), 1);
  EXPECT_EQ(Designer::getGridSize01(INT64_MAX, INT64_MAX, 1, 1, negative), 0);
}

TEST(RemezHostileRun, WildLengthsAndRequestsFailWithMinusOne) {
  const double bands[] = {0.0, 0.2, 0.25, 0.5}, des[] = {1, 1, 0, 0}, weight[] = {1, 1};
  const double nanBands[] = {0.0, kNaN, 0.25, 0.5};
  CRemezData data;
  for (std::int64_t taps : {INT64_MIN, std::int64_t{-7}, std::int64_t{0}, std::int64_t{1},
                            INT64_MAX}) {
    SCOPED_TRACE(taps);
    EXPECT_EQ(Designer::rmzSearch(taps, 2, bands, des, weight, &data, 16, 1), -1);
    EXPECT_EQ(Designer::rmzSearchX(taps, 2, bands, des, weight, &data, 16, 1), -1);
  }
  for (std::int64_t density : {INT64_MIN, std::int64_t{0}, INT64_MAX}) {
    SCOPED_TRACE(density);
    EXPECT_EQ(Designer::rmzSearchX(20, 2, bands, des, weight, &data, density, 1), -1);
  }
  EXPECT_EQ(Designer::rmzSearchX(20, 2, nanBands, des, weight, &data, 16, 1), -1);
  EXPECT_EQ(Designer::rmzSearchX(20, 2, bands, des, weight, nullptr, 16, 1), -1);
}

TEST(RemezHostileRun, NonFiniteAmplitudesOrWeightsDesignNothing) {
  for (int which = 0; which < 3; ++which) {
    SCOPED_TRACE(which);
    Filter_Remez f = lowPassSpec(20);
    if (which == 0) f.des[0] = f.des[1] = kNaN;
    if (which == 1) f.weight[1] = kInf;
    if (which == 2) f.des[2] = f.des[3] = 1e308;
    EXPECT_EQ(Designer::remez00(&f), 0);
    EXPECT_EQ(Designer::remezPM03k(&f), 0);
  }
}

TEST(RemezHostileRun, RecordArrayShorterThanNumTapsIsRefused) {
  Filter_Remez f = lowPassSpec(20);
  ASSERT_EQ(Designer::remez00(&f), 1);  // fits: 20 taps into its 21 slots
  f.allocCoefs(10);
  f.coefs[10] = 7.0;
  EXPECT_EQ(Designer::remez00(&f), 0);
  EXPECT_EQ(Designer::remezPM03k(&f), 0);
  EXPECT_EQ(f.coefs[10], 7.0);
  // A host's own array cannot be measured and is trusted.
  std::vector<double> hostTaps(20);
  f.coefs = hostTaps.data();
  EXPECT_EQ(Designer::remez00(&f), 1);
  EXPECT_NE(hostTaps[10], 0.0);
}

TEST(RemezHostileRun, OrderSearchWithExtremeLengths) {
  Filter_Remez f = lowPassSpec(20);
  for (std::int64_t taps : {INT64_MIN, INT64_MAX, std::int64_t{-100}}) {
    f.numTaps = taps;
    EXPECT_EQ(Designer::searchBestOrder(&f), 0);
    EXPECT_EQ(f.numTaps, taps);
  }
  f.numBands = 4;  // more bands than the record holds
  EXPECT_EQ(Designer::searchBestOrder(&f), 0);
  EXPECT_EQ(Designer::findParameterLP(&f), 0);
  EXPECT_EQ(Designer::findParameterHP(&f), 0);
  MessageCapture capture;
  Filter_Remez n = lowPassSpec(20);
  n.bands[1] = kNaN;  // the widened edge is NaN and passes the check; every run fails
  EXPECT_EQ(Designer::findParameterLP(&n), 0);
}

// A workspace whose caps and indices a host edited: every step refuses instead of walking past
// its arrays.
TEST(RemezHostileSteps, EditedCapsAndIndicesAreRefused) {
  CRemezData d;
  ASSERT_EQ(d.newRemezData(8, 3), 1);  // 16 grid entries, 6 extremal slots
  double A = 0.0;
  EXPECT_EQ(Designer::_10Freq2FiltRspAmp(0.1, INT_MAX, &d, A), 0);  // r + 1 must not wrap
  EXPECT_EQ(A, 1.0);
  EXPECT_EQ(Designer::_03calcParms(INT_MAX, &d), 0);
  EXPECT_EQ(Designer::_08findTap(INT64_MAX, 2, &d), 0);
  d.gridCap = 1000;
  EXPECT_EQ(Designer::_02initialGuess(2, &d), 0);
  EXPECT_EQ(Designer::_04calcError(2, &d), 0);
  EXPECT_EQ(Designer::_05search(2, &d), 0);
  EXPECT_EQ(Designer::_07SetParksMcClellanDW(1, 20, 1000, &d), 0);
  d.gridCap = 16;
  for (int i = 0; i < 16; ++i) d.weights[i] = 1.0, d.grid[i] = i / 32.0;
  d.ext[0] = 0, d.ext[1] = 15, d.ext[2] = 16;  // the last one is past the grid
  EXPECT_EQ(Designer::_03calcParms(2, &d), 0);
  EXPECT_EQ(Designer::_06isDone(2, &d), 0);
  d.ext[2] = -1;
  EXPECT_EQ(Designer::_05search(2, &d), 0);
  d.gridCap = 1;
  d.ext[2] = 0;
  EXPECT_EQ(Designer::_05search(2, &d), -2);
  EXPECT_EQ(d.newRemezData(INT_MAX, 1), 0);
  EXPECT_EQ(d.newRemezData(5, INT_MIN), 0);
  EXPECT_EQ(d.grid, nullptr);
  std::vector<double> a(2), h(1);
  EXPECT_EQ(Designer::freqSample(a.data(), h.data(), 0, 1), 0);
  EXPECT_EQ(Designer::freqSample(a.data(), h.data(), INT64_MAX, 1), 0);
  EXPECT_EQ(Designer::freqSample(nullptr, h.data(), 1, 1), 0);
}

TEST(RemezHostileResponse, UnusableWorkspaceOrLengths) {
  CFreqResp resp;
  CRemezData empty;
  EXPECT_EQ(resp.freqResponseM(1, 20, 10, &empty, 0), 0);  // 250 buffers, evaluation fails
  EXPECT_EQ(resp.count, 250);
  EXPECT_EQ(resp.freqResponseM(1, 20, INT64_MAX, &empty, 5), 0);
  EXPECT_EQ(resp.freqResponseM(1, 20, INT64_MIN, nullptr, 5), 0);
  double f[3], a[3], g[3];
  EXPECT_EQ(resp.freqResponseS(1, 20, 10, &empty, f, a, g, -5), 1);
  EXPECT_EQ(resp.freqResponseS(1, 20, 10, &empty, nullptr, a, g, 3), 0);
  // One point: f = 0 * 0.5 / 0 is NaN, the amplitude follows.
  Filter_Remez spec = lowPassSpec(20);
  CRemezData d;
  ASSERT_GE(Designer::rmzSearchX(20, 2, spec.bands, spec.des, spec.weight, &d, 16, 1), 0);
  EXPECT_EQ(resp.freqResponseS(1, 20, 10, &d, f, a, g, 1), 1);
  EXPECT_TRUE(std::isnan(f[0]));
}

TEST(RemezHostileTransition, InfiniteAndNaNWidths) {
  MessageCapture capture;
  // Widths that stepping cannot bring below the band width (infinite, or so large that a step
  // of 0.0001 does not move them) step again from just above the band width.
  for (double wide : {kInf, 1e300, 1e12, 5.0}) {
    SCOPED_TRACE(wide);
    const double tr = Designer::ckCorrectTrnDn(wide, 0.1, 0.2);
    EXPECT_LT(0.1, 0.2 - tr);
    EXPECT_GT(tr, 0.1 - 0.00011);
  }
  // A width the stepping brings down in time keeps every step; one that needs none is kept.
  EXPECT_EQ(Designer::ckCorrectTrnDn(100.0, 0.0, 99.99985), 100.0 - 0.0001 - 0.0001);
  EXPECT_EQ(Designer::ckCorrectTrnDn(5.0, 0.0, 100.0), 5.0);
  EXPECT_EQ(Designer::ckCorrectTrnDn(kInf, 0.0, kInf), kInf);
  EXPECT_TRUE(std::isnan(Designer::ckCorrectTrnDn(kNaN, 0.1, 0.2)));
  // Edges too large to step against give the fallback.
  EXPECT_EQ(Designer::ckCorrectTrnDn(kInf, -kInf, 0.2), 0.0001);
  EXPECT_EQ(Designer::ckCorrectTrnDn(1e300, 0.0, 1e300), 0.0001);
  EXPECT_EQ(Designer::ckCorrectTrnDn(kDenorm, 0.1, 0.2), kDenorm);
  EXPECT_TRUE(capture.messages.empty());
  // ckCorrectTrnUp returns only where a check fails or tr + low < high.
  EXPECT_EQ(Designer::ckCorrectTrnUp(kDenorm, 0.1, 0.2), kDenorm);
  EXPECT_EQ(Designer::ckCorrectTrnUp(-kInf, 0.1, 0.2), 0.0001);
  EXPECT_EQ(Designer::ckCorrectTrnUp(kInf, kInf, kInf), 0.0001);
  EXPECT_EQ(Designer::ckCorrectTrnUp(0.05, -kInf, 0.2), 0.05);
  EXPECT_EQ(capture.messages.size(), 2u);
  EXPECT_TRUE(std::isinf(Designer::getGaindBs(0.0, 1.0)));
  EXPECT_TRUE(std::isnan(Designer::getGaindBs(-1.0, 1.0)));
}

TEST(RemezHostileDesigner, WildOrdersDesignNothingAndAllocateNothingHuge) {
  OpenDesigner d;
  d.initFiltRange4SmplRateRmz(kNaN);  // the ranges are not read by the design
  for (std::int64_t order : {INT64_MIN, std::int64_t{-3}, std::int64_t{-1}, INT64_MAX,
                             std::int64_t{1} << 62}) {
    SCOPED_TRACE(order);
    Filter_Remez& f = d.records[0];
    f = lowPassSpec(20);
    f.enabled = 1;
    f.order = order;
    EXPECT_EQ(d.computeCoef(&f), 0);
  }
  EXPECT_EQ(d.records[0].coefs, nullptr);  // 2^62 taps were refused before allocating
  // order -1 rounds up to 0 taps: a one-slot array, nothing applied by filter.
  d.records[0].order = -1;
  EXPECT_EQ(d.computeCoef(&d.records[0]), 0);
  EXPECT_EQ(d.records[0].tapCount, 0);
  std::vector<double> x = {1, 2, 3}, y(3, 9.0);
  EXPECT_EQ(d.filter(x.data(), y.data(), 3), 0);
  EXPECT_EQ(y[0], 9.0);
  EXPECT_EQ(d.makeAllCoef(), 0);
  EXPECT_EQ(d.checkBuffer(INT64_MAX), 0);
  EXPECT_EQ(d.checkBuffer(0), 1);
}

TEST(RemezHostileDesigner, FilteringEmptyTinyAndNonFiniteBlocks) {
  OpenDesigner d;
  Filter_Remez& f = d.records[3];
  f.enabled = 1;
  f.allocCoefs(4);
  f.tapCount = 4;
  for (int k = 0; k < 4; ++k) f.coefs[k] = 1.0;
  EXPECT_EQ(d.filter(nullptr, nullptr, 0), 0);
  double y0 = 5.0;
  EXPECT_EQ(d.filter(&y0, &y0, 0), 1);  // n = 0: counted, nothing written
  EXPECT_EQ(y0, 5.0);
  // One sample: the window wraps onto it four times.
  double x1 = 2.0, y1 = 0.0;
  EXPECT_EQ(d.filter(&x1, &y1, 1), 1);
  EXPECT_EQ(y1, 8.0);
  EXPECT_EQ(d.CDigitFiltCoefMak06Remez::filter(&x1, &y1, 1), 1);
  EXPECT_EQ(y1, 2.0);
  EXPECT_EQ(OpenDesigner::filtRmzBkwd(f.coefs, 4, &x1, &y1, 1), 1);
  EXPECT_EQ(y1, 8.0);
  // NaN and Inf reach only the outputs whose window holds them.
  std::vector<double> x = {0, 0, kNaN, 0, 0, 0, kInf, 0, 0, 0}, y(x.size());
  EXPECT_EQ(d.filter(x.data(), y.data(), 10), 1);
  EXPECT_EQ(y[7], 0.0);  // window 7, 8, 9, 0
  EXPECT_TRUE(std::isnan(y[0]) && std::isinf(y[3]));
  // An enormous block through a short filter.
  std::vector<double> big(1 << 20, 1.0), out(big.size());
  EXPECT_EQ(d.filter(big.data(), out.data(), static_cast<std::int64_t>(big.size())), 1);
  EXPECT_EQ(out.back(), 4.0);
}

TEST(RemezHostileDesigner, HostCountsPastTheRecordsTapsAreLeftOut) {
  OpenDesigner d;
  Filter_Remez& f = d.records[0];
  f.enabled = 1;
  f.allocCoefs(3);  // 3 taps and the spare slot
  for (int k = 0; k < 3; ++k) f.coefs[k] = 1.0;
  std::vector<double> x(8, 1.0), y(8, -1.0);
  f.tapCount = 4;  // reaches the spare zero slot: still inside the array
  EXPECT_EQ(d.filter(x.data(), y.data(), 8), 1);
  EXPECT_EQ(y[0], 3.0);
  for (std::int64_t count : {std::int64_t{5}, INT64_MAX}) {
    f.tapCount = count;
    EXPECT_EQ(d.filter(x.data(), y.data(), 8), 0);
  }
  f.order = 100;
  EXPECT_EQ(d.filterGain(4, &f), nullptr);
  f.tapCount = 3;
  std::unique_ptr<double[]> g(d.filterGain(0, &f));  // omega = 0 * pi / 0
  ASSERT_NE(g, nullptr);
  EXPECT_TRUE(std::isnan(g[0]));
  std::unique_ptr<double[]> none(d.filterGain(-1, &f));
  EXPECT_NE(none, nullptr);
  EXPECT_EQ(d.filterGain(-2, &f), nullptr);
  EXPECT_EQ(d.filterGain(INT64_MAX, &f), nullptr);
}

}  // namespace
