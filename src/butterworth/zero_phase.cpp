#include "digitfilt/butterworth/zero_phase.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>
#include <utility>

#include "digitfilt/foundation/messages.h"

namespace digitfilt {
namespace {

constexpr int kStore = 60;     // coefs[] slots of a record
constexpr int kDenStart = 20;  // a[k] lives at coefs[20 + k]

// Terms per output: numCoefs, cut where b[k] would leave the store.
int termCount(const filter_iirspec& s) { return std::clamp(s.numCoefs, 0, kStore); }

// a[k] of a record; denominators of k >= 40 have no slot and count as 0.
double denominator(const filter_iirspec& s, int k) {
  return kDenStart + k < kStore ? s.coefs[kDenStart + k] : 0.0;
}

// Element j of the record as the pass sees it: forwards (Dir 1) or from the end (Dir -1, with the
// pointers placed on the last element).
template <int Dir>
inline std::ptrdiff_t at(std::int64_t j) {
  return static_cast<std::ptrdiff_t>(Dir * j);
}

// Outputs j in [j0, j1) read straight from the arrays, with the terms of negative index left
// out. Serves the first numCoefs-1 samples of a record and stages too long for a fixed kernel.
template <int Dir>
void evalDirect(const double* x, double* y, std::int64_t j0, std::int64_t j1,
                const filter_iirspec& s, double x0) {
  const int nc = termCount(s);
  // a[0] multiplies the output's own slot, which holds 0 while its sum is formed.
  const double a0Term = denominator(s, 0) * 0.0;
  for (std::int64_t j = j0; j < j1; ++j) {
    if (nc == 0) {
      y[at<Dir>(j)] = 0.0;
      continue;
    }
    double acc = 0.0 + (s.coefs[0] * (x[at<Dir>(j)] - x0) - a0Term);
    const std::int64_t kEnd = std::min<std::int64_t>(j, nc - 1);
    for (int k = 1; k <= kEnd; ++k)
      acc += s.coefs[k] * (x[at<Dir>(j - k)] - x0) - denominator(s, k) * y[at<Dir>(j - k)];
    y[at<Dir>(j)] = acc;
  }
}

// Outputs j in [j0, j1), j0 >= NC-1, with coefficients and the NC-1 previous inputs (offset
// already taken) and outputs held in locals: each input sample is offset once and every value
// stays in registers across the stretch. The arithmetic and its order are those of evalDirect.
template <int NC, int Dir>
void evalFixed(const double* x, double* y, std::int64_t j0, std::int64_t j1,
               const filter_iirspec& s, double x0) {
  double b[NC], a[NC], dx[NC], yh[NC];
#pragma GCC unroll 16
  for (int k = 0; k < NC; ++k) {
    b[k] = s.coefs[k];
    a[k] = s.coefs[kDenStart + k];
  }
  const double a0Term = a[0] * 0.0;
  dx[0] = yh[0] = 0.0;
#pragma GCC unroll 16
  for (int k = 1; k < NC; ++k) {
    dx[k] = x[at<Dir>(j0 - k)] - x0;
    yh[k] = y[at<Dir>(j0 - k)];
  }
  for (std::int64_t j = j0; j < j1; ++j) {
    const double d0 = x[at<Dir>(j)] - x0;
    double acc = 0.0 + (b[0] * d0 - a0Term);
#pragma GCC unroll 16
    for (int k = 1; k < NC; ++k) acc += b[k] * dx[k] - a[k] * yh[k];
    y[at<Dir>(j)] = acc;
#pragma GCC unroll 16
    for (int k = NC - 1; k > 1; --k) {
      dx[k] = dx[k - 1];
      yh[k] = yh[k - 1];
    }
    if constexpr (NC > 1) {
      dx[1] = d0;
      yh[1] = acc;
    }
  }
}

template <int Dir>
void evalStage(const double* x, double* y, std::int64_t j0, std::int64_t j1,
               const filter_iirspec& s, double x0) {
  if (j1 <= j0) return;
  const int nc = termCount(s);
  // Until NC-1 earlier samples exist, some terms are left out: evaluate those outputs directly.
  const std::int64_t full = std::min<std::int64_t>(j1, std::max<std::int64_t>(j0, nc - 1));
  evalDirect<Dir>(x, y, j0, full, s, x0);
  if (full >= j1) return;
  switch (nc) {
    case 2: return evalFixed<2, Dir>(x, y, full, j1, s, x0);
    case 3: return evalFixed<3, Dir>(x, y, full, j1, s, x0);
    case 4: return evalFixed<4, Dir>(x, y, full, j1, s, x0);
    case 5: return evalFixed<5, Dir>(x, y, full, j1, s, x0);
    case 6: return evalFixed<6, Dir>(x, y, full, j1, s, x0);
    case 7: return evalFixed<7, Dir>(x, y, full, j1, s, x0);
    case 8: return evalFixed<8, Dir>(x, y, full, j1, s, x0);
    case 9: return evalFixed<9, Dir>(x, y, full, j1, s, x0);
    case 10: return evalFixed<10, Dir>(x, y, full, j1, s, x0);
    case 11: return evalFixed<11, Dir>(x, y, full, j1, s, x0);
    default: return evalDirect<Dir>(x, y, full, j1, s, x0);
  }
}

// Largest run of equal-length stages evaluated side by side.
constexpr int kMaxGroup = 3;

// True when `offset` and every stage's a[0] term are +0.0, so that v - offset and
// b[0] d - a[0] * 0 equal v and b[0] d bit for bit and can be left out.
bool plainTerms(filter_iirspec* const* stages, int count, double offset) {
  if (offset != 0.0 || std::signbit(offset)) return false;
  for (int g = 0; g < count; ++g) {
    const double a0Term = stages[g]->coefs[kDenStart] * 0.0;
    if (a0Term != 0.0 || std::signbit(a0Term)) return false;
  }
  return true;
}

// State of G consecutive stages of NC terms each. The NC-1 previous inputs (offset taken) and
// outputs of a stage sit in slots that rotate: sample j lives in slot j mod (NC-1), counted
// from the stretch's start, so that no value moves once written. With plain terms a stage's
// input is exactly the previous stage's output, so the two share one history row: row g holds
// stage g's inputs and row g+1 its outputs. Otherwise each stage has its own pair of rows.
template <int NC, int G, bool Plain>
struct GroupState {
  static constexpr int kSlots = NC - 1;
  static constexpr int kRows = Plain ? G + 1 : 2 * G;
  static constexpr int inRow(int g) { return Plain ? g : 2 * g; }
  static constexpr int outRow(int g) { return Plain ? g + 1 : 2 * g + 1; }
  // Read from the records at every use: the output stores may alias them, so the compiler
  // keeps the coefficients as memory operands and leaves the registers to the histories.
  const double* coefs[G];
  double a0Term[G];
  double hist[kRows][kSlots];
  double* out[G];
  const double* in;
  double x0;
};

// One sample through the group at phase P = (j - j0) mod (NC-1). Stage g's input is stage
// g-1's output, handed over in a register; each stage's sum is formed exactly as evalDirect
// forms it.
template <int NC, int G, bool Plain, int P>
[[gnu::always_inline]] inline void groupStep(GroupState<NC, G, Plain>& st, std::int64_t j) {
  using State = GroupState<NC, G, Plain>;
  constexpr int kSlots = State::kSlots;
  double d[G], y[G];
  double v = st.in[j];
#pragma GCC unroll 8
  for (int g = 0; g < G; ++g) {
    const double* xh = st.hist[State::inRow(g)];
    const double* yh = st.hist[State::outRow(g)];
    d[g] = Plain ? v : v - st.x0;
    const double* c = st.coefs[g];
    double acc = 0.0 + (Plain ? c[0] * d[g] : c[0] * d[g] - st.a0Term[g]);
#pragma GCC unroll 16
    for (int k = 1; k < NC; ++k) {
      const int slot = (P - k + kSlots) % kSlots;  // where sample j-k lives
      acc += c[k] * xh[slot] - c[kDenStart + k] * yh[slot];
    }
    st.out[g][j] = acc;
    y[g] = acc;
    v = acc;
  }
  // Sample j takes slot P, that of sample j-(NC-1), once every stage has read it.
#pragma GCC unroll 8
  for (int g = 0; g < G; ++g) {
    if (!Plain || g == 0) st.hist[State::inRow(g)][P] = d[g];
    st.hist[State::outRow(g)][P] = y[g];
  }
}

template <int NC, int G, bool Plain, int... P>
[[gnu::always_inline]] inline void groupSteps(GroupState<NC, G, Plain>& st, std::int64_t j,
                                              std::integer_sequence<int, P...>) {
  (groupStep<NC, G, Plain, P>(st, j + P), ...);
}

template <int NC, int G, bool Plain, int... P>
[[gnu::always_inline]] inline void groupStepsUpTo(GroupState<NC, G, Plain>& st, std::int64_t j,
                                                  std::int64_t j1,
                                                  std::integer_sequence<int, P...>) {
  ((j + P < j1 ? groupStep<NC, G, Plain, P>(st, j + P) : void()), ...);
}

// Samples before the stretch as the chain's stages see them: row 0 holds the first stage's
// inputs, row i+1 stage i's outputs (which are stage i+1's inputs), newest first: row[k-1] is
// the value at j0-k.
constexpr int kHistory = 8;  // NC-1 for the longest group kernel
using HistoryRow = double[kHistory];

// G consecutive stages sample by sample: stage g reads buf[(parity + g) % 2] and writes the
// other buffer, exactly as G calls of evalFixed in turn would, but the stages' recursions
// overlap in the processor instead of running one after another over the stretch. Earlier
// samples come from `rows`. Requires j0 >= NC-1.
template <int NC, int G, bool Plain>
void evalGroup(double* const buf[2], int parity, filter_iirspec* const* stages,
               const HistoryRow* rows, std::int64_t j0, std::int64_t j1, double x0) {
  using State = GroupState<NC, G, Plain>;
  constexpr int kSlots = State::kSlots;
  State st;
  st.in = buf[parity];
  st.x0 = x0;
  for (int g = 0; g < G; ++g) {
    st.out[g] = buf[(parity + g + 1) & 1];
    st.coefs[g] = stages[g]->coefs;
    st.a0Term[g] = stages[g]->coefs[kDenStart] * 0.0;
    // Sample j0-k belongs in slot (-k) mod (NC-1); a shared row is filled once.
    for (int k = 1; k < NC; ++k) {
      if (!Plain || g == 0) st.hist[State::inRow(g)][kSlots - k] = rows[g][k - 1] - x0;
      st.hist[State::outRow(g)][kSlots - k] = rows[g + 1][k - 1];
    }
  }
  const auto phases = std::make_integer_sequence<int, kSlots>();
  std::int64_t j = j0;
  for (; j1 - j >= kSlots; j += kSlots) groupSteps<NC, G, Plain>(st, j, phases);
  groupStepsUpTo<NC, G, Plain>(st, j, j1, phases);
}

template <int NC, int G>
void evalGroupFor(double* const buf[2], int parity, filter_iirspec* const* stages,
                  const HistoryRow* rows, std::int64_t j0, std::int64_t j1, double x0) {
  if (plainTerms(stages, G, x0))
    evalGroup<NC, G, true>(buf, parity, stages, rows, j0, j1, x0);
  else
    evalGroup<NC, G, false>(buf, parity, stages, rows, j0, j1, x0);
}

template <int NC>
void evalGroupOfSize(int count, double* const buf[2], int parity, filter_iirspec* const* stages,
                     const HistoryRow* rows, std::int64_t j0, std::int64_t j1, double x0) {
  static_assert(NC - 1 <= kHistory, "history rows too short");
  static_assert(kMaxGroup == 3, "one case per group size");
  switch (count) {
    case 1: return evalGroupFor<NC, 1>(buf, parity, stages, rows, j0, j1, x0);
    case 2: return evalGroupFor<NC, 2>(buf, parity, stages, rows, j0, j1, x0);
    default: return evalGroupFor<NC, 3>(buf, parity, stages, rows, j0, j1, x0);
  }
}

// Stage lengths with a group kernel: orders 1, 2 and 4 of band stages, 2 and 4 of the others.
bool hasGroupKernel(int nc) { return nc == 3 || nc == 5 || nc == 9; }

void evalGroupOf(int nc, int count, double* const buf[2], int parity,
                 filter_iirspec* const* stages, const HistoryRow* rows, std::int64_t j0,
                 std::int64_t j1, double x0) {
  switch (nc) {
    case 3: return evalGroupOfSize<3>(count, buf, parity, stages, rows, j0, j1, x0);
    case 5: return evalGroupOfSize<5>(count, buf, parity, stages, rows, j0, j1, x0);
    default: return evalGroupOfSize<9>(count, buf, parity, stages, rows, j0, j1, x0);
  }
}

void fillRow(HistoryRow& row, const double* buf, std::int64_t j0) {
  for (int k = 1; k <= kHistory; ++k) row[k - 1] = j0 - k >= 0 ? buf[j0 - k] : 0.0;
}

// Sizes a cached work array: kept when the length is unchanged, otherwise released and taken
// afresh (zero-filled). False when n is negative or the memory cannot be had.
bool ensureWork(std::unique_ptr<double[]>& owner, double*& view, std::int64_t& length,
                std::int64_t n) {
  if (n == length) return true;
  owner.reset();
  view = nullptr;
  length = 0;
  if (n < 0 || static_cast<std::uint64_t>(n) > PTRDIFF_MAX / sizeof(double)) return false;
  if (n > 0) {
    owner.reset(new (std::nothrow) double[static_cast<std::size_t>(n)]());
    if (!owner) return false;
  }
  view = owner.get();
  length = n;
  return true;
}

void releaseWork(std::unique_ptr<double[]>& owner, double*& view, std::int64_t& length) {
  owner.reset();
  view = nullptr;
  length = 0;
}

// A copy's work array: the target's own is released and, when the source holds one, a fresh one
// of that size is taken; its recorded length stays 0, so the next filter call sizes it again.
bool takeFreshWork(std::unique_ptr<double[]>& owner, double*& view, std::int64_t& length,
                   std::int64_t sourceLength) {
  releaseWork(owner, view, length);
  if (sourceLength < 1) return true;
  if (static_cast<std::uint64_t>(sourceLength) <= PTRDIFF_MAX / sizeof(double))
    owner.reset(new (std::nothrow) double[static_cast<std::size_t>(sourceLength)]());
  if (!owner) {
    showMessage(L"Is there enough memory for filter!");
    return false;
  }
  view = owner.get();
  return true;
}

void copySamples(const double* from, double* to, std::int64_t n) {
  if (n > 0 && from != to) std::memmove(to, from, static_cast<std::size_t>(n) * sizeof(double));
}

bool anyEnabled(const filter_iirspec* specs, unsigned count) {
  for (unsigned i = 0; i < count; ++i)
    if (specs[i].enabled != 0) return true;
  return false;
}

}  // namespace

void filterStageForward(const double* x, double* y, std::int64_t first, std::int64_t last,
                        const filter_iirspec& s, double offset) {
  evalStage<1>(x, y, std::max<std::int64_t>(first, 0), last, s, offset);
}

void filterStageBackward(const double* x, double* y, std::int64_t n, const filter_iirspec& s,
                         double offset) {
  if (n < 1) return;
  evalStage<-1>(x + (n - 1), y + (n - 1), 0, n, s, offset);
}

void filterStageChain(double* data, double* other, filter_iirspec* const* stages, int count,
                      std::int64_t first, std::int64_t last, double offset) {
  first = std::max<std::int64_t>(first, 0);
  if (last <= first || count <= 0) return;
  double* const buf[2] = {data, other};
  int maxTerms = 0;
  bool grouped = count <= CDigitFiltCoefMak01Butterworth::kSpecCount;
  for (int i = 0; i < count; ++i) {
    const int nc = termCount(*stages[i]);
    maxTerms = std::max(maxTerms, nc);
    grouped = grouped && hasGroupKernel(nc);
  }
  // Until maxTerms-1 samples precede a sample, some of its terms are left out: those samples
  // run stage by stage, and the grouped kernels take over from `mid`.
  const std::int64_t mid = std::max<std::int64_t>(first, maxTerms - 1);
  if (!grouped || mid >= last) {
    for (int i = 0; i < count; ++i)
      evalStage<1>(buf[i & 1], buf[(i + 1) & 1], first, last, *stages[i], offset);
    return;
  }
  // What each stage finds before `mid` when the stages run one after another: its input
  // buffer as the previous stage left it, its output buffer as it left it itself.
  HistoryRow rows[CDigitFiltCoefMak01Butterworth::kSpecCount + 1];
  fillRow(rows[0], buf[0], mid);
  for (int i = 0; i < count; ++i) {
    if (mid > first) evalStage<1>(buf[i & 1], buf[(i + 1) & 1], first, mid, *stages[i], offset);
    fillRow(rows[i + 1], buf[(i + 1) & 1], mid);
  }
  for (int i = 0; i < count;) {
    const int nc = termCount(*stages[i]);
    int g = 1;
    while (g < kMaxGroup && i + g < count && termCount(*stages[i + g]) == nc) ++g;
    evalGroupOf(nc, g, buf, i & 1, stages + i, rows + i, mid, last, offset);
    i += g;
  }
}

void zeroPhaseStage(const double* x, double* y, double* w, std::int64_t n, filter_iirspec& s) {
  s.coefs[kDenStart] = 0.0;
  if (n < 1) return;
  filterStageForward(x, w, 0, n, s, x[0]);
  filterStageBackward(w, y, n, s, w[n - 1]);
}

}  // namespace digitfilt

