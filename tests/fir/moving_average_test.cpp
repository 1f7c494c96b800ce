#include <algorithm>
#include <cmath>
#include <vector>

#include <gtest/gtest.h>
#include <digitfilt/digitfilt.h>

#include "support/message_capture.h"

namespace {

using digitfilt::test::MessageCapture;
using MA = CDigitFiltCoefMak00MovAvrg;
using MAX = CDigitFiltCoefMak00MovAvrgX;
using Vec = std::vector<double>;

const std::wstring kBandMsg =
    L"Band pass filtering error: high edge must be larger than the low edge!";
const std::wstring kNotchMsg =
    L"Notch filtering (band reject/stop) error: high edge must be larger than the low edge!";

void expectSamples(const double* got, const Vec& want, double tol = 1e-12) {
  for (std::size_t i = 0; i < want.size(); ++i) EXPECT_NEAR(got[i], want[i], tol) << "i=" << i;
}

Vec testSignal(int n) {
  Vec v(n);
  for (int i = 0; i < n; ++i) v[i] = (i * 7919 % 23) - 11.0 + 0.1 * i;
  return v;
}

template <class T>
void expectDefaults(const T& f) {
  EXPECT_EQ(f.dataSize, 0);
  EXPECT_EQ(f.harmonicCount, 4);
  EXPECT_EQ(f.designMode, 4);  // the harmonic count lives in the base's slot
  const int on[] = {1, 1, 0, 0, 0};
  for (int k = 0; k < 5; ++k) EXPECT_EQ(f.stageEnabled[k], on[k]);
  EXPECT_EQ(f.lowPassWnd, 3);
  EXPECT_EQ(f.highPassWnd, 3);
  EXPECT_EQ(f.bandHighPassWnd, 6);
  EXPECT_EQ(f.bandLowPassWnd, 3);
  EXPECT_EQ(f.notchLowPassWnd, 6);
  EXPECT_EQ(f.notchHighPassWnd, 3);
  EXPECT_EQ(f.pwrHighPassWnd[59], 3);
  EXPECT_EQ(f.pwrLowPassWnd[59], 6);
  EXPECT_EQ(f.wndDivisor, 1);
  EXPECT_EQ(f.passCount, 2);
}

TEST(MovAvrg, DefaultsAndCopies) {
  expectDefaults(MA());
  expectDefaults(MAX());
  MA a;
  a.initFiltRange4DataSizeSampleRate(20, 1000.0);
  a.pwrLowPassWnd[7] = 42;
  MA b(a), c;
  c = a;
  a.dataSize = 99;  // the copies keep their own record length
  for (const MA* m : {&b, &c}) {
    EXPECT_EQ(m->dataSize, 20);
    EXPECT_EQ(m->baseWord, 20);
    EXPECT_EQ(m->harmonicCount, 3);
    EXPECT_EQ(m->pwrLowPassWnd[7], 42);
    EXPECT_EQ(m->notchLowPassWnd, 11);
  }
}

// N = 20, fs = 1000: freqMax 250, freqMin 200. Windows fs/f: 4 -> 5 (odd), 5, 5 and 5; the notch
// 18 and 15 clamp to N/2 = 10 and end odd at 11; power line 57/63 -> 11/11, 117/123 -> 9/9,
// 177/183 -> 5/5.
TEST(MovAvrgWindows, InitForRecordAndRate) {
  MA f;
  MessageCapture cap;
  ASSERT_EQ(f.initFiltRange4DataSizeSampleRate(20, 1000.0), 1);
  EXPECT_TRUE(cap.messages.empty());
  EXPECT_DOUBLE_EQ(f.freqMax, 250.0);
  EXPECT_DOUBLE_EQ(f.freqMin, 200.0);
  EXPECT_EQ(f.lowPassWnd, 5);
  EXPECT_EQ(f.highPassWnd, 5);
  EXPECT_EQ(f.bandHighPassWnd, 5);
  EXPECT_EQ(f.bandLowPassWnd, 5);
  EXPECT_EQ(f.notchLowPassWnd, 11);
  EXPECT_EQ(f.notchHighPassWnd, 11);
  const std::int64_t lo[] = {11, 9, 5, 6}, hi[] = {11, 9, 5, 3};
  for (int k = 0; k < 4; ++k) {
    EXPECT_EQ(f.pwrLowPassWnd[k], lo[k]) << k;
    EXPECT_EQ(f.pwrHighPassWnd[k], hi[k]) << k;
  }
  EXPECT_EQ(f.harmonicCount, 3);
  EXPECT_EQ(f.wndDivisor, 1);
}

TEST(MovAvrgWindows, ShortRecordsReportCrossedBandYetSucceed) {
  for (std::int64_t n : {1, 16}) {
    MessageCapture cap;
    MA f;
    EXPECT_EQ(f.initFiltRange4DataSizeSampleRate(n, 1000.0), 1);
    EXPECT_EQ(cap.messages, std::vector<std::wstring>{kBandMsg}) << n;
  }
  for (std::int64_t n : {2, 4}) {
    MessageCapture cap;
    MAX f;
    EXPECT_EQ(f.initFiltRange4DataSizeSampleRate(n, 1000.0), 1);
    ASSERT_FALSE(cap.messages.empty());
    EXPECT_EQ(cap.messages[0], kBandMsg) << n;
  }
  MAX ok;
  MessageCapture cap;
  ok.initFiltRange4DataSizeSampleRate(5, 1000.0);
  EXPECT_TRUE(cap.messages.empty());
  EXPECT_EQ(MA().initFiltRange4DataSizeSampleRate(0, 1000.0), 0);
  EXPECT_EQ(MA().initFiltRange4DataSizeSampleRate(10, 0.0), 0);
}

TEST(MovAvrgWindows, DivisorOddRuleAndClamps) {
  MA f;
  const struct {
    double fc;
    std::int64_t d, want;
  } cases[] = {{100, 2, 5}, {100, 3, 3}, {100, 5, 3}, {250, 1, 5}, {2000, 1, 1}, {1, 1, 501}};
  for (const auto& c : cases) {
    ASSERT_EQ(f.setWndLowPass(1000.0, 1000, c.fc, c.d), 1);
    EXPECT_EQ(f.lowPassWnd, c.want) << c.fc << " / " << c.d;
    EXPECT_EQ(f.wndDivisor, c.d);
  }
  MAX x;
  const double fcs[] = {250, 2000, 1, 300};
  const std::int64_t want[] = {4, 2, 500, 3};
  for (int i = 0; i < 4; ++i) {
    x.setWndHighPass(1000.0, 1000, fcs[i], 9);
    EXPECT_EQ(x.highPassWnd, want[i]) << fcs[i];
  }
  EXPECT_EQ(x.wndDivisor, 1);  // ignored by the in-place class
}

TEST(MovAvrgWindows, RejectionsKeepWindowsButStoreDivisorAndHarmonics) {
  MA f;
  MessageCapture cap;
  EXPECT_EQ(f.setWndLowPass(0.0, 100, 10.0, 4), 0);
  EXPECT_EQ(f.setWndHighPass(1000.0, 1, 10.0, 5), 0);
  EXPECT_EQ(f.setWndBandPass(1000.0, 100, -1.0, 10.0, 6), 0);
  EXPECT_EQ(f.wndDivisor, 6);
  EXPECT_EQ(f.setWndPowerLineNoise(1000.0, 100, 0.0, 6.0, 7, 8), 0);
  EXPECT_EQ(f.harmonicCount, 7);
  EXPECT_EQ(f.wndDivisor, 8);
  EXPECT_TRUE(cap.messages.empty());
  EXPECT_EQ(f.setWndBandPass(1000.0, 100, 20.0, 20.0, 1), 0);
  EXPECT_EQ(f.setWndNotch(1000.0, 100, 30.0, 20.0, 1), 0);
  MAX x;
  EXPECT_EQ(x.setWndBandPass(1000.0, 100, 30.0, 20.0, 1), 0);
  EXPECT_EQ(x.setWndNotch(1000.0, 100, 30.0, 20.0, 1), 0);
  EXPECT_EQ(cap.messages, (std::vector<std::wstring>{kBandMsg, kNotchMsg, kBandMsg, kNotchMsg}));
  expectDefaults(x);
  EXPECT_EQ(f.lowPassWnd, 3);
  EXPECT_EQ(f.bandHighPassWnd, 6);
  EXPECT_EQ(f.notchLowPassWnd, 6);
  EXPECT_EQ(f.pwrLowPassWnd[0], 6);
  // No harmonics: accepted, windows untouched.
  EXPECT_EQ(f.setWndPowerLineNoise(1000.0, 100, 60.0, 6.0, 0, 1), 1);
  EXPECT_EQ(f.pwrLowPassWnd[0], 6);
  EXPECT_EQ(f.harmonicCount, 0);
  EXPECT_EQ(f.setRepetition(0), 1);
  EXPECT_EQ(f.setRepetition(-4), 1);
  EXPECT_EQ(f.setRepetition(3), 3);
  EXPECT_EQ(f.passCount, 3);
}

// Low-pass, N = 5, L = 3, h = 1, x = 1..5, sum starts at 1+2+3 = 6:
//  i=0: 6 - 6/3 + x1 = 6 -> 2      i=1: 6 - 2 + x2 = 7 -> 7/3     i=2: 7 - x0 + x3 = 10 -> 10/3
//  i=3: 10 - x1 + x4 = 13 -> 13/3  i=4: 13 - x2 = 10, past the end + 10/3 = 40/3 -> 40/9
// High-pass: x[i] minus the same means.
TEST(MovAvrgStages, EdgeTreatmentOnShortRecord) {
  MA f;
  Vec a = {1, 2, 3, 4, 5}, b(5, -1.0);
  double* data = a.data();
  double* work = b.data();
  ASSERT_EQ(f._01MAFLowpass(5, 3, data, work), 1);
  EXPECT_EQ(data, b.data());  // pointers exchanged: data names the result
  EXPECT_EQ(work, a.data());
  expectSamples(data, {2, 7.0 / 3, 10.0 / 3, 13.0 / 3, 40.0 / 9});
  expectSamples(work, {1, 2, 3, 4, 5});
  ASSERT_EQ(f._02MAFHighpass(5, 3, work, data), 1);
  expectSamples(work, {-1, -1.0 / 3, -1.0 / 3, -1.0 / 3, 5.0 / 9});
  EXPECT_EQ(f._01MAFLowpass(1, 3, data, work), 0);
  EXPECT_EQ(f._01MAFLowpass(5, 1, data, work), 0);
  EXPECT_EQ(f._01MAFLowpass(5, 6, data, work), 0);  // window longer than the record
}

// In place, N = 5, L = 2, x = 1..5.
// Low-pass forward (adds x[i+L]): sums 3, 3-1+4=6, 6-2+5=9, 9-3+4.5=9 (past end: +sum/L),
// 9-4+2.5=7.5 -> w = 1.5, 3, 4.5, 4.5, 3.75. Backward from w0+w1 = 4.5: y4 = 2.25;
// 4.5-3.75+3=3.75 -> 1.875; 3.75-4.5+1.5=0.75 -> 0.375; 0.75-4.5=-3.75, -1.875 -> -5.625 ->
// -2.8125; -5.625-3=-8.625, -4.3125 -> -12.9375 -> -6.46875.
// High-pass forward: w = 1.5 (plain mean), 2-3, 3-4.5, 4-4.5, 5-3.75. Backward from x3+x4 = 9:
// y4 = 4.5; 9-1.25-1=6.75 -> -0.5-3.375; 6.75+0.5+1.5=8.75 -> -1.5-4.375;
// 8.75+1.5=10.25, +5.125 -> -1-7.6875; 15.375+1=16.375, +8.1875 -> 1.5-12.28125.
TEST(MovAvrgXStages, TwoPassEdgeTreatmentOnShortRecord) {
  MAX f;
  Vec a = {1, 2, 3, 4, 5}, w(5);
  ASSERT_EQ(f._01MAFLowpass(5, 2, a.data(), w.data()), 1);
  expectSamples(a.data(), {-6.46875, -2.8125, 0.375, 1.875, 2.25});
  a = {1, 2, 3, 4, 5};
  ASSERT_EQ(f._02MAFHighpass(5, 2, a.data(), w.data()), 1);
  expectSamples(a.data(), {-10.78125, -8.6875, -5.875, -3.875, 4.5});
}

TEST(MovAvrgStages, NotchRotatesTheThreePointers) {
  MA f;
  const int n = 40;
  const Vec x = testSignal(n);
  double* d0 = new double[n];
  double* w0 = new double[n];
  double* s0 = new double[n];
  std::copy(x.begin(), x.end(), d0);
  double *data = d0, *work = w0, *spare = s0;
  // Equal windows: low-pass plus high-pass gives the input back.
  ASSERT_EQ(f._04MAVNotchflt(n, 5, 5, data, work, spare), 1);
  EXPECT_EQ(data, w0);
  EXPECT_EQ(work, s0);
  EXPECT_EQ(spare, d0);
  expectSamples(data, x, 1e-12);
  // Different windows: the sum of the two stages run alone.
  Vec lp = x, hp = x, t1(n), t2(n);
  double *p = lp.data(), *q = t1.data(), *r = hp.data(), *s = t2.data();
  f._01MAFLowpass(n, 7, p, q);
  f._02MAFHighpass(n, 3, r, s);
  std::copy(x.begin(), x.end(), data);
  ASSERT_EQ(f._04MAVNotchflt(n, 7, 3, data, work, spare), 1);
  for (int i = 0; i < n; ++i) EXPECT_NEAR(data[i], p[i] + r[i], 1e-12);
  EXPECT_EQ(f._04MAVNotchflt(n, 1, 3, data, work, spare), 0);
  // Freed through the pointers as they are now (ASan catches the wrong ones).
  delete[] data;
  delete[] work;
  delete[] spare;
}

TEST(MovAvrgFilter, PassCountRepeatsChainAndExchangesPointers) {
  MA f;
  const int n = 30;
  const Vec x = testSignal(n);
  f.stageEnabled[1] = 0;  // low-pass only
  f.lowPassWnd = 5;
  Vec ref = x, t(n);
  double *rp = ref.data(), *rt = t.data();
  Vec a = x, b(n), c(n);
  double *data = a.data(), *work = b.data(), *spare = c.data();
  for (std::int64_t passes : {2, 3}) {
    f.setRepetition(passes);
    ASSERT_EQ(f.filterStd(data, n, work, spare), 1);
    for (int p = 0; p < passes; ++p) f._01MAFLowpass(n, 5, rp, rt);
    expectSamples(data, Vec(rp, rp + n));
  }
  EXPECT_EQ(data, b.data());  // five exchanges in all
  EXPECT_EQ(f.filterStd(data, 0, work, spare), 0);
  double* none = nullptr;
  EXPECT_EQ(f.filterStd(data, n, work, none), 0);
}

TEST(MovAvrgFilter, BandPassIsLowThenHighAndNotchRuns) {
  MA f;
  const int n = 50;
  const Vec x = testSignal(n);
  ASSERT_EQ(f.setWndBandPass(1000.0, n, 100.0, 300.0, 1), 1);  // 10 made odd, 3
  EXPECT_EQ(f.bandHighPassWnd, 11);
  EXPECT_EQ(f.bandLowPassWnd, 3);
  f.stageEnabled[0] = f.stageEnabled[1] = 0;
  f.stageEnabled[2] = f.stageEnabled[3] = 1;
  f.setRepetition(1);
  f.notchLowPassWnd = 7;
  f.notchHighPassWnd = 3;
  Vec r = x, t(n), s(n);
  double *p = r.data(), *q = t.data(), *u = s.data();
  f._01MAFLowpass(n, 3, p, q);
  f._02MAFHighpass(n, 11, p, q);
  f._04MAVNotchflt(n, 7, 3, p, q, u);
  Vec a = x, b(n), c(n);
  double *data = a.data(), *work = b.data(), *spare = c.data();
  ASSERT_EQ(f.filterStd(data, n, work, spare), 1);
  expectSamples(data, Vec(p, p + n));
  Vec r2 = x, t2(n);
  double *p2 = r2.data(), *q2 = t2.data();
  ASSERT_EQ(f._03MAFbandpass(n, 11, 3, p2, q2), 1);
  EXPECT_EQ(p2, r2.data());  // two exchanges: back where it started
}

TEST(MovAvrgFilter, PowerLineCombRunsNotchPerHarmonic) {
  MA f;
  const int n = 64;
  const Vec x = testSignal(n);
  std::int64_t lo[] = {9, 5}, hi[] = {7, 3};
  Vec r = x, t(n), s(n);
  double *p = r.data(), *q = t.data(), *u = s.data();
  f._04MAVNotchflt(n, 9, 7, p, q, u);
  f._04MAVNotchflt(n, 5, 3, p, q, u);
  Vec a = x, b(n), c(n);
  double *data = a.data(), *work = b.data(), *spare = c.data();
  ASSERT_EQ(f._06MAVPowNosFt(n, lo, hi, data, work, spare, 2), 1);
  expectSamples(data, Vec(p, p + n));
  std::int64_t bad[] = {5, 1};
  EXPECT_EQ(f._06MAVPowNosFt(n, lo, bad, data, work, spare, 2), 0);
  EXPECT_EQ(f._06MAVPowNosFt(n, lo, hi, data, work, spare, 0), 0);
}

TEST(MovAvrgX, WindowsStoredDifferently) {
  MAX x;
  x.wndDivisor = 7;
  ASSERT_EQ(x.initFiltRange4DataSizeSampleRate(20, 1000.0), 1);
  EXPECT_DOUBLE_EQ(x.freqMax, 500.0);
  EXPECT_DOUBLE_EQ(x.freqMin, 100.0);
  EXPECT_EQ(x.lowPassWnd, 2);
  EXPECT_EQ(x.highPassWnd, 10);
  EXPECT_EQ(x.bandHighPassWnd, 2);   // from the high edge
  EXPECT_EQ(x.bandLowPassWnd, 10);   // from the low edge
  ASSERT_EQ(x.setWndNotch(1000.0, 200, 50.0, 125.0, 1), 1);
  EXPECT_EQ(x.notchLowPassWnd, 8);    // from the high edge
  EXPECT_EQ(x.notchHighPassWnd, 20);  // from the low edge
  EXPECT_EQ(x.wndDivisor, 7);
  // No frequency floor: an edge below 0 Hz gives the minimum window, the other class clamps.
  ASSERT_EQ(x.setWndPowerLineNoise(1000.0, 200, 2.0, 6.0, 1, 1), 1);
  EXPECT_EQ(x.pwrLowPassWnd[0], 2);
  EXPECT_EQ(x.pwrHighPassWnd[0], 100);
  MA f;
  ASSERT_EQ(f.setWndPowerLineNoise(1000.0, 200, 2.0, 6.0, 1, 1), 1);
  EXPECT_EQ(f.pwrLowPassWnd[0], 101);
}

TEST(MovAvrgX, FilterRunsOnceWithCrossedNotchAndHighFirstBand) {
  const int n = 40;
  const Vec x = testSignal(n);
  MAX f;
  f.setRepetition(5);  // not looped by this class
  f.stageEnabled[1] = 0;
  f.stageEnabled[2] = f.stageEnabled[3] = 1;
  f.lowPassWnd = 4;
  f.bandHighPassWnd = 3;
  f.bandLowPassWnd = 6;
  f.notchLowPassWnd = 2;
  f.notchHighPassWnd = 5;
  Vec r = x, w(n), s(n);
  f._01MAFLowpass(n, 4, r.data(), w.data());
  f._02MAFHighpass(n, 3, r.data(), w.data());
  f._01MAFLowpass(n, 6, r.data(), w.data());
  f._04MAVNotchflt(n, 5, 2, r.data(), w.data(), s.data());
  Vec a = x, b(n), c(n);
  ASSERT_EQ(f.filterStd(a.data(), n, b.data(), c.data()), 1);
  expectSamples(a.data(), r);
}

TEST(MovAvrgX, NotchHalvesSumAndHighPassUsesOwnScratch) {
  const int n = 30;
  const Vec x = testSignal(n);
  MAX f;
  Vec lp = x, hp = x, w(n);
  f._01MAFLowpass(n, 6, lp.data(), w.data());
  f._02MAFHighpass(n, 4, hp.data(), hp.data());
  Vec a = x, b(n), c(n);
  ASSERT_EQ(f._04MAVNotchflt(n, 6, 4, a.data(), b.data(), c.data()), 1);
  for (int i = 0; i < n; ++i) EXPECT_NEAR(a[i], 0.5 * (lp[i] + hp[i]), 1e-12);
  // Scratch shared with the input gives a different high-pass than a separate buffer.
  Vec hp2 = x;
  f._02MAFHighpass(n, 4, hp2.data(), w.data());
  EXPECT_GT(std::abs(hp2[10] - hp[10]), 1e-6);
}

}  // namespace
