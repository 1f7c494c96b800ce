// The real-time FIR and the first-order filters from bytes. The FIR gets byte-chosen tap counts
// (negative and zero included), wild indices on every accessor, designs at wild frequencies, a
// tap count poked directly into its public field, copies, and a run of wild samples. Its messages
// go to standard output, which this target sends to /dev/null. The first-order records and the
// designer object get wild corner frequencies, rates, gains and signs and a run of samples.
#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include <digitfilt/digitfilt.h>

#include "fuzz_input.h"

namespace {

using digitfilt::fuzz::Input;

int wildIndex(Input& in, int taps) {
  const std::int64_t t = taps;
  switch (in.byte() % 4) {
    case 0: return static_cast<int>(in.range(-3, 3));
    case 1: return static_cast<int>(std::clamp<std::int64_t>(in.range(t - 3, t + 3), INT_MIN, INT_MAX));
    case 2: return static_cast<int>(in.range(0, t > 0 ? t - 1 : 0));
    default: return static_cast<int>(static_cast<std::int32_t>(in.u32()));
  }
}

void fir(Input& in) {
  CRtf6Fir f = (in.byte() & 1) ? CRtf6Fir() : CRtf6Fir(static_cast<int>(in.range(-4, 200)));
  for (int step = 0; step < 24 && !in.empty(); ++step) {
    const int i = wildIndex(in, f.taps);
    switch (in.byte() % 16) {
      case 0: f.setTaps(static_cast<int>(in.range(-2, 200))); break;
      case 1: f.setCoeff(in.real(2.0), i); break;
      case 2: f.getCoeff(i); break;
      case 3: f.setFreq(in.real(0.5), i); break;
      case 4: f.getFreq(i); break;
      case 5: f.setBuffer(in.real(2.0), i); break;
      case 6: f.getBuffer(i); break;
      case 7: f.type = static_cast<int>(in.range(-2, 6)); f.setType(i); f.getType(); break;
      case 8: f.lowpass(in.real(0.5)); break;
      case 9: f.highpass(in.real(0.5)); break;
      case 10: {
        const double edges[2] = {in.real(0.5), in.real(0.5)};
        f.passband(edges);
        break;
      }
      case 11: {
        const double edges[2] = {in.real(0.5), in.real(0.5)};
        f.stopband(edges);
        break;
      }
      case 12: f.taps = wildIndex(in, f.taps); break;  // a host writing the field directly
      case 13: {
        CRtf6Fir copy(f);
        f = copy;
        break;
      }
      default: {
        const int count = static_cast<int>(in.range(0, 64));
        for (int k = 0; k < count; ++k) f.filter(in.real(10.0));
        break;
      }
    }
  }
}

void firstOrder(Input& in) {
  CRtfSingleOrderTcPf ops;
  fstord section;
  const double fs = in.real(2000.0);
  ops.cal_firstorder(&section, in.real(fs), fs, in.real(4.0), in.real(2.0));
  SINGLE_ORDER_TCPFX sv;
  const double svRate = in.real(2000.0);
  const double fc = in.real(svRate), q = in.real(10.0), extra = in.real(1.0);
  ops.setstate(&sv, fc, svRate, q, extra);
  CDigitFiltCoefMak04SingleOrder designer;
  const double dRate = in.real(2000.0);
  const double dFc = in.real(dRate), dGain = in.real(4.0);
  designer.cal_firstorder(dFc, dRate, dGain, static_cast<int>(in.range(-1, 2)));
  const int count = static_cast<int>(in.range(0, 256));
  for (int k = 0; k < count; ++k) {
    const double x = in.real(10.0);
    ops.first_order(&section, x);
    ops.statevar(&sv, x);
    designer.first_order(x);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const bool silenced = std::freopen("/dev/null", "w", stdout) != nullptr;
  (void)silenced;
  auto quiet = digitfilt::setMessageHandler([](const std::wstring&) { return 1; });
  Input in(data, size);
  if (in.byte() & 1) {
    fir(in);
  } else {
    firstOrder(in);
  }
  digitfilt::setMessageHandler(quiet);
  return 0;
}
