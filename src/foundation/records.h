#pragma once
// Records exchanged with host programs byte for byte. Their layouts are fixed: hosts allocate and
// fill them, and the library reads and corrects them in place.
#include <cstddef>
#include <cstdint>

// One IIR stage: what is wanted and the coefficients the designer made of it. Numerator b[k] is
// kept at coefs[k], denominator a[k] at coefs[20 + k].
struct filter_iirspec {
  std::int32_t enabled = 0;     // 1 = in use; anything else is skipped
  std::int32_t reserved0 = 0;   // set to 1 by resetFilterSettings; never read
  std::int32_t filterType = 0;  // 0 low-pass, 1 high-pass, 2 band-pass, 3 band-stop
  std::int32_t reserved1 = 0;   // alignment
  double freqHigh = 0.0;        // Hz; the cut-off of a low-pass
  double freqLow = 0.0;         // Hz; the cut-off of a high-pass
  double reservedFreq = 0.0;    // carried, never read
  double sampleRate = 0.0;      // Hz
  std::int32_t order = 0;       // analogue prototype order
  std::int32_t numCoefs = 0;    // coefficients per polynomial
  double coefs[60] = {};
};

// The host's acquisition filter settings, read and corrected in place by every bank's
// setCheckCoefs. The host* words belong to the host and are never touched by the library.
struct CFilterDcLtSetAcqqv {
  std::int32_t hostWord0 = 0;
  std::int32_t hostWord1 = 0;
  std::int32_t hostWord2 = 0;
  std::int32_t highPassOn = 0;
  double highPassFreq = 0.0;
  std::int32_t lowPassOn = 0;
  double lowPassFreq = 0.0;
  std::int32_t notchOn[6] = {};
  double notchFreqLow[6] = {};
  double notchFreqHigh[6] = {};  // clamped into the width range, deliberately
  std::int32_t powerLineOn = 0;
  double powerLineFreq = 0.0;      // used when powerLineType is neither 0 nor 1
  double powerLineWidth = 0.0;     // full stop-band width around each harmonic
  std::int32_t powerLineType = 0;  // 0 = 60 Hz, 1 = 50 Hz, other = powerLineFreq
  std::int32_t powerLineHarmonics = 0;
  std::int32_t bqBandPassOn = 0;
  double bqBandPassFreq1 = 0.0;
  double bqBandPassFreq2 = 0.0;
  std::int32_t bqBandPass2On = 0;
  double bqBandPass2Freq1 = 0.0;
  double bqBandPass2Freq2 = 0.0;
  std::int32_t bqPeakOn = 0;
  std::int32_t bqType5On = 0;
  double bqPeakFreq = 0.0;
  std::int32_t bqLowShelfOn = 0;
  double bqLowShelfFreq = 0.0;
  std::int32_t bqHighShelfOn = 0;
  double bqHighShelfFreq = 0.0;
  double bqQ = 0.0;
  double bqPeakGainDb = 0.0;
  double bqParam3 = 0.0;
  std::int64_t hostData[9] = {};
  double acqSampleRate = 0.0;  // must be > 0
  std::int32_t channelCount = 0;  // must be >= 1
};

// Hosts exchange these records with the library: pin every field's place.
static_assert(sizeof(filter_iirspec) == 536, "filter_iirspec layout");
static_assert(offsetof(filter_iirspec, enabled) == 0, "filter_iirspec layout");
static_assert(offsetof(filter_iirspec, filterType) == 8, "filter_iirspec layout");
static_assert(offsetof(filter_iirspec, freqHigh) == 16, "filter_iirspec layout");
static_assert(offsetof(filter_iirspec, freqLow) == 24, "filter_iirspec layout");
static_assert(offsetof(filter_iirspec, reservedFreq) == 32, "filter_iirspec layout");
static_assert(offsetof(filter_iirspec, sampleRate) == 40, "filter_iirspec layout");
static_assert(offsetof(filter_iirspec, order) == 48, "filter_iirspec layout");
static_assert(offsetof(filter_iirspec, numCoefs) == 52, "filter_iirspec layout");
static_assert(offsetof(filter_iirspec, coefs) == 56, "filter_iirspec layout");

