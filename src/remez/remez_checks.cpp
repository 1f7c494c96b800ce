#include <cmath>

#include "digitfilt/foundation/messages.h"
#include "digitfilt/remez/remez_exchange.h"

using digitfilt::showMessage;

std::int64_t CDigitFiltCoefMak06Remez::getGridSize01(std::int64_t gridDensity, std::int64_t r,
                                                     std::int64_t type, std::int64_t numBands,
                                                     const double* bands) {
  double s = 0.0;
  for (std::int64_t j = 0; bands && j < numBands; ++j)
    s += 2.0 * static_cast<double>(r) * static_cast<double>(gridDensity) *
         (bands[2 * j + 1] - bands[2 * j]);
  std::int64_t size = digitfilt::truncToInt64(std::ceil(s + 0.5));
  if (type != 1) size -= 1;
  return size;
}

double CDigitFiltCoefMak06Remez::getRippleRatio(double a, double b) {
  return (1.0 - std::pow(10.0, -0.05 * a)) * 0.5 / std::pow(10.0, -0.05 * b);
}

int CDigitFiltCoefMak06Remez00::checkCorrectRemezInputs(std::int64_t numTaps,
                                                        std::int64_t numBands,
                                                        std::int64_t& gridDensity, double* bands,
                                                        double* des, double* weight,
                                                        int /*flag*/) {
  if (numTaps < 4) {
    showMessage(L"remez: number of taps must be an integer greater than 3");
    return 0;
  }
  if (numBands < 1 || numBands % 2 != 0) {
    showMessage(L"remez: must have an even number of band edges");
    return 0;
  }
  if (gridDensity < 16) {
    showMessage(L"remez: griddensity is too low; must be greater than 16");
    gridDensity = 16;
  } else if (gridDensity > 320) {
    gridDensity = 320;
  }
  if (!bands || !des || !weight) return 0;
  const std::int64_t edges = 2 * numBands;
  for (std::int64_t i = 0; i < edges; ++i) {
    if (bands[i] < 0.0 || bands[i] > 1.0) {
      showMessage(L"Band edges must be in the range [0,1]");
      return 0;
    }
  }
  for (std::int64_t i = 1; i < edges; ++i) {
    if (bands[i] < bands[i - 1]) {
      showMessage(L"The frequency values must be ascending!!");
      return 0;
    }
  }
  // Only the first numBands of the 2 numBands edge amplitudes are clamped, as hosts expect.
  for (std::int64_t i = 0; i < numBands; ++i) digitfilt::clampLowFirst(des[i], 0.0, 1.0);
  for (std::int64_t i = 0; i < numBands; ++i) {
    if (weight[i] <= 0.0) {
      showMessage(L"Weights must all be > 0\n");
      weight[i] = 1.0;
    } else if (weight[i] > 800.0) {
      showMessage(L"Weights must all be > 0\n");
      weight[i] = 800.0;
    }
  }
  return 1;
}

int CDigitFiltCoefMak06Remez00::initFiltRange4SmplRateRmz(double fs) {
  sampleRate = fs;
  freqMin = fs * 0.0001;
  freqMax = fs * 0.5 - fs * 0.0001;
  widthMin = fs * 0.0005;
  widthMax = fs * 0.5;
  return 1;
}
