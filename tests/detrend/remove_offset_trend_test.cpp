#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <numeric>
#include <random>
#include <utility>
#include <vector>

#include <digitfilt/digitfilt.h>

namespace {

std::vector<double> randomVector(std::size_t n, unsigned seed) {
  std::mt19937 gen(seed);
  std::uniform_real_distribution<double> u(-5.0, 5.0);
  std::vector<double> v(n);
  for (double& x : v) x = u(gen);
  return v;
}

void expectNear(const std::vector<double>& got, const std::vector<double>& want, double tol) {
  ASSERT_EQ(got.size(), want.size());
  for (std::size_t i = 0; i < got.size(); ++i) EXPECT_NEAR(got[i], want[i], tol) << "at " << i;
}

// Least-squares line through (x[i], y[i]) by centred sums: a formulation independent of the
// library's closed-form index sums.
std::pair<double, double> fitLine(const std::vector<double>& x, const std::vector<double>& y) {
  const double n = static_cast<double>(x.size());
  const double mx = std::accumulate(x.begin(), x.end(), 0.0) / n;
  const double my = std::accumulate(y.begin(), y.end(), 0.0) / n;
  double sxy = 0.0, sxx = 0.0;
  for (std::size_t i = 0; i < x.size(); ++i) {
    sxy += (x[i] - mx) * (y[i] - my);
    sxx += (x[i] - mx) * (x[i] - mx);
  }
  const double slope = sxy / sxx;
  return {slope, my - slope * mx};
}

// A rows x cols matrix both flat (row-major) and as row pointers into the same storage.
struct Matrix {
  Matrix(std::int64_t r, std::int64_t c, unsigned seed)
      : rows(r), cols(c), flat(randomVector(static_cast<std::size_t>(r * c), seed)) {
    for (std::int64_t i = 0; i < r; ++i) ptrs.push_back(flat.data() + i * c);
  }
  std::vector<double> column(std::int64_t c) const {
    std::vector<double> v;
    for (std::int64_t r = 0; r < rows; ++r) v.push_back(flat[r * cols + c]);
    return v;
  }
  std::int64_t rows, cols;
  std::vector<double> flat;
  std::vector<double*> ptrs;
};

}  // namespace

TEST(RemovOffsetTrend, DcOffsetDividesByOneMoreThanItSums) {
  CRemovOffsetTrendqv d;
  std::vector<double> x = {1, 2, 3, 4, 5};
  EXPECT_EQ(d.dcOffset(x.data(), 5, 0, 3), 1);
  expectNear(x, {-0.5, 0.5, 1.5, 2.5, 3.5}, 1e-15);
}

// The vector forms' rejections are in the hostile suite; the matrix forms share them.
TEST(RemovOffsetTrend, MatrixFormsRejectBadRangesUntouched) {
  CRemovOffsetTrendqv d;
  const std::int64_t bad[][2] = {{2, 2}, {3, 2}, {0, 5}, {-1, 3}, {5, 6}};
  for (const auto& r : bad) {
    SCOPED_TRACE(testing::Message() << r[0] << ".." << r[1]);
    Matrix m(5, 2, 1);
    const std::vector<double> before = m.flat;
    EXPECT_EQ(d.dcOffsetTimeFreqx(m.flat.data(), 5, 2, r[0], r[1]), 0);
    EXPECT_EQ(d.linearTrendOffTimeFreq(m.ptrs.data(), 5, 2, r[0], r[1]), 0);
    EXPECT_EQ(m.flat, before);
  }
}

TEST(RemovOffsetTrend, ExactLineLeavesZerosWhateverTheFittedRange) {
  CRemovOffsetTrendqv d;
  const std::pair<std::int64_t, std::int64_t> ranges[] = {{0, 1}, {0, 19}, {3, 7}, {10, 19},
                                                          {18, 19}};
  for (const auto& [first, last] : ranges) {
    SCOPED_TRACE(testing::Message() << first << ".." << last);
    std::vector<double> y(20);
    for (int i = 0; i < 20; ++i) y[i] = 2.0 * i + 1.0;
    EXPECT_EQ(d.linearTrendOff(y.data(), 20, first, last), 1);
    expectNear(y, std::vector<double>(20, 0.0), 1e-11);
  }
}

