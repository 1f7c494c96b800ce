#include <vector>

#include <gtest/gtest.h>

#include <digitfilt/digitfilt.h>

#include "support/biquad_support.h"
#include "support/message_capture.h"

namespace {

CFilterDcLtSetAcqqv lowPassSettings() {
  CFilterDcLtSetAcqqv s = digitfilt::test::readySettings();
  s.lowPassOn = s.bqHighShelfOn = 1;
  s.lowPassFreq = 100.0;
  s.bqHighShelfFreq = 200.0;
  return s;
}

TEST(RtfBiquadFace, ClassComesFromClassIndexNotTheArgument) {
  CRtfBiquadFace face;
  EXPECT_EQ(face.setBiquadClass(2, 1), 1);
  EXPECT_NE(face.biquad1, nullptr);
  EXPECT_EQ(face.biquad3, nullptr);
  EXPECT_EQ(face.getBiquad(0), face.biquad1.get());

  face.classIndex = 2;
  EXPECT_EQ(face.getBiquad(0), nullptr);  // not created without asking
  EXPECT_EQ(face.setBiquadClass(0, 0), 1);
  EXPECT_EQ(face.biquad3, nullptr);
  CRtf0Basic* made = face.getBiquad(1);
  EXPECT_EQ(made, face.biquad3.get());
  EXPECT_NE(made, nullptr);
  EXPECT_NE(face.biquad1, nullptr);  // the old member stays alive
}

TEST(RtfBiquadFace, ForwardsToTheCurrentMember) {
  CRtfBiquadFace face;
  face.classIndex = 1;
  CFilterDcLtSetAcqqv s = lowPassSettings();
  EXPECT_EQ(face.setCheckCoefs(s), 2);  // creates the CRtf2Biquad first
  ASSERT_NE(face.biquad2, nullptr);
  EXPECT_EQ(static_cast<BIQUAD_PARAM2*>(face.biquad2->biquadList.at(1))->type, 8);
  EXPECT_EQ(face.makeAllBiquadCoeffs(0), 2);
  EXPECT_EQ(face.getEnableFilters(), 2);

  CRtf2Biquad direct;
  CFilterDcLtSetAcqqv s2 = lowPassSettings();
  direct.setCheckCoefs(s2);
  direct.makeAllBiquadCoeffs(0);
  std::vector<double> x = digitfilt::test::randomSignal(200, 11), y = x;
  EXPECT_EQ(face.filtDataAcq(x.data(), 200, 0, 199, 4), 1);
  direct.filtDataAcq(y.data(), 200, 0, 199, 4);
  EXPECT_EQ(x, y);
  EXPECT_EQ(face.biquad2->blockChannel, 4);
  EXPECT_EQ(face.reset(), 1);
  EXPECT_EQ(face.biquad2->firstCall, 1);
  EXPECT_EQ(face.biquad2->blockChannel, 0);
  EXPECT_EQ(face.getFilterInfo(0), "");
  EXPECT_EQ(face.cleanCoefs(), 1);
  EXPECT_EQ(face.getEnableFilters(), 0);
}

TEST(RtfBiquadFace, MissingMemberOrUnknownClassGivesZero) {
  CRtfBiquadFace face;
  std::vector<double> x(8, 1.0);
  EXPECT_EQ(face.filtDataAcq(x.data(), 8, 0, 7, 0), 0);
  EXPECT_EQ(x, std::vector<double>(8, 1.0));
  EXPECT_EQ(face.makeAllBiquadCoeffs(0), 0);
  EXPECT_EQ(face.cleanCoefs(), 0);
  EXPECT_EQ(face.reset(), 0);

  face.setBiquadClass(0, 1);
  face.classIndex = 3;
  CFilterDcLtSetAcqqv s = lowPassSettings();
  EXPECT_EQ(face.setBiquadClass(3, 1), 0);
  EXPECT_EQ(face.getBiquad(1), nullptr);
  EXPECT_EQ(face.setCheckCoefs(s), 0);
  EXPECT_EQ(s.lowPassFreq, 100.0);
  EXPECT_EQ(face.makeAllBiquadCoeffs(0), 0);
  EXPECT_EQ(face.filtDataAcq(x.data(), 8, 0, 7, 0), 0);
  EXPECT_EQ(face.reset(), 0);
  EXPECT_EQ(face.getEnableFilters(), 0);
  EXPECT_EQ(face.cleanFlt(), 1);
  EXPECT_EQ(face.biquad1, nullptr);
}

TEST(RtfBiquadFace, AssignmentCopiesOnlyAClassZeroCascade) {
  CRtfBiquadFace a;
  CFilterDcLtSetAcqqv s = lowPassSettings();
  a.setCheckCoefs(s);
  a.makeAllBiquadCoeffs(0);
  CRtfBiquadFace b;
  b.classIndex = 2;
  b.setBiquadClass(0, 1);
  b = a;
  EXPECT_EQ(b.classIndex, 0);
  EXPECT_EQ(b.biquad3, nullptr);  // freed by the assignment
  ASSERT_NE(b.biquad1, nullptr);
  EXPECT_NE(b.biquad1, a.biquad1);
  EXPECT_EQ(b.getEnableFilters(), 2);
  EXPECT_NE(b.biquad1->biquadList.at(0), a.biquad1->biquadList.at(0));

  for (int cls : {1, 2}) {
    CRtfBiquadFace src;
    src.classIndex = cls;
    CFilterDcLtSetAcqqv s2 = lowPassSettings();
    src.setCheckCoefs(s2);
    const CRtfBiquadFace copy(src);
    EXPECT_EQ(copy.classIndex, cls);
    EXPECT_EQ(copy.biquad1, nullptr);
    EXPECT_EQ(copy.biquad2, nullptr);
    EXPECT_EQ(copy.biquad3, nullptr);
  }
}

}  // namespace
