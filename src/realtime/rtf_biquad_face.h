#pragma once
// Facade over the three biquad cascades: one object per channel, the working class chosen by
// the public classIndex (0 CRtf1Biquad, 1 CRtf2Biquad, 2 CRtf3Biquad).
#include <cstdint>
#include <memory>
#include <string>

#include "digitfilt/realtime/rtf_biquad.h"
#include "digitfilt/realtime/rtf_biquad_cascade.h"

class CRtfBiquadFace {
 public:
  CRtfBiquadFace() = default;
  CRtfBiquadFace(const CRtfBiquadFace& other);
  // Frees every member and copies classIndex; only a class-0 cascade is copied, so a facade of
  // class 1 or 2 ends without a member. Hosts depend on that; keep it.
  CRtfBiquadFace& operator=(const CRtfBiquadFace& other);
  ~CRtfBiquadFace() = default;

  // `cls` is ignored: the class always comes from classIndex. Creates the current member when
  // asked and missing. 1 for a known classIndex, else 0.
  int setBiquadClass(int cls, int create);
  // The current member (created when asked), or null.
  CRtf0Basic* getBiquad(int create);

  // Forwarded to the current member; setCheckCoefs creates it first. 0 without a member or for
  // an unknown classIndex.
  int setCheckCoefs(CFilterDcLtSetAcqqv& settings);
  int cleanCoefs();
  int makeAllBiquadCoeffs(int onlyEnabled);
  int filtDataAcq(double* data, std::int64_t length, std::int64_t start, std::int64_t end,
                  int channel);
  int reset();
  int getEnableFilters();
  std::string getFilterInfo(int);
  // Destroys all three members, not only the current one. Always 1.
  int cleanFlt();

  std::int32_t classIndex = 0;
  std::unique_ptr<CRtf1Biquad> biquad1;
  std::unique_ptr<CRtf2Biquad> biquad2;
  std::unique_ptr<CRtf3Biquad> biquad3;

 private:
  CRtf0Basic* current() const;
};
