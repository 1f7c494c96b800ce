#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <vector>

#include <digitfilt/digitfilt.h>

#include "support/iir_poly_support.h"

namespace {

using P = CMeFilterButterworth03Prcs;
using digitfilt::test::CArray;

// scipy.signal.butter(n, Wn, btype) with Nyquist-normalised edges; a is the denominator.
struct Reference {
  int n;
  double f1, f2;  // f2 unused by low/high-pass
  std::vector<double> b, a;
};

// b, a = scipy.signal.butter(4, 0.3) and butter(5, 0.3)
const Reference kLow[] = {
    {4, 0.3, 0.0,
     {0.018563010626897174, 0.0742520425075887, 0.11137806376138304, 0.0742520425075887,
      0.018563010626897174},
     {1.0, -1.570398851228172, 1.27561332498328, -0.4844033683350857, 0.07619706461033242}},
    {5, 0.3, 0.0,
     {0.006933196130142604, 0.034665980650713024, 0.06933196130142605, 0.06933196130142605,
      0.034665980650713024, 0.006933196130142604},
     {1.0, -1.9759016164414662, 2.0134730260003075, -1.1026179777777698, 0.3276183340001567,
      -0.04070948961666521}}};
// butter(3, 0.45, 'high') and butter(4, 0.45, 'high')
const Reference kHigh[] = {
    {3, 0.45, 0.0,
     {0.2087647185819295, -0.6262941557457885, 0.6262941557457885, -0.2087647185819295},
     {1.0, -0.28814050660126445, 0.3553109213569621, -0.02666632069720981}},
    {4, 0.45, 0.0,
     {0.1268642016911613, -0.5074568067646452, 0.7611852101469678, -0.5074568067646452,
      0.1268642016911613},
     {1.0, -0.39064145319446186, 0.5343006371542317, -0.08423371220384311,
      0.02065142450604381}}};
// butter(2, [0.2, 0.5], 'bandpass') and butter(3, [0.1, 0.6], 'bandpass')
const Reference kBandPass[] = {
    {2, 0.2, 0.5,
     {0.13110643991662593, 0.0, -0.26221287983325187, 0.0, 0.13110643991662593},
     {1.0, -1.4000685161680908, 1.272214937925007, -0.6584184943899078, 0.27221493792500706}},
    {3, 0.1, 0.6,
     {0.1666666666666666, 0.0, -0.4999999999999998, 0.0, 0.4999999999999998, 0.0,
      -0.1666666666666666},
     {1.0, -1.9261185657606188, 1.3740491590250907, -0.7809038940089364, 0.6081431651383513,
      -0.21401317397340208, 1.1880117665919011e-17}}};
// butter(3, [0.2, 0.5], 'bandstop') and butter(2, [0.3, 0.7], 'bandstop')
const Reference kBandStop[] = {
    {3, 0.2, 0.5,
     {0.37445269259015956, -1.1447590590384014, 2.2899258260092004, -2.685782088934828,
      2.2899258260092004, -1.1447590590384016, 0.37445269259015973},
     {1.0, -2.1206028766265614, 2.72474920276848, -2.2895181180768027, 1.466246533170347,
      -0.5651792123082662, 0.1377613012598929}},
    {2, 0.3, 0.7,
     {0.3913357725017686, -1.7378799399637433e-16, 0.7826715450035372, -1.7378799399637433e-16,
      0.3913357725017686},
     {1.0, -3.3306690738754696e-16, 0.3695273773512413, 0.0, 0.19581571265583309}}};

template <class C>
void expectDesign(const Reference& r, const double* d, const C* c, double sf) {
  SCOPED_TRACE(r.n);
  ASSERT_NE(d, nullptr);
  ASSERT_NE(c, nullptr);
  for (std::size_t k = 0; k < r.a.size(); ++k) {
    EXPECT_NEAR(d[k], r.a[k], 1e-12) << "d[" << k << "]";
    EXPECT_NEAR(sf * c[k], r.b[k], 1e-12) << "b[" << k << "]";
  }
}

TEST(ButterworthPolynomial, LowPassMatchesScipy) {
  for (const Reference& r : kLow) {
    CArray<double> d(P::dcof_bwlp(r.n, r.f1));
    CArray<int> c(P::ccof_bwlp(r.n));
    expectDesign(r, d.get(), c.get(), P::sf_bwlp(r.n, r.f1));
  }
}

TEST(ButterworthPolynomial, HighPassMatchesScipy) {
  for (const Reference& r : kHigh) {
    CArray<double> d(P::dcof_bwhp(r.n, r.f1));
    CArray<int> c(P::ccof_bwhp(r.n));
    expectDesign(r, d.get(), c.get(), P::sf_bwhp(r.n, r.f1));
  }
}

TEST(ButterworthPolynomial, BandPassMatchesScipy) {
  for (const Reference& r : kBandPass) {
    CArray<double> d(P::dcof_bwbp(r.n, r.f1, r.f2));
    CArray<int> c(P::ccof_bwbp(r.n));
    expectDesign(r, d.get(), c.get(), P::sf_bwbp(r.n, r.f1, r.f2));
  }
}

TEST(ButterworthPolynomial, BandStopMatchesScipy) {
  for (const Reference& r : kBandStop) {
    CArray<double> d(P::dcof_bwbs(r.n, r.f1, r.f2));
    CArray<double> c(P::ccof_bwbs(r.n, r.f1, r.f2));
    expectDesign(r, d.get(), c.get(), P::sf_bwbs(r.n, r.f1, r.f2));
  }
}

TEST(ButterworthPolynomial, HighPassDenominatorIsLowPassBitForBit) {
  for (int n : {1, 2, 5, 8, 13}) {
    for (double fcf : {0.01, 0.3, 0.77}) {
      CArray<double> lp(P::dcof_bwlp(n, fcf)), hp(P::dcof_bwhp(n, fcf));
      ASSERT_TRUE(lp && hp);
      EXPECT_EQ(std::memcmp(lp.get(), hp.get(), sizeof(double) * (n + 1)), 0) << n << " " << fcf;
    }
  }
}

TEST(ButterworthPolynomial, FirstAndSecondOrderClosedForms) {
  const double fcf = 0.3, st = std::sin(M_PI * fcf), ct = std::cos(M_PI * fcf);
  CArray<double> d(P::dcof_bwlp(1, fcf));
  CArray<int> c1(P::ccof_bwlp(1)), c2(P::ccof_bwlp(2));
  EXPECT_DOUBLE_EQ(d[0], 1.0);
  EXPECT_NEAR(d[1], -ct / (1.0 + st), 1e-15);
  EXPECT_EQ(c1[0], 1);
  EXPECT_EQ(c1[1], 1);
  EXPECT_EQ(c2[0], 1);
  EXPECT_EQ(c2[1], 2);
  EXPECT_EQ(c2[2], 1);
  // Odd orders carry the first-order factor: sf_bwlp(1) = s / (s + c) with s, c of omega/2.
  const double s = std::sin(M_PI * fcf / 2), co = std::cos(M_PI * fcf / 2);
  EXPECT_NEAR(P::sf_bwlp(1, fcf), s / (s + co), 1e-15);
  EXPECT_NEAR(P::sf_bwhp(1, fcf), co / (s + co), 1e-15);
}

TEST(ButterworthPolynomial, BinomialCoefficientsOfOrderTen) {
  const int expected[] = {1, 10, 45, 120, 210, 252, 210, 120, 45, 10, 1};
  CArray<int> lp(P::ccof_bwlp(10)), hp(P::ccof_bwhp(10)), bp(P::ccof_bwbp(10));
  for (int k = 0; k <= 10; ++k) {
    EXPECT_EQ(lp[k], expected[k]);
    EXPECT_EQ(hp[k], k % 2 ? -expected[k] : expected[k]);
    EXPECT_EQ(bp[2 * k], hp[k]);
    if (k < 10) {
      EXPECT_EQ(bp[2 * k + 1], 0);
    }
  }
}

TEST(ButterworthPolynomial, ProductsOfFactors) {
  // numpy.poly([-p for p in (0.5+0.25j, -1+2j, 0.3-0.7j)])[1:]
  double p[] = {0.5, 0.25, -1.0, 2.0, 0.3, -0.7};
  const double bin[] = {-0.2, 1.55, 0.42500000000000004, 1.775, 0.22499999999999992,
                        0.9249999999999999};
  CArray<double> a(P::binomial_mult(3, p));
  for (int k = 0; k < 6; ++k) EXPECT_NEAR(a[k], bin[k], 1e-15) << k;
  // numpy.polymul([1, 1+0.5j, 0.2-0.1j], [1, -0.3+0.2j, 2+1j])[1:]
  double b[] = {1.0, 0.5, -0.3, 0.2}, c[] = {0.2, -0.1, 2.0, 1.0};
  const double tri[] = {0.7, 0.7, 1.8, 0.95, 1.46, 2.07, 0.5, 0.0};
  CArray<double> t(P::trinomial_mult(2, b, c));
  for (int k = 0; k < 8; ++k) EXPECT_NEAR(t[k], tri[k], 1e-15) << k;
}

TEST(ButterworthPolynomial, OrderBelowOneGivesNoArray) {
  EXPECT_EQ(P::dcof_bwlp(0, 0.3), nullptr);
  EXPECT_EQ(P::dcof_bwbs(-1, 0.2, 0.4), nullptr);
  EXPECT_EQ(P::ccof_bwlp(0), nullptr);
  EXPECT_EQ(P::ccof_bwbp(0), nullptr);
  EXPECT_EQ(P::ccof_bwbs(0, 0.2, 0.4), nullptr);
}

}  // namespace