static_assert(sizeof(CFilterDcLtSetAcqqv) == 400, "CFilterDcLtSetAcqqv layout");
static_assert(offsetof(CFilterDcLtSetAcqqv, highPassOn) == 12, "CFilterDcLtSetAcqqv layout");
static_assert(offsetof(CFilterDcLtSetAcqqv, highPassFreq) == 16, "CFilterDcLtSetAcqqv layout");
static_assert(offsetof(CFilterDcLtSetAcqqv, lowPassOn) == 24, "CFilterDcLtSetAcqqv layout");
static_assert(offsetof(CFilterDcLtSetAcqqv, lowPassFreq) == 32, "CFilterDcLtSetAcqqv layout");
static_assert(offsetof(CFilterDcLtSetAcqqv, notchOn) == 40, "CFilterDcLtSetAcqqv layout");
static_assert(offsetof(CFilterDcLtSetAcqqv, notchFreqLow) == 64, "CFilterDcLtSetAcqqv layout");
static_assert(offsetof(CFilterDcLtSetAcqqv, notchFreqHigh) == 112, "CFilterDcLtSetAcqqv layout");
static_assert(offsetof(CFilterDcLtSetAcqqv, powerLineOn) == 160, "CFilterDcLtSetAcqqv layout");
static_assert(offsetof(CFilterDcLtSetAcqqv, powerLineFreq) == 168, "CFilterDcLtSetAcqqv layout");
static_assert(offsetof(CFilterDcLtSetAcqqv, powerLineWidth) == 176, "CFilterDcLtSetAcqqv layout");
static_assert(offsetof(CFilterDcLtSetAcqqv, powerLineType) == 184, "CFilterDcLtSetAcqqv layout");
static_assert(offsetof(CFilterDcLtSetAcqqv, powerLineHarmonics) == 188,
              "CFilterDcLtSetAcqqv layout");
static_assert(offsetof(CFilterDcLtSetAcqqv, bqBandPassOn) == 192, "CFilterDcLtSetAcqqv layout");
static_assert(offsetof(CFilterDcLtSetAcqqv, bqBandPassFreq1) == 200, "CFilterDcLtSetAcqqv layout");
static_assert(offsetof(CFilterDcLtSetAcqqv, bqBandPassFreq2) == 208, "CFilterDcLtSetAcqqv layout");
static_assert(offsetof(CFilterDcLtSetAcqqv, bqBandPass2On) == 216, "CFilterDcLtSetAcqqv layout");
static_assert(offsetof(CFilterDcLtSetAcqqv, bqBandPass2Freq1) == 224,
              "CFilterDcLtSetAcqqv layout");
static_assert(offsetof(CFilterDcLtSetAcqqv, bqBandPass2Freq2) == 232,
              "CFilterDcLtSetAcqqv layout");
static_assert(offsetof(CFilterDcLtSetAcqqv, bqPeakOn) == 240, "CFilterDcLtSetAcqqv layout");
static_assert(offsetof(CFilterDcLtSetAcqqv, bqType5On) == 244, "CFilterDcLtSetAcqqv layout");
static_assert(offsetof(CFilterDcLtSetAcqqv, bqPeakFreq) == 248, "CFilterDcLtSetAcqqv layout");
static_assert(offsetof(CFilterDcLtSetAcqqv, bqLowShelfOn) == 256, "CFilterDcLtSetAcqqv layout");
static_assert(offsetof(CFilterDcLtSetAcqqv, bqLowShelfFreq) == 264, "CFilterDcLtSetAcqqv layout");
static_assert(offsetof(CFilterDcLtSetAcqqv, bqHighShelfOn) == 272, "CFilterDcLtSetAcqqv layout");
static_assert(offsetof(CFilterDcLtSetAcqqv, bqHighShelfFreq) == 280, "CFilterDcLtSetAcqqv layout");
static_assert(offsetof(CFilterDcLtSetAcqqv, bqQ) == 288, "CFilterDcLtSetAcqqv layout");
static_assert(offsetof(CFilterDcLtSetAcqqv, bqPeakGainDb) == 296, "CFilterDcLtSetAcqqv layout");
static_assert(offsetof(CFilterDcLtSetAcqqv, bqParam3) == 304, "CFilterDcLtSetAcqqv layout");
static_assert(offsetof(CFilterDcLtSetAcqqv, hostData) == 312, "CFilterDcLtSetAcqqv layout");
static_assert(offsetof(CFilterDcLtSetAcqqv, acqSampleRate) == 384, "CFilterDcLtSetAcqqv layout");
static_assert(offsetof(CFilterDcLtSetAcqqv, channelCount) == 392, "CFilterDcLtSetAcqqv layout");

namespace digitfilt {

// The guard every setCheckCoefs starts with: shows the message and returns false when the
// settings carry no sample rate or no channel.
bool checkAcqSettingsReady(const CFilterDcLtSetAcqqv& settings);

// Power-line base frequency chosen by powerLineType: 60, 50 or the custom powerLineFreq.
double powerLineBase(const CFilterDcLtSetAcqqv& settings);

// Limits powerLineHarmonics to the harmonics of f0 below half the sample rate: when the count
// reaches rate / f0 / 2 it becomes floor(limit - 0.01), is written back, and the harmonic message
// is shown with the old and the new count. Not a failure; the caller goes on.
void limitPowerLineHarmonics(CFilterDcLtSetAcqqv& settings, double f0);

}  // namespace digitfilt
