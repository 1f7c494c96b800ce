// A filter_iirspec from bytes through both Butterworth designers and the frequency response, then
// the designer base's clamps and estimates and the acquisition-settings helpers on wild values.
#include <cstdint>
#include <memory>

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

  // A record as a host might hand it over, coefficient count and all; alone on the heap so that
  // a read past it is a sanitizer report.
  auto raw = std::make_unique<filter_iirspec>(spec);
  raw->enabled = 1;
  raw->numCoefs = static_cast<std::int32_t>(in.range(-3, 70));
  for (double& c : raw->coefs) c = in.real(4.0);
  const double responseRate = in.real(rate);
  CMFilterFaceqv::freqResponse(raw.get(), responseRate, f);

  CDigitFiltCoefMak base;
  base.initFiltRange4SmplRate(in.real(2000.0));
  double v = in.real(rate);
  base.correctFilterRange(v);
  base.correctFilterWidth(v);
  base.correctFreqRange4SR(v);
  base.correctFreqWidth4SR(v);
  base.swapDouble(v);
  // Read in a fixed order (a braced list is sequenced; call arguments are not).
  const double ripple = in.real(3.0), stop = in.real(100.0), width = in.real(0.5);
  base.estimatFilterOrder(ripple, stop, width);
  double edges[2] = {in.real(rate), in.real(rate)};
  double amps[2] = {in.real(1.0), in.real(1.0)};
  base.remezOrd(edges, amps, ripple, stop, rate);
  base.estimateOrderQv(rate, edges[0], edges[1], ripple, stop);
  base.attenuation2Decibel(amps[0], amps[1]);
  const std::uint64_t high = in.u32();
  const std::int64_t wide = static_cast<std::int64_t>(high << 32 | in.u32());
  base.isPower2(wide);
  base.getPower2Ceiling(wide);
  CDigitFiltCoefMak::set2odd(wide);
  int harmonics = static_cast<int>(static_cast<std::int32_t>(in.u32()));
  base.correctPNHarmonics(harmonics);
  base.getFreqCutoff4SrPt(rate, wide);
  base.getPts4FrqSr(rate, in.real(rate));

  CFilterDcLtSetAcqqv settings;
  settings.acqSampleRate = in.real(2000.0);
  settings.channelCount = static_cast<std::int32_t>(in.range(-1, 2));
  settings.powerLineType = static_cast<std::int32_t>(in.range(-1, 2));
  settings.powerLineFreq = in.real(100.0);
  settings.powerLineHarmonics = static_cast<std::int32_t>(in.u32());
  if (digitfilt::checkAcqSettingsReady(settings))
    digitfilt::limitPowerLineHarmonics(settings, digitfilt::powerLineBase(settings));
  digitfilt::setMessageHandler(quiet);
  return 0;
}
