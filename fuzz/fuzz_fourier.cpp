// The Fourier designer from bytes: windowed-sinc taps for wild edges and lengths, the nine record
// filters over a record of samples (with counts that need not match the record), and FFTd / DFTd
// on arrays of exactly the size their point count needs. Every buffer is exactly as long as the
// call may use, so a read or write past it is an AddressSanitizer report.
#include <algorithm>
#include <cstdint>
#include <memory>
#include <vector>

#include <digitfilt/digitfilt.h>

#include "fuzz_input.h"

namespace {

using digitfilt::fuzz::Input;

// The direct transform costs n^2 sines and cosines; the fast filters only ever mask (their point
// count wraps), so they take longer records.
constexpr std::size_t kMaxSamples = 2048;
constexpr std::int64_t kMaxDirect = 160;
constexpr int kMaxTaps = 4096;
constexpr int kMaxFftExponent = 12;

std::unique_ptr<double[]> copyOf(const std::vector<double>& v, std::size_t n) {
  std::unique_ptr<double[]> out(new double[n]);
  for (std::size_t i = 0; i < n; ++i) out[i] = v[i];
  return out;
}

void designTaps(CDigitFiltCoefMak02Fourier& d, Input& in) {
  const int designs = in.byte() % 4;
  for (int i = 0; i < designs; ++i) {
    const int kind = in.byte() % 3;
    const double f1 = in.real(0.5);
    const double f2 = in.real(0.5);
    const int n = static_cast<int>(in.range(-4, kMaxTaps));
    if (kind == 0) d.nonRcsvLowPass(f1, n);
    if (kind == 1) d.nonRcsvHighPass(f1, n);
    if (kind == 2) d.nonRcsvBandPass(f1, f2, n);
  }
}

void filterRecords(CDigitFiltCoefMak02Fourier& d, Input& in, const std::vector<double>& record) {
  const int filters = 1 + in.byte() % 4;
  for (int i = 0; i < filters; ++i) {
    const int kind = in.byte() % 9;
    const double fs = in.real(2000.0);
    const double f1 = in.real(fs);
    const double f2 = in.real(fs);
    const bool direct = kind >= 5;
    const std::int64_t available = std::min<std::int64_t>(
        static_cast<std::int64_t>(record.size()), direct ? kMaxDirect : kMaxSamples);
    // The count handed over may be anything up to the buffer's length, 0 and negatives included.
    const int n = static_cast<int>(in.range(-2, available));
    auto buf = copyOf(record, static_cast<std::size_t>(std::max<std::int64_t>(available, 0)));
    double* x = (in.byte() % 16 == 0) ? nullptr : buf.get();
    switch (kind) {
      case 0: d.fftLowPass(x, n, fs, f1); break;
      case 1: d.fftHighPass(x, n, fs, f1); break;
      case 2: d.fftBandPass(x, n, fs, f1, f2); break;
      case 3: d.fftNotch(x, n, fs, f1, f2); break;
      case 4: d.fftBandPassD(x, n, fs, f1, f2); break;
      case 5: d.dftLowPass(x, n, fs, f1); break;
      case 6: d.dftHighPass(x, n, fs, f1); break;
      case 7: d.dftBandPass(x, n, fs, f1, f2); break;
      default: d.dftNotch(x, n, fs, f1, f2); break;
    }
  }
}

void transforms(CDigitFiltCoefMak02Fourier& d, Input& in, const std::vector<double>& record) {
  const int dir = static_cast<int>(in.range(-2, 2));
  const int pick = in.byte() % 4;
  if (pick == 0) {
    // Exponents from 31 on wrap the 32-bit point count and must leave any array alone.
    const int m = static_cast<int>(in.range(31, 40));
    double re[1] = {record.empty() ? 1.0 : record[0]}, im[1] = {0.0};
    d.FFTd(dir, m == 40 ? 0x7fffffff : m, re, im);
  } else if (pick == 1) {
    const int m = static_cast<int>(in.range(-3, kMaxFftExponent));
    const std::size_t points = m <= 0 ? 1 : std::size_t{1} << m;
    std::vector<double> re(points), im(points);
    for (std::size_t i = 0; i < points && i < record.size(); ++i) re[i] = record[i];
    for (std::size_t i = 0; i < points && points + i < record.size(); ++i)
      im[i] = record[points + i];
    d.FFTd(dir, m, re.data(), im.data());
  } else {
    const int n = static_cast<int>(in.range(-3, kMaxDirect));
    const std::size_t points = static_cast<std::size_t>(std::max(n, 0));
    std::unique_ptr<double[]> re(new double[points]()), im(new double[points]());
    for (std::size_t i = 0; i < points && i < record.size(); ++i) re[i] = record[i];
    const bool none = pick == 3 && n <= 0;
    d.DFTd(dir, n, none ? nullptr : re.get(), none ? nullptr : im.get());
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  auto quiet = digitfilt::setMessageHandler([](const std::wstring&) { return 1; });
  // The first kSettingsBytes drive the calls, the rest is the record.
  constexpr std::size_t kSettingsBytes = 160;
  const std::size_t head = std::min(size, kSettingsBytes);
  Input in(data, head);
  Input samples(data + head, size - head);
  const std::vector<double> record = samples.samples(kMaxSamples);

  CDigitFiltCoefMak02Fourier d;
  designTaps(d, in);
  CDigitFiltCoefMak02Fourier copy = d;  // shares the tap arrays
  designTaps(copy, in);
  filterRecords(d, in, record);
  transforms(d, in, record);
  d = copy;
  digitfilt::setMessageHandler(quiet);
  return 0;
}
