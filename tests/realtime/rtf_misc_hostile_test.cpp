// Hostile values for the real-time FIR, the median selections and the first-order filters: NaN,
// infinities, denormals, zero and negative rates, corners beyond Nyquist, lengths 0 and 1, wild
// indices and tap counts. Buffers are exact-size heap blocks, so the sanitizer build proves that
// nothing outside them is touched.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cmath>
#include <cstring>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include <digitfilt/digitfilt.h>

#include "support/message_capture.h"

namespace {

const double kNan = std::numeric_limits<double>::quiet_NaN(),
             kInf = std::numeric_limits<double>::infinity(),
             kDenorm = std::numeric_limits<double>::denorm_min(), kPi = 3.14159265358979323846;

std::string printed(const std::function<void()>& action) {
  testing::internal::CaptureStdout();
  action();
  return testing::internal::GetCapturedStdout();
}

struct MedianProbe : CRtfMedian {
  using CRtfMedian::medianWirth;
  using CRtfMedian::quick_select;
  using CRtfMedian::torben;
};

// Same multiset of bit patterns (NaNs included).
bool sameBitsSorted(const std::vector<double>& a, const std::vector<double>& b) {
  std::vector<std::uint64_t> x(a.size()), y(b.size());
  std::memcpy(x.data(), a.data(), a.size() * sizeof(double));
  std::memcpy(y.data(), b.data(), b.size() * sizeof(double));
  std::sort(x.begin(), x.end());
  std::sort(y.begin(), y.end());
  return x == y;
}

}  // namespace

// Found by fuzzing: a host that wrote a huge count into `taps` made every design visit each of
// its two billion indices, printing a message for each one. The stored coefficients are written
// as before and the missing ones are reported once.
TEST(RtfFirHostile, TapCountWrittenPastTheStoredCoefficients) {
  CRtf6Fir fir;
  fir.taps = INT_MAX;
  const std::string out = printed([&] { fir.lowpass(0.25); });
  EXPECT_EQ(out, "\nThat coefficient does not exist\n");
  const int half = INT_MAX / 2;
  for (int i = 0; i < 4; ++i) {
    const int n = i - half;
    EXPECT_DOUBLE_EQ(fir.coeffs[i], std::sin(n * 2.0 * kPi * 0.25) / (kPi * n)) << i;
  }
  ASSERT_EQ(fir.coeffs.size(), 4u);
  ASSERT_EQ(fir.buffer.size(), 4u);
  // Accessors and filtering stay within the stored four.
  EXPECT_EQ(printed([&] { EXPECT_EQ(fir.getCoeff(10), 0.0); }),
            "\nThat coefficient does not exist\n");
  EXPECT_EQ(printed([&] { fir.setBuffer(1.0, 100); }),
            "\nThat index for the buffer does not exist\n");
  fir.coeffs = {0.0, 0.0, 0.0, 1.0};
  for (double x : {1.0, 2.0, 3.0}) fir.filter(x);
  EXPECT_EQ(fir.filter(4.0), 1.0);  // the input of three calls earlier

  // A count below the stored one designs only the taps it names.
  CRtf6Fir small;
  small.taps = 2;
  EXPECT_EQ(printed([&] { small.lowpass(0.25); }), "");
  EXPECT_DOUBLE_EQ(small.coeffs[0], 1.0 / kPi);  // n = -1
  EXPECT_DOUBLE_EQ(small.coeffs[1], 0.5);        // n = 0
  EXPECT_TRUE(small.coeffs[2] == 0.0 && small.coeffs[3] == 0.0);
}

TEST(RtfFirHostile, NonFiniteFrequenciesAreNotNormalized) {
  CRtf6Fir fir(5);
  for (double f : {kNan, kInf, -kInf, -kDenorm, 0.5000000001}) {
    EXPECT_EQ(printed([&] { fir.lowpass(f); }), "\nThe frequency is not normalized\n");
    EXPECT_EQ(printed([&] { fir.highpass(f); }), "\nThe frequency is not normalized\n");
    const double lowBad[2] = {f, 0.2}, highBad[2] = {0.1, f};
    EXPECT_EQ(printed([&] { fir.passband(lowBad); }), "\nThe frequencies are not normalized\n");
    EXPECT_EQ(printed([&] { fir.stopband(highBad); }), "\nThe frequencies are not normalized\n");
    EXPECT_EQ(printed([&] { fir.setFreq(f, 0); }),
              "\nThat frequency is not normalized || the index does not exist\n");
  }
  EXPECT_EQ(fir.coeffs, std::vector<double>(5, 0.0));
  EXPECT_EQ(fir.freqs.size(), 2u);  // resized by the last two-frequency design, nothing stored
  // Both ends of the range are normalized, a denormal too.
  EXPECT_EQ(printed([&] {
              fir.lowpass(0.0);
              fir.highpass(0.5);
              fir.lowpass(kDenorm);
            }),
            "");
  EXPECT_EQ(fir.getFreq(0), kDenorm);
}

