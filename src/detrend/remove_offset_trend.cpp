#include "digitfilt/detrend/remove_offset_trend.h"

#include <algorithm>
#include <cstddef>
#include <limits>

namespace {

using std::int64_t;

// Four independent lanes: the compiler may not reorder a floating-point sum by itself.
double sumOf(const double* p, int64_t n) {
  double s0 = 0.0, s1 = 0.0, s2 = 0.0, s3 = 0.0;
  int64_t i = 0;
  for (; i + 4 <= n; i += 4) {
    s0 += p[i];
    s1 += p[i + 1];
    s2 += p[i + 2];
    s3 += p[i + 3];
  }
  for (; i < n; ++i) s0 += p[i];
  return (s0 + s1) + (s2 + s3);
}

void subtractConstant(double* p, int64_t n, double v) {
  for (int64_t i = 0; i < n; ++i) p[i] -= v;
}

// sy = sum of p[i], sxy = sum of (x0 + i) p[i], for i = 0..n-1. The abscissas are kept as doubles
// (exact integers below 2^53) so that no integer conversion sits in the loop.
void lineSums(const double* p, int64_t n, double x0, double& sy, double& sxy) {
  double y0 = 0.0, y1 = 0.0, y2 = 0.0, y3 = 0.0;
  double q0 = 0.0, q1 = 0.0, q2 = 0.0, q3 = 0.0;
  double x = x0;
  int64_t i = 0;
  for (; i + 4 <= n; i += 4, x += 4.0) {
    y0 += p[i];
    y1 += p[i + 1];
    y2 += p[i + 2];
    y3 += p[i + 3];
    q0 += x * p[i];
    q1 += (x + 1.0) * p[i + 1];
    q2 += (x + 2.0) * p[i + 2];
    q3 += (x + 3.0) * p[i + 3];
  }
  for (; i < n; ++i, x += 1.0) {
    y0 += p[i];
    q0 += x * p[i];
  }
  sy = (y0 + y1) + (y2 + y3);
  sxy = (q0 + q1) + (q2 + q3);
}

// p[i] -= slope (x0 + i) + intercept for i = 0..n-1.
void subtractLine(double* p, int64_t n, double slope, double intercept, double x0) {
  double x = x0;
  int64_t i = 0;
  for (; i + 4 <= n; i += 4, x += 4.0) {
    p[i] -= slope * x + intercept;
    p[i + 1] -= slope * (x + 1.0) + intercept;
    p[i + 2] -= slope * (x + 2.0) + intercept;
    p[i + 3] -= slope * (x + 3.0) + intercept;
  }
  for (; i < n; ++i, x += 1.0) p[i] -= slope * x + intercept;
}

struct Line {
  double slope;
  double intercept;
};

// Normal equations of the least-squares line over the absolute indices first..last, written with
// the closed-form index sums.
Line fitOverRange(double sy, double sxy, int64_t first, int64_t last) {
  const double f = static_cast<double>(first), l = static_cast<double>(last);
  const double m = l - f + 1.0;
  const double sx = (l * (l + 1.0) - (f - 1.0) * f) / 2.0;
  const double sxx = ((2.0 * l + 1.0) * l * (l + 1.0) - (2.0 * f - 1.0) * (f - 1.0) * f) / 6.0;
  const double det = sxx * m - sx * sx;
  return {(sxy * m - sy * sx) / det, (sy * sxx - sxy * sx) / det};
}

// first < 0 is refused as well, so nothing is ever read before the array.
bool rangeValid(const void* data, int64_t length, int64_t first, int64_t last) {
  return data != nullptr && first >= 0 && last > first && last < length && first < length;
}

bool rowsValid(double* const* rows, int64_t rowCount) {
  for (int64_t r = 0; r < rowCount; ++r)
    if (rows[r] == nullptr) return false;
  return true;
}

// The matrix forms run row by row with one accumulator per column: each column is still summed
// in row order, and the rows are walked contiguously.
template <class RowAt>
void columnOffsets(RowAt row, int64_t rowCount, int64_t colCount, int64_t first, int64_t last) {
  std::vector<double> offset(static_cast<std::size_t>(colCount), 0.0);
  double* o = offset.data();
  for (int64_t r = first; r < last; ++r) {
    const double* x = row(r);
    for (int64_t c = 0; c < colCount; ++c) o[c] += x[c];
  }
  const double divisor = static_cast<double>(last - first + 1);
  for (int64_t c = 0; c < colCount; ++c) o[c] /= divisor;
  for (int64_t r = 0; r < rowCount; ++r) {
    double* x = row(r);
    for (int64_t c = 0; c < colCount; ++c) x[c] -= o[c];
  }
}

template <class RowAt>
void columnMeans(RowAt row, int64_t rowCount, int64_t colCount) {
  std::vector<double> mean(static_cast<std::size_t>(colCount), 0.0);
  double* m = mean.data();
  for (int64_t r = 0; r < rowCount; ++r) {
    const double* x = row(r);
    for (int64_t c = 0; c < colCount; ++c) m[c] += x[c];
  }
  for (int64_t c = 0; c < colCount; ++c) m[c] /= static_cast<double>(rowCount);
  for (int64_t r = 0; r < rowCount; ++r) {
    double* x = row(r);
    for (int64_t c = 0; c < colCount; ++c) x[c] -= m[c];
  }
}

template <class RowAt>
void columnTrends(RowAt row, int64_t rowCount, int64_t colCount, int64_t first, int64_t last) {
  const auto n = static_cast<std::size_t>(colCount);
  std::vector<double> sy(n, 0.0), sxy(n, 0.0);
  for (int64_t r = first; r <= last; ++r) {
    const double* x = row(r);
    const double i = static_cast<double>(r);
    for (int64_t c = 0; c < colCount; ++c) {
      sy[c] += x[c];
      sxy[c] += i * x[c];
    }
  }
  std::vector<Line> lines(n);
  for (std::size_t c = 0; c < n; ++c) lines[c] = fitOverRange(sy[c], sxy[c], first, last);
  for (int64_t r = 0; r < rowCount; ++r) {
    double* x = row(r);
    const double i = static_cast<double>(r);
    for (int64_t c = 0; c < colCount; ++c) x[c] -= lines[c].slope * i + lines[c].intercept;
  }
}

int removeMean(double* data, int64_t n) {
  if (n < 1) return 1;
  if (data == nullptr) return 0;
  subtractConstant(data, n, sumOf(data, n) / static_cast<double>(n));
  return 1;
}

template <class Owner>
int correctRange(Owner& o, int64_t length) {
  // The lowest length has no predecessor: it stands for itself rather than overflow.
  const int64_t lastIndex = length == std::numeric_limits<int64_t>::min() ? length : length - 1;
  if (o.rangeFirst >= length) o.rangeFirst = lastIndex;
  if (o.rangeLast > length) o.rangeLast = lastIndex;
  return o.rangeFirst < o.rangeLast ? 1 : 0;
}

// Acquisition blocks: data[start..end] inside the array.
bool blockValid(const double* data, int64_t length, int64_t start, int64_t end) {
  return data != nullptr && start >= 0 && end >= 0 && end < length && start < length &&
         end - start + 1 >= 1;
}

// Starts a new history on the estimator's first call or on a block at index 0. Returns whether
// it did.
bool restartIfDue(CRemovOffsetTrendAcqqv& o, std::int32_t& firstFlag, std::vector<double>& history,
                  double* data, int64_t length, int64_t start, int64_t end, int channel) {
  if (!firstFlag && start != 0) return false;
  history.clear();
  o.blockChannel = channel;
  o.blockData = data;
  o.blockLength = length;
  o.blockStart = start;
  o.blockEnd = end;
  firstFlag = 0;
  return true;
}

// Drops the oldest values beyond windowLength, all in one move: the same result as removing
// them one at a time.
void trimHistory(std::vector<double>& history, int64_t windowLength) {
  const auto keep = static_cast<std::size_t>(std::max<int64_t>(windowLength, 0));
  if (history.size() > keep)
    history.erase(history.begin(), history.end() - static_cast<std::ptrdiff_t>(keep));
}

void appendBlock(std::vector<double>& history, const double* data, int64_t start, int64_t end) {
  history.insert(history.end(), data + start, data + end + 1);
}

}  // namespace

