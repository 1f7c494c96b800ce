#pragma once
// Section arithmetic shared by the Butterworth and Chebyshev stage records (MeFilterButterworthx,
// MeFilterChebyshevx): both keep their sections as parallel arrays A, d1..d4, w0..w4 and the
// band-stop terms stopR / stopS, so one template serves either record.
#include <memory>
#include <new>

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

// Reduces an order that is not a multiple of 4 (remainder toward zero), reporting `text`.
int reduceToMultipleOf4(int order, const wchar_t* text);

// Bilinear warp of a band between lowHz and highHz: centre term cos(pi (fH + fL) / fs) /
// cos(pi (fH - fL) / fs) and width term tan(pi (fH - fL) / fs).
struct BandWarp {
  double centre;
  double width;
};
BandWarp bandWarp(double highHz, double lowHz, double sampleRate);

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
