#pragma once
// Moving-average designers: running-mean low-pass, high-pass, band-pass, notch and power-line comb
// stages over a whole record, with window lengths derived from frequencies. The two classes share
// their fields and defaults but differ in the window rule, in how a stage runs (pointer exchange
// against in-place two-pass) and in how band and notch windows are stored.
#include <cstdint>

#include "digitfilt/foundation/design_base.h"

namespace digitfilt {

// Switches and windows of both moving-average designers, kept as one record so that a copy takes
// every one of them.
struct MovAvrgSettings {
  static constexpr int kStageCount = 5;
  static constexpr int kMaxHarmonics = 60;

  MovAvrgSettings();

  // Low-pass, high-pass, band-pass, notch, power-line comb, always run in this order.
  std::int32_t stageEnabled[kStageCount] = {1, 1, 0, 0, 0};
  std::int64_t lowPassWnd = 3;
  std::int64_t highPassWnd = 3;
  std::int64_t bandHighPassWnd = 6;
  std::int64_t bandLowPassWnd = 3;
  std::int64_t notchLowPassWnd = 6;
  std::int64_t notchHighPassWnd = 3;
  std::int64_t pwrHighPassWnd[kMaxHarmonics];  // 3 each
  std::int64_t pwrLowPassWnd[kMaxHarmonics];   // 6 each
  std::int64_t wndDivisor = 1;                 // written by the non-X class only
  std::int64_t passCount = 2;                  // looped by the non-X class only

  // passCount := max(n, 1); returns it.
  std::int64_t setRepetition(std::int64_t n);
};

}  // namespace digitfilt

// Running means with pointer exchange. Each stage primitive writes its result into the buffer that
// `work` pointed to and swaps the two caller pointers, so after a call `data` points to the result;
// callers must keep and free their buffers through the pointers as they are on return.
class CDigitFiltCoefMak00MovAvrg : public CDigitFiltCoefMak, public digitfilt::MovAvrgSettings {
 public:
  CDigitFiltCoefMak00MovAvrg();
  CDigitFiltCoefMak00MovAvrg(const CDigitFiltCoefMak00MovAvrg& other)
      : CDigitFiltCoefMak(other), MovAvrgSettings(other) {}
  CDigitFiltCoefMak00MovAvrg& operator=(const CDigitFiltCoefMak00MovAvrg& other) {
    CDigitFiltCoefMak::operator=(other);
    MovAvrgSettings::operator=(other);
    return *this;
  }

  // Window of a running mean for frequency f: trunc(fs / (d f)) clamped into [1, N/2], then made
  // odd, so it may end at N/2 + 1.
  static std::int64_t makeOdd(std::int64_t length) { return length % 2 == 0 ? length + 1 : length; }

  // Setters: 1 accepted, 0 rejected (fs, N and the edges must be positive and N >= 2). The divisor
  // (and for the power line the harmonic count) is stored even when the call is rejected.
  int setWndLowPass(double fs, std::int64_t N, double fc, std::int64_t d);
  int setWndHighPass(double fs, std::int64_t N, double fc, std::int64_t d);
  int setWndBandPass(double fs, std::int64_t N, double fLow, double fHigh, int d);
  int setWndNotch(double fs, std::int64_t N, double fLow, double fHigh, int d);
  // Harmonics above 60 are the caller's duty; only the first 60 windows exist.
  int setWndPowerLineNoise(double fs, std::int64_t N, double lineFreq, double width,
                           int harmonics, int d);
  // Ranges and every default window for a record of N samples; 1 even when the default band-pass
  // edges cross (short records), which is reported through the message hook.
  int initFiltRange4DataSizeSampleRate(std::int64_t N, double fs);

  // Runs the enabled stages passCount times. All three buffers hold N values and are rotated.
  int filterStd(double*& data, std::int64_t N, double*& work, double*& spare);

  int _01MAFLowpass(std::int64_t N, std::int64_t L, double*& data, double*& work);
  int _02MAFHighpass(std::int64_t N, std::int64_t L, double*& data, double*& work);
  // Low-pass with L2, then high-pass with L1.
  int _03MAFbandpass(std::int64_t N, std::int64_t L1, std::int64_t L2, double*& data,
                     double*& work);
  // Low-pass plus high-pass; on return data, work and spare point to the buffers that held work,
  // spare and data.
  int _04MAVNotchflt(std::int64_t N, std::int64_t Llp, std::int64_t Lhp, double*& data,
                     double*& work, double*& spare);
  int _06MAVPowNosFt(std::int64_t N, std::int64_t* lowWnds, std::int64_t* highWnds,
                     double*& data, double*& work, double*& spare, int H);

  // Record length and harmonic count live in the base's first word and designMode slot.
  std::int64_t& dataSize = baseWord;
  std::int32_t& harmonicCount = designMode;

 private:
  std::int64_t windowFor(double fs, std::int64_t N, double f, std::int64_t d) const;
};

// Running means computed in place with a forward and a backward pass; `work` is scratch only.
// Window rule trunc(fs / f) clamped into [2, N/2]; no divisor, no odd rule.
class CDigitFiltCoefMak00MovAvrgX : public CDigitFiltCoefMak, public digitfilt::MovAvrgSettings {
 public:
  CDigitFiltCoefMak00MovAvrgX();
  CDigitFiltCoefMak00MovAvrgX(const CDigitFiltCoefMak00MovAvrgX& other)
      : CDigitFiltCoefMak(other), MovAvrgSettings(other) {}
  CDigitFiltCoefMak00MovAvrgX& operator=(const CDigitFiltCoefMak00MovAvrgX& other) {
    CDigitFiltCoefMak::operator=(other);
    MovAvrgSettings::operator=(other);
    return *this;
  }

  // The divisor arguments are accepted and ignored.
  int setWndLowPass(double fs, std::int64_t N, double fc, std::int64_t d);
  int setWndHighPass(double fs, std::int64_t N, double fc, std::int64_t d);
  // bandHighPassWnd = window(fHigh), bandLowPassWnd = window(fLow).
  int setWndBandPass(double fs, std::int64_t N, double fLow, double fHigh, int d);
  // notchLowPassWnd = window(fHigh), notchHighPassWnd = window(fLow); filterStd passes them
  // crosswise.
  int setWndNotch(double fs, std::int64_t N, double fLow, double fHigh, int d);
  int setWndPowerLineNoise(double fs, std::int64_t N, double lineFreq, double width,
                           int harmonics, int d);
  int initFiltRange4DataSizeSampleRate(std::int64_t N, double fs);

  // Runs the enabled stages once (passCount is not looped), in place on data.
  int filterStd(double* data, std::int64_t N, double* work, double* spare);

  int _01MAFLowpass(std::int64_t N, std::int64_t L, double* data, double* work);
  int _02MAFHighpass(std::int64_t N, std::int64_t L, double* data, double* work);
  // High-pass with L1, then low-pass with L2.
  int _03MAFbandpass(std::int64_t N, std::int64_t L1, std::int64_t L2, double* data,
                     double* work);
  // Half the sum of a low-pass and a high-pass branch.
  int _04MAVNotchflt(std::int64_t N, std::int64_t Llp, std::int64_t Lhp, double* data,
                     double* work, double* spare);
  int _06MAVPowNosFt(std::int64_t N, std::int64_t* lowWnds, std::int64_t* highWnds,
                     double* data, double* work, double* spare, int H);

  std::int64_t& dataSize = baseWord;
  std::int32_t& harmonicCount = designMode;

 private:
  std::int64_t windowFor(double fs, std::int64_t N, double f) const;
};
