#include <cmath>
#include <vector>

#include <gtest/gtest.h>
#include <digitfilt/digitfilt.h>

#include "support/butterworth_support.h"

namespace {

using digitfilt::test::designedStage;
using digitfilt::test::literalBlock;
using digitfilt::test::literalStage;
using digitfilt::test::literalZeroPhase;
using digitfilt::test::testSignal;

struct AcqProbe : CDigitFiltCoefMak01ButterworthAcq02Prcs {
  using CDigitFiltCoefMak01ButterworthAcq02Prcs::bdiir;
  using CDigitFiltCoefMak01ButterworthAcq02Prcs::getSettlingTime;
};

// Low-pass 100 Hz (order 4), 45-55 Hz band-stop (order 2) and high-pass 5 Hz (order 2) at
// 1000 Hz, put in slots 0, 3 and 7 of a fresh filter.
void putThreeStages(CDigitFiltCoefMak01Butterworth& f) {
  f.iirSpecs[0] = designedStage(0, 4, 0.1, 100.0, 1000.0);
  f.iirSpecs[3] = designedStage(3, 2, 45.0, 55.0, 1000.0);
  f.iirSpecs[7] = designedStage(1, 2, 5.0, 500.0, 1000.0);
}

std::vector<filter_iirspec> enabledStages(const CDigitFiltCoefMak01Butterworth& f) {
  std::vector<filter_iirspec> out;
  for (const filter_iirspec& s : f.iirSpecs)
    if (s.enabled != 0) out.push_back(s);
  return out;
}

TEST(AcqStretch, OneCallMatchesCascadedLfilter) {
  // Reference: /usr/bin/python3 with scipy.signal, x = testSignal(40),
  //   lfilter(*butter(2, 5, 'high', fs=1000), lfilter(*butter(2, [45, 55], 'bandstop',
  //   fs=1000), lfilter(*butter(4, 100, fs=1000), x))).
  const int idx[] = {0, 1, 7, 19, 33, 39};
  const double want[] = {0.0018989098582510584, 0.015150599613625373, 0.8683791333477283,
                         0.04120892866267384, 1.1095584596980044, 1.1767060611729878};
  AcqProbe f;
  putThreeStages(f);
  f.reset4RunTimeFilter();
  std::vector<double> data = testSignal(40), tmp(40);
  EXPECT_EQ(f.fastFilterInC(data.data(), tmp.data(), 40, 0, 40, 7), 1);
  for (int i = 0; i < 6; ++i) EXPECT_NEAR(data[idx[i]], want[i], 1e-9) << idx[i];
  // The first call records the run; the baseline stays 0.
  EXPECT_EQ(f.restartPending, 0);
  EXPECT_EQ(f.runTag, 7);
  EXPECT_EQ(f.runDataPtr, data.data());
  EXPECT_EQ(f.runLength, 40);
  EXPECT_EQ(f.baseline, 0.0);
  EXPECT_EQ(f.stagesRun, 3);
  EXPECT_EQ(f.iirSpecCount, 3);
  // Later calls move the stretch only.
  f.fastFilterInC(data.data(), tmp.data(), 40, 40, 40, 9);
  EXPECT_EQ(f.runTag, 7);
  EXPECT_EQ(f.runFirst, 40);
}

// Blocks of a run through seven stages (5, 5, 9, 5, 5, 5 and 3 coefficients): every sample of both
// buffers, the closing copy of data[last] included, is what the documented stage-by-stage
// recursion over the two buffers gives.
TEST(AcqStretch, BlocksFollowTheBufferRecursionBitForBit) {
  for (double baseline : {0.0, 0.25, -0.0}) {
    SCOPED_TRACE(baseline);
    AcqProbe f;
    f.iirSpecs[0] = designedStage(0, 4, 0.1, 70.0, 1000.0);
    f.iirSpecs[1] = designedStage(1, 4, 0.5, 500.0, 1000.0);
    f.iirSpecs[2] = designedStage(3, 4, 57.0, 63.0, 1000.0);
    f.iirSpecs[6] = designedStage(3, 2, 48.0, 52.0, 1000.0);
    f.iirSpecs[7] = designedStage(3, 2, 98.0, 102.0, 1000.0);
    f.iirSpecs[8] = designedStage(3, 2, 148.0, 152.0, 1000.0);
    f.iirSpecs[9] = designedStage(2, 1, 10.0, 40.0, 1000.0);
    std::vector<filter_iirspec> stages = enabledStages(f);
    const std::vector<double> x = testSignal(401);
    std::vector<double> data = x, tmp(401, 0.5), wantData = x, wantTmp(401, 0.5);
    f.reset4RunTimeFilter();
    f.baseline = baseline;
    f.restartPending = 0;
    // A run in blocks (the first two shorter than the longest stage), then one whole stretch.
    const std::vector<std::vector<std::int64_t>> runs = {{0, 7, 100, 101, 250, 400}, {0, 400}};
    for (const std::vector<std::int64_t>& cuts : runs) {
      for (std::size_t b = 0; b + 1 < cuts.size(); ++b) {
        f.fastFilterInC(data.data(), tmp.data(), 401, cuts[b], cuts[b + 1], 0);
        literalBlock(stages, wantData.data(), wantTmp.data(), cuts[b], cuts[b + 1], baseline);
      }
      for (int i = 0; i < 401; ++i) {
        ASSERT_EQ(std::signbit(data[i]), std::signbit(wantData[i])) << i;
        ASSERT_EQ(data[i], wantData[i]) << i;
        ASSERT_EQ(tmp[i], wantTmp[i]) << i;
      }
      data = wantData = x;
    }
  }
}

TEST(AcqStretch, BlocksDifferFromOneStretchInPlace) {
  // Deliberate: in place, the first stage reads the earlier block's results from data as its
  // input history, so a run in blocks is not the same as one call over the whole stretch.
  AcqProbe a, b;
  putThreeStages(a);
  putThreeStages(b);
  std::vector<double> one = testSignal(200), blocks = one, t1(200), t2(200);
  a.fastFilterInC(one.data(), t1.data(), 200, 0, 200, 0);
  b.fastFilterInC(blocks.data(), t2.data(), 200, 0, 100, 0);
  b.fastFilterInC(blocks.data(), t2.data(), 200, 100, 200, 0);
  EXPECT_EQ(std::vector<double>(one.begin(), one.begin() + 100),
            std::vector<double>(blocks.begin(), blocks.begin() + 100));
  EXPECT_NE(one[150], blocks[150]);
}

TEST(AcqStretch, NoEnabledStageLeavesDataAlone) {
  AcqProbe f;
  std::vector<double> data = testSignal(20), tmp(20);
  const std::vector<double> x = data;
  EXPECT_EQ(f.fastFilterInC(data.data(), tmp.data(), 20, 0, 10, 0), 0);
  EXPECT_EQ(f.iirSpecCount, 0);
  EXPECT_EQ(data, x);
}

TEST(AcqStageRoutine, SuccessiveStretchesEqualOneStretch) {
  // Two chained stages on their own buffers: x -> y1 -> y2.
  AcqProbe whole, parts;
  putThreeStages(whole);
  putThreeStages(parts);
  const std::vector<double> x = testSignal(300);
  std::vector<double> y1(300), y2(300), z1(300), z2(300);
  whole.reset4RunTimeFilter();
  parts.reset4RunTimeFilter();
  whole.diirInC(const_cast<double*>(x.data()), y1.data(), 0, 300, &whole.iirSpecs[0]);
  whole.diirInC(y1.data(), y2.data(), 0, 300, &whole.iirSpecs[3]);
  const std::int64_t cuts[] = {0, 3, 64, 65, 200, 300};
  for (int b = 0; b + 1 < 6; ++b) {
    parts.diirInC(const_cast<double*>(x.data()), z1.data(), cuts[b], cuts[b + 1],
                  &parts.iirSpecs[0]);
    parts.diirInC(z1.data(), z2.data(), cuts[b], cuts[b + 1], &parts.iirSpecs[3]);
  }
  EXPECT_EQ(y2, z2);
  // Each stage is the literal recursion with the restart's baseline x[0].
  std::vector<double> w1(300), w2(300);
  literalStage(x.data(), w1.data(), 0, 300, whole.iirSpecs[0], x[0]);
  literalStage(w1.data(), w2.data(), 0, 300, whole.iirSpecs[3], x[0]);
  EXPECT_EQ(y2, w2);
}

TEST(AcqStageRoutine, RestartTakesTheFirstSampleAsBaseline) {
  AcqProbe f;
  putThreeStages(f);
  std::vector<double> x(50, -2.5), y(50, 1.0);
  f.reset4RunTimeFilter();
  EXPECT_EQ(f.diirInC(x.data(), y.data(), 0, 50, &f.iirSpecs[0]), 1);
  EXPECT_EQ(f.baseline, -2.5);
  EXPECT_EQ(f.restartPending, 0);
  EXPECT_EQ(f.iirSpecs[0].coefs[20], 0.0);
  for (double v : y) EXPECT_EQ(v, 0.0);
  EXPECT_EQ(f.diirInC(x.data(), y.data(), 5, 5, &f.iirSpecs[0]), 0);
}

TEST(AcqStageRoutine, InOutComputesTheFirstSampleOnlyAndKeepsTheRestart) {
  AcqProbe f;
  putThreeStages(f);
  const std::vector<double> x = testSignal(30);
  std::vector<double> y(30, 4.0), want(30, 4.0);
  f.reset4RunTimeFilter();
  EXPECT_EQ(f.diirInOutC(x.data(), y.data(), 10, 20, &f.iirSpecs[0]), 1);
  EXPECT_EQ(f.restartPending, 1);
  EXPECT_EQ(f.baseline, x[0]);
  literalStage(x.data(), want.data(), 10, 11, f.iirSpecs[0], x[0]);
  EXPECT_EQ(y, want);
  EXPECT_EQ(f.diirInOutC(x.data(), y.data(), 20, 20, &f.iirSpecs[0]), 0);
}

TEST(AcqStretch, InOutVariantYieldsOneSampleAndCopiesTheOtherBuffer) {
  AcqProbe f;
  f.iirSpecs[0] = designedStage(0, 4, 0.1, 100.0, 1000.0);
  f.iirSpecs[1] = designedStage(1, 2, 5.0, 500.0, 1000.0);
  const std::vector<double> in = testSignal(40);
  std::vector<double> out(40, 3.0), tmp(40, 7.0), wantOut = out, wantTmp = tmp;
  f.reset4RunTimeFilter();
  EXPECT_EQ(f.fastFilterInOutC(in.data(), out.data(), tmp.data(), 40, 20, 30, 5), 1);
  literalStage(in.data(), wantOut.data(), 20, 21, f.iirSpecs[0], 0.0);
  literalStage(wantOut.data(), wantTmp.data(), 20, 21, f.iirSpecs[1], 0.0);
  for (int i = 20; i <= 30; ++i) wantOut[i] = wantTmp[i];  // even count: tmp copied over out
  EXPECT_EQ(out, wantOut);
  EXPECT_EQ(out[25], 7.0);
  EXPECT_EQ(f.runTag, 5);
  EXPECT_EQ(f.runDataPtr, nullptr);
  EXPECT_EQ(f.stagesRun, 2);

  AcqProbe none;
  std::vector<double> copy(40, 0.0);
  EXPECT_EQ(none.fastFilterInOutC(in.data(), copy.data(), tmp.data(), 40, 5, 8, 0), 0);
  EXPECT_EQ(copy[4], 0.0);
  EXPECT_EQ(copy[8], in[8]);
  EXPECT_EQ(copy[9], 0.0);
}

TEST(AcqRecord, ZeroPhaseChainAndConstantInput) {
  AcqProbe f;
  putThreeStages(f);
  const std::vector<double> x = testSignal(150);
  std::vector<double> want = x;
  for (const filter_iirspec& s : enabledStages(f)) want = literalZeroPhase(want, s);
  std::vector<double> data = x, tmp(150), work(150);
  EXPECT_EQ(f.fastFilterIn(data.data(), tmp.data(), work.data(), 150), 1);
  EXPECT_EQ(data, want);

  std::vector<double> flat(150, 12.0);
  f.fastFilterIn(flat.data(), tmp.data(), work.data(), 150);
  for (double v : flat) EXPECT_EQ(v, 0.0);

  AcqProbe none;
  data = x;
  EXPECT_EQ(none.fastFilterIn(data.data(), tmp.data(), work.data(), 150), 0);
  EXPECT_EQ(data, x);
  // A disabled stage copies and reports 0.
  filter_iirspec off = f.iirSpecs[0];
  off.enabled = 0;
  EXPECT_EQ(f.bdiir(data.data(), tmp.data(), work.data(), 150, &off), 0);
  EXPECT_EQ(tmp, x);
}

TEST(AcqRecord, InOutResultLandsInOutOnlyWhenParitiesAgree) {
  const std::vector<double> x = testSignal(60);
  const filter_iirspec low = designedStage(0, 4, 0.1, 100.0, 1000.0);
  const filter_iirspec high = designedStage(1, 2, 5.0, 500.0, 1000.0);
  const std::vector<double> both = literalZeroPhase(literalZeroPhase(x, low), high);
  {
    // Two stages, the first in slot 0: the result reaches out.
    AcqProbe f;
    f.iirSpecs[0] = low;
    f.iirSpecs[89] = high;
    std::vector<double> in = x, out(60), tmp(60), work(60);
    EXPECT_EQ(f.fastFilterInOut(in.data(), out.data(), tmp.data(), work.data(), 60), 1);
    EXPECT_EQ(out, both);
  }
  {
    // Deliberate: first stage in slot 1, so the parity is off and out keeps the stage before.
    AcqProbe f;
    f.iirSpecs[1] = low;
    f.iirSpecs[89] = high;
    std::vector<double> in = x, out(60), tmp(60), work(60);
    EXPECT_EQ(f.fastFilterInOut(in.data(), out.data(), tmp.data(), work.data(), 60), 1);
    EXPECT_EQ(out, literalZeroPhase(x, low));
    EXPECT_EQ(tmp, both);
  }
  AcqProbe none;
  std::vector<double> in = x, out(60), tmp(60), work(60);
  EXPECT_EQ(none.fastFilterInOut(in.data(), out.data(), tmp.data(), work.data(), 60), 0);
  EXPECT_EQ(out, x);
}

TEST(AcqSettings, DefaultsCountsAndSettlingTimes) {
  AcqProbe f;
  EXPECT_EQ(f.restartPending, 1);
  EXPECT_EQ(f.initIIRFilters4Acq(), 4);
  EXPECT_EQ(f.iirSpecCount, 4);  // deliberately 4 for three stages
  EXPECT_EQ(f.getEnableFilters(), 3);
  EXPECT_EQ(f.iirSpecs[0].filterType, 1);
  EXPECT_EQ(f.iirSpecs[0].freqLow, 4.0);
  EXPECT_EQ(f.iirSpecs[2].freqHigh, 63.0);
  f.baseline = 3.0;
  f.restartPending = 0;
  EXPECT_EQ(f.reset4RunTimeFilter(), 1);
  EXPECT_EQ(f.baseline, 0.0);
  EXPECT_EQ(f.restartPending, 1);

  EXPECT_DOUBLE_EQ(f.getSettlingTime(10.0, 0.0, 0), 1.0 / (2.0 * M_PI * 10.0));
  EXPECT_DOUBLE_EQ(f.getSettlingTime(0.5, 0.0, 1), 0.55);
  // 3.14, not pi.
  EXPECT_DOUBLE_EQ(f.getSettlingTime(2.0, 100.0, 3), 1.0 / 314.0 + 0.25);
  EXPECT_EQ(f.getSettlingTime(0.0, 100.0, 2), 0.0);
  EXPECT_EQ(f.getSettlingTime(0.0, 0.0, 0), 0.0);
  EXPECT_EQ(f.getSettlingTime(5.0, 5.0, 4), 0.0);
}

}  // namespace
