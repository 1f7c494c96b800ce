// The classic IIR designers from bytes: the polynomial Butterworth functions with any order and
// edges, the Butterworth object's stage makers with its three filtering operations, and the
// Chebyshev object's makers with its filter.
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <vector>

#include <digitfilt/digitfilt.h>

#include "fuzz_input.h"

namespace {

using digitfilt::fuzz::Input;
using Poly = CMeFilterButterworth03Prcs;

int wildOrder(Input& in, int lo, int hi) {
  switch (in.byte() % 8) {
    case 0: return std::numeric_limits<int>::min();
    case 1: return std::numeric_limits<int>::max();
    case 2: return -std::numeric_limits<int>::max();
    default: return static_cast<int>(in.range(lo, hi));
  }
}

// Every polynomial function; orders beyond what callers use (the integer coefficients wrap) are
// included, kept small enough that the quadratic expansions stay quick.
void polynomials(Input& in) {
  const int n = static_cast<int>(in.range(-3, 300));
  const double f1 = in.real(1.0), f2 = in.real(1.0);
  std::free(Poly::dcof_bwlp(n, f1));
  std::free(Poly::dcof_bwhp(n, f2));
  std::free(Poly::dcof_bwbp(n, f1, f2));
  std::free(Poly::dcof_bwbs(n, f1, f2));
  std::free(Poly::ccof_bwlp(n));
  std::free(Poly::ccof_bwhp(n));
  std::free(Poly::ccof_bwbp(n));
  std::free(Poly::ccof_bwbs(n, f1, f2));
  Poly::sf_bwlp(n, f1);
  Poly::sf_bwhp(n, f1);
  Poly::sf_bwbp(n, f1, f2);
  Poly::sf_bwbs(n, f1, f2);
  // The multipliers read exactly n (binomial) or n and n (trinomial) complex factors.
  const int m = static_cast<int>(in.range(-1, 40));
  const std::size_t len = m > 0 ? 2 * static_cast<std::size_t>(m) : 0;
  std::vector<double> p(len), q(len);
  for (double& v : p) v = in.real(2.0);
  for (double& v : q) v = in.real(2.0);
  std::free(Poly::binomial_mult(m, p.data()));
  std::free(Poly::trinomial_mult(m, p.data(), q.data()));
}

std::vector<double> block(Input& in) {
  return in.samples(static_cast<std::size_t>(in.range(0, 160)));
}

void butterworth(Input& in) {
  CMeFilterButterworth f;
  const int makers = static_cast<int>(in.range(1, 4));
  for (int i = 0; i < makers; ++i) {
    const double rate = in.real(2000.0);
    if (in.byte() & 1) {
      f.makeCoefLopsHips(wildOrder(in, -6, 30), rate, in.byte() & 1, in.real(rate),
                         in.byte() & 1, in.real(rate));
    } else {
      f.makeCoefBndpasBndstp(wildOrder(in, -6, 30), rate, in.real(rate), in.real(rate),
                             in.byte() & 1);
    }
  }
  // Hosts switch stages on and may write any type or order before remaking.
  for (const auto& s : f.filterList) {
    const std::uint8_t b = in.byte();
    if (b & 1) s->enabled = 1;
    if (b & 2) s->filterType = static_cast<std::int32_t>(in.range(-1, 4));
    if (b & 4) s->order = wildOrder(in, -6, 30);
    if (b & 8) s->numSections = wildOrder(in, -3, 30);
  }
  if (in.byte() & 1) f.checkCorrectAllFilterSettings4SmplRate();
  if (in.byte() & 1) f.makeAllButterworthCoeffs(in.byte() & 1);
  std::vector<double> x = block(in);
  double* ptr = (in.byte() % 16 == 0) ? nullptr : x.data();
  const auto n = static_cast<std::int64_t>(x.size());
  f.filtData(ptr, n);
  f.filtDataZeroShift(ptr, n);
  f.filtDataAcq(ptr, n, in.range(-4, 170), in.range(-4, 170), 0);
  CMeFilterButterworth copy(f);
  copy.filtDataZeroShift(ptr, n);
  f.reset();
  f.cleanCoefs();
  f.filtData(ptr, n);
}

void chebyshev(Input& in) {
  CMeFilterChebyshevqv f;
  const int makers = static_cast<int>(in.range(1, 4));
  for (int i = 0; i < makers; ++i) {
    const double rate = in.real(2000.0);
    const double eps = in.real(1.0);
    if (in.byte() & 1) {
      f.makeCoefLopsHips(wildOrder(in, -6, 50), rate, in.byte() & 1, in.real(rate),
                         in.byte() & 1, in.real(rate), eps);
    } else {
      f.makeCoefBndpasBndstp(wildOrder(in, -6, 50), rate, in.real(rate), in.real(rate),
                             in.byte() & 1, eps);
    }
  }
  for (const auto& s : f.stageList) {
    const std::uint8_t b = in.byte();
    if (b & 1) s->enabled = 1;
    if (b & 2) s->filterType = static_cast<std::int32_t>(in.range(-1, 5));
    if (b & 4) s->order = wildOrder(in, -6, 50);
    if (b & 8) s->numSections = wildOrder(in, -3, 50);
  }
  std::vector<double> x = block(in);
  double* ptr = (in.byte() % 16 == 0) ? nullptr : x.data();
  f.filtData(ptr, static_cast<std::int64_t>(x.size()));
  CMeFilterChebyshev copy(f);
  copy.filtData(ptr, static_cast<std::int64_t>(x.size()));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input in(data, size);
  auto quiet = digitfilt::setMessageHandler([](const std::wstring&) { return 1; });
  switch (in.byte() % 3) {
    case 0: polynomials(in); break;
    case 1: butterworth(in); break;
    default: chebyshev(in); break;
  }
  digitfilt::setMessageHandler(quiet);
  return 0;
}
