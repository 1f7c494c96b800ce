// A host program built against the installed library: designs an order-4 low-pass and checks its
// gain at DC and at the cut-off.
#include <cmath>
#include <cstdio>
#include <digitfilt/digitfilt.h>

int main() {
  CDigitFiltCoefMak01Butterworth designer;
  designer.initCtfButterworthFilter4SmplRate(1000.0);
  filter_iirspec& s = designer.getFilterCoeffPt()[0];
  s.freqHigh = 100.0;
  if (designer.ctfButterworthIirFilterCoef(&s) != 1) return 1;
  const double dc = CMFilterFaceqv::freqResponse(&s, 1000.0, 0.0);
  const double edge = CMFilterFaceqv::freqResponse(&s, 1000.0, 100.0);
  std::printf("gain at 0 Hz %.6f, at 100 Hz %.6f\n", dc, edge);
  return std::fabs(dc - 1.0) < 1e-9 && std::fabs(edge - std::sqrt(0.5)) < 1e-6 ? 0 : 1;
}
