#include "digitfilt/butterworth/butterworth_bank.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "digitfilt/foundation/messages.h"

namespace {

constexpr int kNotchSlots = 4;
constexpr int kFirstHarmonicSlot = 6;
constexpr int kHarmonics = 60;

// The view a "%f" conversion had of an int32 passed in a 64-bit argument slot: the integer's
// bits with a zeroed upper half, read as a double (a denormal, so 3 prints as 0.000000).
double intSlotAsDouble(std::int32_t v) {
  const std::uint64_t bits = static_cast<std::uint32_t>(v);
  double d;
  std::memcpy(&d, &bits, sizeof d);
  return d;
}

// The view a "%d" conversion had of a double: the low 32 bits of its pattern.
int doubleSlotAsInt(double v) {
  std::uint64_t bits;
  std::memcpy(&bits, &v, sizeof bits);
  const std::uint32_t low = static_cast<std::uint32_t>(bits);
  std::int32_t out;
  std::memcpy(&out, &low, sizeof out);
  return out;
}

void setStage(filter_iirspec& s, int type, int order, double rate) {
  s.filterType = type;
  s.order = order;
  s.sampleRate = rate;
}

void switchOff(filter_iirspec& s, double freqMin, double freqMax) {
  s.freqLow = freqMin;
  s.freqHigh = freqMax;
  s.enabled = 0;
}

}  // namespace

int CDigitFiltCoefMak01ButterworthAcqqv::setCheckCoefs(CFilterDcLtSetAcqqv& settings) {
  if (!digitfilt::checkAcqSettingsReady(settings)) return 0;
  if (initCtfButterworthFilter4SmplRate(settings.acqSampleRate) == 0) return 0;
  const double rate = settings.acqSampleRate;
  int count = 0;

  filter_iirspec& low = iirSpecs[0];
  setStage(low, 0, 4, rate);
  if (settings.lowPassOn != 0) {
    correctFilterRange(settings.lowPassFreq);
    low.freqHigh = settings.lowPassFreq;
    low.freqLow = freqMin;
    low.enabled = 1;
    count = 1;
  } else {
    switchOff(low, freqMin, freqMax);
  }

  filter_iirspec& high = iirSpecs[1];
  setStage(high, 1, 4, rate);
  high.freqHigh = freqMax;
  if (settings.highPassOn != 0) {
    correctFilterRange(settings.highPassFreq);
    high.freqLow = settings.highPassFreq;
    high.enabled = 1;
    ++count;
  } else {
    high.freqLow = freqMin;
    high.enabled = 0;
  }

  for (int i = 0; i < kNotchSlots; ++i) {
    filter_iirspec& notch = iirSpecs[2 + i];
    setStage(notch, 3, 4, rate);
    if (settings.notchOn[i] != 0) {
      correctFilterRange(settings.notchFreqLow[i]);
      // Deliberate: the upper edge is held to the width range; hosts read it back.
      correctFilterWidth(settings.notchFreqHigh[i]);
      notch.freqLow = settings.notchFreqLow[i];
      notch.freqHigh = settings.notchFreqHigh[i];
      notch.enabled = 1;
      ++count;
    } else {
      switchOff(notch, freqMin, freqMax);
    }
  }

  if (settings.powerLineOn == 0) {
    for (int k = 1; k <= kHarmonics; ++k) {
      filter_iirspec& s = iirSpecs[kFirstHarmonicSlot - 1 + k];
      setStage(s, 3, 2, rate);
      switchOff(s, freqMin, freqMax);
    }
  } else {
    // The base is read before the custom frequency is clamped, and stays as read.
    const double f0 = digitfilt::powerLineBase(settings);
    digitfilt::limitPowerLineHarmonics(settings, f0);
    correctFilterRange(settings.powerLineFreq);
    correctFilterRange(settings.powerLineWidth);
    correctPNHarmonics(settings.powerLineHarmonics);
    const double half = settings.powerLineWidth * 0.5;
    for (int k = 1; k <= kHarmonics; ++k) {
      filter_iirspec& s = iirSpecs[kFirstHarmonicSlot - 1 + k];
      setStage(s, 3, 2, rate);
      if (k > settings.powerLineHarmonics) {
        switchOff(s, freqMin, freqMax);
        continue;
      }
      const double centre = k * f0;
      s.freqLow = std::min(freqMax, std::max(freqMin, centre - half));
      s.freqHigh = std::min(freqMax, std::max(freqMin, centre + half));
      s.enabled = 1;
      ++count;
    }
  }

  if (checkCorrectAllFilterSettings4SmplRate() == 0) return 0;
  // The number switched on above, not the number that passed the check.
  return count;
}

std::string CDigitFiltCoefMak01ButterworthAcqqv::getFilterInfo(int /*unused*/) {
  using digitfilt::formatText;
  std::string text = formatText("%lld \n", static_cast<long long>(baseWord));
  for (double v : {sampleRate, freqMin, freqMax, widthMin, widthMax}) text += formatText("%f \n", v);
  // Deliberate, kept byte for byte: the integer mode is printed through "%f".
  text += formatText("%f \n", intSlotAsDouble(designMode));
  for (const filter_iirspec& s : iirSpecs) {
    if (s.enabled == 0) continue;
    text += formatText("%d \n", s.filterType);
    text += formatText("%d \n", s.order);
    text += formatText("%d \n", s.numCoefs);
    for (double v : {s.freqHigh, s.freqLow, s.reservedFreq, s.sampleRate})
      text += formatText("%f \n", v);
    text += "\n";
    // Pairs past the record's 60-slot store are not listed; a[k] of k >= 40 prints as 0.
    const int terms = std::clamp(s.numCoefs, 0, 60);
    for (int k = 0; k < terms; ++k)
      text += formatText("%f  %f \n", s.coefs[k], k < 40 ? s.coefs[20 + k] : 0.0);
    text += "\n";
  }
  text += formatText("%d \n", stagesRun);
  text += formatText("%d \n", iirSpecCount);
  // Deliberate, kept byte for byte: the baseline is printed through "%d".
  text += formatText("%d \n", doubleSlotAsInt(baseline));
  return text;
}
