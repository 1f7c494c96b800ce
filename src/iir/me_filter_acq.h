#pragma once
// Small polymorphic filters a host attaches to an acquisition channel: an IIR stage run from a
// copied stage record, first-order high- and low-pass smoothers, a notch holder, and power-line
// removers that subtract the mains-periodic part of the signal (one of them after resampling to
// a whole number of samples per mains period). Each filters blocks in place and carries its state
// from block to block.
//
// Copy construction is partial on purpose: only passFreq and the extra values (deep-copied) are
// taken, so the new object starts without a stage record and with clear rings. Assignment copies
// every field; the extra values and the resampling work array are then shared.
#include <cstdint>
#include <memory>
#include <vector>

#include "digitfilt/foundation/records.h"

class CMeFilterAcq {
 public:
  static constexpr int kRing = 20;

  CMeFilterAcq() = default;
  // passFreq and a copy of n extra values; nothing else is set.
  CMeFilterAcq(double freq, int n, double* values);
  // Default state with the whole record taken as it is (the order is not adjusted).
  explicit CMeFilterAcq(const filter_iirspec& s);
  CMeFilterAcq(const CMeFilterAcq& other);
  CMeFilterAcq& operator=(const CMeFilterAcq& other) = default;

  // Takes the record; an enabled low-pass, high-pass, band-pass or band-stop is run at order 2.
  virtual void setFilterParameters(const filter_iirspec& s);
  // Filters data[0..n-1] in place: the stage's difference equation over a 20-entry ring.
  // Nothing happens while the record is disabled.
  virtual void filter(double* data, std::int64_t n);
  // Virtual so that deleting through a base pointer releases a derived object's buffers.
  virtual ~CMeFilterAcq() = default;

  // passFreq = freq, passOn = 1, passArg = arg, passMode = (flag != 0); returns 0.
  int PassFilter(double freq, int flag, int arg);
  double getSettlingTime() const { return 0.0; }

  filter_iirspec spec;
  std::int64_t ringIndex = 0;
  std::int64_t period = 0;  // samples per mains period (power-line removers)
  double meanLength = 0.0;  // divisor of the power-line running mean
  double xRing[kRing][kRing] = {};
  double yRing[kRing][kRing] = {};
  std::int32_t passOn = 0;
  std::int32_t passArg = 0;
  std::int32_t passMode = 0;
  double passFreq = 0.0;
  double passFreq2 = 0.0;
  std::int32_t extraCount = 0;
  double* extra = nullptr;

 private:
  std::shared_ptr<double[]> extraOwner_;
};

// First-order high-pass: the input minus its exponential average, alpha = 2 pi freqLow / rate.
class CMeFilterAcqHPFilter : public CMeFilterAcq {
 public:
  CMeFilterAcqHPFilter() = default;
  CMeFilterAcqHPFilter(const CMeFilterAcqHPFilter& other) : CMeFilterAcq(other) {}
  CMeFilterAcqHPFilter& operator=(const CMeFilterAcqHPFilter& other) = default;

  // Base record handling, then alpha into b[0] and a cleared average.
  void setFilterParameters(const filter_iirspec& s) override;
  // Runs whether or not the record is enabled.
  void filter(double* data, std::int64_t n) override;
  // 0.275 / passFreq, or 0 without a frequency.
  double getSettlingTime() const;
};

// First-order low-pass: the exponential average, alpha = 2 pi freqHigh / rate.
class CMeFilterAcqLPFilter : public CMeFilterAcq {
 public:
  CMeFilterAcqLPFilter() = default;
  CMeFilterAcqLPFilter(const CMeFilterAcqLPFilter& other) : CMeFilterAcq(other) {}
  CMeFilterAcqLPFilter& operator=(const CMeFilterAcqLPFilter& other) = default;

  void setFilterParameters(const filter_iirspec& s) override;
  void filter(double* data, std::int64_t n) override;
  // 1 / (2 pi passFreq), or 0 without a frequency.
  double getSettlingTime() const;
};

// Holds a notch's two frequencies; filters as the IIR stage of its record.
class CMeFilterAcqNotchFilter : public CMeFilterAcq {
 public:
  CMeFilterAcqNotchFilter() = default;
  CMeFilterAcqNotchFilter(double f1, double f2);
  CMeFilterAcqNotchFilter(const CMeFilterAcqNotchFilter& other) : CMeFilterAcq(other) {}
  CMeFilterAcqNotchFilter& operator=(const CMeFilterAcqNotchFilter& other) = default;

