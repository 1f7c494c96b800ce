#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <digitfilt/digitfilt.h>

#include "support/message_capture.h"

namespace {

using digitfilt::test::MessageCapture;

CFilterDcLtSetAcqqv settingsAt(double rate) {
  CFilterDcLtSetAcqqv s;
  s.acqSampleRate = rate;
  s.channelCount = 8;
  return s;
}

CFilterDcLtSetAcqqv mains50(int harmonics) {
  CFilterDcLtSetAcqqv s = settingsAt(1000.0);
  s.powerLineOn = 1;
  s.powerLineType = 1;
  s.powerLineWidth = 4.0;
  s.powerLineHarmonics = harmonics;
  return s;
}

void expectStage(const filter_iirspec& s, int enabled, int type, int order, double low,
                 double high) {
  EXPECT_EQ(s.enabled, enabled);
  EXPECT_EQ(s.filterType, type);
  EXPECT_EQ(s.order, order);
  EXPECT_DOUBLE_EQ(s.freqLow, low);
  EXPECT_DOUBLE_EQ(s.freqHigh, high);
  EXPECT_EQ(s.sampleRate, 1000.0);
}

TEST(AcqBank, MainsWithThreeHarmonics) {
  CFilterDcLtSetAcqqv st = mains50(3);
  CDigitFiltCoefMak01ButterworthAcqqv bank;
  MessageCapture capture;
  EXPECT_EQ(bank.setCheckCoefs(st), 3);
  EXPECT_TRUE(capture.messages.empty());
  expectStage(bank.iirSpecs[6], 1, 3, 2, 48.0, 52.0);
  expectStage(bank.iirSpecs[7], 1, 3, 2, 98.0, 102.0);
  expectStage(bank.iirSpecs[8], 1, 3, 2, 148.0, 152.0);
  for (int slot = 9; slot <= 65; ++slot) {
    SCOPED_TRACE(slot);
    expectStage(bank.iirSpecs[slot], 0, 3, 2, 0.1, 500.0);
  }
  expectStage(bank.iirSpecs[0], 0, 0, 4, 0.1, 500.0);
  expectStage(bank.iirSpecs[1], 0, 1, 4, 0.1, 500.0);
  for (int slot = 2; slot <= 5; ++slot) expectStage(bank.iirSpecs[slot], 0, 3, 4, 0.1, 500.0);
  EXPECT_EQ(bank.makeAllButterworthCoeffs(true), 3);
}

TEST(AcqBank, OnlyLowPassAndClampsWrittenBack) {
  CFilterDcLtSetAcqqv st = settingsAt(1000.0);
  st.lowPassOn = 1;
  st.lowPassFreq = 200.0;
  CDigitFiltCoefMak01ButterworthAcqqv bank;
  EXPECT_EQ(bank.setCheckCoefs(st), 1);
  expectStage(bank.iirSpecs[0], 1, 0, 4, 0.1, 200.0);

  st.lowPassFreq = 700.0;
  st.highPassOn = 1;
  st.highPassFreq = -3.0;
  EXPECT_EQ(bank.setCheckCoefs(st), 2);
  EXPECT_EQ(st.lowPassFreq, 500.0);
  EXPECT_EQ(st.highPassFreq, 0.1);
  expectStage(bank.iirSpecs[1], 1, 1, 4, 0.1, 500.0);
}

TEST(AcqBank, EverythingOffFillsTheSlotsAndFails) {
  CFilterDcLtSetAcqqv st = settingsAt(1000.0);
  CDigitFiltCoefMak01ButterworthAcqqv bank;
  MessageCapture capture;
  EXPECT_EQ(bank.setCheckCoefs(st), 0);
  EXPECT_TRUE(capture.messages.empty());
  for (int slot = 0; slot <= 65; ++slot) {
    EXPECT_EQ(bank.iirSpecs[slot].enabled, 0) << slot;
    EXPECT_EQ(bank.iirSpecs[slot].sampleRate, 1000.0) << slot;
  }
}

TEST(AcqBank, MissingRateOrChannelsChangesNothing) {
  for (int variant = 0; variant < 2; ++variant) {
    CFilterDcLtSetAcqqv st = mains50(3);
    if (variant == 0) st.acqSampleRate = 0.0;
    else st.channelCount = 0;
    const CFilterDcLtSetAcqqv before = st;
    CDigitFiltCoefMak01ButterworthAcqqv bank;
    MessageCapture capture;
    EXPECT_EQ(bank.setCheckCoefs(st), 0);
    EXPECT_EQ(capture.messages,
              std::vector<std::wstring>{L"Please setup the filter parameters first!"});
    EXPECT_EQ(std::memcmp(&before, &st, sizeof st), 0);
    EXPECT_EQ(bank.sampleRate, 0.0);
  }
}

TEST(AcqBank, TooManyHarmonicsAreCutWithAMessage) {
  CFilterDcLtSetAcqqv st = mains50(12);
  CDigitFiltCoefMak01ButterworthAcqqv bank;
  MessageCapture capture;
  EXPECT_EQ(bank.setCheckCoefs(st), 9);
  EXPECT_EQ(st.powerLineHarmonics, 9);
  EXPECT_EQ(capture.messages, std::vector<std::wstring>{
                                  L"Power-line noise harmonic is out of the filtering range (12->9)!?"});
  expectStage(bank.iirSpecs[14], 1, 3, 2, 448.0, 452.0);
  EXPECT_EQ(bank.iirSpecs[15].enabled, 0);
}

TEST(AcqBank, CustomMainsFrequencyIsUsedBeforeItsClamp) {
  // 2000 Hz at rate 1000: the limit 0.25 cuts the count to 0 (then clamped to 1), the stored
  // frequency is clamped to 500, but the stage is centred on 2000 and ends up empty, so no
  // stage passes the edge check.
  CFilterDcLtSetAcqqv st = mains50(1);
  st.powerLineType = 2;
  st.powerLineFreq = 2000.0;
  CDigitFiltCoefMak01ButterworthAcqqv bank;
  MessageCapture capture;
  EXPECT_EQ(bank.setCheckCoefs(st), 0);
  EXPECT_EQ(capture.messages, std::vector<std::wstring>{
                                  L"Power-line noise harmonic is out of the filtering range (1->0)!?"});
  EXPECT_EQ(st.powerLineFreq, 500.0);
  EXPECT_EQ(st.powerLineHarmonics, 1);
  EXPECT_EQ(bank.iirSpecs[6].freqLow, 500.0);
  EXPECT_EQ(bank.iirSpecs[6].enabled, 0);  // switched off by the edge check

  // Base 0: no limit, no message; every centre is 0 and the edges are held in range.
  st = mains50(2);
  st.powerLineType = 5;
  st.powerLineFreq = 0.0;
  MessageCapture quiet;
  EXPECT_EQ(bank.setCheckCoefs(st), 2);
  EXPECT_TRUE(quiet.messages.empty());
  expectStage(bank.iirSpecs[7], 1, 3, 2, 0.1, 2.0);
}

TEST(AcqBank, NotchUpperEdgeIsHeldToTheWidthRange) {
  CFilterDcLtSetAcqqv st = settingsAt(1000.0);
  st.lowPassOn = 1;
  st.lowPassFreq = 100.0;
  st.notchOn[0] = 1;
  st.notchFreqLow[0] = 40.0;
  st.notchFreqHigh[0] = 0.0;
  st.notchOn[3] = 1;
  st.notchFreqLow[3] = 45.0;
  st.notchFreqHigh[3] = 55.0;
  st.notchOn[4] = 1;  // the fifth notch is not part of this bank
  CDigitFiltCoefMak01ButterworthAcqqv bank;
  // Counted as switched on, although the edge check then turns the empty notch off.
  EXPECT_EQ(bank.setCheckCoefs(st), 3);
  EXPECT_EQ(st.notchFreqHigh[0], 0.5);  // widthMin, not freqMin
  EXPECT_EQ(bank.iirSpecs[2].freqHigh, 0.5);
  EXPECT_EQ(bank.iirSpecs[2].enabled, 0);
  expectStage(bank.iirSpecs[5], 1, 3, 4, 45.0, 55.0);
  EXPECT_EQ(bank.getEnableFilters(), 2);
}

TEST(AcqBank, FilterInfoText) {
  CFilterDcLtSetAcqqv st = settingsAt(1000.0);
  st.lowPassOn = 1;
  st.lowPassFreq = 100.0;
  CDigitFiltCoefMak01ButterworthAcqqv bank;
  ASSERT_EQ(bank.setCheckCoefs(st), 1);
  ASSERT_EQ(bank.makeAllButterworthCoeffs(true), 1);
  std::vector<double> data(100, 1.0), tmp(100);
  bank.reset4RunTimeFilter();
  bank.fastFilterInC(data.data(), tmp.data(), 100, 0, 50, 0);
  // Coefficients: scipy.signal.butter(4, 0.2), b = [0.004824 0.019297 0.028946 0.019297
  // 0.004824], a = [1 -2.369513 2.313988 -1.054665 0.187379]. The block call leaves a[0] at 1.
  // designMode (3) passes through "%f" as the denormal with its bits: 0.000000.
  const std::string want =
      "0 \n"
      "1000.000000 \n0.100000 \n500.000000 \n0.500000 \n500.000000 \n"
      "0.000000 \n"
      "0 \n4 \n5 \n"
      "100.000000 \n0.100000 \n0.000000 \n1000.000000 \n"
      "\n"
      "0.004824  1.000000 \n"
      "0.019297  -2.369513 \n"
      "0.028946  2.313988 \n"
      "0.019297  -1.054665 \n"
      "0.004824  0.187379 \n"
      "\n"
      "1 \n1 \n0 \n";
  EXPECT_EQ(bank.getFilterInfo(0), want);
  // The baseline passes through "%d" as the low half of its bits: 1.0 prints 0.
  bank.baseline = 1.0;
  const std::string text = bank.getFilterInfo(7);
  EXPECT_EQ(text.substr(text.size() - 3), "0 \n");
}

}  // namespace
