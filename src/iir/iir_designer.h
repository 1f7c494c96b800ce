#pragma once
// Pole-zero IIR designer: places the digital poles and zeros of a Butterworth or Chebyshev
// low-pass, high-pass or band-pass directly (bilinear map of the prototype with a pre-warped
// edge), expands them into transfer-function coefficients and computes the normalised gain curve.
//
// Naming kept for hosts: aCoeff is the numerator (from the zeros), bCoeff the denominator (from
// the poles). The pole, zero and coefficient arrays are indexed from 1 and 0 respectively and
// hold order + 1 entries; copies share them.
#include <cstdint>
#include <memory>
#include <string>

#include "digitfilt/foundation/design_base.h"

class CDigitFiltCoefMak08IIR : public CDigitFiltCoefMak {
 public:
  static constexpr int kPrototypeButterworth = 1;
  static constexpr int kPrototypeChebyshev = 5;
  // Largest order locatePolesAndZeros accepts.
  static constexpr int kMaxOrder = 100;

  CDigitFiltCoefMak08IIR() = default;

  // "Butterworth" or "Chebyshev", any case; other names leave the prototype as it is.
  int setPrototype(const std::wstring& name);
  int setPrototype(int p) { prototype = p; return 1; }
  int getPrototype() const { return prototype; }
  // "LP", "HP" or "BP", any case; a band-pass makes an odd order even.
  int setFilterType(const std::wstring& name);
  int setFilterType(int type);
  int getFilterType() const { return filterType; }
  // |n|, made even for a band-pass.
  int setOrder(int n);
  int getOrder() const { return order; }
  int setRate(double fs);
  double getRate() const { return rate; }
  int setFreq1(double f) { freq1 = f; return 1; }
  double getFreq1() const { return freq1; }
  int setFreq2(double f) { freq2 = f; return 1; }
  double getFreq2() const { return freq2; }
  int setRipple(double db) { ripple = db; return 1; }
  double getRipple() const { return ripple; }
  int setFreqPoints(int n) { freqPoints = n; return 1; }
  int getFreqPoints() const { return freqPoints; }

  // Element i of the arrays; 0.0 for an index the array does not have.
  double getPReal(int i) const;
  double getPImag(int i) const;
  double getACoeff(int i) const;
  double getBCoeff(int i) const;

  bool odd(int n) const { return (n & 1) != 0; }
  double sqr(double x) const { return x * x; }

  // Fills poleReal, poleImag and zeros for the current settings. 0 with a message for an order
  // outside 1..kMaxOrder.
  int locatePolesAndZeros();
  // Expands zeros and poles into aCoeff and bCoeff, locating them first when the pole arrays are
  // missing or too short for the current order. 0 when the order is refused.
  int design();
  // Power gain in dB at freqPoints + 1 frequencies from 0 to Nyquist, shifted to peak at 0 dB
  // (the peak never counts as lower than -100 dB); the numerator is scaled to the same unit peak.
  // Designs first when there are no coefficients for the current order. The caller releases the
  // array with delete[]; null with a message when freqPoints < 1.
  double* filterGain();

  std::int32_t order = 1;
  std::int32_t prototype = kPrototypeButterworth;
  std::int32_t filterType = 0;  // 0 low-pass, 1 high-pass, 2 band-pass
  std::int32_t freqPoints = 500;
  double freq1 = 1.25;  // Hz, lower edge; the cut-off of a high-pass
  double freq2 = 100.0;  // Hz, upper edge; the cut-off of a low-pass
  double nyquist = 312.5;
  double ripple = 1.0;  // dB, Chebyshev pass band
  double rate = 625.0;  // Hz
  double* poleReal = nullptr;
  double* poleImag = nullptr;
  double* zeros = nullptr;
  double* aCoeff = nullptr;
  double* bCoeff = nullptr;

 private:
  std::shared_ptr<double[]> poleRealOwner_, poleImagOwner_, zerosOwner_;
  std::shared_ptr<double[]> aOwner_, bOwner_;
  std::int64_t poleSize_ = 0;  // entries in each pole and zero array
  std::int64_t coefSize_ = 0;  // entries in aCoeff and bCoeff
};