using digitfilt::copySamples;

CDigitFiltCoefMak01Butterworth01ctf::CDigitFiltCoefMak01Butterworth01ctf() {
  resetFilterSettings();
}

CDigitFiltCoefMak01Butterworth01ctf::CDigitFiltCoefMak01Butterworth01ctf(
    const CDigitFiltCoefMak01Butterworth01ctf& other)
    : CDigitFiltCoefMak01Butterworth(other) {
  takeFreshWorkArrays(other);
}

CDigitFiltCoefMak01Butterworth01ctf& CDigitFiltCoefMak01Butterworth01ctf::operator=(
    const CDigitFiltCoefMak01Butterworth01ctf& other) {
  if (this == &other) return *this;
  CDigitFiltCoefMak01Butterworth::operator=(other);
  takeFreshWorkArrays(other);
  return *this;
}

// Stops at the first array that cannot be had, after its message.
void CDigitFiltCoefMak01Butterworth01ctf::takeFreshWorkArrays(
    const CDigitFiltCoefMak01Butterworth01ctf& other) {
  if (!digitfilt::takeFreshWork(tmpAryOwner_, tmpAry, tmpAryLen, other.tmpAryLen)) return;
  if (!digitfilt::takeFreshWork(tmpTSOwner_, tmpTS, tmpTSLen, other.tmpTSLen)) return;
  digitfilt::takeFreshWork(tmpIOOwner_, tmpIO, tmpIOLen, other.tmpIOLen);
}