  // 1 / (2 passFreq) + 1 / (3.14 passFreq2) (3.14 as hosts expect), or 0 when either is 0.
  double getSettlingTime() const;
};

// Mains remover: a running mean m and one exponentially averaged value c[i] per phase of the
// mains period; the output is x - (c[i] - m). The 50 Hz or 60 Hz mains is chosen by the centre
// of the record's band, alpha = (freqHigh - freqLow) / 20.
class CMeFilterAcqPowerLine : public CMeFilterAcq {
 public:
  // Longest mains period, in samples, a remover accepts.
  static constexpr std::int64_t kMaxPeriod = std::int64_t{1} << 20;

  CMeFilterAcqPowerLine() = default;
  CMeFilterAcqPowerLine(const CMeFilterAcqPowerLine& other) : CMeFilterAcq(other) {}
  CMeFilterAcqPowerLine& operator=(const CMeFilterAcqPowerLine& other) = default;

  // Sets period = rint(rate / mains) and meanLength = period, and clears the mean and the phases.
  // A rate giving no whole sample per period, or more than kMaxPeriod, is reported and leaves
  // the remover off (period 0).
  void setFilterParameters(const filter_iirspec& s) override;
  // The running mean divides by meanLength, which a host may lengthen after setting up.
  void filter(double* data, std::int64_t n) override;

 protected:
  // One value per phase: the first `period` entries of yRing, or a longer array beyond 400.
  double* phaseValues();
  void clearPhases();
  // The comb over v[0..count-1] in place, mean divisor p; phase and mean carried in the object.
  void runComb(double* v, std::int64_t count, double p);
  // period from the mains and a rate, checked; false (period 0, message shown) when refused.
  bool setPeriod(double samplesPerPeriod);
  // 50 or 60 Hz from the centre of the record's band.
  double mainsFrequency() const;

 private:
  std::vector<double> phaseOverflow_;
};

// Mains remover for rates that are not a multiple of the mains: each block is resampled linearly
// onto a grid of G = ceil(rate / mains) mains samples per second, combed there with alpha 0.8
// and a mean over one period, and resampled back. The output lags the input by one sample: a
// grid point after the last sample of a block needs the next block's first sample, and the lag
// lets the grid position and the last values carry over, so that how a record is split into
// blocks does not change the result.
class CMeFilterAcqPowerLine02IntPol : public CMeFilterAcqPowerLine {
 public:
  CMeFilterAcqPowerLine02IntPol() = default;
  CMeFilterAcqPowerLine02IntPol(const CMeFilterAcqPowerLine02IntPol& other)
      : CMeFilterAcqPowerLine(other) {}
  CMeFilterAcqPowerLine02IntPol& operator=(const CMeFilterAcqPowerLine02IntPol& other) =
      default;

  // Sets the grid, period = rint(G / mains) and clears the comb and the carried values. Rates
  // below mains / 1024 (more than 1024 grid points per sample) are reported and leave the
  // remover off (period 0), as do periods the plain remover refuses.
  virtual void setFilterParametersIntPol(const filter_iirspec& s);
  virtual void filterIntPol(double* data, std::int64_t n);

  double invRate = 0.0;
  double invGridRate = 0.0;
  std::int64_t workCapacity = 0;
  double* work = nullptr;  // grid samples of one block, grown as needed
  // Carried between blocks: position of the next grid point after the last sample (in samples;
  // 0 until the first sample arrives), the last sample, the combed value of the last grid point
  // and the grid step in samples.
  double gridPhase = 0.0;
  double lastSample = 0.0;
  double lastGridValue = 0.0;
  double gridStep = 0.0;

 private:
  void reserveWork(std::int64_t need);
  std::shared_ptr<double[]> workOwner_;
};

class CMeFilterAcqPowerLineqv : public CMeFilterAcqPowerLine02IntPol {
 public:
  CMeFilterAcqPowerLineqv() = default;
  CMeFilterAcqPowerLineqv(const CMeFilterAcqPowerLineqv& other)
      : CMeFilterAcqPowerLine02IntPol(other) {}
  CMeFilterAcqPowerLineqv& operator=(const CMeFilterAcqPowerLineqv& other) = default;
};
