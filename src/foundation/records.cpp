#include "digitfilt/foundation/records.h"

#include <cmath>

#include "digitfilt/foundation/messages.h"

namespace digitfilt {

bool checkAcqSettingsReady(const CFilterDcLtSetAcqqv& settings) {
  if (settings.acqSampleRate <= 0.0 || settings.channelCount < 1) {
    showMessage(L"Please setup the filter parameters first!");
    return false;
  }
  return true;
}

double powerLineBase(const CFilterDcLtSetAcqqv& settings) {
  if (settings.powerLineType == 0) return 60.0;
  if (settings.powerLineType == 1) return 50.0;
  return settings.powerLineFreq;
}

void limitPowerLineHarmonics(CFilterDcLtSetAcqqv& settings, double f0) {
  const double limit = settings.acqSampleRate / f0 * 0.5;
  if (settings.powerLineHarmonics >= limit) {
    const int old = settings.powerLineHarmonics;
    // A NaN or huge limit cannot be converted; keep the count instead of invoking UB.
    const double wanted = std::floor(limit - 0.01);
    const int now = (wanted >= -2147483648.0 && wanted <= 2147483647.0)
                        ? static_cast<int>(wanted) : old;
    settings.powerLineHarmonics = now;
    showMessageF(L"Power-line noise harmonic is out of the filtering range (%d->%d)!?", old, now);
  }
}

}  // namespace digitfilt
