#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <string>
#include <vector>

#include <digitfilt/digitfilt.h>

namespace {

const double kPi = 3.14159265358979323846;

// Installs a capturing message handler for the scope and restores the previous one.
class MessageCapture {
 public:
  MessageCapture()
      : old_(digitfilt::setMessageHandler([this](const std::wstring& t) {
          texts.push_back(t);
          return 1;
        })) {}
  ~MessageCapture() { digitfilt::setMessageHandler(old_); }
  std::vector<std::wstring> texts;

 private:
  digitfilt::MessageHandler old_;
};

// |H| at `hz` from the section's impulse response (it decays fast for these corners).
template <class Step>
double gainAt(Step step, double hz, double fs) {
  std::complex<double> h = 0.0;
  for (int n = 0; n < 4000; ++n) {
    const double y = step(n == 0 ? 1.0 : 0.0);
    h += y * std::polar(1.0, -2.0 * kPi * hz / fs * n);
  }
  return std::abs(h);
}

}  // namespace

TEST(RtfFirstOrder, LowPassUnityAtDcHalfPowerAtCornerZeroAtNyquist) {
  CRtfSingleOrderTcPf ops;
  fstord f;
  for (double fc : {10.0, 100.0, 300.0}) {
    SCOPED_TRACE(fc);
    ops.cal_firstorder(&f, fc, 1000.0, 1.0, -1.0);
    auto step = [&](double x) { return ops.first_order(&f, x); };
    EXPECT_NEAR(gainAt(step, 0.0, 1000.0), 1.0, 1e-9);
    ops.cal_firstorder(&f, fc, 1000.0, 1.0, -1.0);
    EXPECT_NEAR(gainAt(step, fc, 1000.0), std::sqrt(0.5), 1e-9);
    ops.cal_firstorder(&f, fc, 1000.0, 1.0, -1.0);
    EXPECT_NEAR(gainAt(step, 500.0, 1000.0), 0.0, 1e-9);
  }
}

TEST(RtfFirstOrder, HighPassZeroAtDcUnityAtNyquist) {
  CRtfSingleOrderTcPf ops;
  fstord f;
  ops.cal_firstorder(&f, 50.0, 1000.0, 1.0, 1.0);
  auto step = [&](double x) { return ops.first_order(&f, x); };
  EXPECT_NEAR(gainAt(step, 0.0, 1000.0), 0.0, 1e-9);
  ops.cal_firstorder(&f, 50.0, 1000.0, 1.0, 1.0);
  EXPECT_NEAR(gainAt(step, 500.0, 1000.0), 1.0, 1e-9);
  ops.cal_firstorder(&f, 50.0, 1000.0, 1.0, 1.0);
  EXPECT_NEAR(gainAt(step, 50.0, 1000.0), std::sqrt(0.5), 1e-9);
}

TEST(RtfFirstOrder, ConstantInputSettlesAtGainOrZero) {
  CRtfSingleOrderTcPf ops;
  fstord lp, hp;
  ops.cal_firstorder(&lp, 20.0, 1000.0, 2.5, -1.0);
  ops.cal_firstorder(&hp, 20.0, 1000.0, 2.5, 1.0);
  double ylp = 0.0, yhp = 1.0;
  for (int n = 0; n < 2000; ++n) {
    ylp = ops.first_order(&lp, 1.0);
    yhp = ops.first_order(&hp, 1.0);
  }
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
  const double x[] = {2.0, 4.0, -6.0, 1.0};
  double prev = 0.0;
  for (double v : x) {
    EXPECT_NEAR(ops.first_order(&f, v), (v + prev) / 2.0, 1e-15);
    prev = v;
  }
}

TEST(RtfFirstOrder, DesignerObjectMatchesRecordAndRejectsUnknownType) {
  CRtfSingleOrderTcPf ops;
  fstord rec;
  CDigitFiltCoefMak04SingleOrder obj;
  for (int type : {0, 1}) {
    ops.cal_firstorder(&rec, 70.0, 1000.0, 1.5, type == 0 ? -1.0 : 1.0);
    obj.cal_firstorder(70.0, 1000.0, 1.5, type);
    EXPECT_EQ(obj.sign, type == 0 ? -1.0 : 1.0);
    for (double x : {1.0, -2.0, 0.5, 3.0}) EXPECT_EQ(obj.first_order(x), ops.first_order(&rec, x));
  }
  MessageCapture capture;
  const double a = obj.a, b = obj.b, yPrev = obj.yPrev;
  obj.cal_firstorder(10.0, 1000.0, 1.0, 2);
  ASSERT_EQ(capture.texts.size(), 1u);
  EXPECT_EQ(capture.texts[0], L"Wrong filter type!");
  EXPECT_EQ(obj.fc, 70.0);
  EXPECT_EQ(obj.a, a);
  EXPECT_EQ(obj.b, b);
  EXPECT_EQ(obj.yPrev, yPrev);
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
  const double want[3][4] = {{0.0, 0.5, 1.0, 1.0},          // low, band, high, notch
                             {0.25, 0.625, 0.25, 0.5},
                             {0.5625, 0.03125, -1.1875, -0.625}};
  const double x[3] = {1.0, 1.0, 0.0};
  for (int n = 0; n < 3; ++n) {
    SCOPED_TRACE(n);
    EXPECT_EQ(ops.statevar(&s, x[n]), 1);
    EXPECT_NEAR(s.low, want[n][0], 1e-12);
    EXPECT_NEAR(s.band, want[n][1], 1e-12);
    EXPECT_NEAR(s.high, want[n][2], 1e-12);
    EXPECT_NEAR(s.notch, want[n][3], 1e-12);
  }
}

TEST(RtfStateVariable, ZeroStaysZeroAndConstantSettlesInLowPass) {
  CRtfSingleOrderTcPf ops;
  SINGLE_ORDER_TCPFX s;
  ops.setstate(&s, 50.0, 1000.0, 0.707, 0.0);
  ops.statevar(&s, 0.0);
  EXPECT_EQ(s.low, 0.0);
  EXPECT_EQ(s.band, 0.0);
  EXPECT_EQ(s.high, 0.0);
  EXPECT_EQ(s.notch, 0.0);
  for (int n = 0; n < 5000; ++n) ops.statevar(&s, 1.0);
  EXPECT_NEAR(s.low, 1.0, 1e-9);
  EXPECT_NEAR(s.band, 0.0, 1e-9);
  EXPECT_NEAR(s.high, 0.0, 1e-9);
  EXPECT_NEAR(s.notch, 1.0, 1e-9);
}
