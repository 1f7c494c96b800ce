#include "synth.h"

#include <algorithm>
#include <cmath>
#include <complex>

#include "spectrum.h"

namespace digitfilt::tool {
namespace {

constexpr double kPi = 3.14159265358979323846;

// SplitMix64 and Box-Muller: the standard library's distributions differ between
// implementations, and the demo's numbers should not.
class Random {
 public:
  explicit Random(std::uint64_t seed) : state_(seed) {}
  std::uint64_t next() {
    std::uint64_t z = (state_ += 0x9E3779B97F4A7C15ull);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
    return z ^ (z >> 31);
  }
  double uniform() { return (next() >> 11) * (1.0 / 9007199254740992.0); }  // [0, 1)
  double normal() {
    const double u1 = 1.0 - uniform(), u2 = uniform();
    return std::sqrt(-2.0 * std::log(u1)) * std::cos(2.0 * kPi * u2);
  }

 private:
  std::uint64_t state_;
};

// EEG-like background shaped in the frequency domain: 1/f power from fLo to fKnee, falling as
// 1/f^3 above it up to fHi, nothing outside; scaled to `rms`.
std::vector<double> backgroundNoise(std::size_t n, double rate, double fLo, double fKnee,
                                    double fHi, double rms, Random& rnd) {
  const std::size_t m = nextPowerOfTwo(n);
  std::vector<std::complex<double>> buf(m);
  for (auto& v : buf) v = rnd.normal();
  fft(buf, false);
  for (std::size_t k = 0; k < m; ++k) {
    const std::size_t kk = k <= m / 2 ? k : m - k;
    const double f = rate * static_cast<double>(kk) / static_cast<double>(m);
    const double amp = f <= fKnee ? 1.0 / std::sqrt(f) : std::pow(f / fKnee, -1.5) / std::sqrt(fKnee);
    buf[k] *= (f >= fLo && f <= fHi) ? amp : 0.0;
  }
  fft(buf, true);
  std::vector<double> x(n);
  double ss = 0.0;
  for (std::size_t i = 0; i < n; ++i) {
    x[i] = buf[i].real();
    ss += x[i] * x[i];
  }
  const double scale = ss > 0 ? rms / std::sqrt(ss / static_cast<double>(n)) : 0.0;
  for (double& v : x) v *= scale;
  return x;
}

}  // namespace

SyntheticEeg synthesizeEeg(int channels, double seconds, double rate, double mainsHz,
                           std::uint64_t seed) {
  SyntheticEeg s;
  s.rate = rate;
  s.mainsHz = mainsHz;
  const std::size_t n = static_cast<std::size_t>(std::llround(seconds * rate));
  // Relative amplitudes of the mains harmonics, as a switched-mode supply leaves them.
  const double harmonicShare[] = {1.0, 0.35, 0.2, 0.08, 0.04};
  s.mainsHarmonics = 0;
  for (int h = 1; h <= 5 && h * mainsHz < 0.5 * rate; ++h) s.mainsHarmonics = h;

  Random rnd(seed);
  for (int c = 0; c < channels; ++c) {
    std::vector<double> clean =
        backgroundNoise(n, rate, 1.0, 30.0, 0.45 * rate, 8.0 + 2.0 * (c % 4), rnd);
    // Alpha is strongest over the back of the head: the second half of the channels.
    const double alphaAmp = c >= channels / 2 ? 22.0 : 9.0;
    const double alphaHz = 9.6 + 0.1 * (c % 8);
    const double alphaPhase = 2 * kPi * rnd.uniform(), wax = 2 * kPi * rnd.uniform();
    const double offset = 250.0 * (2.0 * rnd.uniform() - 1.0);
    const double slope = 4.0 * (2.0 * rnd.uniform() - 1.0);  // microvolts per second
    const double driftHz = 0.03 + 0.05 * rnd.uniform(), driftAmp = 40.0 + 40.0 * rnd.uniform();
    const double driftPhase = 2 * kPi * rnd.uniform();
    const double mainsAmp = 40.0 + 80.0 * rnd.uniform();
    double mainsPhase[5];
    for (double& p : mainsPhase) p = 2 * kPi * rnd.uniform();

    std::vector<double> drift(n), mains(n), total(n);
    for (std::size_t i = 0; i < n; ++i) {
      const double t = static_cast<double>(i) / rate;
      clean[i] += alphaAmp * (0.6 + 0.4 * std::sin(2 * kPi * 0.13 * t + wax)) *
                  std::sin(2 * kPi * alphaHz * t + alphaPhase);
      drift[i] = offset + slope * t + driftAmp * std::sin(2 * kPi * driftHz * t + driftPhase);
      double m = 0.0;
      for (int h = 1; h <= s.mainsHarmonics; ++h)
        m += mainsAmp * harmonicShare[h - 1] * std::sin(2 * kPi * h * mainsHz * t + mainsPhase[h - 1]);
      mains[i] = m;
      total[i] = clean[i] + drift[i] + m;
    }
    s.clean.push_back(std::move(clean));
    s.offsetAndDrift.push_back(std::move(drift));
    s.mains.push_back(std::move(mains));
    s.total.push_back(std::move(total));
  }
  return s;
}

}  // namespace digitfilt::tool
