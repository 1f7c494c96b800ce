#include "digitfilt/iir/mcf_butterworth.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <utility>
#include <vector>

#include "digitfilt/foundation/messages.h"

namespace {

// Row-pointer matrix of long double, zero-filled, as the matrix routines take it.
class LongMatrix {
 public:
  LongMatrix(int rows, int cols)
      : data_(static_cast<std::size_t>(rows) * static_cast<std::size_t>(cols), 0.0L),
        rows_(static_cast<std::size_t>(rows)) {
    for (int r = 0; r < rows; ++r) rows_[r] = data_.data() + static_cast<std::size_t>(r) * cols;
  }
  LongMatrix(const LongMatrix&) = delete;
  LongMatrix& operator=(const LongMatrix&) = delete;
  LongMatrix(LongMatrix&&) = default;  // the row pointers stay valid: the buffer moves along

  long double** rows() { return rows_.data(); }
  long double* operator[](int r) { return rows_[static_cast<std::size_t>(r)]; }

 private:
  std::vector<long double> data_;
  std::vector<long double*> rows_;
};

[[noreturn]] void failAndExit(const char* text) {
  std::fputs(text, stderr);
  std::fflush(stderr);
  std::exit(1);
}

// The constant the pre-warping is specified with.
constexpr long double kPiL = 3.141592653589793;

LongMatrix identity(int n) {
  LongMatrix m(n, n);
  for (int i = 0; i < n; ++i) m[i][i] = 1.0L;
  return m;
}

}  // namespace

void CMcfButterworth::complex_expl(LONG_COMPLEX* z, LONG_COMPLEX* result) {
  const long double mag = std::exp(z->real);
  const long double im = z->imag;
  result->real = mag * std::cos(im);
  result->imag = mag * std::sin(im);
}

void CMcfButterworth::complex_multl(LONG_COMPLEX* a, LONG_COMPLEX* b, LONG_COMPLEX* result) {
  const long double re = a->real * b->real - a->imag * b->imag;
  const long double im = a->real * b->imag + a->imag * b->real;
  result->real = re;
  result->imag = im;
}

void CMcfButterworth::complex_divl(LONG_COMPLEX* a, LONG_COMPLEX* b, LONG_COMPLEX* result) {
  const long double d = b->real * b->real + b->imag * b->imag;
  const long double re = (a->real * b->real + a->imag * b->imag) / d;
  const long double im = (a->imag * b->real - a->real * b->imag) / d;
  result->real = re;
  result->imag = im;
}

void CMcfButterworth::mat_multl(void* A, void* B, void* C, int rowsA, int colsA, int colsB) {
  auto* a = static_cast<long double**>(A);
  auto* b = static_cast<long double**>(B);
  auto* c = static_cast<long double**>(C);
  // Through a temporary so that C may be one of the factors.
  std::vector<long double> t(static_cast<std::size_t>(rowsA) * static_cast<std::size_t>(colsB));
  for (int i = 0; i < rowsA; ++i)
    for (int j = 0; j < colsB; ++j) {
      long double s = 0.0L;
      for (int k = 0; k < colsA; ++k) s += a[i][k] * b[k][j];
      t[static_cast<std::size_t>(i) * colsB + j] = s;
    }
  for (int i = 0; i < rowsA; ++i)
    for (int j = 0; j < colsB; ++j) c[i][j] = t[static_cast<std::size_t>(i) * colsB + j];
}