int CDigitFiltCoefMak01Butterworth01ctf::cleanTmpAry() {
  digitfilt::releaseWork(tmpAryOwner_, tmpAry, tmpAryLen);
  return 1;
}

int CDigitFiltCoefMak01Butterworth01ctf::cleanTmpTS() {
  digitfilt::releaseWork(tmpTSOwner_, tmpTS, tmpTSLen);
  return 1;
}

int CDigitFiltCoefMak01Butterworth01ctf::cleanTmpIO() {
  digitfilt::releaseWork(tmpIOOwner_, tmpIO, tmpIOLen);
  return 1;
}

int CDigitFiltCoefMak01Butterworth01ctf::ctfZeroPhaseShiftIIRDigitFilter(double* x, double* y,
                                                                       std::int64_t n,
                                                                       filter_iirspec* s) {
  if (n == 0 || s == nullptr) return 0;
  if (!digitfilt::ensureWork(tmpTSOwner_, tmpTS, tmpTSLen, n)) return 0;
  if (s->enabled == 0 || n < s->numCoefs) {
    copySamples(x, y, n);
    return 0;
  }
  digitfilt::zeroPhaseStage(x, y, tmpTS, n, *s);
  return 1;
}

int CDigitFiltCoefMak01Butterworth01ctf::ctfCheckZeroshiftButterworthCoef(double* x, double* y,
                                                                        std::int64_t n,
                                                                        filter_iirspec* s) {
  if (s == nullptr) return 0;
  if (s->numCoefs == 0 && ctfButterworthIirFilterCoef(s) == 0) {
    digitfilt::showMessage(L"Do filter getButterworthIirFilterCoef error!");
    return 0;
  }
  if (ctfZeroPhaseShiftIIRDigitFilter(x, y, n, s) == 0) {
    digitfilt::showMessage(L"Do filter zeroPhaseShiftIIRDigitFilter error!");
    return 0;
  }
  return 1;
}

