// Remez design requests from bytes through the input check, the grid size, the exchange runs
// (doubled and filled-grid), the order search, the single exchange steps on a byte-made
// workspace, the sampled response, the transition corrections and the designer objects.
//
// Skipped inputs:
// - ckCorrectTrnUp(tr, low, high) is never called when !(low >= high) && !(tr <= 0) &&
//   !(tr + low < high): for exactly those arguments (NaN ones included) the operation is
//   required never to return.
// - Exchange runs whose work is beyond a fuzz input's time budget (grid points x extremals summed
//   over the runs of the call, see runCost) are not started. They are not failures, only slow:
//   40 passes over every grid point for every extremal.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

#include <digitfilt/digitfilt.h>

#include "fuzz_input.h"

namespace {

using Designer = CDigitFiltCoefMak06Remezqv;
using digitfilt::fuzz::Input;

// Exposes the protected operations to the target.
class OpenDesigner : public Designer {
 public:
  using Designer::checkBuffer;
  using Designer::computeCoef;
  using Designer::filtRmzBkwd;
  using Designer::filtRmzFrwd;
};

constexpr double kBudget = 3.0e5;

// Work of one exchange run of numTaps taps: grid points times (extremals + 1). Runs that fail
// before taking their workspace cost nothing.
double runCost(std::int64_t numTaps, std::int64_t numBands, const double* bands,
               std::int64_t density, std::int64_t type) {
  const std::int64_t r = numTaps / 2;
  if (r < 0 || r >= CRemezData::kMaxGridSize) return 0.0;
  const std::int64_t g = Designer::getGridSize01(density, r, type, numBands, bands);
  if (g < 1 || g > CRemezData::kMaxGridSize) return 0.0;
  return static_cast<double>(g) * static_cast<double>(r + 2);
}

// The lengths searchBestOrder tries, summed.
double searchCost(const Filter_Remez& f) {
  constexpr std::int64_t kFar = INT64_MAX - 64;
  const std::int64_t start = std::clamp<std::int64_t>(f.numTaps, -kFar, kFar);
  double cost = 0.0;
  for (std::int64_t step = 0; step < 59; ++step) {
    const std::int64_t up = start + 1 + step, down = start - 1 - step;
    if (up < 1001) cost += runCost(up, f.numBands, f.bands, f.gridDensity, 1);
    if (down > 4) cost += runCost(down, f.numBands, f.bands, f.gridDensity, 1);
  }
  return cost;
}

std::int64_t wildCount(Input& in, std::int64_t lo, std::int64_t hi) {
  switch (in.byte() % 8) {
    case 0: return INT64_MIN;
    case 1: return INT64_MAX;
    case 2: return static_cast<std::int64_t>(in.u32()) - 2147483648LL;
    default: return in.range(lo, hi);
  }
}

std::int64_t remezType(Input& in) {
  static const std::int64_t kTypes[] = {1, 2, 10, 0, -1, 3, 1, 10};
  return kTypes[in.byte() % 8];
}

// Edges, amplitudes and weights: wild, or (one time in two) ascending within [0, 0.5] so that
// real designs take place.
void fillBands(Input& in, double* bands, double* des, double* weight, std::int64_t slots) {
  const bool tidy = in.byte() & 1;
  for (std::int64_t i = 0; i < 2 * slots; ++i)
    bands[i] = tidy ? in.finite(0.0, 0.5) : in.real(0.6);
  if (tidy) std::sort(bands, bands + 2 * slots);
  for (std::int64_t i = 0; i < 2 * slots; ++i) des[i] = tidy ? in.finite(0.0, 1.0) : in.real(1.0);
  for (std::int64_t i = 0; i < slots; ++i) weight[i] = tidy ? in.finite(0.1, 10.0) : in.real(900.0);
}

void fillRecord(Input& in, Filter_Remez& f) {
  f.enabled = static_cast<std::int32_t>(in.range(-1, 2));
  f.remezType = static_cast<std::int32_t>(remezType(in));
  f.numBands = in.range(-1, 4);
  fillBands(in, f.bands, f.des, f.weight, 3);
  f.gridDensity = in.range(-2, 400);
  f.order = in.range(-3, 256);
  f.numTaps = in.range(-3, 256);
}

// Calls on raw arrays sized exactly for numBands bands.
void rawRequest(Input& in) {
  const std::int64_t numTaps = wildCount(in, -4, 256);
  const std::int64_t numBands = in.range(0, 4);
  const std::size_t slots = static_cast<std::size_t>(std::max<std::int64_t>(numBands, 1));
  std::vector<double> bands(2 * slots), des(2 * slots), weight(slots);
  fillBands(in, bands.data(), des.data(), weight.data(), numBands);
  std::int64_t density = wildCount(in, -2, 400);
  const std::int64_t type = remezType(in);
  Designer::checkCorrectRemezInputs(numTaps, numBands, density, bands.data(), des.data(),
                                    weight.data(), in.byte());
  Designer::getGridSize01(wildCount(in, -2, 400), wildCount(in, -4, 300), type, numBands,
                          bands.data());
  Designer::getRippleRatio(in.real(60.0), in.real(80.0));
  if (numBands < 1) return;

  CRemezData data;
  if (runCost(numTaps, numBands, bands.data(), density, type) <= kBudget)
    Designer::rmzSearch(numTaps, numBands, bands.data(), des.data(), weight.data(), &data,
                        density, type);
  if (runCost(numTaps, numBands, bands.data(), density, type) <= kBudget &&
      Designer::rmzSearchX(numTaps, numBands, bands.data(), des.data(), weight.data(), &data,
                           density, type) >= 0) {
    // The workspace of a finished run: sample its response.
    CFreqResp resp;
    const std::int64_t sym = in.range(0, 2);
    const std::int64_t r = in.byte() & 1 ? numTaps / 2 : wildCount(in, -3, 300);
    resp.freqResponseM(sym, numTaps, r, &data, in.range(-2, 600));
    const std::int64_t points = in.range(-2, 300);
    std::vector<double> fr(static_cast<std::size_t>(std::max<std::int64_t>(points, 0))),
        am(fr.size()), db(fr.size());
    resp.freqResponseS(sym, numTaps, r, &data, fr.data(), am.data(), db.data(), points);
    CFreqResp copy(resp);
    copy = resp;
    resp.freeFreqRespBuffer();
  }
}

// The exchange steps on a workspace with byte-made contents and caps.
void steps(Input& in) {
  CRemezData data;
  const int g = static_cast<int>(in.range(-1, 64));
  const int e = static_cast<int>(in.range(-1, 20));
  if (!data.newRemezData(g, e)) {
    double A;
    Designer::_10Freq2FiltRspAmp(in.real(1.0), static_cast<int>(in.range(-2, 4)), &data, A);
    Designer::_03calcParms(static_cast<int>(in.range(-2, 4)), &data);
    return;
  }
  const std::int64_t gl = data.gridLength(), el = data.extLength();
  for (std::int64_t i = 0; i < gl; ++i) {
    data.grid[i] = in.byte() & 1 ? in.real(0.6) : in.finite(0.0, 0.5);
    data.desired[i] = in.real(1.0);
    data.weights[i] = in.byte() & 3 ? in.finite(0.1, 2.0) : in.real(10.0);
    data.error[i] = in.real(1.0);
  }
  for (std::int64_t i = 0; i < el; ++i) {
    data.ext[i] = static_cast<std::int32_t>(in.byte() & 7 ? in.range(0, gl - 1) : in.range(-3, 200));
    data.xCos[i] = in.real(1.0);
    data.ad[i] = in.real(1.0);
    data.yVal[i] = in.real(1.0);
  }
  if (in.byte() % 4 == 0) data.gridCap = static_cast<std::int32_t>(in.range(-2, 300));
  if (in.byte() % 4 == 0) data.extCap = static_cast<std::int32_t>(in.range(-2, 300));
  data.positiveSym = static_cast<std::int32_t>(in.range(-1, 1));
  const int r = static_cast<int>(in.byte() & 1 ? in.range(-2, 45) : wildCount(in, -2, 45));
  const std::int64_t numTaps = wildCount(in, -3, 90);

  std::vector<double> bands(4), des(4), weight(2);
  fillBands(in, bands.data(), des.data(), weight.data(), 2);
  const std::int64_t density = wildCount(in, -2, 40);
  const std::int64_t rGrid = in.byte() & 1 ? r : wildCount(in, -2, 45);
  for (int k = 0; k < 12 && !in.empty(); ++k) {
    double A = 0.0;
    switch (in.byte() % 9) {
      case 0: Designer::_01createDenseGrid(rGrid, numTaps, 2, bands.data(), des.data(),
                                           weight.data(), density, &data); break;
      case 1: Designer::_02initialGuess(r, &data); break;
      case 2: Designer::_03calcParms(r, &data); break;
      case 3: Designer::_04calcError(r, &data); break;
      case 4: Designer::_05search(r, &data); break;
      case 5: Designer::_06isDone(r, &data); break;
      case 6: Designer::_07SetParksMcClellanDW(remezType(in), numTaps, wildCount(in, -2, 200),
                                               &data); break;
      case 7: Designer::_08findTap(numTaps, r, &data); break;
      default: Designer::_10Freq2FiltRspAmp(in.real(0.6), r, &data, A); break;
    }
  }
  CFreqResp resp;
  resp.freqResponseM(in.range(0, 2), numTaps, wildCount(in, -2, 45), &data, in.range(-2, 100));

  // Tap transform on arrays of the sizes it needs.
  const std::int64_t n = in.range(-2, 64);
  std::vector<double> a(static_cast<std::size_t>(std::max<std::int64_t>(n / 2 + 1, 1)));
  for (double& v : a) v = in.real(1.0);
  std::vector<double> h(static_cast<std::size_t>(std::max<std::int64_t>(n, 1)));
  Designer::freqSample(a.data(), h.data(), n, in.range(0, 1));
  CRemezData copy(data);
  copy = data;
  data.freeRemezData();
}

// Record-level design entries and the order search.
void recordDesigns(Input& in) {
  Filter_Remez f;
  fillRecord(in, f);
  if (in.byte() & 1) f.numTaps = wildCount(in, -4, 256);
  // Sometimes an array shorter than numTaps, as a host that rewrote numTaps leaves it.
  if (f.numTaps >= 0 && f.numTaps <= 4096) f.allocCoefs(f.numTaps - in.range(0, 3) / 2);
  if (runCost(f.numTaps, f.numBands, f.bands, f.gridDensity, f.remezType) <= kBudget &&
      f.numBands >= 1 && f.numBands <= 3) {
    Designer::remezPM03k(&f);
    Designer::remez00(&f);
  }
  Filter_Remez g = f;
  g.numTaps = in.range(-3, 40);
  if (g.numBands >= 1 && g.numBands <= 3 && searchCost(g) <= kBudget)
    Designer::searchBestOrder(&g);
  Filter_Remez lp = f, hp = f;
  lp.numTaps = hp.numTaps = in.range(-3, 40);
  // The widened transitions are checked against [0, 1] before the search; bound its work too.
  Filter_Remez lpProbe = lp;
  std::int64_t density = std::clamp<std::int64_t>(lp.gridDensity, 16, 320);
  lpProbe.gridDensity = density;
  if (lp.numBands >= 1 && lp.numBands <= 3 && searchCost(lpProbe) <= kBudget)
    Designer::findParameterLP(&lp);
  if (hp.numBands >= 1 && hp.numBands <= 3 && searchCost(lpProbe) <= kBudget)
    Designer::findParameterHP(&hp);
  Designer::searchBestOrder(nullptr);
  Designer::remezPM03k(nullptr);
  Designer::remez00(nullptr);
}

void transitions(Input& in) {
  const double tr = in.real(0.1), low = in.real(0.5), high = in.real(0.5);
  Designer::getGaindBs(in.real(10.0), in.real(10.0));
  Designer::ckCorrectTrnDn(tr, low, high);
  const bool neverReturns = !(low >= high) && !(tr <= 0.0) && !(tr + low < high);
  if (!neverReturns) Designer::ckCorrectTrnUp(tr, low, high);
}

void designer(Input& in) {
  OpenDesigner d;
  d.initFiltRange4SmplRateRmz(in.real(2000.0));
  const int records = static_cast<int>(in.range(0, 3));
  for (int k = 0; k < records; ++k) {
    Filter_Remez* f = d.getFilterCoefficients(static_cast<int>(in.range(-1, 90)));
    if (!f) continue;
    fillRecord(in, *f);
    const std::int64_t taps = f->order % 2 != 0 ? f->order + 1 : f->order;
    if (runCost(taps, f->numBands, f->bands, f->gridDensity, f->remezType) > kBudget)
      f->enabled = 0;
  }
  d.makeAllCoef();
  d.CDigitFiltCoefMak06Remez::makeAllCoef();

  // Host-written taps and counts on one record; the counts may reach past the array the record
  // took.
  Filter_Remez* host = d.getFilterCoefficients(static_cast<int>(in.range(0, 89)));
  if (in.byte() & 1) {
    const std::int64_t len = in.range(0, 40);
    host->allocCoefs(len);
    for (std::int64_t i = 0; i < len; ++i) host->coefs[i] = in.real(1.0);
    host->tapCount = in.byte() & 3 ? in.range(-2, len) : wildCount(in, -2, len + 3);
    host->order = wildCount(in, -3, 60);
    host->enabled = static_cast<std::int32_t>(in.range(0, 1));
    if (in.byte() & 1) host->allocAuxTail(in.range(-1, 8));
  }

  std::vector<double> x = in.samples(static_cast<std::size_t>(in.range(0, 64)));
  std::vector<double> y(x.size());
  const auto n = static_cast<std::int64_t>(x.size());
  d.filter(x.data(), y.data(), n);
  d.CDigitFiltCoefMak06Remez::filter(x.data(), y.data(), n);
  d.filter(x.data(), x.data(), n);  // in place
  d.filter(nullptr, y.data(), n);
  for (const Filter_Remez& f : d.records) {
    // The protected passes take a length from their caller: only the record's own one.
    if (!f.coefs || f.tapCount < 0 || f.tapCount > f.ownCoefsLength()) continue;
    OpenDesigner::filtRmzBkwd(f.coefs, f.tapCount, x.data(), y.data(), n);
    OpenDesigner::filtRmzFrwd(f.coefs, f.tapCount, x.data(), y.data(), n);
    delete[] d.filterGain(in.range(-3, 300), const_cast<Filter_Remez*>(&f));
  }
  delete[] d.filterGain(in.range(-3, 30), host);
  delete[] d.filterGain(5, nullptr);
  d.checkBuffer(in.range(-3, 4096));
  d.checkBuffer(in.range(-3, 4096));

  // Copies share the taps and outlive each other.
  OpenDesigner copy(d);
  Designer other;
  other = d;
  copy.clearRemez();
  d.filter(x.data(), y.data(), n);
  other.initInitRemez();
  d.getFreqResp()->freqResponseM(1, 20, 10, &d.workspace, in.range(-2, 50));
  CDigitFiltCoefMak06Remez04 plain;
  plain.makeAllCoef();
  plain.filter(x.data(), y.data(), n);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input in(data, size);
  auto quiet = digitfilt::setMessageHandler([](const std::wstring&) { return 1; });
  switch (in.byte() % 5) {
    case 0: rawRequest(in); break;
    case 1: steps(in); break;
    case 2: recordDesigns(in); break;
    case 3: transitions(in); break;
    default: designer(in); break;
  }
  digitfilt::setMessageHandler(quiet);
  return 0;
}
