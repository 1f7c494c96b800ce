#include "banks.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdio>
#include <cstring>
#include <functional>

#include "spectrum.h"
#include "tool_error.h"

namespace digitfilt::tool {
namespace {

std::string hz(double f) {
  char buf[32];
  std::snprintf(buf, sizeof buf, "%g", f);
  return buf;
}

// Silences the library's messages while a bank is rebuilt only to measure it; the user has seen
// them once already.
class QuietMessages {
 public:
  QuietMessages() : old_(setMessageHandler([](const std::wstring&) { return 1; })) {}
  ~QuietMessages() { setMessageHandler(old_); }

 private:
  MessageHandler old_;
};

// Long enough for the slowest stage here (a 0.5 Hz high-pass) to die away.
std::size_t impulseLength(double rate) {
  return std::clamp<std::size_t>(nextPowerOfTwo(static_cast<std::size_t>(60.0 * rate)),
                                 std::size_t(1) << 14, std::size_t(1) << 20);
}

// |H| at `freqs` from an impulse response, by FFT and linear interpolation between bins.
std::vector<double> impulseMagnitude(const std::vector<double>& h, double rate,
                                     const std::vector<double>& freqs) {
  const std::size_t n = nextPowerOfTwo(h.size());
  std::vector<std::complex<double>> buf(n);
  for (std::size_t i = 0; i < h.size(); ++i) buf[i] = h[i];
  fft(buf, false);
  std::vector<double> out;
  out.reserve(freqs.size());
  for (double f : freqs) {
    const double pos = std::clamp(f / rate * static_cast<double>(n), 0.0, n / 2.0);
    const std::size_t k = std::min(static_cast<std::size_t>(pos), n / 2 - 1);
    const double t = pos - static_cast<double>(k);
    out.push_back((1 - t) * std::abs(buf[k]) + t * std::abs(buf[k + 1]));
  }
  return out;
}

// Response of a bank measured as a host would see it: a fresh bank from the same settings, the
// other stages switched off when one stage is wanted, and an impulse through filtDataAcq.
std::vector<double> measuredMagnitude(
    const std::function<void(std::vector<double>&, long stageOnly)>& runImpulse, long stageOnly,
    double rate, const std::vector<double>& freqs) {
  std::vector<double> h(impulseLength(rate), 0.0);
  h[0] = 1.0;
  {
    QuietMessages quiet;
    runImpulse(h, stageOnly);
  }
  return impulseMagnitude(h, rate, freqs);
}

// ---------------------------------------------------------------------------------------------
// The Butterworth acquisition bank: 90 direct-form stage records, run with diirInC. Its stage
// recursion reads earlier samples from the caller's buffers by absolute index, so every stage
// gets its own input and output buffers here; fastFilterInC's two ping-pong buffers hold the
// history of only one stage across blocks. The buffers are short windows: the last kHistory
// samples of each stage's input and output, followed by the current block.
class AcqButterworthBank : public ChannelBank {
 public:
  int configure(CFilterDcLtSetAcqqv& settings) override {
    const int count = bank_.setCheckCoefs(settings);
    if (count <= 0) return count;
    bank_.makeAllButterworthCoeffs(true);
    rate_ = settings.acqSampleRate;
    slots_.clear();
    for (int i = 0; i < CDigitFiltCoefMak01Butterworth::kSpecCount; ++i)
      if (bank_.iirSpecs[i].enabled) slots_.push_back(i);
    return count;
  }

  std::vector<std::string> stageLabels() override {
    std::vector<std::string> out;
    for (int slot : slots_) {
      const filter_iirspec& s = bank_.iirSpecs[slot];
      const std::string order = " (order " + std::to_string(s.order) + ")";
      switch (s.filterType) {
        case 0: out.push_back("low-pass " + hz(s.freqHigh) + " Hz" + order); break;
        case 1: out.push_back("high-pass " + hz(s.freqLow) + " Hz" + order); break;
        case 2: out.push_back("band-pass " + hz(s.freqLow) + "-" + hz(s.freqHigh) + " Hz" + order); break;
        default: {
          const std::string what = slot >= 6 ? "mains harmonic " + std::to_string(slot - 5) + ", "
                                             : "notch ";
          out.push_back(what + "band-stop " + hz(s.freqLow) + "-" + hz(s.freqHigh) + " Hz" + order);
        }
      }
    }
    return out;
  }

