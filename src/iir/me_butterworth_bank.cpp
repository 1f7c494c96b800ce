#include "digitfilt/iir/me_butterworth_bank.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "digitfilt/foundation/design_base.h"
#include "digitfilt/foundation/messages.h"
#include "digitfilt/iir/me_butterworth_poly.h"

int CMeFilterButterworthqv::setCheckCoefs(CFilterDcLtSetAcqqv& settings) {
  cleanCoefs();
  if (!digitfilt::checkAcqSettingsReady(settings)) return 0;
  const double fs = settings.acqSampleRate;
  sampleRate = fs;
  minFreq = 0.0001 * fs;
  maxFreq = 0.5 * fs;
  minHighEdge = 0.0005 * fs;
  maxHighEdge = 0.5 * fs;

  // Stages are listed without coefficients; the host makes them afterwards.
  auto append = [&](int type, int order) -> MeFilterButterworthx* {
    auto s = newStage();
    if (!s) return nullptr;
    s->sampleRate = fs;
    s->enabled = 1;
    s->filterType = type;
    s->order = order;
    MeFilterButterworthx* raw = s.get();
    filterList.add(std::move(s));
    return raw;
  };

  int count = 0;
  // A fourth-order low- or high-pass at the clamped frequency, stored in `field`.
  auto appendPass = [&](int type, double& freq, double MeFilterButterworthx::*field) {
    correctFilterRange(freq);
    MeFilterButterworthx* s = append(type, 4);
    if (s == nullptr) return false;
    s->*field = freq;
    ++count;
    return true;
  };
  if (settings.lowPassOn &&
      !appendPass(0, settings.lowPassFreq, &MeFilterButterworthx::lowpassFreq))
    return 0;
  if (settings.highPassOn &&
      !appendPass(1, settings.highPassFreq, &MeFilterButterworthx::highpassFreq))
    return 0;
  for (int i = 0; i < 6; ++i) {
    if (!settings.notchOn[i]) continue;
    correctFilterRange(settings.notchFreqLow[i]);
    // The upper notch edge is clamped into the width range, as hosts expect.
    correctFilterWidth(settings.notchFreqHigh[i]);
    MeFilterButterworthx* s = append(3, 2);
    if (s == nullptr) return 0;
    s->stopLowFreq = settings.notchFreqLow[i];
    s->stopHighFreq = settings.notchFreqHigh[i];
    ++count;
  }

  if (settings.powerLineOn) {
    // The custom base frequency is used before its own clamp below.
    const double base = digitfilt::powerLineBase(settings);
    digitfilt::limitPowerLineHarmonics(settings, base);
    correctFilterRange(settings.powerLineFreq);
    correctFilterRange(settings.powerLineWidth);
    const double half = settings.powerLineWidth * 0.5;
    settings.powerLineHarmonics = std::clamp(settings.powerLineHarmonics, 1, 60);
    // Deliberate: the comb's notches are counted in the result but never listed, so they take
    // no part in filtering, coefficient making or the rate check. Nothing of them is kept.
    for (int k = 1; k <= settings.powerLineHarmonics; ++k) {
      if (k * base + half >= 0.5 * fs) break;
      ++count;
    }
  }
  if (checkCorrectAllFilterSettings4SmplRate() < 1) return 0;
  return count;
}

int CMeFilterButterworthqv::initIIRFilters4Acq() {
  auto low = newStage();
  auto high = newStage();
  if (!low || !high) return 0;
  low->filterType = 0;
  low->order = 4;
  low->sampleRate = 250.0;
  low->lowpassFreq = 80.0;
  low->enabled = 1;
  high->filterType = 1;
  high->order = 4;
  high->sampleRate = 250.0;
  high->highpassFreq = 4.0;
  high->enabled = 1;
  filterList.add(std::move(low));
  filterList.add(std::move(high));
  lastIndex = 0;
  return 2;
}

std::string CMeFilterButterworthqv::getFilterInfo(int /*unused*/) {
  std::string info;
  for (const auto& entry : filterList) {
    const MeFilterButterworthx* s = entry.get();
    if (s == nullptr || !s->enabled) continue;
    // Only section lines are output: hosts read the text as rows of ten numbers, so the stage's
    // name line is not part of it.
    const int n = std::clamp(s->numSections, 0, MeFilterButterworthx::kMaxSections);
    for (int i = 0; i < n; ++i) {
      info += digitfilt::formatText("%f %f %f %f %f %f %f %f %f %f \n", s->A[i], s->d1[i],
                                    s->d2[i], s->d3[i], s->d4[i], s->w0[i], s->w1[i], s->w2[i],
                                    s->w3[i], s->w4[i]);
    }
  }
  return info;
}

int CMeFilterButterworthqv::getEnableFilters() {
  int enabled = 0;
  for (const auto& entry : filterList) {
    if (entry && entry->enabled) ++enabled;
  }
  return enabled;
}

double* CMeFilterButterworthqv::coefLowpass(int n, double fcf, int scaleNumerator) {
  double* d = CMeFilterButterworth03Prcs::dcof_bwlp(n, fcf);
  int* c = CMeFilterButterworth03Prcs::ccof_bwlp(n);
  if (d == nullptr || c == nullptr) {
    std::free(d);
    std::free(c);
    return nullptr;
  }
  const double sf = CMeFilterButterworth03Prcs::sf_bwlp(n, fcf);
  if (scaleNumerator) {
    for (int k = 0; k <= n; ++k) c[k] = digitfilt::truncToInt32(c[k] * sf);
  }
  // The numerator is dropped: callers receive the denominator alone, as they expect.
  std::free(c);
  return d;
}
