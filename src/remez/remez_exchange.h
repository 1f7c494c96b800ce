#pragma once
// Parks-McClellan (Remez exchange) design of linear-phase FIR filters: the designer base holding
// 90 design requests, the input check, the exchange steps, one complete run, the tap transform
// and the order search. Every step is static and works on one CRemezData; frequencies are
// fractions of the sample rate.
//
// The runs walk the workspace's doubled arrays. Their zero tail carries weight 0, and the
// parameter step refuses a zero weight anywhere on the walked grid, so rmzSearch, remezPM03k
// and the order search built on them fail on every design request (-1 or 0), exactly as hosts of
// this designer line have always seen. rmzSearchX and remez00 run the same steps over the grid
// points the bands actually fill and give working equiripple designs.
#include <cstdint>

#include "digitfilt/foundation/design_base.h"
#include "digitfilt/remez/remez_records.h"

class CDigitFiltCoefMak06Remez : public CDigitFiltCoefMak {
 public:
  static constexpr int kRecordCount = 90;

  // Zero ranges, designMode 3, tolerance 1e-8, then initInitRemez.
  CDigitFiltCoefMak06Remez();
  // Copies share the taps, the workspace and the response buffers.
  CDigitFiltCoefMak06Remez(const CDigitFiltCoefMak06Remez&) = default;
  CDigitFiltCoefMak06Remez& operator=(const CDigitFiltCoefMak06Remez&) = default;
  virtual ~CDigitFiltCoefMak06Remez();

  // This level has no exchange of its own, so it designs nothing and returns 0.
  virtual int makeAllCoef();
  // For each enabled record with taps: y[i] = sum_k coefs[k] x[(i + k) mod n] / tapCount. Each
  // record overwrites y. Returns the number of records applied.
  virtual int filter(double* x, double* y, std::int64_t n);

  // Record defaults (enabled 0, specCode 3, specIndex -1, remezType 1, unitValue 1, bands, des,
  // weight, order and tapCount 0, no arrays); numBands, auxBlock, gridDensity and numTaps are
  // left as they are. Always 1.
  int initInitRemez();
  // Releases the taps and the second array of every record. Always 1.
  int clearRemez();

  Filter_Remez* getFilterRemez() { return records; }
  // Record i, or null outside 0..89.
  Filter_Remez* getFilterCoefficients(int i);
  CFreqResp* getFreqResp() { return &response; }

  // Grid points for r + 1 extremals: trunc(ceil(S + 0.5)), S = sum over bands of
  // 2 r gridDensity (high - low); one less when type != 1.
  static std::int64_t getGridSize01(std::int64_t gridDensity, std::int64_t r, std::int64_t type,
                                    std::int64_t numBands, const double* bands);
  // Pass ripple of `a` dB over stop ripple of `b` dB: (1 - 10^(-a/20)) / 2 / 10^(-b/20).
  static double getRippleRatio(double a, double b);

  double tolerance = 1e-8;  // carried for hosts
  Filter_Remez records[kRecordCount];
  CRemezData workspace;
  CFreqResp response;
};

class CDigitFiltCoefMak06Remez00 : public CDigitFiltCoefMak06Remez {
 public:
  // Validates a design request of numBands bands (bands and des hold 2 numBands values, weight
  // numBands): 0 with a message for fewer than 4 taps, an odd or zero band count, an edge
  // outside [0, 1] or a descending edge. gridDensity below 16 becomes 16 with a message, above
  // 320 becomes 320; des[0 .. numBands-1] is clamped into [0, 1] (only those, deliberately);
  // weights <= 0 become 1 and weights > 800 become 800, each with a message. `flag` is carried
  // for hosts. Returns 1 once the edges pass.
  static int checkCorrectRemezInputs(std::int64_t numTaps, std::int64_t numBands,
                                     std::int64_t& gridDensity, double* bands, double* des,
                                     double* weight, int flag);
  // Base ranges for Remez use: freqMax stops 0.0001 fs short of Nyquist. Always 1.
  int initFiltRange4SmplRateRmz(double fs);
};

