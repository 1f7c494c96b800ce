#include "digitfilt/fir/moving_average.h"

#include <algorithm>
#include <utility>

#include "digitfilt/foundation/messages.h"

namespace {

constexpr wchar_t kBandPassEdgesCrossed[] =
    L"Band pass filtering error: high edge must be larger than the low edge!";
constexpr wchar_t kNotchEdgesCrossed[] =
    L"Notch filtering (band reject/stop) error: high edge must be larger than the low edge!";

// A window must span at least two samples, and its first sum must lie inside the record.
bool windowFits(std::int64_t N, std::int64_t L) { return N >= 2 && L >= 2 && L <= N; }

bool numbersValid(double fs, std::int64_t N, double f1, double f2) {
  return fs > 0.0 && N >= 2 && f1 > 0.0 && f2 > 0.0;
}

// A band needs its lower edge below its upper one (shown with the band's own message) and
// usable numbers.
bool bandValid(double fs, std::int64_t N, double fLow, double fHigh, const wchar_t* crossed) {
  if (fLow >= fHigh) {
    digitfilt::showMessage(crossed);
    return false;
  }
  return numbersValid(fs, N, fLow, fHigh);
}

// Centred running mean of the pointer-exchange stages. Near both ends the sum decays by sum/L
// instead of reading outside the record; the divisor stays L throughout.
void centredRunningMean(std::int64_t N, std::int64_t L, const double* in, double* out,
                        bool highPass) {
  double sum = 0.0;
  for (std::int64_t k = 0; k < L; ++k) sum += in[k];
  const std::int64_t h = (L - 1) / 2;
  const double len = static_cast<double>(L);
  for (std::int64_t i = 0; i < N; ++i) {
    if (i >= h + 1)
      sum -= in[i - h - 1];
    else
      sum -= sum / len;
    if (i + h < N)
      sum += in[i + h];
    else
      sum += sum / len;
    out[i] = highPass ? in[i] - sum / len : sum / len;
  }
}

// Forward pass of the in-place stages. Adds in[i + L] (one past the window) by design. `in` and
// `out` may be the same buffer; the reads then see values already written, as hosts expect.
void forwardPass(std::int64_t N, std::int64_t L, const double* in, double* out, bool highPass) {
  const double len = static_cast<double>(L);
  double sum = 0.0;
  for (std::int64_t k = 0; k < L; ++k) sum += in[k];
  out[0] = sum / len;  // the plain mean, for the high-pass too
  for (std::int64_t i = 1; i < N; ++i) {
    sum -= in[i - 1];
    if (i + L < N)
      sum += in[i + L];
    else
      sum += sum / len;
    out[i] = highPass ? in[i] - sum / len : sum / len;
  }
}

// Backward pass over the forward result `fw` into `data`. The low-pass starts from the first L
// forward values, the high-pass from the last L samples of `data`.
void backwardPass(std::int64_t N, std::int64_t L, double* data, const double* fw, bool highPass) {
  const double len = static_cast<double>(L);
  double sum = 0.0;
  if (highPass)
    for (std::int64_t k = N - L; k < N; ++k) sum += data[k];
  else
    for (std::int64_t k = 0; k < L; ++k) sum += fw[k];
  data[N - 1] = sum / len;
  for (std::int64_t i = N - 2; i >= 0; --i) {
    sum -= fw[i + 1];
    if (i >= L)
      sum += fw[i - L];
    else
      sum += sum / len;
    data[i] = highPass ? fw[i] - sum / len : sum / len;
  }
}

int exchangeStage(std::int64_t N, std::int64_t L, double*& data, double*& work, bool highPass) {
  if (!windowFits(N, L) || data == nullptr || work == nullptr) return 0;
  std::fill(work, work + N, 0.0);
  centredRunningMean(N, L, data, work, highPass);
  std::swap(data, work);
  return 1;
}

int inPlaceStage(std::int64_t N, std::int64_t L, double* data, double* work, bool highPass) {
  if (!windowFits(N, L) || data == nullptr || work == nullptr) return 0;
  forwardPass(N, L, data, work, highPass);
  backwardPass(N, L, data, work, highPass);
  return 1;
}

// Harmonic count as far as the window arrays reach.
int harmonicsInRange(int h) { return std::min(h, digitfilt::MovAvrgSettings::kMaxHarmonics); }

}  // namespace

namespace digitfilt {

MovAvrgSettings::MovAvrgSettings() {
  std::fill(std::begin(pwrHighPassWnd), std::end(pwrHighPassWnd), 3);
  std::fill(std::begin(pwrLowPassWnd), std::end(pwrLowPassWnd), 6);
}

std::int64_t MovAvrgSettings::setRepetition(std::int64_t n) {
  passCount = std::max<std::int64_t>(n, 1);
  return passCount;
}

}  // namespace digitfilt

