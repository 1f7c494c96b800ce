// Acquisition settings from bytes through every biquad cascade and the facade, blocks of samples
// with chosen bounds through them, and the single-section operations with wild parameters.
#include <cstdint>
#include <limits>
#include <memory>
#include <type_traits>
#include <vector>

#include <digitfilt/digitfilt.h>

#include "fuzz_input.h"

namespace {

using digitfilt::fuzz::Input;

constexpr std::int64_t kMaxBlock = 256;

int flag(Input& in) { return in.byte() % 3 == 0 ? 0 : 1; }

CFilterDcLtSetAcqqv settingsFrom(Input& in) {
  CFilterDcLtSetAcqqv s;
  const double rate = in.real(4000.0);
  s.acqSampleRate = rate;
  s.channelCount = static_cast<std::int32_t>(in.range(-1, 3));
  s.lowPassOn = flag(in);
  s.lowPassFreq = in.real(rate);
  s.highPassOn = flag(in);
  s.highPassFreq = in.real(rate);
  for (int k = 0; k < 6; ++k) {
    s.notchOn[k] = in.byte() & 1;
    s.notchFreqLow[k] = in.real(rate);
    s.notchFreqHigh[k] = in.real(rate);
  }
  s.powerLineOn = flag(in);
  s.powerLineType = static_cast<std::int32_t>(in.range(-1, 2));
  s.powerLineFreq = in.real(rate);
  s.powerLineWidth = in.real(rate);
  switch (in.byte() % 4) {
    case 0: s.powerLineHarmonics = std::numeric_limits<std::int32_t>::min(); break;
    case 1: s.powerLineHarmonics = std::numeric_limits<std::int32_t>::max(); break;
    default: s.powerLineHarmonics = static_cast<std::int32_t>(in.range(-3, 80)); break;
  }
  s.bqBandPassOn = flag(in);
  s.bqBandPassFreq1 = in.real(rate);
  s.bqBandPassFreq2 = in.real(rate);
  s.bqBandPass2On = flag(in);
  s.bqBandPass2Freq1 = in.real(rate);
  s.bqBandPass2Freq2 = in.real(rate);
  s.bqPeakOn = flag(in);
  s.bqType5On = flag(in);
  s.bqPeakFreq = in.real(rate);
  s.bqLowShelfOn = flag(in);
  s.bqLowShelfFreq = in.real(rate);
  s.bqHighShelfOn = flag(in);
  s.bqHighShelfFreq = in.real(rate);
  s.bqQ = in.real(10.0);
  s.bqPeakGainDb = in.real(40.0);
  s.bqParam3 = in.real(4.0);
  return s;
}

std::int64_t boundFrom(Input& in, std::int64_t n) {
  switch (in.byte() % 8) {
    case 0: return std::numeric_limits<std::int64_t>::min();
    case 1: return std::numeric_limits<std::int64_t>::max();
    default: return in.range(-3, n + 3);
  }
}

// A few blocks through `filt`; the buffer always holds `length` samples when the length is
// positive, so anything touched outside it is the library's fault.
template <class Filter>
void runBlocks(Input& in, Filter& filt) {
  const int blocks = static_cast<int>(in.range(0, 4));
  for (int b = 0; b < blocks; ++b) {
    const std::int64_t n = in.range(0, kMaxBlock);
    std::vector<double> buf(static_cast<std::size_t>(n));
    for (double& v : buf) v = in.real(1000.0);
    const std::int64_t length = in.byte() % 4 == 0 ? in.range(-3, n) : n;
    const std::int64_t start = boundFrom(in, n), end = boundFrom(in, n);
    const int channel = static_cast<int>(in.range(-2, 5));
    double* data = (in.byte() % 16 == 0 || buf.empty()) ? nullptr : buf.data();
    filt.filtDataAcq(data, length, start, end, channel);
    if (in.byte() % 4 == 0) filt.reset();
  }
}

// Sets a wild ring position on one stage so the ring wrap is exercised.
void scrambleRing(Input& in, CRtf1Biquad& c) {
  if (c.biquadList.empty() || in.byte() % 4 != 0) return;
  auto* stage = dynamic_cast<BIQUAD_PARAM1*>(
      c.biquadList.at(in.range(0, static_cast<std::int64_t>(c.biquadList.size()) - 1)));
  if (stage) stage->ringIndex = in.u32();
}

template <class Record>
void addEnabled(digitfilt::PtrList<digitfilt::BiquadStageRecord>& list) {
  auto rec = std::make_unique<Record>();
  rec->enabled = 1;
  list.add(std::move(rec));
}

// Hosts may append to the public stage list: a null entry or a record of any cascade's type.
void appendStray(Input& in, CRtf0Basic& c) {
  switch (in.byte() % 8) {
    case 0: c.biquadList.add(nullptr); break;
    case 1: addEnabled<BIQUAD_PARAM1>(c.biquadList); break;
    case 2: addEnabled<BIQUAD_PARAM2>(c.biquadList); break;
    case 3: addEnabled<BIQUAD_PARAM3>(c.biquadList); break;
    default: break;
  }
}

template <class Cascade>
void driveCascade(Input& in, const CFilterDcLtSetAcqqv& base) {
  CFilterDcLtSetAcqqv s = base;
  Cascade c;
  c.setCheckCoefs(s);
  appendStray(in, c);
  c.makeAllBiquadCoeffs(in.byte() & 1);
  if constexpr (std::is_same_v<Cascade, CRtf1Biquad>) scrambleRing(in, c);
  runBlocks(in, c);
  c.getEnableFilters();
  c.getFilterInfo(0);
  Cascade copy;
  copy = c;
  runBlocks(in, copy);
  c.cleanCoefs();
  runBlocks(in, c);
}

void driveFacade(Input& in, const CFilterDcLtSetAcqqv& base) {
  CFilterDcLtSetAcqqv s = base;
  CRtfBiquadFace face;
  face.classIndex = static_cast<std::int32_t>(in.range(-1, 3));
  face.setBiquadClass(static_cast<int>(in.range(-1, 3)), in.byte() & 1);
  face.getBiquad(in.byte() & 1);
  face.setCheckCoefs(s);
  if (CRtf0Basic* member = face.getBiquad(0)) appendStray(in, *member);
  face.makeAllBiquadCoeffs(in.byte() & 1);
  runBlocks(in, face);
  face.getEnableFilters();
  face.getFilterInfo(0);
  CRtfBiquadFace copy;
  copy = face;
  runBlocks(in, copy);
  face.classIndex = static_cast<std::int32_t>(in.range(-1, 3));
  face.setCheckCoefs(s);
  face.makeAllBiquadCoeffs(in.byte() & 1);
  runBlocks(in, face);
  face.cleanCoefs();
  face.cleanFlt();
  runBlocks(in, face);
}

std::int32_t wildInt(Input& in, std::int64_t lo, std::int64_t hi) {
  switch (in.byte() % 8) {
    case 0: return std::numeric_limits<std::int32_t>::min();
    case 1: return std::numeric_limits<std::int32_t>::max();
    default: return static_cast<std::int32_t>(in.range(lo, hi));
  }
}

void driveSections(Input& in) {
  const auto type = static_cast<RTF_BQ_TYPEX>(wildInt(in, -2, 10));
  const int rate = wildInt(in, -10, 100000);
  BIQUAD_PARAM1* bq =
      CRtf1Biquad::biquad_create(type, rate, in.real(rate), in.real(10.0), in.real(40.0));
  if (bq) {
    if (in.byte() % 4 == 0) bq->ringIndex = in.u32();
    for (int i = static_cast<int>(in.range(0, 16)); i > 0; --i)
      CRtf1Biquad::biquad_process(bq, in.real(1000.0));
    BIQUAD_PARAM1* twin = CRtf1Biquad::biquad_clone(bq);
    CRtf1Biquad::biquad_setFc(twin, in.real(rate));
    CRtf1Biquad::biquad_process(twin, in.real(1000.0));
    CRtf1Biquad::biquad_getFilterName(twin);
    CRtf1Biquad::biquad_destroy(twin);
    CRtf1Biquad::biquad_destroy(bq);
  }

  CRtf2Biquad two;
  const double rate2 = in.real(4000.0);
  BIQUAD_PARAM2* own = two.calcBiquads(wildInt(in, -2, 10), in.real(40.0), in.real(rate2), rate2,
                                       in.real(10.0), in.real(4.0));
  if (own) two.filterB(in.real(1000.0), own);
  two.calcBiquad(nullptr);

  CRtf3Biquad three(wildInt(in, -2, 10), in.real(4000.0), in.real(4000.0), in.real(10.0),
                    in.real(40.0));
  three.setFc(in.real(1.0));
  three.setType(wildInt(in, -2, 10));
  three.process(in.real(1000.0));
  three.makeCoefs(nullptr);

  CRtf3BiquadMutiChnl multi(static_cast<int>(in.range(-3, 64)), wildInt(in, -2, 10),
                            in.real(1.0), in.real(10.0), in.real(40.0));
  CRtf3BiquadMutiChnl shared = multi;
  for (int i = static_cast<int>(in.range(0, 8)); i > 0; --i) {
    multi.process(in.real(1000.0), wildInt(in, -3, 70));
    shared.setBiquad(wildInt(in, -2, 10), in.real(1.0), in.real(10.0), in.real(40.0));
    shared.process(in.real(1000.0), wildInt(in, -3, 70));
  }
  CRtf3BiquadMutiChnl bare;
  bare.process(in.real(1000.0), wildInt(in, -3, 3));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input in(data, size);
  auto quiet = digitfilt::setMessageHandler([](const std::wstring&) { return 1; });
  const CFilterDcLtSetAcqqv settings = settingsFrom(in);
  switch (in.byte() % 5) {
    case 0: driveCascade<CRtf1Biquad>(in, settings); break;
    case 1: driveCascade<CRtf2Biquad>(in, settings); break;
    case 2: driveCascade<CRtf3Biquad>(in, settings); break;
    case 3: driveFacade(in, settings); break;
    default: driveSections(in); break;
  }
  digitfilt::setMessageHandler(quiet);
  return 0;
}
