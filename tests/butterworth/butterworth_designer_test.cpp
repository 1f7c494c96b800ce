#include <cmath>
#include <vector>

#include <gtest/gtest.h>
#include <digitfilt/digitfilt.h>

namespace {

filter_iirspec stage(int type, int order, double low, double high, double rate) {
  filter_iirspec s;
  s.enabled = 1;
  s.filterType = type;
  s.order = order;
  s.freqLow = low;
  s.freqHigh = high;
  s.sampleRate = rate;
  return s;
}

void expectCoefs(const filter_iirspec& s, const std::vector<double>& b, const std::vector<double>& a) {
  ASSERT_EQ(s.numCoefs, static_cast<int>(b.size()));
  for (std::size_t k = 0; k < b.size(); ++k) {
    SCOPED_TRACE(k);
    const double tolB = 1e-9 * std::max(1.0, std::fabs(b[k]));
    const double tolA = 1e-9 * std::max(1.0, std::fabs(a[k]));
    EXPECT_NEAR(s.coefs[k], b[k], tolB);
    EXPECT_NEAR(s.coefs[20 + k], a[k], tolA);
  }
}

struct Reference {
  filter_iirspec spec;
  std::vector<double> b, a;
};

// Values from scipy.signal.butter(N, Wn, type) with Wn = edge / (rate / 2).
std::vector<Reference> references() {
  return {
      // signal.butter(4, 0.2, 'lowpass')
      {stage(0, 4, 0.1, 100.0, 1000.0),
       {0.004824343357716231, 0.019297373430864923, 0.028946060146297387, 0.019297373430864923,
        0.004824343357716231},
       {1.0, -2.3695130071820376, 2.31398841441588, -1.0546654058785676, 0.18737949236818488}},
      // signal.butter(3, 0.32, 'lowpass')
      {stage(0, 3, 0.1, 40.0, 250.0),
       {0.057890375408972586, 0.17367112622691777, 0.17367112622691777, 0.057890375408972586},
       {1.0, -1.0440641548399396, 0.6252304301994467, -0.11804327208772641}},
      // signal.butter(2, 0.004, 'highpass')
      {stage(1, 2, 1.0, 250.0, 500.0),
       {0.9911535951016632, -1.9823071902033265, 0.9911535951016632},
       {1.0, -1.9822289297925284, 0.9823854506141251}},
      // signal.butter(5, 0.6, 'highpass')
      {stage(1, 5, 300.0, 500.0, 1000.0),
       {0.021939620688464185, -0.10969810344232092, 0.21939620688464184, -0.21939620688464184,
        0.10969810344232092, -0.021939620688464185},
       {1.0, 0.9853252392792375, 0.9738493318367638, 0.3863565586484485, 0.11116384057834194,
        0.011263512456565867}},
      // signal.butter(2, [0.0625, 0.09375], 'bandpass')
      {stage(2, 2, 8.0, 12.0, 256.0),
       {0.00225158265684663, 0.0, -0.00450316531369326, 0.0, 0.00225158265684663},
       {1.0, -3.750158222111403, 5.381245474800005, -3.498359723196647, 0.8703674774564696}},
      // signal.butter(4, [0.096, 0.104], 'bandstop')
      {stage(3, 4, 48.0, 52.0, 1000.0),
       {0.9676948088896715, -7.363241000791835, 24.881013119867205, -48.734386545742105,
        60.49792753752336, -48.73438654574211, 24.881013119867216, -7.3632410007918425,
        0.9676948088896726},
       {1.0, -7.54658812115311, 25.29142788221091, -49.13247276992689, 60.493107811524915,
        -48.33233000487205, 24.474374458149228, -7.183864197115793, 0.9364332431520186}},
      // signal.butter(3, [0.095, 0.105], 'bandstop')
      {stage(3, 3, 95.0, 105.0, 2000.0),
       {0.9690711740318128, -5.530531016787142, 13.428206595077063, -17.732591096861913,
        13.42820659507706, -5.53053101678714, 0.9690711740318126},
       {1.0, -5.647281600765562, 13.568348445726171, -17.7307713257535, 13.287108152166308,
        -5.415600203917143, 0.9390989403252828}},
  };
}

TEST(ButterworthDesign, MatchesIndependentCoefficients) {
  CDigitFiltCoefMak01Butterworth designer;
  for (Reference r : references()) {
    SCOPED_TRACE(r.spec.filterType * 100 + r.spec.order);
    filter_iirspec viaMain = r.spec, viaMkiir = r.spec;
    ASSERT_EQ(designer.ctfButterworthIirFilterCoef(&viaMain), 1);
    expectCoefs(viaMain, r.b, r.a);
    // The stricter designer refuses bands narrower than 0.005 rate; where it accepts, it agrees.
    const bool band = r.spec.filterType >= 2;
    if (band && (r.spec.freqHigh - r.spec.freqLow) / r.spec.sampleRate <= 0.005) continue;
    ASSERT_EQ(designer.mkiir(&viaMkiir), 1);
    expectCoefs(viaMkiir, r.b, r.a);
  }
}

TEST(ButterworthDesign, UnityInPassBandHalfPowerAtEdges) {
  CDigitFiltCoefMak01Butterworth designer;
  for (double rate : {250.0, 1000.0, 5000.0}) {
    for (int order : {1, 2, 4, 7}) {
      SCOPED_TRACE(rate + order);
      filter_iirspec lp = stage(0, order, 0.0, 0.1 * rate, rate);
      filter_iirspec hp = stage(1, order, 0.2 * rate, 0.0, rate);
      ASSERT_EQ(designer.ctfButterworthIirFilterCoef(&lp), 1);
      ASSERT_EQ(designer.ctfButterworthIirFilterCoef(&hp), 1);
      EXPECT_NEAR(CMFilterFaceqv::freqResponse(&lp, rate, 0.0), 1.0, 1e-9);
      EXPECT_NEAR(CMFilterFaceqv::freqResponse(&lp, rate, 0.1 * rate), std::sqrt(0.5), 1e-6);
      EXPECT_NEAR(CMFilterFaceqv::freqResponse(&hp, rate, 0.5 * rate), 1.0, 1e-9);
      EXPECT_NEAR(CMFilterFaceqv::freqResponse(&hp, rate, 0.2 * rate), std::sqrt(0.5), 1e-6);
      if (order > 4) continue;  // band stages must keep 2n + 1 <= 20
      filter_iirspec bp = stage(2, order, 0.1 * rate, 0.2 * rate, rate);
      filter_iirspec bs = stage(3, order, 0.1 * rate, 0.2 * rate, rate);
      ASSERT_EQ(designer.ctfButterworthIirFilterCoef(&bp), 1);
      ASSERT_EQ(designer.ctfButterworthIirFilterCoef(&bs), 1);
      // Both band stages are centred on the geometric mean of the pre-warped edges.
      const double centre = rate / digitfilt::kPi *
          std::atan(std::sqrt(std::tan(0.1 * digitfilt::kPi) * std::tan(0.2 * digitfilt::kPi)));
      EXPECT_NEAR(CMFilterFaceqv::freqResponse(&bp, rate, centre), 1.0, 1e-9);
      EXPECT_NEAR(CMFilterFaceqv::freqResponse(&bs, rate, centre), 0.0, 1e-6);
      for (double edge : {0.1 * rate, 0.2 * rate}) {
        EXPECT_NEAR(CMFilterFaceqv::freqResponse(&bp, rate, edge), std::sqrt(0.5), 1e-6);
        EXPECT_NEAR(CMFilterFaceqv::freqResponse(&bs, rate, edge), std::sqrt(0.5), 1e-6);
      }
      EXPECT_NEAR(CMFilterFaceqv::freqResponse(&bs, rate, 0.0), 1.0, 1e-9);
      EXPECT_NEAR(CMFilterFaceqv::freqResponse(&bs, rate, 0.5 * rate), 1.0, 1e-9);
    }
  }
}

TEST(ButterworthDesign, CoefficientCountFollowsType) {
  CDigitFiltCoefMak01Butterworth designer;
  filter_iirspec lp = stage(0, 4, 0.0, 100.0, 1000.0);
  filter_iirspec bs = stage(3, 4, 40.0, 60.0, 1000.0);
  filter_iirspec bp = stage(2, 2, 40.0, 60.0, 1000.0);
  ASSERT_EQ(designer.ctfButterworthIirFilterCoef(&lp), 1);
  ASSERT_EQ(designer.ctfButterworthIirFilterCoef(&bs), 1);
  ASSERT_EQ(designer.ctfButterworthIirFilterCoef(&bp), 1);
  EXPECT_EQ(lp.numCoefs, 5);
  EXPECT_EQ(bs.numCoefs, 9);
  EXPECT_EQ(bp.numCoefs, 5);
  EXPECT_EQ(lp.coefs[20], 1.0);
  // Unity gain at 0 Hz: the sums of b and a agree.
  double sb = 0, sa = 0;
  for (int k = 0; k < lp.numCoefs; ++k) sb += lp.coefs[k], sa += lp.coefs[20 + k];
  EXPECT_NEAR(sb / sa, 1.0, 1e-12);
}

TEST(ButterworthDesign, MainDesignerAcceptanceRules) {
  CDigitFiltCoefMak01Butterworth designer;
  const double rate = 1000.0;
  for (int order : {0, 21, 25}) {
    filter_iirspec s = stage(0, order, 0.0, 100.0, rate);
    EXPECT_EQ(designer.ctfButterworthIirFilterCoef(&s), 0) << order;
    EXPECT_EQ(s.enabled, 1) << "a bad order leaves enabled alone";
  }
  filter_iirspec half = stage(0, 4, 0.0, 0.5 * rate, rate);
  EXPECT_EQ(designer.ctfButterworthIirFilterCoef(&half), 1);
  EXPECT_NEAR(CMFilterFaceqv::freqResponse(&half, rate, 0.4 * rate), 1.0, 1e-6);  // near all-pass
  filter_iirspec low = stage(0, 4, 0.0, 0.0005 * rate, rate);
  EXPECT_EQ(designer.ctfButterworthIirFilterCoef(&low), 1);
  // Tolerance is 0.00001 rate on each side of [0.0001 rate, 0.5 rate].
  filter_iirspec justAbove = stage(0, 4, 0.0, 0.5 * rate + 0.009, rate);
  EXPECT_EQ(designer.ctfButterworthIirFilterCoef(&justAbove), 1);
  filter_iirspec tooHigh = stage(0, 4, 0.0, 0.5 * rate + 0.011, rate);
  EXPECT_EQ(designer.ctfButterworthIirFilterCoef(&tooHigh), 0);
  EXPECT_EQ(tooHigh.enabled, 0);
  filter_iirspec narrow = stage(2, 2, 100.0, 100.0 + 0.0004 * rate, rate);
  EXPECT_EQ(designer.ctfButterworthIirFilterCoef(&narrow), 0);
  EXPECT_EQ(narrow.enabled, 0);
  filter_iirspec wideEnough = stage(2, 2, 100.0, 100.0 + 0.000495 * rate, rate);
  EXPECT_EQ(designer.ctfButterworthIirFilterCoef(&wideEnough), 1);
  filter_iirspec unknown = stage(7, 2, 100.0, 200.0, rate);
  EXPECT_EQ(designer.ctfButterworthIirFilterCoef(&unknown), 0);
  EXPECT_EQ(unknown.enabled, 1);
  EXPECT_EQ(designer.ctfButterworthIirFilterCoef(nullptr), 0);
}

TEST(ButterworthDesign, StricterDesignerAcceptanceRules) {
  CDigitFiltCoefMak01Butterworth designer;
  const double rate = 1000.0;
  filter_iirspec half = stage(0, 4, 0.0, 0.5 * rate, rate);
  EXPECT_EQ(designer.mkiir(&half), 0);
  EXPECT_EQ(half.enabled, 0);
  filter_iirspec low = stage(0, 4, 0.0, 0.0005 * rate, rate);
  EXPECT_EQ(designer.mkiir(&low), 0);
  filter_iirspec order25 = stage(0, 25, 0.0, 100.0, rate);
  EXPECT_EQ(designer.mkiir(&order25), 0);
  EXPECT_EQ(order25.enabled, 0) << "unlike the main designer, a bad order switches off";
  filter_iirspec order0 = stage(0, 0, 0.0, 100.0, rate);
  EXPECT_EQ(designer.mkiir(&order0), 0);
  filter_iirspec order20 = stage(0, 20, 0.0, 100.0, rate);
  EXPECT_EQ(designer.mkiir(&order20), 1);
  filter_iirspec narrow = stage(2, 2, 100.0, 104.0, rate);  // width ratio 0.004
  EXPECT_EQ(designer.mkiir(&narrow), 0);
  EXPECT_EQ(narrow.enabled, 0);
  filter_iirspec unknown = stage(5, 2, 100.0, 200.0, rate);
  EXPECT_EQ(designer.mkiir(&unknown), 0);
  EXPECT_EQ(unknown.enabled, 1);
}

TEST(ButterworthDesign, OverlappingStoreStaysInsideTheRecord) {
  // Order 20 band stages need 41 coefficients; the store holds what fits and nothing spills.
  filter_iirspec pair[2];
  pair[0] = stage(3, 20, 100.0, 200.0, 1000.0);
  pair[1].reservedFreq = 12345.0;
  for (double& c : pair[1].coefs) c = 7.0;
  CDigitFiltCoefMak01Butterworth designer;
  EXPECT_EQ(designer.ctfButterworthIirFilterCoef(&pair[0]), 1);
  EXPECT_EQ(pair[0].numCoefs, 41);
  EXPECT_EQ(pair[1].enabled, 0);
  EXPECT_EQ(pair[1].reservedFreq, 12345.0);
  // Order 19 low-pass: 20 coefficients, the two halves just meet.
  filter_iirspec lp = stage(0, 19, 0.0, 100.0, 1000.0);
  EXPECT_EQ(designer.ctfButterworthIirFilterCoef(&lp), 1);
  EXPECT_NEAR(CMFilterFaceqv::freqResponse(&lp, 1000.0, 0.0), 1.0, 1e-6);
}

TEST(ButterworthDefaults, SlotsForSampleRate) {
  CDigitFiltCoefMak01Butterworth designer;
  designer.iirSpecs[70].order = 11;
  EXPECT_EQ(designer.initCtfButterworthFilter4SmplRate(500.0), 1);
  EXPECT_DOUBLE_EQ(designer.freqMin, 0.05);
  EXPECT_DOUBLE_EQ(designer.widthMax, 250.0);
  const filter_iirspec* s = designer.getFilterCoeffPt();
  EXPECT_EQ(s[0].enabled, 1);
  EXPECT_EQ(s[0].filterType, 0);
  EXPECT_EQ(s[1].filterType, 1);
  EXPECT_EQ(s[2].enabled, 0);
  EXPECT_EQ(s[2].filterType, 2);
  EXPECT_DOUBLE_EQ(s[1].freqHigh, 250.0);
  EXPECT_DOUBLE_EQ(s[1].freqLow, 0.05);
  EXPECT_DOUBLE_EQ(s[3].freqLow, 57.0);
  EXPECT_DOUBLE_EQ(s[3].freqHigh, 63.0);
  EXPECT_EQ(s[3].order, 4);
  EXPECT_DOUBLE_EQ(s[4].freqLow, 57.0);  // first harmonic repeats the base notch, at order 2
  EXPECT_EQ(s[4].order, 2);
  EXPECT_DOUBLE_EQ(s[63].freqHigh, 3603.0);
  EXPECT_EQ(s[70].order, 11) << "slots 64..89 are left alone";
  // Defaults: the two enabled stages pass the check; the harmonics beyond Nyquist are off.
  EXPECT_EQ(designer.checkCorrectAllFilterSettings4SmplRate(), 2);
  EXPECT_EQ(designer.makeAllButterworthCoeffs(true), 2);
}

TEST(ButterworthCheck, CorrectsEdgesPerType) {
  CDigitFiltCoefMak01Butterworth designer;
  const double rate = 1000.0;  // lo 0.1, hi 500, wmin 0.5, tol 0.01
  filter_iirspec lp = stage(0, 4, 0.0, 900.0, rate);
  EXPECT_EQ(designer.checkCorrectFilterSettings4SmplRate(&lp), 1);
  EXPECT_DOUBLE_EQ(lp.freqHigh, 500.0);
  filter_iirspec hp = stage(1, 4, 0.01, 0.0, rate);
  EXPECT_EQ(designer.checkCorrectFilterSettings4SmplRate(&hp), 1);
  EXPECT_DOUBLE_EQ(hp.freqLow, 0.1);
  filter_iirspec bp = stage(2, 2, 0.01, 50.0, rate);  // a low band edge becomes wmin
  EXPECT_EQ(designer.checkCorrectFilterSettings4SmplRate(&bp), 1);
  EXPECT_DOUBLE_EQ(bp.freqLow, 0.5);
  filter_iirspec bs = stage(3, 2, 0.01, 50.0, rate);  // ... but lo for a band-stop
  EXPECT_EQ(designer.checkCorrectFilterSettings4SmplRate(&bs), 1);
  EXPECT_DOUBLE_EQ(bs.freqLow, 0.1);
  filter_iirspec tight = stage(3, 2, 100.0, 100.3, rate);
  EXPECT_EQ(designer.checkCorrectFilterSettings4SmplRate(&tight), 0);
  EXPECT_EQ(tight.enabled, 0);
  filter_iirspec unknown = stage(4, 2, 100.0, 200.0, rate);
  EXPECT_EQ(designer.checkCorrectFilterSettings4SmplRate(&unknown), 0);
  EXPECT_EQ(designer.checkCorrectFilterSettings4SmplRate(nullptr), 0);
}

TEST(ButterworthDesign, PrototypePolesLieOnTheUnitCircleInTheLeftHalfPlane) {
  for (int order = 1; order <= 9; ++order) {
    const auto poles = digitfilt::butterworthPoles(order);
    ASSERT_EQ(static_cast<int>(poles.size()), order);
    for (const auto& p : poles) {
      EXPECT_NEAR(std::abs(p), 1.0, 1e-15);
      EXPECT_LT(p.real(), 0.0);
    }
    if (order % 2 == 1) {
      EXPECT_EQ(poles.back(), digitfilt::Complex(-1.0, 0.0));
    }
  }
}
}  // namespace
