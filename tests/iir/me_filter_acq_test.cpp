#include <cmath>
#include <complex>
#include <cstdint>
#include <vector>

#include <gtest/gtest.h>
#include <digitfilt/digitfilt.h>

#include "support/message_capture.h"

namespace {

using digitfilt::test::MessageCapture;

filter_iirspec record(int type, double low, double high, double rate, int order = 2) {
  filter_iirspec s;
  s.enabled = 1;
  s.filterType = type;
  s.freqLow = low;
  s.freqHigh = high;
  s.sampleRate = rate;
  s.order = order;
  return s;
}

std::vector<double> sine(double f, double rate, int n, double amp = 1.0) {
  std::vector<double> x(static_cast<std::size_t>(n));
  for (int k = 0; k < n; ++k) x[k] = amp * std::sin(2 * M_PI * f * k / rate);
  return x;
}

std::vector<double> add(std::vector<double> a, const std::vector<double>& b) {
  for (std::size_t k = 0; k < a.size(); ++k) a[k] += b[k];
  return a;
}

double maxAbsFrom(const std::vector<double>& x, std::size_t from) {
  double m = 0;
  for (std::size_t k = from; k < x.size(); ++k) m = std::max(m, std::fabs(x[k]));
  return m;
}

// Amplitude of a sampled sinusoid from its mean square over the whole periods after `from`.
double amplitude(const std::vector<double>& x, std::size_t from, std::size_t period) {
  const std::size_t n = (x.size() - from) / period * period;
  double sq = 0;
  for (std::size_t k = x.size() - n; k < x.size(); ++k) sq += x[k] * x[k];
  return std::sqrt(2 * sq / static_cast<double>(n));
}

// Gain at one mains period of the running mean m += x / P - m / P.
double meanGain(double p) {
  return (1 / p) / std::abs(1.0 - (1 - 1 / p) * std::polar(1.0, -2 * M_PI / p));
}

TEST(MeFilterAcqStage, RunsTheDifferenceEquationAcrossBlocks) {
  filter_iirspec s = record(0, 0, 100, 1000);
  s.numCoefs = 3;
  const double b[] = {0.2, 0.3, 0.1}, a[] = {1.0, -0.5, 0.2};
  for (int k = 0; k < 3; ++k) s.coefs[k] = b[k], s.coefs[20 + k] = a[k];
  CMeFilterAcq f(s);
  std::vector<double> x = sine(37, 1000, 60), want(60);
  for (int n = 0; n < 60; ++n) {  // direct form, a[0] not applied
    want[n] = 0;
    for (int k = 0; k < 3; ++k)
      if (n - k >= 0) want[n] += b[k] * x[n - k] - (k > 0 ? a[k] * want[n - k] : 0.0);
  }
  f.filter(x.data(), 25);
  f.filter(x.data() + 25, 35);
  for (int n = 0; n < 60; ++n) EXPECT_NEAR(x[n], want[n], 1e-14) << n;
}

TEST(MeFilterAcqStage, DisabledRecordLeavesDataAlone) {
  filter_iirspec s = record(0, 0, 100, 1000);
  s.enabled = 0;
  s.numCoefs = 1;
  s.coefs[0] = 3.0;
  CMeFilterAcq f(s);
  std::vector<double> x = {1.0, 2.0};
  f.filter(x.data(), 2);
  EXPECT_EQ(x[1], 2.0);
}

// Deliberate: k = 20 wraps onto the current ring entry, so b[20] (stored where a[0] is) acts on
// the current sample instead of the one 20 samples back.
TEST(MeFilterAcqStage, TwentyOneCoefficientsWrapOntoTheCurrentSample) {
  filter_iirspec s = record(0, 0, 100, 1000);
  s.numCoefs = 21;
  s.coefs[20] = 1.0;  // b[20] and a[0] share this slot
  CMeFilterAcq f(s);
  std::vector<double> x = {0.5, -1.5, 2.0};
  f.filter(x.data(), 3);
  EXPECT_TRUE(x[0] == 0.5 && x[2] == 2.0);
}

TEST(MeFilterAcqStage, SetFilterParametersRunsOrderTwo) {
  CMeFilterAcq f;
  filter_iirspec s = record(0, 0, 100, 1000, 6);
  f.setFilterParameters(s);
  EXPECT_TRUE(f.spec.order == 2 && s.order == 6);
  s.filterType = 5;
  f.setFilterParameters(s);
  EXPECT_EQ(f.spec.order, 6);
  CMeFilterAcq g(record(0, 0, 100, 1000, 6));  // the record constructor keeps the order
  EXPECT_EQ(g.spec.order, 6);
}

TEST(MeFilterAcqFirstOrder, StepResponsesFollowTheExponential) {
  const filter_iirspec s = record(0, 10, 20, 1000);
  CMeFilterAcqLPFilter lp;
  CMeFilterAcqHPFilter hp;
  filter_iirspec off = s;
  off.enabled = 0;  // the first-order filters ignore the flag
  lp.setFilterParameters(off);
  hp.setFilterParameters(off);
  const double aLow = 2 * M_PI * 20 / 1000, aHigh = 2 * M_PI * 10 / 1000;
  std::vector<double> x(50, 1.0), y(50, 1.0);
  lp.filter(x.data(), 20);
  lp.filter(x.data() + 20, 30);
  hp.filter(y.data(), 50);
  for (int n : {0, 19, 20, 49}) {
    EXPECT_NEAR(x[n], 1 - std::pow(1 - aLow, n + 1), 1e-14) << n;
    EXPECT_NEAR(y[n], std::pow(1 - aHigh, n + 1), 1e-14) << n;
  }
}

TEST(MeFilterAcqFirstOrder, SettlingTimes) {
  CMeFilterAcqHPFilter hp;  // unset frequencies give 0: the hostile suite
  CMeFilterAcqLPFilter lp;
  EXPECT_EQ(hp.PassFilter(2.0, 5, 7), 0);
  EXPECT_TRUE(hp.passOn == 1 && hp.passMode == 1 && hp.passArg == 7);
  lp.PassFilter(2.0, 0, 0);
  EXPECT_EQ(lp.passMode, 0);
  EXPECT_DOUBLE_EQ(hp.getSettlingTime(), 0.1375);
  EXPECT_DOUBLE_EQ(lp.getSettlingTime(), 1 / (4 * M_PI));
  // The notch divides by 3.14, not pi.
  EXPECT_DOUBLE_EQ(CMeFilterAcqNotchFilter(50, 10).getSettlingTime(), 0.01 + 1 / 31.4);
}

TEST(MeFilterAcqCopies, ConstructorsCopyOnlyPassFrequencyAndExtras) {
  double values[] = {1.5, 2.5, 3.5};
  CMeFilterAcqPowerLineqv a;
  a.setFilterParametersIntPol(record(3, 45, 55, 1024));
  a.passFreq = 12.0;
  a.passFreq2 = 13.0;
  CMeFilterAcq withExtras(4.0, 3, values);
  values[0] = 0.0;
  EXPECT_EQ(withExtras.extra[0], 1.5);
  CMeFilterAcq copy(withExtras);
  EXPECT_TRUE(copy.extra != withExtras.extra && copy.extra[2] == 3.5 && copy.passFreq == 4.0);

  CMeFilterAcqPowerLineqv b(a);
  EXPECT_EQ(b.passFreq, 12.0);
  EXPECT_TRUE(b.passFreq2 == 0.0 && b.spec.enabled == 0 && b.period == 0 && b.extra == nullptr);

  // Assignment copies every field, the work array shared.
  std::vector<double> x(100, 1.0);
  a.filterIntPol(x.data(), 100);
  CMeFilterAcqPowerLineqv c;
  c = a;
  EXPECT_TRUE(c.period == 21 && c.work == a.work && c.gridPhase == a.gridPhase);
  CMeFilterAcqNotchFilter notch(50, 2);
  EXPECT_TRUE(notch.passMode == 3 && notch.passOn == 1);
}

TEST(MeFilterAcqPowerLine, PeriodFromRateAndBandCentre) {
  CMeFilterAcqPowerLine p;
  p.setFilterParameters(record(3, 45, 55, 1000));  // centre 50 < 55: 50 Hz mains
  EXPECT_TRUE(p.period == 20 && p.meanLength == 20.0 && p.spec.coefs[0] == 0.5);
  p.setFilterParameters(record(3, 55, 65, 250));  // rint(250 / 60) = rint(4.1667)
  EXPECT_EQ(p.period, 4);

  CMeFilterAcqPowerLineqv q;
  q.setFilterParametersIntPol(record(3, 45, 55, 1000));
  EXPECT_EQ(q.period, 20);
  EXPECT_DOUBLE_EQ(q.invGridRate, 1.0 / 1000);
  q.setFilterParametersIntPol(record(3, 45, 55, 1024));  // ceil(20.48) 50 = 1050 Hz grid
  EXPECT_EQ(q.period, 21);
  EXPECT_DOUBLE_EQ(q.invGridRate, 1.0 / 1050);
  EXPECT_EQ(q.spec.coefs[0], 0.8);
}

TEST(MeFilterAcqPowerLine, TooLowRateIsReportedAndFilterIsOff) {
  MessageCapture cap;
  CMeFilterAcqPowerLine p;
  p.setFilterParameters(record(3, 45, 55, 20));  // rint(0.4) = 0 samples per period
  ASSERT_EQ(cap.messages.size(), 1u);
  EXPECT_EQ(cap.messages[0],
            L"Power-line filter: 0 samples per mains period are out of range (1..1048576)!");
  std::vector<double> x = {1.0, 2.0};
  p.filter(x.data(), 2);
  EXPECT_EQ(x[1], 2.0);
}

// With the mean over one period (the default) the comb cancels the mains wave exactly once the
// phase values have settled, and what is left is the part of it the running mean lets through.
TEST(MeFilterAcqPowerLine, ResidualIsTheRunningMeanAtTheMainsFrequency) {
  for (double rate : {1000.0, 30000.0}) {  // 30 kHz: 600 phases, beyond the 400-entry rings
    SCOPED_TRACE(rate);
    CMeFilterAcqPowerLine p;
    p.setFilterParameters(record(3, 45, 55, rate));
    const int n = static_cast<int>(rate) * 4;
    std::vector<double> x = sine(50, rate, n);
    p.filter(x.data(), n);
    EXPECT_NEAR(amplitude(x, n / 2, p.period), meanGain(static_cast<double>(p.period)), 1e-9);
  }
}

TEST(MeFilterAcqPowerLine, SlowSignalPassesAndLongerMeanRemovesMainsBy30Db) {
  const double rate = 1000.0;
  const int n = 20000;
  const std::vector<double> slow = sine(0.2, rate, n), hum = sine(50, rate, n);
  // alpha 0.5 matches the phase values' lag to the one-period mean's: the slow wave passes.
  CMeFilterAcqPowerLine p;
  p.setFilterParameters(record(3, 45, 55, rate));
  std::vector<double> y = slow;
  p.filter(y.data(), n);
  for (int k = n / 2; k < n; ++k) EXPECT_NEAR(y[k], slow[k], 0.005) << k;
  // A mean over ten periods (set by the host) with alpha 0.09 takes the mains down >= 30 dB.
  CMeFilterAcqPowerLine q;
  q.setFilterParameters(record(3, 49.1, 50.9, rate));
  q.meanLength = 10.0 * q.period;
  y = add(slow, hum);
  q.filter(y.data(), n);
  for (int k = 0; k < n; ++k) y[k] -= slow[k];
  EXPECT_LT(maxAbsFrom(y, n / 2), 0.035);
  CMeFilterAcqPowerLine r;  // same settings, hum alone
  r.setFilterParameters(record(3, 49.1, 50.9, rate));
  r.meanLength = 10.0 * r.period;
  y = hum;
  r.filter(y.data(), n);
  EXPECT_LT(20 * std::log10(maxAbsFrom(y, n / 2)), -30.0);
}

// At 1000 Hz the grid is the sample grid, so the resampling remover is the plain comb (alpha 0.8,
// mean over one period) one sample late.
TEST(MeFilterAcqPowerLineIntPol, OnTheSampleGridItIsTheCombOneSampleLate) {
  CMeFilterAcqPowerLine plain;
  plain.setFilterParameters(record(3, 42, 58, 1000));  // alpha (58 - 42) / 20 = 0.8
  CMeFilterAcqPowerLineqv grid;
  grid.setFilterParametersIntPol(record(3, 42, 58, 1000));
  std::vector<double> x = add(sine(50, 1000, 300), sine(3, 1000, 300, 0.5)), y = x;
  plain.filter(x.data(), 300);
  grid.filterIntPol(y.data(), 300);
  EXPECT_EQ(y[0], x[0]);
  for (int k = 1; k < 300; ++k) EXPECT_NEAR(y[k], x[k - 1], 1e-12) << k;
}

TEST(MeFilterAcqPowerLineIntPol, BlockSplittingDoesNotChangeTheResult) {
  std::vector<double> x = add(sine(50, 1024, 3000), sine(1.3, 1024, 3000, 2.0));
  for (int k = 0; k < 3000; ++k) x[k] += 0.1 * std::sin(0.7 * k * k);  // broadband part
  std::vector<double> whole = x, blocks = x;
  CMeFilterAcqPowerLineqv a, b;
  a.setFilterParametersIntPol(record(3, 45, 55, 1024));
  b.setFilterParametersIntPol(record(3, 45, 55, 1024));
  a.filterIntPol(whole.data(), 3000);
  std::int64_t at = 0;
  for (std::int64_t len : {1, 2, 7, 64, 333, 1000}) {
    b.filterIntPol(blocks.data() + at, len);
    at += len;
  }
  b.filterIntPol(blocks.data() + at, 3000 - at);
  for (int k = 0; k < 3000; ++k) ASSERT_EQ(blocks[k], whole[k]) << k;
}

TEST(MeFilterAcqPowerLineIntPol, OffGridRateRemovesTheComb) {
  const double rate = 1024.0;
  const int n = 8192;
  CMeFilterAcqPowerLineqv p;
  p.setFilterParametersIntPol(record(3, 45, 55, rate));
  std::vector<double> c(n, 3.0);
  p.filterIntPol(c.data(), n);
  EXPECT_NEAR(c[n - 1], 3.0, 1e-9);  // a constant comes through
  EXPECT_EQ(p.workCapacity, 8402);   // ceil(8192 1050 / 1024) + 2

  // Mains alone: the running mean's share is left (about -16 dB) plus what linear resampling
  // twice costs a 50 Hz wave at 1024 Hz (about 1 %).
  p.setFilterParametersIntPol(record(3, 45, 55, rate));
  std::vector<double> x = sine(50, rate, n);
  p.filterIntPol(x.data(), n);
  EXPECT_NEAR(amplitude(x, n / 2, 1024), meanGain(21.0), 0.005);
  EXPECT_EQ(p.workCapacity, 8402);  // not shrunk, not regrown
}

}  // namespace
