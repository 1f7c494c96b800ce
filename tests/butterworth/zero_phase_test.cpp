#include <cmath>
#include <vector>

#include <gtest/gtest.h>
#include <digitfilt/digitfilt.h>

#include "support/butterworth_support.h"
#include "support/message_capture.h"

namespace {

using digitfilt::test::designedStage;
using digitfilt::test::literalZeroPhase;
using digitfilt::test::MessageCapture;
using digitfilt::test::testSignal;

struct ZeroPhaseProbe : CDigitFiltCoefMak01Butterworth01ctf {
  using CDigitFiltCoefMak01Butterworth01ctf::ctfZeroPhaseShiftIIRDigitFilter;
};

struct ZeroPhaseQvProbe : CDigitFiltCoefMak01Butterworth02ctfqv {
  using CDigitFiltCoefMak01Butterworth02ctfqv::ctfFilterStdQv;
};

// Order-4 low-pass at 100 Hz and order-2 45-55 Hz band-stop at 1000 Hz.
std::vector<filter_iirspec> lowPassThenNotch() {
  return {designedStage(0, 4, 0.1, 100.0, 1000.0), designedStage(3, 2, 45.0, 55.0, 1000.0)};
}

const wchar_t kRunError[] = L"Do filter zeroPhaseShiftIIRDigitFilter error!";
const wchar_t kDesignError[] = L"Do filter getButterworthIirFilterCoef error!";

TEST(ZeroPhaseFilter, ChainMatchesForwardBackwardLfilter) {
  // Reference: /usr/bin/python3 with scipy.signal, x = testSignal(40),
  //   zp(b, a, x) = lfilter(b, a, r - r[0])[::-1] with r = lfilter(b, a, x - x[0])[::-1],
  //   y = zp(*butter(2, [45, 55], 'bandstop', fs=1000), zp(*butter(4, 100, fs=1000), x)).
  const int idx[] = {0, 1, 7, 19, 33, 39};
  const double want[] = {-1.606849682272152, -1.5535171229002414, -1.3214682534787932,
                         -1.3111853244772171, 0.09218438392905287, 0.0};
  std::vector<filter_iirspec> specs = lowPassThenNotch();
  std::vector<double> x = testSignal(40);
  CDigitFiltCoefMak01Butterworth01ctf f;
  ASSERT_EQ(f.ctfFilterStd(x.data(), 40, 2, specs.data()), 1);
  for (int i = 0; i < 6; ++i) EXPECT_NEAR(x[idx[i]], want[i], 1e-9) << idx[i];
  // The last sample is the backward pass's own offset: exactly 0.
  EXPECT_EQ(x[39], 0.0);
}

TEST(ZeroPhaseFilter, EveryStageIsTheLiteralRecursionBitForBit) {
  std::vector<filter_iirspec> specs = lowPassThenNotch();
  specs.push_back(designedStage(1, 3, 2.0, 500.0, 1000.0));
  specs.push_back(designedStage(2, 5, 80.0, 120.0, 1000.0));  // 11 coefficients
  specs.push_back(designedStage(0, 12, 0.1, 200.0, 1000.0));  // 13: the general path
  const std::vector<double> x = testSignal(300);
  std::vector<double> want = x;
  for (const filter_iirspec& s : specs) want = literalZeroPhase(want, s);
  std::vector<double> got = x;
  CDigitFiltCoefMak01Butterworth01ctf f;
  ASSERT_EQ(f.ctfFilterStd(got.data(), 300, 5, specs.data()), 1);
  for (int i = 0; i < 300; ++i) ASSERT_EQ(got[i], want[i]) << i;
  // Every record used has a[0] = 0 written back into it.
  for (const filter_iirspec& s : specs) EXPECT_EQ(s.coefs[20], 0.0);
}

TEST(ZeroPhaseFilter, ConstantInputGivesZeros) {
  std::vector<filter_iirspec> specs = lowPassThenNotch();
  std::vector<double> x(200, 3.25);
  CDigitFiltCoefMak01Butterworth01ctf f;
  ASSERT_EQ(f.ctfFilterStd(x.data(), 200, 2, specs.data()), 1);
  for (double v : x) EXPECT_EQ(v, 0.0);
}

TEST(ZeroPhaseFilter, DesignsAStageOnFirstUse) {
  filter_iirspec s = designedStage(0, 4, 0.1, 100.0, 1000.0);
  filter_iirspec raw = s;
  raw.numCoefs = 0;
  std::vector<double> a = testSignal(64), b = a;
  CDigitFiltCoefMak01Butterworth01ctf f;
  f.ctfFilterStd(a.data(), 64, 1, &s);
  f.ctfFilterStd(b.data(), 64, 1, &raw);
  EXPECT_EQ(raw.numCoefs, 5);
  EXPECT_EQ(a, b);
}

TEST(ZeroPhaseFilter, FailuresCopyAndShowTheirMessage) {
  CDigitFiltCoefMak01Butterworth01ctf f;
  {
    // Three samples, five coefficients: copied unchanged.
    filter_iirspec s = designedStage(0, 4, 0.1, 100.0, 1000.0);
    std::vector<double> x = {1.0, 2.0, 4.0};
    MessageCapture capture;
    EXPECT_EQ(f.ctfFilterStd(x.data(), 3, 1, &s), 1);
    EXPECT_EQ(x, (std::vector<double>{1.0, 2.0, 4.0}));
    EXPECT_EQ(capture.messages, std::vector<std::wstring>{kRunError});
  }
  {
    // A record the designer refuses (order 0) leaves the chain's second buffer unwritten.
    filter_iirspec s = designedStage(0, 4, 0.1, 100.0, 1000.0);
    s.order = 0;
    s.numCoefs = 0;
    std::vector<double> x = testSignal(16);
    MessageCapture capture;
    f.ctfFilterStd(x.data(), 16, 1, &s);
    EXPECT_EQ(capture.messages, std::vector<std::wstring>{kDesignError});
  }
  {
    ZeroPhaseProbe p;
    filter_iirspec s = designedStage(0, 4, 0.1, 100.0, 1000.0);
    double x = 1.0, y = 5.0;
    EXPECT_EQ(p.ctfZeroPhaseShiftIIRDigitFilter(&x, &y, 0, &s), 0);
    EXPECT_EQ(y, 5.0);
    EXPECT_EQ(p.tmpTSLen, 0);
  }
}

TEST(ZeroPhaseFilter, WorkArraysAreReusedForTheSameLengthOnly) {
  std::vector<filter_iirspec> specs = lowPassThenNotch();
  std::vector<double> x = testSignal(100);
  CDigitFiltCoefMak01Butterworth01ctf f;
  f.ctfFilterStd(x.data(), 100, 2, specs.data());
  const double* ary = f.tmpAry;
  const double* ts = f.tmpTS;
  EXPECT_EQ(f.tmpAryLen, 100);
  EXPECT_EQ(f.tmpTSLen, 100);
  f.ctfFilterStd(x.data(), 100, 2, specs.data());
  EXPECT_EQ(f.tmpAry, ary);
  EXPECT_EQ(f.tmpTS, ts);
  f.ctfFilterStd(x.data(), 50, 2, specs.data());
  EXPECT_EQ(f.tmpAryLen, 50);
  EXPECT_EQ(f.tmpTSLen, 50);
  EXPECT_EQ(f.cleanTmpAry(), 1);
  EXPECT_EQ(f.tmpAry, nullptr);
  EXPECT_EQ(f.tmpAryLen, 0);
}

TEST(ZeroPhaseFilter, CopyTakesFreshUnsizedWorkArrays) {
  std::vector<filter_iirspec> specs = lowPassThenNotch();
  std::vector<double> x = testSignal(100), y = x;
  CDigitFiltCoefMak01Butterworth01ctf a;
  a.ctfFilterStd(x.data(), 100, 2, specs.data());
  a.iirSpecs[7].freqHigh = 123.0;
  CDigitFiltCoefMak01Butterworth01ctf b;
  b = a;
  EXPECT_EQ(b.iirSpecs[7].freqHigh, 123.0);
  EXPECT_NE(b.tmpAry, nullptr);
  EXPECT_NE(b.tmpAry, a.tmpAry);
  EXPECT_EQ(b.tmpAryLen, 0);
  EXPECT_EQ(b.tmpIO, nullptr);  // the source had none
  b.ctfFilterStd(y.data(), 100, 2, specs.data());
  EXPECT_EQ(b.tmpAryLen, 100);
  EXPECT_EQ(x, y);
}

TEST(ZeroPhaseFilter, InOutRunsEveryRecordAndEndsInOut) {
  std::vector<filter_iirspec> specs = lowPassThenNotch();
  specs.push_back(designedStage(1, 2, 5.0, 500.0, 1000.0));
  const std::vector<double> x = testSignal(120);
  for (unsigned count : {1u, 2u, 3u}) {
    SCOPED_TRACE(count);
    std::vector<filter_iirspec> s = specs;
    std::vector<double> want = x;
    for (unsigned i = 0; i < count; ++i) want = literalZeroPhase(want, s[i]);
    std::vector<double> in = x, out(120, 9.0);
    CDigitFiltCoefMak01Butterworth01ctf f;
    EXPECT_EQ(f.ctfFilterIOF(in.data(), out.data(), 120, s.data(), count), 1);
    EXPECT_EQ(out, want);
    EXPECT_EQ(in, x);
  }
  // A disabled record is run too: it copies and says so.
  std::vector<filter_iirspec> s = specs;
  s[1].enabled = 0;
  std::vector<double> in = x, out(120);
  CDigitFiltCoefMak01Butterworth01ctf f;
  MessageCapture capture;
  f.ctfFilterIOF(in.data(), out.data(), 120, s.data(), 2);
  EXPECT_EQ(out, literalZeroPhase(x, s[0]));
  EXPECT_EQ(capture.messages, std::vector<std::wstring>{kRunError});
  // No record: a copy, and 0.
  std::vector<double> copy(120);
  EXPECT_EQ(f.ctfFilterIOF(in.data(), copy.data(), 120, s.data(), 0), 0);
  EXPECT_EQ(copy, x);
}

TEST(ZeroPhaseSettings, ResetDefaultsAndSlotCopy) {
  CDigitFiltCoefMak01Butterworth01ctf f;  // the constructor resets every record
  const filter_iirspec& r = f.iirSpecs[89];
  EXPECT_EQ(r.reserved0, 1);
  EXPECT_EQ(r.filterType, -1);
  EXPECT_EQ(r.coefs[39], 1.0);
  EXPECT_EQ(r.coefs[40], 0.0);
  EXPECT_EQ(f.defaultCtfButterworthFilter(), 1);
  EXPECT_EQ(f.iirSpecs[2].freqLow, 0.01);
  EXPECT_EQ(f.iirSpecs[63].freqHigh, 3603.0);
  EXPECT_EQ(f.iirSpecs[63].order, 2);
  // The default high-pass has cut-off 0: refused until it is set.
  f.iirSpecs[1].sampleRate = 1000.0;
  EXPECT_EQ(f.ctfButterworthIirFilterCoef(&f.iirSpecs[1]), 0);

  filter_iirspec s = designedStage(3, 2, 45.0, 55.0, 1000.0);
  EXPECT_EQ(f.setCtfButterworthIirFilterCoef(&s), 1);
  EXPECT_EQ(f.iirSpecs[3].freqLow, 45.0);
  s.filterType = 4;
  EXPECT_EQ(f.setCtfButterworthIirFilterCoef(&s), 0);
}

TEST(ZeroPhaseFilter, OversizedStageStaysInsideItsRecord) {
  // A band stage of order 20 has 41 coefficients and no slot for a[40]; it must not be read.
  filter_iirspec s = designedStage(3, 20, 100.0, 300.0, 1000.0);
  ASSERT_EQ(s.numCoefs, 41);
  std::vector<double> x = testSignal(100);
  CDigitFiltCoefMak01Butterworth01ctf f;
  EXPECT_EQ(f.ctfFilterStd(x.data(), 100, 1, &s), 1);
}

TEST(ZeroPhaseQv, ResultArrivesByPointerExchange) {
  std::vector<filter_iirspec> specs = lowPassThenNotch();
  specs.push_back(designedStage(1, 2, 5.0, 500.0, 1000.0));
  const std::vector<double> x = testSignal(80);
  std::vector<double> want = x;
  for (const filter_iirspec& s : specs) want = literalZeroPhase(want, s);

  CDigitFiltCoefMak01Butterworth02ctfqv f;
  for (int i = 0; i < 3; ++i) f.iirSpecs[2 * i] = specs[i];  // slots 0, 2, 4
  f.iirSpecs[8] = specs[0];                                  // slot 8 takes no part
  std::vector<double> a = x, b(80), w(80);
  double* data = a.data();
  double* other = b.data();
  EXPECT_EQ(f.ctfFilterQv(data, other, w.data(), 80), 1);
  EXPECT_EQ(data, b.data());  // three stages: the result is in b, so the pointers swap
  EXPECT_EQ(other, a.data());
  EXPECT_EQ(b, want);

  // Two stages end where they began: no exchange.
  ZeroPhaseQvProbe p;
  std::vector<filter_iirspec> two(specs.begin(), specs.begin() + 2);
  std::vector<double> c = x, d(80);
  data = c.data();
  other = d.data();
  EXPECT_EQ(p.ctfFilterStdQv(data, other, w.data(), 80, 2, two.data()), 1);
  EXPECT_EQ(data, c.data());
  EXPECT_EQ(c, literalZeroPhase(literalZeroPhase(x, specs[0]), specs[1]));
  two[0].enabled = two[1].enabled = 0;
  EXPECT_EQ(p.ctfFilterStdQv(data, other, w.data(), 80, 2, two.data()), 0);
}

}  // namespace
