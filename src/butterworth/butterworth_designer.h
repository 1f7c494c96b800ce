#pragma once
// Butterworth designer for a sample rate: a bank of 90 IIR stage records, defaults for a rate,
// edge checks and the digital design of low-pass, high-pass, band-pass and band-stop stages.
#include <complex>
#include <cstdint>
#include <vector>

#include "digitfilt/foundation/design_base.h"
#include "digitfilt/foundation/records.h"

class CDigitFiltCoefMak01Butterworth : public CDigitFiltCoefMak {
 public:
  static constexpr int kSpecCount = 90;

  CDigitFiltCoefMak01Butterworth() = default;

  filter_iirspec* getFilterCoeffPt() { return iirSpecs; }

  // Base ranges for the rate and default records in slots 0..63 (low-pass, high-pass, band-pass,
  // the 60 Hz notch and its 60 harmonics); slots 64..89 are left alone. Always 1.
  int initCtfButterworthFilter4SmplRate(double sampleRate);
  // Corrects the edges of one record for its own rate; 0 for a null record, an unknown type or a
  // band too narrow (which also switches the record off).
  int checkCorrectFilterSettings4SmplRate(filter_iirspec* s);
  // Checks every enabled record; returns how many pass.
  int checkCorrectAllFilterSettings4SmplRate();
  // Designs one record. 0 (record unchanged) for a null record, an order outside 1..20 or an
  // unknown type; 0 with `enabled` cleared when an edge is out of range.
  int ctfButterworthIirFilterCoef(filter_iirspec* s);
  // Designs every record (or only the enabled ones); returns how many were designed.
  int makeAllButterworthCoeffs(bool onlyEnabled);
  // Same design with stricter acceptance: edges in [0.001 rate, 0.5 rate), relative band width
  // at least 0.005; a bad edge or order clears `enabled`.
  int mkiir(filter_iirspec* s);

  filter_iirspec iirSpecs[kSpecCount];
  std::int32_t iirSpecCount = 0;
  std::int32_t reservedWord = 0;
};

namespace digitfilt {

using Complex = std::complex<double>;

// Analogue prototype poles on the unit circle: pairs in angle order, the real pole of an odd
// order last.
std::vector<Complex> butterworthPoles(int order);

// Analogue poles, zeros and gain of one stage after the frequency transformation of the
// prototype to pre-warped edges (wLow, wHigh = tan(pi f / rate)).
struct AnalogueStage {
  std::vector<Complex> poles;
  std::vector<Complex> zeros;
  Complex gain = 1.0;
};
AnalogueStage transformPrototype(const std::vector<Complex>& prototype, int filterType,
                                 double wLow, double wHigh);

// Bilinear map z = (1 + s) / (1 - s) of every root; missing zeros go to z = -1 and the gain takes
// the factor prod(1 - zero) / prod(1 - pole).
AnalogueStage bilinearMap(const AnalogueStage& analogue);

// Coefficients of prod(1 - root z^-1), constant term first.
std::vector<Complex> expandRoots(const std::vector<Complex>& roots);

// Steps shared by both designers once a record has been accepted: sets numCoefs, designs and
// stores b[k] = |gain| Re(B_k), a[k] = Re(A_k) in increasing k. Orders whose coefficient count
// exceeds 20 overlap the two halves of the store, as the record's layout dictates; a value
// that would land past the 60-slot store (a[40] of an order-20 band stage) is dropped rather
// than written into the neighbouring record.
void designButterworthStage(filter_iirspec& s);

}  // namespace digitfilt
