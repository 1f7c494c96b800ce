// Offset and trend removal from bytes. The record forms get byte-chosen lengths and ranges
// (negative, reversed, at and past the ends), the matrix forms byte-chosen shapes with every row
// its own exact-size heap block (and sometimes a null row); the acquisition object gets a run of
// byte-sized blocks with byte-chosen starts and ends, restarts at index 0, odd window lengths and
// copies. Every buffer is exactly as long as the length it is passed with, so any access outside
// it is an AddressSanitizer report.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <vector>

#include <digitfilt/digitfilt.h>

#include "fuzz_input.h"

namespace {

using digitfilt::fuzz::Input;

std::unique_ptr<double[]> record(Input& in, std::int64_t n) {
  std::unique_ptr<double[]> p(new double[static_cast<std::size_t>(std::max<std::int64_t>(n, 1))]);
  const std::uint8_t kind = in.byte();
  const double slope = in.finite(-10.0, 10.0), offset = in.finite(-1e3, 1e3);
  for (std::int64_t i = 0; i < n; ++i) {
    // Mostly lines with a few wild values; sometimes wild throughout.
    const bool wild = (kind & 1) || in.byte() % 16 == 0;
    p[static_cast<std::size_t>(i)] = wild ? in.real(100.0) : slope * static_cast<double>(i) + offset;
  }
  return p;
}

// An index near the interesting places: below 0, at 0, inside, at and past the end.
std::int64_t index(Input& in, std::int64_t n) {
  switch (in.byte() % 4) {
    case 0: return in.range(-3, 3);
    case 1: return in.range(n - 3, n + 3);
    case 2: return in.range(0, std::max<std::int64_t>(n - 1, 0));
    default: return static_cast<std::int64_t>(static_cast<std::int32_t>(in.u32()));
  }
}

void recordForms(Input& in) {
  CRemovOffsetTrendqv r;
  const std::int64_t n = in.range(0, 300);
  auto data = record(in, n);
  const bool nullData = in.byte() % 16 == 0;
  double* p = nullData ? nullptr : data.get();
  const std::int64_t first = index(in, n), last = index(in, n);
  const int ok = r.linearTrendOff(p, n, first, last);
  const bool valid = p != nullptr && first >= 0 && last > first && last < n;
  if (ok != (valid ? 1 : 0)) std::abort();
  if (r.dcOffset(p, n, index(in, n), index(in, n)) > 1) std::abort();
  r.removeMeanV(p, in.byte() & 1 ? n : index(in, n) % (n + 1));
  r.rangeFirst = index(in, n);
  r.rangeLast = index(in, n);
  r.checkCorrectDataRnge(in.byte() & 1 ? n : index(in, n));
}

void matrixForms(Input& in) {
  CRemovOffsetTrendqv r;
  const std::int64_t rows = in.range(0, 24), cols = in.range(-1, 24);
  const std::int64_t cells = rows * std::max<std::int64_t>(cols, 0);
  auto flat = record(in, cells);
  std::vector<std::unique_ptr<double[]>> owned;
  std::vector<double*> rowPtrs;
  for (std::int64_t k = 0; k < rows; ++k) {
    owned.push_back(record(in, std::max<std::int64_t>(cols, 0)));
    rowPtrs.push_back(owned.back().get());
  }
  if (rows > 0 && in.byte() % 16 == 0) rowPtrs[static_cast<std::size_t>(in.range(0, rows - 1))] = nullptr;
  double** rp = rows > 0 ? rowPtrs.data() : nullptr;
  double* fp = cells > 0 ? flat.get() : (in.byte() & 1 ? nullptr : flat.get());
  for (int step = 0; step < 4 && !in.empty(); ++step) {
    const std::int64_t first = index(in, rows), last = index(in, rows);
    switch (in.byte() % 6) {
      case 0: r.dcOffsetTimeFreq(rp, rows, cols, first, last); break;
      case 1: r.dcOffsetTimeFreqx(fp, rows, cols, first, last); break;
      case 2: r.linearTrendOffTimeFreq(rp, rows, cols, first, last); break;
      case 3: r.linearTrendOffTimeFreqx(fp, rows, cols, first, last); break;
      case 4: r.removeMeanVTimeFreq(rp, rows, cols); break;
      default: r.removeMeanVTimeFreqx(fp, rows, cols); break;
    }
  }
}

void acquisition(Input& in) {
  CRemovOffsetTrendAcqqv acq;
  switch (in.byte() % 4) {
    case 0: acq.setDcOffsetMode(static_cast<int>(in.range(-1, 1))); break;
    case 1: acq.windowLength = in.range(-2, 64); break;
    case 2: acq.windowLength = in.range(1, 600); break;
    default: break;  // the constructor's 2048
  }
  std::int64_t next = 0;
  for (int block = 0; block < 12 && !in.empty(); ++block) {
    const std::int64_t length = in.range(0, 1200);
    auto data = record(in, length);
    std::int64_t start, end;
    switch (in.byte() % 4) {
      case 0: start = 0; end = length - 1; break;  // a restart
      case 1: start = std::min(next, std::max<std::int64_t>(length - 1, 0)); end = length - 1; break;
      default: start = index(in, length); end = index(in, length); break;
    }
    double* p = in.byte() % 32 == 0 ? nullptr : data.get();
    const int channel = static_cast<int>(in.range(-1, 3));
    const bool valid = p != nullptr && start >= 0 && end >= start && end < length;
    int ok = 0;
    switch (in.byte() % 3) {
      case 0: ok = acq.dcOffset(p, length, start, end, channel); break;
      case 1: ok = acq.medianFlt(p, length, start, end, channel); break;
      default: ok = acq.linearTrendOff(p, length, start, end, channel); break;
    }
    if (ok && !valid) std::abort();
    if (valid) next = end + 1;
    if (acq.dcHistory.size() > static_cast<std::size_t>(std::max<std::int64_t>(acq.windowLength, 0)))
      std::abort();
    if (in.byte() % 8 == 0) {
      CRemovOffsetTrendAcqqv copy(acq);
      CRemovOffsetTrendAcqqv other;
      other = acq;
      other.dcOffset(p, length, start, end, channel);
      acq = copy;
    }
  }
  std::vector<double> tail = in.samples(16);
  acq.removeMeanV(tail.empty() ? nullptr : tail.data(), static_cast<std::int64_t>(tail.size()));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input in(data, size);
  switch (in.byte() % 3) {
    case 0: recordForms(in); break;
    case 1: matrixForms(in); break;
    default: acquisition(in); break;
  }
  return 0;
}
