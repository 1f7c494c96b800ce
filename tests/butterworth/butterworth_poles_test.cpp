#include <cmath>
#include <complex>
#include <cstdint>

#include <gtest/gtest.h>
#include <digitfilt/digitfilt.h>

namespace {

using Complex = std::complex<double>;

Complex pole(const CDigitFiltCoefMak01Butterworth03qv& d, int i) {
  return {d.poleRe[i], d.poleIm[i]};
}

// The poles are bilinear images z = (1 + s) / (1 - s) of analogue Butterworth poles of order 2n
// on the circle |s| = tan(pi f): so (z - 1) / (z + 1) has that modulus and Re s < 0 (stable)
// for the n upper ones.
TEST(PrototypePoles, LieOnThePrewarpedCircle) {
  CDigitFiltCoefMak01Butterworth03qv d;
  EXPECT_EQ(d.ukButterworthPoles(0.1, 4), 1);
  EXPECT_EQ(d.poleCount, 4);
  const double t = std::tan(M_PI * 0.1);
  for (int i = 1; i <= 5; ++i) {
    SCOPED_TRACE(i);
    const Complex s = (pole(d, i) - 1.0) / (pole(d, i) + 1.0);
    EXPECT_NEAR(std::abs(s), t, 1e-12);
    // Angle (2n + 1 + 2(i-1)) pi / 4n of the order-8 prototype.
    EXPECT_NEAR(std::arg(s), std::remainder((9.0 + 2.0 * (i - 1)) * M_PI / 16.0, 2.0 * M_PI),
                1e-12);
    if (i <= 4) {
      EXPECT_LT(s.real(), 0.0);
      EXPECT_LT(std::abs(pole(d, i)), 1.0);
    }
  }
  // A negative order places nothing.
  EXPECT_EQ(d.ukButterworthPoles(0.1, -3), 1);
  EXPECT_EQ(d.poleCount, -3);
}

TEST(PrototypeSections, LowPassHasUnitGainAtDcPerSection) {
  CDigitFiltCoefMak01Butterworth03qv d;
  EXPECT_EQ(d.ukButterworthLowPass(0.1, 4), 1);
  for (int i = 0; i < 4; ++i) {
    SCOPED_TRACE(i);
    const double a1 = d.denTables[1][i], a2 = d.denTables[2][i];
    const double sumB = d.numTables[0][i] + d.numTables[1][i] + d.numTables[2][i];
    EXPECT_NEAR(sumB, 1.0 + a1 + a2, 1e-15);
    EXPECT_EQ(d.numTables[1][i], 2.0 * d.numTables[0][i]);
    EXPECT_DOUBLE_EQ(a2, std::norm(pole(d, i + 1)));
    EXPECT_EQ(d.denTables[0][i], 0.0);  // a0 is not written
  }
}

TEST(PrototypeSections, HighPassMirrorsTheLowPassPolesAtHalfRateMinusF) {
  CDigitFiltCoefMak01Butterworth03qv mirror, hp;
  mirror.ukButterworthPoles(0.4, 3);
  EXPECT_EQ(hp.ukButterworthHighPass(0.1, 3), 1);
  for (int i = 0; i < 3; ++i) {
    SCOPED_TRACE(i);
    EXPECT_EQ(hp.poleRe[i + 1], -mirror.poleRe[i + 1]);
    EXPECT_EQ(hp.denTables[1][i], 2.0 * mirror.poleRe[i + 1]);
    EXPECT_EQ(hp.numTables[0][i], 1.0);
    EXPECT_EQ(hp.numTables[1][i], -2.0);
    EXPECT_EQ(hp.numTables[2][i], 1.0);
  }
}

TEST(PrototypeSections, BandPassUsesTheUntransformedPrototype) {
  CDigitFiltCoefMak01Butterworth03qv proto, bp;
  proto.ukButterworthPoles(0.1, 2);
  // Order 3 is designed as 4: four sections from the prototype for f2 - f1 and order 2.
  EXPECT_EQ(bp.ukButterworthBandPass(0.1, 0.2, 3), 1);
  EXPECT_EQ(bp.poleCount, 2);
  for (int i = 0; i < 3; ++i) {
    SCOPED_TRACE(i);
    EXPECT_EQ(bp.denTables[1][i], -2.0 * proto.poleRe[i + 1]);
    EXPECT_EQ(bp.numTables[0][i], 1.0);
    EXPECT_EQ(bp.numTables[1][i], 0.0);
    EXPECT_EQ(bp.numTables[2][i], -1.0);
  }
  // The fourth section reads past the three poles placed: a zero-filled spare slot.
  EXPECT_EQ(bp.denTables[1][3], 0.0);
  EXPECT_EQ(bp.denTables[2][3], 0.0);
}

TEST(PrototypeSections, RedesignKeepsACopysArraysAlive) {
  CDigitFiltCoefMak01Butterworth03qv a;
  a.ukButterworthLowPass(0.1, 4);
  const CDigitFiltCoefMak01Butterworth03qv copy = a;  // shares the arrays
  EXPECT_EQ(copy.poleRe, a.poleRe);
  EXPECT_EQ(copy.numTables, a.numTables);
  const double kept = copy.denTables[1][2];
  for (int round = 0; round < 3; ++round) a.ukButterworthLowPass(0.2, 6);
  EXPECT_EQ(copy.denTables[1][2], kept);
  EXPECT_NE(a.denTables[1][2], kept);
}

// Sections H = g (1 + b1 z^-1 + b2 z^-2) / (1 - a1 z^-1 - a2 z^-2): unit gain at 0 Hz each.
TEST(SectionArrays, UnitGainAtDcAndAFirstOrderSectionForOddOrders) {
  for (int n : {4, 5}) {
    SCOPED_TRACE(n);
    double a1[4] = {}, a2[4] = {}, b1[4] = {}, b2[4] = {}, g[4] = {};
    std::int64_t sections = 0;
    double sum = -1.0;
    CDigitFiltCoefMak01Butterworth03qv d;
    EXPECT_EQ(d.paButterworthCoef02(30.0, 0.001, n, a1, a2, b1, b2, g, &sections, &sum), 1);
    EXPECT_EQ(sections, n == 4 ? 2 : 3);
    for (int k = 1; k <= n / 2; ++k)
      EXPECT_NEAR(g[k] * (1.0 + b1[k] + b2[k]) / (1.0 - a1[k] - a2[k]), 1.0, 1e-12) << k;
    if (n == 5) {
      EXPECT_EQ(a2[3], 0.0);
      EXPECT_EQ(b2[3], 0.0);
      EXPECT_NEAR(g[3] * (1.0 + b1[3]) / (1.0 - a1[3]), 1.0, 1e-12);
    }
    EXPECT_GT(sum, 0.0);
    EXPECT_EQ(a1[0], 0.0);  // indexed from 1
  }
  CDigitFiltCoefMak01Butterworth03qv d;
  EXPECT_EQ(d.paButterworthCoef02(30.0, 0.001, 4, nullptr, nullptr, nullptr, nullptr, nullptr,
                                  nullptr, nullptr),
            0);
}

}  // namespace
