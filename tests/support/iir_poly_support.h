#pragma once
// Helpers for the classic IIR designer tests: a direct-form oracle and owners for the calloc'd
// arrays the polynomial designer returns.
#include <cstdlib>
#include <memory>
#include <vector>

namespace digitfilt::test {

// First n samples of the impulse response of sum b[k] z^-k / sum a[k] z^-k (a[0] = 1), by the
// difference equation.
inline std::vector<double> directFormImpulse(const std::vector<double>& b,
                                             const std::vector<double>& a, int n) {
  std::vector<double> y(static_cast<std::size_t>(n), 0.0);
  for (int i = 0; i < n; ++i) {
    double acc = i < static_cast<int>(b.size()) ? b[static_cast<std::size_t>(i)] : 0.0;
    for (int k = 1; k < static_cast<int>(a.size()) && k <= i; ++k) {
      acc -= a[static_cast<std::size_t>(k)] * y[static_cast<std::size_t>(i - k)];
    }
    y[static_cast<std::size_t>(i)] = acc;
  }
  return y;
}

inline std::vector<double> unitImpulse(int n) {
  std::vector<double> x(static_cast<std::size_t>(n), 0.0);
  if (n > 0) x[0] = 1.0;
  return x;
}

// Owns an array released with free, as the polynomial designer's results are.
struct FreeDeleter {
  void operator()(void* p) const { std::free(p); }
};
template <class T>
using CArray = std::unique_ptr<T[], FreeDeleter>;

}  // namespace digitfilt::test
