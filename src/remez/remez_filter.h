#pragma once
// Remez designer objects: design every enabled request of the 90 and run the taps over a
// record (circularly, the window starting at the output sample), plus the small services hosts
// use around a design: transition-width corrections, gain ratios and the gain curve of a record.
#include <cstdint>
#include <memory>

#include "digitfilt/remez/remez_exchange.h"

class CDigitFiltCoefMak06Remez07 : public CDigitFiltCoefMak06Remez04 {
 public:
  CDigitFiltCoefMak06Remez07() = default;

  // computeCoef for every enabled record; returns how many succeeded.
  int makeAllCoef() override;
  // For each enabled record with taps: y[i] = sum_k coefs[k] x[(i + k) mod n]. Every record
  // reads x and overwrites y, so with several enabled records y holds the last one's output.
  // Returns the number of records applied (0 for null arrays). A record whose tapCount exceeds
  // its own tap array is left out.
  int filter(double* x, double* y, std::int64_t n) override;

  std::int64_t bufferLen = 0;
  double* buffer = nullptr;  // shared by copies

 protected:
  // y[i] = sum_k coefs[k] x[(i + k) mod n]. Always 1.
  static int filtRmzFrwd(const double* coefs, std::int64_t tapCount, const double* x, double* y,
                         std::int64_t n);
  // From the end: y[i] = sum_k coefs[k] x[(i - tapCount + k) mod n], the window ending one
  // sample before i; the index wraps to the end of the record. Not used by filter. Always 1.
  static int filtRmzBkwd(const double* coefs, std::int64_t tapCount, const double* x, double* y,
                         std::int64_t n);
  // Takes the record's order rounded up to even as its tap count (numTaps and tapCount), a fresh
  // zero-filled tap array, and designs it with remezPM03k. 0 for a null or disabled record, a
  // negative length or a failed design.
  int computeCoef(Filter_Remez* f);
  // Keeps `buffer` when bufferLen already equals n, otherwise takes a new one of n doubles.
  // bufferLen is deliberately left alone, so a later call with the same n takes another one.
  // 1, or 0 for a negative n or a shortage.
  int checkBuffer(std::int64_t n);

 private:
  std::shared_ptr<double[]> bufferOwner_;
};

class CDigitFiltCoefMak06Remezqv : public CDigitFiltCoefMak06Remez07 {
 public:
  CDigitFiltCoefMak06Remezqv() = default;

  // n + 1 gains 10 log10(re^2 + im^2) of the taps coefs[0..order] at w = i pi / n, i = 0..n,
  // unnormalised. The sum reads coefs[order], one past the taps of an even order: the arrays
  // computeCoef takes carry a zero there. Never reads beyond coefs[tapCount]. The caller
  // delete[]s the result; null for a null record, a record without taps, n < -1, or counts
  // reaching past the record's own tap array.
  double* filterGain(std::int64_t n, Filter_Remez* f);

  // 20 log10(b / a).
  static double getGaindBs(double a, double b);
  // Transition width `tr` checked against the band [low, high]: a message and 0.0001 when
  // low >= high or tr <= 0; otherwise tr unchanged when tr + low < high.
  // WARNING: when tr + low >= high the call never returns. It keeps subtracting 0.0001 from tr
  // without testing again, which hosts have always avoided; do not call it with such input.
  static double ckCorrectTrnUp(double tr, double low, double high);
  // Same checks; then tr is lowered in steps of 0.0001 until low < high - tr. A width that
  // needs more than two million steps (far above the band, infinite, or too large for a step to
  // move it) steps again from just above the band width, ending within a step of the long
  // stepping's result; edges of magnitude 1e6 or more then give 0.0001. So no input spins for
  // long.
  static double ckCorrectTrnDn(double tr, double low, double high);
};