CDigitFiltCoefMak00MovAvrg::CDigitFiltCoefMak00MovAvrg() { harmonicCount = 4; }

std::int64_t CDigitFiltCoefMak00MovAvrg::windowFor(double fs, std::int64_t N, double f,
                                                   std::int64_t d) const {
  // A quotient past the int64 range (a zero divisor, a vanishing frequency) is a window as long
  // as the record allows; NaN gives the shortest.
  std::int64_t L = digitfilt::saturateToInt64(fs / (static_cast<double>(d) * f));
  if (L < 1) L = 1;
  if (L > N / 2) L = N / 2;
  // Made odd after the N/2 clamp, so N/2 even ends at N/2 + 1: hosts rely on these lengths.
  return makeOdd(L);
}

int CDigitFiltCoefMak00MovAvrg::setWndLowPass(double fs, std::int64_t N, double fc,
                                              std::int64_t d) {
  wndDivisor = d;
  if (!numbersValid(fs, N, fc, fc)) return 0;
  lowPassWnd = windowFor(fs, N, fc, d);
  return 1;
}

int CDigitFiltCoefMak00MovAvrg::setWndHighPass(double fs, std::int64_t N, double fc,
                                               std::int64_t d) {
  wndDivisor = d;
  if (!numbersValid(fs, N, fc, fc)) return 0;
  highPassWnd = windowFor(fs, N, fc, d);
  return 1;
}

// Crossed edges are reported before the numbers are checked, so the defaults of a record too short
// for a band still tell the user why.
int CDigitFiltCoefMak00MovAvrg::setWndBandPass(double fs, std::int64_t N, double fLow,
                                               double fHigh, int d) {
  wndDivisor = d;
  if (!bandValid(fs, N, fLow, fHigh, kBandPassEdgesCrossed)) return 0;
  bandHighPassWnd = windowFor(fs, N, fLow, d);
  bandLowPassWnd = windowFor(fs, N, fHigh, d);
  return 1;
}

int CDigitFiltCoefMak00MovAvrg::setWndNotch(double fs, std::int64_t N, double fLow, double fHigh,
                                            int d) {
  wndDivisor = d;
  if (!bandValid(fs, N, fLow, fHigh, kNotchEdgesCrossed)) return 0;
  notchLowPassWnd = windowFor(fs, N, fLow, d);
  notchHighPassWnd = windowFor(fs, N, fHigh, d);
  return 1;
}

int CDigitFiltCoefMak00MovAvrg::setWndPowerLineNoise(double fs, std::int64_t N, double lineFreq,
                                                     double width, int harmonics, int d) {
  wndDivisor = d;
  harmonicCount = harmonics;
  if (!numbersValid(fs, N, lineFreq, width)) return 0;
  const double floor = fs * 0.0001;
  for (int k = 1; k <= harmonicsInRange(harmonics); ++k) {
    const double centre = k * lineFreq;
    pwrLowPassWnd[k - 1] = windowFor(fs, N, std::max(floor, centre - width / 2), d);
    pwrHighPassWnd[k - 1] = windowFor(fs, N, std::max(floor, centre + width / 2), d);
  }
  return 1;
}

int CDigitFiltCoefMak00MovAvrg::initFiltRange4DataSizeSampleRate(std::int64_t N, double fs) {
  if (N <= 0 || !(fs > 0.0)) return 0;
  dataSize = N;
  sampleRate = fs;
  freqMax = fs * 0.25;
  freqMin = (fs / static_cast<double>(N)) * 4;
  if (N >= 2) lowPassWnd = windowFor(fs, N, freqMax, 1);
  wndDivisor = 1;
  if (N >= 2) highPassWnd = windowFor(fs, N, freqMin, 1);
  setWndBandPass(fs, N, freqMin, freqMax, 1);
  wndDivisor = 1;
  if (N >= 2) {
    notchLowPassWnd = windowFor(fs, N, 55.0, 1);
    notchHighPassWnd = windowFor(fs, N, 65.0, 1);
  }
  setWndPowerLineNoise(fs, N, 60.0, 6.0, 3, 1);
  return 1;
}

int CDigitFiltCoefMak00MovAvrg::_01MAFLowpass(std::int64_t N, std::int64_t L, double*& data,
                                              double*& work) {
  return exchangeStage(N, L, data, work, false);
}

int CDigitFiltCoefMak00MovAvrg::_02MAFHighpass(std::int64_t N, std::int64_t L, double*& data,
                                               double*& work) {
  return exchangeStage(N, L, data, work, true);
}