  void start() override {
    bank_.reset4RunTimeFilter();
    windows_.assign(slots_.size() + 1, std::vector<double>(kHistory, 0.0));
  }

  void filterBlock(double* data, std::int64_t, std::int64_t first, std::int64_t last) override {
    const std::int64_t len = last - first;
    if (len <= 0 || slots_.empty()) return;
    for (auto& w : windows_)
      if (static_cast<std::int64_t>(w.size()) < kHistory + len) w.resize(kHistory + len, 0.0);
    std::copy(data + first, data + last, windows_[0].begin() + kHistory);
    // The run's first call sees restartPending and takes its baseline from x[0], which is the
    // zeroed history: no offset is subtracted, as in fastFilterInC.
    for (std::size_t j = 0; j < slots_.size(); ++j)
      bank_.diirInC(windows_[j].data(), windows_[j + 1].data(), kHistory, kHistory + len,
                    &bank_.iirSpecs[slots_[j]]);
    std::copy(windows_.back().begin() + kHistory, windows_.back().begin() + kHistory + len,
              data + first);
    for (auto& w : windows_)
      std::memmove(w.data(), w.data() + len, kHistory * sizeof(double));
  }

  bool supportsZeroPhase() const override { return true; }
  void filterZeroPhase(double* data, std::int64_t n) override {
    CDigitFiltCoefMak01Butterworth01ctf zeroPhase;
    zeroPhase.ctfFilterStd(data, n, CDigitFiltCoefMak01Butterworth::kSpecCount, bank_.iirSpecs);
  }

  std::vector<double> stageMagnitude(std::size_t stage, const std::vector<double>& freqs) override {
    filter_iirspec s = bank_.iirSpecs[slots_.at(stage)];
    std::vector<double> out;
    for (double f : freqs) out.push_back(CMFilterFaceqv::freqResponse(&s, rate_, f));
    return out;
  }

  std::vector<double> bankMagnitude(const std::vector<double>& freqs) override {
    std::vector<double> out(freqs.size(), 1.0);
    for (std::size_t j = 0; j < slots_.size(); ++j) {
      const std::vector<double> m = stageMagnitude(j, freqs);
      for (std::size_t i = 0; i < out.size(); ++i) out[i] *= m[i];
    }
    return out;
  }

  std::string filterInfo() override { return bank_.getFilterInfo(0); }

 private:
  // Longer than any stage's memory: the bank designs orders 4 and 2 (at most 9 coefficients).
  static constexpr std::int64_t kHistory = 64;
  CDigitFiltCoefMak01ButterworthAcqqv bank_;
  std::vector<int> slots_;
  std::vector<std::vector<double>> windows_;
  double rate_ = 0.0;
};

// ---------------------------------------------------------------------------------------------
// A bank whose filter object keeps the section states itself, one object per channel, filtered
// through filtDataAcq. A stage's response is measured with an impulse through a fresh object
// built from the same settings, the other stages disabled. `Filter` is the library object,
// `Stage` the record type its enabled stages are listed as.
template <class Filter, class Stage>
class StatefulBank : public ChannelBank {
 public:
  int configure(CFilterDcLtSetAcqqv& settings) override {
    prepare(filter_);
    const int count = filter_.setCheckCoefs(settings);
    if (count <= 0) return count;
    makeCoefs(filter_);
    settings_ = settings;
    return count;
  }

  std::vector<std::string> stageLabels() override {
    std::vector<std::string> out;
    for (Stage* s : stages(filter_)) out.push_back(label(*s));
    return out;
  }