int CDigitFiltCoefMak01Butterworth01ctf::ctfFilterStd(double* data, std::int64_t n,
                                                      unsigned count, filter_iirspec* specs) {
  if (count == 0 || specs == nullptr || !digitfilt::anyEnabled(specs, count)) return 0;
  if (!digitfilt::ensureWork(tmpAryOwner_, tmpAry, tmpAryLen, n)) return 0;
  double* src = data;
  double* dst = tmpAry;
  for (unsigned i = 0; i < count; ++i) {
    if (specs[i].enabled == 0) continue;
    ctfCheckZeroshiftButterworthCoef(src, dst, n, &specs[i]);
    std::swap(src, dst);
  }
  if (src != data) copySamples(src, data, n);
  return 1;
}

int CDigitFiltCoefMak01Butterworth01ctf::ctfFilterIOF(double* in, double* out, std::int64_t n,
                                                      filter_iirspec* specs, unsigned count) {
  if (!digitfilt::ensureWork(tmpIOOwner_, tmpIO, tmpIOLen, n)) return 0;
  if (count == 0) {
    if (n < 1) return 0;
    copySamples(in, out, n);
    return 0;
  }
  if (specs == nullptr) return 0;
  // Chosen so that the last stage ends in out.
  double* first = (count % 2 == 1) ? out : tmpIO;
  double* second = (count % 2 == 1) ? tmpIO : out;
  ctfCheckZeroshiftButterworthCoef(in, first, n, &specs[0]);
  for (unsigned i = 1; i < count; ++i) {
    if (i % 2 == 1)
      ctfCheckZeroshiftButterworthCoef(first, second, n, &specs[i]);
    else
      ctfCheckZeroshiftButterworthCoef(second, first, n, &specs[i]);
  }
  return 1;
}

