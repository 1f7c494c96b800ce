#pragma once
// Magnitude response of one designed IIR stage.
#include "digitfilt/foundation/records.h"

class CMFilterFaceqv {
 public:
  // |H(e^jw)| at w = 2 pi f / sampleRate (the argument, not s->sampleRate). A stage whose
  // `enabled` is not exactly 1 passes everything (1.0). Writes 0 into the record's a[0], as every
  // consumer of the record does.
  static double freqResponse(filter_iirspec* s, double sampleRate, double f);
};
