#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <digitfilt/digitfilt.h>

#include "support/message_capture.h"

namespace {

using digitfilt::test::MessageCapture;

struct Design {
  int type;
  double rate;
  int order;
  double f1, f2;
  std::vector<double> b, a;
};

// Reference coefficients printed by scipy 1.x with the call above each case.
const std::vector<Design>& scipyDesigns() {
  static const std::vector<Design> designs = {
      // signal.butter(4, 100, 'lowpass', fs=1000)
      {1, 1000, 4, 100, 0,
       {0.004824343357716231, 0.019297373430864923, 0.028946060146297387, 0.019297373430864923,
        0.004824343357716231},
       {1.0, -2.3695130071820376, 2.31398841441588, -1.0546654058785676, 0.18737949236818488}},
      // signal.butter(3, 30, 'highpass', fs=500)
      {2, 500, 3, 30, 0,
       {0.6843498218355073, -2.053049465506522, 2.053049465506522, -0.6843498218355073},
       {1.0, -2.250085081726394, 1.756401381785953, -0.46831211117171223}},
      // signal.butter(3, [40, 120], 'bandpass', fs=1000)
      {3, 1000, 3, 40, 120,
       {0.010182576736436928, 0.0, -0.030547730209310783, 0.0, 0.030547730209310783, 0.0,
        -0.010182576736436928},
       {1.0, -4.527087947612642, 8.924242079986723, -9.808213476286099, 6.3446020971464065,
        -2.291177215215289, 0.3617959282278673}},
      // signal.butter(2, [45, 55], 'bandstop', fs=500)
      {4, 500, 2, 45, 55,
       {0.9149691441130825, -2.96675656405282, 4.234840291474125, -2.9667565640528193,
        0.914969144113082},
       {1.0, -3.0987398139777875, 4.227596928444271, -2.8347733141278564, 0.837181651256023}},
      // signal.butter(8, 10, 'lowpass', fs=1000): poles crowd z = 1
      {1, 1000, 8, 10, 0,
       {8.098259786747705e-13, 6.478607829398164e-12, 2.2675127402893573e-11,
        4.5350254805787145e-11, 5.668781850723393e-11, 4.5350254805787145e-11,
        2.2675127402893573e-11, 6.478607829398164e-12, 8.098259786747705e-13},
       {1.0, -7.677940205392836, 25.797219528171233, -49.541225637787534, 59.47613197003972,
        -45.70873447791669, 21.960120132116103, -6.0301722352443194, 0.7246009262216517}},
  };
  return designs;
}

void expectNearRel(const double* got, const std::vector<double>& want, double rel) {
  for (std::size_t k = 0; k < want.size(); ++k)
    EXPECT_NEAR(got[k], want[k], rel * std::max(std::fabs(want[k]), 1e-3 * std::fabs(want[0])))
        << k;
}

// The record filtered in the zero-phase tests: the same 64-bit LCG in the scipy script.
std::vector<double> lcgRecord(int n) {
  std::uint64_t s = 12345;
  std::vector<double> x;
  for (int i = 0; i < n; ++i) {
    s = s * 6364136223846793005ULL + 1442695040888963407ULL;
    x.push_back(static_cast<double>(s >> 11) / 9007199254740992.0 - 0.5);
  }
  return x;
}

struct Probe : CMcfButterworthqv {
  using CMcfButterworth::generate_initial_conditions;
};

std::vector<double> runFiltfilt(CMcfButterworthqv& f, std::vector<double> x) {
  const std::size_t len = x.size() + 6 * static_cast<std::size_t>(f.stateCount);
  std::vector<double> out(len);
  f.filtfilt(x.data(), static_cast<std::int64_t>(x.size()), out.data(), nullptr);
  out.resize(x.size());
  return out;
}

TEST(McfButterworthDesign, AllFourTypesMatchScipy) {
  for (const Design& d : scipyDesigns()) {
    SCOPED_TRACE(d.type * 100 + d.order);
    CMcfButterworthqv f;
    ASSERT_EQ(f.mcButter(d.type, d.rate, d.order, d.f1, d.f2), 1);
    const int n = static_cast<int>(d.a.size()) - 1;
    EXPECT_TRUE(f.stateCount == n && f.stateCount2 == n);
    expectNearRel(f.numer, d.b, 1e-9);
    expectNearRel(f.denom, d.a, 1e-9);
  }
}

// The design goes on after the message: the untransformed prototype, finished as a low-pass.
TEST(McfButterworthDesign, UnknownTypeIsReportedAndDesignGoesOn) {
  for (int type : {0, 7, std::numeric_limits<int>::min()}) {
    SCOPED_TRACE(type);
    MessageCapture cap;
    CMcfButterworthqv f;
    EXPECT_EQ(f.mcButter(type, 1000, 2, 100, 0), 1);
    EXPECT_EQ(cap.messages, std::vector<std::wstring>{L"Unrecognized filter type " +
                                                      std::to_wstring(type)});
    ASSERT_EQ(f.stateCount, 2);
    EXPECT_NEAR((f.numer[0] + f.numer[1] + f.numer[2]) / (f.denom[0] + f.denom[1] + f.denom[2]),
                1.0, 1e-12);
  }
}

TEST(McfButterworthInitialConditions, MatchScipyLfilterZi) {
  // signal.lfilter_zi(*signal.butter(4, 100, 'lowpass', fs=1000))
  const std::vector<double> ziLow = {0.9951756566422816, -1.3936347239706157, 0.8914076302989619,
                                     -0.18255514901046824};
  // signal.lfilter_zi(*signal.butter(2, [45, 55], 'bandstop', fs=500))
  const std::vector<double> ziStop = {0.08503085588691665, -0.04695239403804811,
                                      -0.05419575706790566, 0.07778749285705977};
  Probe p;
  std::vector<double> b = scipyDesigns()[0].b, a = scipyDesigns()[0].a;
  double* zi = p.generate_initial_conditions(b.data(), a.data(), 4);
  EXPECT_EQ(zi, p.initialConditions);
  expectNearRel(zi, ziLow, 1e-12);
  // The design stores them too.
  p.mcButter(4, 500, 2, 45, 55);
  expectNearRel(p.initialConditions, ziStop, 1e-9);
}

TEST(McfButterworthFiltfilt, MatchesScipyFiltfiltWithOddPadding) {
  const std::vector<double> x = lcgRecord(32);
  // signal.filtfilt(*signal.butter(3, 100, 'lowpass', fs=1000), x, padtype='odd', padlen=9)
  const std::vector<double> low = {
      -0.3869426383507918,   -0.18047977451046457, -0.013090333863020854, 0.0952001360213233,
      0.14490466055052847,   0.15272181793708692,  0.14097757305634134,   0.12841155354586933,
      0.12535287891323693,   0.13226119532158673,  0.1415464799667905,    0.143110538215172,
      0.13048331250881376,   0.10258277826577765,  0.06103123544275281,   0.007414236996473108,
      -0.056812384593246584, -0.12795235146259215, -0.19710002444982544,  -0.24961618775824204,
      -0.26910866967122443,  -0.2449889320113771,  -0.17947546503729978,  -0.08891807834364528,
      0.0020867416050906395, 0.06978162614585881,  0.09777325624565641,   0.07807152812970514,
      0.007920361343329987,  -0.11254579048139451, -0.2769240391058583,   -0.46647613759817935};
  // signal.filtfilt(*signal.butter(2, [50, 150], 'bandpass', fs=1000), x, padtype='odd',
  //                 padlen=12)
  const std::vector<double> pass = {
      0.01393773613531209,  0.21904714555926952,  0.32662511010424106,  0.29541208459907087,
      0.16556690322421413,  0.020179315536637685, -0.07971776827412924, -0.11339113895664933,
      -0.08443550867168627, -0.015117752304817725, 0.05122650455785345, 0.07263297212164499,
      0.0490481884226504,   0.017836440061005755, 0.00948364882020877,  0.02531074254718639,
      0.038571111630833335, 0.011471874374158853, -0.07191789815208746, -0.18531566233545493,
      -0.2684732733283198,  -0.2634921604311994,  -0.16078260130606925, -0.01090208081940909,
      0.11494184427980683,  0.177777153507118,    0.19114419013575829,  0.20015736676620083,
      0.23123972230536974,  0.2478977825280364,   0.1799524065024816,   0.021569419824846413};
  CMcfButterworthqv f;
  f.mcButter(1, 1000, 3, 100, 0);
  std::vector<double> y = runFiltfilt(f, x);
  for (std::size_t k = 0; k < x.size(); ++k) EXPECT_NEAR(y[k], low[k], 1e-10) << k;
  f.mcButter(3, 1000, 2, 50, 150);
  y = runFiltfilt(f, x);
  for (std::size_t k = 0; k < x.size(); ++k) EXPECT_NEAR(y[k], pass[k], 1e-10) << k;
}

TEST(McfButterworthFiltfilt, ConstantPassesWithoutTransient) {
  const std::vector<double> c(40, 2.5);
  CMcfButterworthqv f;
  for (int type : {1, 2, 3, 4}) {  // unity DC gain for low-pass and band-stop, else zero
    f.mcButter(type, 1000, 3, 100, 200);
    for (double v : runFiltfilt(f, c)) EXPECT_NEAR(v, type % 3 == 1 ? 2.5 : 0.0, 1e-12);
  }
}

TEST(McfButterworthFiltfilt, CallerWorkBufferGivesTheSameResult) {
  CMcfButterworthqv f;
  f.mcButter(3, 1000, 2, 50, 150);
  const std::vector<double> x = lcgRecord(64), want = runFiltfilt(f, x);
  std::vector<double> out(64 + 24), work(64 + 24);
  f.filtfilt(const_cast<double*>(x.data()), 64, out.data(), work.data());
  EXPECT_EQ(std::vector<double>(out.begin(), out.begin() + 64), want);
}

}  // namespace
