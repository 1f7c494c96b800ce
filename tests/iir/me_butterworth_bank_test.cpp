#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include <digitfilt/digitfilt.h>

#include "support/acq_support.h"
#include "support/iir_poly_support.h"
#include "support/message_capture.h"

namespace {

using digitfilt::test::CArray;
using digitfilt::test::MessageCapture;
using Messages = std::vector<std::wstring>;

using digitfilt::test::readyAcqSettings;

TEST(MeButterworthBank, NotReadySettingsAreRejectedUntouched) {
  MessageCapture cap;
  CMeFilterButterworthqv bank;
  bank.initIIRFilters4Acq();
  CFilterDcLtSetAcqqv s = readyAcqSettings(0.0);
  s.lowPassOn = 1;
  s.lowPassFreq = 900.0;
  const CFilterDcLtSetAcqqv before = s;
  EXPECT_EQ(bank.setCheckCoefs(s), 0);
  EXPECT_EQ(std::memcmp(&s, &before, sizeof s), 0);
  EXPECT_EQ(bank.filterList.size(), 0);  // former stages are released first
  s.acqSampleRate = 1000.0;
  s.channelCount = 0;
  EXPECT_EQ(bank.setCheckCoefs(s), 0);
  EXPECT_EQ(cap.messages, Messages(2, L"Please setup the filter parameters first!"));
}

TEST(MeButterworthBank, ListsLowHighAndNotchesWithClampsWrittenBack) {
  CFilterDcLtSetAcqqv s = readyAcqSettings(1000.0);
  s.lowPassOn = 1;
  s.lowPassFreq = 800.0;
  s.highPassOn = 1;
  s.highPassFreq = 0.01;
  for (int i = 0; i < 6; ++i) {
    s.notchOn[i] = 1;
    s.notchFreqLow[i] = 100.0 + 50.0 * i;
    s.notchFreqHigh[i] = 110.0 + 50.0 * i;
  }
  s.notchFreqHigh[5] = 0.2;  // below the width minimum 0.5
  CMeFilterButterworthqv bank;
  MessageCapture cap;
  EXPECT_EQ(bank.setCheckCoefs(s), 8);
  EXPECT_EQ(s.lowPassFreq, 500.0);
  EXPECT_EQ(s.highPassFreq, 0.1);
  EXPECT_EQ(s.notchFreqHigh[5], 0.5);
  EXPECT_EQ(bank.sampleRate, 1000.0);
  EXPECT_EQ(bank.minHighEdge, 0.5);
  ASSERT_EQ(bank.filterList.size(), 8);
  const MeFilterButterworthx& lp = *bank.filterList[0];
  EXPECT_EQ(lp.filterType, 0);
  EXPECT_EQ(lp.order, 4);
  EXPECT_EQ(lp.lowpassFreq, 500.0);
  EXPECT_EQ(lp.numSections, 0);  // coefficients are made later
  EXPECT_EQ(bank.filterList[1]->highpassFreq, 0.1);
  const MeFilterButterworthx& n0 = *bank.filterList[2];
  EXPECT_EQ(n0.filterType, 3);
  EXPECT_EQ(n0.order, 2);
  EXPECT_EQ(n0.stopLowFreq, 100.0);
  EXPECT_EQ(n0.stopHighFreq, 110.0);
  // The last notch's upper edge (0.5) lies below its lower edge: the rate check disables it.
  EXPECT_EQ(bank.filterList[7]->enabled, 0);
  EXPECT_EQ(bank.getEnableFilters(), 7);
  EXPECT_TRUE(cap.messages.empty());
}

TEST(MeButterworthBank, NotchesOfOrderTwoGetNoSections) {
  CFilterDcLtSetAcqqv s = readyAcqSettings(1000.0);
  s.notchOn[0] = 1;
  s.notchFreqLow[0] = 45.0;
  s.notchFreqHigh[0] = 55.0;
  CMeFilterButterworthqv bank;
  ASSERT_EQ(bank.setCheckCoefs(s), 1);
  MessageCapture cap;
  EXPECT_EQ(bank.makeAllButterworthCoeffs(1), 1);
  EXPECT_EQ(cap.messages, Messages{L"Order for bandpass must be 4,8,12,16,...\n"});
  EXPECT_EQ(bank.filterList[0]->numSections, 0);
  std::vector<double> x = {1, -2, 3, 4};
  EXPECT_EQ(bank.filtDataAcq(x.data(), 4, 0, 3, 0), 1);
  EXPECT_EQ(x, (std::vector<double>{1, -2, 3, 4}));

  s.notchFreqHigh[0] = 45.48;  // narrower than 0.00049 fs: disabled, nothing passes the check
  EXPECT_EQ(bank.setCheckCoefs(s), 0);
  EXPECT_EQ(bank.filterList[0]->enabled, 0);
}

TEST(MeButterworthBank, PowerLineCombIsCountedButNotListed) {
  CFilterDcLtSetAcqqv s = readyAcqSettings(1000.0);
  s.lowPassOn = 1;
  s.lowPassFreq = 100.0;
  s.powerLineOn = 1;
  s.powerLineType = 1;
  s.powerLineHarmonics = 20;
  s.powerLineWidth = 4.0;
  CMeFilterButterworthqv bank;
  MessageCapture cap;
  EXPECT_EQ(bank.setCheckCoefs(s), 1 + 9);
  EXPECT_EQ(s.powerLineHarmonics, 9);
  EXPECT_EQ(cap.messages,
            Messages{L"Power-line noise harmonic is out of the filtering range (20->9)!?"});
  EXPECT_EQ(bank.filterList.size(), 1);

  // 60 Hz, 8 harmonics of width 40: the 8th reaches 480 + 20 = 500 and ends the comb.
  s.powerLineType = 0;
  s.powerLineHarmonics = 8;
  s.powerLineWidth = 40.0;
  cap.messages.clear();
  EXPECT_EQ(bank.setCheckCoefs(s), 1 + 7);
  EXPECT_TRUE(cap.messages.empty());

  // Nothing listed: the rate check passes no stage and the result is 0.
  s.lowPassOn = 0;
  EXPECT_EQ(bank.setCheckCoefs(s), 0);
  EXPECT_EQ(bank.filterList.size(), 0);

  // Custom base: used before its own clamp, then clamped and written back.
  s.powerLineType = 2;
  s.powerLineFreq = 600.0;
  s.powerLineHarmonics = 0;
  s.lowPassOn = 1;
  EXPECT_EQ(bank.setCheckCoefs(s), 1);
  EXPECT_EQ(s.powerLineFreq, 500.0);
  EXPECT_EQ(s.powerLineHarmonics, 1);
}

TEST(MeButterworthBank, DefaultPairAndFilterInfo) {
  CMeFilterButterworthqv bank;
  EXPECT_EQ(bank.getFilterInfo(0), "");
  EXPECT_EQ(bank.initIIRFilters4Acq(), 2);
  EXPECT_EQ(bank.lastIndex, 0);
  EXPECT_EQ(bank.getFilterInfo(0), "");  // no sections made yet
  EXPECT_EQ(bank.getEnableFilters(), 2);
  EXPECT_EQ(bank.makeAllButterworthCoeffs(1), 2);
  // 80 Hz low-pass and 4 Hz high-pass at 250 Hz, order 4: with a = tan(pi f / 250) and
  // r = sin(pi (2i+1) / 8), A = a^2/s (1/s), d1 = 2 (1 - a^2)/s, d2 = -(a^2 - 2ar + 1)/s,
  // s = a^2 + 2ar + 1, formatted with "%f" in Python. The stage name line is not output.
  EXPECT_EQ(bank.getFilterInfo(0),
            "0.529532 -0.632535 -0.485595 0.000000 0.000000 0.000000 0.000000 0.000000 "
            "0.000000 0.000000 \n"
            "0.388294 -0.463824 -0.089354 0.000000 0.000000 0.000000 0.000000 0.000000 "
            "0.000000 0.000000 \n"
            "0.960583 1.916303 -0.926028 0.000000 0.000000 0.000000 0.000000 0.000000 "
            "0.000000 0.000000 \n"
            "0.912835 1.821050 -0.830291 0.000000 0.000000 0.000000 0.000000 0.000000 "
            "0.000000 0.000000 \n");
  bank.filterList[1]->enabled = 0;
  EXPECT_EQ(bank.getEnableFilters(), 1);
  EXPECT_EQ(bank.getFilterInfo(0).size(), 2 * std::string("0.529532 -0.632535 -0.485595 "
                                                          "0.000000 0.000000 0.000000 0.000000 "
                                                          "0.000000 0.000000 0.000000 \n")
                                                  .size());
}

TEST(MeButterworthBank, CoefLowpassReturnsDenominatorOnly) {
  CMeFilterButterworthqv bank;
  // scipy.signal.butter(2, 0.5): a = [1, 0, 0.17157288] (3 - 2 sqrt 2)
  for (int scale : {0, 1}) {
    CArray<double> d(bank.coefLowpass(2, 0.5, scale));
    ASSERT_TRUE(d);
    EXPECT_EQ(d[0], 1.0);
    EXPECT_NEAR(d[1], 0.0, 1e-15);
    EXPECT_NEAR(d[2], 3.0 - 2.0 * std::sqrt(2.0), 1e-15);
  }
  EXPECT_EQ(bank.coefLowpass(0, 0.5, 1), nullptr);
}

TEST(MeButterworthBank, CopyAssignmentAppendsStages) {
  CMeFilterButterworthqv source, target;
  CFilterDcLtSetAcqqv s = readyAcqSettings(1000.0);
  s.lowPassOn = 1;
  s.lowPassFreq = 100.0;
  source.setCheckCoefs(s);
  source.makeAllButterworthCoeffs(1);
  source.filtDataAcq(&s.lowPassFreq, 1, 0, 0, 3);  // any sample: fills states and bookkeeping
  target.initIIRFilters4Acq();
  target = source;
  ASSERT_EQ(target.filterList.size(), 3);
  EXPECT_EQ(target.sampleRate, 1000.0);
  EXPECT_EQ(target.lastIndex, source.lastIndex);
  EXPECT_EQ(target.blockChannel, 3);
  const MeFilterButterworthx& copy = *target.filterList[2];
  EXPECT_NE(&copy, source.filterList[0]);
  EXPECT_EQ(copy.numSections, 2);
  EXPECT_EQ(copy.w1[0], source.filterList[0]->w1[0]);
  target.filterList[2]->lowpassFreq = 1.0;
  EXPECT_EQ(source.filterList[0]->lowpassFreq, 100.0);
}

}  // namespace
