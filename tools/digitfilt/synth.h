#pragma once
// EEG-like test signals for the demo: a 1/f background and a waxing and waning alpha rhythm (the
// "clean" signal), plus what a filter bank must remove: a DC offset, a slow drift, and mains
// with its harmonics. Deterministic for a seed, on every platform.
#include <cstdint>
#include <vector>

namespace digitfilt::tool {

struct SyntheticEeg {
  double rate = 0.0;
  double mainsHz = 0.0;
  int mainsHarmonics = 0;  // harmonics present in `mains`, the fundamental included
  std::vector<std::vector<double>> clean;  // per channel, microvolts
  std::vector<std::vector<double>> offsetAndDrift;
  std::vector<std::vector<double>> mains;
  std::vector<std::vector<double>> total;  // the sum of the three
};

SyntheticEeg synthesizeEeg(int channels, double seconds, double rate, double mainsHz,
                           std::uint64_t seed);

}  // namespace digitfilt::tool
