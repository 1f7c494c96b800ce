#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

#include <gtest/gtest.h>
#include <digitfilt/digitfilt.h>

#include "support/message_capture.h"

namespace {

using digitfilt::test::MessageCapture;
using Vec = std::vector<double>;

struct Kaiser : CDigitFiltCoefMak03KaiserWnd {
  using CDigitFiltCoefMak03KaiserWnd::besselI0;
  using CDigitFiltCoefMak03KaiserWnd::filterGain;
  using CDigitFiltCoefMak03KaiserWnd::I0;
  using CDigitFiltCoefMak03KaiserWnd::setFreqPoints;
};

// Sample rate 1000 Hz, 60 dB, 50 Hz transition; freq2 keeps its default 100 Hz, so the pass band
// ends at 100 Hz and the stop band starts at 150 Hz.
Kaiser designedLowPass() {
  Kaiser k;
  k.setRate(1000.0);
  k.setTrBand(50.0);
  k.setAtten(60.0);
  k.setFilterType(L"KF_LOWPASS");
  k.estimatedOrder();
  k.design();
  return k;
}

TEST(KaiserOrder, DefaultsGiveOrderTenAndSinglePrecisionBeta) {
  Kaiser k;
  EXPECT_EQ(k.estimatedOrder(), 10);  // 2 trunc(52.05 / 11.488 + 1)
  EXPECT_EQ(k.order, 10);
  // python3: float(np.float32(0.1102)) * (60 - float(np.float32(8.7)))
  EXPECT_DOUBLE_EQ(k.beta, 5.653260164120198);
  EXPECT_NE(k.beta, 0.1102 * (60 - 8.7));
  const struct {
    double atten, beta;
  } cases[] = {{21.0, 0.0}, {10.0, 0.0},
               {50.0, 4.551260136225224},    // same expression with 50
               {30.0, 2.1166249368030785}};  // f(0.5842) * 9**f(0.4) + f(0.07886) * 9
  for (const auto& c : cases) {
    k.setAtten(c.atten);
    k.estimatedOrder();
    EXPECT_DOUBLE_EQ(k.beta, c.beta) << c.atten;
  }
}

TEST(KaiserSetters, TypeNamesRateAndDoNothingFrequencies) {
  Kaiser k;
  EXPECT_EQ(k.setFilterType(L"kf_highpass"), 1);
  EXPECT_EQ(k.filterType, 1);
  k.setFilterType(L"Kf_BandPass");
  EXPECT_EQ(k.filterType, 2);
  k.setFilterType(L"KF_LOWPASSX");
  EXPECT_EQ(k.filterType, 2);
  k.setFilterType(7);
  EXPECT_EQ(k.filterType, 7);
  k.setRate(2000.0);
  EXPECT_EQ(k.rate, 1000.0);
  EXPECT_EQ(k.setFreq1(30.0), 1);
  EXPECT_EQ(k.setFreq2(300.0), 1);
  EXPECT_EQ(k.freq1, 1.25);
  EXPECT_EQ(k.freq2, 100.0);
  // Only assignment from another object changes them, and then the design follows.
  Kaiser other = designedLowPass();
  other.freq2 = 200.0;
  Kaiser moved = designedLowPass();
  const double before = moved.getCoeff(moved.order / 2);
  moved = other;
  moved.design();
  EXPECT_EQ(moved.freq2, 200.0);
  EXPECT_GT(moved.getCoeff(moved.order / 2), before);
}

TEST(KaiserBessel, BothSeriesMatchReference) {
  Kaiser k;
  // python3 -c "import scipy.special as s; print([float(s.i0(x)) for x in xs])"
  const double xs[] = {0.0, 0.5, 1.0, 2.0, 3.5, 5.0, 8.0, 10.0};
  const double i0[] = {1.0,
                       1.0634833707413234,
                       1.2660658777520082,
                       2.279585302336067,
                       7.3782034322254795,
                       27.239871823604442,
                       427.56411572180474,
                       2815.716628466254};
  for (int i = 0; i < 8; ++i) {
    EXPECT_NEAR(k.besselI0(xs[i]), i0[i], 1e-6 * i0[i]) << xs[i];  // at most 14 terms
    EXPECT_NEAR(k.I0(xs[i]), i0[i], 1e-5) << xs[i];  // stops at a squared term of 1e-6
  }
  // The second series returns 1 + y^2 while y^2 is at most 1e-6 as a float, just below 1e-6.
  const double y2 = 9.999999987e-7, x = 2 * std::sqrt(y2);
  EXPECT_NE(k.I0(x), 1.0 + (x / 2) * (x / 2));
  EXPECT_EQ(k.I0(0.001), 1.0 + 0.0005 * 0.0005);
  // A negative argument ends the first series after one term.
  EXPECT_EQ(k.besselI0(-2.0), 2.0);
}

TEST(KaiserHalfWindow, LengthClampAndValues) {
  Kaiser k;
  ASSERT_EQ(k.halfKaiserWnd2Spec(60.0, 0.1, 100), 1);  // 1 + trunc(52.05 / 2.872) = 19
  EXPECT_EQ(k.halfWndCount, 20);
  EXPECT_EQ(k.halfWnd[0], 0.0);
  EXPECT_EQ(k.halfWnd[1], 1.0);
  // beta = 0.1102 (60 - 8.7) in double; scipy: 1 / i0(b), i0(b sqrt(1 - (10/19)^2)) / i0(b)
  EXPECT_NEAR(k.halfWnd[20], 0.020388000239333876, 1e-9);
  EXPECT_NEAR(k.halfWnd[11], 0.4675780729091386, 1e-9);
  EXPECT_EQ(k.beta, 0.0);  // the window's beta is its own
  k.halfKaiserWnd2Spec(60.0, 0.1, 10);
  EXPECT_EQ(k.halfWndCount, 10);
  k.halfKaiserWnd2Spec(5.0, 0.1, 10);
  EXPECT_EQ(k.halfWndCount, 1);
  EXPECT_EQ(k.halfWnd[1], 1.0);
}

TEST(KaiserDesign, LowPassGainPeaksAtZeroWithStopBandBelowAttenuation) {
  Kaiser k = designedLowPass();
  ASSERT_EQ(k.order, 74);  // 2 trunc(52.05 / 1.436 + 1)
  for (int i = 0; i < k.order / 2; ++i) EXPECT_EQ(k.getCoeff(i), k.getCoeff(k.order - i));
  EXPECT_EQ(k.getCoeff(-1), 0.0);
  EXPECT_EQ(k.getCoeff(k.order + 1), 0.0);
  k.setFreqPoints(500);  // one point per hertz up to 500 Hz
  std::unique_ptr<double[]> gain(k.filterGain());
  ASSERT_TRUE(gain);
  EXPECT_EQ(*std::max_element(gain.get(), gain.get() + 501), 0.0);
  for (int f = 0; f <= 100; ++f) EXPECT_NEAR(gain[f], 0.0, 0.02) << f;
  for (int f = 150; f <= 500; ++f) EXPECT_LT(gain[f], -60.0 + 1.0) << f;  // -60.4 dB at worst
  EXPECT_NEAR(gain[125], -6.02, 0.1);  // half amplitude mid-transition
  // The taps now carry the peak gain of 0 dB: DC gain matches gain[0].
  double dc = 0.0;
  for (int i = 0; i <= k.order; ++i) dc += k.getCoeff(i);
  EXPECT_NEAR(20 * std::log10(dc), gain[0], 1e-9);
  k.setFreqPoints(0);
  EXPECT_EQ(k.filterGain(), nullptr);
}

TEST(KaiserFilter, BlockFilterSkipsLastTap) {
  Kaiser k = designedLowPass();
  const int n = 100;
  Vec imp(n, 0.0);
  imp[0] = 1.0;
  EXPECT_EQ(k.filterX(imp.data(), n), imp.data());
  for (int i = 0; i < k.order; ++i) EXPECT_EQ(imp[i], k.getCoeff(i)) << i;
  EXPECT_EQ(imp[k.order], 0.0);  // the last tap is never used
  Vec x(n), y(n);
  for (int i = 0; i < n; ++i) x[i] = std::sin(0.3 * i) + (i % 7);
  for (int i = 0; i < n; ++i)
    for (int j = 0; j < k.order && j <= i; ++j) y[i] += k.getCoeff(j) * x[i - j];
  k.filterX(x.data(), n);
  for (int i = 0; i < n; ++i) EXPECT_NEAR(x[i], y[i], 1e-12) << i;
  Kaiser fresh;
  Vec u(4, 2.0);
  fresh.filterX(u.data(), 4);  // nothing designed: samples left alone
  EXPECT_EQ(u, Vec(4, 2.0));
}

TEST(KaiserFilter, StreamingMessagesAndNoHistoryAcrossBlocks) {
  MessageCapture cap;
  Kaiser k;
  k.order = 1;
  EXPECT_EQ(k.filterBegin(), 0);
  k.order = 0;
  EXPECT_EQ(k.filterBegin(), 0);
  EXPECT_EQ(cap.messages, std::vector<std::wstring>(2, L"Filter order error!"));
  EXPECT_EQ(k.delayLine, nullptr);

  k = designedLowPass();
  ASSERT_EQ(k.filterBegin(), 1);
  ASSERT_NE(k.delayLine, nullptr);
  Vec a(10, 0.0), b(10, 0.0);
  a[9] = 1.0;
  k.filterDo(a.data(), 10);
  EXPECT_EQ(a[9], k.getCoeff(0));
  k.filterDo(b.data(), 10);  // the impulse of the last block does not carry over
  EXPECT_EQ(b, Vec(10, 0.0));
  // A copy shares the delay line and keeps it alive after the original ends.
  Kaiser copy = k;
  EXPECT_EQ(copy.delayLine, k.delayLine);
  EXPECT_EQ(k.filterEnd(), 1);
  EXPECT_EQ(k.delayLine, nullptr);
  Vec c(10, 1.0), d(10, 1.0);
  copy.filterDo(c.data(), 10);
  copy.filterX(d.data(), 10);
  EXPECT_EQ(c, d);
  Vec e(3, 1.0);
  k.filterDo(e.data(), 3);  // ended: samples left alone
  EXPECT_EQ(e, Vec(3, 1.0));
  EXPECT_EQ(cap.messages.size(), 2u);
}

}  // namespace