int CDigitFiltCoefMak01Butterworth01ctf::setCtfButterworthIirFilterCoef(filter_iirspec* s) {
  if (s == nullptr || s->filterType < 0 || s->filterType > 3) return 0;
  iirSpecs[s->filterType] = *s;
  return 1;
}

int CDigitFiltCoefMak01Butterworth01ctf::defaultCtfButterworthFilter() {
  auto set = [this](int slot, int type, double high, double low, int order) {
    filter_iirspec& s = iirSpecs[slot];
    s.enabled = 1;
    s.filterType = type;
    s.freqHigh = high;
    s.freqLow = low;
    s.order = order;
  };
  set(0, 0, 60.0, 0.0, 4);
  set(1, 1, 1.0, 0.0, 4);
  set(2, 2, 63.0, 0.01, 4);
  set(3, 3, 63.0, 57.0, 4);
  for (int k = 1; k <= 60; ++k) set(3 + k, 3, k * 60.0 + 3.0, k * 60.0 - 3.0, 2);
  return 1;
}

int CDigitFiltCoefMak01Butterworth01ctf::resetFilterSettings() {
  for (filter_iirspec& s : iirSpecs) {
    s.enabled = 0;
    s.reserved0 = 1;
    s.filterType = -1;
    s.freqHigh = s.freqLow = s.reservedFreq = s.sampleRate = 0.0;
    s.order = s.numCoefs = 0;
    std::fill(s.coefs, s.coefs + 40, 1.0);
  }
  return 1;
}