  void start() override { filter_.reset(); }

  void filterBlock(double* data, std::int64_t length, std::int64_t first,
                   std::int64_t last) override {
    if (last > first) filter_.filtDataAcq(data, length, first, last - 1, 0);
  }

  std::vector<double> stageMagnitude(std::size_t stage, const std::vector<double>& freqs) override {
    return measured(static_cast<long>(stage), freqs);
  }
  std::vector<double> bankMagnitude(const std::vector<double>& freqs) override {
    return measured(-1, freqs);
  }
  std::string filterInfo() override { return filter_.getFilterInfo(0); }

 protected:
  // Called on every object before it is built from the settings.
  virtual void prepare(Filter&) {}
  virtual void makeCoefs(Filter& f) = 0;
  // The object's enabled stages, in filtering order.
  virtual std::vector<Stage*> stages(Filter& f) = 0;
  virtual std::string label(Stage& s) = 0;

  Filter filter_;

 private:
  std::vector<double> measured(long stageOnly, const std::vector<double>& freqs) {
    auto run = [this](std::vector<double>& h, long only) {
      CFilterDcLtSetAcqqv s = settings_;
      Filter fresh;
      prepare(fresh);
      if (fresh.setCheckCoefs(s) <= 0) return;
      makeCoefs(fresh);
      const auto list = stages(fresh);
      for (std::size_t i = 0; i < list.size(); ++i)
        if (only >= 0 && static_cast<long>(i) != only) list[i]->enabled = 0;
      fresh.reset();
      fresh.filtDataAcq(h.data(), static_cast<std::int64_t>(h.size()), 0,
                        static_cast<std::int64_t>(h.size()) - 1, 0);
      fresh.cleanCoefs();
    };
    return measuredMagnitude(run, stageOnly, settings_.acqSampleRate, freqs);
  }

  CFilterDcLtSetAcqqv settings_;
};

// ---------------------------------------------------------------------------------------------
// The direct-form Butterworth bank.
class DirectButterworthBank : public StatefulBank<CMeFilterButterworthqv, MeFilterButterworthx> {
 public:
  bool supportsZeroPhase() const override { return true; }
  void filterZeroPhase(double* data, std::int64_t n) override {
    filter_.filtDataZeroShift(data, n);
  }

 protected:
  void makeCoefs(CMeFilterButterworthqv& f) override { f.makeAllButterworthCoeffs(1); }

  std::vector<MeFilterButterworthx*> stages(CMeFilterButterworthqv& f) override {
    std::vector<MeFilterButterworthx*> out;
    for (const auto& s : f.filterList)
      if (s && s->enabled) out.push_back(s.get());
    return out;
  }

  std::string label(MeFilterButterworthx& s) override {
    const std::string sections = " (" + std::to_string(s.numSections) + " sections)";
    switch (s.filterType) {
      case 0: return "low-pass " + hz(s.lowpassFreq) + " Hz" + sections;
      case 1: return "high-pass " + hz(s.highpassFreq) + " Hz" + sections;
      case 2: return "band-pass " + hz(s.bandLowFreq) + "-" + hz(s.bandHighFreq) + " Hz" + sections;
      case 3: return "band-stop " + hz(s.stopLowFreq) + "-" + hz(s.stopHighFreq) + " Hz" + sections;
      default: return "stage of type " + std::to_string(s.filterType);
    }
  }
};

// ---------------------------------------------------------------------------------------------
// The biquad facade with one of its three cascade classes.
std::string biquadTypeName(int type) {
  static const char* names[] = {"low-pass", "high-pass", "band-pass", "band-pass", "notch",
                                "type 5",   "peak",      "low-shelf", "high-shelf"};
  return type >= 0 && type <= 8 ? names[type] : "type " + std::to_string(type);
}

class BiquadBank : public StatefulBank<CRtfBiquadFace, digitfilt::BiquadStageRecord> {
 public:
  explicit BiquadBank(int classIndex) : classIndex_(classIndex) {}

