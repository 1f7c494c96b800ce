#pragma once
// Kaiser-window FIR: a linear-phase low-pass, high-pass or band-pass designed from a stop-band
// attenuation and a transition width, normalised to a 0 dB peak, and filtering of sample blocks.
// Typical use: set the parameters, estimatedOrder(), design(), then filterX or
// filterBegin / filterDo / filterEnd.
#include <cstdint>
#include <memory>
#include <string>

#include "digitfilt/foundation/design_base.h"

class CDigitFiltCoefMak03KaiserWnd : public CDigitFiltCoefMak {
 public:
  CDigitFiltCoefMak03KaiserWnd() = default;

  // "KF_LOWPASS", "KF_HIGHPASS" or "KF_BANDPASS" in any case; other names leave the type alone.
  int setFilterType(std::wstring name);
  int setFilterType(int type);
  // Takes the sample rate and keeps half of it.
  int setRate(double fs);
  int setAtten(double dB);
  int setTrBand(double hz);
  // Deliberately store nothing: freq1 and freq2 keep their defaults unless assigned from another
  // object, and existing hosts' designs depend on that.
  int setFreq1(double f);
  int setFreq2(double f);

  // Tap i of the last design; 0.0 outside the designed taps.
  double getCoeff(int i);

  // Half window for an attenuation and a normalised transition width, at most maxLen - 1 long.
  int halfKaiserWnd2Spec(double atten, double trWidth, int maxLen);
  // Sets order (even) and beta from atten, trBand and rate; returns the order.
  int estimatedOrder();
  // Taps of order + 1 entries; 0 only for a negative order or when memory runs out.
  int design();

  // Filters in place with the first `order` taps (the last tap is not used) and returns x. No
  // history survives the call. Without a design the samples are returned unchanged.
  double* filterX(double* x, unsigned long n);
  // Streaming: filterBegin takes the delay line ("Filter order error!" below order 2,
  // "Initialize filter error!" without memory), filterDo filters a block (the delay line is
  // cleared at every call, so no history crosses blocks), filterEnd releases it.
  int filterBegin();
  double* filterDo(double* x, unsigned long n);
  int filterEnd();

  double* halfWnd = nullptr;
  std::int32_t halfWndCount = 0;
  std::int32_t order = 0;
  std::int32_t filterType = 0;  // 0 low-pass, 1 high-pass, 2 band-pass
  std::int32_t freqPoints = 0;
  double beta = 0.0;
  double freq1 = 1.25;
  double freq2 = 100.0;
  double rate = 625.0;  // half the sample rate
  double atten = 60.0;
  double trBand = 500.0;
  double* coefs = nullptr;
  double* delayLine = nullptr;

 protected:
  int setFreqPoints(int n);
  // Two series for the modified Bessel function of order 0: at most 14 terms, and an uncapped
  // one that stops when a squared term reaches 1e-6.
  double besselI0(double x);
  double I0(double x);
  // Gain in dB at freqPoints + 1 frequencies from 0 to half the rate, relative to its peak, and
  // rescales the taps to a 0 dB peak. The caller frees the array with delete[]. Null when
  // freqPoints < 1 or nothing is designed.
  double* filterGain();

 private:
  // Copies share these arrays, as hosts expect; the public pointers are views of them.
  std::shared_ptr<double[]> halfWndOwner_;
  std::shared_ptr<double[]> coefsOwner_;
  std::shared_ptr<double[]> delayOwner_;
  std::int64_t coefsLength_ = 0;
  std::int64_t delayLength_ = 0;
};
