#pragma once
// The classic Butterworth object driven by the host's acquisition settings: setCheckCoefs turns
// the settings into a list of stages (low-pass, high-pass, up to six notches) and writes any
// clamped value back into the settings; the host then makes the coefficients
// (makeAllButterworthCoeffs) and filters each block with filtDataAcq. One object per channel.
#include <string>

#include "digitfilt/foundation/records.h"
#include "digitfilt/iir/me_butterworth.h"

class CMeFilterButterworthqv : public CMeFilterButterworth {
 public:
  CMeFilterButterworthqv() = default;
  CMeFilterButterworthqv(const CMeFilterButterworthqv&) = default;
  // Appends copies of the source's stages after the target's own, as the base does.
  CMeFilterButterworthqv& operator=(const CMeFilterButterworthqv&) = default;
  ~CMeFilterButterworthqv() = default;

  // Rebuilds the stage list from the settings. Returns the number of stages counted, which
  // includes the power-line comb although its stages are never listed; 0 when the settings are
  // not ready or when no listed stage passes the rate check.
  int setCheckCoefs(CFilterDcLtSetAcqqv& settings);
  // Appends the default pair: 80 Hz low-pass and 4 Hz high-pass, order 4, at 250 Hz. Returns 2.
  int initIIRFilters4Acq();
  // One line of ten values (A, d1..d4, w0..w4) per section of every enabled stage; the argument
  // is not read.
  std::string getFilterInfo(int unused);
  // Number of listed stages with `enabled` set.
  int getEnableFilters();
  // Denominator d[0..n] of the direct-form low-pass at fcf (1.0 = half the sample rate); the
  // caller releases it with free. The numerator is computed (and scaled when scaleNumerator is
  // set) but not returned.
  double* coefLowpass(int n, double fcf, int scaleNumerator);
};
