#pragma once
// Digital Butterworth filters in direct form by polynomial expansion:
//   H(z) = sf * sum c[k] z^-k / sum d[k] z^-k,
// with d and c from the dcof_* / ccof_* functions and the pass-band gain factor sf from sf_*.
// Edges are normalised to the Nyquist frequency (fcf = 2 fc / fs, 1.0 = half the sample rate).
//
// Every array result is taken with calloc and belongs to the caller, who releases it with free.
// An order below 1 gives a null result (there is no polynomial to return).
class CMeFilterButterworth03Prcs {
 public:
  // Multiplies the n binomials (z + p[k]) (p interleaved complex: re, im); returns the n complex
  // coefficients below the implied leading 1, highest power first (2n doubles).
  static double* binomial_mult(int n, double* p);
  // Multiplies the n trinomials (z^2 + b[k] z + c[k]), complex; returns 2n complex coefficients
  // below the implied leading 1 (4n doubles).
  static double* trinomial_mult(int n, double* b, double* c);

  // Denominators d[0..n] (low/high-pass, array of 2n doubles) and d[0..2n] (band designs, array
  // of 4n doubles), d[0] = 1. High- and low-pass of one cut-off share the denominator.
  static double* dcof_bwlp(int n, double fcf);
  static double* dcof_bwhp(int n, double fcf);
  static double* dcof_bwbp(int n, double f1f, double f2f);
  static double* dcof_bwbs(int n, double f1f, double f2f);

  // Numerators before scaling: binomial coefficients c[0..n] (low-pass), the same with
  // alternating signs (high-pass), their spread over c[0..2n] (band-pass), and the expansion of
  // (1 + alpha z^-1 + z^-2)^n (band-stop).
  static int* ccof_bwlp(int n);
  static int* ccof_bwhp(int n);
  static int* ccof_bwbp(int n);
  static double* ccof_bwbs(int n, double f1f, double f2f);

  // Numerator scale factors giving unit gain in the pass band.
  static double sf_bwlp(int n, double fcf);
  static double sf_bwhp(int n, double fcf);
  static double sf_bwbp(int n, double f1f, double f2f);
  static double sf_bwbs(int n, double f1f, double f2f);
};
