#include "digitfilt/realtime/rtf_median.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

// One partition round of the quickselect around the pivot a[low], with a[low + 1] <= pivot and
// a[high] >= pivot already in place as sentinels. Returns hh, the pivot's final slot, and ll, the
// scan position that bounds the upper part.
struct Split {
  std::int64_t ll, hh;
};

// The plain Hoare scans.
Split partitionByScan(double* a, std::int64_t low, std::int64_t high) {
  std::int64_t ll = low + 1, hh = high;
  for (;;) {
    do ++ll; while (a[low] > a[ll]);
    do --hh; while (a[hh] > a[low]);
    if (hh < ll) break;
    std::swap(a[ll], a[hh]);
  }
  return {ll, hh};
}

// The same swaps as partitionByScan without its unpredictable branches. Each upward scan stops
// at the next slot whose value is not below the pivot, each downward scan at the next slot whose
// value is not above it, and the i-th upward stop is swapped with the i-th downward stop while
// the first lies below the second. A slot is only ever read by a scan before any swap touches
// it, so the stops can be gathered ahead, a block at a time, with branch-free writes. Only the
// crossing round needs care: a scan then stops on the other scan's previous slot if it gets
// there first, and when both stop on one slot x (a value equal to the pivot) the plain scans
// swap it with itself and cross at x + 1 and x - 1.
Split partitionByStopLists(double* a, std::int64_t low, std::int64_t high) {
  constexpr int kBlock = 64;
  const double pivot = a[low];
  std::int64_t up[kBlock], down[kBlock];
  std::int64_t nUp = 0, iUp = 0, nDown = 0, iDown = 0;
  std::int64_t upNext = low + 2, downNext = high - 1;
  std::int64_t prevLl = low + 1, prevHh = high;
  // The sentinels a[high] and a[low + 1] stop every scan and a stop on either one is a crossing,
  // so the gathering never runs past them.
  for (;;) {
    while (iUp == nUp) {
      nUp = iUp = 0;
      const std::int64_t end = std::min(upNext + kBlock, high + 1);
      for (std::int64_t x = upNext; x < end; ++x) {
        up[nUp] = x;
        nUp += !(pivot > a[x]);
      }
      upNext = end;
    }
    while (iDown == nDown) {
      nDown = iDown = 0;
      const std::int64_t end = std::max(downNext - kBlock, low);
      for (std::int64_t x = downNext; x > end; --x) {
        down[nDown] = x;
        nDown += !(a[x] > pivot);
      }
      downNext = end;
    }
    const std::int64_t rounds = std::min(nUp - iUp, nDown - iDown);
    for (std::int64_t r = 0; r < rounds; ++r, ++iUp, ++iDown) {
      const std::int64_t ll = up[iUp], hh = down[iDown];
      if (ll >= hh) {
        if (ll == hh) return {ll + 1, hh - 1};
        return {std::min(ll, prevHh), std::max(hh, prevLl)};
      }
      std::swap(a[ll], a[hh]);
      prevLl = ll;
      prevHh = hh;
    }
  }
}

// Median-of-three quickselect (Numerical Recipes' form); returns a[(n - 1)/2], the lower median,
// with the array partly ordered around it exactly as that form leaves it (hosts keep working on
// the reordered array). After the median-of-three step a[low + 1] and a[high] act as sentinels,
// so no scan needs a bounds test, NaNs included.
double quickSelectLower(double* a, std::int64_t n) {
  // Below this span the plain scans are cheaper than gathering the stop lists.
  constexpr std::int64_t kScanSpan = 48;
  const std::int64_t median = (n - 1) / 2;
  std::int64_t low = 0, high = n - 1;
  if (high < 1) return a[median];
  for (;;) {
    if (high <= low) return a[median];
    if (high == low + 1) {
      if (a[low] > a[high]) std::swap(a[low], a[high]);
      return a[median];
    }
    const std::int64_t middle = (low + high) / 2;
    if (a[middle] > a[high]) std::swap(a[middle], a[high]);
    if (a[low] > a[high]) std::swap(a[low], a[high]);
    if (a[middle] > a[low]) std::swap(a[middle], a[low]);
    std::swap(a[middle], a[low + 1]);

    const Split s = high - low < kScanSpan ? partitionByScan(a, low, high)
                                           : partitionByStopLists(a, low, high);
    std::swap(a[low], a[s.hh]);
    if (s.hh <= median) low = s.ll;
    if (s.hh >= median) high = s.hh - 1;
  }
}

// In-place heap sort, ascending.
void heapSort(double* a, int n) {
  auto siftDown = [a](int root, int end) {
    for (;;) {
      int child = 2 * root + 1;
      if (child >= end) return;
      if (child + 1 < end && a[child] < a[child + 1]) ++child;
      if (!(a[root] < a[child])) return;
      std::swap(a[root], a[child]);
      root = child;
    }
  };
  for (int i = n / 2 - 1; i >= 0; --i) siftDown(i, n);
  for (int end = n - 1; end > 0; --end) {
    std::swap(a[0], a[end]);
    siftDown(0, end);
  }
}

// Index of the first value not less than v in the sorted a[0..n-1], or n.
int lowerBound(const double* a, int n, double v) {
  int lo = 0, hi = n;
  while (lo < hi) {
    const int mid = lo + (hi - lo) / 2;
    if (a[mid] < v) {
      lo = mid + 1;
    } else {
      hi = mid;
    }
  }
  return lo;
}

}  // namespace

