// The acquisition filter objects from bytes: each class built by each constructor with
// byte-chosen frequencies, extra values and stage records, set up through setFilterParameters
// (and the resampling remover's own set-up), run over several byte-sized blocks, copied by
// construction and by assignment and run again, and asked for its settling time.
//
// Nothing is skipped: every record, rate and block is survivable.
#include <cstdint>
#include <memory>
#include <vector>

#include <digitfilt/digitfilt.h>

#include "fuzz_input.h"

namespace {

using digitfilt::fuzz::Input;

filter_iirspec record(Input& in) {
  filter_iirspec s;
  s.enabled = static_cast<std::int32_t>(in.range(-1, 2));
  s.filterType = static_cast<std::int32_t>(in.range(-1, 4));
  s.sampleRate = in.real(4000.0);
  s.freqLow = in.real(100.0);
  s.freqHigh = in.real(100.0);
  s.order = static_cast<std::int32_t>(in.range(-2, 24));
  s.numCoefs = static_cast<std::int32_t>(in.range(-3, 70));
  const int filled = static_cast<int>(in.range(0, 60));
  for (int k = 0; k < filled; ++k) s.coefs[k] = in.real(2.0);
  return s;
}

// Several blocks of byte-chosen sizes, each alone on the heap.
template <typename Run>
void blocks(Input& in, Run run) {
  const int count = static_cast<int>(in.range(0, 4));
  for (int b = 0; b < count; ++b) {
    const std::size_t n = static_cast<std::size_t>(in.range(0, 300));
    std::vector<double> block = in.samples(n);
    if (block.empty()) {
      run(static_cast<double*>(nullptr), static_cast<std::int64_t>(in.range(-2, 2)));
      continue;
    }
    run(block.data(), static_cast<std::int64_t>(block.size()));
  }
}

template <typename T>
std::unique_ptr<T> build(Input& in) {
  switch (in.byte() % 3) {
    case 0: return std::make_unique<T>();
    case 1: {
      // Only the base takes the (freq, n, values) form; derived objects get it through a copy.
      const int n = static_cast<int>(in.range(-2, 8));
      std::vector<double> values(8);
      for (double& v : values) v = in.real(10.0);
      CMeFilterAcq seed(in.real(100.0), n, values.data());
      auto made = std::make_unique<T>();
      static_cast<CMeFilterAcq&>(*made) = seed;
      return made;
    }
    default: {
      auto made = std::make_unique<T>();
      made->passFreq = in.real(100.0);
      made->passFreq2 = in.real(100.0);
      return made;
    }
  }
}

template <typename T>
void exercise(Input& in, T& f) {
  f.setFilterParameters(record(in));
  blocks(in, [&](double* d, std::int64_t n) { f.filter(d, n); });
  f.PassFilter(in.real(100.0), in.byte(), static_cast<int>(in.range(-2, 2)));
  T copied(f);
  blocks(in, [&](double* d, std::int64_t n) { copied.filter(d, n); });
  T assigned;
  assigned = f;
  blocks(in, [&](double* d, std::int64_t n) { assigned.filter(d, n); });
  f.setFilterParameters(record(in));
  blocks(in, [&](double* d, std::int64_t n) { f.filter(d, n); });
  blocks(in, [&](double* d, std::int64_t n) { assigned.filter(d, n); });
}

template <typename T>
void exerciseIntPol(Input& in, T& f) {
  f.setFilterParametersIntPol(record(in));
  blocks(in, [&](double* d, std::int64_t n) { f.filterIntPol(d, n); });
  T assigned;
  assigned = f;  // shares the grid work array
  blocks(in, [&](double* d, std::int64_t n) { assigned.filterIntPol(d, n); });
  blocks(in, [&](double* d, std::int64_t n) { f.filterIntPol(d, n); });
  T copied(f);
  blocks(in, [&](double* d, std::int64_t n) { copied.filterIntPol(d, n); });
  f.setFilterParameters(record(in));  // the plain remover's set-up on the same object
  blocks(in, [&](double* d, std::int64_t n) { f.filter(d, n); });
  f.setFilterParametersIntPol(record(in));
  blocks(in, [&](double* d, std::int64_t n) { f.filterIntPol(d, n); });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input in(data, size);
  auto quiet = digitfilt::setMessageHandler([](const std::wstring&) { return 1; });
  switch (in.byte() % 8) {
    case 0: {
      auto f = build<CMeFilterAcq>(in);
      exercise(in, *f);
      CMeFilterAcq fromRecord(record(in));
      blocks(in, [&](double* d, std::int64_t n) { fromRecord.filter(d, n); });
      fromRecord.getSettlingTime();
      break;
    }
    case 1: {
      auto f = build<CMeFilterAcqHPFilter>(in);
      exercise(in, *f);
      f->getSettlingTime();
      break;
    }
    case 2: {
      auto f = build<CMeFilterAcqLPFilter>(in);
      exercise(in, *f);
      f->getSettlingTime();
      break;
    }
    case 3: {
      const double f1 = in.real(100.0), f2 = in.real(100.0);
      CMeFilterAcqNotchFilter notch(f1, f2);
      notch.getSettlingTime();
      exercise(in, notch);
      notch.getSettlingTime();
      break;
    }
    case 4: {
      auto f = build<CMeFilterAcqPowerLine>(in);
      exercise(in, *f);
      break;
    }
    case 5: {
      auto f = build<CMeFilterAcqPowerLine02IntPol>(in);
      exerciseIntPol(in, *f);
      break;
    }
    case 6: {
      auto f = build<CMeFilterAcqPowerLineqv>(in);
      exerciseIntPol(in, *f);
      exercise(in, *f);
      break;
    }
    default: {
      // Through the base, as a host holds them.
      std::unique_ptr<CMeFilterAcq> f;
      switch (in.byte() % 4) {
        case 0: f = std::make_unique<CMeFilterAcqHPFilter>(); break;
        case 1: f = std::make_unique<CMeFilterAcqLPFilter>(); break;
        case 2: f = std::make_unique<CMeFilterAcqPowerLine>(); break;
        default: f = std::make_unique<CMeFilterAcqPowerLineqv>(); break;
      }
      f->setFilterParameters(record(in));
      blocks(in, [&](double* d, std::int64_t n) { f->filter(d, n); });
      break;
    }
  }
  digitfilt::setMessageHandler(quiet);
  return 0;
}
