#pragma once
// Spectral measurements for the tool: FFT, Welch power spectral density, band power and the
// magnitude of a finite response at chosen frequencies.
#include <complex>
#include <string>
#include <cstdint>
#include <vector>

namespace digitfilt::tool {

// In-place radix-2 FFT; the size must be a power of two. inverse = true also scales by 1/n.
void fft(std::vector<std::complex<double>>& a, bool inverse);

std::size_t nextPowerOfTwo(std::size_t n);

struct Spectrum {
  std::vector<double> freqs;  // Hz, bin centres from 0 to rate / 2
  std::vector<double> psd;    // units^2 / Hz, one-sided
};

// Welch estimate with Hann segments of `segmentLength` samples (a power of two, shortened to the
// record when longer) and 50 % overlap.
Spectrum welchPsd(const double* x, std::size_t n, double rate, std::size_t segmentLength);

// One Hann-windowed periodogram of a whole stretch, for band powers.
class Periodogram {
 public:
  Periodogram(const double* x, std::size_t n, double rate);
  // Mean-square power between fLo and fHi (Hz, both included); the DC bin counts when fLo is 0.
  double bandPower(double fLo, double fHi) const;
  // Frequency resolution of the window: half the width of the Hann main lobe, in Hz.
  double resolutionHz() const { return 2.0 * rate_ / static_cast<double>(n_); }

 private:
  double rate_;
  std::size_t n_;
  std::size_t nfft_ = 1;
  double norm_ = 1.0;
  std::vector<double> power_;  // |X_k|^2 for k = 0 .. nfft / 2
};

// |sum h[k] e^{-j 2 pi f k / rate}| at every frequency in `freqs`.
std::vector<double> dtftMagnitude(const std::vector<double>& h, double rate,
                                  const std::vector<double>& freqs);

// `count` frequencies spaced evenly on a log scale from fLo to fHi, both included.
std::vector<double> logSpacedFrequencies(double fLo, double fHi, std::size_t count);

// 20 log10(v), floored at `floorDb` (also for 0 and NaN); +infinity gives -floorDb.
double toDb(double magnitude, double floorDb = -300.0);

// "-3.01 dB" with two decimals, "-inf dB" for an exact zero and "< -300 dB" below that,
// right-aligned in `width`.
std::string formatDb(double magnitude, int width = 8);

}  // namespace digitfilt::tool
