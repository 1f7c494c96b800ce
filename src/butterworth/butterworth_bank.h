#pragma once
// The acquisition Butterworth bank: turns a host's CFilterDcLtSetAcqqv into the stages the
// acquisition filters run. Slot 0 low-pass, 1 high-pass, 2..5 notches 0..3, 6..65 the power-line
// harmonics 1..60; slots 66..89 are left as they were (an enabled one there takes part).
#include <string>

#include "digitfilt/butterworth/butterworth_acq.h"
#include "digitfilt/foundation/records.h"

class CDigitFiltCoefMak01ButterworthAcqqv : public CDigitFiltCoefMak01ButterworthAcq02Prcs {
 public:
  // Builds slots 0..65 from the settings, writing every clamped value back into them. Returns
  // the number of stages switched on, or 0 when the settings lack a rate or a channel (after
  // "Please setup the filter parameters first!") or no enabled stage passes the edge check.
  // Coefficients are not computed: call makeAllButterworthCoeffs before filtering.
  int setCheckCoefs(CFilterDcLtSetAcqqv& settings);
  // Text dump of the bank: base fields, every enabled stage with its coefficients, and the
  // counters of the last block call. The argument is not used.
  std::string getFilterInfo(int unused);
};
