#include "digitfilt/iir/me_stage_sections.h"

#include <cmath>

#include "digitfilt/foundation/design_base.h"
#include "digitfilt/foundation/messages.h"

namespace digitfilt {

int reduceToMultipleOf4(int order, const wchar_t* text) {
  if (order % 4 != 0) {
    showMessage(text);
    order -= order % 4;
  }
  return order;
}

BandWarp bandWarp(double highHz, double lowHz, double sampleRate) {
  return {std::cos(kPi * (highHz + lowHz) / sampleRate) /
              std::cos(kPi * (highHz - lowHz) / sampleRate),
          std::tan(kPi * (highHz - lowHz) / sampleRate)};
}

}  // namespace digitfilt
