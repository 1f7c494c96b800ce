#pragma once
// One second-order section with two independent faces: a resonator driven by tick (gain, two
// pole and two zero coefficients, set directly or from a resonance frequency and radius) and an
// audio-EQ cookbook biquad driven by BiQuad, whose coefficients BiQuad_new computes.
//
// The two ways of setting poles differ on purpose: setA1/setA2 store the negated value (the
// denominator coefficient a_k of 1 + a1 z^-1 + a2 z^-2), setPoleCoeffs stores the feedback
// coefficient as given. Copies share the resonator state.
#include <memory>

#include "digitfilt/foundation/design_base.h"

class CDigitFiltCoefMak07BiQuad : public CDigitFiltCoefMak {
 public:
  CDigitFiltCoefMak07BiQuad();

  void setA1(double a) { poleCoef1 = -a; }
  void setA2(double a) { poleCoef2 = -a; }
  void setB1(double b) { zeroCoef1 = b; }
  void setB2(double b) { zeroCoef2 = b; }
  // c[0], c[1] as feedback coefficients, not negated; a null pointer changes nothing.
  void setPoleCoeffs(double* c);
  void setZeroCoeffs(double* c);
  // Poles at radius reson and angle 2 pi freq / tickRate.
  void setFreqAndReson(double freq, double reson);
  // Zeros at z = +1 and -1.
  void setEqualGainZeroes();
  void setGain(double g) { gain = g; }
  // Clears the resonator state and the last output.
  void clear();
  // One sample of the resonator: w = gain x + p1 s0 + p2 s1, y = w + z1 s0 + z2 s1.
  double tick(double x);

  // Cookbook coefficients for type 0 low-pass, 1 high-pass, 3 notch, 4 band-pass with peak gain
  // q, 5 band-pass with 0 dB peak, 6 all-pass, 7 peaking (q = band width in octaves), 8 low
  // shelf, 9 high shelf (shelfSlope = S). Clears the section's history; 1 on success. Type 2 and
  // anything outside 0..9 return 0 and change nothing.
  int BiQuad_new(int type, double dbGain, double freq, double sampleRate, double q,
                 double shelfSlope);
  // One sample of the cookbook section.
  double BiQuad(double x);

  // Butterworth order for a tolerance scheme (ceil, as a double). The decibels are divided by 20
  // in both powers, deliberately.
  double estimateFilterOrder(double passDb, double stopDb, double passFreq, double stopFreq,
                             double sampleRate);

  double gain = 1.0;
  // Cookbook coefficients, divided by a0.
  double cb0 = 0.0, cb1 = 0.0, cb2 = 0.0, ca1 = 0.0, ca2 = 0.0;
  double spare = 0.0;
  // Cookbook history: last two inputs and outputs.
  double cx1 = 0.0, cx2 = 0.0, cy1 = 0.0, cy2 = 0.0;
  double* tickState = nullptr;  // two resonator state words, shared by copies
  double lastOutput = 0.0;
  double tickRate = 100.0;  // Hz, used by setFreqAndReson
  double poleCoef1 = 0.0, poleCoef2 = 0.0, zeroCoef1 = 0.0, zeroCoef2 = 0.0;

 private:
  std::shared_ptr<double[]> tickStateOwner_;
};