TEST(RtfFirHostile, WildCountsAndIndices) {
  // Tap counts 0 and 1: nothing to design, filtering gives 0 or a plain gain.
  CRtf6Fir none(0);
  EXPECT_EQ(printed([&] { none.lowpass(0.2); }), "");
  EXPECT_EQ(none.filter(5.0), 0.0);
  CRtf6Fir one(1);
  one.lowpass(0.2);  // half = 0: no coefficient is written
  EXPECT_EQ(one.coeffs, std::vector<double>{0.0});
  one.setCoeff(2.0, 0);
  EXPECT_EQ(one.filter(3.0), 6.0);

  CRtf6Fir fir;
  EXPECT_EQ(printed([&] { fir.setTaps(INT_MIN); }), "\nThat value is not possible\n");
  EXPECT_EQ(printed([&] { CRtf6Fir bad(INT_MIN); }),
            "\nThe number of taps can not be less than 0\n");
  for (int i : {INT_MIN, -1, 4, INT_MAX}) {
    EXPECT_EQ(printed([&] { EXPECT_EQ(fir.getCoeff(i), 0.0); }),
              "\nThat coefficient does not exist\n");
    EXPECT_EQ(printed([&] { EXPECT_EQ(fir.getBuffer(i), 0.0); }), "\nThat value does not exist\n");
    EXPECT_EQ(printed([&] { EXPECT_EQ(fir.getFreq(i), 0.0); }),
              "\nThat frequency does not exist\n");
    EXPECT_EQ(printed([&] { fir.setFreq(0.1, i); }),
              "\nThat frequency is not normalized || the index does not exist\n");
  }
  // A type code written directly is only ever reported, never trusted as an index.
  fir.type = INT_MIN;
  EXPECT_EQ(fir.getType(), "\n Unknown filter \n");
  EXPECT_EQ(fir.setType(0), 1);
  fir.type = 5;
  EXPECT_EQ(fir.setType(0), 0);
}

TEST(RtfFirHostile, NanSampleLeavesTheLineAfterTapsCalls) {
  CRtf6Fir fir;
  fir.lowpass(0.1);
  EXPECT_TRUE(std::isnan(fir.filter(kNan)));
  for (int k = 0; k < 3; ++k) EXPECT_TRUE(std::isnan(fir.filter(1.0))) << k;
  EXPECT_TRUE(std::isfinite(fir.filter(1.0)));  // shifted out of the four-tap line
}

TEST(RtfMedianHostile, LengthsZeroAndOne) {
  MedianProbe m;
  std::vector<double> empty;
  for (int n : {0, -5, INT_MIN})
    EXPECT_TRUE(m.medianWirth(nullptr, n) == 0.0 && m.quick_select(nullptr, n) == 0.0 &&
                m.torben(nullptr, n) == 0.0 && m.quickMedianStd(empty) == 0.0);
  for (double v : {kNan, -kInf, kDenorm, 7.0}) {
    std::vector<double> one{v};
    const auto same = [v](double r) { return std::isnan(v) ? std::isnan(r) : r == v; };
    EXPECT_TRUE(same(m.medianWirth(one.data(), 1)) && same(m.quick_select(one.data(), 1)) &&
                same(m.torben(one.data(), 1)) && same(m.quickMedianStd(one)));
  }
}

TEST(RtfMedianHostile, InfinitiesAndDenormalsAreOrderedValues) {
  MedianProbe m;
  const std::vector<double> cases[] = {
      {kInf, -kInf, 1.0}, {kInf, kInf, 1.0, -3.0}, {-kInf, -kInf, -kInf, 2.0},
      {3 * kDenorm, kDenorm, 0.0, 2 * kDenorm, -kDenorm}, {-0.0, 0.0, -0.0, 0.0}};
  for (const auto& v : cases) {
    std::vector<double> sorted = v;
    std::sort(sorted.begin(), sorted.end());
    const double want = sorted[(v.size() - 1) / 2];
    const int n = static_cast<int>(v.size());
    std::vector<double> a = v, b = v, c = v;
    EXPECT_TRUE(m.medianWirth(a.data(), n) == want && m.quick_select(b.data(), n) == want &&
                m.quickMedianStd(c) == want);
    EXPECT_TRUE(sameBitsSorted(a, v) && sameBitsSorted(b, v) && sameBitsSorted(c, v));
  }
  // Torben bisects between the extremes: one-sided infinities are fine...
  const std::vector<double> upper{1.0, 2.0, kInf}, lower{-kInf, 4.0, 5.0, 6.0};
  EXPECT_EQ(m.torben(upper.data(), 3), 2.0);
  EXPECT_EQ(m.torben(lower.data(), 4), 4.0);
  EXPECT_EQ(m.torben(cases[3].data(), 5), kDenorm);
  // ...but with both infinities the first guess is inf - inf, which compares with nothing: every
  // value counts as equal and the guess itself, NaN, is the answer.
  const std::vector<double> both{-kInf, 1.0, kInf};
  EXPECT_TRUE(std::isnan(m.torben(both.data(), 3)));
}