void CMcfButterworth::invert_matrix(long double** a, long double** inverse, int n) {
  // Gauss-Jordan with partial pivoting on [a | I]; only an exactly zero pivot column is singular,
  // so non-finite entries run through and surface later as non-finite coefficients (a NaN wins
  // the pivot search, or a column holding only zeros and NaNs would count as singular).
  LongMatrix w(n, 2 * n);
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j < n; ++j) w[i][j] = a[i][j];
    w[i][n + i] = 1.0L;
  }
  for (int col = 0; col < n; ++col) {
    int best = col;
    for (int r = col + 1; r < n && !std::isnan(w[best][col]); ++r)
      if (std::isnan(w[r][col]) || std::fabs(w[r][col]) > std::fabs(w[best][col])) best = r;
    if (w[best][col] == 0.0L) failAndExit("invert_matrix: Singular Matrix\n");
    if (best != col)
      for (int j = 0; j < 2 * n; ++j) std::swap(w[best][j], w[col][j]);
    const long double inv = 1.0L / w[col][col];
    for (int j = 0; j < 2 * n; ++j) w[col][j] *= inv;
    for (int r = 0; r < n; ++r) {
      if (r == col) continue;
      const long double f = w[r][col];
      if (f == 0.0L) continue;
      for (int j = 0; j < 2 * n; ++j) w[r][j] -= f * w[col][j];
    }
  }
  for (int i = 0; i < n; ++i)
    for (int j = 0; j < n; ++j) inverse[i][j] = w[i][n + j];
}

void CMcfButterworth::balance(long double** a, int n) {
  // Scales rows and columns by powers of two until their norms are comparable, which leaves the
  // eigenvalues unchanged and makes them better conditioned.
  constexpr long double kRadix = 2.0L;
  constexpr long double kRadix2 = kRadix * kRadix;
  bool done = false;
  for (int sweep = 0; !done && sweep < 1000; ++sweep) {
    done = true;
    for (int i = 0; i < n; ++i) {
      long double c = 0.0L, r = 0.0L;
      for (int j = 0; j < n; ++j)
        if (j != i) {
          c += std::fabs(a[j][i]);
          r += std::fabs(a[i][j]);
        }
      if (c == 0.0L || r == 0.0L) continue;
      long double g = r / kRadix;
      long double f = 1.0L;
      const long double s = c + r;
      while (c < g) {
        f *= kRadix;
        c *= kRadix2;
      }
      g = r * kRadix;
      while (c > g) {
        f /= kRadix;
        c /= kRadix2;
      }
      if ((c + r) / f < 0.95L * s) {
        done = false;
        g = 1.0L / f;
        for (int j = 0; j < n; ++j) a[i][j] *= g;
        for (int j = 0; j < n; ++j) a[j][i] *= f;
      }
    }
  }
}

void CMcfButterworth::elmhes(long double** a, int n) {
  // Upper Hessenberg form by stabilised elementary similarity transforms (row interchange on the
  // largest candidate, then elimination below the subdiagonal).
  for (int m = 1; m < n - 1; ++m) {
    long double x = 0.0L;
    int piv = m;
    for (int j = m; j < n; ++j)
      if (std::fabs(a[j][m - 1]) > std::fabs(x)) {
        x = a[j][m - 1];
        piv = j;
      }
    if (piv != m) {
      for (int j = m - 1; j < n; ++j) std::swap(a[piv][j], a[m][j]);
      for (int j = 0; j < n; ++j) std::swap(a[j][piv], a[j][m]);
    }
    if (x == 0.0L) continue;
    for (int i = m + 1; i < n; ++i) {
      long double y = a[i][m - 1];
      if (y == 0.0L) continue;
      y /= x;
      a[i][m - 1] = y;
      for (int j = m; j < n; ++j) a[i][j] -= y * a[m][j];
      for (int j = 0; j < n; ++j) a[j][m] += y * a[j][i];
    }
  }
  // The multipliers left below the subdiagonal are no part of the Hessenberg matrix.
  for (int i = 2; i < n; ++i)
    for (int j = 0; j < i - 1; ++j) a[i][j] = 0.0L;
}