int CRemovOffsetTrendqv::removeMeanV(double* data, int64_t n) { return removeMean(data, n); }

int CRemovOffsetTrendqv::dcOffset(double* data, int64_t length, int64_t first, int64_t last) {
  if (!rangeValid(data, length, first, last)) return 0;
  const double offset =
      sumOf(data + first, last - first) / static_cast<double>(last - first + 1);
  subtractConstant(data, length, offset);
  return 1;
}

int CRemovOffsetTrendqv::dcOffsetTimeFreq(double** rows, int64_t rowCount, int64_t colCount,
                                          int64_t first, int64_t last) {
  if (!rangeValid(rows, rowCount, first, last)) return 0;
  if (colCount < 1) return 1;
  if (!rowsValid(rows, rowCount)) return 0;
  columnOffsets([rows](int64_t r) { return rows[r]; }, rowCount, colCount, first, last);
  return 1;
}

int CRemovOffsetTrendqv::dcOffsetTimeFreqx(double* data, int64_t rowCount, int64_t colCount,
                                           int64_t first, int64_t last) {
  if (!rangeValid(data, rowCount, first, last)) return 0;
  if (colCount < 1) return 1;
  columnOffsets([data, colCount](int64_t r) { return data + r * colCount; }, rowCount, colCount,
                first, last);
  return 1;
}