TEST(RemovOffsetTrend, TrendFitOverRangeIsExtendedOverTheWholeArray) {
  CRemovOffsetTrendqv d;
  std::vector<double> y = randomVector(40, 3);
  const std::int64_t first = 5, last = 29;
  std::vector<double> xs, ys;
  for (std::int64_t i = first; i <= last; ++i) {
    xs.push_back(static_cast<double>(i));
    ys.push_back(y[i]);
  }
  const auto [slope, intercept] = fitLine(xs, ys);
  std::vector<double> want = y;
  for (int i = 0; i < 40; ++i) want[i] -= slope * i + intercept;
  EXPECT_EQ(d.linearTrendOff(y.data(), 40, first, last), 1);
  expectNear(y, want, 1e-12);
}

TEST(RemovOffsetTrend, RemoveMeanV) {
  CRemovOffsetTrendqv d;
  std::vector<double> x = {1, 2, 3, 6};
  EXPECT_EQ(d.removeMeanV(x.data(), 4), 1);
  expectNear(x, {-2, -1, 0, 3}, 1e-15);
}

TEST(RemovOffsetTrend, MatrixFormsEqualPerColumnVectorCalls) {
  const std::int64_t rows = 13, cols = 5, first = 2, last = 9;
  CRemovOffsetTrendqv d;
  using VectorOp = int (CRemovOffsetTrendqv::*)(double*, std::int64_t, std::int64_t, std::int64_t);
  using FlatOp = int (CRemovOffsetTrendqv::*)(double*, std::int64_t, std::int64_t, std::int64_t,
                                               std::int64_t);
  using RowsOp = int (CRemovOffsetTrendqv::*)(double**, std::int64_t, std::int64_t, std::int64_t,
                                               std::int64_t);
  const struct {
    VectorOp vec;
    FlatOp flat;
    RowsOp rows;
  } ops[] = {{&CRemovOffsetTrendqv::dcOffset, &CRemovOffsetTrendqv::dcOffsetTimeFreqx,
              &CRemovOffsetTrendqv::dcOffsetTimeFreq},
             {&CRemovOffsetTrendqv::linearTrendOff, &CRemovOffsetTrendqv::linearTrendOffTimeFreqx,
              &CRemovOffsetTrendqv::linearTrendOffTimeFreq}};
  for (const auto& op : ops) {
    Matrix a(rows, cols, 11), b(rows, cols, 11);
    EXPECT_EQ((d.*op.flat)(a.flat.data(), rows, cols, first, last), 1);
    EXPECT_EQ((d.*op.rows)(b.ptrs.data(), rows, cols, first, last), 1);
    const Matrix orig(rows, cols, 11);
    for (std::int64_t c = 0; c < cols; ++c) {
      std::vector<double> v = orig.column(c);
      EXPECT_EQ((d.*op.vec)(v.data(), rows, first, last), 1);
      expectNear(a.column(c), v, 1e-12);
      expectNear(b.column(c), v, 1e-12);
    }
  }
  Matrix a(rows, cols, 12), b(rows, cols, 12);
  const Matrix orig(rows, cols, 12);
  EXPECT_EQ(d.removeMeanVTimeFreqx(a.flat.data(), rows, cols), 1);
  EXPECT_EQ(d.removeMeanVTimeFreq(b.ptrs.data(), rows, cols), 1);
  for (std::int64_t c = 0; c < cols; ++c) {
    std::vector<double> v = orig.column(c);
    d.removeMeanV(v.data(), rows);
    expectNear(a.column(c), v, 1e-12);
    expectNear(b.column(c), v, 1e-12);
  }
}

