#pragma once
// Sample-by-sample FIR filter with its own ideal (truncated, unwindowed) designs at frequencies
// given as fractions of the sample rate, and a shifting delay line. Unlike the rest of the
// library it reports bad arguments as text on standard output and returns neutral values.
#include <string>
#include <vector>

class CRtf6Fir {
 public:
  CRtf6Fir();
  // A negative count prints a message and gives an empty filter.
  explicit CRtf6Fir(int taps);

  int getTaps() const { return taps; }
  // Resizes coefficients and delay line, keeping existing values; n must be positive.
  void setTaps(int n);

  double getCoeff(int i);
  void setCoeff(double value, int i);
  // Index 0 or 1 only; an index not yet stored reads as 0.
  double getFreq(int i);
  // An index equal to the number of stored frequencies appends one.
  void setFreq(double f, int i);
  double getBuffer(int i);
  void setBuffer(double value, int i);

  // Reports whether t could be a type (t >= 0 and the current type <= 4); never stores it.
  int setType(int t);
  std::string getType() const;

  // Designs write the taps for n = -taps/2 .. taps/2 - 1: with an odd count the last tap is left
  // as it was. They do not change `type`.
  void lowpass(double fc);
  void highpass(double fc);
  // f[0] is the lower band edge, f[1] the upper.
  void stopband(const double f[2]);
  void passband(const double f[2]);

  // Shifts x into the delay line and returns the dot product with the coefficients.
  double filter(double x);

  int type = -1;  // 0 low-pass, 1 high-pass, 3 pass-band, 4 stop-band; set by the host
  int taps = 4;
  std::vector<double> coeffs;
  std::vector<double> freqs;
  std::vector<double> buffer;
};