int CDigitFiltCoefMak00MovAvrg::_03MAFbandpass(std::int64_t N, std::int64_t L1, std::int64_t L2,
                                               double*& data, double*& work) {
  if (!windowFits(N, L1) || !windowFits(N, L2) || data == nullptr || work == nullptr) return 0;
  _01MAFLowpass(N, L2, data, work);
  return _02MAFHighpass(N, L1, data, work);
}

int CDigitFiltCoefMak00MovAvrg::_04MAVNotchflt(std::int64_t N, std::int64_t Llp, std::int64_t Lhp,
                                               double*& data, double*& work, double*& spare) {
  if (!windowFits(N, Llp) || !windowFits(N, Lhp) || data == nullptr || work == nullptr ||
      spare == nullptr)
    return 0;
  std::copy(data, data + N, spare);
  _01MAFLowpass(N, Llp, data, work);
  _02MAFHighpass(N, Lhp, spare, work);
  for (std::int64_t i = 0; i < N; ++i) data[i] += spare[i];
  return 1;
}

int CDigitFiltCoefMak00MovAvrg::_06MAVPowNosFt(std::int64_t N, std::int64_t* lowWnds,
                                               std::int64_t* highWnds, double*& data,
                                               double*& work, double*& spare, int H) {
  if (N < 2 || H < 1 || lowWnds == nullptr || highWnds == nullptr || data == nullptr ||
      work == nullptr || spare == nullptr)
    return 0;
  for (int k = 0; k < H; ++k)
    if (_04MAVNotchflt(N, lowWnds[k], highWnds[k], data, work, spare) == 0) return 0;
  return 1;
}

int CDigitFiltCoefMak00MovAvrg::filterStd(double*& data, std::int64_t N, double*& work,
                                          double*& spare) {
  if (data == nullptr || work == nullptr || spare == nullptr || N < 1 || passCount < 1) return 0;
  for (std::int64_t pass = 0; pass < passCount; ++pass) {
    if (stageEnabled[0]) _01MAFLowpass(N, lowPassWnd, data, work);
    if (stageEnabled[1]) _02MAFHighpass(N, highPassWnd, data, work);
    if (stageEnabled[2] && N >= 2 && bandHighPassWnd > 1 && bandLowPassWnd >= 2 &&
        _01MAFLowpass(N, bandLowPassWnd, data, work))
      _02MAFHighpass(N, bandHighPassWnd, data, work);
    if (stageEnabled[3]) _04MAVNotchflt(N, notchLowPassWnd, notchHighPassWnd, data, work, spare);
    if (stageEnabled[4])
      _06MAVPowNosFt(N, pwrLowPassWnd, pwrHighPassWnd, data, work, spare,
                     harmonicsInRange(harmonicCount));
  }
  return 1;
}

CDigitFiltCoefMak00MovAvrgX::CDigitFiltCoefMak00MovAvrgX() { harmonicCount = 4; }

std::int64_t CDigitFiltCoefMak00MovAvrgX::windowFor(double fs, std::int64_t N, double f) const {
  std::int64_t L = digitfilt::saturateToInt64(fs / f);
  if (L < 2) L = 2;
  if (L > N / 2) L = N / 2;
  return L;
}

int CDigitFiltCoefMak00MovAvrgX::setWndLowPass(double fs, std::int64_t N, double fc,
                                               std::int64_t /*d*/) {
  if (!numbersValid(fs, N, fc, fc)) return 0;
  lowPassWnd = windowFor(fs, N, fc);
  return 1;
}

int CDigitFiltCoefMak00MovAvrgX::setWndHighPass(double fs, std::int64_t N, double fc,
                                                std::int64_t /*d*/) {
  if (!numbersValid(fs, N, fc, fc)) return 0;
  highPassWnd = windowFor(fs, N, fc);
  return 1;
}

int CDigitFiltCoefMak00MovAvrgX::setWndBandPass(double fs, std::int64_t N, double fLow,
                                                double fHigh, int /*d*/) {
  if (!bandValid(fs, N, fLow, fHigh, kBandPassEdgesCrossed)) return 0;
  // Stored the other way round from the pointer-exchange class; the band-pass stage runs the
  // high-pass first to match.
  bandHighPassWnd = windowFor(fs, N, fHigh);
  bandLowPassWnd = windowFor(fs, N, fLow);
  return 1;
}

int CDigitFiltCoefMak00MovAvrgX::setWndNotch(double fs, std::int64_t N, double fLow, double fHigh,
                                             int /*d*/) {
  if (!bandValid(fs, N, fLow, fHigh, kNotchEdgesCrossed)) return 0;
  // Deliberately crossed; filterStd crosses them back (low-pass at fLow, high-pass at fHigh).
  notchLowPassWnd = windowFor(fs, N, fHigh);
  notchHighPassWnd = windowFor(fs, N, fLow);
  return 1;
}

