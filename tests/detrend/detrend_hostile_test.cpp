// Hostile values for offset and trend removal: null data, lengths 0 and 1, ranges that are
// negative, reversed or past the end, extreme lengths, null rows, NaN and infinities in the
// samples, odd window lengths and enormous acquisition blocks. Buffers are exact-size heap
// blocks, so the sanitizer build proves nothing outside them is read or written.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <numeric>
#include <vector>

#include <digitfilt/digitfilt.h>

namespace {

const double kNan = std::numeric_limits<double>::quiet_NaN(),
             kInf = std::numeric_limits<double>::infinity();
const std::int64_t kMin = std::numeric_limits<std::int64_t>::min(),
                   kMax = std::numeric_limits<std::int64_t>::max();

std::vector<double> ramp(std::size_t n) {
  std::vector<double> v(n);
  std::iota(v.begin(), v.end(), 1.0);
  return v;
}

}  // namespace

TEST(DetrendHostile, RecordFormsRefuseBadRangesUntouched) {
  CRemovOffsetTrendqv r;
  const std::vector<double> orig = ramp(6);
  std::vector<double> v = orig;
  // Before the array, empty, reversed, at or past the end; empty, one-sample (no range fits)
  // and negative records.
  const struct { std::int64_t length, first, last; } bad[] = {
      {6, -1, 3}, {6, kMin, 2}, {6, 3, 3}, {6, 4, 2}, {6, 0, 6},
      {6, 0, kMax}, {0, 0, 0}, {1, 0, 0}, {-4, 0, 1}, {kMin, 0, 1}};
  for (const auto& b : bad) {
    SCOPED_TRACE(testing::Message() << b.length << " " << b.first << " " << b.last);
    EXPECT_EQ(r.dcOffset(v.data(), b.length, b.first, b.last), 0);
    EXPECT_EQ(r.linearTrendOff(v.data(), b.length, b.first, b.last), 0);
  }
  EXPECT_EQ(r.dcOffset(nullptr, 6, 0, 3), 0);
  EXPECT_EQ(r.linearTrendOff(nullptr, 6, 0, 3), 0);
  EXPECT_EQ(v, orig);
  // The mean: an empty or negative count succeeds without touching anything, null data with a
  // count fails.
  EXPECT_EQ(r.removeMeanV(nullptr, 0), 1);
  EXPECT_EQ(r.removeMeanV(nullptr, kMin), 1);
  EXPECT_EQ(r.removeMeanV(nullptr, 3), 0);
  // Two samples are the smallest record a range fits.
  std::vector<double> two{3.0, 5.0};
  EXPECT_EQ(r.linearTrendOff(two.data(), 2, 0, 1), 1);
  EXPECT_TRUE(std::fabs(two[0]) < 1e-12 && std::fabs(two[1]) < 1e-12);
}

TEST(DetrendHostile, NonFiniteSamplesSpreadOnlyThroughTheFit) {
  CRemovOffsetTrendqv r;
  // A NaN outside the summed range stays where it is; everything else is corrected.
  std::vector<double> v{1.0, 2.0, 3.0, 4.0, kNan};
  EXPECT_EQ(r.dcOffset(v.data(), 5, 0, 3), 1);
  EXPECT_DOUBLE_EQ(v[0], -0.5);
  EXPECT_DOUBLE_EQ(v[3], 2.5);
  EXPECT_TRUE(std::isnan(v[4]));
  // Inside the range it reaches every sample.
  std::vector<double> w{1.0, kInf, 3.0, 4.0};
  EXPECT_EQ(r.linearTrendOff(w.data(), 4, 0, 3), 1);
  for (double x : w) EXPECT_TRUE(std::isnan(x));
  std::vector<double> m{kNan, 1.0};
  EXPECT_EQ(r.removeMeanV(m.data(), 2), 1);
  EXPECT_TRUE(std::isnan(m[1]));
}

