// Acquisition settings from bytes through the acquisition Butterworth bank: setCheckCoefs, host
// stages left in the spare slots, coefficient making, per-channel blocks through fastFilterInC
// and per-stage diirInC with restarts, the text dump, and both copy forms.
#include <cstdint>
#include <limits>
#include <vector>

#include <digitfilt/digitfilt.h>

#include "fuzz_input.h"

namespace {

using digitfilt::fuzz::Input;

void fillSettings(Input& in, CFilterDcLtSetAcqqv& s) {
  const double rate = (in.byte() % 4 == 0) ? in.real(2000.0) : in.finite(1.0, 4000.0);
  s.acqSampleRate = rate;
  s.channelCount = static_cast<std::int32_t>(in.range(-1, 3));
  s.lowPassOn = in.byte() & 1;
  s.lowPassFreq = in.real(rate);
  s.highPassOn = in.byte() & 1;
  s.highPassFreq = in.real(rate);
  const std::uint8_t notches = in.byte();
  for (int i = 0; i < 6; ++i) {
    s.notchOn[i] = (notches >> i) & 1;
    s.notchFreqLow[i] = in.real(rate);
    s.notchFreqHigh[i] = in.real(rate);
  }
  s.powerLineOn = in.byte() & 1;
  s.powerLineType = static_cast<std::int32_t>(in.range(-1, 2));
  s.powerLineFreq = in.real(rate);
  s.powerLineWidth = in.real(rate);
  s.powerLineHarmonics = in.wildInt(-5, 100);
}

// A stage a host left in one of the slots the bank does not touch (or wrote over one it did).
void pokeStage(Input& in, CDigitFiltCoefMak01ButterworthAcqqv& bank) {
  filter_iirspec& s = bank.iirSpecs[in.range(0, 89)];
  switch (in.byte() % 6) {
    case 0: s.order = in.wildInt(-2, 22); break;
    case 1: s.numCoefs = in.wildInt(-3, 70); break;
    case 2: s.filterType = static_cast<std::int32_t>(in.range(-1, 4)); break;
    case 3: s.enabled = static_cast<std::int32_t>(in.range(-1, 2)); break;
    case 4: s.sampleRate = in.real(2000.0); break;
    default: s.coefs[in.range(0, 59)] = in.real(2.0); break;
  }
}

// Blocks of one channel: successive stretches of one growing buffer, sometimes restarted,
// sometimes with a stretch chosen at will (reversed, negative, past the end).
void runBlocks(Input& in, CDigitFiltCoefMak01ButterworthAcqqv& bank) {
  std::vector<double> data = in.samples(static_cast<std::size_t>(in.range(1, 160)));
  if (data.empty()) data.push_back(in.real(1.0));
  const auto n = static_cast<std::int64_t>(data.size());
  std::vector<double> tmp(data.size());
  bank.reset4RunTimeFilter();
  const int blocks = static_cast<int>(in.range(0, 6));
  std::int64_t next = 0;
  for (int b = 0; b < blocks; ++b) {
    std::int64_t first = next, last = in.range(next, n);
    switch (in.byte() % 8) {
      case 0: first = in.range(-8, n + 8); last = in.range(-8, n + 8); break;
      case 1: last = std::numeric_limits<std::int64_t>::max(); break;
      case 2: first = std::numeric_limits<std::int64_t>::min(); break;
      default: break;
    }
    if (in.byte() % 8 == 0) bank.reset4RunTimeFilter();
    if (in.byte() % 4 == 0) {
      // One stage by hand; the stretch must lie inside the buffers.
      filter_iirspec& s = bank.iirSpecs[in.range(0, 89)];
      bank.diirInC(data.data(), tmp.data(), in.range(-3, n), in.range(-3, n), &s);
    } else {
      std::int64_t length = n;
      if (in.byte() % 8 == 0)
        length = in.range(-2, n) - (in.byte() == 0 ? (std::int64_t{1} << 62) : 0);
      bank.fastFilterInC(data.data(), tmp.data(), length, first, last, b);
    }
    next = (last >= 0 && last <= n) ? last : 0;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input in(data, size);
  auto quiet = digitfilt::setMessageHandler([](const std::wstring&) { return 1; });
  {
    CFilterDcLtSetAcqqv settings;
    fillSettings(in, settings);
    CDigitFiltCoefMak01ButterworthAcqqv bank;
    if (in.byte() % 4 == 0) bank.initIIRFilters4Acq();
    bank.setCheckCoefs(settings);
    const int pokes = static_cast<int>(in.range(0, 3));
    for (int i = 0; i < pokes; ++i) pokeStage(in, bank);
    if (in.byte() % 8 != 0) bank.makeAllButterworthCoeffs(in.byte() & 1);
    for (int i = 0; i < pokes; ++i) pokeStage(in, bank);
    bank.getEnableFilters();
    bank.getFilterInfo(0);
    // One bank per channel, as hosts keep them.
    const int channels = static_cast<int>(in.range(1, 2));
    std::vector<CDigitFiltCoefMak01ButterworthAcqqv> perChannel(static_cast<std::size_t>(channels),
                                                                bank);
    for (CDigitFiltCoefMak01ButterworthAcqqv& channel : perChannel) runBlocks(in, channel);
    runBlocks(in, bank);
    bank.getFilterInfo(1);

    CDigitFiltCoefMak01ButterworthAcqqv assigned;
    assigned = bank;
    if (in.byte() & 1) assigned.setCheckCoefs(settings);
    runBlocks(in, assigned);
    assigned.getFilterInfo(2);
  }
  digitfilt::setMessageHandler(quiet);
  return 0;
}
