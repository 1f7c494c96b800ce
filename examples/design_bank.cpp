// Designs the default Butterworth bank for a sample rate and prints each enabled stage's
// coefficients with its gain at 0 Hz and at the cut-off.
#include <cstdio>
#include <cstdlib>
#include <digitfilt/digitfilt.h>

int main(int argc, char** argv) {
  const double rate = argc > 1 ? std::atof(argv[1]) : 1000.0;
  CDigitFiltCoefMak01Butterworth designer;
  designer.initCtfButterworthFilter4SmplRate(rate);
  designer.iirSpecs[0].freqHigh = 0.07 * rate;    // low-pass
  designer.iirSpecs[1].freqLow = 0.0005 * rate;   // high-pass
  const int made = designer.makeAllButterworthCoeffs(true);
  std::printf("sample rate %g Hz: %d stages designed\n", rate, made);
  for (filter_iirspec& s : designer.iirSpecs) {
    if (s.enabled != 1) continue;
    const double edge = s.filterType == 0 ? s.freqHigh : s.freqLow;
    std::printf("\ntype %d, order %d, edge %g Hz\n", s.filterType, s.order, edge);
    for (int k = 0; k < s.numCoefs; ++k)
      std::printf("  b[%d] = % .12e   a[%d] = % .12e\n", k, s.coefs[k], k, s.coefs[20 + k]);
    std::printf("  gain at 0 Hz: %.6f, at %g Hz: %.6f\n",
                CMFilterFaceqv::freqResponse(&s, rate, 0.0), edge,
                CMFilterFaceqv::freqResponse(&s, rate, edge));
  }
  return 0;
}
