#include <cmath>
#include <limits>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>
#include <digitfilt/digitfilt.h>

#include "support/message_capture.h"

namespace {

using digitfilt::test::MessageCapture;

TEST(Messages, HandlerReceivesTextAndIsRestored) {
  std::wstring seen;
  auto previous = digitfilt::setMessageHandler([&](const std::wstring& t) {
    seen = t;
    return 7;
  });
  EXPECT_EQ(digitfilt::showMessage(L"hello\n"), 7);
  EXPECT_EQ(seen, L"hello\n");
  EXPECT_EQ(digitfilt::showMessageF(L"(%d->%d) %.2f %ls", 12, 9, 1.5, L"x"), 7);
  EXPECT_EQ(seen, L"(12->9) 1.50 x");
  auto mine = digitfilt::setMessageHandler(previous);
  EXPECT_TRUE(static_cast<bool>(mine));
}

TEST(Messages, DefaultHandlerWritesToStderr) {
  auto previous = digitfilt::setMessageHandler(nullptr);
  testing::internal::CaptureStderr();
  digitfilt::showMessage(L"to stderr");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "to stderr\n");
  digitfilt::setMessageHandler(previous);
}

TEST(Messages, FormattingGrowsForLongTexts) {
  const std::wstring longArg(5000, L'a');
  const std::wstring text = digitfilt::formatMessage(L"<%ls>", longArg.c_str());
  EXPECT_EQ(text.size(), 5002u);
  EXPECT_EQ(digitfilt::formatText("%lld \n", 42LL), "42 \n");
}

TEST(PtrList, OwnsEntriesToleratesNullsAndChecksIndices) {
  digitfilt::PtrList<int> list;
  EXPECT_EQ(list.add(std::make_unique<int>(1)), 0);
  list.Add(nullptr);
  list.setAtGrow(4, std::make_unique<int>(5));
  EXPECT_EQ(list.GetSize(), 5);
  EXPECT_EQ(*list.at(0), 1);
  EXPECT_EQ(list.at(1), nullptr);
  EXPECT_EQ(list.at(3), nullptr);
  EXPECT_EQ(*list[4], 5);
  EXPECT_THROW(list.at(5), std::invalid_argument);
  EXPECT_THROW(list.at(-1), std::invalid_argument);
  EXPECT_THROW(list.setAtGrow(-1, nullptr), std::invalid_argument);
  list.setSize(2);
  EXPECT_EQ(list.size(), 2);
  EXPECT_THROW(list.GetAt(2), std::invalid_argument);
  list.RemoveAll();
  EXPECT_TRUE(list.empty());
}

TEST(AcqSettings, GuardNeedsRateAndChannels) {
  MessageCapture capture;
  CFilterDcLtSetAcqqv s;
  s.acqSampleRate = 1000.0;
  EXPECT_FALSE(digitfilt::checkAcqSettingsReady(s));  // no channel
  s.channelCount = 1;
  s.acqSampleRate = 0.0;
  EXPECT_FALSE(digitfilt::checkAcqSettingsReady(s));
  s.acqSampleRate = 500.0;
  EXPECT_TRUE(digitfilt::checkAcqSettingsReady(s));
  ASSERT_EQ(capture.messages.size(), 2u);
  EXPECT_EQ(capture.messages[0], L"Please setup the filter parameters first!");
}

TEST(AcqSettings, PowerLineBaseAndHarmonicLimit) {
  MessageCapture capture;
  CFilterDcLtSetAcqqv s;
  s.acqSampleRate = 1000.0;
  s.channelCount = 1;
  s.powerLineType = 1;
  s.powerLineFreq = 33.0;
  EXPECT_EQ(digitfilt::powerLineBase(s), 50.0);
  s.powerLineType = 0;
  EXPECT_EQ(digitfilt::powerLineBase(s), 60.0);
  s.powerLineType = 5;
  EXPECT_EQ(digitfilt::powerLineBase(s), 33.0);
  // 1000 Hz with 50 Hz mains: limit 10, so 12 harmonics become floor(9.99) = 9.
  s.powerLineHarmonics = 12;
  digitfilt::limitPowerLineHarmonics(s, 50.0);
  EXPECT_EQ(s.powerLineHarmonics, 9);
  ASSERT_EQ(capture.messages.size(), 1u);
  EXPECT_EQ(capture.messages[0], L"Power-line noise harmonic is out of the filtering range (12->9)!?");
  // Below the limit nothing changes; a zero base makes the limit infinite.
  digitfilt::limitPowerLineHarmonics(s, 50.0);
  digitfilt::limitPowerLineHarmonics(s, 0.0);
  EXPECT_EQ(capture.messages.size(), 1u);
  EXPECT_EQ(s.powerLineHarmonics, 9);
}

TEST(FreqResponse, DisabledAndEmptyStages) {
  filter_iirspec s;
  s.enabled = 2;
  s.numCoefs = 3;
  s.coefs[0] = 5.0;
  EXPECT_EQ(CMFilterFaceqv::freqResponse(&s, 1000.0, 10.0), 1.0);
  s.enabled = 0;
  EXPECT_EQ(CMFilterFaceqv::freqResponse(&s, 1000.0, 10.0), 1.0);
  filter_iirspec empty;
  empty.enabled = 1;
  empty.coefs[20] = 1.0;
  EXPECT_EQ(CMFilterFaceqv::freqResponse(&empty, 1000.0, 10.0), 0.0);
  EXPECT_EQ(empty.coefs[20], 0.0) << "a[0] is cleared in the caller's record";
}

TEST(FreqResponse, SimpleStagesAgainstClosedForms) {
  // Two-tap average: |H| = |cos(w / 2)|.
  filter_iirspec avg;
  avg.enabled = 1;
  avg.numCoefs = 2;
  avg.coefs[0] = avg.coefs[1] = 0.5;
  avg.coefs[20] = 1.0;
  for (double f : {0.0, 100.0, 250.0, 400.0})
    EXPECT_NEAR(CMFilterFaceqv::freqResponse(&avg, 1000.0, f),
                std::fabs(std::cos(digitfilt::kPi * f / 1000.0)), 1e-12);
  // One pole: y[n] = x[n] + 0.5 y[n-1], |H| = 1 / |1 - 0.5 e^-jw|; the rate argument rules.
  filter_iirspec pole;
  pole.enabled = 1;
  pole.numCoefs = 2;
  pole.coefs[0] = 1.0;
  pole.coefs[21] = -0.5;
  pole.sampleRate = 1.0;
  EXPECT_NEAR(CMFilterFaceqv::freqResponse(&pole, 1000.0, 0.0), 2.0, 1e-12);
  EXPECT_NEAR(CMFilterFaceqv::freqResponse(&pole, 1000.0, 500.0), 1.0 / 1.5, 1e-12);
  // A denominator that vanishes exactly: D = 1 - 1 at 0 Hz.
  filter_iirspec integrator = pole;
  integrator.coefs[21] = -1.0;
  EXPECT_TRUE(std::isinf(CMFilterFaceqv::freqResponse(&integrator, 1000.0, 0.0)));
}

}  // namespace
