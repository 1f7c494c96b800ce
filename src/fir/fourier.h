#pragma once
// Fourier filters: windowed-sinc FIR tap sets (low-pass, high-pass, band-pass, frequencies as
// fractions of the sample rate), and whole-record filtering by transforming, zeroing bins and
// transforming back.
#include <cstdint>
#include <memory>

#include "digitfilt/foundation/design_base.h"

class CDigitFiltCoefMak02Fourier : public CDigitFiltCoefMak {
 public:
  CDigitFiltCoefMak02Fourier() = default;

  // sin(x)/x, and exactly 1 at 0.
  double sinc(double x);

  // Hamming-tapered windowed sinc of M = n/2 half taps: 2M+1 taps in an array of 2(M+1). Each
  // design takes fresh arrays; copies of this object keep the arrays they saw. Returns 1 (0 with
  // "Memory enough?" only when the arrays cannot be had).
  int nonRcsvLowPass(double fc, int n);
  int nonRcsvHighPass(double fc, int n);
  int nonRcsvBandPass(double f1, double f2, int n);

  // In-place radix-2 transform of 2^m points; dir 1 is forward and scaled by 1/2^m, dir -1 the
  // unscaled inverse. A point count that does not fit 32-bit signed arithmetic (m >= 31) leaves
  // the arrays as they were.
  int FFTd(int dir, int m, double* re, double* im);
  // Direct transform of n points, same directions and scaling.
  int DFTd(int dir, int n, double* re, double* im);

  // Record filters, frequencies in Hz, data modified in place; 1 done, 0 failed. The fft...
  // forms pass the transform length itself as FFTd's exponent, which hosts depend on: for
  // lengths of 32 and more the transform leaves its input as it was, so the masks act on the
  // samples directly. Lengths below 32 would transform 2^length points on arrays of length
  // elements; those records are refused (0, data untouched).
  int fftLowPass(double* data, int n, double fs, double f1);
  int fftHighPass(double* data, int n, double fs, double f1);
  int fftBandPass(double* data, int n, double fs, double f1, double f2);
  int fftNotch(double* data, int n, double fs, double f1, double f2);
  // As fftBandPass, without rounding the length up to a power of two.
  int fftBandPassD(double* data, int n, double fs, double f1, double f2);
  int dftLowPass(double* data, int n, double fs, double f1);
  int dftHighPass(double* data, int n, double fs, double f1);
  int dftBandPass(double* data, int n, double fs, double f1, double f2);
  int dftNotch(double* data, int n, double fs, double f1, double f2);

  double* lpHalf = nullptr;  // indices 1..M
  std::int32_t lpCount = 0;  // M + 1
  double* lpCoefs = nullptr;
  std::int32_t hpCount = 0;
  double* hpHalf = nullptr;
  double* hpCoefs = nullptr;
  std::int32_t bpCount = 0;
  double* bpHalf = nullptr;
  double* bpCoefs = nullptr;

 private:
  // Copies share the tap arrays, as hosts expect; the public pointers are views of these.
  std::shared_ptr<double[]> lpHalfOwner_, lpCoefsOwner_;
  std::shared_ptr<double[]> hpHalfOwner_, hpCoefsOwner_;
  std::shared_ptr<double[]> bpHalfOwner_, bpCoefsOwner_;
};
