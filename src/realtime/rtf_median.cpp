#include "digitfilt/realtime/rtf_median.h"

#include <cmath>
#include <utility>

namespace {

// Median-of-three quickselect (Numerical Recipes' form); returns a[(n - 1)/2], the lower median,
// with the array partly ordered around it. After the median-of-three step a[low + 1] and a[high]
// act as sentinels, so the inner scans need no bounds tests, NaNs included.
double quickSelectLower(double* a, std::int64_t n) {
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

    std::int64_t ll = low + 1, hh = high;
    for (;;) {
      do ++ll; while (a[low] > a[ll]);
      do --hh; while (a[hh] > a[low]);
      if (hh < ll) break;
      std::swap(a[ll], a[hh]);
    }
    std::swap(a[low], a[hh]);
    if (hh <= median) low = ll;
    if (hh >= median) high = hh - 1;
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
    less = greater = equal = 0;
    maxLtGuess = lo;
    minGtGuess = hi;
    for (int i = 0; i < n; ++i) {
      const double v = a[i];
      if (v < guess) {
        ++less;
        if (v > maxLtGuess) maxLtGuess = v;
      } else if (v > guess) {
        ++greater;
        if (v < minGtGuess) minGtGuess = v;
      } else {
        ++equal;
      }
    }
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
