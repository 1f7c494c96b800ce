#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include <digitfilt/digitfilt.h>

#include "support/iir_poly_support.h"
#include "support/message_capture.h"

namespace {

using digitfilt::test::directFormImpulse;
using digitfilt::test::MessageCapture;
using digitfilt::test::unitImpulse;
using Vec = std::vector<double>;

const std::wstring kBandpassText = L"Order for bandpass must be 4,8,12,16,...\n";
const std::wstring kBandstopText = L"Order for bandpass/bandstop must be 4,8,12,16,...\n";

Vec filtered(CMeFilterButterworth& f, Vec x) {
  EXPECT_EQ(f.filtData(x.data(), static_cast<std::int64_t>(x.size())), 1);
  return x;
}

void expectClose(const Vec& got, const Vec& want, double tol) {
  ASSERT_EQ(got.size(), want.size());
  for (std::size_t i = 0; i < got.size(); ++i) EXPECT_NEAR(got[i], want[i], tol) << i;
}

// Section cascades against the impulse response of scipy's direct-form design, fs = 1000 Hz.
TEST(MeButterworthSections, LowPassMatchesScipy) {
  // scipy.signal.butter(4, 0.2)
  const Vec b = {0.004824343357716231, 0.019297373430864923, 0.028946060146297387,
                 0.019297373430864923, 0.004824343357716231};
  const Vec a = {1.0, -2.3695130071820376, 2.31398841441588, -1.0546654058785676,
                 0.18737949236818488};
  CMeFilterButterworth f;
  ASSERT_EQ(f.makeCoefLopsHips(4, 1000.0, 1, 100.0, 0, 0.0), 1);
  ASSERT_EQ(f.filterList.size(), 1);
  expectClose(filtered(f, unitImpulse(60)), directFormImpulse(b, a, 60), 1e-13);
}

TEST(MeButterworthSections, BandPassAndBandStopMatchScipy) {
  // scipy.signal.butter(4, [0.1, 0.4], 'bandpass'): two four-pole sections for order 8
  const Vec bpB = {0.018563010626897185, 0.0, -0.07425204250758874, 0.0, 0.11137806376138311,
                   0.0, -0.07425204250758874, 0.0, 0.018563010626897185};
  const Vec bpA = {1.0, -4.420693558001914, 9.11978870817578, -11.634773295366946,
                   10.119492065641197, -6.1166839685464405, 2.490975612944688,
                   -0.626306021111996, 0.07619706461033239};
  // scipy.signal.butter(4, [0.1, 0.4], 'bandstop')
  const Vec bsB = {0.27541328807230436, -1.74855378350643, 5.264633570574237, -9.650674638007223,
                   11.726359734078917, -9.650674638007223, 5.264633570574238,
                   -1.7485537835064306, 0.27541328807230436};
  const Vec bsA = {1.0, -4.420693558001914, 9.119788708175777, -11.634773295366944,
                   10.119492065641193, -6.11668396854644, 2.490975612944687,
                   -0.6263060211119958, 0.07619706461033236};
  CMeFilterButterworth bp, bs;
  ASSERT_EQ(bp.makeCoefBndpasBndstp(8, 1000.0, 200.0, 50.0, 1), 1);
  ASSERT_EQ(bs.makeCoefBndpasBndstp(8, 1000.0, 200.0, 50.0, 0), 1);
  EXPECT_EQ(bp.filterList[0]->numSections, 2);
  EXPECT_EQ(bp.filterList[0]->enabled, 0);  // band-pass stages start disabled, deliberately
  EXPECT_EQ(bs.filterList[0]->enabled, 1);
  bp.filterList[0]->enabled = 1;
  expectClose(filtered(bp, unitImpulse(80)), directFormImpulse(bpB, bpA, 80), 1e-12);
  expectClose(filtered(bs, unitImpulse(80)), directFormImpulse(bsB, bsA, 80), 1e-12);
}

// The high-pass keeps the low-pass numerator 1 + 2z^-1 + z^-2: it passes DC with gain 1/a^2 per
// section and blocks the Nyquist frequency, the opposite of a true high-pass.
TEST(MeButterworthSections, HighPassKeepsLowPassNumerator) {
  CMeFilterButterworth f, g;
  ASSERT_EQ(f.makeCoefLopsHips(2, 1000.0, 0, 0.0, 1, 100.0), 1);
  ASSERT_EQ(g.makeCoefLopsHips(2, 1000.0, 0, 0.0, 1, 100.0), 1);
  EXPECT_EQ(f.filterList[0]->enabled, 0);
  EXPECT_EQ(filtered(f, Vec(10, 1.0)), Vec(10, 1.0));  // disabled: passes unchanged
  f.filterList[0]->enabled = 1;
  g.filterList[0]->enabled = 1;
  const double a = std::tan(M_PI * 0.1);
  EXPECT_NEAR(filtered(f, Vec(2000, 1.0)).back(), 1.0 / (a * a), 1e-9);
  Vec alt(2000);
  for (std::size_t i = 0; i < alt.size(); ++i) alt[i] = i % 2 ? -1.0 : 1.0;
  EXPECT_NEAR(filtered(g, alt).back(), 0.0, 1e-9);
}

TEST(MeButterworthOrders, LowAndHighPassRoundToEvenWithinTwoToTwenty) {
  CMeFilterButterworth f;
  ASSERT_EQ(f.makeCoefLopsHips(7, 1000.0, 1, 100.0, 1, 20.0), 1);
  MeFilterButterworthx* lp = f.filterList[0];
  MeFilterButterworthx* hp = f.filterList[1];
  EXPECT_EQ(lp->order, 7);  // stored as given
  EXPECT_EQ(lp->numSections, 3);
  EXPECT_EQ(lp->enabled, 1);
  EXPECT_EQ(hp->order, 6);  // the low-pass's working order
  EXPECT_EQ(hp->numSections, 3);
  EXPECT_EQ(f.makeCoefs(lp), 1);
  EXPECT_EQ(lp->order, 6);
  for (auto [order, sections] : {std::pair{0, 1}, {1, 1}, {-3, 1}, {25, 10}, {20, 10}}) {
    CMeFilterButterworth g;
    g.makeCoefLopsHips(order, 1000.0, 1, 100.0, 0, 0.0);
    EXPECT_EQ(g.filterList[0]->numSections, sections) << order;
  }
  EXPECT_EQ(CMeFilterButterworth().makeCoefLopsHips(4, 1000.0, 0, 0.0, 0, 0.0), 1);
}

TEST(MeButterworthOrders, BandOrdersWithMessages) {
  MessageCapture cap;
  CMeFilterButterworth f;
  f.makeCoefBndpasBndstp(6, 1000.0, 200.0, 50.0, 1);
  MeFilterButterworthx* s = f.filterList[0];
  EXPECT_EQ(s->numSections, 1);
  EXPECT_EQ(cap.messages, std::vector<std::wstring>{kBandpassText});
  // Remade, a band-pass gets one section per unit of order, pole angles over 4 * 4 = 16.
  EXPECT_EQ(f.makeCoefs(s), 1);
  EXPECT_EQ(s->order, 4);
  EXPECT_EQ(s->numSections, 4);
  const double b = std::tan(M_PI * 150.0 / 1000.0), r = std::sin(7.0 * M_PI / 16.0);
  EXPECT_NEAR(s->d4[3], -(b * b - 2 * b * r + 1) / (b * b + 2 * b * r + 1), 1e-15);
  EXPECT_EQ(cap.messages.size(), 2u);

  // Order 2: reduced to 0, raised to 2; no four-pole section from the maker, two when remade.
  CMeFilterButterworth g;
  g.makeCoefBndpasBndstp(2, 1000.0, 200.0, 50.0, 1);
  g.filterList[0]->enabled = 1;
  EXPECT_EQ(g.filterList[0]->numSections, 0);
  EXPECT_EQ(filtered(g, Vec{1, 2, 3}), (Vec{1, 2, 3}));
  g.makeCoefs(g.filterList[0]);
  EXPECT_EQ(g.filterList[0]->numSections, 2);

  cap.messages.clear();
  CMeFilterButterworth h;
  h.makeCoefBndpasBndstp(6, 1000.0, 200.0, 50.0, 0);
  h.makeCoefBndpasBndstp(8, 1000.0, 200.0, 50.0, 0);
  h.makeCoefs(h.filterList[0]);  // band-stop remade: the band-pass wording
  EXPECT_EQ(cap.messages, (std::vector<std::wstring>{kBandstopText, kBandpassText}));
  EXPECT_EQ(h.filterList[0]->numSections, 1);
}

TEST(MeButterworthOrders, UnknownTypeResetsStageAndStopsFiltering) {
  CMeFilterButterworth f;
  f.makeCoefLopsHips(4, 1000.0, 1, 100.0, 0, 0.0);
  MeFilterButterworthx* s = f.filterList[0];
  s->filterType = 7;
  s->name = "x";
  EXPECT_EQ(f.makeCoefs(s), 0);
  EXPECT_EQ(s->name, "ButterworthFilter");
  EXPECT_EQ(s->filterType, -1);
  EXPECT_EQ(s->sampleRate, 300.0);
  EXPECT_EQ(f.makeCoefs(nullptr), 0);

  // A low-pass, then an enabled stage of unknown type: the block passes the low-pass only.
  CMeFilterButterworth g, lpOnly;
  g.makeCoefLopsHips(4, 1000.0, 1, 100.0, 0, 0.0);
  lpOnly.makeCoefLopsHips(4, 1000.0, 1, 100.0, 0, 0.0);
  g.makeCoefLopsHips(4, 1000.0, 1, 100.0, 0, 0.0);
  g.filterList[1]->filterType = 9;
  Vec x = unitImpulse(20);
  EXPECT_EQ(g.filtData(x.data(), 20), 0);
  EXPECT_EQ(x, filtered(lpOnly, unitImpulse(20)));
  EXPECT_EQ(g.filtDataZeroShift(x.data(), 20), 0);
  EXPECT_EQ(g.filtDataAcq(x.data(), 20, 0, 19, 0), 0);
}

TEST(MeButterworthAcq, NanInputToHighPassCountsAsZero) {
  CMeFilterButterworth f, twin;
  for (auto* o : {&f, &twin}) {
    o->makeCoefLopsHips(4, 1000.0, 0, 0.0, 1, 50.0);
    o->filterList[0]->enabled = 1;
  }
  const double nan = std::numeric_limits<double>::quiet_NaN();
  Vec x = {1, 2, nan, 3, 4}, z = {1, 2, 0, 3, 4};
  ASSERT_EQ(f.filtDataAcq(x.data(), 5, 0, 4, 0), 1);
  ASSERT_EQ(twin.filtDataAcq(z.data(), 5, 0, 4, 0), 1);
  EXPECT_EQ(x, z);
}

TEST(MeButterworthAcq, NanOutputOfHighPassGivesZeroAndRestartsIt) {
  CMeFilterButterworth f, fresh;
  for (auto* o : {&f, &fresh}) {
    o->makeCoefLopsHips(4, 1000.0, 0, 0.0, 1, 50.0);
    o->filterList[0]->enabled = 1;
  }
  f.filterList[0]->w1[1] = std::numeric_limits<double>::quiet_NaN();  // a poisoned state
  Vec x = {5, 1, 2, 3}, tail = {1, 2, 3};
  f.filtDataAcq(x.data(), 4, 0, 3, 0);
  fresh.filtDataAcq(tail.data(), 3, 0, 2, 0);
  EXPECT_EQ(x[0], 0.0);
  EXPECT_EQ((Vec{x[1], x[2], x[3]}), tail);

  // A low-pass has no such rule: a NaN stays in its states.
  CMeFilterButterworth lp;
  lp.makeCoefLopsHips(4, 1000.0, 1, 100.0, 0, 0.0);
  Vec y = {1, std::numeric_limits<double>::quiet_NaN(), 1, 1};
  lp.filtDataAcq(y.data(), 4, 0, 3, 0);
  EXPECT_FALSE(std::isnan(y[0]));
  for (int k = 1; k < 4; ++k) EXPECT_TRUE(std::isnan(y[k])) << k;
}

// During acquisition the band-stop's w2 coefficient is the sample index, not stopS.
TEST(MeButterworthAcq, BandStopUsesSampleIndexForW2) {
  CMeFilterButterworth acq, plain;
  for (auto* o : {&acq, &plain}) {
    o->makeCoefBndpasBndstp(4, 1000.0, 200.0, 50.0, 0);
    MeFilterButterworthx* s = o->filterList[0];
    // One section reduced to y = x[k] - 0.5 x[k-1] + c x[k-2] (no feedback).
    s->A[0] = 1.0;
    s->d1[0] = s->d2[0] = s->d3[0] = s->d4[0] = 0.0;
    s->stopR = 0.5;
    s->stopS = 3.0;
  }
  const Vec x = {1, 2, 4, 8, 16, 32};
  Vec a = x, p = x;
  acq.filtDataAcq(a.data(), 6, 0, 5, 0);
  plain.filtData(p.data(), 6);
  for (int k = 0; k < 6; ++k) {
    const double x1 = k >= 1 ? x[k - 1] : 0.0, x2 = k >= 2 ? x[k - 2] : 0.0;
    const double x3 = k >= 3 ? x[k - 3] : 0.0, x4 = k >= 4 ? x[k - 4] : 0.0;
    EXPECT_DOUBLE_EQ(a[k], x[k] - 0.5 * x1 + k * x2 - 0.5 * x3 + x4) << k;
    EXPECT_DOUBLE_EQ(p[k], x[k] - 0.5 * x1 + 3.0 * x2 - 0.5 * x3 + x4) << k;
  }
}

TEST(MeButterworthAcq, BlockBookkeeping) {
  CMeFilterButterworth f;
  f.makeCoefLopsHips(4, 1000.0, 1, 100.0, 0, 0.0);
  Vec x = {1, 2, 3, 4};
  EXPECT_EQ(f.filtDataAcq(nullptr, 4, 0, 3, 1), 0);
  // First call: everything is remembered, even with start > end (no sample changes).
  EXPECT_EQ(f.filtDataAcq(x.data(), 4, 3, 2, 5), 1);
  EXPECT_EQ(x, (Vec{1, 2, 3, 4}));
  EXPECT_EQ(f.firstCall, 0);
  EXPECT_EQ(f.blockChannel, 5);
  EXPECT_EQ(f.blockData, x.data());
  EXPECT_EQ(f.blockLength, 4);
  EXPECT_EQ(f.blockStart, 3);
  EXPECT_EQ(f.blockEnd, 2);
  // Later calls with start > 0 update only start and end.
  f.filtDataAcq(x.data(), 4, 1, 2, 7);
  EXPECT_EQ(f.blockChannel, 5);
  EXPECT_EQ(f.blockStart, 1);
  EXPECT_EQ(x[0], 1.0);
  EXPECT_NE(x[1], 2.0);
  EXPECT_EQ(x[3], 4.0);
  f.filtDataAcq(x.data(), 4, 0, -1, 7);
  EXPECT_EQ(f.blockChannel, 7);
  // Indices past the caller's array are not touched.
  EXPECT_EQ(f.filtDataAcq(x.data(), 4, 2, 100, 7), 1);
  EXPECT_EQ(f.blockEnd, 100);

  const double w = f.filterList[0]->w1[0];
  EXPECT_EQ(f.reset(), 1);
  EXPECT_EQ(f.firstCall, 0);  // deliberately 0, not the constructor's 1
  EXPECT_EQ(f.blockData, nullptr);
  EXPECT_EQ(f.blockEnd, 0);
  EXPECT_EQ(f.blockChannel, 0);
  EXPECT_EQ(f.filterList[0]->w1[0], w);  // states kept
}

TEST(MeButterworthZeroShift, OneSampleRunsEachStageTwice) {
  CMeFilterButterworth f;
  f.makeCoefLopsHips(2, 1000.0, 1, 100.0, 0, 0.0);
  const MeFilterButterworthx& s = *f.filterList[0];
  double x = 1.0;
  ASSERT_EQ(f.filtDataZeroShift(&x, 1), 1);
  // Forward: y = A, states w1 = 1. Backward from there: w0 = d1 + A, y = A (w0 + 2).
  EXPECT_DOUBLE_EQ(x, s.A[0] * (s.d1[0] + s.A[0] + 2.0));
}

TEST(MeButterworthZeroShift, BackwardPassContinuesForwardStates) {
  CMeFilterButterworth f;
  f.makeCoefLopsHips(4, 1000.0, 1, 100.0, 0, 0.0);
  CMeFilterButterworth g(f);  // an independent copy with the same stages
  Vec x(50);
  for (int i = 0; i < 50; ++i) x[i] = std::sin(0.3 * i) + (i == 10);
  Vec zs = x;
  f.filtDataZeroShift(zs.data(), 50);
  Vec ref = filtered(g, x);
  Vec rev(ref.rbegin(), ref.rend());
  rev = filtered(g, rev);
  expectClose(zs, Vec(rev.rbegin(), rev.rend()), 0.0);
}

TEST(MeButterworthRateCheck, ClampsAndBandPairing) {
  CMeFilterButterworth f;
  f.makeCoefLopsHips(4, 1000.0, 1, 800.0, 0, 0.0);
  MeFilterButterworthx* lp = f.filterList[0];
  EXPECT_EQ(f.checkCorrectFilterSettings4SmpRate(lp), 1);
  EXPECT_EQ(lp->lowpassFreq, 500.0);
  lp->lowpassFreq = 0.095;  // within the tolerance below 0.1: kept
  f.checkCorrectFilterSettings4SmpRate(lp);
  EXPECT_EQ(lp->lowpassFreq, 0.095);
  lp->lowpassFreq = 0.001;
  f.checkCorrectFilterSettings4SmpRate(lp);
  EXPECT_EQ(lp->lowpassFreq, 1000.0 * 0.0001);

  // Band stages are judged on the band-stop pair, whose defaults (65 above 55) fail the width.
  f.makeCoefBndpasBndstp(8, 1000.0, 0.01, 0.005, 0);
  MeFilterButterworthx* bs = f.filterList[1];
  EXPECT_EQ(f.checkCorrectAllFilterSettings4SmplRate(), 1);
  EXPECT_EQ(bs->enabled, 0);
  EXPECT_EQ(bs->bandHighFreq, 1000.0 * 0.0001);  // band-stop floor: the frequency minimum
  bs->enabled = 1;
  bs->stopLowFreq = 40.0;
  bs->stopHighFreq = 40.48;  // narrower than 0.00049 fs
  EXPECT_EQ(f.checkCorrectFilterSettings4SmpRate(bs), 0);
  bs->enabled = 1;
  bs->stopHighFreq = 40.5;
  EXPECT_EQ(f.checkCorrectFilterSettings4SmpRate(bs), 1);

  f.makeCoefBndpasBndstp(8, 1000.0, 0.01, 0.005, 1);
  MeFilterButterworthx* bp = f.filterList[2];
  bp->stopLowFreq = 10.0;
  bp->stopHighFreq = 20.0;
  EXPECT_EQ(f.checkCorrectFilterSettings4SmpRate(bp), 1);
  EXPECT_EQ(bp->bandHighFreq, 1000.0 * 0.0005);  // band-pass floor: the width minimum
  bp->filterType = 5;
  EXPECT_EQ(f.checkCorrectFilterSettings4SmpRate(bp), 0);
  EXPECT_EQ(f.checkCorrectFilterSettings4SmpRate(nullptr), 0);
  EXPECT_EQ(CMeFilterButterworth().checkCorrectAllFilterSettings4SmplRate(), 0);
}

TEST(MeButterworthObject, MakeAllCleanAndCopies) {
  CMeFilterButterworth f;
  f.makeCoefLopsHips(4, 1000.0, 1, 100.0, 1, 10.0);  // the high-pass stays disabled
  f.filterList.Add(nullptr);
  EXPECT_EQ(f.makeAllButterworthCoeffs(1), 1);
  EXPECT_EQ(f.lastIndex, 0);
  EXPECT_EQ(f.makeAllButterworthCoeffs(0), 2);
  EXPECT_EQ(f.lastIndex, 1);

  CMeFilterButterworth copy(f);
  EXPECT_EQ(copy.filterList.size(), 2);  // null entries are not copied
  copy.filterList[0]->lowpassFreq = 200.0;
  EXPECT_EQ(f.filterList[0]->lowpassFreq, 100.0);
  copy = f;  // appends after the copy's own stages
  EXPECT_EQ(copy.filterList.size(), 4);
  copy = copy;
  EXPECT_EQ(copy.filterList.size(), 4);

  EXPECT_EQ(f.cleanCoefs(), 1);
  EXPECT_EQ(f.filterList.size(), 0);
  EXPECT_EQ(f.lastIndex, -1);
  EXPECT_THROW(f.filterList.at(0), std::invalid_argument);
}

}  // namespace
