#pragma once
// Median selection: Wirth's k-th smallest, a median-of-three quickselect (on a raw array and on a
// growable array) and Torben's method, which leaves the data in its order. Every even-length
// median is the lower one. The selections that take a raw array reorder it in place.
#include <cstdint>
#include <vector>

#include "digitfilt/foundation/design_base.h"

class CRtfMedian {
 public:
  CRtfMedian() = default;

  // Lower median of `a`, reordered in place; 0.0 for an empty array.
  double quickMedianStd(std::vector<double>& a);
  // Sets the state flag; no selection reads it.
  int reset();

  std::int32_t stateFlag = 0;
  // Kept for hosts and copied with the object; never read here.
  std::int32_t spareWord = 0;
  std::int64_t spareWords[2] = {};

 protected:
  // Lower median by Wirth's selection; 0.0 for n < 1.
  double medianWirth(double a[], std::int64_t n);
  // Value at index (n - 1)/2 after partial ordering; 0.0 for n < 1.
  double quick_select(double a[], int n);
  // Lower median by bisection on the values; `a` is only read. 0.0 for n < 1.
  double torben(const double a[], int n);

 private:
  // The k-th smallest value (k 0-based) of a[0..n-1].
  double kth_smallest(double a[], std::int64_t n, std::int64_t k);
};

// Running-median window kernel over a wide strided window: 257 samples at a stride of 256
// centred on `in`, advanced n steps of 256. It only maintains the sorted window: `out` is never
// written and no median is delivered (existing hosts rely on nothing more).
//
// Input margin: with n < 1 it reads in[-32768] .. in[32768]; with n >= 1 each step k reads the
// entering sample in[32768 + 256 k] and the leaving sample in[-33024 + 256 k], so the caller must
// supply in[-33024] .. in[32768 + 256 (n - 1)].
class CDigitFiltBscqv : public CDigitFiltBsc {
 public:
  CDigitFiltBscqv() = default;

  // Returns 0.
  int BMedian35(double* in, double* out, int n);
};
