#pragma once
// Section arithmetic shared by the Butterworth and Chebyshev stage records (MeFilterButterworthx,
// MeFilterChebyshevx): both keep their sections as parallel arrays A, d1..d4, w0..w4 and the
// band-stop terms stopR / stopS, so one template serves either record.
#include <memory>
#include <new>
#include <utility>

#include "digitfilt/foundation/ptr_list.h"

namespace digitfilt {

// A stage record from the heap, or null when memory is short.
template <class Stage>
std::unique_ptr<Stage> newStageOrNull() {
  try {
    return std::make_unique<Stage>();
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

// Puts a stage back to its record's defaults; 0 for a null stage.
template <class Stage>
int resetStageToDefaults(Stage* stage) {
  if (stage == nullptr) return 0;
  *stage = Stage();
  return 1;
}

// Reduces an order that is not a multiple of 4 (remainder toward zero), reporting `text`.
int reduceToMultipleOf4(int order, const wchar_t* text);
// The same with the band designs' wording: the band-pass text, or the band-stop one.
int reduceBandOrder(int order, bool bandpassWording);

// Bilinear warp of a band between lowHz and highHz: centre term cos(pi (fH + fL) / fs) /
// cos(pi (fH - fL) / fs) and width term tan(pi (fH - fL) / fs).
struct BandWarp {
  double centre;
  double width;
};
BandWarp bandWarp(double highHz, double lowHz, double sampleRate);

// Appends a low-pass stage of type lowpassType (if lowpassOn, enabled) and then a high-pass stage
// of type 1 (if highpassOn). The high-pass is deliberately left disabled until the caller
// switches it on, as hosts expect, and takes the low-pass's working order when both are made.
// Stages keep the order as given; workingOrder(order) is the even order designed, and
// design(stage, sections, cutoffHz, highpass) makes the sections. 0 only when memory is short.
template <class Stage, class WorkingOrder, class Design>
int appendLowHighStages(PtrList<Stage>& list, int lowpassType, int order, double sampleRate,
                        int lowpassOn, double lowpassFreq, int highpassOn, double highpassFreq,
                        WorkingOrder workingOrder, Design design) {
  bool lowMade = false;
  int lowOrder = 0;
  if (lowpassOn) {
    auto s = newStageOrNull<Stage>();
    if (!s) return 0;
    s->enabled = 1;
    s->filterType = lowpassType;
    s->order = order;
    s->sampleRate = sampleRate;
    s->lowpassFreq = lowpassFreq;
    lowOrder = workingOrder(order);
    design(*s, lowOrder / 2, lowpassFreq, false);
    list.add(std::move(s));
    lowMade = true;
  }
  if (highpassOn) {
    auto s = newStageOrNull<Stage>();
    if (!s) return 0;
    s->filterType = 1;
    s->order = lowMade ? lowOrder : order;
    s->sampleRate = sampleRate;
    s->highpassFreq = highpassFreq;
    design(*s, workingOrder(s->order) / 2, highpassFreq, true);
    list.add(std::move(s));
  }
  return 1;
}

// A band stage with the values as given: a band-pass (type passType) left disabled like the
// high-pass, or an enabled band-stop (type passType + 1). `working` receives the order reduced
// to a multiple of 4, reported with the matching wording. Null when memory is short.
template <class Stage>
std::unique_ptr<Stage> newBandStage(int order, double sampleRate, double highFreq, double lowFreq,
                                    bool bandpass, int passType, int& working) {
  auto s = newStageOrNull<Stage>();
  if (!s) return nullptr;
  s->order = order;
  s->sampleRate = sampleRate;
  s->bandHighFreq = highFreq;
  s->bandLowFreq = lowFreq;
  s->filterType = bandpass ? passType : passType + 1;
  if (!bandpass) s->enabled = 1;
  working = reduceBandOrder(order, bandpass);
  return s;
}

// One sample through n second-order sections with numerator 1 + 2z^-1 + z^-2.
template <class Stage>
double lowHighSectionsStep(Stage& s, int n, double x) {
  for (int i = 0; i < n; ++i) {
    s.w0[i] = s.d1[i] * s.w1[i] + s.d2[i] * s.w2[i] + x;
    x = s.A[i] * (s.w0[i] + 2.0 * s.w1[i] + s.w2[i]);
    s.w2[i] = s.w1[i];
    s.w1[i] = s.w0[i];
  }
  return x;
}

// One sample through n fourth-order sections: numerator 1 - 2z^-2 + z^-4 for a band-pass, else
// 1 - stopR z^-1 + stopW2 z^-2 - stopR z^-3 + z^-4.
template <class Stage>
double bandSectionsStep(Stage& s, int n, double x, bool bandpass, double stopW2) {
  for (int i = 0; i < n; ++i) {
    s.w0[i] = s.d1[i] * s.w1[i] + s.d2[i] * s.w2[i] + s.d3[i] * s.w3[i] + s.d4[i] * s.w4[i] + x;
    if (bandpass) {
      x = s.A[i] * (s.w0[i] - 2.0 * s.w2[i] + s.w4[i]);
    } else {
      x = s.A[i] * (s.w0[i] - s.stopR * s.w1[i] + stopW2 * s.w2[i] - s.stopR * s.w3[i] +
                    s.w4[i]);
    }
    s.w4[i] = s.w3[i];
    s.w3[i] = s.w2[i];
    s.w2[i] = s.w1[i];
    s.w1[i] = s.w0[i];
  }
  return x;
}

}  // namespace digitfilt