void CMcfButterworth::hqr(long double** a, int n, LONG_COMPLEX* ev) {
  // Francis double-shift QR on the Hessenberg matrix, deflating one or two eigenvalues at a time.
  long double anorm = 0.0L;
  for (int i = 0; i < n; ++i)
    for (int j = (i > 0 ? i - 1 : 0); j < n; ++j) anorm += std::fabs(a[i][j]);

  int nn = n - 1;
  long double t = 0.0L;  // accumulated exceptional shifts
  while (nn >= 0) {
    int its = 0;
    int l = 0;
    do {
      // Look for a negligible subdiagonal element that splits the matrix.
      for (l = nn; l >= 1; --l) {
        long double s = std::fabs(a[l - 1][l - 1]) + std::fabs(a[l][l]);
        if (s == 0.0L) s = anorm;
        if (std::fabs(a[l][l - 1]) + s == s) {
          a[l][l - 1] = 0.0L;
          break;
        }
      }
      long double x = a[nn][nn];
      if (l == nn) {
        ev[nn].real = x + t;
        ev[nn].imag = 0.0L;
        --nn;
        continue;
      }
      long double y = a[nn - 1][nn - 1];
      long double w = a[nn][nn - 1] * a[nn - 1][nn];
      if (l == nn - 1) {
        // A 2x2 block: its two eigenvalues in closed form.
        const long double p = 0.5L * (y - x);
        const long double q = p * p + w;
        long double z = std::sqrt(std::fabs(q));
        x += t;
        if (q >= 0.0L) {
          z = p + std::copysign(z, p);
          ev[nn - 1].real = ev[nn].real = x + z;
          if (z != 0.0L) ev[nn].real = x - w / z;
          ev[nn - 1].imag = ev[nn].imag = 0.0L;
        } else {
          ev[nn - 1].real = ev[nn].real = x + p;
          ev[nn - 1].imag = -z;
          ev[nn].imag = z;
        }
        nn -= 2;
        continue;
      }
      if (its == 30) failAndExit("Too many iterations in hqr\n");
      if (its == 10 || its == 20) {
        // Exceptional shift to break a cycle.
        t += x;
        for (int i = 0; i <= nn; ++i) a[i][i] -= x;
        const long double s = std::fabs(a[nn][nn - 1]) + std::fabs(a[nn - 1][nn - 2]);
        y = x = 0.75L * s;
        w = -0.4375L * s * s;
      }
      ++its;
      // Find two consecutive small subdiagonal elements to start the implicit step from.
      int m = nn - 2;
      long double p = 0.0L, q = 0.0L, r = 0.0L, z = 0.0L;
      for (; m >= l; --m) {
        z = a[m][m];
        r = x - z;
        long double s = y - z;
        p = (r * s - w) / a[m + 1][m] + a[m][m + 1];
        q = a[m + 1][m + 1] - z - r - s;
        r = a[m + 2][m + 1];
        s = std::fabs(p) + std::fabs(q) + std::fabs(r);
        p /= s;
        q /= s;
        r /= s;
        if (m == l) break;
        const long double u = std::fabs(a[m][m - 1]) * (std::fabs(q) + std::fabs(r));
        const long double v =
            std::fabs(p) * (std::fabs(a[m - 1][m - 1]) + std::fabs(z) + std::fabs(a[m + 1][m + 1]));
        if (u + v == v) break;
      }
      for (int i = m + 2; i <= nn; ++i) {
        a[i][i - 2] = 0.0L;
        if (i != m + 2) a[i][i - 3] = 0.0L;
      }
      // Chase the bulge down the matrix with Householder reflections of order 3.
      for (int k = m; k <= nn - 1; ++k) {
        if (k != m) {
          p = a[k][k - 1];
          q = a[k + 1][k - 1];
          r = (k != nn - 1) ? a[k + 2][k - 1] : 0.0L;
          x = std::fabs(p) + std::fabs(q) + std::fabs(r);
          if (x != 0.0L) {
            p /= x;
            q /= x;
            r /= x;
          }
        }
        const long double s = std::copysign(std::sqrt(p * p + q * q + r * r), p);
        if (s == 0.0L) continue;
        if (k == m) {
          if (l != m) a[k][k - 1] = -a[k][k - 1];
        } else {
          a[k][k - 1] = -s * x;
        }
        p += s;
        x = p / s;
        y = q / s;
        z = r / s;
        q /= p;
        r /= p;
        for (int j = k; j <= nn; ++j) {
          p = a[k][j] + q * a[k + 1][j];
          if (k != nn - 1) {
            p += r * a[k + 2][j];
            a[k + 2][j] -= p * z;
          }
          a[k + 1][j] -= p * y;
          a[k][j] -= p * x;
        }
        const int last = nn < k + 3 ? nn : k + 3;
        for (int i = l; i <= last; ++i) {
          p = x * a[i][k] + y * a[i][k + 1];
          if (k != nn - 1) {
            p += z * a[i][k + 2];
            a[i][k + 2] -= p * r;
          }
          a[i][k + 1] -= p * q;
          a[i][k] -= p;
        }
      }
    } while (l < nn - 1);
  }
}

