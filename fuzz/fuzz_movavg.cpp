// Both moving-average designers from bytes: wild setter arguments, record lengths that disagree
// with the buffers, windows poked directly into the public fields, then filterStd and the stage
// primitives over a record of samples. Every buffer is exactly N doubles, so a read or write past
// the record is an AddressSanitizer report.
#include <algorithm>
#include <cstdint>
#include <memory>
#include <vector>

#include <digitfilt/digitfilt.h>

#include "fuzz_input.h"

namespace {

using digitfilt::fuzz::Input;

// Work grows with N times the harmonic count times the passes; these bounds keep one input fast
// without hiding any path (a window never needs more than N samples to reach every branch).
constexpr std::size_t kMaxSamples = 1024;
constexpr std::int64_t kMaxPasses = 4;

struct Buffers {
  explicit Buffers(const std::vector<double>& record)
      : n(static_cast<std::int64_t>(record.size())),
        a(new double[record.size()]),
        b(new double[record.size()]()),
        c(new double[record.size()]()) {
    for (std::size_t i = 0; i < record.size(); ++i) a[i] = record[i];
  }
  std::int64_t n;
  std::unique_ptr<double[]> a, b, c;
};

// A window length: mostly near the record length, sometimes anything at all.
std::int64_t wildWindow(Input& in, std::int64_t n) {
  switch (in.byte() % 4) {
    case 0: return in.range(-4, 8);
    case 1: return in.range(n - 2, n + 2);
    case 2: {
      const std::uint64_t high = in.u32();
      return static_cast<std::int64_t>(high << 32 | in.u32());
    }
    default: return in.range(0, n + 1);
  }
}

template <class Designer>
void configure(Designer& d, Input& in, std::int64_t n) {
  const double fs = in.real(2000.0);
  // The record length the windows are derived for need not be the one filtered.
  const std::int64_t sizeForWindows = (in.byte() & 1) ? n : in.range(-3, 5000);
  d.initFiltRange4DataSizeSampleRate(sizeForWindows, fs);
  const int setters = in.byte() % 8;
  for (int i = 0; i < setters; ++i) {
    // Locals keep the byte order independent of how a compiler orders call arguments.
    const int kind = in.byte() % 6;
    const int div = static_cast<int>(in.range(-3, 9));
    const double f1 = in.real(fs);
    const double f2 = in.real(fs);
    switch (kind) {
      case 0: d.setWndLowPass(fs, sizeForWindows, f1, div); break;
      case 1: d.setWndHighPass(fs, sizeForWindows, f1, div); break;
      case 2: d.setWndBandPass(fs, sizeForWindows, f1, f2, div); break;
      case 3: d.setWndNotch(fs, sizeForWindows, f1, f2, div); break;
      case 4: {
        // Harmonic counts past the 60 window slots are tolerated too.
        const int harmonics = static_cast<int>(in.range(-3, 100));
        d.setWndPowerLineNoise(fs, sizeForWindows, f1 / 20.0, f2 / 100.0, harmonics, div);
        break;
      }
      default: d.setRepetition(in.range(-5, kMaxPasses)); break;
    }
  }
  const std::uint8_t stages = in.byte();
  for (int s = 0; s < 5; ++s) d.stageEnabled[s] = (stages >> s) & 1;
  if (stages & 0x20) {
    d.lowPassWnd = wildWindow(in, n);
    d.highPassWnd = wildWindow(in, n);
    d.bandHighPassWnd = wildWindow(in, n);
    d.bandLowPassWnd = wildWindow(in, n);
    d.notchLowPassWnd = wildWindow(in, n);
    d.notchHighPassWnd = wildWindow(in, n);
    const std::int64_t slot = in.range(0, 59);
    d.pwrLowPassWnd[slot] = wildWindow(in, n);
    d.pwrHighPassWnd[slot] = wildWindow(in, n);
  }
  if (stages & 0x40) d.harmonicCount = static_cast<std::int32_t>(in.range(-2, 200));
  if (d.passCount > kMaxPasses) d.passCount = kMaxPasses;
}

void runPointerExchange(Input& in, const std::vector<double>& record) {
  CDigitFiltCoefMak00MovAvrg d;
  Buffers buf(record);
  configure(d, in, buf.n);
  // The stages rotate these three pointers among the buffers; the unique_ptrs keep ownership.
  double* data = buf.a.get();
  double* work = buf.b.get();
  double* spare = buf.c.get();
  d.filterStd(data, buf.n, work, spare);
  const std::int64_t l1 = wildWindow(in, buf.n);
  const std::int64_t l2 = wildWindow(in, buf.n);
  const int harmonics = static_cast<int>(in.range(-1, 60));
  switch (in.byte() % 5) {
    case 0: d._01MAFLowpass(buf.n, l1, data, work); break;
    case 1: d._02MAFHighpass(buf.n, l1, data, work); break;
    case 2: d._03MAFbandpass(buf.n, l1, l2, data, work); break;
    case 3: d._04MAVNotchflt(buf.n, l1, l2, data, work, spare); break;
    default:
      d._06MAVPowNosFt(buf.n, d.pwrLowPassWnd, d.pwrHighPassWnd, data, work, spare,
                       harmonics);
      break;
  }
  CDigitFiltCoefMak00MovAvrg copy(d);
  copy = d;
  double* none = nullptr;
  copy.filterStd(none, buf.n, work, spare);
}

void runInPlace(Input& in, const std::vector<double>& record) {
  CDigitFiltCoefMak00MovAvrgX d;
  Buffers buf(record);
  configure(d, in, buf.n);
  d.filterStd(buf.a.get(), buf.n, buf.b.get(), buf.c.get());
  const std::int64_t l1 = wildWindow(in, buf.n);
  const std::int64_t l2 = wildWindow(in, buf.n);
  const int harmonics = static_cast<int>(in.range(-1, 60));
  switch (in.byte() % 5) {
    case 0: d._01MAFLowpass(buf.n, l1, buf.a.get(), buf.b.get()); break;
    case 1: d._02MAFHighpass(buf.n, l1, buf.a.get(), buf.a.get()); break;
    case 2: d._03MAFbandpass(buf.n, l1, l2, buf.a.get(), buf.b.get()); break;
    case 3: d._04MAVNotchflt(buf.n, l1, l2, buf.a.get(), buf.b.get(), buf.c.get()); break;
    default:
      d._06MAVPowNosFt(buf.n, d.pwrLowPassWnd, d.pwrHighPassWnd, buf.a.get(), buf.b.get(),
                       buf.c.get(), harmonics);
      break;
  }
  CDigitFiltCoefMak00MovAvrgX copy;
  copy = d;
  copy.filterStd(buf.a.get(), buf.n, nullptr, buf.c.get());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  auto quiet = digitfilt::setMessageHandler([](const std::wstring&) { return 1; });
  // Byte 0 picks the classes, the next kSettingsBytes drive the settings, the rest is the record.
  constexpr std::size_t kSettingsBytes = 160;
  const std::uint8_t which = size > 0 ? data[0] : 3;
  const std::size_t head = std::min(size, 1 + kSettingsBytes);
  Input settings(data + (size > 0 ? 1 : 0), head - (size > 0 ? 1 : 0));
  Input samples(data + head, size - head);
  const std::vector<double> record = samples.samples(kMaxSamples);
  if (which & 1) runPointerExchange(settings, record);
  if (which & 2) runInPlace(settings, record);
  digitfilt::setMessageHandler(quiet);
  return 0;
}
