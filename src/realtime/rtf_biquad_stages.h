#pragma once
// Pieces shared by the biquad cascades (CRtf1Biquad, CRtf2Biquad, CRtf3Biquad): the cookbook
// section terms and the walks over a cascade's stage list.
#include <cstdint>
#include <memory>
#include <new>

namespace digitfilt {

// Sections handed to a block kernel at a time; longer cascades run chunk after chunk, which is
// the same as stage after stage.
constexpr int kStageChunk = 8;

// Audio-EQ cookbook section terms before the division by a0; the defaults pass the signal.
struct CookbookTerms {
  double b0 = 1, b1 = 0, b2 = 0, a0 = 1, a1 = 0, a2 = 0;
};

// Terms of the cookbook types every cascade designs alike: 0 low-pass, 1 high-pass, 3 band-pass
// (0 dB peak gain), 4 notch, 6 peak, 7 low shelf, 8 high shelf. `alpha` is the bandwidth term
// (the peak's included) and `beta` the shelves' 2 sqrt(A) alpha. False, `t` unchanged, for
// any other type.
bool cookbookTerms(int type, double A, double c, double alpha, double beta, CookbookTerms& t);

// The part of data[start..end] inside an array of `length` samples (first > last when none).
struct SampleSpan {
  std::int64_t first;
  std::int64_t last;
};
SampleSpan spanInArray(std::int64_t length, std::int64_t start, std::int64_t end);

// A heap stage record of type Record with the parameters every settings cascade stores, or null
// when memory is short.
template <class Record>
std::unique_ptr<Record> newSettingsStage(int type, double sampleRate, double fc, double q,
                                         double peakGain) {
  std::unique_ptr<Record> rec(new (std::nothrow) Record());
  if (rec) {
    rec->type = static_cast<decltype(rec->type)>(type);
    rec->sampleRate = sampleRate;
    rec->fc = fc;
    rec->q = q;
    rec->peakGain = peakGain;
  }
  return rec;
}

// Calls make(record) for every stage of `list` that is a Record (records of another cascade's
// type, put in by a host, are not its stages), only the enabled ones when asked; returns how many.
template <class Record, class List, class Make>
int forEachCascadeStage(const List& list, int onlyEnabled, Make make) {
  int count = 0;
  for (const auto& stage : list) {
    auto* rec = dynamic_cast<Record*>(stage.get());
    if (!rec || (onlyEnabled != 0 && rec->enabled == 0)) continue;
    make(rec);
    ++count;
  }
  return count;
}

// Hands the enabled Record stages of `list`, in order, to run(stages, n) kStageChunk at a time.
template <class Record, class List, class Run>
void forEachEnabledChunk(const List& list, Run run) {
  Record* stages[kStageChunk];
  int n = 0;
  for (const auto& stage : list) {
    auto* rec = dynamic_cast<Record*>(stage.get());
    if (!rec || rec->enabled == 0) continue;
    stages[n++] = rec;
    if (n == kStageChunk) {
      run(stages, n);
      n = 0;
    }
  }
  if (n > 0) run(stages, n);
}

}  // namespace digitfilt