TEST(DetrendHostile, MatrixFormsWithEmptyShapesAndNullRows) {
  CRemovOffsetTrendqv r;
  std::vector<double> row0{1.0, 2.0}, row1{3.0, 4.0}, row2{5.0, 9.0};
  double* rows[3] = {row0.data(), nullptr, row2.data()};
  // A null row is refused before anything changes.
  EXPECT_EQ(r.dcOffsetTimeFreq(rows, 3, 2, 0, 2), 0);
  EXPECT_EQ(r.linearTrendOffTimeFreq(rows, 3, 2, 0, 2), 0);
  EXPECT_EQ(r.removeMeanVTimeFreq(rows, 3, 2), 0);
  EXPECT_EQ(row0, (std::vector<double>{1.0, 2.0}));
  EXPECT_EQ(r.dcOffsetTimeFreq(nullptr, 3, 2, 0, 2), 0);
  EXPECT_EQ(r.removeMeanVTimeFreq(nullptr, 3, 2), 0);
  EXPECT_EQ(r.removeMeanVTimeFreqx(nullptr, 3, 2), 0);
  // No columns: success without work, even for an enormous row count and no data behind it.
  rows[1] = row1.data();
  EXPECT_EQ(r.dcOffsetTimeFreq(rows, 3, 0, 0, 2), 1);
  EXPECT_EQ(r.linearTrendOffTimeFreqx(row0.data(), 3, kMin, 0, 2), 1);
  EXPECT_EQ(r.removeMeanVTimeFreqx(nullptr, kMax, 0), 1);
  EXPECT_EQ(r.removeMeanVTimeFreq(nullptr, 0, kMax), 1);
  // No rows: every range is refused before a column buffer is sized by the count.
  EXPECT_EQ(r.dcOffsetTimeFreqx(row0.data(), 0, kMax, 0, 1), 0);
  EXPECT_EQ(r.linearTrendOffTimeFreqx(row0.data(), 1, kMax, 0, 1), 0);
  EXPECT_EQ(row0, (std::vector<double>{1.0, 2.0}));
  // A valid call over the three rows works as usual.
  EXPECT_EQ(r.removeMeanVTimeFreq(rows, 3, 2), 1);
  EXPECT_DOUBLE_EQ(row2[1], 4.0);
}

TEST(DetrendHostile, AcquisitionBlocksOutsideTheArrayAreRefusedUntouched) {
  CRemovOffsetTrendAcqqv acq;
  const std::vector<double> orig = ramp(4);
  std::vector<double> v = orig;
  const struct { std::int64_t length, start, end; } bad[] = {
      {4, -1, 2}, {4, 2, 1}, {4, 0, 4}, {4, 4, 4}, {0, 0, 0}, {4, kMin, kMax}, {kMax, 0, kMax},
      {-1, 0, 0}, {4, 0, -1}, {4, 3, 2}};
  for (const auto& b : bad) {
    SCOPED_TRACE(testing::Message() << b.length << " " << b.start << " " << b.end);
    EXPECT_EQ(acq.dcOffset(v.data(), b.length, b.start, b.end, 0), 0);
    EXPECT_EQ(acq.medianFlt(v.data(), b.length, b.start, b.end, 0), 0);
    EXPECT_EQ(acq.linearTrendOff(v.data(), b.length, b.start, b.end, 0), 0);
  }
  EXPECT_EQ(acq.dcOffset(nullptr, 4, 0, 3, 0), 0);
  EXPECT_EQ(v, orig);
  EXPECT_TRUE(acq.dcHistory.empty() && acq.medianHistory.empty() && acq.trendHistory.empty());
  EXPECT_EQ(acq.firstDc, 1);  // a refused block starts nothing
}

