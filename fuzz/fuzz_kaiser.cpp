// The Kaiser-window FIR from bytes: setters with wild values (names too), the order estimate, the
// half window, the design, the gain curve, block filtering and the streaming sequence in any
// order, with the public order field changed between the steps as a host may do.
#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <digitfilt/digitfilt.h>

#include "fuzz_input.h"

namespace {

using digitfilt::fuzz::Input;

// A design of order N takes N + 1 taps and N Bessel series, and filtering costs N per sample:
// the work a caller asks for grows with the order, so orders past this bound are not designed
// here (the estimate itself still runs on any input).
constexpr std::int32_t kMaxOrder = 1024;
constexpr int kMaxFreqPoints = 256;
constexpr std::size_t kMaxSamples = 512;

// Opens the protected operations.
class Kaiser : public CDigitFiltCoefMak03KaiserWnd {
 public:
  using CDigitFiltCoefMak03KaiserWnd::besselI0;
  using CDigitFiltCoefMak03KaiserWnd::filterGain;
  using CDigitFiltCoefMak03KaiserWnd::I0;
  using CDigitFiltCoefMak03KaiserWnd::setFreqPoints;
};

std::wstring typeName(Input& in) {
  static const wchar_t* const kNames[] = {L"KF_LOWPASS", L"kf_highpass", L"KF_BandPass",
                                          L"KF_LOWPAS", L"KF_LOWPASSX", L""};
  if (in.byte() % 2 == 0) return kNames[in.byte() % 6];
  std::wstring name;
  const int length = in.byte() % 12;
  for (int i = 0; i < length; ++i) name.push_back(static_cast<wchar_t>(in.byte()));
  return name;
}

void setUp(Kaiser& k, Input& in) {
  const int calls = in.byte() % 10;
  for (int i = 0; i < calls; ++i) {
    switch (in.byte() % 9) {
      case 0: k.setFilterType(typeName(in)); break;
      case 1: k.setFilterType(static_cast<int>(in.range(-2, 4))); break;
      case 2: k.setRate(in.real(2000.0)); break;
      case 3: k.setAtten(in.real(120.0)); break;
      case 4: k.setTrBand(in.real(500.0)); break;
      case 5: k.setFreq1(in.real(500.0)); break;
      case 6: k.setFreq2(in.real(500.0)); break;
      case 7: k.setFreqPoints(static_cast<int>(in.range(-2, kMaxFreqPoints))); break;
      default: k.beta = in.real(60.0); break;
    }
  }
}

std::unique_ptr<double[]> block(const std::vector<double>& record, std::size_t n) {
  std::unique_ptr<double[]> out(new double[n]);
  for (std::size_t i = 0; i < n; ++i) out[i] = record[i];
  return out;
}

void run(Kaiser& k, Input& in, const std::vector<double>& record) {
  const int steps = 1 + in.byte() % 12;
  for (int s = 0; s < steps; ++s) {
    switch (in.byte() % 11) {
      case 0: k.estimatedOrder(); break;
      case 1:
        // An order set by hand, odd and negative ones included.
        k.order = static_cast<std::int32_t>(in.range(-3, 64));
        break;
      case 2: {
        const double a = in.real(120.0);
        const double tw = in.real(0.5);
        const int maxLen = static_cast<int>(in.range(-3, 2048));
        k.halfKaiserWnd2Spec(a, tw, maxLen);
        break;
      }
      case 3:
        if (k.order <= kMaxOrder) k.design();
        break;
      case 4:
        if (k.order <= kMaxOrder) delete[] k.filterGain();
        break;
      case 5:
      case 6: {
        const std::size_t n = static_cast<std::size_t>(in.range(0, record.size()));
        auto x = block(record, n);
        if (k.order <= kMaxOrder) k.filterX(n == 0 && (in.byte() & 1) ? nullptr : x.get(), n);
        break;
      }
      case 7:
        if (k.order <= kMaxOrder) k.filterBegin();
        break;
      case 8: {
        const std::size_t n = static_cast<std::size_t>(in.range(0, record.size()));
        auto x = block(record, n);
        if (k.order <= kMaxOrder) k.filterDo(x.get(), n);
        break;
      }
      case 9: k.filterEnd(); break;
      default: {
        const int i = static_cast<int>(in.range(-3, std::max(k.order, 0) + 3));
        k.getCoeff(i);
        k.besselI0(in.real(100.0));
        k.I0(in.real(100.0));
        break;
      }
    }
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

  Kaiser k;
  setUp(k, in);
  k.estimatedOrder();
  run(k, in, record);
  // Copies share the taps and the delay line; each may end the stream.
  Kaiser copy = k;
  setUp(copy, in);
  run(copy, in, record);
  k.filterEnd();
  run(k, in, record);
  digitfilt::setMessageHandler(quiet);
  return 0;
}
