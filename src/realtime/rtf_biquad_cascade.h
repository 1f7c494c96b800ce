#pragma once
// Cascaded biquads: the full audio-EQ cookbook set in direct form I, a normalised-frequency
// section in transposed direct form II, and that section with one state pair per channel.
#include <cstdint>
#include <memory>

#include "digitfilt/realtime/rtf_biquad.h"

// One direct-form-I section of the cookbook set. Types: 0 low-pass, 1 high-pass, 2 band-pass
// (skirt gain q), 3 band-pass (0 dB peak), 4 notch, 5 all-pass, 6 peak (q in octaves), 7 low
// shelf, 8 high shelf.
struct BIQUAD_PARAM2 : digitfilt::BiquadStageRecord {
  std::unique_ptr<digitfilt::BiquadStageRecord> clone() const override;

  std::int32_t type = -1;
  double peakGain = 0.709;  // dB
  double fc = 3.0;          // Hz
  double sampleRate = 125.0;
  double q = 6.0;           // Q, or the bandwidth in octaves for the peak
  double shelfSlope = 2.0;  // S of the shelves
  double b0 = 0.0, b1 = 0.0, b2 = 0.0, a1 = 0.0, a2 = 0.0;
  double x1 = 0.0, x2 = 0.0, y1 = 0.0, y2 = 0.0;
};

// One transposed-direct-form-II section: numerator a0..a2, denominator 1, b1, b2.
struct BIQUAD_PARAM3 : digitfilt::BiquadStageRecord {
  std::unique_ptr<digitfilt::BiquadStageRecord> clone() const override;

  std::int32_t type = -1;
  std::int64_t reserved = 0;
  double sampleRate = 1.0;
  double fc = 0.25;  // fraction of the rate in an object's own record; Hz in settings stages
  double q = 0.707;
  double peakGain = 0.709;  // dB
  double a0 = 1.0, a1 = 0.0, a2 = 0.0, b1 = 0.0, b2 = 0.0;
  double z1 = 0.0, z2 = 0.0;
};

// Cookbook cascade in direct form I, built from the acquisition settings like CRtf1Biquad; the
// type-5 request builds an all-pass and the high-shelf request a real high shelf.
class CRtf2Biquad : public CRtf0Basic {
 public:
  CRtf2Biquad() = default;
  CRtf2Biquad(const CRtf2Biquad& other);
  CRtf2Biquad& operator=(const CRtf2Biquad& other);
  ~CRtf2Biquad() = default;

  // Coefficients for these values into the object's own record (its parameter fields stay, its
  // history is cleared); null for a type outside 0..8.
  BIQUAD_PARAM2* calcBiquads(int type, double peakGain, double fc, double sampleRate, double q,
                             double shelfSlope);
  // Coefficients of the record from its own fields; clears its history. 0 for a null record or
  // a type outside 0..8 (record unchanged).
  int calcBiquad(BIQUAD_PARAM2* bq);
  // One direct-form-I step.
  double filterB(double x, BIQUAD_PARAM2* bq);

  int setCheckCoefs(CFilterDcLtSetAcqqv& settings);
  int makeAllBiquadCoeffs(int onlyEnabled);
  int filtDataAcq(double* data, std::int64_t length, std::int64_t start, std::int64_t end,
                  int channel);

  BIQUAD_PARAM2 biquadParam;
};

// Normalised-frequency section in transposed direct form II; its own record is live from
// construction. A cascade built from the settings stores each stage's parameters (in Hz) but
// never designs them: makeAllBiquadCoeffs recomputes the object's own record instead, so the
// cascade passes data through unchanged. Hosts rely on that; keep it.
class CRtf3Biquad : public CRtf0Basic {
 public:
  CRtf3Biquad() = default;
  CRtf3Biquad(int type, double fc, double sampleRate, double q, double peakGain);
  CRtf3Biquad(const CRtf3Biquad& other);
  CRtf3Biquad& operator=(const CRtf3Biquad& other);
  ~CRtf3Biquad() = default;

  // Stores type, fc / sampleRate, q and peakGain (not the rate) and designs the own record.
  void setBiquad(int type, double fc, double sampleRate, double q, double peakGain);
  void setType(int type);
  void setQ(double q);
  void setFc(double normalisedFc);
  void setPeakGain(double peakGainDb);
  // Ignores its argument and recomputes the object's own record, deliberately. Always 1.
  int makeCoefs(BIQUAD_PARAM3* ignored);
  // One step on the own record.
  double process(double x);
  // One step on `rec`.
  double processx(double x, BIQUAD_PARAM3* rec);

  int setCheckCoefs(CFilterDcLtSetAcqqv& settings);
  int makeAllBiquadCoeffs(int onlyEnabled);
  int filtDataAcq(double* data, std::int64_t length, std::int64_t start, std::int64_t end,
                  int channel);

  BIQUAD_PARAM3 biquadParam;

 protected:
  // Designs the own record from its fields; type 5 and unknown types keep the old coefficients.
  void calcBiquad();
};

// The CRtf3Biquad section with one state pair per channel. Usable after the parameterised
// constructor; copies share the state arrays.
class CRtf3BiquadMutiChnl : public CRtf0Basic {
 public:
  CRtf3BiquadMutiChnl() = default;
  CRtf3BiquadMutiChnl(int channelCount, int type, double fc, double q, double peakGain);

  void setType(int type);
  void setQ(double q);
  void setFc(double normalisedFc);
  void setPeakGain(double peakGainDb);
  void setBiquad(int type, double fc, double q, double peakGain);
  // One step with the state of `channel`; a channel without state gives 0.
  double process(double x, int channel);

  std::int32_t channelCount = 0;
  std::int32_t type = 0;
  double a0 = 1.0, a1 = 0.0, a2 = 0.0, b1 = 0.0, b2 = 0.0;
  double fc = 0.5;  // fraction of the rate
  double q = 0.707;
  double peakGain = 0.0;  // dB
  double* z1s = nullptr;  // views of the owned state arrays
  double* z2s = nullptr;

 protected:
  void calcBiquad();

 private:
  std::shared_ptr<double[]> z1sOwner_;
  std::shared_ptr<double[]> z2sOwner_;
};
