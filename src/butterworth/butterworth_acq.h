#pragma once
// Acquisition-time filtering through the designer's 90 Butterworth stages: whole records
// zero-phase (forward then backward per stage), or causal stretches of a growing buffer.
//
// The stretch routines keep no per-channel history: each stage reads its earlier input and
// output samples back from the caller's two buffers by absolute index, so a host keeps one object
// and one pair of buffers per channel and chains blocks by calling again with a later stretch.
// Input and output buffers must be distinct arrays.
#include <cstdint>

#include "digitfilt/butterworth/butterworth_designer.h"

class CDigitFiltCoefMak01ButterworthAcq : public CDigitFiltCoefMak01Butterworth {
 public:
  // Zero-phase over n samples in place through every enabled stage; tmp and work hold n samples.
  // 0 (data unchanged) when no stage is enabled.
  int fastFilterIn(double* data, double* tmp, double* work, std::int64_t n);
  // Zero-phase from in to out. Every record after the first enabled one is run (a disabled one
  // copies), so the result ends in out only when that count and the buffer parity agree;
  // otherwise out holds the stage before. Kept for hosts that rely on it.
  int fastFilterInOut(double* in, double* out, double* tmp, double* work, std::int64_t n);
  // High-pass 4 Hz, low-pass 80 Hz, 57-63 Hz band-stop, all order 4, in slots 0..2; no sample
  // rate. Sets iirSpecCount to 4 (three stages are enabled) and returns 4.
  int initIIRFilters4Acq();
  // Number of the 90 records whose enabled word is nonzero.
  int getEnableFilters();
  // Starts a new run: the next stretch call records its arguments; baseline back to 0.
  int reset4RunTimeFilter();

  // iirSpecCount (inherited): enabled stages found by the last stretch call.
  std::int32_t stagesRun = 0;   // stages applied by the last stretch call
  double baseline = 0.0;        // offset subtracted from every input sample
  // A new object is ready for a run, as after reset4RunTimeFilter.
  std::int32_t restartPending = 1;
  double* runDataPtr = nullptr;  // arguments of the call that started the run
  std::int64_t runLength = 0;
  std::int64_t runFirst = 0;  // stretch of the latest call
  std::int64_t runLast = 0;
  std::int32_t runTag = 0;

 protected:
  // One zero-phase stage from x to y through w (n samples each); a disabled stage copies and
  // returns 0. The offsets x[0] and w[n-1] are subtracted in the two passes and not added back.
  int bdiir(double* x, double* y, double* w, std::int64_t n, filter_iirspec* s);
  // Rough settling time in seconds of a stage of the given type with edges f1, f2.
  double getSettlingTime(double f1, double f2, int type);
};

class CDigitFiltCoefMak01ButterworthAcq02Prcs : public CDigitFiltCoefMak01ButterworthAcq {
 public:
  // Causal stage over y[first .. last) with offset `baseline`. At a pending restart it takes
  // x[0] as the baseline and clears the restart. 0 when last <= first.
  int diirInC(double* x, double* y, std::int64_t first, std::int64_t last, filter_iirspec* s);
  // As diirInC, but only y[first] is computed and a restart stays pending. Kept for hosts.
  int diirInOutC(const double* x, double* y, std::int64_t first, std::int64_t last,
                 filter_iirspec* s);
  // Filters data[first .. last) in place through every enabled stage, with tmp (as long as
  // data) as the second buffer. `length` is the number of samples the buffers hold: the stretch
  // is cut there, and so is the closing copy, which takes data[last] from tmp as well when the
  // stage count is odd. The first call of a run records the run but leaves the baseline at 0.
  int fastFilterInC(double* data, double* tmp, std::int64_t length, std::int64_t first,
                    std::int64_t last, int tag);
  // The same from in to out through diirInOutC, so each stage yields out[first] only.
  int fastFilterInOutC(const double* in, double* out, double* tmp, std::int64_t length,
                       std::int64_t first, std::int64_t last, int tag);
};