// First is compared with >=, last with >; both forms alike. The lowest length has no
// predecessor: it stands for itself instead of wrapping around.
TEST(RemovOffsetTrend, CheckCorrectDataRangeComparesFirstAndLastDifferently) {
  const std::int64_t kMin = std::numeric_limits<std::int64_t>::min(),
                     kMax = std::numeric_limits<std::int64_t>::max();
  const struct {
    bool acq;
    std::int64_t first, last, length;
    int ok;
    std::int64_t wantFirst, wantLast;
  } cases[] = {{false, 100, 100, 100, 1, 99, 100}, {false, 100, 101, 100, 0, 99, 99},
               {true, 100, 100, 100, 1, 99, 100},  {false, 0, 5, 0, 0, -1, -1},
               {false, 3, 4, kMin, 0, kMin, kMin}, {true, kMax, kMax, kMax, 1, kMax - 1, kMax},
               {true, 3, 4, kMin, 0, kMin, kMin}};
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << c.acq << " " << c.first << " " << c.last << " " << c.length);
    CRemovOffsetTrendqv d;
    CRemovOffsetTrendAcqqv a;
    d.rangeFirst = a.rangeFirst = c.first;
    d.rangeLast = a.rangeLast = c.last;
    EXPECT_EQ(c.acq ? a.checkCorrectDataRnge(c.length) : d.checkCorrectDataRnge(c.length), c.ok);
    EXPECT_EQ(c.acq ? a.rangeFirst : d.rangeFirst, c.wantFirst);
    EXPECT_EQ(c.acq ? a.rangeLast : d.rangeLast, c.wantLast);
  }
}

TEST(RemovOffsetTrendAcq, WindowLengthFollowsTheMode) {
  CRemovOffsetTrendAcqqv acq;
  EXPECT_TRUE(acq.dcMode == 0 && acq.windowLength == 2048);
  EXPECT_EQ(acq.setDcOffsetMode(0), 1);
  EXPECT_EQ(acq.windowLength, 1024);
  acq.setDcOffsetMode(3);
  EXPECT_TRUE(acq.dcMode == 3 && acq.windowLength == 2048);
}

// Blocks of 3 into a window of 8: each block loses the mean of the last (up to) 8 raw samples.
// The second record starts again at index 0, which starts a new history.
TEST(RemovOffsetTrendAcq, DcOffsetSlidesOverBlocksAndRestartsAtZero) {
  CRemovOffsetTrendAcqqv acq;
  acq.windowLength = 8;
  for (unsigned rec = 0; rec < 2; ++rec) {
    SCOPED_TRACE(rec);
    const std::vector<double> raw = randomVector(15, 5 + rec);
    std::vector<double> data = raw;
    for (std::int64_t start = 0; start < 15; start += 3) {
      EXPECT_EQ(acq.dcOffset(data.data(), 15, start, start + 2, 4), 1);
      const std::int64_t from = std::max<std::int64_t>(0, start + 3 - 8);
      const double mean =
          std::accumulate(raw.begin() + from, raw.begin() + start + 3, 0.0) / (start + 3 - from);
      for (int k = 0; k < 3; ++k) EXPECT_NEAR(data[start + k], raw[start + k] - mean, 1e-12);
      EXPECT_TRUE(acq.blockStart == start && acq.blockEnd == start + 2 &&
                  acq.blockData == data.data());
    }
    EXPECT_EQ(acq.dcHistory, std::vector<double>(raw.begin() + 7, raw.end()));
  }
  EXPECT_TRUE(acq.firstDc == 0 && acq.blockChannel == 4 && acq.blockLength == 15);
  EXPECT_TRUE(acq.medianHistory.empty());  // each estimator keeps its own history
}

// [4 3 2 1] gives the lower median 2 and leaves the history ordered [1 2 3 4]; after [10 10]
// arrives the trim drops the first two positions (1 and 2, not the oldest 4 and 3), so the
// median of [3 4 10 10] is 4.
TEST(RemovOffsetTrendAcq, MedianSelectionReordersItsHistory) {
  CRemovOffsetTrendAcqqv acq;
  acq.windowLength = 4;
  std::vector<double> x = {4, 3, 2, 1, 10, 10};
  EXPECT_EQ(acq.medianFlt(x.data(), 6, 0, 3, 0), 1);
  EXPECT_EQ(std::vector<double>(x.begin(), x.begin() + 4), (std::vector<double>{2, 1, 0, -1}));
  EXPECT_EQ(acq.medianHistory, (std::vector<double>{1, 2, 3, 4}));
  EXPECT_EQ(acq.medianFlt(x.data(), 6, 4, 5, 0), 1);
  EXPECT_TRUE(x[4] == 6.0 && x[5] == 6.0);
  EXPECT_EQ(acq.medianFlt(x.data(), 6, 0, 0, 0), 1);  // restart: history is the one sample
  EXPECT_EQ(x[0], 0.0);
  EXPECT_EQ(acq.medianHistory, std::vector<double>{2.0});
}

