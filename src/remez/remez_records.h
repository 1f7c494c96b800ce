#pragma once
// Records of an equiripple (Remez exchange) FIR design: one filter's design request with its taps,
// the working storage of one exchange run, and the buffers of a sampled frequency response.
// Frequencies in these records are fractions of the sample rate (0 .. 0.5).
#include <cstdint>
#include <memory>

// One FIR design request and its taps. A designer holds 90 of them; `coefs` and `auxTail` are
// owned by the designer that took them. Copies of a record share those arrays, as hosts expect.
class Filter_Remez {
 public:
  std::int32_t enabled = 0;     // nonzero: designed by makeAllCoef and applied by filter
  std::int32_t specCode = 3;    // carried for hosts; not read by the exchange
  std::int32_t specIndex = -1;  // carried for hosts; not read by the exchange
  std::int32_t remezType = 1;   // 1: even symmetry; other: odd symmetry; 10: differentiator
  double auxValue[3] = {};
  double unitValue = 1.0;
  std::int64_t auxWord = 0;
  std::int64_t numBands = 0;  // 1..3; only 2 passes the input check
  std::int64_t auxBlock[6] = {};
  double bands[6] = {};   // two edges per band, ascending
  double des[6] = {};     // desired amplitude at each edge, linear in between
  double weight[6] = {};  // one weight per band
  std::int64_t gridDensity = 0;
  std::int64_t order = 0;
  std::int64_t numTaps = 0;   // taps designed
  std::int64_t tapCount = 0;  // taps applied by filtering
  double* coefs = nullptr;
  double* auxTail = nullptr;

  // Takes a zero-filled tap array of n entries plus one spare zero slot (the gain sums read one
  // past an even order). Returns null, with `coefs` null, when n < 0 or memory is short.
  double* allocCoefs(std::int64_t n);
  // Same for the second array.
  double* allocAuxTail(std::int64_t n);
  // Drops this record's hold on both arrays and nulls the pointers. Arrays a host put into the
  // pointers itself are left to the host.
  void releaseArrays();
  // Entries the record's own tap array holds (n + 1 with the spare slot), so that counts a host
  // writes into numTaps, tapCount or order can be held against it; -1 when `coefs` is not the
  // array the record took (null, or a host's array, whose length it cannot know).
  std::int64_t ownCoefsLength() const {
    return coefs && coefs == coefsOwner_.get() ? coefsLen_ : -1;
  }

 private:
  std::int64_t coefsLen_ = 0;
  std::shared_ptr<double[]> coefsOwner_;
  std::shared_ptr<double[]> auxTailOwner_;
};

// Working storage of one exchange run. Every array is allocated twice as long as the run needs
// and zero-filled; the steps walk all `gridCap` = 2 x grid-size entries, so the zero tail takes
// part in the error, the search and the parameter checks. Copies share the arrays.
class CRemezData {
 public:
  CRemezData() = default;

  // Releases the earlier arrays, then takes the ten arrays for `gridSize` grid points and
  // `numExt` extremals. 0 when an argument is below 1, when a size is beyond any design
  // (more than kMaxGridSize points or extremals) or when memory is short (arrays taken before the
  // shortage stay in place); the caps are set only on success.
  int newRemezData(int gridSize, int numExt);
  // Releases every array and nulls its pointer; the caps keep their values. Always 1.
  int freeRemezData();
  // delete[]s an array the caller took with new[] and nulls the pointer; never pass one of the
  // workspace's own arrays, which belong to it. Always 1.
  static int freeA1(double*& p);

  // Lengths actually allocated (2 x gridSize, 2 x numExt; 0 when released). The exchange steps
  // refuse caps beyond them, so an edited cap cannot make them read past the arrays.
  std::int64_t gridLength() const { return gridLen_; }
  std::int64_t extLength() const { return extLen_; }

  static constexpr int kMaxGridSize = 1 << 21;

  double* grid = nullptr;
  double* desired = nullptr;
  double* weights = nullptr;
  double* error = nullptr;
  std::int32_t* foundExt = nullptr;  // 2 x gridSize + 2 entries
  double* sampledA = nullptr;
  double* ad = nullptr;
  double* xCos = nullptr;
  double* yVal = nullptr;
  std::int32_t* ext = nullptr;
  std::int32_t gridCap = 0;
  std::int32_t extCap = 0;
  std::int32_t positiveSym = 0;

 private:
  struct Arrays;
  std::shared_ptr<Arrays> arrays_;
  std::int64_t gridLen_ = 0;
  std::int64_t extLen_ = 0;
};

// A sampled frequency response: `count` points of frequency (fraction of the Nyquist
// frequency), signed linear amplitude and gain in dB. Copies share the buffers.
class CFreqResp {
 public:
  CFreqResp() = default;

  // Releases the three buffers and nulls them. Always 1.
  int freeFreqRespBuffer();

  // Samples the response of the interpolation held in `data` (r + 1 extremals) at `points`
  // frequencies from 0 to the Nyquist frequency into this object's buffers (250 points when
  // points < 1). sym 1 with an odd or even numTaps selects the even-symmetry amplitude factor,
  // other values the odd-symmetry one. Returns count, or 0 when memory is short or an
  // evaluation fails.
  std::int64_t freqResponseM(std::int64_t sym, std::int64_t numTaps, std::int64_t r,
                             CRemezData* data, std::int64_t points);
  // The same into caller arrays of `points` entries each. 1 (also for points < 1), 0 when an
  // evaluation fails.
  std::int64_t freqResponseS(std::int64_t sym, std::int64_t numTaps, std::int64_t r,
                             CRemezData* data, double* freq, double* amp, double* dB,
                             std::int64_t points);

  std::int64_t count = 0;
  double* freqs = nullptr;
  double* amps = nullptr;
  double* gainsDb = nullptr;

 protected:
  // Replaces the buffers with three of n doubles (250 when n < 1). "Not enough memory!" and 0
  // when they cannot be had.
  int newFreqRespBuffer(std::int64_t n);

 private:
  struct Buffers;
  std::shared_ptr<Buffers> buffers_;
};
