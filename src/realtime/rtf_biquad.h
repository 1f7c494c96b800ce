#pragma once
// Real-time biquad basics: the state shared by the biquad cascades (sample rate, clamps, the owned
// stage list, the remembered block arguments) and the named-type biquad cascade built from the
// host's acquisition settings.
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "digitfilt/foundation/ptr_list.h"
#include "digitfilt/foundation/records.h"
#include "digitfilt/realtime/rtf_biquad_stages.h"

// Biquad type codes. 2 and 3 share one formula and one name; 5 and every unknown value are a unit
// pass-through.
enum RTF_BQ_TYPEX : std::int32_t {
  RTF_BQ_LOWPASS = 0,
  RTF_BQ_HIGHPASS = 1,
  RTF_BQ_BANDPASS = 2,
  RTF_BQ_BANDPASS2 = 3,
  RTF_BQ_NOTCH = 4,
  RTF_BQ_NONE = 5,
  RTF_BQ_PEAK = 6,
  RTF_BQ_LOWSHELF = 7,
  RTF_BQ_HIGHSHELF = 8,
};

namespace digitfilt {

// Common head of every stage record kept in a cascade's list, so one list type serves all
// cascades and a stage is destroyed and copied as what it is.
struct BiquadStageRecord {
  BiquadStageRecord() = default;
  BiquadStageRecord(const BiquadStageRecord&) = default;
  BiquadStageRecord& operator=(const BiquadStageRecord&) = default;
  virtual ~BiquadStageRecord() = default;
  virtual std::unique_ptr<BiquadStageRecord> clone() const = 0;

  std::int32_t enabled = 0;  // 1 = the stage takes part in filtDataAcq
};

}  // namespace digitfilt

// One second-order section with a three-slot history ring; a0 is kept at 1 after a calculation.
struct BIQUAD_PARAM1 : digitfilt::BiquadStageRecord {
  std::unique_ptr<digitfilt::BiquadStageRecord> clone() const override;

  RTF_BQ_TYPEX type = RTF_BQ_LOWPASS;
  double sampleRate = 0.0;  // Hz
  double fc = 0.0;          // Hz
  double q = 0.0;
  double peakGain = 0.0;    // dB
  std::uint32_t ringIndex = 0;
  double a0 = 0.0, a1 = 0.0, a2 = 0.0;
  double b0 = 0.0, b1 = 0.0, b2 = 0.0;
  double xHist[3] = {};
  double yHist[3] = {};
};

// Sample rate, clamps and the owned stage list shared by the biquad cascades. Copies are deep:
// each stage is copied into a fresh record. Destruction frees the stages as well.
class CRtf0Basic {
 public:
  CRtf0Basic() = default;
  CRtf0Basic(const CRtf0Basic& other);
  CRtf0Basic& operator=(const CRtf0Basic& other);
  ~CRtf0Basic() = default;

  // Q of a band from its edges: sqrt(f1 f2) / (f2 - f1).
  double freqBand2Q(double f1, double f2);
  // Butterworth order for pass/stop levels p1, p2 (dB, divided by 20) and edges p3, p4 (Hz);
  // the quotient is rounded to single precision before the ceiling, as hosts expect.
  double fltOrder(double p1, double p2, double p3, double p4, double fs);

  // Frees every stage; lastIndex becomes -1. Always 1.
  int cleanCoefs();
  // Re-arms the block bookkeeping only; stage histories run on. Always 1.
  int reset();
  // Non-null stages with enabled set.
  int getEnableFilters();
  // No description is kept for biquad cascades: always empty.
  std::string getFilterInfo(int);

  std::int32_t basicStatus = 0;
  double sampleRate = 0.0;
  double minFreq = 0.0;      // 0.0001 rate
  double maxFreq = 0.0;      // 0.5 rate
  double minHighEdge = 0.0;  // 0.0005 rate
  double maxHighEdge = 0.0;  // 0.5 rate
  std::int32_t auxCount = 3;
  // Owned stages; a cascade skips null entries and records of another cascade's type.
  digitfilt::PtrList<digitfilt::BiquadStageRecord> biquadList;
  std::int32_t lastIndex = 0;
  std::int32_t firstCall = 1;
  double* blockData = nullptr;
  std::int64_t blockLength = 0;
  std::int64_t blockStart = 0;
  std::int64_t blockEnd = 0;
  std::int32_t blockChannel = 0;

