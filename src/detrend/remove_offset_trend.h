#pragma once
// Removal of a constant offset or a straight-line trend, in place. CRemovOffsetTrendqv works on a
// whole record (a vector, or each column of a time-frequency matrix); CRemovOffsetTrendAcqqv works
// block by block on one acquisition channel from sliding histories of recent samples. Operations
// return 1 on success and 0 on bad arguments; neither class shows a message.
#include <cstdint>
#include <vector>

#include "digitfilt/realtime/rtf_median.h"

// The "x" forms take a flat row-major matrix (element (r, c) at data[r * colCount + c]); the
// others an array of row pointers (rows[r][c]). A range is valid when 0 <= first < last < length
// (rowCount for the matrix forms) and the data pointer is not null.
class CRemovOffsetTrendqv {
 public:
  CRemovOffsetTrendqv() = default;

  // Subtracts the mean of data[0..n-1]; n < 1 changes nothing and succeeds.
  int removeMeanV(double* data, std::int64_t n);

  // Deliberate, as hosts expect: the sum covers data[first..last-1] while the divisor counts
  // last - first + 1 samples, and the offset is removed from the whole array.
  int dcOffset(double* data, std::int64_t length, std::int64_t first, std::int64_t last);
  int dcOffsetTimeFreq(double** rows, std::int64_t rowCount, std::int64_t colCount,
                       std::int64_t first, std::int64_t last);
  int dcOffsetTimeFreqx(double* data, std::int64_t rowCount, std::int64_t colCount,
                        std::int64_t first, std::int64_t last);

  // Least-squares line over the absolute indices first..last (last included), subtracted at
  // every index of the array.
  int linearTrendOff(double* data, std::int64_t length, std::int64_t first, std::int64_t last);
  int linearTrendOffTimeFreq(double** rows, std::int64_t rowCount, std::int64_t colCount,
                             std::int64_t first, std::int64_t last);
  int linearTrendOffTimeFreqx(double* data, std::int64_t rowCount, std::int64_t colCount,
                              std::int64_t first, std::int64_t last);

  // Subtracts each column's mean over all rows; colCount < 1 or rowCount < 1 does nothing.
  int removeMeanVTimeFreq(double** rows, std::int64_t rowCount, std::int64_t colCount);
  int removeMeanVTimeFreqx(double* data, std::int64_t rowCount, std::int64_t colCount);

  // rangeFirst >= length becomes length - 1, rangeLast > length becomes length - 1 (the two
  // comparisons differ on purpose); 1 when then rangeFirst < rangeLast.
  int checkCorrectDataRnge(std::int64_t length);

  std::int32_t hostWords[5] = {};  // kept for hosts, not read here
  std::int64_t rangeFirst = 0;
  std::int64_t rangeLast = 0;
  std::int32_t hostWord5 = 0;
};

// One acquisition channel. Block operations work on data[start..end] (end included); each
// estimator keeps its own history of at most windowLength samples, restarted by its first call
// or by any block starting at index 0.
class CRemovOffsetTrendAcqqv {
 public:
  CRemovOffsetTrendAcqqv() = default;
  CRemovOffsetTrendAcqqv(const CRemovOffsetTrendAcqqv&) = default;
  // Deliberately partial, as hosts expect: copies the fields up to rangeLast and the int32 after
  // it, and of the histories only dcHistory; the rest of the target is left as it was.
  CRemovOffsetTrendAcqqv& operator=(const CRemovOffsetTrendAcqqv& other);

  // Subtracts the mean of the history (this block included).
  int dcOffset(double* data, std::int64_t length, std::int64_t start, std::int64_t end,
               int channel);
  // Subtracts the median of the history (this block included). The selection reorders the
  // history in place, so later trims drop values by position, not by age, as hosts' results
  // depend on.
  int medianFlt(double* data, std::int64_t length, std::int64_t start, std::int64_t end,
                int channel);
  // Once windowLength samples have arrived, subtracts a line fitted to the history. Kept as
  // hosts expect: the fit runs over indices 0..N with index N (one past the history) read as 0,
  // and its sums run on from call to call, cleared only when the history restarts.
  int linearTrendOff(double* data, std::int64_t length, std::int64_t start, std::int64_t end,
                     int channel);

  int removeMeanV(double* data, std::int64_t n);
  // windowLength 2048 for a non-zero mode, 1024 for mode 0 (the constructor's 0 with 2048 is
  // not a pair this produces).
  int setDcOffsetMode(int mode);
  int checkCorrectDataRnge(std::int64_t length);

  std::int32_t dcMode = 0;
  std::int64_t windowLength = 2048;
  std::int32_t hostWords[3] = {};  // not read here
  std::int64_t trendCount = 0;     // cleared with the trend history
  double trendSumY = 0.0;          // running sum of history values
  double trendSumIY = 0.0;         // running sum of index times value
  std::int64_t spareWords[2] = {};
  std::int64_t spareWord = 0;
  std::int64_t rangeFirst = 0;
  std::int64_t rangeLast = 0;
  std::int32_t hostWord3 = 0;
  std::vector<double> dcHistory;
  std::vector<double> trendHistory;
  std::vector<double> medianHistory;
  CRtfMedian medianWork;
  std::int64_t spareWord2 = 0;
  std::int32_t firstDc = 1;  // 1: the next call starts a new history
  std::int32_t firstMedian = 1;
  std::int32_t firstTrend = 1;
  // Arguments of the last call that started a history; blockStart and blockEnd follow every
  // successful call.
  double* blockData = nullptr;
  std::int64_t blockLength = 0;
  std::int64_t blockStart = 0;
  std::int64_t blockEnd = 0;
  std::int32_t blockChannel = 0;
};
