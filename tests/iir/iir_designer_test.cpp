#include <cmath>
#include <complex>
#include <memory>
#include <vector>

#include <gtest/gtest.h>
#include <digitfilt/digitfilt.h>

namespace {

struct Reference {
  int prototype, type, order;
  double freq1, freq2, ripple;
  std::vector<double> b, a;
};

// scipy.signal designs at fs = 625 with the call above each case.
const std::vector<Reference>& references() {
  static const std::vector<Reference> refs = {
      // signal.butter(4, 100, fs=625)
      {1, 0, 4, 0.0, 100.0, 1.0,
       {0.022870207716290954, 0.09148083086516381, 0.13722124629774574, 0.09148083086516381,
        0.022870207716290954},
       {1.0, -1.4119835011965782, 1.12276608082122, -0.4080709518802404, 0.06321169571625374}},
      // signal.butter(3, 50, 'highpass', fs=625)
      {1, 1, 3, 50.0, 0.0, 1.0,
       {0.601580928135908, -1.8047427844077242, 1.8047427844077242, -0.601580928135908},
       {1.0, -2.003797477370017, 1.4470540194893795, -0.361795928227867}},
      // signal.butter(2, [50, 100], 'bandpass', fs=625)
      {1, 2, 4, 50.0, 100.0, 1.0,
       {0.046131802093312906, 0.0, -0.09226360418662581, 0.0, 0.046131802093312906},
       {1.0, -2.4891068983301254, 2.892768931487292, -1.7241690989313603, 0.49181223722257517}},
      // signal.cheby1(5, 1.0, 100, fs=625)
      {5, 0, 5, 0.0, 100.0, 1.0,
       {0.002745527064900434, 0.01372763532450217, 0.02745527064900434, 0.02745527064900434,
        0.01372763532450217, 0.002745527064900434},
       {1.0, -2.984008499345363, 4.385952616234967, -3.70229728423862, 1.7800823642143335,
        -0.3918723307885029}},
      // signal.cheby1(4, 0.5, 60, 'highpass', fs=625)
      {5, 1, 4, 60.0, 0.0, 0.5,
       {0.3934078209551955, -1.573631283820782, 2.360446925731173, -1.573631283820782,
        0.3934078209551955},
       {1.0, -2.2478395483814326, 2.1967738969563158, -1.003546009466772, 0.21933974296621178}},
  };
  return refs;
}

CDigitFiltCoefMak08IIR designer(const Reference& r) {
  CDigitFiltCoefMak08IIR d;
  d.setRate(625.0);
  d.setPrototype(r.prototype);
  d.setFilterType(r.type);
  d.setOrder(r.order);
  d.setFreq1(r.freq1);
  d.setFreq2(r.freq2);
  d.setRipple(r.ripple);
  return d;
}

double magnitude(const CDigitFiltCoefMak08IIR& d, double theta) {
  std::complex<double> num, den;
  for (int k = 0; k <= d.order; ++k) {
    const std::complex<double> e = std::polar(1.0, -k * theta);
    num += d.aCoeff[k] * e;
    den += d.bCoeff[k] * e;
  }
  return std::abs(num / den);
}

TEST(IirDesignerDesign, DenominatorsMatchScipy) {
  for (const Reference& r : references()) {
    SCOPED_TRACE(r.prototype * 100 + r.type * 10 + r.order);
    CDigitFiltCoefMak08IIR d = designer(r);
    ASSERT_EQ(d.locatePolesAndZeros(), 1);
    ASSERT_EQ(d.design(), 1);
    for (int k = 0; k <= r.order; ++k) EXPECT_NEAR(d.bCoeff[k], r.a[k], 1e-12) << k;
    // Before the gain step the numerator is the monic zero polynomial.
    for (int k = 0; k <= r.order; ++k) EXPECT_NEAR(d.aCoeff[k], r.b[k] / r.b[0], 1e-12) << k;
  }
}

// The peak is taken from the gain grid, whose ends sit 0.0001 pi inside the band: a Butterworth
// is flat enough there to meet scipy's unit gain closely, an odd Chebyshev to about 1e-7, and an
// even Chebyshev peaks between grid points, so there the peak is met to the grid's resolution.
TEST(IirDesignerGain, NumeratorScaledToUnitPeak) {
  for (const Reference& r : references()) {
    SCOPED_TRACE(r.prototype * 100 + r.type * 10 + r.order);
    CDigitFiltCoefMak08IIR d = designer(r);
    d.setFreqPoints(1000);
    d.locatePolesAndZeros();
    d.design();
    std::unique_ptr<double[]> gain(d.filterGain());
    ASSERT_NE(gain, nullptr);
    double top = -1e9, topMag = 0.0;
    for (int i = 0; i <= 1000; ++i) top = std::max(top, gain[i]);
    EXPECT_EQ(top, 0.0);
    for (int i = 1; i < 20000; ++i) topMag = std::max(topMag, magnitude(d, i * M_PI / 20000));
    const bool chebyshev = r.prototype == 5, evenChebyshev = chebyshev && r.order % 2 == 0;
    const double tol = evenChebyshev ? 1e-4 : chebyshev ? 1e-7 : 1e-9;
    EXPECT_NEAR(topMag, 1.0, tol);
    if (!evenChebyshev) {
      for (int k = 0; k <= r.order; ++k)
        EXPECT_NEAR(d.aCoeff[k], r.b[k], tol * std::fabs(r.b[k]) + 1e-15) << k;
    }
  }
}

TEST(IirDesignerGain, CurveBelowMinus100DbIsLiftedBy100Db) {
  CDigitFiltCoefMak08IIR d = designer(references()[0]);
  delete[] d.filterGain();                            // peak now 0 dB
  for (int k = 0; k <= 4; ++k) d.aCoeff[k] *= 1e-8;  // and now -160 dB
  const double before = d.aCoeff[2];
  std::unique_ptr<double[]> gain(d.filterGain());
  EXPECT_NEAR(d.aCoeff[2], before * 1e5, 1e-12 * before * 1e5);
  EXPECT_NEAR(gain[0], -60.0, 1e-6);  // relative to the -100 dB floor
}

TEST(IirDesignerPoles, OddLowPassHasRealPoleFirstThenPairs) {
  CDigitFiltCoefMak08IIR d = designer(references()[3]);
  d.locatePolesAndZeros();
  EXPECT_EQ(d.getPImag(1), 0.0);
  for (int k = 2; k <= 5; k += 2) {
    EXPECT_GT(d.getPImag(k), 0.0);
    EXPECT_EQ(d.getPImag(k + 1), -d.getPImag(k));
    EXPECT_EQ(d.getPReal(k + 1), d.getPReal(k));
  }
  for (int k = 1; k <= 5; ++k) EXPECT_EQ(d.zeros[k], -1.0);
}

// Deliberate: with a single pole the Chebyshev factor keeps its start value 1, so a first-order
// Chebyshev is the first-order Butterworth whatever the ripple.
TEST(IirDesignerPoles, FirstOrderChebyshevIsButterworth) {
  CDigitFiltCoefMak08IIR cheb, butter;
  cheb.setPrototype(L"chebyshev");
  cheb.setRipple(3.0);
  for (CDigitFiltCoefMak08IIR* d : {&cheb, &butter}) {
    d->setOrder(1);
    d->locatePolesAndZeros();
  }
  EXPECT_DOUBLE_EQ(cheb.getPReal(1), butter.getPReal(1));
  // tan(pi 100 / 625) = w; the pole (1 - w) / (1 + w).
  const double w = std::tan(M_PI * 100.0 / 625.0);
  EXPECT_NEAR(butter.getPReal(1), (1 - w) / (1 + w), 1e-15);
}

TEST(IirDesignerSetters, NamesAndOrderRules) {
  CDigitFiltCoefMak08IIR d;
  d.setFilterType(2);
  d.setOrder(-3);
  EXPECT_EQ(d.getOrder(), 4);
  d.setFilterType(L"Hp");  // any case; unknown names leave the setting alone
  d.setFilterType(L"notch");
  EXPECT_EQ(d.getFilterType(), 1);
  d.setPrototype(L"CHEBYSHEV");
  d.setPrototype(L"elliptic");
  EXPECT_EQ(d.getPrototype(), 5);
}

TEST(IirDesignerDesign, CopiesShareArrays) {
  CDigitFiltCoefMak08IIR d = designer(references()[0]);
  d.design();
  CDigitFiltCoefMak08IIR e;
  e = d;
  e.aCoeff[0] = 42.0;
  EXPECT_EQ(d.aCoeff[0], 42.0);
}

}  // namespace
