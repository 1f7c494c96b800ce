#include <digitfilt/digitfilt.h>
#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <vector>

#include "support/message_capture.h"
#include "support/remez_support.h"

namespace {

using digitfilt::test::MessageCapture;
using Designer = CDigitFiltCoefMak06Remezqv;
using Vec = std::vector<double>;

// Opens the protected operations.
struct OpenDesigner : Designer {
  using CDigitFiltCoefMak06Remez07::checkBuffer;
  using CDigitFiltCoefMak06Remez07::computeCoef;
  using CDigitFiltCoefMak06Remez07::filtRmzBkwd;
};

void setTaps(Filter_Remez& f, std::vector<double> taps) {
  f.enabled = 1;
  f.tapCount = static_cast<std::int64_t>(taps.size());
  f.allocCoefs(f.tapCount);
  for (std::size_t k = 0; k < taps.size(); ++k) f.coefs[k] = taps[k];
}

TEST(RemezDesigner, HoldsNinetyRecords) {
  Designer d;
  EXPECT_EQ(d.getFilterCoefficients(89), &d.records[89]);
  EXPECT_EQ(d.getFilterCoefficients(90), nullptr);
  EXPECT_EQ(d.getFilterCoefficients(-1), nullptr);
  EXPECT_EQ(d.designMode, 3);
  const Filter_Remez& f = d.records[42];
  EXPECT_TRUE(f.specCode == 3 && f.specIndex == -1 && f.remezType == 1 && f.unitValue == 1.0);
}

TEST(RemezDesigner, InitialisingKeepsLengthsAndDensity) {
  Designer d;
  Filter_Remez& f = d.records[3];
  setTaps(f, {1, 2});
  f.numTaps = 44;
  f.gridDensity = 20;
  f.bands[1] = 0.3;
  f.order = 9;
  EXPECT_EQ(d.initInitRemez(), 1);
  EXPECT_TRUE(f.enabled == 0 && f.coefs == nullptr && f.tapCount == 0 && f.order == 0 &&
              f.bands[1] == 0.0);
  EXPECT_TRUE(f.numTaps == 44 && f.gridDensity == 20);
}

TEST(RemezDesigner, OddOrdersRoundUpToEvenTapCounts) {
  OpenDesigner d;
  Filter_Remez& f = d.records[0];
  f = digitfilt::test::lowPassSpec(0);
  f.enabled = 1;
  f.order = 31;
  EXPECT_EQ(d.computeCoef(&f), 0);  // the doubled-array run fails, the taps stay zero
  EXPECT_TRUE(f.numTaps == 32 && f.tapCount == 32);
  ASSERT_NE(f.coefs, nullptr);
  EXPECT_EQ(f.coefs[32], 0.0);  // spare slot
  f.order = 30;
  d.computeCoef(&f);
  EXPECT_EQ(f.tapCount, 30);
  f.enabled = 0;
  EXPECT_EQ(d.computeCoef(&f), 0);
  EXPECT_EQ(d.computeCoef(nullptr), 0);
}

TEST(RemezDesigner, MakeAllCoefCountsDesignsOfEnabledRecords) {
  Designer d;
  for (int i : {4, 7}) {
    d.records[i] = digitfilt::test::lowPassSpec(0);
    d.records[i].enabled = 1;
    d.records[i].order = 20;
  }
  EXPECT_EQ(d.makeAllCoef(), 0);  // both runs fail on the doubled arrays
  EXPECT_TRUE(d.records[4].tapCount == 20 && d.records[7].tapCount == 20);
  EXPECT_EQ(d.records[5].tapCount, 0);
  EXPECT_EQ(CDigitFiltCoefMak06Remez().makeAllCoef(), 0);
}

TEST(RemezFilter, TwoEnabledRecordsLeaveTheSecondOutput) {
  Designer d;
  setTaps(d.records[0], {2.0});
  setTaps(d.records[1], {0.0, 1.0});  // y[i] = x[i + 1], circularly
  double x[] = {1, 2, 3, 4, 5}, y[5] = {};
  CDigitFiltCoefMak06Remez& base = d;
  EXPECT_EQ(base.filter(x, y, 5), 2);
  EXPECT_EQ(Vec(y, y + 5), (Vec{2, 3, 4, 5, 1}));
}

TEST(RemezFilter, BaseVersionDividesByTheTapCount) {
  CDigitFiltCoefMak06Remez d;
  setTaps(d.records[0], {1.0, 1.0});
  setTaps(d.records[1], {});  // no taps: skipped
  setTaps(d.records[2], {5.0});
  d.records[2].enabled = 0;
  double x[] = {1, 2, 3, 4}, y[4] = {};
  EXPECT_EQ(d.filter(x, y, 4), 1);
  EXPECT_EQ(Vec(y, y + 4), (Vec{1.5, 2.5, 3.5, 2.5}));
}

TEST(RemezFilter, BackwardWindowEndsOneSampleBefore) {
  const double x[] = {1, 2, 3, 4, 5};
  double y[5] = {};
  const double last[] = {0, 0, 1}, first[] = {1, 0, 0};
  EXPECT_EQ(OpenDesigner::filtRmzBkwd(last, 3, x, y, 5), 1);
  EXPECT_EQ(Vec(y, y + 5), (Vec{5, 1, 2, 3, 4}));  // x[i - 1]
  OpenDesigner::filtRmzBkwd(first, 3, x, y, 5);
  EXPECT_EQ(Vec(y, y + 5), (Vec{3, 4, 5, 1, 2}));  // x[i - 3]
}

TEST(RemezFilter, CheckBufferNeverRecordsItsLength) {
  OpenDesigner d;
  EXPECT_EQ(d.checkBuffer(8), 1);
  ASSERT_NE(d.buffer, nullptr);
  EXPECT_EQ(d.bufferLen, 0);  // deliberately not updated
  const double* kept = d.buffer;
  d.bufferLen = 8;
  EXPECT_EQ(d.checkBuffer(8), 1);
  EXPECT_EQ(d.buffer, kept);
  EXPECT_EQ(d.checkBuffer(-1), 0);
  EXPECT_EQ(d.buffer, nullptr);
}

TEST(RemezGain, SumsTapsUpToTheOrder) {
  Designer d;
  Filter_Remez& f = d.records[0];
  setTaps(f, {0.5, 0.5});
  f.order = 2;  // reads coefs[2], the spare zero slot
  std::unique_ptr<double[]> g(d.filterGain(2, &f));
  ASSERT_NE(g, nullptr);
  // |0.5 + 0.5 e^{-iw}|^2 = cos^2(w / 2)
  EXPECT_NEAR(g[0], 0.0, 1e-12);
  EXPECT_NEAR(g[1], 10 * std::log10(0.5), 1e-12);
  EXPECT_LT(g[2], -300.0);
  EXPECT_EQ(d.filterGain(2, nullptr), nullptr);
  EXPECT_DOUBLE_EQ(Designer::getGaindBs(1, 10), 20.0);
}

TEST(RemezTransition, ChecksAndDownwardCorrection) {
  MessageCapture capture;
  // 0.2 >= 0.2002 - 0.0003, 0.2 >= 0.2002 - 0.0002, then 0.2 < 0.2002 - 0.0001.
  EXPECT_EQ(Designer::ckCorrectTrnDn(0.0003, 0.2, 0.2002), 0.0003 - 0.0001 - 0.0001);
  EXPECT_EQ(Designer::ckCorrectTrnUp(0.05, 0.1, 0.2), 0.05);
  EXPECT_TRUE(capture.messages.empty());
  EXPECT_EQ(Designer::ckCorrectTrnDn(0.1, 0.3, 0.2), 0.0001);
  EXPECT_EQ(Designer::ckCorrectTrnUp(0.0, 0.1, 0.2), 0.0001);
  EXPECT_EQ(capture.messages,
            (std::vector<std::wstring>{L"frequncy high edge must be larger than the low edge!",
                                       L"transition frequncy must be large than 0!"}));
}

TEST(RemezDesigner, CopiesShareTapsAndOutliveEachOther) {
  Designer a;
  setTaps(a.records[0], {1, 2, 3});
  {
    Designer b(a);
    b.records[0].coefs[1] = 4.0;
    Designer c;
    c = b;
    EXPECT_EQ(c.records[0].coefs, a.records[0].coefs);
  }
  EXPECT_EQ(a.records[0].coefs[1], 4.0);
  EXPECT_EQ(a.clearRemez(), 1);
  EXPECT_EQ(a.records[0].coefs, nullptr);
}

}  // namespace
