#include "spectrum.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace digitfilt::tool {
namespace {

constexpr double kPi = 3.14159265358979323846;

std::vector<double> hann(std::size_t n) {
  std::vector<double> w(n);
  for (std::size_t i = 0; i < n; ++i) w[i] = 0.5 - 0.5 * std::cos(2.0 * kPi * i / n);
  return w;
}

}  // namespace

std::size_t nextPowerOfTwo(std::size_t n) {
  std::size_t p = 1;
  while (p < n) p <<= 1;
  return p;
}

void fft(std::vector<std::complex<double>>& a, bool inverse) {
  const std::size_t n = a.size();
  for (std::size_t i = 1, j = 0; i < n; ++i) {
    std::size_t bit = n >> 1;
    for (; j & bit; bit >>= 1) j ^= bit;
    j ^= bit;
    if (i < j) std::swap(a[i], a[j]);
  }
  for (std::size_t len = 2; len <= n; len <<= 1) {
    const double ang = 2.0 * kPi / static_cast<double>(len) * (inverse ? 1.0 : -1.0);
    const std::size_t half = len / 2;
    // Twiddles from cos/sin per index rather than a running product, which drifts for long
    // transforms.
    std::vector<std::complex<double>> tw(half);
    for (std::size_t k = 0; k < half; ++k)
      tw[k] = {std::cos(ang * static_cast<double>(k)), std::sin(ang * static_cast<double>(k))};
    for (std::size_t i = 0; i < n; i += len)
      for (std::size_t k = 0; k < half; ++k) {
        const std::complex<double> u = a[i + k];
        const std::complex<double> v = a[i + k + half] * tw[k];
        a[i + k] = u + v;
        a[i + k + half] = u - v;
      }
  }
  if (inverse)
    for (auto& v : a) v /= static_cast<double>(n);
}

Spectrum welchPsd(const double* x, std::size_t n, double rate, std::size_t segmentLength) {
  Spectrum s;
  if (n < 2) return s;
  std::size_t seg = nextPowerOfTwo(std::max<std::size_t>(segmentLength, 2));
  while (seg > n) seg >>= 1;
  const std::vector<double> w = hann(seg);
  double wPower = 0.0;
  for (double v : w) wPower += v * v;
  const std::size_t bins = seg / 2 + 1;
  s.psd.assign(bins, 0.0);
  s.freqs.resize(bins);
  for (std::size_t k = 0; k < bins; ++k) s.freqs[k] = rate * k / seg;
  std::vector<std::complex<double>> buf(seg);
  std::size_t segments = 0;
  for (std::size_t start = 0; start + seg <= n; start += seg / 2) {
    double mean = 0.0;
    for (std::size_t i = 0; i < seg; ++i) mean += x[start + i];
    mean /= seg;
    // The mean is removed so a large offset does not leak into the lowest bins.
    for (std::size_t i = 0; i < seg; ++i) buf[i] = (x[start + i] - mean) * w[i];
    fft(buf, false);
    for (std::size_t k = 0; k < bins; ++k) {
      const double scale = (k == 0 || k == seg / 2) ? 1.0 : 2.0;
      s.psd[k] += scale * std::norm(buf[k]) / (rate * wPower);
    }
    ++segments;
  }
  for (double& v : s.psd) v /= static_cast<double>(segments);
  return s;
}

Periodogram::Periodogram(const double* x, std::size_t n, double rate)
    : rate_(rate), n_(n), nfft_(nextPowerOfTwo(std::max<std::size_t>(n, 1))) {
  const std::vector<double> w = hann(n);
  double wPower = 0.0;
  for (double v : w) wPower += v * v;
  std::vector<std::complex<double>> buf(nfft_);
  for (std::size_t i = 0; i < n; ++i) buf[i] = x[i] * w[i];
  fft(buf, false);
  power_.resize(nfft_ / 2 + 1);
  for (std::size_t k = 0; k < power_.size(); ++k) power_[k] = std::norm(buf[k]);
  // Parseval for the window: the bins of the zero-padded transform sum to nfft times the energy
  // of the windowed stretch, which is the mean square times the window's energy.
  norm_ = wPower > 0 ? 1.0 / (wPower * static_cast<double>(nfft_)) : 0.0;
}

double Periodogram::bandPower(double fLo, double fHi) const {
  const double binHz = rate_ / static_cast<double>(nfft_);
  double p = 0.0;
  for (std::size_t k = 0; k < power_.size(); ++k) {
    const double f = static_cast<double>(k) * binHz;
    if (f < fLo || f > fHi) continue;
    const double scale = (k == 0 || k == nfft_ / 2) ? 1.0 : 2.0;
    p += scale * power_[k];
  }
  return p * norm_;
}

std::vector<double> dtftMagnitude(const std::vector<double>& h, double rate,
                                  const std::vector<double>& freqs) {
  std::vector<double> out;
  out.reserve(freqs.size());
  for (double f : freqs) {
    const double w = 2.0 * kPi * f / rate;
    const std::complex<double> step(std::cos(w), -std::sin(w));
    std::complex<double> z(1.0, 0.0), acc(0.0, 0.0);
    for (std::size_t k = 0; k < h.size(); ++k) {
      acc += h[k] * z;
      z *= step;
      // Re-anchor the running phasor now and then; its rounding error grows with k.
      if ((k & 1023) == 1023) {
        const double ang = -w * static_cast<double>(k + 1);
        z = {std::cos(ang), std::sin(ang)};
      }
    }
    out.push_back(std::abs(acc));
  }
  return out;
}

std::vector<double> logSpacedFrequencies(double fLo, double fHi, std::size_t count) {
  std::vector<double> f(count);
  if (count == 1) {
    f[0] = fLo;
    return f;
  }
  const double a = std::log(fLo), b = std::log(fHi);
  for (std::size_t i = 0; i < count; ++i)
    f[i] = std::exp(a + (b - a) * static_cast<double>(i) / static_cast<double>(count - 1));
  f.front() = fLo;
  f.back() = fHi;
  return f;
}

double toDb(double magnitude, double floorDb) {
  if (std::isinf(magnitude) && magnitude > 0.0) return -floorDb;
  if (!(magnitude > 0.0) || !std::isfinite(magnitude)) return floorDb;
  return std::max(floorDb, 20.0 * std::log10(magnitude));
}

std::string formatDb(double magnitude, int width) {
  char buf[48];
  if (magnitude == 0.0)
    std::snprintf(buf, sizeof buf, "%*s dB", width, "-inf");
  else if (toDb(magnitude) <= -300.0)
    std::snprintf(buf, sizeof buf, "%*s dB", width, "< -300");
  else
    std::snprintf(buf, sizeof buf, "%*.2f dB", width, toDb(magnitude));
  return buf;
}

}  // namespace digitfilt::tool