TEST(RtfMedianHostile, NanReturnsWithoutLosingOrInventingValues) {
  MedianProbe m;
  std::vector<double> v;
  for (int i = 0; i < 300; ++i) v.push_back(i % 7 == 0 ? kNan : std::sin(i) * 100.0);
  for (int n : {2, 3, 50, 299}) {
    SCOPED_TRACE(n);
    const std::vector<double> in(v.begin(), v.begin() + n);
    std::vector<double> a = in, b = in, c = in;
    m.medianWirth(a.data(), n);
    m.quick_select(b.data(), n);
    m.quickMedianStd(c);
    EXPECT_TRUE(sameBitsSorted(a, in) && sameBitsSorted(b, in) && sameBitsSorted(c, in));
    m.torben(in.data(), n);  // returns; the array is const
  }
  std::vector<double> allNan(9, kNan);
  EXPECT_TRUE(std::isnan(m.torben(allNan.data(), 9)) && std::isnan(m.quickMedianStd(allNan)) &&
              std::isnan(m.medianWirth(allNan.data(), 9)));
}

TEST(RtfMedianHostile, WindowKernelWithoutStepsOrInput) {
  CDigitFiltBscqv k;
  double out = -1.0;
  EXPECT_EQ(k.BMedian35(nullptr, &out, 5), 0);
  // Without steps only in[-32768 .. 32768] is read, whatever the negative count.
  std::vector<double> span(65537, kNan);
  EXPECT_EQ(k.BMedian35(span.data() + 32768, &out, INT_MIN), 0);
  EXPECT_EQ(out, -1.0);
}

TEST(RtfFirstOrderHostile, RatesAndCornersOutsideTheUsualRange) {
  CRtfSingleOrderTcPf ops;
  fstord f;
  // Zero rate: tan(inf) is NaN, and so is everything after it; nothing is refused.
  EXPECT_EQ(ops.cal_firstorder(&f, 10.0, 0.0, 1.0, -1.0), 1);
  EXPECT_TRUE(std::isnan(f.warp) && std::isnan(f.a));
  EXPECT_TRUE(std::isnan(ops.first_order(&f, 1.0)));
  // Negative rate: the bilinear formulas as they stand, warp = tan(-pi/4).
  ops.cal_firstorder(&f, 250.0, -1000.0, 1.0, -1.0);
  EXPECT_NEAR(f.warp, -1.0, 1e-15);
  // Corner at three quarters of the rate, beyond Nyquist: warp just below -1, so 1 + warp is a
  // rounding residue and the pole lies far outside the unit circle. Unstable, but computed.
  ops.cal_firstorder(&f, 750.0, 1000.0, 1.0, 1.0);
  EXPECT_GT(std::fabs(f.a), 1e15);
  for (int k = 0; k < 50; ++k) ops.first_order(&f, 1.0);
  EXPECT_FALSE(std::isfinite(f.yPrev));
  // A denormal input decays without a trap.
  ops.cal_firstorder(&f, 10.0, 1000.0, 1.0, -1.0);
  for (int k = 0; k < 100; ++k) EXPECT_TRUE(std::isfinite(ops.first_order(&f, kDenorm)));

  SINGLE_ORDER_TCPFX s;
  EXPECT_EQ(ops.setstate(&s, 10.0, 1000.0, 0.0, kNan), 1);  // Q = 0: infinite damping
  EXPECT_TRUE(std::isinf(s.damp));
  EXPECT_EQ(ops.statevar(&s, 0.0), 1);
  EXPECT_EQ(ops.statevar(&s, kInf), 1);

  // A null record is left alone.
  EXPECT_TRUE(ops.cal_firstorder(nullptr, 1.0, 2.0, 3.0, 4.0) == 0 &&
              ops.first_order(nullptr, 1.0) == 0.0 &&
              ops.setstate(nullptr, 1.0, 2.0, 3.0, 4.0) == 0 && ops.statevar(nullptr, 1.0) == 0);
}

TEST(RtfFirstOrderHostile, DesignerRejectsEveryOtherTypeCode) {
  CDigitFiltCoefMak04SingleOrder d;
  d.cal_firstorder(100.0, 1000.0, 2.0, 0);
  const double a = d.a, b = d.b, yPrev = d.yPrev;
  for (int type : {INT_MIN, -1, 2, INT_MAX}) {
    digitfilt::test::MessageCapture capture;
    d.cal_firstorder(kNan, 0.0, kInf, type);
    ASSERT_EQ(capture.messages.size(), 1u);
    EXPECT_EQ(capture.messages[0], L"Wrong filter type!");
  }
  EXPECT_TRUE(d.a == a && d.b == b && d.sign == -1.0 && d.fc == 100.0 && d.yPrev == yPrev);
  d.cal_firstorder(100.0, 0.0, 1.0, 1);  // accepted type, zero rate: NaN coefficients
  EXPECT_TRUE(std::isnan(d.first_order(1.0)));
}
