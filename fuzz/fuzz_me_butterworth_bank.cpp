// Acquisition settings from bytes through the classic Butterworth bank: setCheckCoefs, the
// default pair, coefficient making, host-written stage fields, blocks through filtDataAcq with
// any start and end, the text dump and both copy forms.
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <vector>

#include <digitfilt/digitfilt.h>

#include "fuzz_input.h"

namespace {

using digitfilt::fuzz::Input;

void fillSettings(Input& in, CFilterDcLtSetAcqqv& s) {
  const double rate = in.real(2000.0);
  s.acqSampleRate = rate;
  s.channelCount = static_cast<std::int32_t>(in.range(-1, 3));
  s.lowPassOn = in.byte() & 1;
  s.lowPassFreq = in.real(rate);
  s.highPassOn = in.byte() & 1;
  s.highPassFreq = in.real(rate);
  const std::uint8_t notches = in.byte();
  for (int i = 0; i < 6; ++i) {
    s.notchOn[i] = (notches >> i) & 1;
    if (s.notchOn[i]) {
      s.notchFreqLow[i] = in.real(rate);
      s.notchFreqHigh[i] = in.real(rate);
    }
  }
  s.powerLineOn = in.byte() & 1;
  s.powerLineType = static_cast<std::int32_t>(in.range(-1, 2));
  s.powerLineFreq = in.real(rate);
  s.powerLineWidth = in.real(rate);
  s.powerLineHarmonics = in.wildInt(-5, 100);
}

// What a host may write into a listed stage before making coefficients or filtering.
void pokeStage(Input& in, CMeFilterButterworthqv& bank) {
  if (bank.filterList.size() == 0) return;
  const auto index = static_cast<std::int64_t>(in.range(0, bank.filterList.size() - 1));
  MeFilterButterworthx* s = bank.filterList.at(index);
  if (s == nullptr) return;
  switch (in.byte() % 6) {
    case 0: s->order = in.wildInt(-10, 40); break;
    case 1: s->numSections = in.wildInt(-5, 40); break;
    case 2: s->filterType = static_cast<std::int32_t>(in.range(-2, 5)); break;
    case 3: s->enabled = in.byte() & 1; break;
    case 4: s->sampleRate = in.real(2000.0); break;
    default: bank.filterList.reset(index); break;  // a null entry, skipped everywhere
  }
}

void runBlocks(Input& in, CMeFilterButterworthqv& bank) {
  const int blocks = static_cast<int>(in.range(0, 4));
  for (int b = 0; b < blocks; ++b) {
    std::vector<double> data = in.samples(static_cast<std::size_t>(in.range(0, 200)));
    // The length handed over never exceeds the buffer: it is the caller's promise.
    const auto length = static_cast<std::int64_t>(in.range(0, data.size()));
    const std::int64_t start = in.range(-8, 260) - (in.byte() == 0 ? (1LL << 40) : 0);
    const std::int64_t end = in.range(-8, 260) + (in.byte() == 0 ? (1LL << 40) : 0);
    double* ptr = (in.byte() % 16 == 0) ? nullptr : data.data();
    bank.filtDataAcq(ptr, length, start, end, static_cast<int>(in.range(-1, 64)));
    if (in.byte() % 4 == 0) bank.reset();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input in(data, size);
  auto quiet = digitfilt::setMessageHandler([](const std::wstring&) { return 1; });
  {
    CFilterDcLtSetAcqqv settings;
    fillSettings(in, settings);
    CMeFilterButterworthqv bank;
    if (in.byte() & 1) bank.initIIRFilters4Acq();
    bank.setCheckCoefs(settings);
    if (in.byte() % 4 == 0) bank.initIIRFilters4Acq();
    const int pokes = static_cast<int>(in.range(0, 3));
    for (int i = 0; i < pokes; ++i) pokeStage(in, bank);
    bank.makeAllButterworthCoeffs(in.byte() & 1);
    bank.checkCorrectAllFilterSettings4SmplRate();
    bank.getEnableFilters();
    runBlocks(in, bank);
    bank.getFilterInfo(0);

    CMeFilterButterworthqv copy(bank);
    CMeFilterButterworthqv appended;
    appended.initIIRFilters4Acq();
    appended = bank;
    CMeFilterButterworthqv& same = appended;
    appended = same;
    runBlocks(in, copy);
    runBlocks(in, appended);
    appended.getFilterInfo(1);

    double* d = bank.coefLowpass(static_cast<int>(in.range(-2, 40)), in.real(1.0), in.byte() & 1);
    std::free(d);
    bank.cleanCoefs();
    runBlocks(in, bank);
  }
  digitfilt::setMessageHandler(quiet);
  return 0;
}
