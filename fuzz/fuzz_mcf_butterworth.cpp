// The state-space Butterworth designer from bytes: mcButter for the four types (and refused
// orders and unknown types), the steady-state initial conditions of byte-made coefficient
// records, and zero-phase filtering of byte-made records with and without the caller's work
// buffer, in place and through a copy that shares the design.
//
// mcButter and generate_initial_conditions end the process (status 1) on a singular matrix or an
// eigenvalue iteration that does not converge, as they are required to; that region is not
// fuzzed. Skipped, so that any exit seen here is a finding:
//   - non-finite, zero or negative sample rates, and edges that are not strictly inside
//     (0, Nyquist): the pre-warped edges are then NaN, infinite or negative and the state matrix
//     has no eigenvalues the iteration can find. Edges are drawn as fractions of the rate in
//     [1e-6, 0.4999] (band edges independently, so reversed and equal edges are included) and
//     rates in [1e-6, 1e9] Hz;
//   - prototype orders above 40 (the designer accepts up to 100): the eigenvalues of the largest
//     designs crowd z = 1 so closely that convergence depends on rounding. Orders outside 1..100
//     are fuzzed too (refused with a message);
//   - designs whose poles crowd z = 1 beyond what double coefficients resolve: the design ends
//     with the initial conditions of its own denominator, whose matrix has the determinant
//     A(1) = 1 + a[1] + ... + a[N]. Each pole lies about tan(pi f / rate) from z = 1 for the
//     lowest edge f, so A(1) is near tan(pi f / rate)^N while the rounding of the coefficient
//     sum is near N 2^N 2.2e-16; when the first is not a thousand times the second the computed
//     sum is often exactly 0 (a 4th-order low-pass at 1e-6 of the rate, say) and the process
//     ends as required;
//   - for generate_initial_conditions, denominators whose sum 1 + a[1] + ... + a[n] (the
//     determinant of the matrix the routine inverts) is exactly or nearly zero: that matrix is
//     singular. Denominator values are finite there; numerators take any value.
#include <cmath>
#include <cstdint>
#include <vector>

#include <digitfilt/digitfilt.h>

#include "fuzz_input.h"

namespace {

struct Probe : CMcfButterworthqv {
  using CMcfButterworth::generate_initial_conditions;
};

// A fraction of the sample rate strictly inside (0, 1/2), log-spread towards both ends.
double edgeFraction(digitfilt::fuzz::Input& in) {
  const std::uint8_t kind = in.byte();
  if (kind % 4 == 0) return 0.4999 - std::pow(10.0, -in.finite(0.0, 6.0)) * 0.4999 + 1e-6;
  if (kind % 4 == 1) return std::pow(10.0, -in.finite(0.3011, 6.0));
  return in.finite(1e-6, 0.4999);
}

// False for designs whose poles crowd z = 1 beyond double resolution (see above).
bool resolvable(int type, int order, double rate, double f1, double f2) {
  if (order < 1 || order > CMcfButterworth::kMaxOrder) return true;  // refused anyway
  const bool band = type == 3 || type == 4;
  const double states = band ? 2.0 * order : static_cast<double>(order);
  const double lowest = band ? std::fmin(f1, f2) : f1;
  return states * std::log10(std::tan(3.141592653589793 * lowest / rate)) >=
         std::log10(1e3 * states * 2.2e-16) + states * std::log10(2.0);
}

void runFilter(digitfilt::fuzz::Input& in, CMcfButterworthqv& f, const std::vector<double>& x) {
  const std::int64_t n = static_cast<std::int64_t>(x.size());
  const std::int64_t ns = f.stateCount;
  const std::int64_t len = n + 6 * ns;
  // Exactly as long as required, alone on the heap, so that any overrun is reported.
  std::vector<double> out(static_cast<std::size_t>(len > 0 ? len : 1), 0.0);
  std::vector<double> work(static_cast<std::size_t>(len > 0 ? len : 1), 0.0);
  const std::uint8_t how = in.byte();
  if (how % 3 == 0) {
    f.filtfilt(const_cast<double*>(x.data()), n, out.data(), nullptr);
  } else if (how % 3 == 1) {
    f.filtfilt(const_cast<double*>(x.data()), n, out.data(), work.data());
  } else {
    // In place: the record sits at the start of the output buffer.
    std::copy(x.begin(), x.end(), out.begin());
    f.filtfilt(out.data(), n, out.data(), (how & 8) ? work.data() : nullptr);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  digitfilt::fuzz::Input in(data, size);
  auto quiet = digitfilt::setMessageHandler([](const std::wstring&) { return 1; });

  Probe design;
  const std::uint8_t mode = in.byte();
  int type = static_cast<int>(in.range(1, 4));
  if ((mode & 0x30) == 0x30) type = static_cast<int>(in.range(-2, 7));  // unknown types too
  int order = static_cast<int>(in.range(1, 12));
  if (mode & 0x40) order = static_cast<int>(in.range(1, 40));
  if ((mode & 0x0c) == 0x0c) order = static_cast<int>(static_cast<std::int32_t>(in.u32()));
  if (order >= 41 && order <= CMcfButterworth::kMaxOrder) order = 0;  // see above
  const double rate = std::pow(10.0, in.finite(-6.0, 9.0));
  const double f1 = edgeFraction(in) * rate;
  const double f2 = edgeFraction(in) * rate;

  if (!resolvable(type, order, rate, f1, f2)) order = 0;  // see above

  // Filtering before any design is refused.
  std::vector<double> x = in.samples(static_cast<std::size_t>(in.range(0, 400)));
  runFilter(in, design, x);

  const int result = design.mcButter(type, rate, order, f1, f2);
  if (result == 1) {
    runFilter(in, design, x);
    // A copy shares the arrays and keeps them when the original designs again.
    CMcfButterworthqv copy;
    copy = design;
    const int type2 = static_cast<int>(in.range(1, 4));
    const int order2 = static_cast<int>(in.range(1, 6));
    if (resolvable(type2, order2, rate, f1, f2)) design.mcButter(type2, rate, order2, f1, f2);
    runFilter(in, copy, x);
    runFilter(in, design, x);
  } else if (result == -1) {
    runFilter(in, design, x);
  }

  // Initial conditions of a byte-made record.
  const int n = static_cast<int>(in.range(-1, 24));
  std::vector<double> b(static_cast<std::size_t>(n > 0 ? n + 1 : 1));
  std::vector<double> a(b.size());
  double sum = 1.0, magnitude = 1.0;
  for (std::size_t k = 0; k < b.size(); ++k) {
    b[k] = in.real(4.0);
    a[k] = in.finite(-4.0, 4.0);
    if (k > 0) {
      sum += a[k];
      magnitude += std::fabs(a[k]);
    }
  }
  if (std::fabs(sum) > 1e-6 * magnitude) {
    design.generate_initial_conditions(b.data(), a.data(), n);
    // Conditions for another count than the design's: filtering must notice.
    runFilter(in, design, x);
    design.generate_initial_conditions(nullptr, a.data(), n);
    runFilter(in, design, x);
  }

  digitfilt::setMessageHandler(quiet);
  return 0;
}
