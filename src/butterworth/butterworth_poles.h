#pragma once
// Butterworth second-order sections from digital poles placed directly at the pre-warped
// cut-off: one biquad table per section for a low-pass, a high-pass or a band-pass, and a
// low-pass section set written into caller arrays (paButterworthCoef02).
#include <cstdint>
#include <memory>

#include "digitfilt/foundation/design_base.h"

class CDigitFiltCoefMak01Butterworth03qv : public CDigitFiltCoefMak {
 public:
  // Poles for the normalised cut-off f (a fraction of the sample rate) in poleRe/poleIm[1 .. n+1].
  // Always 1, except 0 (no poles) when the arrays cannot be had or n exceeds 2^20, which no
  // filter needs. The section designs below refuse such counts the same way.
  int ukButterworthPoles(double f, std::int64_t n);
  // n sections with unit gain at 0 Hz each: numTables = {b0, b1, b2}, denTables = {a0, a1, a2}
  // (a0 is left 0). 0 when the arrays cannot be had.
  int ukButterworthLowPass(double f, std::int64_t n);
  // n sections from the poles placed for 0.5 - f with their real parts negated; b = 1, -2, 1.
  int ukButterworthHighPass(double f, std::int64_t n);
  // n (an odd n rounded up) sections b = 1, 0, -1 built from the prototype poles for f2 - f1
  // and n/2, untransformed, deliberately: hosts rely on these tables as they are. Sections past
  // the poles that exist read zero-filled spare slots.
  int ukButterworthBandPass(double f1, double f2, std::int64_t n);
  // Low-pass sections for cut-off f (Hz) and sample interval T into a1, a2, b1, b2, g, indexed
  // from 1; an odd n ends with a first-order section. Writes the section count and the summed
  // delay figure. The shortened pi 3.1415926535 is used throughout, deliberately. 0 only for a
  // null argument. A negative odd n would place its first-order section before index 1: it is
  // left out. Each array needs n/2 + 2 elements.
  int paButterworthCoef02(double f, double T, int n, double* a1, double* a2, double* b1,
                          double* b2, double* g, std::int64_t* sectionCount, double* sum);

  std::int64_t poleCount = 0;  // n of the last ukButterworthPoles call
  double* poleRe = nullptr;    // used from index 1
  double* poleIm = nullptr;
  std::int64_t spare0[2] = {};
  std::int64_t spare1[2] = {};
  double** numTables = nullptr;  // b0[], b1[], b2[]
  double** denTables = nullptr;  // a0[], a1[], a2[]

 private:
  struct PoleArrays;
  struct SectionTables;
  // Places the poles into arrays of at least `slots` zero-filled elements.
  bool placePoles(double f, std::int64_t n, std::int64_t slots);
  bool takeTables(std::int64_t n);

  // Owners of the arrays the public pointers view; copies share them, as hosts expect.
  std::shared_ptr<PoleArrays> poles_;
  std::shared_ptr<SectionTables> tables_;
};
