#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <vector>

#include <digitfilt/digitfilt.h>

#include "support/iir_poly_support.h"
#include "support/message_capture.h"

namespace {

using digitfilt::test::directFormImpulse;
using digitfilt::test::MessageCapture;
using digitfilt::test::unitImpulse;
using Vec = std::vector<double>;
using Messages = std::vector<std::wstring>;

Vec filtered(CMeFilterChebyshev& f, Vec x) {
  EXPECT_EQ(f.filtData(x.data(), static_cast<std::int64_t>(x.size())), 1);
  return x;
}

// Fresh stages start with states at 1.0 in their first section; clear them for a clean
// impulse response.
void clearStates(MeFilterChebyshevx& s) { s.w1[0] = s.w2[0] = s.w3[0] = s.w4[0] = 0.0; }

// |H| of a low-pass stage at f: gain times the product of its second-order sections.
double lowPassMagnitude(const MeFilterChebyshevx& s, double f) {
  const std::complex<double> z1 = std::polar(1.0, -2.0 * M_PI * f / s.sampleRate);
  std::complex<double> h = s.gain;
  for (int i = 0; i < s.numSections; ++i) {
    h *= s.A[i] * (1.0 + 2.0 * z1 + z1 * z1) / (1.0 - s.d1[i] * z1 - s.d2[i] * z1 * z1);
  }
  return std::abs(h);
}

TEST(MeChebyshevDesign, PassBandRippleIsEpsilon) {
  for (double eps : {0.5, 0.1}) {
    for (int order : {4, 6}) {
      SCOPED_TRACE(testing::Message() << "eps " << eps << " order " << order);
      CMeFilterChebyshev f;
      ASSERT_EQ(f.makeCoefLopsHips(order, 1000.0, 1, 100.0, 0, 0.0, eps), 1);
      const MeFilterChebyshevx& s = *f.stageList[0];
      const double low = 1.0 / std::sqrt(1.0 + eps * eps);
      EXPECT_NEAR(lowPassMagnitude(s, 0.0), low, 1e-12);    // even order: a trough at DC
      EXPECT_NEAR(lowPassMagnitude(s, 100.0), low, 1e-12);  // and at the ripple edge
      double hi = 0.0, lo = 2.0;
      for (double fr = 0.0; fr <= 100.0; fr += 0.01) {
        hi = std::max(hi, lowPassMagnitude(s, fr));
        lo = std::min(lo, lowPassMagnitude(s, fr));
      }
      EXPECT_NEAR(hi, 1.0, 1e-6);
      EXPECT_NEAR(lo, low, 1e-12);
      EXPECT_LT(lowPassMagnitude(s, 200.0), low / 10.0);
    }
  }
}

TEST(MeChebyshevDesign, CascadesMatchScipy) {
  const double eps = 0.5;  // rp = 10 log10(1 + eps^2) = 0.9691001300805642 dB
  // scipy.signal.cheby1(4, rp, 0.2)
  const Vec lpB = {0.0018616905546599187, 0.007446762218639675, 0.011170143327959512,
                   0.007446762218639675, 0.0018616905546599187};
  const Vec lpA = {1.0, -3.0480668659275225, 3.814707080121728, -2.28035071155448,
                   0.5470134304265849};
  // scipy.signal.cheby1(4, rp, [0.1, 0.4], 'bandpass')
  const Vec bpB = {0.008468284618666888, 0.0, -0.03387313847466755, 0.0, 0.05080970771200133,
                   0.0, -0.03387313847466755, 0.0, 0.008468284618666888};
  const Vec bpA = {1.0, -5.051832373384285, 12.308530984907238, -18.926810921817964,
                   20.109881263846283, -15.080603363095967, 7.791825457314966,
                   -2.5425872884875296, 0.4061881744952399};
  // scipy.signal.cheby1(4, rp, [0.1, 0.4], 'bandstop')
  const Vec bsB = {0.20181224636302422, -1.2812728441895518, 3.857720644462317,
                   -7.071642553076788, 8.59262461938328, -7.071642553076788, 3.857720644462318,
                   -1.2812728441895522, 0.20181224636302422};
  const Vec bsA = {1.0, -4.046898266605611, 7.6271176992889025, -9.15912787228011,
                   7.77323459974168, -4.7051228659984226, 2.110012640100356,
                   -0.7665376337080557, 0.17387293869039636};
  CMeFilterChebyshev lp, bp, bs;
  lp.makeCoefLopsHips(4, 1000.0, 1, 100.0, 0, 0.0, eps);
  bp.makeCoefBndpasBndstp(8, 1000.0, 200.0, 50.0, 1, eps);
  bs.makeCoefBndpasBndstp(8, 1000.0, 200.0, 50.0, 0, eps);
  EXPECT_EQ(bp.stageList[0]->enabled, 0);  // band-pass stages start disabled, deliberately
  bp.stageList[0]->enabled = 1;
  EXPECT_EQ(bs.stageList[0]->numSections, 2);
  for (auto [f, b, a] : {std::tuple{&lp, &lpB, &lpA}, {&bp, &bpB, &bpA}, {&bs, &bsB, &bsA}}) {
    clearStates(*f->stageList[0]);
    const Vec got = filtered(*f, unitImpulse(80)), want = directFormImpulse(*b, *a, 80);
    for (int i = 0; i < 80; ++i) EXPECT_NEAR(got[i], want[i], 1e-12) << i;
  }
}

TEST(MeChebyshevDesign, FreshStageStartsWithUnitStates) {
  CMeFilterChebyshev f;
  f.makeCoefLopsHips(4, 1000.0, 1, 100.0, 0, 0.0, 0.5);
  EXPECT_EQ(f.stageList[0]->w1[0], 1.0);
  EXPECT_NE(filtered(f, Vec(4, 0.0))[0], 0.0);  // a start-up transient from silence
  clearStates(*f.stageList[0]);
  f.stageList[0]->w1[1] = f.stageList[0]->w2[1] = 0.0;
  EXPECT_EQ(filtered(f, Vec(4, 0.0)), Vec(4, 0.0));
}

// The high-pass keeps the low-pass numerator and no gain factor: DC passes with 1 / (4 a^2).
// It runs `order` sections, so the caller sets the order to the section count to hear it.
TEST(MeChebyshevDesign, HighPassKeepsLowPassNumerator) {
  CMeFilterChebyshev f;
  f.makeCoefLopsHips(2, 1000.0, 0, 0.0, 1, 100.0, 0.5);
  MeFilterChebyshevx& s = *f.stageList[0];
  EXPECT_EQ(s.enabled, 0);
  EXPECT_EQ(s.gain, 4.0);
  EXPECT_EQ(s.numSections, 1);
  s.enabled = 1;
  s.order = 1;
  clearStates(s);
  const double a = std::tan(M_PI * 0.1);
  EXPECT_NEAR(filtered(f, Vec(3000, 1.0)).back(), 1.0 / (4.0 * a * a), 1e-9);
}

TEST(MeChebyshevOrders, HighPassRunsOrderSections) {
  CMeFilterChebyshev f;
  ASSERT_EQ(f.makeCoefLopsHips(5, 1000.0, 1, 100.0, 1, 10.0, 0.5), 1);
  const MeFilterChebyshevx& lp = *f.stageList[0];
  MeFilterChebyshevx& hp = *f.stageList[1];
  EXPECT_EQ(lp.order, 5);
  EXPECT_EQ(lp.numSections, 2);
  EXPECT_EQ(hp.order, 4);
  EXPECT_EQ(hp.numSections, 2);
  // Enabled, the high-pass runs four sections; the two never computed (A = 0) silence it.
  hp.enabled = 1;
  EXPECT_EQ(filtered(f, Vec(10, 1.0)), Vec(10, 0.0));
}

TEST(MeChebyshevOrders, LimitsAndMessages) {
  MessageCapture cap;
  CMeFilterChebyshev f;
  f.makeCoefLopsHips(40, 1000.0, 1, 100.0, 1, 10.0, 0.5);
  EXPECT_EQ(f.stageList[0]->numSections, 18);
  EXPECT_EQ(f.stageList[1]->order, 36);
  f.makeCoefBndpasBndstp(40, 1000.0, 200.0, 50.0, 1, 0.5);
  EXPECT_EQ(f.stageList[2]->numSections, 9);
  EXPECT_TRUE(cap.messages.empty());

  f.makeCoefBndpasBndstp(2, 1000.0, 200.0, 50.0, 1, 0.5);
  EXPECT_EQ(f.stageList[3]->numSections, 1);
  f.makeCoefBndpasBndstp(6, 1000.0, 200.0, 50.0, 0, 0.5);
  EXPECT_EQ(f.stageList[4]->filterType, 4);
  EXPECT_EQ(f.stageList[4]->numSections, 1);
  EXPECT_EQ(cap.messages, (Messages{L"Order for bandpass must be 4,8,12,16,...\n",
                                    L"Order for bandpass/bandstop must be 4,8,12,16,...\n"}));
}

TEST(MeChebyshevObject, UnknownTypesSkippedAndCopiesOwnStages) {
  CMeFilterChebyshevqv f;
  f.stageList.add(std::make_unique<MeFilterChebyshevx>());
  f.stageList[0]->enabled = 1;  // filterType 0 from the initialiser: skipped
  f.stageList.add(nullptr);
  EXPECT_EQ(filtered(f, Vec{1, 2, 3}), (Vec{1, 2, 3}));

  CMeFilterChebyshev g;
  g.makeCoefLopsHips(4, 1000.0, 1, 100.0, 0, 0.0, 0.5);
  CMeFilterChebyshev h(g);
  h.stageList[0]->lowpassFreq = 1.0;
  EXPECT_EQ(g.stageList[0]->lowpassFreq, 100.0);
  EXPECT_EQ(filtered(g, unitImpulse(10)), filtered(h, unitImpulse(10)));
  h = f;
  EXPECT_EQ(h.stageList.size(), 2);
  EXPECT_EQ(h.stageList[1], nullptr);
  EXPECT_EQ(CMeFilterChebyshev::initChebyshevStage(nullptr), 0);
}

}  // namespace
