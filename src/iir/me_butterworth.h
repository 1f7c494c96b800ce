#pragma once
// Classic Butterworth filter object: a list of low-pass, high-pass, band-pass and band-stop
// stages, each a cascade of bilinear-transformed sections (second order for low/high-pass,
// fourth order for the band types), filtering blocks of doubles in place. The sections keep
// their state from call to call, so one object serves one channel.
#include <cstdint>
#include <memory>
#include <string>

#include "digitfilt/foundation/ptr_list.h"

// One stage. Index i of every array belongs to section i.
struct MeFilterButterworthx {
  static constexpr int kMaxSections = 20;

  std::string name = "ButterworthFilter";
  std::int32_t enabled = 0;  // 1 = filtered; 0 = skipped by every filtering operation
  double sampleRate = 300.0;
  std::int32_t order = 4;
  std::int32_t numSections = 0;
  std::int32_t stageVariant = 1;  // carried, never read
  std::int32_t filterType = -1;   // 0 low-pass, 1 high-pass, 2 band-pass, 3 band-stop
  double lowpassFreq = 80.0;
  double highpassFreq = 3.0;
  double bandHighFreq = 80.0;
  double bandLowFreq = 3.0;
  // Band-stop edges as the acquisition bank sets them; the defaults are inverted on purpose,
  // hosts rely on them.
  double stopLowFreq = 65.0;
  double stopHighFreq = 55.0;
  double A[kMaxSections] = {};
  double d1[kMaxSections] = {};
  double d2[kMaxSections] = {};
  double d3[kMaxSections] = {};
  double d4[kMaxSections] = {};
  double w0[kMaxSections] = {};
  double w1[kMaxSections] = {};
  double w2[kMaxSections] = {};
  double w3[kMaxSections] = {};
  double w4[kMaxSections] = {};
  double stopR = 1.0;  // band-stop numerator term 4a
  double stopS = 1.0;  // band-stop numerator term 4a^2 + 2
};

class CMeFilterButterworth {
 public:
  CMeFilterButterworth() = default;
  // The copy gets its own stages (a deep copy of the source's list).
  CMeFilterButterworth(const CMeFilterButterworth& other);
  // Appends copies of the source's stages after the target's own (they are not removed first),
  // then copies the bookkeeping. Self-assignment leaves the object as it is.
  CMeFilterButterworth& operator=(const CMeFilterButterworth& other);
  ~CMeFilterButterworth();

  // Resets a stage to the defaults of MeFilterButterworthx; 0 for a null stage.
  static int initButterworthStage(MeFilterButterworthx* stage);

  // Appends a low-pass stage (if lowpassOn) and then a high-pass stage (if highpassOn) with their
  // sections made at once. The high-pass stage is left disabled until the caller enables it.
  int makeCoefLopsHips(int order, double sampleRate, int lowpassOn, double lowpassFreq,
                       int highpassOn, double highpassFreq);
  // Appends one band-pass (bandpass != 0, left disabled) or band-stop stage (enabled).
  int makeCoefBndpasBndstp(int order, double sampleRate, double highFreq, double lowFreq,
                           int bandpass);
  // Recomputes one stage from its fields; an unknown type re-initialises the stage, result 0.
  int makeCoefs(MeFilterButterworthx* stage);
  // makeCoefs on every stage (only enabled ones when onlyEnabled); returns how many succeeded.
  int makeAllButterworthCoeffs(int onlyEnabled);

  // Clamps a stage's frequencies to its own sample rate; a band narrower than 0.00049 rate
  // (judged on stopLowFreq/stopHighFreq) is disabled and gives 0.
  int checkCorrectFilterSettings4SmpRate(MeFilterButterworthx* stage);
  // Checks every enabled stage; returns how many passed.
  int checkCorrectAllFilterSettings4SmplRate();

  // In place through every enabled stage, the whole block through one stage before the next.
  // 0 when a stage of unknown type is met (later stages and samples are left as they are) or
  // when a non-empty block has no data pointer.
  int filtData(double* data, std::int64_t n);
  // Forward and then backward through each stage, the backward pass starting from the states the
  // forward pass ended with.
  int filtDataZeroShift(double* data, std::int64_t n);
  // Filters data[start..end] in place; `channel` only labels the block. Samples outside
  // [0, length) are never touched.
  int filtDataAcq(double* data, std::int64_t length, std::int64_t start, std::int64_t end,
                  int channel);

  // Clears the block bookkeeping; section states are kept.
  int reset();
  // Releases every stage; lastIndex becomes -1.
  int cleanCoefs();

  // Clamps with write-back, lower bound tested first.
  double correctFilterRange(double& f);
  double correctFilterWidth(double& w);

  std::int32_t basicStatus = 0;
  double sampleRate = 0.0;
  double minFreq = 0.0;
  double maxFreq = 0.0;
  double minHighEdge = 0.0;
  double maxHighEdge = 0.0;
  std::int32_t auxCount = 3;
  digitfilt::PtrList<MeFilterButterworthx> filterList;
  std::int32_t lastIndex = 0;
  std::int32_t firstCall = 1;
  double* blockData = nullptr;
  std::int64_t blockLength = 0;
  std::int64_t blockStart = 0;
  std::int64_t blockEnd = 0;
  std::int32_t blockChannel = 0;

 protected:
  // A fresh stage with the defaults, or null when memory is short.
  static std::unique_ptr<MeFilterButterworthx> newStage();
};
