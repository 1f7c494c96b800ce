#pragma once
// Helpers shared by the biquad cascade tests: settings records, a second-order magnitude
// response and reference coefficients.
#include <cmath>
#include <complex>
#include <cstdint>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include <digitfilt/digitfilt.h>

#include "support/acq_support.h"

namespace digitfilt::test {

// Normalised second-order section y = b0 x + b1 x1 + b2 x2 - a1 y1 - a2 y2.
struct Sos {
  double b0, b1, b2, a1, a2;
};

// The section of a direct-form-I record (BIQUAD_PARAM1 or BIQUAD_PARAM2).
template <class Record>
Sos df1Sos(const Record& bq) {
  return {bq.b0, bq.b1, bq.b2, bq.a1, bq.a2};
}

// Every coefficient within 1e-12 of the reference.
inline void expectSos(const Sos& got, const Sos& want) {
  EXPECT_NEAR(got.b0, want.b0, 1e-12);
  EXPECT_NEAR(got.b1, want.b1, 1e-12);
  EXPECT_NEAR(got.b2, want.b2, 1e-12);
  EXPECT_NEAR(got.a1, want.a1, 1e-12);
  EXPECT_NEAR(got.a2, want.a2, 1e-12);
}

// |H(e^jw)| of a section at w = 2 pi f / rate.
inline double sosMagnitude(const Sos& s, double f, double rate) {
  const std::complex<double> z1 = std::polar(1.0, -2.0 * M_PI * f / rate);
  const std::complex<double> z2 = z1 * z1;
  return std::abs((s.b0 + s.b1 * z1 + s.b2 * z2) / (1.0 + s.a1 * z1 + s.a2 * z2));
}

// A ready settings record with the biquad parameters set, every stage off.
inline CFilterDcLtSetAcqqv readySettings(double rate = 1000.0) {
  CFilterDcLtSetAcqqv s = readyAcqSettings(rate);
  s.bqQ = 0.8;
  s.bqPeakGainDb = 6.0;
  s.bqParam3 = 0.7;
  return s;
}

// Every stage wanted, with a few values out of range to be clamped (rate 1000 Hz).
inline CFilterDcLtSetAcqqv fullSettings() {
  CFilterDcLtSetAcqqv s = readySettings(1000.0);
  s.lowPassOn = 1;
  s.lowPassFreq = 700.0;  // above half the rate: clamped to 500
  s.highPassOn = 1;
  s.highPassFreq = 0.01;  // below 0.0001 rate: raised to 0.1
  for (int k = 0; k < 6; ++k) {
    s.notchOn[k] = 1;
    s.notchFreqLow[k] = 100.0 + 10.0 * k;
    s.notchFreqHigh[k] = 120.0 + 10.0 * k;
  }
  s.notchFreqHigh[5] = 0.2;  // below the width minimum 0.5
  s.powerLineOn = 1;
  s.powerLineType = 1;  // 50 Hz
  s.powerLineWidth = 4.0;
  s.powerLineHarmonics = 3;
  s.bqBandPassOn = 1;
  s.bqBandPassFreq1 = 20.0;
  s.bqBandPassFreq2 = 80.0;
  s.bqBandPass2On = 1;
  s.bqBandPass2Freq1 = 10.0;
  s.bqBandPass2Freq2 = 40.0;
  s.bqType5On = 1;
  s.bqPeakOn = 1;
  s.bqPeakFreq = 900.0;  // clamped to 500
  s.bqLowShelfOn = 1;
  s.bqLowShelfFreq = 30.0;
  s.bqHighShelfOn = 1;
  s.bqHighShelfFreq = 300.0;
  return s;
}

// fullSettings() with the low-pass and the peak moved inside the band (300 and 120 Hz instead of
// the Nyquist edge), so that every stage shapes a block.
inline CFilterDcLtSetAcqqv inBandSettings() {
  CFilterDcLtSetAcqqv s = fullSettings();
  s.lowPassFreq = 300.0;
  s.bqPeakFreq = 120.0;
  return s;
}

// The (type, centre Hz) sequence fullSettings() must give; the high shelf's type is passed in.
struct StageWant {
  int type;
  double fc;
};
inline std::vector<StageWant> fullSettingsStages(int highShelfType) {
  std::vector<StageWant> w = {{0, 500.0}, {1, 0.1}};
  for (int k = 0; k < 5; ++k) w.push_back({4, std::sqrt((100.0 + 10 * k) * (120.0 + 10 * k))});
  w.push_back({4, std::sqrt(150.0 * 0.5)});
  for (int h = 1; h <= 3; ++h) w.push_back({4, std::sqrt((50.0 * h - 2) * (50.0 * h + 2))});
  w.push_back({2, 40.0});
  w.push_back({3, 20.0});
  w.push_back({5, 500.0});
  w.push_back({6, 500.0});
  w.push_back({7, 30.0});
  w.push_back({highShelfType, 300.0});
  return w;
}

inline std::vector<double> randomSignal(std::size_t n, unsigned seed) {
  std::mt19937 gen(seed);
  std::uniform_real_distribution<double> u(-1.0, 1.0);
  std::vector<double> x(n);
  for (double& v : x) v = u(gen);
  return x;
}

// Reference coefficients from analogue prototypes mapped with scipy.signal.bilinear, the
// frequency pre-warped so that s = 1 lands on the centre (script: K = tan(w0 / 2),
// b, a = signal.bilinear(bn, an, fs=1 / (2 K)), normalised by a[0]).
// Cookbook set at rate 1000 Hz, fc 100 Hz, q 0.8, gain 6 dB (A = 10^(6/40)):
inline constexpr Sos kRbjLowPass = {0.069836106784221474, 0.13967221356844295,
                                    0.069836106784221474, -1.1833219824875854,
                                    0.46266640962447131};  // 1 / (s^2 + s/Q + 1)
inline constexpr Sos kRbjHighPass = {0.66149709802801415, -1.3229941960560283,
                                     0.66149709802801415, -1.1833219824875854,
                                     0.46266640962447131};  // s^2 / (s^2 + s/Q + 1)
inline constexpr Sos kRbjBandPass0Db = {0.26866679518776432, 0, -0.26866679518776432,
                                        -1.1833219824875854,
                                        0.46266640962447131};  // (s/Q) / (s^2 + s/Q + 1)
inline constexpr Sos kRbjBandPassSkirt = {0.21493343615021143, 0, -0.21493343615021143,
                                          -1.1833219824875854,
                                          0.46266640962447131};  // s / (s^2 + s/Q + 1)
inline constexpr Sos kRbjNotch = {0.73133320481223563, -1.1833219824875854,
                                  0.73133320481223563, -1.1833219824875854,
                                  0.46266640962447131};  // (s^2 + 1) / (s^2 + s/Q + 1)
inline constexpr Sos kRbjAllPass = {0.46266640962447131, -1.1833219824875854, 1,
                                    -1.1833219824875854, 0.46266640962447131};
inline constexpr Sos kRbjPeak = {1.2054186391497588, -1.2840774678728313, 0.38178839951686289,
                                 -1.2840774678728313,
                                 0.58720703866662172};  // (s^2 + sA/Q + 1) / (s^2 + s/(AQ) + 1)
// rA = sqrt(A): low shelf A (s^2 + rA s/Q + A) / (A s^2 + rA s/Q + 1), high shelf
// A (A s^2 + rA s/Q + 1) / (s^2 + rA s/Q + A).
inline constexpr Sos kRbjLowShelf = {1.1520419187777977, -1.2013994742907037,
                                     0.4704757743414581, -1.3064290461426167,
                                     0.51748812126734289};
inline constexpr Sos kRbjHighShelf = {1.7319355159278016, -2.2626508640540788,
                                      0.89625605629366456, -1.0428435412882107,
                                      0.4083842494555982};
// Peak with a bandwidth of 0.8 octave: Q' = 1 / (2 sinh(ln2/2 * 0.8 * w0 / sin w0)).
inline constexpr Sos kRbjPeakOctaves = {1.1106967615121126, -1.4380702546897541,
                                        0.66685582970485935, -1.4380702546897541,
                                        0.77755259121697207};
// Shelves with slope S = 0.7: 1/Q' = sqrt((A + 1/A)(1/S - 1) + 2).
inline constexpr Sos kRbjLowShelfSlope = {1.1730930190717794, -1.1043123130595094,
                                          0.31830622407034742, -1.2008542642701279,
                                          0.3948572919315082};
inline constexpr Sos kRbjHighShelfSlope = {1.7008560127206704, -2.042480195785104,
                                           0.67159539914830657, -0.94136807150494062,
                                           0.27133928758881387};

// Normalised set at fc 0.1 of the rate, q 0.8, V = 10^(6/20) (K = tan(pi 0.1)); low-pass,
// high-pass, band-pass and notch equal the cookbook values above. r = sqrt 2.
inline constexpr Sos kNormPeakUp = {1.2673939365338442, -1.1833219824875854,
                                    0.19527247309062723, -1.1833219824875854,
                                    0.46266640962447131};  // (s^2 + sV/Q + 1) / (s^2 + s/Q + 1)
inline constexpr Sos kNormPeakDown = {0.78902065977597191, -0.93366549134976562,
                                      0.36505335577808046, -0.93366549134976562,
                                      0.15407401555405242};  // reciprocal
// Low shelf up: (s^2 + sqrt(2V) s + V) / (s^2 + r s + 1); down: its reciprocal.
inline constexpr Sos kNormLowShelfUp = {1.1882563855115995, -1.0087091184445058,
                                        0.35881659667998439, -1.1429805025399009,
                                        0.4128015980961886};
inline constexpr Sos kNormLowShelfDown = {0.84156922040814752, -0.96189721046421717,
                                          0.34740111909304688, -0.8488985464279325,
                                          0.30196900353747919};
// High shelf up: (V s^2 + sqrt(2V) s + 1) / (s^2 + r s + 1); down: its reciprocal.
inline constexpr Sos kNormHighShelfUp = {1.7570390959726767, -2.4148173075574508,
                                         0.92759930714106176, -1.1429805025399009,
                                         0.4128015980961886};
inline constexpr Sos kNormHighShelfDown = {0.56913929934291607, -0.65051512237817333,
                                           0.23494161230810082, -1.3743674304643947,
                                           0.52793321973723839};

}  // namespace digitfilt::test