 protected:
  void prepare(CRtfBiquadFace& f) override { f.classIndex = classIndex_; }
  void makeCoefs(CRtfBiquadFace& f) override { f.makeAllBiquadCoeffs(1); }

  std::vector<digitfilt::BiquadStageRecord*> stages(CRtfBiquadFace& f) override {
    std::vector<digitfilt::BiquadStageRecord*> out;
    CRtf0Basic* member = f.getBiquad(0);
    if (!member) return out;
    for (const auto& s : member->biquadList)
      if (s && s->enabled) out.push_back(s.get());
    return out;
  }

  std::string label(digitfilt::BiquadStageRecord& r) override {
    if (auto* p = dynamic_cast<BIQUAD_PARAM1*>(&r))
      return std::string(CRtf1Biquad::biquad_getFilterName(p)) + " " + hz(p->fc) + " Hz, Q " +
             hz(p->q);
    if (auto* p2 = dynamic_cast<BIQUAD_PARAM2*>(&r))
      return biquadTypeName(p2->type) + " " + hz(p2->fc) + " Hz, Q " + hz(p2->q);
    if (auto* p3 = dynamic_cast<BIQUAD_PARAM3*>(&r))
      return biquadTypeName(p3->type) + " " + hz(p3->fc) + " Hz, Q " + hz(p3->q);
    return "biquad stage";
  }

 private:
  int classIndex_;
};

}  // namespace

void ChannelBank::filterZeroPhase(double*, std::int64_t) {
  throw ToolError("this bank has no zero-phase filtering");
}

std::vector<std::string> bankNames() {
  return {"butterworth", "direct-butterworth", "biquad0", "biquad1", "biquad2"};
}

BankKind parseBankKind(const std::string& name) {
  const std::vector<std::string> names = bankNames();
  for (std::size_t i = 0; i < names.size(); ++i)
    if (names[i] == name) return static_cast<BankKind>(i);
  throw ToolError("--bank: unknown bank \"" + name +
                  "\" (butterworth, direct-butterworth, biquad0, biquad1 or biquad2)");
}

std::string bankName(BankKind kind) { return bankNames().at(static_cast<std::size_t>(kind)); }

std::string bankClassName(BankKind kind) {
  switch (kind) {
    case BankKind::kButterworth: return "CDigitFiltCoefMak01ButterworthAcqqv";
    case BankKind::kDirectButterworth: return "CMeFilterButterworthqv";
    case BankKind::kBiquad0: return "CRtfBiquadFace class 0: CRtf1Biquad";
    case BankKind::kBiquad1: return "CRtfBiquadFace class 1: CRtf2Biquad";
    case BankKind::kBiquad2: return "CRtfBiquadFace class 2: CRtf3Biquad";
  }
  return "?";
}

std::string bankChoicesHelp() {
  return "  butterworth (default)  CDigitFiltCoefMak01ButterworthAcqqv\n"
         "  direct-butterworth     CMeFilterButterworthqv (lists no mains comb)\n"
         "  biquad0                CRtfBiquadFace class 0, CRtf1Biquad\n"
         "  biquad1                CRtfBiquadFace class 1, CRtf2Biquad\n"
         "  biquad2                CRtfBiquadFace class 2, CRtf3Biquad (unit stages)";
}

std::unique_ptr<ChannelBank> makeBank(BankKind kind) {
  switch (kind) {
    case BankKind::kButterworth: return std::make_unique<AcqButterworthBank>();
    case BankKind::kDirectButterworth: return std::make_unique<DirectButterworthBank>();
    case BankKind::kBiquad0: return std::make_unique<BiquadBank>(0);
    case BankKind::kBiquad1: return std::make_unique<BiquadBank>(1);
    case BankKind::kBiquad2: return std::make_unique<BiquadBank>(2);
  }
  return nullptr;
}

}  // namespace digitfilt::tool