double CRtfMedian::kth_smallest(double a[], std::int64_t n, std::int64_t k) {
  std::int64_t l = 0, m = n - 1;
  if (m < 1) return a[k];
  while (l < m) {
    const double x = a[k];
    std::int64_t i = l, j = m;
    do {
      while (a[i] < x) ++i;
      while (x < a[j]) --j;
      if (i <= j) {
        std::swap(a[i], a[j]);
        ++i;
        --j;
      }
    } while (i <= j);
    if (j < k) l = i;
    if (k < i) m = j;
  }
  return a[k];
}

double CRtfMedian::medianWirth(double a[], std::int64_t n) {
  if (a == nullptr || n < 1) return 0.0;
  return kth_smallest(a, n, (n & 1) ? n / 2 : n / 2 - 1);
}

double CRtfMedian::quick_select(double a[], int n) {
  if (a == nullptr || n < 1) return 0.0;
  return quickSelectLower(a, n);
}

double CRtfMedian::quickMedianStd(std::vector<double>& a) {
  if (a.empty()) return 0.0;
  return quickSelectLower(a.data(), static_cast<std::int64_t>(a.size()));
}

double CRtfMedian::torben(const double a[], int n) {
  if (a == nullptr || n < 1) return 0.0;
  double lo = a[0], hi = a[0];
  {
    double lo4[4] = {lo, lo, lo, lo}, hi4[4] = {hi, hi, hi, hi};
    int i = 0;
    for (; i + 4 <= n; i += 4) {
      for (int k = 0; k < 4; ++k) {
        if (a[i + k] < lo4[k]) lo4[k] = a[i + k];
        if (a[i + k] > hi4[k]) hi4[k] = a[i + k];
      }
    }
    for (; i < n; ++i) {
      if (a[i] < lo4[0]) lo4[0] = a[i];
      if (a[i] > hi4[0]) hi4[0] = a[i];
    }
    for (int k = 0; k < 4; ++k) {
      if (lo4[k] < lo) lo = lo4[k];
      if (hi4[k] > hi) hi = hi4[k];
    }
  }

  const int half = (n + 1) / 2;
  int less, greater, equal;
  double guess, maxLtGuess, minGtGuess;
  for (;;) {
    guess = (lo + hi) * 0.5;
    // Halving first only when the sum overflows; otherwise the bisection could stall at inf.
    if (std::isinf(guess) && std::isfinite(lo) && std::isfinite(hi)) guess = lo * 0.5 + hi * 0.5;
    // Two lanes of selects rather than branches: near the median the comparisons are coin
    // flips. A value on the wrong side of the guess offers `lo` (or `hi`), which changes
    // nothing, and a NaN compares neither way and so counts as equal.
    int lt0 = 0, lt1 = 0, gt0 = 0, gt1 = 0;
    double maxLt0 = lo, maxLt1 = lo, minGt0 = hi, minGt1 = hi;
    int i = 0;
    for (; i + 2 <= n; i += 2) {
      const double v = a[i], w = a[i + 1];
      const bool vLt = v < guess, vGt = v > guess, wLt = w < guess, wGt = w > guess;
      lt0 += vLt;
      gt0 += vGt;
      lt1 += wLt;
      gt1 += wGt;
      const double vUp = vLt ? v : lo, vDown = vGt ? v : hi;
      const double wUp = wLt ? w : lo, wDown = wGt ? w : hi;
      maxLt0 = vUp > maxLt0 ? vUp : maxLt0;
      minGt0 = vDown < minGt0 ? vDown : minGt0;
      maxLt1 = wUp > maxLt1 ? wUp : maxLt1;
      minGt1 = wDown < minGt1 ? wDown : minGt1;
    }
    if (i < n) {
      const double v = a[i];
      const bool vLt = v < guess, vGt = v > guess;
      lt0 += vLt;
      gt0 += vGt;
      if (vLt && v > maxLt0) maxLt0 = v;
      if (vGt && v < minGt0) minGt0 = v;
    }
    less = lt0 + lt1;
    greater = gt0 + gt1;
    equal = n - less - greater;
    maxLtGuess = maxLt1 > maxLt0 ? maxLt1 : maxLt0;
    minGtGuess = minGt1 < minGt0 ? minGt1 : minGt0;
    if (less <= half && greater <= half) break;
    if (less > greater) {
      hi = maxLtGuess;
    } else {
      lo = minGtGuess;
    }
  }
  if (less >= half) return maxLtGuess;
  if (less + equal >= half) return guess;
  return minGtGuess;
}

int CRtfMedian::reset() {
  stateFlag = 1;
  return 1;
}

int CDigitFiltBscqv::BMedian35(double* in, double* /*out*/, int n) {
  constexpr int kWidth = 257;
  constexpr std::int64_t kStride = 256;
  constexpr std::int64_t kHalfSpan = 32768;             // 128 strides each side of `in`
  constexpr std::int64_t kSpan = kWidth * kStride;      // entering minus leaving offset
  if (in == nullptr) return 0;

  std::vector<double> window(kWidth);
  for (int i = 0; i < kWidth; ++i) window[i] = in[-kHalfSpan + i * kStride];
  heapSort(window.data(), kWidth);

  double* w = window.data();
  for (std::int64_t step = 0; step < n; ++step) {
    const std::int64_t at = kHalfSpan + step * kStride;
    const double entering = in[at];
    const double leaving = in[at - kSpan];
    // A leaving value absent from the window (or NaN) lands on the nearest slot, in bounds.
    int pos = lowerBound(w, kWidth, leaving);
    if (pos == kWidth) pos = kWidth - 1;
    if (entering > leaving) {
      while (pos + 1 < kWidth && w[pos + 1] < entering) {
        w[pos] = w[pos + 1];
        ++pos;
      }
    } else if (entering < leaving) {
      while (pos > 0 && w[pos - 1] > entering) {
        w[pos] = w[pos - 1];
        --pos;
      }
    }
    w[pos] = entering;
  }
  return 0;
}
