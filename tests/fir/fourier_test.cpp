#include <cmath>
#include <complex>
#include <set>
#include <vector>

#include <gtest/gtest.h>
#include <digitfilt/digitfilt.h>

namespace {

using Fourier = CDigitFiltCoefMak02Fourier;
using Vec = std::vector<double>;
using Cx = std::complex<double>;
const double kPi = std::acos(-1.0);

Vec testSignal(int n) {
  Vec v(n);
  for (int i = 0; i < n; ++i) v[i] = std::sin(0.7 * i) + 0.3 * ((i * 37) % 11) - 1.0;
  return v;
}

// Direct sum with the exact pi: X[f] = sum x[k] e^{-+2 pi i f k / n}.
std::vector<Cx> directSum(const std::vector<Cx>& x, int sign) {
  const int n = static_cast<int>(x.size());
  std::vector<Cx> out(n);
  for (int f = 0; f < n; ++f)
    for (int k = 0; k < n; ++k) out[f] += x[k] * std::polar(1.0, sign * 2 * kPi * f * k / n);
  return out;
}

// Zeroes the given bins of the record's spectrum and returns the real part of the inverse.
Vec maskOracle(const Vec& x, const std::set<int>& zeroed) {
  std::vector<Cx> c(x.begin(), x.end());
  auto spec = directSum(c, -1);
  for (int k : zeroed) spec[k] = 0.0;
  auto back = directSum(spec, 1);
  Vec out(x.size());
  for (std::size_t i = 0; i < x.size(); ++i) out[i] = back[i].real() / x.size();
  return out;
}

// Hamming taper over the half length M at tap distance k.
double taper(int k, int M) { return 0.54 + 0.46 * std::cos(k * kPi / M); }

std::complex<double> response(const double* taps, int count, double f) {
  std::complex<double> h;
  for (int k = 0; k < count; ++k) h += taps[k] * std::polar(1.0, -2 * kPi * f * k);
  return h;
}

TEST(FourierTaps, LowPassExample) {
  Fourier d;
  EXPECT_EQ(d.sinc(0.0), 1.0);
  ASSERT_EQ(d.nonRcsvLowPass(0.1, 8), 1);
  EXPECT_EQ(d.lpCount, 5);
  const double* t = d.lpCoefs;
  EXPECT_NEAR(t[4], 0.2, 1e-15);
  EXPECT_NEAR(t[3], std::sin(0.2 * kPi) / kPi * taper(1, 4), 1e-15);
  EXPECT_NEAR(t[2], std::sin(0.4 * kPi) / (2 * kPi) * 0.54, 1e-15);
  EXPECT_NEAR(t[0], std::sin(0.8 * kPi) / (4 * kPi) * 0.08, 1e-15);
  for (int k = 1; k <= 4; ++k) {
    EXPECT_EQ(t[4 - k], t[4 + k]);
    EXPECT_EQ(d.lpHalf[k], t[4 + k]);
  }
  EXPECT_EQ(t[9], 0.0);  // the spare slot of the 2(M+1) array
}

TEST(FourierTaps, HighPassIsShiftedLowPassAndBandPassIsModulated) {
  Fourier d;
  const int n = 64, M = 32;
  ASSERT_EQ(d.nonRcsvLowPass(0.4, n), 1);
  ASSERT_EQ(d.nonRcsvHighPass(0.1, n), 1);
  for (int k = 0; k <= M; ++k) {
    const double sign = k % 2 ? -1.0 : 1.0;
    EXPECT_DOUBLE_EQ(d.hpCoefs[M + k], sign * d.lpCoefs[M + k]) << k;
    EXPECT_DOUBLE_EQ(d.hpCoefs[M - k], sign * d.lpCoefs[M - k]) << k;
  }
  EXPECT_LT(std::abs(response(d.hpCoefs, 2 * M + 1, 0.0)), 0.01);
  EXPECT_NEAR(std::abs(response(d.hpCoefs, 2 * M + 1, 0.5)), 1.0, 0.01);
  ASSERT_EQ(d.nonRcsvBandPass(0.2, 0.3, n), 1);
  EXPECT_EQ(d.bpCount, M + 1);
  EXPECT_NEAR(std::abs(response(d.bpCoefs, 2 * M + 1, 0.25)), 1.0, 0.01);
  EXPECT_LT(std::abs(response(d.bpCoefs, 2 * M + 1, 0.0)), 0.01);
  EXPECT_LT(std::abs(response(d.bpCoefs, 2 * M + 1, 0.5)), 0.01);
}

TEST(FourierTaps, CopiesShareArraysThatOutliveRedesign) {
  auto d = std::make_unique<Fourier>();
  d->nonRcsvLowPass(0.1, 8);
  Fourier copy = *d;
  EXPECT_EQ(copy.lpCoefs, d->lpCoefs);
  d->nonRcsvLowPass(0.25, 16);
  EXPECT_NE(copy.lpCoefs, d->lpCoefs);
  d.reset();
  EXPECT_NEAR(copy.lpCoefs[4], 0.2, 1e-15);  // still owned by the copy
}

TEST(FourierTransform, FastMatchesDirectAndSum) {
  Fourier d;
  for (int m = 0; m <= 7; ++m) {
    SCOPED_TRACE(m);
    const int n = 1 << m;
    Vec re = testSignal(n), im(n);
    for (int i = 0; i < n; ++i) im[i] = std::cos(1.3 * i);
    std::vector<Cx> x(n);
    for (int i = 0; i < n; ++i) x[i] = {re[i], im[i]};
    const auto sum = directSum(x, -1);
    // The direct form's pi is short by 4e-10: phase errors grow with the length.
    const double tol = 4e-9 * n;
    Vec fr = re, fi = im, dr = re, di = im;
    ASSERT_EQ(d.FFTd(1, m, fr.data(), fi.data()), 1);
    ASSERT_EQ(d.DFTd(1, n, dr.data(), di.data()), 1);
    for (int k = 0; k < n; ++k) {
      EXPECT_NEAR(fr[k], sum[k].real() / n, 1e-12);
      EXPECT_NEAR(fi[k], sum[k].imag() / n, 1e-12);
      EXPECT_NEAR(dr[k], fr[k], tol);
      EXPECT_NEAR(di[k], fi[k], tol);
    }
    ASSERT_EQ(d.FFTd(-1, m, fr.data(), fi.data()), 1);
    ASSERT_EQ(d.DFTd(-1, n, dr.data(), di.data()), 1);
    for (int k = 0; k < n; ++k) {
      EXPECT_NEAR(fr[k], re[k], 1e-12);
      EXPECT_NEAR(dr[k], re[k], tol);
    }
  }
  // Non-powers of two through the direct form.
  Vec re = testSignal(6), im(6);
  std::vector<Cx> x(re.begin(), re.end());
  const auto sum = directSum(x, -1);
  d.DFTd(1, 6, re.data(), im.data());
  for (int k = 0; k < 6; ++k) EXPECT_NEAR(re[k], sum[k].real() / 6, 1e-8);
}

TEST(FourierTransform, WrappedPointCountLeavesArrays) {
  Fourier d;
  Vec re = testSignal(8), im(8, 0.5);
  const Vec r0 = re;
  for (int m : {31, 32, 64}) {
    EXPECT_EQ(d.FFTd(1, m, re.data(), im.data()), 1);
    EXPECT_EQ(re, r0);
    EXPECT_EQ(im, Vec(8, 0.5));
  }
}

// Lengths of 32 and more go to FFTd as its exponent, so the transform leaves the samples alone
// and each mask zeroes samples at the bin indices; P = 32, fs = 32 makes cut(f) = f.
std::set<int> zeroedIndices(const Vec& v) {
  std::set<int> z;
  for (std::size_t i = 0; i < v.size(); ++i)
    if (v[i] == 0.0) z.insert(static_cast<int>(i));
  return z;
}
std::set<int> range(int a, int b) {
  std::set<int> s;
  for (int k = a; k <= b; ++k) s.insert(k);
  return s;
}

TEST(FourierRecordFilters, FastMasksActOnSamples) {
  Fourier d;
  Vec v(32, 1.0);
  ASSERT_EQ(d.fftLowPass(v.data(), 32, 32.0, 5.0), 1);
  EXPECT_EQ(zeroedIndices(v), range(6, 26));
  v.assign(32, 1.0);
  d.fftLowPass(v.data(), 32, 32.0, 5.9);  // bounds truncated: 5 and 26
  EXPECT_EQ(zeroedIndices(v), range(6, 25));
  v.assign(32, 1.0);
  d.fftHighPass(v.data(), 32, 32.0, 10.0);  // below fs/2: nothing
  EXPECT_TRUE(zeroedIndices(v).empty());
  d.fftHighPass(v.data(), 32, 32.0, 20.0);  // k <= 20 and k >= 12
  EXPECT_EQ(zeroedIndices(v), range(12, 20));
  v.assign(32, 1.0);
  d.fftBandPass(v.data(), 32, 32.0, 10.0, 24.0);  // 11..21 and 8..24
  EXPECT_EQ(zeroedIndices(v), range(8, 24));
  v.assign(32, 1.0);
  d.fftNotch(v.data(), 32, 32.0, 4.0, 20.0);  // 4 < k < 28, 12 < k < 20
  EXPECT_EQ(zeroedIndices(v), range(13, 19));
  // 40 samples: the rounded form masks 64 bins (cut = 64 f / 40), the D form 40 (cut = f).
  v.assign(40, 1.0);
  ASSERT_EQ(d.fftBandPass(v.data(), 40, 40.0, 10.0, 30.0), 1);
  EXPECT_EQ(zeroedIndices(v), range(16, 39));
  v.assign(40, 1.0);
  ASSERT_EQ(d.fftBandPassD(v.data(), 40, 40.0, 10.0, 30.0), 1);
  EXPECT_EQ(zeroedIndices(v), range(10, 30));
}

TEST(FourierRecordFilters, ShortFastRecordsRefused) {
  Fourier d;
  for (int n : {1, 5, 8, 16}) {
    Vec v(n, 1.0);
    EXPECT_EQ(d.fftLowPass(v.data(), n, 100.0, 10.0), 0) << n;
    EXPECT_EQ(v, Vec(n, 1.0));
  }
  Vec v(31, 1.0);
  EXPECT_EQ(d.fftBandPassD(v.data(), 31, 100.0, 1.0, 2.0), 0);
  EXPECT_EQ(d.fftLowPass(v.data(), 17, 100.0, 10.0), 1);  // P = 32
  EXPECT_EQ(d.dftLowPass(v.data(), 0, 100.0, 10.0), 0);
}

TEST(FourierRecordFilters, DirectMasksZeroBins) {
  Fourier d;
  const Vec x = testSignal(8);
  struct Case {
    int op;
    double f1, f2;
    std::set<int> bins;
  };
  const Case cases[] = {
      {0, 2, 0, {3, 4, 5}},  // 2 < k < 6
      {1, 2, 0, {}},         // below fs/2: nothing
      {1, 6, 0, range(2, 6)},
      {2, 3, 5, {3, 4, 5}},  // 3 < k < 5, then 3 <= k <= 5
      {3, 1, 6, {3, 4, 5}},  // 1 < k < 7, 2 < k < 6
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.op);
    Vec v = x;
    int r = 0;
    switch (c.op) {
      case 0: r = d.dftLowPass(v.data(), 8, 8.0, c.f1); break;
      case 1: r = d.dftHighPass(v.data(), 8, 8.0, c.f1); break;
      case 2: r = d.dftBandPass(v.data(), 8, 8.0, c.f1, c.f2); break;
      default: r = d.dftNotch(v.data(), 8, 8.0, c.f1, c.f2); break;
    }
    ASSERT_EQ(r, 1);
    const Vec want = maskOracle(x, c.bins);
    for (int i = 0; i < 8; ++i) EXPECT_NEAR(v[i], want[i], 1e-8) << i;
  }
}

}  // namespace
