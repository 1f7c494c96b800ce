#pragma once
// Acquisition settings for the bank and cascade tests.
#include <digitfilt/digitfilt.h>

namespace digitfilt::test {

// A ready settings record: rate and one channel set, every stage off.
inline CFilterDcLtSetAcqqv readyAcqSettings(double rate) {
  CFilterDcLtSetAcqqv s;
  s.acqSampleRate = rate;
  s.channelCount = 1;
  return s;
}

}  // namespace digitfilt::test
