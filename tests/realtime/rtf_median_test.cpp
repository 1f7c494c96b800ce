#include <gtest/gtest.h>

#include <algorithm>
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

bool samePermutation(std::vector<double> a, std::vector<double> b) {
  std::sort(a.begin(), a.end());
  std::sort(b.begin(), b.end());
  return a == b;
}

}  // namespace

TEST(RtfMedianSelect, SmallExamplesGiveTheLowerMedian) {
  MedianProbe m;
  std::vector<double> a = {5, 1, 4, 2}, b = {3, 1, 2}, c = {5, 1, 4, 2}, d = {9.5};
  EXPECT_EQ(m.medianWirth(a.data(), 4), 2.0);
  EXPECT_EQ(m.medianWirth(b.data(), 3), 2.0);
  EXPECT_EQ(m.quick_select(c.data(), 4), 2.0);
  EXPECT_EQ(m.quick_select(d.data(), 1), 9.5);
  const std::vector<double> e = {5, 1, 4, 2};
  EXPECT_EQ(m.torben(e.data(), 4), 2.0);
  std::vector<double> empty;
  EXPECT_EQ(m.quickMedianStd(empty), 0.0);
  EXPECT_EQ(m.medianWirth(empty.data(), 0), 0.0);
  EXPECT_EQ(m.torben(empty.data(), 0), 0.0);
}

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
      EXPECT_EQ(m.medianWirth(w.data(), n), want);
      EXPECT_EQ(m.quick_select(q.data(), n), want);
      EXPECT_EQ(m.quickMedianStd(s), want);
      EXPECT_EQ(m.torben(t.data(), n), want);
      EXPECT_TRUE(samePermutation(w, data) && samePermutation(q, data) &&
                  samePermutation(s, data));
      EXPECT_EQ(q[(n - 1) / 2], want);  // quickselect leaves the median in place
      EXPECT_EQ(t, data);               // Torben only reads
    }
  }
}

TEST(RtfMedianSelect, SortedAndReversedInputs) {
  MedianProbe m;
  for (int n : {6, 7, 100}) {
    std::vector<double> up(n), down(n);
    for (int i = 0; i < n; ++i) up[i] = down[n - 1 - i] = i;
    const double want = (n - 1) / 2;
    for (const auto& v : {up, down}) {
      std::vector<double> w = v, q = v, s = v;
      EXPECT_EQ(m.medianWirth(w.data(), n), want);
      EXPECT_EQ(m.quick_select(q.data(), n), want);
      EXPECT_EQ(m.quickMedianStd(s), want);
      EXPECT_EQ(m.torben(v.data(), n), want);
    }
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
