#include <cmath>
#include <complex>

#include <gtest/gtest.h>
#include <digitfilt/digitfilt.h>

namespace {

constexpr double kRate = 1000.0;

// |H| of the cookbook section at f Hz.
double response(const CDigitFiltCoefMak07BiQuad& s, double f) {
  const std::complex<double> z1 = std::polar(1.0, -2.0 * M_PI * f / kRate), z2 = z1 * z1;
  return std::abs((s.cb0 + s.cb1 * z1 + s.cb2 * z2) / (1.0 + s.ca1 * z1 + s.ca2 * z2));
}

CDigitFiltCoefMak07BiQuad cookbook(int type, double db, double freq, double q, double slope = 1) {
  CDigitFiltCoefMak07BiQuad s;
  EXPECT_EQ(s.BiQuad_new(type, db, freq, kRate, q, slope), 1);
  return s;
}

TEST(BiquadCookbook, ResponseAtTheDefiningFrequencies) {
  EXPECT_NEAR(response(cookbook(0, 0, 100, 0.707), 0), 1.0, 1e-12);       // low-pass at DC
  EXPECT_NEAR(response(cookbook(0, 0, 100, 0.707), 500), 0.0, 1e-12);     // and at Nyquist
  EXPECT_NEAR(response(cookbook(0, 0, 100, 2.0), 100), 2.0, 1e-12);       // gain Q at f0
  EXPECT_NEAR(response(cookbook(1, 0, 100, 0.707), 500), 1.0, 1e-12);     // high-pass
  EXPECT_NEAR(response(cookbook(1, 0, 100, 0.707), 0), 0.0, 1e-12);
  EXPECT_NEAR(response(cookbook(3, 0, 50, 5), 50), 0.0, 1e-12);           // the notch's zero
  EXPECT_NEAR(response(cookbook(3, 0, 50, 5), 0), 1.0, 1e-12);
  EXPECT_NEAR(response(cookbook(4, 0, 120, 3.0), 120), 3.0, 1e-12);       // peak gain q
  EXPECT_NEAR(response(cookbook(5, 0, 120, 3.0), 120), 1.0, 1e-12);       // 0 dB peak
  for (double f : {0.0, 37.0, 120.0, 480.0})
    EXPECT_NEAR(response(cookbook(6, 0, 120, 3.0), f), 1.0, 1e-12);       // all-pass
  EXPECT_NEAR(response(cookbook(7, 12, 200, 1.0), 200), std::pow(10, 0.6), 1e-12);  // peak +12 dB
  EXPECT_NEAR(response(cookbook(7, 12, 200, 1.0), 0), 1.0, 1e-12);
  EXPECT_NEAR(response(cookbook(8, -6, 80, 0, 1), 0), std::pow(10, -0.3), 1e-12);   // low shelf
  EXPECT_NEAR(response(cookbook(8, -6, 80, 0, 1), 500), 1.0, 1e-12);
  EXPECT_NEAR(response(cookbook(9, 6, 80, 0, 1), 500), std::pow(10, 0.3), 1e-12);   // high shelf
  EXPECT_NEAR(response(cookbook(9, 6, 80, 0, 1), 0), 1.0, 1e-12);
}

TEST(BiquadCookbook, LowPassStepSettlesAtOne) {
  CDigitFiltCoefMak07BiQuad s = cookbook(0, 0, 100, 0.707);
  double y = 0;
  for (int i = 0; i < 400; ++i) y = s.BiQuad(1.0);
  EXPECT_NEAR(y, 1.0, 1e-12);
  // A new design starts from a clean history: the first output is b0 x.
  s.BiQuad_new(0, 0, 100, kRate, 0.707, 1);
  EXPECT_DOUBLE_EQ(s.BiQuad(1.0), s.cb0);
}

TEST(BiquadCookbook, UnsupportedTypesChangeNothing) {
  EXPECT_EQ(CDigitFiltCoefMak07BiQuad().BiQuad(1.0), 0.0);  // never designed: all zero
  CDigitFiltCoefMak07BiQuad s = cookbook(0, 0, 100, 0.707);
  s.BiQuad(1.0);
  const double cb0 = s.cb0, ca2 = s.ca2, cx1 = s.cx1, cy1 = s.cy1;
  for (int type : {2, 10, -1}) {  // wilder codes and values: the hostile suite
    EXPECT_EQ(s.BiQuad_new(type, 3, 200, kRate, 2, 1), 0) << type;
    EXPECT_TRUE(s.cb0 == cb0 && s.ca2 == ca2 && s.cx1 == cx1 && s.cy1 == cy1);
  }
}

TEST(BiquadResonator, PoleSettersDifferInSign) {
  CDigitFiltCoefMak07BiQuad s;
  s.setA1(0.5);
  EXPECT_EQ(s.poleCoef1, -0.5);
  double c[2] = {0.5, 0.0};
  s.setPoleCoeffs(c);
  EXPECT_EQ(s.poleCoef1, 0.5);
}

// Poles at 0.9 e^(+-i pi/2): the impulse response of the feedback part is 1, 0, -0.81, 0, 0.6561;
// equal-gain zeros (1 - z^-2) then give 1, 0, -1.81, 0, 1.4661.
TEST(BiquadResonator, ResonanceAndEqualGainZeroes) {
  CDigitFiltCoefMak07BiQuad s;
  s.setFreqAndReson(25.0, 0.9);  // a quarter of tickRate
  s.setEqualGainZeroes();
  const double want[] = {1.0, 0.0, -1.81, 0.0, 1.4661};
  for (int n = 0; n < 5; ++n) EXPECT_NEAR(s.tick(n == 0 ? 1.0 : 0.0), want[n], 1e-12) << n;
}

TEST(BiquadResonator, CopiesShareTheState) {
  CDigitFiltCoefMak07BiQuad a;
  CDigitFiltCoefMak07BiQuad b(a);
  b.tick(4.0);
  EXPECT_EQ(a.tickState[0], 4.0);
}

// ratio = (10^2 - 1) / (10^0.05 - 1) = 811.4, ln sqrt = 3.349; ln(tan(0.2 pi) / tan(0.1 pi)) =
// 0.8047; 4.16 rounds up to 5. Dividing the decibels by 10 would give 7.
TEST(BiquadOrder, EstimateUsesTwentiethsOfDecibels) {
  CDigitFiltCoefMak07BiQuad s;
  EXPECT_EQ(s.estimateFilterOrder(1.0, 40.0, 100.0, 200.0, 1000.0), 5.0);
}

}  // namespace