 protected:
  // Makes the record of one stage of the given type and centre (Hz); null when it cannot.
  using StageMaker = std::function<std::unique_ptr<digitfilt::BiquadStageRecord>(int, double)>;

  // The cascade every setCheckCoefs builds from the settings, in its fixed order (low-pass,
  // high-pass, notches, power-line comb, band-passes, type 5, peak, low shelf, high shelf), with
  // every clamp written back. `highShelfType` is the type given to the high-shelf stage. Returns
  // the number of stages appended, 0 when the settings are not ready or a stage is not made.
  int buildSettingsCascade(CFilterDcLtSetAcqqv& settings, int highShelfType,
                           const StageMaker& make);
  // Block bookkeeping of filtDataAcq: remembers the arguments on a first call or at start 0.
  // Returns the part of data[start..end] that lies inside the array.
  digitfilt::SampleSpan beginBlock(double* data, std::int64_t length, std::int64_t start,
                                   std::int64_t end, int channel);
  void endBlock(std::int64_t start, std::int64_t end);
  // Copies the scalars and deep-copies every non-null stage (appended after the present ones).
  void copyBasicFrom(const CRtf0Basic& other);
};

// Named-type biquad cascade of one channel, built from the acquisition settings and designed with
// the audio-EQ cookbook formulas. Call setCheckCoefs, then makeAllBiquadCoeffs, then filtDataAcq
// once per block.
class CRtf1Biquad : public CRtf0Basic {
 public:
  CRtf1Biquad() = default;
  CRtf1Biquad(const CRtf1Biquad& other);
  // Cleans this cascade, then copies every scalar and deep-copies every non-null stage.
  CRtf1Biquad& operator=(const CRtf1Biquad& other);
  ~CRtf1Biquad() = default;

  // Stage operations; none checks for a null record.
  static BIQUAD_PARAM1* biquad_create(RTF_BQ_TYPEX type, int sampleRate, double fc, double q,
                                      double peakGain);
  static void biquad_destroy(BIQUAD_PARAM1* bq);
  static BIQUAD_PARAM1* biquad_clone(const BIQUAD_PARAM1* bq);
  static double biquad_process(BIQUAD_PARAM1* bq, double x);
  // Clears the histories; coefficients and ringIndex stay.
  static void biquad_clear(BIQUAD_PARAM1* bq);
  // Recomputes the coefficients and rewinds ringIndex to 0; the histories stay.
  static void biquad_calculate(BIQUAD_PARAM1* bq);
  static void biquad_setFs(BIQUAD_PARAM1* bq, double sampleRate);
  static void biquad_setType(BIQUAD_PARAM1* bq, RTF_BQ_TYPEX type);
  static void biquad_setFc(BIQUAD_PARAM1* bq, double fc);
  static void biquad_setQ(BIQUAD_PARAM1* bq, double q);
  static void biquad_setPeakGain(BIQUAD_PARAM1* bq, double peakGain);
  static double biquad_getFs(const BIQUAD_PARAM1* bq) { return bq->sampleRate; }
  static double biquad_getFc(const BIQUAD_PARAM1* bq) { return bq->fc; }
  static double biquad_getQ(const BIQUAD_PARAM1* bq) { return bq->q; }
  static double biquad_getPeakGain(const BIQUAD_PARAM1* bq) { return bq->peakGain; }
  static const char* biquad_getFilterName(const BIQUAD_PARAM1* bq);

  // Builds the cascade from the settings, clamping them in place; the coefficients are left for
  // makeAllBiquadCoeffs. The high-shelf request builds a second low-shelf stage, deliberately.
  // Returns the number of stages, 0 on failure.
  int setCheckCoefs(CFilterDcLtSetAcqqv& settings);
  // Calculates every stage (only the enabled ones when asked); returns how many.
  int makeAllBiquadCoeffs(int onlyEnabled);
  // Filters data[start..end] in place, stage after stage; an output that is a NaN is written as
  // 0 while the stage keeps it in its history. Indices outside [0, length) are not touched.
  // 0 only for a null data pointer.
  int filtDataAcq(double* data, std::int64_t length, std::int64_t start, std::int64_t end,
                  int channel);

  BIQUAD_PARAM1 biquadParam;  // the object's own record; the stages live in biquadList
};
