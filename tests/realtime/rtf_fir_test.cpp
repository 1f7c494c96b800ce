#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include <digitfilt/digitfilt.h>

namespace {

// What `action` printed on standard output.
std::string printed(const std::function<void()>& action) {
  testing::internal::CaptureStdout();
  action();
  return testing::internal::GetCapturedStdout();
}

const double kPi = 3.14159265358979323846;

}  // namespace

TEST(RtfFirMessages, EveryBadArgumentPrintsItsText) {
  CRtf6Fir fir;
  const double bad[2] = {0.1, 0.7};  // getters at bad indices: the hostile suite
  const struct {
    std::function<void()> action;
    const char* text;
  } cases[] = {
      {[] { CRtf6Fir negative(-3); }, "\nThe number of taps can not be less than 0\n"},
      {[&] { fir.setTaps(0); }, "\nThat value is not possible\n"},
      {[&] { fir.setCoeff(1.0, -1); }, "\nThat coefficient does not exist\n"},
      {[&] { EXPECT_EQ(fir.getFreq(2), 0.0); }, "\nThat frequency does not exist\n"},
      {[&] { fir.setFreq(0.6, 0); },
       "\nThat frequency is not normalized || the index does not exist\n"},
      {[&] { fir.setFreq(0.1, 1); },  // nothing stored yet: only index 0 is admitted
       "\nThat frequency is not normalized || the index does not exist\n"},
      {[&] { fir.setBuffer(1.0, 4); }, "\nThat index for the buffer does not exist\n"},
      {[&] { fir.lowpass(0.6); }, "\nThe frequency is not normalized\n"},
      {[&] { fir.highpass(-0.1); }, "\nThe frequency is not normalized\n"},
      {[&] { fir.passband(bad); }, "\nThe frequencies are not normalized\n"},
      {[&] { fir.stopband(bad); }, "\nThe frequencies are not normalized\n"},
  };
  for (const auto& c : cases) EXPECT_EQ(printed(c.action), c.text);
  EXPECT_EQ(fir.getTaps(), 4);
  EXPECT_EQ(fir.coeffs, std::vector<double>(4, 0.0));
  EXPECT_EQ(fir.buffer, std::vector<double>(4, 0.0));
  testing::internal::CaptureStdout();
  CRtf6Fir empty(-3);
  testing::internal::GetCapturedStdout();
  EXPECT_EQ(empty.getTaps(), 0);
  EXPECT_TRUE(empty.coeffs.empty() && empty.buffer.empty());
}

TEST(RtfFirMessages, ValidCallsPrintNothing) {
  const std::string out = printed([] {
    CRtf6Fir fir(5);
    fir.setTaps(6);
    fir.setCoeff(1.0, 5);
    fir.setBuffer(2.0, 0);
    fir.lowpass(0.5);
    fir.setFreq(0.2, 1);
    const double f[2] = {0.0, 0.5};
    fir.passband(f);
    fir.filter(1.0);
  });
  EXPECT_EQ(out, "");
}

TEST(RtfFirType, TypeIsOnlyEverSetByTheHost) {
  CRtf6Fir fir;
  EXPECT_EQ(fir.getType(), "\n Unknown filter \n");
  EXPECT_EQ(fir.setType(2), 1);
  EXPECT_EQ(fir.setType(-1), 0);
  EXPECT_EQ(fir.type, -1);
  EXPECT_EQ(fir.getType(), "\n Unknown filter \n");
  fir.lowpass(0.1);
  EXPECT_EQ(fir.type, -1);
  const char* names[] = {"\nLow-pass filter\n", "\nHigh-pass filter\n", "\n Unknown filter \n",
                         "\nPass-band filter\n", "\nStop-band filter\n"};
  for (int t = 0; t < 5; ++t) {
    fir.type = t;
    EXPECT_EQ(fir.getType(), names[t]);
  }
}

TEST(RtfFirDesign, LowpassQuarterWithFiveTaps) {
  CRtf6Fir fir(5);
  fir.setCoeff(7.0, 4);
  fir.lowpass(0.25);
  // sin(n pi / 2) / (pi n) for n = -2..1; an odd count leaves the last tap alone.
  const double want[5] = {0.0, 1.0 / kPi, 0.5, 1.0 / kPi, 7.0};
  for (int i = 0; i < 5; ++i) EXPECT_NEAR(fir.getCoeff(i), want[i], 1e-16) << i;
  EXPECT_EQ(fir.freqs, std::vector<double>{0.25});
}

TEST(RtfFirDesign, RejectedFrequencyStillResizesFreqs) {
  CRtf6Fir fir;
  const double f[2] = {0.1, 0.2};
  fir.passband(f);
  const std::vector<double> taps = fir.coeffs;
  testing::internal::CaptureStdout();
  fir.lowpass(0.6);
  testing::internal::GetCapturedStdout();
  EXPECT_EQ(fir.freqs, std::vector<double>{0.1});
  EXPECT_EQ(fir.coeffs, taps);
}

