#pragma once
// Zero-phase filtering of whole records through Butterworth stages: each stage runs forwards and
// then backwards over the record. The record edges get no padding or start-up state, only an
// offset subtracted in each pass (the first input sample, then the forward result's last one),
// and the offsets are never added back: a constant record comes out as zeros.
#include <cstdint>
#include <memory>

#include "digitfilt/butterworth/butterworth_designer.h"

namespace digitfilt {

// Direct-form evaluation of one stage over y[first .. last): y[i] is the sum, accumulated from 0
// in increasing k, of b[k] (x[i-k] - offset) - a[k] y[i-k] for k = 0 .. numCoefs-1, where y[i]
// counts as 0 inside its own sum and terms with i-k < 0 are left out. Earlier samples are read
// from x and y themselves, so x and y must be distinct arrays. Coefficients a missing from the
// record's 60-slot store (a[k] for k >= 40) count as 0 and the count is cut at 60, so an
// oversized numCoefs never reads past the record. A negative `first` starts at 0.
void filterStageForward(const double* x, double* y, std::int64_t first, std::int64_t last,
                        const filter_iirspec& s, double offset);

// The same recursion run from the end of a record of n samples towards its start: sample n-1-j
// plays the part of sample j.
void filterStageBackward(const double* x, double* y, std::int64_t n, const filter_iirspec& s,
                         double offset);

// A chain of stages over [first, last) of two buffers used in turn: bit for bit the same as
// filterStageForward(buf[i % 2], buf[(i + 1) % 2], first, last, *stages[i], offset) for
// i = 0 .. count-1 with buf = {data, other}, both buffers included. Runs of stages of equal
// length are evaluated side by side, sample by sample, so their recursions overlap.
void filterStageChain(double* data, double* other, filter_iirspec* const* stages, int count,
                      std::int64_t first, std::int64_t last, double offset);

// One zero-phase stage over n >= 1 samples: a[0] of the record is set to 0, the forward pass
// writes w with offset x[0], the backward pass writes y from w with offset w[n-1].
void zeroPhaseStage(const double* x, double* y, double* w, std::int64_t n, filter_iirspec& s);

}  // namespace digitfilt

// Zero-phase filtering of records through the designer's stages. Stages are designed on first
// use; the work arrays are cached with their length and replaced when the length changes.
class CDigitFiltCoefMak01Butterworth01ctf : public CDigitFiltCoefMak01Butterworth {
 public:
  CDigitFiltCoefMak01Butterworth01ctf();
  // A copy takes the stages and settings, and fresh (not copied) work arrays that the next
  // filter call sizes again.
  CDigitFiltCoefMak01Butterworth01ctf(const CDigitFiltCoefMak01Butterworth01ctf& other);
  CDigitFiltCoefMak01Butterworth01ctf& operator=(const CDigitFiltCoefMak01Butterworth01ctf& other);
  ~CDigitFiltCoefMak01Butterworth01ctf() = default;

  // Runs every enabled record of specs[0 .. count) over data in place. 0 when count is 0, no
  // record is enabled or the work array cannot be had.
  int ctfFilterStd(double* data, std::int64_t n, unsigned count, filter_iirspec* specs);
  // Runs all count records, enabled or not, from in to out (in may equal out).
  int ctfFilterIOF(double* in, double* out, std::int64_t n, filter_iirspec* specs,
                   unsigned count);
  // Copies s into slot 0..3 chosen by its filterType.
  int setCtfButterworthIirFilterCoef(filter_iirspec* s);
  // Fixed defaults in slots 0..63 (no sample rate). The high-pass default has cut-off 0 and is
  // refused by the designer until it is set, as hosts expect.
  int defaultCtfButterworthFilter();
  // Every record off, type -1, edges and rate 0, coefs[0..39] = 1.
  int resetFilterSettings();

  int cleanTmpAry();
  int cleanTmpTS();
  int cleanTmpIO();

  double* tmpAry = nullptr;  // second buffer of ctfFilterStd's stage chain
  std::int64_t tmpAryLen = 0;
  double* tmpTS = nullptr;  // forward result of one zero-phase stage
  std::int64_t tmpTSLen = 0;
  double* tmpIO = nullptr;  // second buffer of ctfFilterIOF's stage chain
  std::int64_t tmpIOLen = 0;

 protected:
  int ctfZeroPhaseShiftIIRDigitFilter(double* x, double* y, std::int64_t n, filter_iirspec* s);
  int ctfCheckZeroshiftButterworthCoef(double* x, double* y, std::int64_t n, filter_iirspec* s);

 private:
  void takeFreshWorkArrays(const CDigitFiltCoefMak01Butterworth01ctf& other);

  // Owners of the work arrays; the public pointer fields above are views of them.
  std::unique_ptr<double[]> tmpAryOwner_;
  std::unique_ptr<double[]> tmpTSOwner_;
  std::unique_ptr<double[]> tmpIOOwner_;
};

// The same zero-phase chain without allocation: the caller supplies every work array and gets
// the result back by an exchange of its two pointers.
class CDigitFiltCoefMak01Butterworth02ctfqv : public CDigitFiltCoefMak01Butterworth {
 public:
  // ctfFilterStdQv over the first 8 slots.
  std::int64_t ctfFilterQv(double*& data, double*& other, double* w, std::int64_t n);

 protected:
  int ctfZeroPhaseShiftIIRDigitFilterqv(double* x, double* y, double* w, std::int64_t n,
                                        filter_iirspec* s);
  int ctfCheckZeroshiftButterworthCoefqv(double* x, double* y, double* w, std::int64_t n,
                                         filter_iirspec* s);
  // Runs the enabled records alternately between the arrays data and other refer to; when the
  // result ends in `other`, the two pointers are exchanged instead of copying.
  std::int64_t ctfFilterStdQv(double*& data, double*& other, double* w, std::int64_t n,
                              unsigned count, filter_iirspec* specs);
};