void CMcfButterworth::unsymmeig(long double** a, int n, LONG_COMPLEX* eigenvalues) {
  balance(a, n);
  elmhes(a, n);
  hqr(a, n, eigenvalues);
}

int CMcfButterworth::mcButter(int filterType, double sampleRate, int order, double freq1,
                              double freq2) {
  const bool known = filterType >= 1 && filterType <= 4;
  if (!known) digitfilt::showMessageF(L"Unrecognized filter type %d", filterType);
  if (order < 1 || order > kMaxOrder) {
    digitfilt::showMessageF(L"Butterworth order %d is out of range (1..%d)!", order, kMaxOrder);
    return 0;
  }

  // Pre-warped edges for the bilinear map with a normalised sample frequency of 2.
  const long double u1 = 4.0L * std::tan(kPiL * freq1 / sampleRate);
  const long double u2 = 4.0L * std::tan(kPiL * freq2 / sampleRate);
  const bool band = filterType == 3 || filterType == 4;
  const long double wn = band ? std::sqrt(u1 * u2) : u1;
  const long double bw = u2 - u1;

  // Prototype state matrix: one 2x2 rotation block per conjugate pair, -1 for the odd pole. The
  // prototype has no zeros, so the zeros of every type are known in closed form and only the
  // state matrix needs to go through the transformations.
  const int np = order;
  LongMatrix proto(np, np);
  int row = 0;
  for (int k = 1; k < np; k += 2, row += 2) {
    const long double theta = kPiL / 2 + k * kPiL / (2 * np);
    const long double re = std::cos(theta), im = std::sin(theta);
    proto[row][row] = re;
    proto[row][row + 1] = im;
    proto[row + 1][row] = -im;
    proto[row + 1][row + 1] = re;
  }
  if (np % 2 == 1) proto[np - 1][np - 1] = -1.0L;

  const int ns = band ? 2 * np : np;
  LongMatrix sa(ns, ns);
  switch (filterType) {
    case 1:  // s -> s / Wn
      for (int i = 0; i < np; ++i)
        for (int j = 0; j < np; ++j) sa[i][j] = wn * proto[i][j];
      break;
    case 2:  // s -> Wn / s
      invert_matrix(proto.rows(), sa.rows(), np);
      for (int i = 0; i < np; ++i)
        for (int j = 0; j < np; ++j) sa[i][j] *= wn;
      break;
    case 3:  // s -> (s^2 + Wn^2) / (Bw s): [[Bw A, Wn I], [-Wn I, 0]]
    case 4:  // s -> Bw s / (s^2 + Wn^2): [[Bw A^-1, Wn I], [-Wn I, 0]]
      if (filterType == 4) invert_matrix(proto.rows(), proto.rows(), np);
      for (int i = 0; i < np; ++i) {
        for (int j = 0; j < np; ++j) sa[i][j] = bw * proto[i][j];
        sa[i][np + i] = wn;
        sa[np + i][i] = -wn;
      }
      break;
    default:  // unknown type: the prototype as it is
      for (int i = 0; i < np; ++i)
        for (int j = 0; j < np; ++j) sa[i][j] = proto[i][j];
      break;
  }

  // Bilinear map with T = 1/2: Ad = (I - A T/2)^-1 (I + A T/2).
  LongMatrix t1 = identity(ns), t2 = identity(ns);
  for (int i = 0; i < ns; ++i)
    for (int j = 0; j < ns; ++j) {
      t1[i][j] += sa[i][j] / 4.0L;
      t2[i][j] -= sa[i][j] / 4.0L;
    }
  invert_matrix(t2.rows(), t2.rows(), ns);
  LongMatrix ad(ns, ns);
  mat_multl(t2.rows(), t1.rows(), ad.rows(), ns, ns, ns);

  std::vector<LONG_COMPLEX> poles(static_cast<std::size_t>(ns));
  unsymmeig(ad.rows(), ns, poles.data());

  // Zeros implied by the type; w0 is the digital image of the centre Wn.
  const long double w0 = 2.0L * std::atan(wn / 4.0L);
  std::vector<LONG_COMPLEX> zeros;
  zeros.reserve(static_cast<std::size_t>(ns));
  for (int k = 0; k < np; ++k) {
    switch (filterType) {
      case 2:
        zeros.push_back({1.0L, 0.0L});
        break;
      case 3:
        zeros.push_back({1.0L, 0.0L});
        zeros.push_back({-1.0L, 0.0L});
        break;
      case 4: {
        LONG_COMPLEX arg{0.0L, w0}, z{};
        complex_expl(&arg, &z);
        zeros.push_back(z);
        zeros.push_back({z.real, -z.imag});
        break;
      }
      default:
        zeros.push_back({-1.0L, 0.0L});
        break;
    }
  }

  auto expand = [this](std::vector<LONG_COMPLEX>& roots) {
    std::vector<LONG_COMPLEX> c(roots.size() + 1, LONG_COMPLEX{0.0L, 0.0L});
    c[0].real = 1.0L;
    for (std::size_t j = 0; j < roots.size(); ++j)
      for (std::size_t k = j + 1; k >= 1; --k) {
        LONG_COMPLEX prod{};
        complex_multl(&roots[j], &c[k - 1], &prod);
        c[k].real -= prod.real;
        c[k].imag -= prod.imag;
      }
    return c;
  };
  const std::vector<LONG_COMPLEX> aPoly = expand(poles);
  const std::vector<LONG_COMPLEX> bPoly = expand(zeros);

  // Unit gain where the pass band is: DC, Nyquist, or the band centre w0 for a band-pass (the
  // digital image of the geometric centre, where the analogue band-pass has gain 1 exactly). The
  // kernel sums sum_k c_k e^(-i w k) are evaluated as prod_j (1 - r_j e^(-i w)) over the roots:
  // the same values, without the cancellation of the coefficient sums when roots crowd the
  // reference point (narrow or high-order bands).
  LONG_COMPLEX kernel{1.0L, 0.0L};
  if (filterType == 2) kernel.real = -1.0L;
  if (filterType == 3) {
    LONG_COMPLEX arg{0.0L, -w0};
    complex_expl(&arg, &kernel);
  }
  auto sumAt = [this, &kernel](std::vector<LONG_COMPLEX>& roots) {
    LONG_COMPLEX acc{1.0L, 0.0L};
    for (LONG_COMPLEX& r : roots) {
      LONG_COMPLEX rx{}, next{};
      complex_multl(&r, &kernel, &rx);
      LONG_COMPLEX factor{1.0L - rx.real, -rx.imag};
      complex_multl(&acc, &factor, &next);
      acc = next;
    }
    return acc;
  };
  LONG_COMPLEX sumA = sumAt(poles), sumB = sumAt(zeros);
  LONG_COMPLEX scale{};
  complex_divl(&sumA, &sumB, &scale);

  numerOwner_.reset(new double[static_cast<std::size_t>(ns) + 1]());
  denomOwner_.reset(new double[static_cast<std::size_t>(ns) + 1]());
  numer = numerOwner_.get();
  denom = denomOwner_.get();
  arrayStates_ = ns;
  for (int k = 0; k <= ns; ++k) {
    numer[k] = static_cast<double>(bPoly[k].real * scale.real);
    denom[k] = static_cast<double>(aPoly[k].real);
    if (!std::isfinite(numer[k]) || !std::isfinite(denom[k])) return -1;
  }

  stateCount = stateCount2 = ns;
  generate_initial_conditions(numer, denom, ns);
  return 1;
}