// scipy.signal.firwin(7, 0.2, window='boxcar', scale=False) and
// firwin(7, [0.2, 0.5], pass_zero=False, window='boxcar', scale=False): the first six of seven
// taps are the ideal responses at n = -3..2 for fc = 0.1 and the band 0.1..0.25.
TEST(RtfFirDesign, OddCountMatchesTruncatedIdealResponse) {
  const double low[6] = {0.10091023048542094, 0.15136534572813143, 0.1870978567577278,
                         0.2, 0.1870978567577278, 0.15136534572813143};
  const double band[6] = {-0.20701352588001784, -0.1513653457281314, 0.1312120294260629,
                          0.3, 0.1312120294260629, -0.1513653457281314};
  CRtf6Fir lp(7), bp(7);
  lp.lowpass(0.1);
  const double edges[2] = {0.1, 0.25};
  bp.passband(edges);
  for (int i = 0; i < 6; ++i) {
    EXPECT_NEAR(lp.coeffs[i], low[i], 1e-15) << i;
    EXPECT_NEAR(bp.coeffs[i], band[i], 1e-15) << i;
  }
}

// High-pass and stop-band are a unit impulse at n = 0 minus their complements, and a pass-band
// starting at 0 is a low-pass.
TEST(RtfFirDesign, ComplementaryDesignsAgree) {
  for (int taps : {6, 9}) {
    SCOPED_TRACE(taps);
    CRtf6Fir lp(taps), hp(taps), bp(taps), bs(taps), lp2(taps);
    lp.lowpass(0.15);
    hp.highpass(0.15);
    const double band[2] = {0.15, 0.35}, fromZero[2] = {0.0, 0.15};
    bp.passband(band);
    bs.stopband(band);
    lp2.passband(fromZero);
    const int centre = taps / 2;
    for (int i = 0; i < 2 * (taps / 2); ++i) {
      const double delta = i == centre ? 1.0 : 0.0;
      EXPECT_NEAR(hp.coeffs[i], delta - lp.coeffs[i], 1e-15);
      EXPECT_NEAR(bs.coeffs[i], delta - bp.coeffs[i], 1e-15);
      EXPECT_NEAR(lp2.coeffs[i], lp.coeffs[i], 1e-15);
    }
  }
}

TEST(RtfFirState, SetTapsKeepsValuesAndSetFreqAppends) {
  CRtf6Fir fir;
  fir.setCoeff(3.0, 3);
  fir.setTaps(6);
  EXPECT_EQ(fir.coeffs, (std::vector<double>{0, 0, 0, 3, 0, 0}));
  EXPECT_EQ(fir.buffer.size(), 6u);
  fir.setFreq(0.1, 0);  // index equal to the count appends
  fir.setFreq(0.2, 1);
  EXPECT_EQ(fir.freqs, (std::vector<double>{0.1, 0.2}));
  CRtf6Fir copy = fir;
  copy.setCoeff(9.0, 0);
  EXPECT_EQ(fir.getCoeff(0), 0.0);  // copies own their arrays
  EXPECT_EQ(copy.freqs, fir.freqs);
}

TEST(RtfFirFilter, DelayLineShiftsOnePlacePerSample) {
  CRtf6Fir identity, delay3;
  identity.setCoeff(1.0, 0);
  delay3.setCoeff(1.0, 3);
  const double in[] = {1.5, -2.0, 4.0, 8.0, 0.25, 7.0};
  for (int n = 0; n < 6; ++n) {
    EXPECT_EQ(identity.filter(in[n]), in[n]);
    EXPECT_EQ(delay3.filter(in[n]), n >= 3 ? in[n - 3] : 0.0);
  }
  EXPECT_EQ(delay3.buffer, (std::vector<double>{7.0, 0.25, 8.0, 4.0}));
}

TEST(RtfFirFilter, MatchesDirectConvolution) {
  std::mt19937 gen(7);
  std::uniform_real_distribution<double> u(-1.0, 1.0);
  for (int taps : {1, 4, 7, 13}) {
    SCOPED_TRACE(taps);
    CRtf6Fir fir(taps);
    std::vector<double> h(taps), x(50);
    for (int i = 0; i < taps; ++i) fir.setCoeff(h[i] = u(gen), i);
    for (double& v : x) v = u(gen);
    for (int n = 0; n < 50; ++n) {
      double want = 0.0;
      for (int k = 0; k < taps && k <= n; ++k) want += h[k] * x[n - k];
      EXPECT_NEAR(fir.filter(x[n]), want, 1e-13);
    }
  }
}
