#include "digitfilt/remez/remez_records.h"

#include <cstddef>
#include <cstdint>
#include <new>

#include "digitfilt/foundation/messages.h"

namespace {

// Zero-filled array of n entries, or null for a negative or impossible n or a shortage.
template <class T>
T* newZeroed(std::int64_t n) {
  constexpr std::int64_t kLimit = static_cast<std::int64_t>(PTRDIFF_MAX / sizeof(T) / 2);
  if (n < 0 || n > kLimit) return nullptr;
  return new (std::nothrow) T[static_cast<std::size_t>(n)]();
}

template <class T>
T* take(std::unique_ptr<T[]>& owner, std::int64_t n) {
  owner.reset(newZeroed<T>(n));
  return owner.get();
}

double* withSpareSlot(std::int64_t n) {
  return n < 0 || n == INT64_MAX ? nullptr : newZeroed<double>(n + 1);
}

}  // namespace

double* Filter_Remez::allocCoefs(std::int64_t n) {
  coefsOwner_.reset(withSpareSlot(n));
  coefs = coefsOwner_.get();
  coefsLen_ = coefs ? n + 1 : 0;
  return coefs;
}

double* Filter_Remez::allocAuxTail(std::int64_t n) {
  auxTailOwner_.reset(withSpareSlot(n));
  auxTail = auxTailOwner_.get();
  return auxTail;
}

void Filter_Remez::releaseArrays() {
  coefsOwner_.reset();
  auxTailOwner_.reset();
  coefsLen_ = 0;
  coefs = nullptr;
  auxTail = nullptr;
}

struct CRemezData::Arrays {
  std::unique_ptr<double[]> grid, desired, weights, error;
  std::unique_ptr<std::int32_t[]> foundExt;
  std::unique_ptr<double[]> sampledA, ad, xCos, yVal;
  std::unique_ptr<std::int32_t[]> ext;
};

int CRemezData::newRemezData(int gridSize, int numExt) {
  freeRemezData();
  if (gridSize < 1 || numExt < 1 || gridSize > kMaxGridSize || numExt > kMaxGridSize) return 0;
  const std::int64_t g = 2 * static_cast<std::int64_t>(gridSize);
  const std::int64_t e = 2 * static_cast<std::int64_t>(numExt);
  arrays_ = std::make_shared<Arrays>();
  Arrays& a = *arrays_;
  if (!(grid = take(a.grid, g))) return 0;
  if (!(desired = take(a.desired, g))) return 0;
  if (!(weights = take(a.weights, g))) return 0;
  if (!(error = take(a.error, g))) return 0;
  if (!(foundExt = take(a.foundExt, g + 2))) return 0;
  if (!(sampledA = take(a.sampledA, e))) return 0;
  if (!(ad = take(a.ad, e))) return 0;
  if (!(xCos = take(a.xCos, e))) return 0;
  if (!(yVal = take(a.yVal, e))) return 0;
  if (!(ext = take(a.ext, e))) return 0;
  gridCap = static_cast<std::int32_t>(g);
  extCap = static_cast<std::int32_t>(e);
  gridLen_ = g;
  extLen_ = e;
  return 1;
}

int CRemezData::freeRemezData() {
  arrays_.reset();
  grid = desired = weights = error = nullptr;
  sampledA = ad = xCos = yVal = nullptr;
  foundExt = ext = nullptr;
  gridLen_ = extLen_ = 0;
  return 1;
}

int CRemezData::freeA1(double*& p) {
  delete[] p;
  p = nullptr;
  return 1;
}

struct CFreqResp::Buffers {
  std::unique_ptr<double[]> freqs, amps, gainsDb;
};

int CFreqResp::freeFreqRespBuffer() {
  buffers_.reset();
  freqs = amps = gainsDb = nullptr;
  return 1;
}

int CFreqResp::newFreqRespBuffer(std::int64_t n) {
  freeFreqRespBuffer();
  count = n < 1 ? 250 : n;
  buffers_ = std::make_shared<Buffers>();
  freqs = take(buffers_->freqs, count);
  amps = take(buffers_->amps, count);
  gainsDb = take(buffers_->gainsDb, count);
  if (!freqs || !amps || !gainsDb) {
    digitfilt::showMessage(L"Not enough memory!");
    return 0;
  }
  return 1;
}
