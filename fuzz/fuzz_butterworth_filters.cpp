// Stage records from bytes, designed by either Butterworth designer or left as a host wrote
// them, then run through the zero-phase classes, the whole-record acquisition filters, the
// stretch routines over byte-chosen stretches (empty, reversed, negative, past the end,
// successive, with restarts), the frequency response and the prototype-pole sections.
#include <cstdint>
#include <limits>
#include <vector>

#include <digitfilt/digitfilt.h>

#include "fuzz_input.h"

namespace {

using digitfilt::fuzz::Input;

// Mostly a plain frequency inside the rate's range, sometimes anything at all.
double frequency(Input& in, double rate) {
  return (in.byte() % 4 == 0) ? in.real(rate) : in.finite(0.0, 0.5 * rate);
}

filter_iirspec makeSpec(Input& in, double rate, CDigitFiltCoefMak01Butterworth& designer) {
  filter_iirspec s;
  s.enabled = static_cast<std::int32_t>(in.range(-1, 2));
  s.filterType = static_cast<std::int32_t>(in.range(-1, 4));
  s.order = static_cast<std::int32_t>(in.range(-2, 22));
  s.sampleRate = (in.byte() % 8 == 0) ? in.real(2000.0) : rate;
  s.freqLow = frequency(in, rate);
  s.freqHigh = frequency(in, rate);
  switch (in.byte() % 4) {
    case 0: designer.ctfButterworthIirFilterCoef(&s); break;
    case 1: designer.mkiir(&s); break;
    case 2: {
      // As a host might hand it over: any coefficient count, any coefficients.
      s.numCoefs = static_cast<std::int32_t>(in.range(-3, 70));
      for (double& c : s.coefs) c = in.real(2.0);
      break;
    }
    default: break;  // never designed: the zero-phase filters design it on first use
  }
  return s;
}

// A stretch end near the buffer, sometimes far outside it.
std::int64_t stretchEnd(Input& in, std::int64_t n) {
  switch (in.byte() % 16) {
    case 0: return std::numeric_limits<std::int64_t>::min();
    case 1: return std::numeric_limits<std::int64_t>::max();
    case 2: return -(std::int64_t{1} << 40);
    case 3: return std::int64_t{1} << 40;
    default: return in.range(-4, n + 4);
  }
}

void zeroPhase(Input& in, const std::vector<filter_iirspec>& specs, double rate) {
  CDigitFiltCoefMak01Butterworth01ctf zp;
  if (in.byte() & 1) zp.initCtfButterworthFilter4SmplRate(rate);
  if (in.byte() % 4 == 0) zp.defaultCtfButterworthFilter();
  for (const filter_iirspec& s : specs) {
    filter_iirspec copy = s;
    if (in.byte() & 1)
      zp.setCtfButterworthIirFilterCoef(&copy);
    else
      zp.iirSpecs[in.range(0, 89)] = copy;
  }
  const auto count = static_cast<unsigned>(in.range(0, 90));
  std::vector<double> data = in.samples(static_cast<std::size_t>(in.range(0, 96)));
  const auto size = static_cast<std::int64_t>(data.size());
  // The caller's promise: n never exceeds the buffers. Negative counts and counts no array
  // could hold are guarded.
  std::int64_t n = in.range(-2, size);
  if (in.byte() % 16 == 0)
    n = (in.byte() & 1) ? std::numeric_limits<std::int64_t>::min()
                        : std::numeric_limits<std::int64_t>::max();
  zp.ctfFilterStd(data.data(), n, count, zp.getFilterCoeffPt());
  zp.ctfFilterStd(data.data(), n, count, zp.getFilterCoeffPt());  // cached work array
  std::vector<double> out(data.size());
  double* target = (in.byte() & 1) ? data.data() : out.data();
  zp.ctfFilterIOF(data.data(), target, n, zp.getFilterCoeffPt(),
                  static_cast<unsigned>(in.range(0, 90)));
  CDigitFiltCoefMak01Butterworth01ctf copy(zp);
  CDigitFiltCoefMak01Butterworth01ctf assigned;
  assigned = zp;
  copy.ctfFilterStd(data.data(), n, count, copy.getFilterCoeffPt());
  if (in.byte() & 1) assigned.resetFilterSettings();
  assigned.ctfFilterIOF(data.data(), out.data(), n, assigned.getFilterCoeffPt(), count);
  zp.cleanTmpAry();
  zp.cleanTmpIO();
  zp.cleanTmpTS();

  CDigitFiltCoefMak01Butterworth02ctfqv qv;
  for (int slot = 0; slot < 8 && slot < static_cast<int>(specs.size()); ++slot)
    qv.iirSpecs[slot] = specs[static_cast<std::size_t>(slot)];
  std::vector<double> other(data.size()), work(data.size());
  double* a = data.data();
  double* b = other.data();
  // Nothing is allocated here: the caller's arrays must hold n samples.
  qv.ctfFilterQv(a, b, work.data(), n > size ? size : n);
}

void wholeRecords(Input& in, CDigitFiltCoefMak01ButterworthAcq02Prcs& acq) {
  std::vector<double> data = in.samples(static_cast<std::size_t>(in.range(0, 96)));
  const auto size = static_cast<std::int64_t>(data.size());
  std::int64_t n = in.range(-2, size);
  std::vector<double> tmp(data.size()), work(data.size()), out(data.size());
  if (in.byte() % 16 == 0) n = std::numeric_limits<std::int64_t>::min();
  acq.fastFilterIn(data.data(), tmp.data(), work.data(), n);
  acq.fastFilterInOut(data.data(), out.data(), tmp.data(), work.data(), n);
}

void stretches(Input& in, CDigitFiltCoefMak01ButterworthAcq02Prcs& acq) {
  // At least one sample: a restart reads the buffer's first sample as the baseline.
  std::vector<double> data = in.samples(static_cast<std::size_t>(in.range(1, 128)));
  if (data.empty()) data.push_back(in.real(1.0));
  const auto n = static_cast<std::int64_t>(data.size());
  std::vector<double> tmp(data.size()), out(data.size());
  acq.reset4RunTimeFilter();
  const int calls = static_cast<int>(in.range(0, 8));
  std::int64_t next = 0;
  for (int c = 0; c < calls; ++c) {
    std::int64_t first = next, last = in.range(next, n);
    if (in.byte() % 4 == 0) {
      first = stretchEnd(in, n);
      last = stretchEnd(in, n);
    }
    std::int64_t length = n;
    switch (in.byte() % 8) {
      case 0: length = in.range(-1, n); break;
      case 1: length = std::numeric_limits<std::int64_t>::min(); break;
      default: break;
    }
    switch (in.byte() % 6) {
      case 0:
        acq.fastFilterInOutC(data.data(), out.data(), tmp.data(), length, first, last, c);
        break;
      case 1: {
        // The stage routines take the stretch as given: it must lie inside the buffers.
        const std::int64_t lo = in.range(-3, n), hi = in.range(-3, n);
        filter_iirspec& s = acq.iirSpecs[in.range(0, 89)];
        if (in.byte() & 1)
          acq.diirInC(data.data(), tmp.data(), lo, hi, &s);
        else
          acq.diirInOutC(data.data(), tmp.data(), lo, hi, &s);
        break;
      }
      case 2: acq.reset4RunTimeFilter(); break;
      default: acq.fastFilterInC(data.data(), tmp.data(), length, first, last, c); break;
    }
    next = (last >= 0 && last <= n) ? last : 0;
  }
}

void prototypePoles(Input& in) {
  CDigitFiltCoefMak01Butterworth03qv poles;
  const int designs = static_cast<int>(in.range(0, 4));
  for (int d = 0; d < designs; ++d) {
    std::int64_t n = in.range(-4, 64);
    switch (in.byte() % 16) {
      case 0: n = std::numeric_limits<std::int64_t>::max(); break;
      case 1: n = std::numeric_limits<std::int64_t>::min(); break;
      case 2: n = std::int64_t{1} << 40; break;
      case 3: n = (std::int64_t{1} << 40) + 1; break;
      default: break;
    }
    const double f1 = in.real(0.5), f2 = in.real(0.5);
    switch (in.byte() % 4) {
      case 0: poles.ukButterworthPoles(f1, n); break;
      case 1: poles.ukButterworthLowPass(f1, n); break;
      case 2: poles.ukButterworthHighPass(f1, n); break;
      default: poles.ukButterworthBandPass(f1, f2, n); break;
    }
    CDigitFiltCoefMak01Butterworth03qv copy(poles);
    poles = copy;
  }
  // Section arrays indexed from 1, as long as the section count needs.
  int n = static_cast<int>(in.range(-8, 64));
  if (in.byte() % 16 == 0)
    n = (in.byte() & 1) ? std::numeric_limits<int>::min() : std::numeric_limits<int>::min() + 1;
  const std::size_t slots = static_cast<std::size_t>(n > 0 ? n / 2 + 2 : 2);
  std::vector<double> a1(slots), a2(slots), b1(slots), b2(slots), g(slots);
  std::int64_t sections = 0;
  double sum = 0.0;
  const double f = in.real(1000.0), T = in.real(0.01);
  poles.paButterworthCoef02(f, T, n, a1.data(), a2.data(), b1.data(), b2.data(), g.data(),
                            &sections, &sum);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input in(data, size);
  auto quiet = digitfilt::setMessageHandler([](const std::wstring&) { return 1; });
  {
    const double rate = (in.byte() % 8 == 0) ? in.real(2000.0) : in.finite(1.0, 4000.0);
    CDigitFiltCoefMak01Butterworth designer;
    designer.initCtfButterworthFilter4SmplRate(rate);
    std::vector<filter_iirspec> specs(static_cast<std::size_t>(in.range(0, 4)));
    for (filter_iirspec& s : specs) {
      s = makeSpec(in, rate, designer);
      const double responseRate = frequency(in, rate) * 2.0;
      CMFilterFaceqv::freqResponse(&s, responseRate, frequency(in, rate));
    }

    zeroPhase(in, specs, rate);

    CDigitFiltCoefMak01ButterworthAcq02Prcs acq;
    if (in.byte() % 4 == 0) acq.initIIRFilters4Acq();
    for (const filter_iirspec& s : specs) acq.iirSpecs[in.range(0, 89)] = s;
    if (in.byte() % 4 == 0) acq.makeAllButterworthCoeffs(in.byte() & 1);
    acq.getEnableFilters();
    wholeRecords(in, acq);
    stretches(in, acq);
    CDigitFiltCoefMak01ButterworthAcq02Prcs copy(acq);
    stretches(in, copy);

    prototypePoles(in);
  }
  digitfilt::setMessageHandler(quiet);
  return 0;
}