double* CMcfButterworth::generate_initial_conditions(double* b, double* a, int n) {
  if (b == nullptr || a == nullptr || n < 1) {
    initialOwner_.reset();
    initialConditions = nullptr;
    initialStates_ = 0;
    return nullptr;
  }
  // (I - companion(a)^T) zi = b[1:] - b[0] a[1:], the delay line after an endless unit step.
  LongMatrix m(n, n);
  m[0][0] = 1.0L + a[1];
  for (int i = 1; i < n; ++i) {
    m[i][0] = a[i + 1];
    m[i - 1][i] = -1.0L;
    m[i][i] = 1.0L;
  }
  LongMatrix rhs(n, 1), zi(n, 1);
  for (int i = 0; i < n; ++i) rhs[i][0] = static_cast<long double>(b[i + 1]) - b[0] * static_cast<long double>(a[i + 1]);
  invert_matrix(m.rows(), m.rows(), n);
  mat_multl(m.rows(), rhs.rows(), zi.rows(), n, n, 1);

  initialOwner_.reset(new double[static_cast<std::size_t>(n)]());
  initialConditions = initialOwner_.get();
  initialStates_ = n;
  for (int i = 0; i < n; ++i) initialConditions[i] = static_cast<double>(zi[i][0]);
  return initialConditions;
}

