#pragma once
// Butterworth design by the state-space route (prototype, frequency transformation, bilinear map,
// eigenvalues of the digital state matrix) in extended precision, and zero-phase
// forward-backward filtering with odd reflection and steady-state initial conditions.
//
// The class keeps its promise to end the process on numerical breakdown: a singular matrix or an
// eigenvalue iteration that does not converge writes a line to stderr and exits with status 1.
#include <cstdint>
#include <memory>

#include "digitfilt/foundation/design_base.h"

// Extended-precision complex value.
struct LONG_COMPLEX {
  long double real;
  long double imag;
};

class CMcfButterworth : public CDigitFiltCoefMak {
 public:
  // Largest prototype order accepted by mcButter; band designs hold twice as many states.
  static constexpr int kMaxOrder = 100;

  CMcfButterworth() = default;

  // Designs b[0..N] and a[0..N] (a[0] = 1) with N = order for types 1 low-pass and 2 high-pass
  // and N = 2 order for 3 band-pass and 4 band-stop; freq1 is the cut-off or the lower edge,
  // freq2 the upper edge. Pass-band gain is 1 at DC (types 1, 4), at Nyquist (type 2) or at the
  // band centre (type 3). Returns 1, -1 when a coefficient is not finite, 0 for an order outside
  // 1..kMaxOrder. An unknown type is reported and designed as the untransformed prototype.
  int mcButter(int filterType, double sampleRate, int order, double freq1, double freq2);

  // Copies share the designed arrays; a new design replaces this object's arrays only.
  std::int32_t stateCount = 0;
  std::int32_t stateCount2 = 0;
  double* numer = nullptr;              // b[0..stateCount]
  double* denom = nullptr;              // a[0..stateCount]
  double* initialConditions = nullptr;  // zi[0..stateCount-1] for a unit step

 protected:
  // Steady-state delay-line contents for a unit input step (a[0] taken as 1); stored in
  // initialConditions and returned. n < 1 or a null array leaves no conditions and returns null.
  double* generate_initial_conditions(double* b, double* a, int n);
  // True when numer, denom and initialConditions are there and long enough for stateCount.
  bool designFitsStateCount() const;

 private:
  void complex_expl(LONG_COMPLEX* z, LONG_COMPLEX* result);
  void complex_multl(LONG_COMPLEX* a, LONG_COMPLEX* b, LONG_COMPLEX* result);
  void complex_divl(LONG_COMPLEX* a, LONG_COMPLEX* b, LONG_COMPLEX* result);
  // C = A B on row-pointer matrices of long double; C may alias A or B.
  void mat_multl(void* A, void* B, void* C, int rowsA, int colsA, int colsB);
  // inverse may alias a. Exits the process on a singular matrix.
  void invert_matrix(long double** a, long double** inverse, int n);
  // Eigenvalues of a general real matrix; a is destroyed. Exits when the iteration fails.
  void unsymmeig(long double** a, int n, LONG_COMPLEX* eigenvalues);
  void balance(long double** a, int n);
  void elmhes(long double** a, int n);
  void hqr(long double** a, int n, LONG_COMPLEX* eigenvalues);

  std::shared_ptr<double[]> numerOwner_;
  std::shared_ptr<double[]> denomOwner_;
  std::shared_ptr<double[]> initialOwner_;
  std::int32_t arrayStates_ = 0;    // numer and denom hold arrayStates_ + 1 values
  std::int32_t initialStates_ = 0;  // initialConditions holds initialStates_ values
};

class CMcfButterworth03Filter : public CMcfButterworth {
 public:
  CMcfButterworth03Filter() = default;

  // Zero-phase filtering of x[0..n-1] into out[0..n-1]. With N = stateCount and L = n + 6 N,
  // `out` must hold L doubles (it carries the padded record) and `work`, when given, L doubles;
  // a null `work` is allocated here for the call. n must exceed 3 N: shorter records, a missing
  // design or null arrays are reported and leave `out` untouched.
  void filtfilt(double* x, std::int64_t n, double* out, double* work);
};

class CMcfButterworthqv : public CMcfButterworth03Filter {
 public:
  CMcfButterworthqv() = default;
};