TEST(RemovOffsetTrendAcq, MedianOfRandomBlocksBeforeTheWindowFills) {
  CRemovOffsetTrendAcqqv acq;
  const std::vector<double> raw = randomVector(301, 8);
  std::vector<double> data = raw;
  for (std::int64_t start = 0; start < 301; start += 100) {
    const std::int64_t end = std::min<std::int64_t>(start + 99, 300);
    EXPECT_EQ(acq.medianFlt(data.data(), 301, start, end, 0), 1);
    std::vector<double> seen(raw.begin(), raw.begin() + end + 1);
    std::sort(seen.begin(), seen.end());
    const double median = seen[(seen.size() - 1) / 2];
    for (std::int64_t i = start; i <= end; ++i) EXPECT_EQ(data[i], raw[i] - median);
  }
}

// Window of 8, a constant 3 in blocks of 4. The fit runs over (0..7, 3) and (8, 0): index 8 is
// past the history and reads as 0. Sums run on between calls, so a second call with the same
// history removes twice the line; a block at index 0 clears them.
TEST(RemovOffsetTrendAcq, TrendWaitsForAFullWindowThenAccumulatesItsSums) {
  CRemovOffsetTrendAcqqv acq;
  acq.windowLength = 8;
  std::vector<double> xs, ys;
  for (int i = 0; i <= 8; ++i) {
    xs.push_back(i);
    ys.push_back(i < 8 ? 3.0 : 0.0);
  }
  const auto [slope, intercept] = fitLine(xs, ys);

  std::vector<double> x(16, 3.0);
  EXPECT_EQ(acq.linearTrendOff(x.data(), 16, 0, 3, 0), 0);
  EXPECT_EQ(x, std::vector<double>(16, 3.0));
  EXPECT_EQ(acq.linearTrendOff(x.data(), 16, 4, 7, 0), 1);
  for (int k = 0; k < 4; ++k) EXPECT_NEAR(x[4 + k], 3.0 - (slope * k + intercept), 1e-12);
  EXPECT_EQ(acq.linearTrendOff(x.data(), 16, 8, 11, 0), 1);
  for (int k = 0; k < 4; ++k) EXPECT_NEAR(x[8 + k], 3.0 - 2.0 * (slope * k + intercept), 1e-12);
  EXPECT_EQ(acq.trendHistory, std::vector<double>(8, 3.0));

  std::vector<double> y(8, 3.0);
  EXPECT_EQ(acq.linearTrendOff(y.data(), 8, 0, 7, 1), 1);  // restart, window filled at once
  for (int k = 0; k < 8; ++k) EXPECT_NEAR(y[k], 3.0 - (slope * k + intercept), 1e-12);
  EXPECT_EQ(acq.blockChannel, 1);
}

TEST(RemovOffsetTrendAcq, CopyConstructionCopiesAllAssignmentOnlyPart) {
  CRemovOffsetTrendAcqqv src;
  src.windowLength = 4;
  std::vector<double> x = {1, 2, 3, 4, 5};
  src.dcOffset(x.data(), 5, 0, 4, 2);
  src.medianFlt(x.data(), 5, 0, 4, 2);
  src.linearTrendOff(x.data(), 5, 0, 4, 2);
  src.rangeLast = 7;

  const CRemovOffsetTrendAcqqv copy(src);
  EXPECT_EQ(copy.medianHistory, src.medianHistory);
  EXPECT_EQ(copy.trendHistory, src.trendHistory);
  EXPECT_EQ(copy.firstTrend, 0);

  CRemovOffsetTrendAcqqv target;
  target = src;
  EXPECT_TRUE(target.windowLength == 4 && target.rangeLast == 7);
  EXPECT_TRUE(target.trendSumY == src.trendSumY && target.dcHistory == src.dcHistory);
  EXPECT_TRUE(target.medianHistory.empty() && target.trendHistory.empty());
  EXPECT_TRUE(target.firstDc == 1 && target.blockData == nullptr && target.blockChannel == 0);
}
