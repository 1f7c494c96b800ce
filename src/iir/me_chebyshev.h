#pragma once
// Chebyshev type I filter object: a list of high-pass, low-pass, band-pass and band-stop stages,
// each a cascade of bilinear-transformed sections, filtering blocks of doubles in place. The
// ripple is given as the Chebyshev epsilon, not in dB: the pass band swings between
// 1/sqrt(1 + eps^2) and 1. Sections keep their state from call to call.
#include <cstdint>
#include <memory>
#include <string>

#include "digitfilt/foundation/ptr_list.h"

// One stage. Index i of every array belongs to section i. A fresh stage starts its first
// section with d1, d2, d3 and the states w1..w4 at 1.0 (everything else 0): the makers never
// clear states, so a new filter has a start-up transient, as hosts expect.
struct MeFilterChebyshevx {
  static constexpr int kMaxSections = 36;

  std::string name = "ChebyshevFilter";
  std::int32_t enabled = 0;
  std::int32_t order = 2;
  std::int32_t numSections = 0;
  double sampleRate = 300.0;
  double gain = 0.5;               // output factor, 2 / eps once made
  std::int32_t filterType = 0;     // 1 high-pass, 2 low-pass, 3 band-pass, 4 band-stop
  double lowpassFreq = 80.0;
  double highpassFreq = 3.0;
  double bandHighFreq = 80.0;
  double bandLowFreq = 3.0;
  double stopLowFreq = 65.0;       // carried, never read
  double stopHighFreq = 55.0;      // carried, never read
  double A[kMaxSections] = {};
  double d1[kMaxSections] = {1.0};
  double d2[kMaxSections] = {1.0};
  double d3[kMaxSections] = {1.0};
  double d4[kMaxSections] = {};
  double w0[kMaxSections] = {};
  double w1[kMaxSections] = {1.0};
  double w2[kMaxSections] = {1.0};
  double w3[kMaxSections] = {1.0};
  double w4[kMaxSections] = {1.0};
  double stopR = 1.0;  // band-stop numerator term 4a
  double stopS = 0.0;  // band-stop numerator term 4a^2 + 2
};

class CMeFilterChebyshev {
 public:
  CMeFilterChebyshev() = default;
  // Copies own their stages: the copy's list holds fresh copies of the source's stages.
  CMeFilterChebyshev(const CMeFilterChebyshev& other);
  CMeFilterChebyshev& operator=(const CMeFilterChebyshev& other);
  ~CMeFilterChebyshev() = default;  // the list releases the stages

  // Resets a stage to the defaults of MeFilterChebyshevx; 0 for a null stage.
  static int initChebyshevStage(MeFilterChebyshevx* stage);

  // Appends a low-pass stage (if lowpassOn) and then a high-pass stage (if highpassOn). The
  // high-pass stays disabled until the caller enables it. 0 only when memory is short.
  int makeCoefLopsHips(int order, double sampleRate, int lowpassOn, double lowpassFreq,
                       int highpassOn, double highpassFreq, double epsilon);
  // Appends one band-pass (bandpass != 0, left disabled) or band-stop stage (enabled); the order
  // must be a multiple of 4 (reduced with a message otherwise) and becomes 4..36.
  int makeCoefBndpasBndstp(int order, double sampleRate, double highFreq, double lowFreq,
                           int bandpass, double epsilon);
  // In place through every enabled stage, the whole block through one stage before the next;
  // stages of unknown type are skipped. 1, or 0 when a non-empty block has no data pointer.
  int filtData(double* data, std::int64_t n);

  digitfilt::PtrList<MeFilterChebyshevx> stageList;

 private:
  static std::unique_ptr<MeFilterChebyshevx> newStage();
};

// The same filter under its second exported name.
class CMeFilterChebyshevqv : public CMeFilterChebyshev {
 public:
  CMeFilterChebyshevqv() = default;
};