TEST(DetrendHostile, WindowLengthsOfZeroOneAndBelow) {
  for (std::int64_t window : {kMin, std::int64_t{-1}, std::int64_t{0}}) {
    SCOPED_TRACE(window);
    CRemovOffsetTrendAcqqv acq;
    acq.windowLength = window;
    std::vector<double> v = ramp(5);
    // Every history is trimmed to nothing: no estimate, so the block is left alone.
    EXPECT_EQ(acq.dcOffset(v.data(), 5, 0, 4, 0), 0);
    EXPECT_EQ(acq.medianFlt(v.data(), 5, 0, 4, 0), 0);
    EXPECT_EQ(acq.linearTrendOff(v.data(), 5, 0, 4, 0), 0);
    EXPECT_EQ(v, ramp(5));
    EXPECT_TRUE(acq.dcHistory.empty() && acq.medianHistory.empty() && acq.trendHistory.empty());
  }
  // One sample of history: the offset is the block's last sample.
  CRemovOffsetTrendAcqqv acq;
  acq.windowLength = 1;
  std::vector<double> v{4.0, 6.0};
  EXPECT_EQ(acq.dcOffset(v.data(), 2, 0, 1, 0), 1);
  EXPECT_EQ(v, (std::vector<double>{-2.0, 0.0}));
  std::vector<double> t{4.0, 6.0};
  EXPECT_EQ(acq.linearTrendOff(t.data(), 2, 0, 1, 0), 1);  // a two-point fit over 0..1
  EXPECT_TRUE(std::isfinite(t[0]) && std::isfinite(t[1]));
}

TEST(DetrendHostile, NanLeavesTheSlidingWindowWithItsBlock) {
  CRemovOffsetTrendAcqqv acq;
  acq.windowLength = 4;
  std::vector<double> first{kNan, 1.0, 2.0, 3.0};
  EXPECT_EQ(acq.dcOffset(first.data(), 4, 0, 3, 0), 1);
  for (double x : first) EXPECT_TRUE(std::isnan(x));
  std::vector<double> next(8, 5.0);
  EXPECT_EQ(acq.dcOffset(next.data(), 8, 4, 7, 0), 1);  // the NaN has slid out
  for (int i = 4; i < 8; ++i) EXPECT_EQ(next[i], 0.0);

  // The median selection returns with NaN in its history, and recovers the same way.
  CRemovOffsetTrendAcqqv med;
  med.windowLength = 3;
  std::vector<double> a{kNan, kNan, 1.0};
  EXPECT_EQ(med.medianFlt(a.data(), 3, 0, 2, 0), 1);
  std::vector<double> b(6, 2.0);
  EXPECT_EQ(med.medianFlt(b.data(), 6, 3, 5, 0), 1);
  for (int i = 3; i < 6; ++i) EXPECT_EQ(b[i], 0.0);

  // Infinity in the trend history makes its running sums non-finite from then on (they are
  // never cleared until a restart), and a block starting at 0 clears them.
  CRemovOffsetTrendAcqqv trend;
  trend.windowLength = 2;
  std::vector<double> c{kInf, 1.0};
  EXPECT_EQ(trend.linearTrendOff(c.data(), 2, 0, 1, 0), 1);
  EXPECT_FALSE(std::isfinite(trend.trendSumY));
  std::vector<double> d{1.0, 3.0};
  EXPECT_EQ(trend.linearTrendOff(d.data(), 2, 0, 1, 0), 1);
  EXPECT_TRUE(std::isfinite(trend.trendSumY));
}

TEST(DetrendHostile, EnormousBlockAgainstTheWindow) {
  // A block forty times the window: only its newest 1024 samples remain in each history.
  CRemovOffsetTrendAcqqv acq;
  acq.setDcOffsetMode(0);
  const std::int64_t n = 40 * 1024;
  std::vector<double> v(n);
  for (std::int64_t i = 0; i < n; ++i) v[i] = static_cast<double>(i % 1024) + (i >= n - 1024) * 0.5;
  std::vector<double> w = v, t = v;
  EXPECT_EQ(acq.dcOffset(v.data(), n, 0, n - 1, 0), 1);
  EXPECT_DOUBLE_EQ(v[n - 1], 1023.5 - (511.5 + 0.5));  // mean of the newest 1024
  EXPECT_EQ(acq.medianFlt(w.data(), n, 0, n - 1, 0), 1);
  EXPECT_DOUBLE_EQ(w[n - 1], 1023.5 - 511.5);  // lower median of 0.5 .. 1023.5
  EXPECT_EQ(acq.linearTrendOff(t.data(), n, 0, n - 1, 0), 1);
  EXPECT_TRUE(acq.dcHistory.size() == 1024u && acq.medianHistory.size() == 1024u &&
              acq.trendHistory.size() == 1024u);
}
