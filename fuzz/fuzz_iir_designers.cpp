// The pole-zero IIR designer and the biquad designer from bytes: every setter (the text ones
// with byte-made names in any case), pole placement, expansion and the gain curve at any order,
// rate, edges and ripple; the biquad's resonator and cookbook faces with any type and values,
// sample by sample, through copies that share the resonator state, and its order estimate.
//
// Nothing is skipped except the length of the gain curve, which the caller chooses and pays for:
// it is kept below 4096 points here.
#include <cstdint>
#include <cwctype>
#include <string>

#include <digitfilt/digitfilt.h>

#include "fuzz_input.h"

namespace {

// One of the names the setters know, in a byte-chosen case, or a byte-made string.
std::wstring name(digitfilt::fuzz::Input& in) {
  static const wchar_t* const kNames[] = {L"Butterworth", L"Chebyshev", L"LP", L"HP", L"BP",
                                          L"",            L"B",         L"LPX"};
  const std::uint8_t pick = in.byte();
  std::wstring s;
  if (pick & 0x80) {
    const int len = static_cast<int>(in.range(0, 12));
    for (int i = 0; i < len; ++i) s.push_back(static_cast<wchar_t>(in.byte()));
    return s;
  }
  s = kNames[pick % 8];
  const std::uint8_t caseBits = in.byte();
  for (std::size_t i = 0; i < s.size(); ++i)
    if (caseBits & (1u << (i % 8))) s[i] = static_cast<wchar_t>(std::towupper(s[i]));
    else s[i] = static_cast<wchar_t>(std::towlower(s[i]));
  return s;
}

int wildOrder(digitfilt::fuzz::Input& in) {
  const std::uint8_t kind = in.byte();
  if (kind % 8 == 0) return static_cast<int>(static_cast<std::int32_t>(in.u32()));
  if (kind % 8 == 1) return static_cast<int>(in.range(-110, 110));
  return static_cast<int>(in.range(-12, 24));
}

void runPoleZero(digitfilt::fuzz::Input& in) {
  CDigitFiltCoefMak08IIR d;
  const std::uint8_t ops = in.byte();
  if (ops & 1) d.setPrototype(name(in));
  else d.setPrototype(static_cast<int>(in.range(-1, 6)));
  if (ops & 2) d.setFilterType(name(in));
  else d.setFilterType(static_cast<int>(in.range(-1, 4)));
  d.setOrder(wildOrder(in));
  if (ops & 4) d.setFilterType(name(in));  // after the order, so an odd order is made even
  d.setRate(in.real(2000.0));
  const double rate = d.getRate();
  d.setFreq1(in.real(rate));
  d.setFreq2(in.real(rate));
  d.setRipple(in.real(6.0));
  const std::uint8_t points = in.byte();
  d.setFreqPoints(static_cast<int>(points == 255 ? in.range(-2, 4095) : in.range(-2, points)));

  if (ops & 8) d.locatePolesAndZeros();
  if (ops & 16) d.design();
  if (ops & 32) {
    // A changed order after placing the poles: design and the curve must notice.
    d.setOrder(wildOrder(in));
  }
  double* gain = d.filterGain();
  delete[] gain;
  for (int i = 0; i < 4; ++i) {
    const int at = static_cast<int>(in.range(-3, 120));
    d.getPReal(at);
    d.getPImag(at);
    d.getACoeff(at);
    d.getBCoeff(at);
  }
  CDigitFiltCoefMak08IIR copy;
  copy = d;
  d.setOrder(wildOrder(in));
  d.design();
  gain = copy.filterGain();
  delete[] gain;
  gain = d.filterGain();
  delete[] gain;
  d.odd(wildOrder(in));
  d.sqr(in.real(1e10));
}

void runBiquad(digitfilt::fuzz::Input& in) {
  CDigitFiltCoefMak07BiQuad q;
  const std::uint8_t ops = in.byte();
  q.tickRate = in.real(2000.0);
  if (ops & 1) {
    q.setA1(in.real(2.0));
    q.setA2(in.real(2.0));
    q.setB1(in.real(2.0));
    q.setB2(in.real(2.0));
  }
  if (ops & 2) {
    double poles[2] = {in.real(2.0), in.real(2.0)};
    double zeros[2] = {in.real(2.0), in.real(2.0)};
    q.setPoleCoeffs(poles);
    q.setZeroCoeffs((ops & 4) ? nullptr : zeros);
  }
  if (ops & 8) q.setFreqAndReson(in.real(q.tickRate), in.real(1.0));
  if (ops & 16) q.setEqualGainZeroes();
  q.setGain(in.real(4.0));
  if (ops & 32) q.clear();
  // Read in a fixed order (call arguments are not sequenced).
  const int type = static_cast<int>((ops & 64) ? static_cast<std::int32_t>(in.u32())
                                               : static_cast<std::int32_t>(in.range(-1, 11)));
  const double dbGain = in.real(40.0), rate = in.real(48000.0), freq = in.real(rate);
  const double qv = in.real(4.0), slope = in.real(2.0);
  q.BiQuad_new(type, dbGain, freq, rate, qv, slope);

  CDigitFiltCoefMak07BiQuad copy;
  copy = q;  // shares the resonator state
  const std::int64_t count = in.range(0, 200);
  for (std::int64_t i = 0; i < count && !in.empty(); ++i) {
    const double x = in.real(1000.0);
    q.tick(x);
    q.BiQuad(x);
    copy.tick(x);
  }
  copy.clear();
  q.tick(1.0);
  const double passDb = in.real(3.0), stopDb = in.real(80.0), sr = in.real(1000.0);
  const double passF = in.real(sr), stopF = in.real(sr);
  q.estimateFilterOrder(passDb, stopDb, passF, stopF, sr);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  digitfilt::fuzz::Input in(data, size);
  auto quiet = digitfilt::setMessageHandler([](const std::wstring&) { return 1; });
  if (in.byte() & 1) {
    runPoleZero(in);
    runBiquad(in);
  } else {
    runBiquad(in);
    runPoleZero(in);
  }
  digitfilt::setMessageHandler(quiet);
  return 0;
}