int CDigitFiltCoefMak00MovAvrgX::setWndPowerLineNoise(double fs, std::int64_t N, double lineFreq,
                                                      double width, int harmonics, int /*d*/) {
  harmonicCount = harmonics;
  if (!numbersValid(fs, N, lineFreq, width)) return 0;
  // No frequency floor here: an edge at or below 0 Hz gives the minimum window.
  for (int k = 1; k <= harmonicsInRange(harmonics); ++k) {
    const double centre = k * lineFreq;
    pwrLowPassWnd[k - 1] = windowFor(fs, N, centre - width / 2);
    pwrHighPassWnd[k - 1] = windowFor(fs, N, centre + width / 2);
  }
  return 1;
}

int CDigitFiltCoefMak00MovAvrgX::initFiltRange4DataSizeSampleRate(std::int64_t N, double fs) {
  if (N <= 0 || !(fs > 0.0)) return 0;
  dataSize = N;
  sampleRate = fs;
  freqMax = fs * 0.5;
  freqMin = 2 * fs / static_cast<double>(N);
  if (N >= 2) {
    lowPassWnd = windowFor(fs, N, freqMax);
    highPassWnd = windowFor(fs, N, freqMin);
  }
  setWndBandPass(fs, N, freqMin, freqMax, 1);
  setWndNotch(fs, N, 55.0, 65.0, 1);
  setWndPowerLineNoise(fs, N, 60.0, 6.0, 3, 1);
  return 1;
}

int CDigitFiltCoefMak00MovAvrgX::_01MAFLowpass(std::int64_t N, std::int64_t L, double* data,
                                               double* work) {
  return inPlaceStage(N, L, data, work, false);
}

int CDigitFiltCoefMak00MovAvrgX::_02MAFHighpass(std::int64_t N, std::int64_t L, double* data,
                                                double* work) {
  return inPlaceStage(N, L, data, work, true);
}

int CDigitFiltCoefMak00MovAvrgX::_03MAFbandpass(std::int64_t N, std::int64_t L1, std::int64_t L2,
                                                double* data, double* work) {
  if (!windowFits(N, L1) || !windowFits(N, L2) || data == nullptr || work == nullptr) return 0;
  _02MAFHighpass(N, L1, data, work);
  return _01MAFLowpass(N, L2, data, work);
}

int CDigitFiltCoefMak00MovAvrgX::_04MAVNotchflt(std::int64_t N, std::int64_t Llp,
                                                std::int64_t Lhp, double* data, double* work,
                                                double* spare) {
  if (!windowFits(N, Llp) || !windowFits(N, Lhp) || data == nullptr || work == nullptr ||
      spare == nullptr)
    return 0;
  std::copy(data, data + N, spare);
  _01MAFLowpass(N, Llp, data, work);
  // The high-pass branch uses its own buffer as scratch; hosts' results depend on that.
  _02MAFHighpass(N, Lhp, spare, spare);
  for (std::int64_t i = 0; i < N; ++i) data[i] = 0.5 * (data[i] + spare[i]);
  return 1;
}

int CDigitFiltCoefMak00MovAvrgX::_06MAVPowNosFt(std::int64_t N, std::int64_t* lowWnds,
                                                std::int64_t* highWnds, double* data,
                                                double* work, double* spare, int H) {
  if (N < 2 || H < 1 || lowWnds == nullptr || highWnds == nullptr || data == nullptr ||
      work == nullptr || spare == nullptr)
    return 0;
  for (int k = 0; k < H; ++k)
    if (_04MAVNotchflt(N, lowWnds[k], highWnds[k], data, work, spare) == 0) return 0;
  return 1;
}

int CDigitFiltCoefMak00MovAvrgX::filterStd(double* data, std::int64_t N, double* work,
                                           double* spare) {
  if (data == nullptr || work == nullptr || spare == nullptr || N < 1 || passCount < 1) return 0;
  if (stageEnabled[0]) _01MAFLowpass(N, lowPassWnd, data, work);
  if (stageEnabled[1]) _02MAFHighpass(N, highPassWnd, data, work);
  if (stageEnabled[2] && N >= 2 && bandHighPassWnd > 1 && bandLowPassWnd >= 2)
    _03MAFbandpass(N, bandHighPassWnd, bandLowPassWnd, data, work);
  if (stageEnabled[3]) _04MAVNotchflt(N, notchHighPassWnd, notchLowPassWnd, data, work, spare);
  if (stageEnabled[4])
    _06MAVPowNosFt(N, pwrLowPassWnd, pwrHighPassWnd, data, work, spare,
                   harmonicsInRange(harmonicCount));
  return 1;
}
