// The median selections from bytes: arrays of every length from 0 up, made of wild values, of a
// few repeated values (ties) or of a sorted run, each selection on its own exact-size heap copy so
// that a scan past either end is an AddressSanitizer report. On arrays of ordered values (no NaN)
// every selection must give the sorted lower median and Torben must leave its array as it was.
// Then the strided running-median window over a buffer that holds exactly the margin it reads.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

#include <digitfilt/digitfilt.h>

#include "fuzz_input.h"

namespace {

using digitfilt::fuzz::Input;

constexpr std::size_t kMaxLength = 2048;

struct MedianProbe : CRtfMedian {
  using CRtfMedian::medianWirth;
  using CRtfMedian::quick_select;
  using CRtfMedian::torben;
};

std::vector<double> makeArray(Input& in) {
  const std::uint8_t shape = in.byte();
  std::size_t n;
  switch (shape % 4) {
    case 0: n = static_cast<std::size_t>(in.range(0, 3)); break;
    case 1: n = static_cast<std::size_t>(in.range(0, 64)); break;
    default: n = static_cast<std::size_t>(in.range(0, kMaxLength)); break;
  }
  std::vector<double> a;
  a.reserve(n);
  switch ((shape / 4) % 4) {
    case 0:  // wild values, repeated when the input runs out
    {
      std::vector<double> pool = in.samples(64);
      if (pool.empty()) pool.push_back(0.0);
      for (std::size_t i = 0; i < n; ++i) a.push_back(pool[i % pool.size()]);
      break;
    }
    case 1:  // ties: a handful of values, chosen by the bytes
    {
      double palette[4] = {in.real(10.0), in.real(10.0), in.real(10.0), in.real(10.0)};
      for (std::size_t i = 0; i < n; ++i) a.push_back(palette[in.byte() % 4]);
      break;
    }
    case 2:  // sorted, reversed or organ-pipe runs: the quickselect's worst orders
    {
      const int kind = in.byte() % 3;
      for (std::size_t i = 0; i < n; ++i) {
        const double x = static_cast<double>(i);
        a.push_back(kind == 0 ? x : kind == 1 ? -x : std::min(x, static_cast<double>(n) - x));
      }
      if (n > 0 && (in.byte() & 1)) a[in.range(0, static_cast<std::int64_t>(n) - 1)] = in.real(1e3);
      break;
    }
    default:  // small integers: many ties with order
      for (std::size_t i = 0; i < n; ++i) a.push_back(static_cast<double>(in.byte() % 7) - 3.0);
      break;
  }
  return a;
}

std::unique_ptr<double[]> heapCopy(const std::vector<double>& a) {
  std::unique_ptr<double[]> p(new double[a.size() == 0 ? 1 : a.size()]);
  if (!a.empty()) std::memcpy(p.get(), a.data(), a.size() * sizeof(double));
  return p;
}

// Compares bit patterns, so NaNs and signed zeros count too. Checked on the shorter arrays only:
// the sorts here would otherwise cost more than the selections under test.
bool isPermutationOf(const double* p, const std::vector<double>& a) {
  if (a.size() > 512) return true;
  std::vector<std::uint64_t> x(a.size()), y(a.size());
  if (!a.empty()) {
    std::memcpy(x.data(), p, a.size() * sizeof(double));
    std::memcpy(y.data(), a.data(), a.size() * sizeof(double));
  }
  std::sort(x.begin(), x.end());
  std::sort(y.begin(), y.end());
  return x == y;
}

void checkSelections(const std::vector<double>& a) {
  MedianProbe probe;
  const auto n = static_cast<std::int64_t>(a.size());
  const bool ordered = std::none_of(a.begin(), a.end(), [](double v) { return std::isnan(v); });
  const bool finite = std::all_of(a.begin(), a.end(), [](double v) { return std::isfinite(v); });
  double expected = 0.0;
  if (ordered && n > 0) {
    std::vector<double> sorted = a;
    std::sort(sorted.begin(), sorted.end());
    expected = sorted[static_cast<std::size_t>((n - 1) / 2)];
  }

  auto wirth = heapCopy(a);
  const double w = probe.medianWirth(n > 0 ? wirth.get() : nullptr, n);
  auto quick = heapCopy(a);
  const double q = probe.quick_select(n > 0 ? quick.get() : nullptr, static_cast<int>(n));
  std::vector<double> growable = a;
  const double s = probe.quickMedianStd(growable);
  auto kept = heapCopy(a);
  const double t = probe.torben(n > 0 ? kept.get() : nullptr, static_cast<int>(n));

  // Reordering must only ever permute the values.
  if (!isPermutationOf(wirth.get(), a) || !isPermutationOf(quick.get(), a) ||
      !isPermutationOf(growable.data(), a))
    std::abort();
  if (n > 0 && std::memcmp(kept.get(), a.data(), a.size() * sizeof(double)) != 0) std::abort();
  if (n == 0 && (w != 0.0 || q != 0.0 || s != 0.0 || t != 0.0)) std::abort();
  if (ordered && n > 0 && (w != expected || q != expected || s != expected)) std::abort();
  if (finite && n > 0 && t != expected) std::abort();
  // The raw and the growable quickselect are one procedure: same value, same order left.
  if (n > 0 && std::memcmp(quick.get(), growable.data(), a.size() * sizeof(double)) != 0)
    std::abort();
  (void)s;
}

// The window reads in[-33024 + 256 k] and in[32768 + 256 k] for each of n steps (and
// in[-32768 .. 32768] when n < 1): the buffer holds exactly that span and nothing more.
void runWindow(Input& in) {
  const int n = static_cast<int>(in.range(-2, 40));
  const std::int64_t before = n >= 1 ? 33024 : 32768;
  const std::int64_t after = 32768 + 256 * std::max(n - 1, 0);
  std::vector<double> pool = in.samples(32);
  if (pool.empty()) pool.push_back(0.0);
  std::unique_ptr<double[]> buffer(new double[static_cast<std::size_t>(before + after + 1)]);
  const std::size_t stride = 1 + in.byte() % 5;
  for (std::int64_t i = 0; i < before + after + 1; ++i)
    buffer[static_cast<std::size_t>(i)] = pool[(static_cast<std::size_t>(i) / stride) % pool.size()];
  CDigitFiltBscqv window;
  double out = 0.0;
  if (window.BMedian35(buffer.get() + before, &out, n) != 0) std::abort();
  if (window.BMedian35(nullptr, &out, n) != 0) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input in(data, size);
  const std::uint8_t mode = in.byte();
  if (mode % 8 == 7) {
    runWindow(in);
    return 0;
  }
  checkSelections(makeArray(in));
  return 0;
}
