// A filter_iirspec from bytes through both Butterworth designers and the frequency response.
#include <cstdint>

#include <digitfilt/digitfilt.h>

#include "fuzz_input.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  digitfilt::fuzz::Input in(data, size);
  auto quiet = digitfilt::setMessageHandler([](const std::wstring&) { return 1; });
  filter_iirspec spec;
  spec.enabled = static_cast<std::int32_t>(in.range(-1, 2));
  spec.filterType = static_cast<std::int32_t>(in.range(-1, 4));
  spec.order = static_cast<std::int32_t>(in.range(-2, 24));
  const double rate = in.real(2000.0);
  spec.sampleRate = rate;
  spec.freqLow = in.real(rate);
  spec.freqHigh = in.real(rate);
  const double f = in.real(rate);

  CDigitFiltCoefMak01Butterworth designer;
  designer.initCtfButterworthFilter4SmplRate(rate);
  filter_iirspec first = spec, second = spec;
  designer.checkCorrectFilterSettings4SmplRate(&first);
  designer.ctfButterworthIirFilterCoef(&first);
  designer.mkiir(&second);
  CMFilterFaceqv::freqResponse(&first, rate, f);
  CMFilterFaceqv::freqResponse(&second, rate, f);
  designer.iirSpecs[static_cast<int>(in.range(0, 89))] = spec;
  designer.checkCorrectAllFilterSettings4SmplRate();
  designer.makeAllButterworthCoeffs(in.byte() & 1);
  digitfilt::setMessageHandler(quiet);
  return 0;
}
