#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>
#include <vector>

#include <digitfilt/digitfilt.h>

namespace {

// Opens the protected selections to the tests.
struct MedianProbe : CRtfMedian {
  using CRtfMedian::medianWirth;
  using CRtfMedian::quick_select;
  using CRtfMedian::torben;
};

// The slow obvious oracle: sort a copy, take the lower middle.
double lowerMedian(std::vector<double> v) {
  std::sort(v.begin(), v.end());
  return v[(v.size() - 1) / 2];
}

// The quickselect steps written plainly, scans and all: the order they leave matters to hosts
// that keep working on the array, so the library's faster partition must leave the same order.
double plainQuickSelect(double* a, std::int64_t n) {
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

bool sameBits(const std::vector<double>& a, const std::vector<double>& b) {
  return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(double)) == 0;
}

bool samePermutation(std::vector<double> a, std::vector<double> b) {
  std::sort(a.begin(), a.end());
  std::sort(b.begin(), b.end());
  return a == b;
}

}  // namespace

TEST(RtfMedianSelect, AllMethodsAgreeWithSortedCopy) {
  std::mt19937 gen(2024);
  std::uniform_real_distribution<double> u(-100.0, 100.0);
  std::uniform_int_distribution<int> small(0, 4);  // few distinct values: many ties
  MedianProbe m;
  for (int n : {1, 2, 3, 4, 5, 8, 17, 64, 255, 256, 1001}) {
    for (bool ties : {false, true}) {
      SCOPED_TRACE(testing::Message() << "n=" << n << " ties=" << ties);
      std::vector<double> data(n);
      for (double& v : data) v = ties ? small(gen) : u(gen);
      const double want = lowerMedian(data);

      std::vector<double> w = data, q = data, s = data;
      const std::vector<double> t = data;
      EXPECT_TRUE(m.medianWirth(w.data(), n) == want && m.quick_select(q.data(), n) == want &&
                  m.quickMedianStd(s) == want && m.torben(t.data(), n) == want);
      EXPECT_TRUE(samePermutation(w, data) && samePermutation(q, data) &&
                  samePermutation(s, data));
      EXPECT_EQ(q[(n - 1) / 2], want);  // quickselect leaves the median in place
      EXPECT_EQ(t, data);               // Torben only reads
    }
  }
}

TEST(RtfMedianSelect, QuickselectLeavesThePlainStepsOrder) {
  std::mt19937 gen(99);
  std::uniform_real_distribution<double> u(-1.0, 1.0);
  std::uniform_int_distribution<int> size(1, 3000), small(0, 6);
  MedianProbe m;
  for (int trial = 0; trial < 300; ++trial) {
    const int n = trial < 100 ? trial + 1 : size(gen);
    const int kind = trial % 4;  // distinct, ties, sorted runs, a few NaNs
    std::vector<double> data(n);
    for (int i = 0; i < n; ++i) {
      data[i] = kind == 1 ? small(gen) : kind == 2 ? (i % 97) * 0.5 : u(gen);
      if (kind == 3 && i % 50 == 7) data[i] = std::nan("");
    }
    SCOPED_TRACE(testing::Message() << "n=" << n << " kind=" << kind);
    std::vector<double> want = data, viaVector = data, viaArray = data;
    const double median = plainQuickSelect(want.data(), n);
    const double got = m.quickMedianStd(viaVector);
    EXPECT_TRUE(got == median || (std::isnan(got) && std::isnan(median)));
    m.quick_select(viaArray.data(), n);
    EXPECT_TRUE(sameBits(viaVector, want) && sameBits(viaArray, want));
  }
}

// The midpoint of two huge values overflows; the bisection must still converge.
TEST(RtfMedianSelect, TorbenHandlesValuesNearTheDoubleLimit) {
  MedianProbe m;
  const std::vector<double> v = {1.7e308, 1.0e308, 1.5e308, -1.7e308, 1.6e308};
  EXPECT_EQ(m.torben(v.data(), 5), 1.5e308);
}

TEST(RtfMedianWindow, BMedian35ReadsOnlyItsDocumentedMarginAndWritesNothing) {
  // Exact-size buffers, so an address sanitizer catches any read past the documented margin.
  for (int n : {0, 3}) {
    SCOPED_TRACE(n);
    const std::ptrdiff_t below = n < 1 ? 32768 : 33024;
    const std::ptrdiff_t above = 32768 + 256 * std::max(n - 1, 0);
    std::vector<double> in(static_cast<std::size_t>(below + above + 1));
    std::mt19937 gen(n);
    std::uniform_real_distribution<double> u(0.0, 1.0);
    for (double& v : in) v = u(gen);
    std::vector<double> out(4, -1.0);
    CDigitFiltBscqv k;
    EXPECT_EQ(k.BMedian35(in.data() + below, out.data(), n), 0);
    EXPECT_EQ(out, std::vector<double>(4, -1.0));
  }
}
