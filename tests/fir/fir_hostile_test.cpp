// Hostile values through the moving-average, Fourier and Kaiser designers: empty, single-sample
// and enormous records, zero, negative and NaN rates, edges beyond Nyquist, wild windows, tap
// counts and orders. Every buffer is exactly as long as the call may use (heap vectors), so a
// read or write past one is an AddressSanitizer report.
#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <vector>

#include <gtest/gtest.h>
#include <digitfilt/digitfilt.h>

#include "support/message_capture.h"

namespace {

using digitfilt::test::MessageCapture;
using MA = CDigitFiltCoefMak00MovAvrg;
using MAX = CDigitFiltCoefMak00MovAvrgX;
using Vec = std::vector<double>;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr std::int64_t kMax64 = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kMin64 = std::numeric_limits<std::int64_t>::min();

const std::wstring kBandMsg =
    L"Band pass filtering error: high edge must be larger than the low edge!";

Vec ramp(std::size_t n) {
  Vec v(n);
  for (std::size_t i = 0; i < n; ++i) v[i] = std::sin(0.37 * static_cast<double>(i)) + 0.01 * i;
  return v;
}

bool allFinite(const double* x, std::size_t n) {
  for (std::size_t i = 0; i < n; ++i)
    if (!std::isfinite(x[i])) return false;
  return true;
}

// The pointer-exchange class's filterStd over copies of `in`; returns the result and reports
// whether the caller's pointers still point where they did.
Vec runExchange(MA& f, const Vec& in, bool* unmoved = nullptr) {
  Vec a = in, b(in.size()), c(in.size());
  double *data = a.data(), *work = b.data(), *spare = c.data();
  EXPECT_EQ(f.filterStd(data, static_cast<std::int64_t>(in.size()), work, spare), 1);
  if (unmoved != nullptr) *unmoved = data == a.data() && work == b.data() && spare == c.data();
  return Vec(data, data + in.size());
}

Vec runInPlace(MAX& f, const Vec& in) {
  Vec a = in, b(in.size()), c(in.size());
  EXPECT_EQ(f.filterStd(a.data(), static_cast<std::int64_t>(in.size()), b.data(), c.data()), 1);
  return a;
}

template <class T>
void enableAll(T& f) {
  for (auto& on : f.stageEnabled) on = 1;
}

TEST(MovAvrgHostile, InitRefusesEmptyRecordsAndRatesThatAreNotPositive) {
  for (double fs : {0.0, -1000.0, kNaN, -kInf}) {
    MA f;
    MAX x;
    EXPECT_EQ(f.initFiltRange4DataSizeSampleRate(100, fs), 0) << fs;
    EXPECT_EQ(x.initFiltRange4DataSizeSampleRate(100, fs), 0) << fs;
    EXPECT_EQ(f.dataSize, 0);
  }
  EXPECT_EQ(MA().initFiltRange4DataSizeSampleRate(kMin64, 1000.0), 0);
  EXPECT_EQ(MAX().initFiltRange4DataSizeSampleRate(-1, 1000.0), 0);
  // An infinite rate is positive: both ranges become infinite, the band-pass setter reports the
  // equal default edges, and init still succeeds.
  MessageCapture capture;
  MA f;
  EXPECT_EQ(f.initFiltRange4DataSizeSampleRate(100, kInf), 1);
  ASSERT_EQ(capture.messages.size(), 1u);
  EXPECT_EQ(capture.messages[0], kBandMsg);
  EXPECT_EQ(f.lowPassWnd, 1);  // inf / inf has no length: the shortest window
}

TEST(MovAvrgHostile, SingleSampleRecordsPassThroughUntouched) {
  MessageCapture capture;
  MA f;
  MAX x;
  EXPECT_EQ(f.initFiltRange4DataSizeSampleRate(1, 1000.0), 1);
  EXPECT_EQ(x.initFiltRange4DataSizeSampleRate(1, 1000.0), 1);
  EXPECT_EQ(capture.messages.size(), 2u);  // freqMin above freqMax: the band edges cross
  enableAll(f);
  enableAll(x);
  bool unmoved = false;
  EXPECT_EQ(runExchange(f, {42.0}, &unmoved), Vec{42.0});
  EXPECT_TRUE(unmoved) << "no stage ran, so no pointer was exchanged";
  EXPECT_EQ(runInPlace(x, {42.0}), Vec{42.0});
  double one = 1.0;
  double* p = &one;
  EXPECT_EQ(f.filterStd(p, 0, p, p), 0);
  EXPECT_EQ(f.filterStd(p, -5, p, p), 0);
  EXPECT_EQ(x.filterStd(nullptr, 1, p, p), 0);
}

TEST(MovAvrgHostile, WildFrequenciesAndDivisorsGiveBoundedWindows) {
  MA f;
  EXPECT_EQ(f.setWndLowPass(1000.0, 100, kNaN, 1), 0);  // not a positive frequency
  EXPECT_EQ(f.lowPassWnd, 3);
  EXPECT_EQ(f.setWndLowPass(1000.0, 100, kInf, 1), 1);  // 1000 / inf = 0: the shortest window
  EXPECT_EQ(f.lowPassWnd, 1);
  // A quotient beyond the int64 range is a window as long as allowed: N/2 = 50, made odd.
  EXPECT_EQ(f.setWndLowPass(1000.0, 100, 1e-300, 1), 1);
  EXPECT_EQ(f.lowPassWnd, 51);
  EXPECT_EQ(f.setWndHighPass(1000.0, 100, 10.0, 0), 1);  // divisor 0: 1000 / 0 = inf
  EXPECT_EQ(f.highPassWnd, 51);
  EXPECT_EQ(f.setWndHighPass(1000.0, 100, 10.0, -4), 1);  // negative: below 1
  EXPECT_EQ(f.highPassWnd, 1);
  MAX x;
  EXPECT_EQ(x.setWndLowPass(1000.0, 100, 1e-300, 1), 1);
  EXPECT_EQ(x.lowPassWnd, 50);
  EXPECT_EQ(x.setWndLowPass(kInf, 100, 10.0, 1), 1);
  EXPECT_EQ(x.lowPassWnd, 50);
  EXPECT_EQ(x.setWndLowPass(1000.0, kMax64, 1e-300, 1), 1);
  EXPECT_EQ(x.lowPassWnd, kMax64 / 2);
}

TEST(MovAvrgHostile, HarmonicCountsPastTheSixtyWindowsStayInside) {
  // Windows of harmonic k at divisor 3: trunc(1000 / (3 (50k -+ 2))); harmonic 61 would give 1
  // and land on the fields after the arrays, which keep their values.
  for (int harmonics : {61, 1000, INT_MAX}) {
    MA f;
    EXPECT_EQ(f.setWndPowerLineNoise(1000.0, 400, 50.0, 4.0, harmonics, 3), 1);
    EXPECT_EQ(f.harmonicCount, harmonics);
    EXPECT_EQ(f.pwrLowPassWnd[0], 7);   // trunc(1000 / 144) = 6, made odd
    EXPECT_EQ(f.pwrHighPassWnd[0], 7);  // trunc(1000 / 156) = 6, made odd
    EXPECT_EQ(f.wndDivisor, 3);
    EXPECT_EQ(f.passCount, 2);
  }
  // The comb runs the 60 notches that exist, so a count past 60 filters like 60.
  const Vec in = ramp(400);
  MA sixty, many;
  for (MA* f : {&sixty, &many}) {
    f->setWndPowerLineNoise(1000.0, 400, 7.0, 2.0, 60, 1);
    f->stageEnabled[0] = f->stageEnabled[1] = 0;
    f->stageEnabled[4] = 1;
  }
  many.harmonicCount = INT_MAX;
  EXPECT_EQ(runExchange(sixty, in), runExchange(many, in));
  MAX xs, xm;
  for (MAX* f : {&xs, &xm}) {
    f->setWndPowerLineNoise(1000.0, 400, 7.0, 2.0, 60, 1);
    f->stageEnabled[4] = 1;
  }
  xm.harmonicCount = 1000;
  // The in-place notch's high-pass runs on its own buffer and grows without bound, so 60 of them
  // overflow to NaN: compare bit patterns.
  const Vec ys = runInPlace(xs, in), ym = runInPlace(xm, in);
  EXPECT_EQ(std::memcmp(ys.data(), ym.data(), ys.size() * sizeof(double)), 0);
  // No harmonics at all: accepted, nothing stored, and the comb stage does nothing.
  MA none;
  EXPECT_EQ(none.setWndPowerLineNoise(1000.0, 400, 50.0, 4.0, INT_MIN, 1), 1);
  EXPECT_EQ(none.pwrLowPassWnd[0], 6);
  none.stageEnabled[0] = none.stageEnabled[1] = 0;
  none.stageEnabled[4] = 1;
  EXPECT_EQ(runExchange(none, in), in);
}

TEST(MovAvrgHostile, WindowsLongerThanTheRecordOrBelowTwoAreSkipped) {
  const Vec in = ramp(9);
  MA f;
  MAX x;
  enableAll(f);
  enableAll(x);
  for (auto w : {kMax64, kMin64, std::int64_t{10}, std::int64_t{1}, std::int64_t{-3}}) {
    SCOPED_TRACE(w);
    for (std::int64_t* field : {&f.lowPassWnd, &f.highPassWnd, &f.bandHighPassWnd,
                                &f.bandLowPassWnd, &f.notchLowPassWnd, &f.notchHighPassWnd,
                                &x.lowPassWnd, &x.highPassWnd, &x.bandHighPassWnd,
                                &x.bandLowPassWnd, &x.notchLowPassWnd, &x.notchHighPassWnd})
      *field = w;
    std::fill(std::begin(f.pwrLowPassWnd), std::end(f.pwrLowPassWnd), w);
    std::fill(std::begin(x.pwrHighPassWnd), std::end(x.pwrHighPassWnd), w);
    bool unmoved = false;
    EXPECT_EQ(runExchange(f, in, &unmoved), in);
    EXPECT_TRUE(unmoved);
    EXPECT_EQ(runInPlace(x, in), in);
  }
  Vec a = in, b(in.size()), c(in.size());
  double *data = a.data(), *work = b.data(), *spare = c.data();
  EXPECT_EQ(f._01MAFLowpass(9, 10, data, work), 0);
  EXPECT_EQ(f._04MAVNotchflt(9, 3, kMax64, data, work, spare), 0);
  EXPECT_EQ(x._03MAFbandpass(-9, 3, 3, a.data(), b.data()), 0);
  EXPECT_EQ(x._06MAVPowNosFt(9, f.pwrLowPassWnd, nullptr, a.data(), b.data(), c.data(), 1), 0);
}

TEST(MovAvrgHostile, OneNaNPoisonsTheRunningSumFromWhereItEnters) {
  // Window 3 (h = 1): sample 10 enters the sum at i = 9 and never leaves it.
  Vec in = ramp(40);
  in[10] = kNaN;
  MA f;
  Vec a = in, b(40);
  double *data = a.data(), *work = b.data();
  ASSERT_EQ(f._01MAFLowpass(40, 3, data, work), 1);
  EXPECT_TRUE(allFinite(data, 9));
  for (int i = 9; i < 40; ++i) EXPECT_TRUE(std::isnan(data[i])) << i;
}

TEST(MovAvrgHostile, EnormousConstantRecords) {
  // Away from the edges a running mean of a constant is the constant, so the pointer-exchange
  // high-pass removes it exactly. The in-place high-pass's backward pass subtracts a mean carried
  // in from the record's end, so its interior is a constant offset that does not depend on the
  // record's length.
  const std::size_t n = std::size_t{1} << 18;
  const Vec in(n, 3.5);
  MA f;
  const Vec out = runExchange(f, in);
  EXPECT_TRUE(allFinite(out.data(), n));
  for (std::size_t i = 16; i < n - 16; i += 1021) EXPECT_EQ(out[i], 0.0) << i;
  MAX x;
  x.stageEnabled[0] = 0;
  const Vec big = runInPlace(x, in);
  const Vec small = runInPlace(x, Vec(64, 3.5));
  EXPECT_TRUE(allFinite(big.data(), n));
  for (std::size_t i = 16; i < n - 16; i += 1021) EXPECT_EQ(big[i], small[32]) << i;
}

// Fourier -------------------------------------------------------------------------------------

TEST(FourierHostile, TapLengthsZeroNegativeAndHuge) {
  CDigitFiltCoefMak02Fourier d;
  for (int n : {INT_MIN, -7, 0, 1}) {
    SCOPED_TRACE(n);
    EXPECT_EQ(d.nonRcsvLowPass(0.1, n), 1);
    EXPECT_EQ(d.lpCount, 1);  // the centre tap alone
    EXPECT_NEAR(d.lpCoefs[0], 0.2, 1e-15);
    EXPECT_EQ(d.lpCoefs[1], 0.0);
  }
  // Beyond Nyquist the high-pass prototype's cut-off turns negative: centre 2 (0.5 - 0.7).
  EXPECT_EQ(d.nonRcsvHighPass(0.7, 8), 1);
  EXPECT_NEAR(d.hpCoefs[4], -0.4, 1e-15);
  EXPECT_EQ(d.nonRcsvBandPass(kNaN, 0.2, 8), 1);
  EXPECT_TRUE(std::isnan(d.bpCoefs[4]));
  const int huge = 1 << 18;
  EXPECT_EQ(d.nonRcsvLowPass(0.05, huge), 1);
  const int M = huge / 2;
  EXPECT_EQ(d.lpCount, M + 1);
  EXPECT_EQ(d.lpCoefs[M - 12345], d.lpCoefs[M + 12345]);
  EXPECT_EQ(d.lpCoefs[2 * M + 1], 0.0);  // the spare slot of the 2(M+1) array
}

TEST(FourierHostile, TransformsWithWrappedEmptyOrMissingArrays) {
  CDigitFiltCoefMak02Fourier d;
  double re[1] = {3.0}, im[1] = {-2.0};
  for (int m : {31, 32, 100, INT_MAX, 0, -5}) {
    EXPECT_EQ(d.FFTd(1, m, re, im), 1) << m;  // 2^m wraps, or a single point divided by 1
    EXPECT_EQ(re[0], 3.0);
    EXPECT_EQ(im[0], -2.0);
  }
  EXPECT_EQ(d.FFTd(1, 3, nullptr, nullptr), 0);
  EXPECT_EQ(d.DFTd(1, 0, nullptr, nullptr), 1);
  EXPECT_EQ(d.DFTd(1, -3, re, im), 0);
  EXPECT_EQ(d.DFTd(-1, 4, nullptr, im), 0);
}

TEST(FourierHostile, RecordFiltersRefuseEmptyRecords) {
  CDigitFiltCoefMak02Fourier d;
  Vec v = ramp(64);
  const Vec keep = v;
  for (int n : {0, -1, INT_MIN}) {
    EXPECT_EQ(d.fftLowPass(v.data(), n, 1000.0, 100.0), 0);
    EXPECT_EQ(d.fftHighPass(v.data(), n, 1000.0, 100.0), 0);
    EXPECT_EQ(d.fftBandPass(v.data(), n, 1000.0, 100.0, 200.0), 0);
    EXPECT_EQ(d.fftNotch(v.data(), n, 1000.0, 100.0, 200.0), 0);
    EXPECT_EQ(d.fftBandPassD(v.data(), n, 1000.0, 100.0, 200.0), 0);
    EXPECT_EQ(d.dftLowPass(v.data(), n, 1000.0, 100.0), 0);
    EXPECT_EQ(d.dftHighPass(v.data(), n, 1000.0, 100.0), 0);
    EXPECT_EQ(d.dftBandPass(v.data(), n, 1000.0, 100.0, 200.0), 0);
    EXPECT_EQ(d.dftNotch(v.data(), n, 1000.0, 100.0, 200.0), 0);
  }
  EXPECT_EQ(d.fftLowPass(nullptr, 64, 1000.0, 100.0), 0);
  EXPECT_EQ(d.dftNotch(nullptr, 64, 1000.0, 100.0, 200.0), 0);
  EXPECT_EQ(v, keep);
}

TEST(FourierHostile, BinBoundsWithoutAnIntegerValueMaskNothing) {
  // 64 samples: the fast forms mask the samples themselves (the point count wraps).
  CDigitFiltCoefMak02Fourier d;
  const Vec in = ramp(64);
  for (double fs : {0.0, kNaN, -0.0}) {
    Vec v = in;
    EXPECT_EQ(d.fftHighPass(v.data(), 64, fs, 100.0), 1);
    EXPECT_EQ(d.fftLowPass(v.data(), 64, fs, 100.0), 1);
    EXPECT_EQ(d.fftNotch(v.data(), 64, fs, 100.0, 200.0), 1);
    EXPECT_EQ(v, in) << fs;
  }
  Vec v = in;
  EXPECT_EQ(d.fftHighPass(v.data(), 64, 1000.0, kInf), 1);
  EXPECT_EQ(d.fftLowPass(v.data(), 64, 1000.0, 1e300), 1);
  EXPECT_EQ(v, in);
  // A high-pass edge beyond Nyquist is defined: cut 48, bins 16..48 are zeroed.
  EXPECT_EQ(d.fftHighPass(v.data(), 64, 1000.0, 750.0), 1);
  for (int k = 0; k < 64; ++k) EXPECT_EQ(v[k], (k >= 16 && k <= 48) ? 0.0 : in[k]) << k;
  // The direct forms transform for real; a NaN rate keeps every bin, so only the round trip's
  // shortened pi separates the result from the input.
  Vec w = in;
  EXPECT_EQ(d.dftLowPass(w.data(), 64, kNaN, 100.0), 1);
  for (int k = 0; k < 64; ++k) EXPECT_NEAR(w[k], in[k], 1e-5) << k;
}

TEST(FourierHostile, EnormousRecordMasksTheSamplesDirectly) {
  // 2^18 + 1 samples round up to P = 2^19 points; FFTd sees 2^19 as its exponent and leaves the
  // arrays alone, so the low-pass zeroes samples trunc(P/4) < k < trunc(3P/4) that exist.
  const std::size_t P = std::size_t{1} << 19, n = P / 2 + 1;
  Vec v(n, 1.0);
  CDigitFiltCoefMak02Fourier d;
  EXPECT_EQ(d.fftLowPass(v.data(), static_cast<int>(n), 1000.0, 250.0), 1);
  EXPECT_EQ(v[P / 4], 1.0);
  EXPECT_EQ(v[P / 4 + 1], 0.0);
  EXPECT_EQ(v[n - 1], 0.0);
}

// Kaiser --------------------------------------------------------------------------------------

struct Kaiser : CDigitFiltCoefMak03KaiserWnd {
  using CDigitFiltCoefMak03KaiserWnd::besselI0;
  using CDigitFiltCoefMak03KaiserWnd::filterGain;
  using CDigitFiltCoefMak03KaiserWnd::I0;
  using CDigitFiltCoefMak03KaiserWnd::setFreqPoints;
};

TEST(KaiserHostile, OrderEstimateOnDegenerateParameters) {
  Kaiser k;
  k.setRate(0.0);  // the transition spans infinitely many rates: trunc(0 + 1) = 1
  EXPECT_EQ(k.estimatedOrder(), 2);
  k.setRate(kNaN);
  EXPECT_EQ(k.estimatedOrder(), 0);
  k.setRate(1250.0);
  k.setTrBand(0.0);  // an infinite length cannot be an order: 0
  EXPECT_EQ(k.estimatedOrder(), 0);
  k.setTrBand(1e-9);  // 2.3e12 half-lengths do not fit an int either
  EXPECT_EQ(k.estimatedOrder(), 0);
  k.setTrBand(500.0);
  k.setAtten(kNaN);
  EXPECT_EQ(k.estimatedOrder(), 0);
  EXPECT_EQ(k.beta, 0.0);
  // Negative attenuation: 2 trunc(-107.95 / 11.488 + 1) = 2 trunc(-8.397) = -16.
  k.setAtten(-100.0);
  EXPECT_EQ(k.estimatedOrder(), -16);
  EXPECT_EQ(k.design(), 0);
  MessageCapture capture;
  EXPECT_EQ(k.filterBegin(), 0);
  ASSERT_EQ(capture.messages.size(), 1u);
  EXPECT_EQ(capture.messages[0], L"Filter order error!");
  Vec x = ramp(5);
  const Vec keep = x;
  EXPECT_EQ(k.filterX(x.data(), 5), x.data());
  EXPECT_EQ(x, keep) << "no design, no filtering";
}

TEST(KaiserHostile, SeriesTerminateOnWildArguments) {
  Kaiser k;
  EXPECT_EQ(k.besselI0(kInf), kInf);
  EXPECT_TRUE(std::isnan(k.besselI0(kNaN)));
  EXPECT_FALSE(std::isfinite(k.I0(kInf)));  // terms overflow until the factorial does: NaN
  EXPECT_FALSE(std::isfinite(k.I0(1e6)));
  EXPECT_TRUE(std::isnan(k.I0(kNaN)));
  EXPECT_EQ(k.I0(-3.0), k.I0(3.0));  // only squares of the terms are summed
}

TEST(KaiserHostile, HalfWindowLengthsAtTheirLimits) {
  Kaiser k;
  for (int maxLen : {INT_MIN, -5, 0, 1}) {
    EXPECT_EQ(k.halfKaiserWnd2Spec(60.0, 0.1, maxLen), 1) << maxLen;
    EXPECT_EQ(k.halfWndCount, maxLen);  // len = maxLen - 1, declared length len + 1
    EXPECT_EQ(k.halfWnd[1], 1.0);
  }
  // A vanishing transition width asks for an infinite window: as long as maxLen allows.
  EXPECT_EQ(k.halfKaiserWnd2Spec(60.0, 0.0, 40), 1);
  EXPECT_EQ(k.halfWndCount, 40);
  EXPECT_EQ(k.halfWnd[40], 1.0 / k.besselI0(0.1102 * (60.0 - 8.7)));  // sqrt(1 - 1) at the end
  EXPECT_EQ(k.halfKaiserWnd2Spec(60.0, -1e-300, 40), 1);  // -inf: a negative length, no values
  EXPECT_EQ(k.halfWndCount, INT_MIN);
  EXPECT_EQ(k.halfKaiserWnd2Spec(kNaN, 0.1, 40), 1);  // NaN is not below 7.95: trunc(NaN) = 0
  EXPECT_EQ(k.halfWndCount, 2);
}

TEST(KaiserHostile, DegenerateDesignsAndGainCurves) {
  Kaiser k;
  k.order = 0;  // a single tap, rescaled by the gain curve to a 0 dB peak
  ASSERT_EQ(k.design(), 1);
  k.setFreqPoints(0);
  EXPECT_EQ(k.filterGain(), nullptr);
  k.setFreqPoints(-3);
  EXPECT_EQ(k.filterGain(), nullptr);
  k.setFreqPoints(4);
  std::unique_ptr<double[]> gain(k.filterGain());
  ASSERT_NE(gain, nullptr);
  for (int i = 0; i <= 4; ++i) EXPECT_NEAR(gain[i], 0.0, 1e-12);
  EXPECT_NEAR(k.getCoeff(0), 1.0, 1e-12);
  EXPECT_EQ(k.getCoeff(1), 0.0);
  EXPECT_EQ(k.getCoeff(-1), 0.0);
  EXPECT_EQ(k.getCoeff(INT_MAX), 0.0);
  k.order = 3;  // odd: taps 0..2 designed, the fourth slot stays 0
  ASSERT_EQ(k.design(), 1);
  EXPECT_EQ(k.getCoeff(3), 0.0);
  EXPECT_EQ(k.getCoeff(0), k.getCoeff(2));
}

Kaiser designedLowPass() {
  Kaiser k;
  k.setRate(1000.0);
  k.setTrBand(50.0);
  k.estimatedOrder();
  k.design();
  return k;
}

TEST(KaiserHostile, StreamingGuardsAndAnOrderRaisedAfterBegin) {
  Kaiser k = designedLowPass();
  const int order = k.order;
  const Vec in = ramp(64);
  Vec want = in;
  EXPECT_EQ(k.filterDo(want.data(), 64), want.data());
  EXPECT_EQ(want, in) << "no delay line yet";
  ASSERT_EQ(k.filterBegin(), 1);
  k.filterDo(want.data(), 64);
  // The delay line holds `order` values from filterBegin on; a larger order set afterwards uses
  // no more of it than exists.
  k.order = order * 100;
  Vec got = in;
  k.filterDo(got.data(), 64);
  EXPECT_EQ(got, want);
  EXPECT_EQ(k.filterDo(nullptr, 64), nullptr);
  EXPECT_EQ(k.filterX(got.data(), 0), got.data());
  EXPECT_EQ(k.filterEnd(), 1);
  EXPECT_EQ(k.filterEnd(), 1);
  EXPECT_EQ(k.delayLine, nullptr);
  MessageCapture capture;
  k.order = INT_MIN;
  EXPECT_EQ(k.filterBegin(), 0);
  EXPECT_EQ(capture.messages.size(), 1u);
}

TEST(KaiserHostile, EnormousBlockSettlesOnTheSumOfTheUsedTaps) {
  Kaiser k = designedLowPass();
  k.setTrBand(250.0);  // order 16: the block costs order operations per sample
  k.estimatedOrder();
  ASSERT_EQ(k.design(), 1);
  const std::size_t n = std::size_t{1} << 17;
  Vec x(n, 2.0);
  k.filterX(x.data(), n);
  double used = 0.0;
  for (int i = 0; i < k.order; ++i) used += k.getCoeff(i);
  EXPECT_NEAR(x[n - 1], 2.0 * used, 1e-12);
  EXPECT_NEAR(x[n / 2], 2.0 * used, 1e-12);
  EXPECT_TRUE(allFinite(x.data(), n));
}

}  // namespace