int CRemovOffsetTrendqv::linearTrendOff(double* data, int64_t length, int64_t first,
                                        int64_t last) {
  if (!rangeValid(data, length, first, last)) return 0;
  double sy = 0.0, sxy = 0.0;
  lineSums(data + first, last - first + 1, static_cast<double>(first), sy, sxy);
  const Line line = fitOverRange(sy, sxy, first, last);
  subtractLine(data, length, line.slope, line.intercept, 0.0);
  return 1;
}

int CRemovOffsetTrendqv::linearTrendOffTimeFreq(double** rows, int64_t rowCount,
                                                int64_t colCount, int64_t first, int64_t last) {
  if (!rangeValid(rows, rowCount, first, last)) return 0;
  if (colCount < 1) return 1;
  if (!rowsValid(rows, rowCount)) return 0;
  columnTrends([rows](int64_t r) { return rows[r]; }, rowCount, colCount, first, last);
  return 1;
}

int CRemovOffsetTrendqv::linearTrendOffTimeFreqx(double* data, int64_t rowCount,
                                                 int64_t colCount, int64_t first, int64_t last) {
  if (!rangeValid(data, rowCount, first, last)) return 0;
  if (colCount < 1) return 1;
  columnTrends([data, colCount](int64_t r) { return data + r * colCount; }, rowCount, colCount,
               first, last);
  return 1;
}

int CRemovOffsetTrendqv::removeMeanVTimeFreq(double** rows, int64_t rowCount,
                                             int64_t colCount) {
  if (colCount < 1 || rowCount < 1) return 1;
  if (rows == nullptr || !rowsValid(rows, rowCount)) return 0;
  columnMeans([rows](int64_t r) { return rows[r]; }, rowCount, colCount);
  return 1;
}

int CRemovOffsetTrendqv::removeMeanVTimeFreqx(double* data, int64_t rowCount, int64_t colCount) {
  if (colCount < 1 || rowCount < 1) return 1;
  if (data == nullptr) return 0;
  columnMeans([data, colCount](int64_t r) { return data + r * colCount; }, rowCount, colCount);
  return 1;
}