int CDigitFiltCoefMak01Butterworth02ctfqv::ctfZeroPhaseShiftIIRDigitFilterqv(double* x,
                                                                           double* y,
                                                                           double* w,
                                                                           std::int64_t n,
                                                                           filter_iirspec* s) {
  if (n == 0 || s == nullptr) return 0;
  if (s->enabled == 0 || n < s->numCoefs) {
    copySamples(x, y, n);
    return 0;
  }
  digitfilt::zeroPhaseStage(x, y, w, n, *s);
  return n > 0 ? 1 : 0;
}

int CDigitFiltCoefMak01Butterworth02ctfqv::ctfCheckZeroshiftButterworthCoefqv(
    double* x, double* y, double* w, std::int64_t n, filter_iirspec* s) {
  if (s == nullptr) return 0;
  if (s->numCoefs == 0 && ctfButterworthIirFilterCoef(s) == 0) {
    digitfilt::showMessage(L"Do filter getButterworthIirFilterCoef error!");
    return 0;
  }
  if (ctfZeroPhaseShiftIIRDigitFilterqv(x, y, w, n, s) == 0) {
    digitfilt::showMessage(L"Do filter zeroPhaseShiftIIRDigitFilter error!");
    return 0;
  }
  return 1;
}

std::int64_t CDigitFiltCoefMak01Butterworth02ctfqv::ctfFilterStdQv(double*& data, double*& other,
                                                                  double* w, std::int64_t n,
                                                                  unsigned count,
                                                                  filter_iirspec* specs) {
  if (count == 0 || specs == nullptr || !digitfilt::anyEnabled(specs, count)) return 0;
  double* src = data;
  double* dst = other;
  for (unsigned i = 0; i < count; ++i) {
    if (specs[i].enabled == 0) continue;
    ctfCheckZeroshiftButterworthCoefqv(src, dst, w, n, &specs[i]);
    std::swap(src, dst);
  }
  if (src != data) std::swap(data, other);
  return 1;
}

std::int64_t CDigitFiltCoefMak01Butterworth02ctfqv::ctfFilterQv(double*& data, double*& other,
                                                               double* w, std::int64_t n) {
  return ctfFilterStdQv(data, other, w, n, 8, getFilterCoeffPt());
}
