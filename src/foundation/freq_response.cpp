#include "digitfilt/foundation/freq_response.h"

#include <cmath>
#include <limits>

#include "digitfilt/foundation/design_base.h"

double CMFilterFaceqv::freqResponse(filter_iirspec* s, double sampleRate, double f) {
  if (s == nullptr || s->enabled != 1) return 1.0;
  s->coefs[20] = 0.0;  // a[0]: the k = 0 feedback term vanishes from the sum below
  const double w = f * digitfilt::kTwoPi / sampleRate;
  // Coefficients beyond the 60-slot store do not exist; a corrupt count is cut to what fits.
  const int n = s->numCoefs < 0 ? 0 : (s->numCoefs > 40 ? 40 : s->numCoefs);
  double nRe = 0.0, nIm = 0.0, dRe = 1.0, dIm = 0.0;
  for (int k = 0; k < n; ++k) {
    const double c = std::cos(k * w), sn = std::sin(k * w);
    const double b = s->coefs[k], a = s->coefs[20 + k];
    nRe += b * c;
    nIm -= b * sn;
    dRe += a * c;
    dIm -= a * sn;
  }
  if (n > 0 && dRe == 0.0 && dIm == 0.0) return std::numeric_limits<double>::infinity();
  // |N| / |D| as the modulus of N conj(D) / |D|^2.
  const double d2 = dRe * dRe + dIm * dIm;
  const double re = (nRe * dRe + nIm * dIm) / d2;
  const double im = (nIm * dRe - nRe * dIm) / d2;
  return std::hypot(re, im);
}