int CRemovOffsetTrendqv::checkCorrectDataRnge(int64_t length) {
  return correctRange(*this, length);
}

CRemovOffsetTrendAcqqv& CRemovOffsetTrendAcqqv::operator=(const CRemovOffsetTrendAcqqv& other) {
  if (this == &other) return *this;
  dcMode = other.dcMode;
  windowLength = other.windowLength;
  std::copy(std::begin(other.hostWords), std::end(other.hostWords), std::begin(hostWords));
  trendCount = other.trendCount;
  trendSumY = other.trendSumY;
  trendSumIY = other.trendSumIY;
  std::copy(std::begin(other.spareWords), std::end(other.spareWords), std::begin(spareWords));
  spareWord = other.spareWord;
  rangeFirst = other.rangeFirst;
  rangeLast = other.rangeLast;
  hostWord3 = other.hostWord3;
  dcHistory = other.dcHistory;
  return *this;
}

int CRemovOffsetTrendAcqqv::dcOffset(double* data, int64_t length, int64_t start, int64_t end,
                                     int channel) {
  if (!blockValid(data, length, start, end)) return 0;
  restartIfDue(*this, firstDc, dcHistory, data, length, start, end, channel);
  appendBlock(dcHistory, data, start, end);
  trimHistory(dcHistory, windowLength);
  if (dcHistory.empty()) return 0;
  const auto n = static_cast<int64_t>(dcHistory.size());
  subtractConstant(data + start, end - start + 1,
                   sumOf(dcHistory.data(), n) / static_cast<double>(n));
  blockStart = start;
  blockEnd = end;
  return 1;
}

int CRemovOffsetTrendAcqqv::medianFlt(double* data, int64_t length, int64_t start, int64_t end,
                                      int channel) {
  if (!blockValid(data, length, start, end)) return 0;
  restartIfDue(*this, firstMedian, medianHistory, data, length, start, end, channel);
  appendBlock(medianHistory, data, start, end);
  trimHistory(medianHistory, windowLength);
  if (medianHistory.empty()) return 0;
  // Selection on the history itself: it is left partly ordered, as hosts' results depend on.
  subtractConstant(data + start, end - start + 1, medianWork.quickMedianStd(medianHistory));
  blockStart = start;
  blockEnd = end;
  return 1;
}

int CRemovOffsetTrendAcqqv::linearTrendOff(double* data, int64_t length, int64_t start,
                                           int64_t end, int channel) {
  if (!blockValid(data, length, start, end)) return 0;
  if (restartIfDue(*this, firstTrend, trendHistory, data, length, start, end, channel)) {
    trendCount = 0;
    trendSumY = 0.0;
    trendSumIY = 0.0;
  }
  appendBlock(trendHistory, data, start, end);
  if (static_cast<int64_t>(trendHistory.size()) < windowLength) return 0;
  trimHistory(trendHistory, windowLength);
  const auto n = static_cast<int64_t>(trendHistory.size());
  if (n < 1) return 0;  // only with a window length below 1: no line to fit

  // Abscissas 0..N: the value at N, one past the history, is taken as 0 and adds nothing.
  double sy = 0.0, siy = 0.0;
  lineSums(trendHistory.data(), n, 0.0, sy, siy);
  trendSumY += sy;
  trendSumIY += siy;
  const Line line = fitOverRange(trendSumY, trendSumIY, 0, n);
  subtractLine(data + start, end - start + 1, line.slope, line.intercept, 0.0);
  blockStart = start;
  blockEnd = end;
  return 1;
}

int CRemovOffsetTrendAcqqv::removeMeanV(double* data, int64_t n) { return removeMean(data, n); }

int CRemovOffsetTrendAcqqv::setDcOffsetMode(int mode) {
  dcMode = mode;
  windowLength = mode != 0 ? 2048 : 1024;
  return 1;
}

int CRemovOffsetTrendAcqqv::checkCorrectDataRnge(int64_t length) {
  return correctRange(*this, length);
}
