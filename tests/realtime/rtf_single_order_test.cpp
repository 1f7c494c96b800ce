#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <vector>

#include <digitfilt/digitfilt.h>

namespace {

const double kPi = 3.14159265358979323846;

// |H| at `hz` of a freshly designed section, from its impulse response (fast decay here).
double gainAt(double fc, double sign, double hz) {
  CRtfSingleOrderTcPf ops;
  fstord f;
  ops.cal_firstorder(&f, fc, 1000.0, 1.0, sign);
  std::complex<double> h = 0.0;
  for (int n = 0; n < 4000; ++n)
    h += ops.first_order(&f, n == 0 ? 1.0 : 0.0) * std::polar(1.0, -2.0 * kPi * hz / 1000.0 * n);
  return std::abs(h);
}

}  // namespace

TEST(RtfFirstOrder, DcCornerAndNyquistGains) {
  const struct { double fc, sign; double dc, corner, nyquist; } cases[] = {
      {10.0, -1.0, 1.0, std::sqrt(0.5), 0.0}, {100.0, -1.0, 1.0, std::sqrt(0.5), 0.0},
      {300.0, -1.0, 1.0, std::sqrt(0.5), 0.0}, {50.0, 1.0, 0.0, std::sqrt(0.5), 1.0}};
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << c.fc << " " << c.sign);
    EXPECT_NEAR(gainAt(c.fc, c.sign, 0.0), c.dc, 1e-9);
    EXPECT_NEAR(gainAt(c.fc, c.sign, c.fc), c.corner, 1e-9);
    EXPECT_NEAR(gainAt(c.fc, c.sign, 500.0), c.nyquist, 1e-9);
  }
}

TEST(RtfFirstOrder, ConstantInputSettlesAtGainOrZero) {
  CRtfSingleOrderTcPf ops;
  fstord lp, hp;
  ops.cal_firstorder(&lp, 20.0, 1000.0, 2.5, -1.0);
  ops.cal_firstorder(&hp, 20.0, 1000.0, 2.5, 1.0);
  double ylp = 0.0, yhp = 1.0;
  for (int n = 0; n < 2000; ++n) ylp = ops.first_order(&lp, 1.0), yhp = ops.first_order(&hp, 1.0);
  EXPECT_NEAR(ylp, 2.5, 1e-9);
  EXPECT_NEAR(yhp, 0.0, 1e-9);
  EXPECT_NEAR(lp.yPrev, 1.0, 1e-9);  // the state is kept before the gain
}

TEST(RtfFirstOrder, QuarterRateCornerIsTwoPointAverage) {
  CRtfSingleOrderTcPf ops;
  fstord f;
  ops.cal_firstorder(&f, 250.0, 1000.0, 1.0, -1.0);
  EXPECT_NEAR(f.warp, 1.0, 1e-15);
  EXPECT_NEAR(f.a, 0.0, 1e-15);
  double prev = 0.0;
  for (double v : {2.0, 4.0, -6.0, 1.0}) {
    EXPECT_NEAR(ops.first_order(&f, v), (v + prev) / 2.0, 1e-15);
    prev = v;
  }
}

TEST(RtfFirstOrder, DesignerObjectMatchesRecord) {
  CRtfSingleOrderTcPf ops;
  fstord rec;
  CDigitFiltCoefMak04SingleOrder obj;
  for (int type : {0, 1}) {
    ops.cal_firstorder(&rec, 70.0, 1000.0, 1.5, type == 0 ? -1.0 : 1.0);
    obj.cal_firstorder(70.0, 1000.0, 1.5, type);
    EXPECT_EQ(obj.sign, type == 0 ? -1.0 : 1.0);
    for (double x : {1.0, -2.0, 0.5, 3.0}) EXPECT_EQ(obj.first_order(x), ops.first_order(&rec, x));
  }
}

// Worked by hand with f = sin(pi/6) = 0.5 and damp = 1: low first from the old band, then high,
// then band from the new high, then notch.
TEST(RtfStateVariable, UpdateOrderOverThreeSteps) {
  CRtfSingleOrderTcPf ops;
  SINGLE_ORDER_TCPFX s;
  s.spare0 = s.spare1 = 9.0;
  ops.setstate(&s, 1.0, 6.0, 1.0, 42.0);
  EXPECT_EQ(s.spare0, 0.0);
  EXPECT_EQ(s.extra, 42.0);
  const double want[3][4] = {{0.0, 0.5, 1.0, 1.0},  // low, band, high, notch
                             {0.25, 0.625, 0.25, 0.5},
                             {0.5625, 0.03125, -1.1875, -0.625}};
  const double x[3] = {1.0, 1.0, 0.0};
  for (int n = 0; n < 3; ++n) {
    EXPECT_EQ(ops.statevar(&s, x[n]), 1);
    const double got[4] = {s.low, s.band, s.high, s.notch};
    for (int k = 0; k < 4; ++k) EXPECT_NEAR(got[k], want[n][k], 1e-12) << n << " " << k;
  }
}

TEST(RtfStateVariable, ConstantSettlesInLowPassAndNotch) {
  CRtfSingleOrderTcPf ops;
  SINGLE_ORDER_TCPFX s;
  ops.setstate(&s, 50.0, 1000.0, 0.707, 0.0);
  for (int n = 0; n < 5000; ++n) ops.statevar(&s, 1.0);
  EXPECT_NEAR(s.low, 1.0, 1e-9);
  EXPECT_NEAR(s.band, 0.0, 1e-9);
  EXPECT_NEAR(s.high, 0.0, 1e-9);
  EXPECT_NEAR(s.notch, 1.0, 1e-9);
}
