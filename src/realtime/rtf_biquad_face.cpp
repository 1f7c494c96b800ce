#include "digitfilt/realtime/rtf_biquad_face.h"

#include <new>

namespace {

template <class T>
bool ensureMember(std::unique_ptr<T>& member) {
  if (!member) member.reset(new (std::nothrow) T());
  return member != nullptr;
}

}  // namespace

CRtfBiquadFace::CRtfBiquadFace(const CRtfBiquadFace& other) { *this = other; }

CRtfBiquadFace& CRtfBiquadFace::operator=(const CRtfBiquadFace& other) {
  if (this == &other) return *this;
  cleanFlt();
  classIndex = other.classIndex;
  // Classes 1 and 2 copy only when the target's member survived cleanFlt, which it never does.
  switch (classIndex) {
    case 0:
      if (other.biquad1) biquad1 = std::make_unique<CRtf1Biquad>(*other.biquad1);
      break;
    case 1:
      if (biquad2) *biquad2 = *other.biquad2;
      break;
    case 2:
      if (biquad3) *biquad3 = *other.biquad3;
      break;
    default:
      break;
  }
  return *this;
}

CRtf0Basic* CRtfBiquadFace::current() const {
  switch (classIndex) {
    case 0: return biquad1.get();
    case 1: return biquad2.get();
    case 2: return biquad3.get();
    default: return nullptr;
  }
}

int CRtfBiquadFace::setBiquadClass(int, int create) {
  switch (classIndex) {
    case 0:
      if (create) ensureMember(biquad1);
      return 1;
    case 1:
      if (create) ensureMember(biquad2);
      return 1;
    case 2:
      if (create) ensureMember(biquad3);
      return 1;
    default:
      return 0;
  }
}

CRtf0Basic* CRtfBiquadFace::getBiquad(int create) {
  setBiquadClass(classIndex, create);
  return current();
}

int CRtfBiquadFace::setCheckCoefs(CFilterDcLtSetAcqqv& settings) {
  switch (classIndex) {
    case 0: return ensureMember(biquad1) ? biquad1->setCheckCoefs(settings) : 0;
    case 1: return ensureMember(biquad2) ? biquad2->setCheckCoefs(settings) : 0;
    case 2: return ensureMember(biquad3) ? biquad3->setCheckCoefs(settings) : 0;
    default: return 0;
  }
}

int CRtfBiquadFace::cleanCoefs() {
  CRtf0Basic* member = current();
  return member ? member->cleanCoefs() : 0;
}

int CRtfBiquadFace::makeAllBiquadCoeffs(int onlyEnabled) {
  switch (classIndex) {
    case 0: return biquad1 ? biquad1->makeAllBiquadCoeffs(onlyEnabled) : 0;
    case 1: return biquad2 ? biquad2->makeAllBiquadCoeffs(onlyEnabled) : 0;
    case 2: return biquad3 ? biquad3->makeAllBiquadCoeffs(onlyEnabled) : 0;
    default: return 0;
  }
}

int CRtfBiquadFace::filtDataAcq(double* data, std::int64_t length, std::int64_t start,
                                std::int64_t end, int channel) {
  switch (classIndex) {
    case 0: return biquad1 ? biquad1->filtDataAcq(data, length, start, end, channel) : 0;
    case 1: return biquad2 ? biquad2->filtDataAcq(data, length, start, end, channel) : 0;
    case 2: return biquad3 ? biquad3->filtDataAcq(data, length, start, end, channel) : 0;
    default: return 0;
  }
}

int CRtfBiquadFace::reset() {
  CRtf0Basic* member = current();
  return member ? member->reset() : 0;
}

int CRtfBiquadFace::getEnableFilters() {
  CRtf0Basic* member = current();
  return member ? member->getEnableFilters() : 0;
}

std::string CRtfBiquadFace::getFilterInfo(int) { return std::string(); }

int CRtfBiquadFace::cleanFlt() {
  biquad1.reset();
  biquad2.reset();
  biquad3.reset();
  return 1;
}
