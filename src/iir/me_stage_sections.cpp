#include "digitfilt/iir/me_stage_sections.h"

#include <cmath>

#include "digitfilt/foundation/design_base.h"
#include "digitfilt/foundation/messages.h"

namespace digitfilt {
namespace {

const wchar_t kBandpassOrderText[] = L"Order for bandpass must be 4,8,12,16,...\n";
const wchar_t kBandstopOrderText[] = L"Order for bandpass/bandstop must be 4,8,12,16,...\n";

}  // namespace

int reduceToMultipleOf4(int order, const wchar_t* text) {
  if (order % 4 != 0) {
    showMessage(text);
    order -= order % 4;
  }
  return order;
}

int reduceBandOrder(int order, bool bandpassWording) {
  return reduceToMultipleOf4(order, bandpassWording ? kBandpassOrderText : kBandstopOrderText);
}

BandWarp bandWarp(double highHz, double lowHz, double sampleRate) {
  return {std::cos(kPi * (highHz + lowHz) / sampleRate) /
              std::cos(kPi * (highHz - lowHz) / sampleRate),
          std::tan(kPi * (highHz - lowHz) / sampleRate)};
}

}  // namespace digitfilt