bool CMcfButterworth::designFitsStateCount() const {
  const std::int64_t ns = stateCount;
  if (numer == nullptr || denom == nullptr || ns < 0 || ns > 2 * kMaxOrder) return false;
  if (ns > 0 && initialConditions == nullptr) return false;
  // Our own arrays must be as long as the count says (a design that ended with -1 leaves new
  // arrays behind the old count); arrays a host put in are taken on trust.
  if ((numer == numerOwner_.get() || denom == denomOwner_.get()) && ns > arrayStates_)
    return false;
  if (ns > 0 && initialConditions == initialOwner_.get() && ns > initialStates_) return false;
  return true;
}

void CMcfButterworth03Filter::filtfilt(double* x, std::int64_t n, double* out, double* work) {
  const std::int64_t ns = stateCount;
  if (!designFitsStateCount()) {
    digitfilt::showMessage(L"filtfilt: design the filter with mcButter first!\n");
    return;
  }
  if (x == nullptr || out == nullptr || n <= 0) return;
  const std::int64_t nfact = 3 * ns;
  if (n <= nfact) {
    digitfilt::showMessageF(L"filtfilt: the record must be longer than %lld samples (got %lld)!\n",
                            static_cast<long long>(nfact), static_cast<long long>(n));
    return;
  }
  const std::int64_t len = n + 2 * nfact;

  // Filtering in place would overwrite the record while it is being padded.
  std::vector<double> copy;
  if (x < out + len && out < x + n) {
    copy.assign(x, x + n);
    x = copy.data();
  }

  for (std::int64_t i = 0; i < nfact; ++i) out[i] = 2.0 * x[0] - x[nfact - i];
  for (std::int64_t k = 0; k < n; ++k) out[nfact + k] = x[k];
  for (std::int64_t j = 0; j < nfact; ++j) out[nfact + n + j] = 2.0 * x[n - 1] - x[n - 2 - j];

  std::unique_ptr<double[]> ownWork;
  if (work == nullptr) {
    ownWork.reset(new double[static_cast<std::size_t>(len)]());
    work = ownWork.get();
  }

  const double* b = numer;
  const double* a = denom;
  const double* zi = initialConditions;
  double z[2 * kMaxOrder + 1];
  auto start = [&](double v) {
    for (std::int64_t i = 0; i < ns; ++i) z[i] = zi[i] * v;
  };
  // Transposed direct form II.
  auto step = [&](double u) {
    if (ns == 0) return b[0] * u;
    const double y = b[0] * u + z[0];
    for (std::int64_t i = 1; i < ns; ++i) z[i - 1] = b[i] * u - a[i] * y + z[i];
    z[ns - 1] = b[ns] * u - a[ns] * y;
    return y;
  };

  start(out[0]);
  for (std::int64_t k = 0; k < len; ++k) work[k] = step(out[k]);

  start(work[len - 1]);
  for (std::int64_t k = len - 1; k >= len - nfact; --k) step(work[k]);
  for (std::int64_t k = len - nfact - 1, o = n - 1; k >= nfact; --k, --o) out[o] = step(work[k]);
}