// The exchange steps. r + 1 is the number of extremals; each step refuses (0) a workspace whose
// arrays are missing or shorter than its caps and r + 1 call for, and extremal indices outside the
// grid, instead of reading past the arrays.
class CDigitFiltCoefMak06Remez01 : public CDigitFiltCoefMak06Remez00 {
 public:
  // Dense grid over the bands, spacing 0.5 / (r gridDensity), desired values linear between the
  // band edges and the band's weight; each band's last point lands on its upper edge. For odd
  // symmetry the first band starts no lower than one spacing and, with an odd numTaps, the last
  // walked entry (grid[gridCap - 1]) is kept below 0.5 by one spacing. Returns the number of
  // points the bands fill (at most gridCap), 0 when they fill none.
  static int _01createDenseGrid(std::int64_t r, std::int64_t numTaps, std::int64_t numBands,
                                const double* bands, const double* des, const double* weight,
                                std::int64_t gridDensity, CRemezData* data);
  // Extremals spread evenly over the walked grid: ext[i] = (gridCap - 1) i / r.
  static int _02initialGuess(int r, CRemezData* data);
  // Barycentric weights ad, the abscissae xCos = cos(2 pi grid[ext]), the ripple delta and the
  // ordinates yVal at the extremals. 0 for a negative ext[i], i < r, or for a weight exactly 0
  // anywhere in the gridCap walked entries (which the zero tail of a fresh workspace has).
  static int _03calcParms(int r, CRemezData* data);
  // error[i] = weights[i] (desired[i] - A(grid[i])) over the gridCap walked entries.
  static int _04calcError(int r, CRemezData* data);
  // Moves ext to the r + 1 alternating extrema of the error: 1, 0 for a negative ext, -2 for
  // fewer than r + 1 candidates, -3 for more than 2 r.
  static int _05search(int r, CRemezData* data);
  // 1 when the error magnitudes at the extremals agree within a relative 1e-4.
  static int _06isDone(int r, CRemezData* data);
  // Folds the symmetry factor (cos pi f, sin pi f or sin 2 pi f) out of the first gridSize
  // desired values and into their weights; type 10 first divides the weights by the frequency
  // where desired > 1e-4 and returns -1, changing nothing, when a grid point is exactly 0.
  static int _07SetParksMcClellanDW(std::int64_t type, std::int64_t numTaps,
                                    std::int64_t gridSize, CRemezData* data);
  // sampledA[i] = A(i / numTaps) times the symmetry factor, i = 0 .. numTaps/2, with the
  // interpolation over r + 1 extremals.
  static int _08findTap(std::int64_t numTaps, int r, CRemezData* data);
  // Amplitude A(f) of the interpolation through the r + 1 extremals. r < 0 or a zero
  // denominator give A = 1 and 0.
  static int _10Freq2FiltRspAmp(double f, int r, CRemezData* data, double& A);

  // 1 when the first `count` indices are all >= 0.
  static int checkIndexPositive(const std::int32_t* idx, std::int64_t count);
  // 1 when none of the first `count` values is exactly 0.
  static int checkNoneZero(const double* v, std::int64_t count);
};

class CDigitFiltCoefMak06Remez02 : public CDigitFiltCoefMak06Remez01 {
 public:
  // Taps h[0..N-1] from the amplitude samples A[0..N/2] by the inverse transform of the
  // symmetry class (positiveSym nonzero: cosine series, zero: sine series). 0 for null arrays
  // or N outside 1 .. 2^22.
  static int freqSample(const double* A, double* h, std::int64_t N, std::int64_t positiveSym);
  // One exchange run: r = numTaps / 2 (no adjustment for odd lengths), a fresh workspace, dense
  // grid, initial guess, symmetry weighting, then at most 40 passes of parameters, error and
  // search. Returns the iterations taken, or -1. bands and des hold 2 numBands values, weight
  // numBands.
  static int rmzSearch(std::int64_t numTaps, std::int64_t numBands, const double* bands,
                       const double* des, const double* weight, CRemezData* data,
                       std::int64_t gridDensity, std::int64_t type);
  // rmzSearch over the grid points the bands fill rather than the doubled arrays, so that the
  // run can converge. Same arguments and results.
  static int rmzSearchX(std::int64_t numTaps, std::int64_t numBands, const double* bands,
                        const double* des, const double* weight, CRemezData* data,
                        std::int64_t gridDensity, std::int64_t type);
};

class CDigitFiltCoefMak06Remez03 : public CDigitFiltCoefMak06Remez02 {
 public:
  // Designs f->numTaps taps into f->coefs (which must hold them): rmzSearch, parameters over
  // extCap - 1 extremals, samples, tap transform. 1, or 0 for a null record, a band count
  // outside 1..3, a missing tap array (or the record's own one shorter than numTaps) or a failed
  // (or zero-iteration) run.
  static int remezPM03k(Filter_Remez* f);
  // The same design with rmzSearchX and the final parameters over r + 1 extremals: a working
  // equiripple design. An odd numTaps designs like numTaps - 2 taps with zero end taps, since
  // r is not adjusted for odd lengths.
  static int remez00(Filter_Remez* f);
};

class CDigitFiltCoefMak06Remez04 : public CDigitFiltCoefMak06Remez03 {
 public:
  // Tries the 59 lengths above and the 59 below numTaps (not numTaps itself; up to 1000, down
  // to 5) as even-symmetry runs and keeps the first with the fewest iterations. 1 with numTaps
  // set to it and order to it rounded down to even; 0 when no run converges.
  static int searchBestOrder(Filter_Remez* f);
  // Widens a low-pass transition (bands[2]) into a usable range, checks and searches.
  static int findParameterLP(Filter_Remez* f);
  // Places a high-pass transition below bands[2] (bands[1] = bands[2] / 2), checks and searches.
  static int findParameterHP(Filter_Remez* f);
};
