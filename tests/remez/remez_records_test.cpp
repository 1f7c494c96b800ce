#include <digitfilt/digitfilt.h>
#include <gtest/gtest.h>

#include <vector>

namespace {

// Opens the protected buffer allocation.
struct OpenFreqResp : CFreqResp {
  using CFreqResp::newFreqRespBuffer;
};

TEST(RemezWorkspace, ArraysAreDoubledAndZeroFilled) {
  CRemezData d;
  ASSERT_EQ(d.newRemezData(129, 11), 1);
  EXPECT_TRUE(d.gridCap == 258 && d.extCap == 22 && d.gridLength() == 258);
  for (int i = 0; i < 258; ++i)
    ASSERT_EQ(d.grid[i] + d.desired[i] + d.weights[i] + d.error[i], 0.0) << i;
  for (int i = 0; i < 260; ++i) ASSERT_EQ(d.foundExt[i], 0) << i;
  for (int i = 0; i < 22; ++i)
    ASSERT_EQ(d.sampledA[i] + d.ad[i] + d.xCos[i] + d.yVal[i] + d.ext[i], 0.0) << i;
}

TEST(RemezWorkspace, ReallocationReplacesAndSizeBelowOneReleases) {
  CRemezData d;
  ASSERT_EQ(d.newRemezData(4, 2), 1);
  d.grid[0] = 5.0;
  ASSERT_EQ(d.newRemezData(6, 3), 1);
  EXPECT_EQ(d.grid[0], 0.0);
  EXPECT_TRUE(d.gridCap == 12 && d.extCap == 6);
  EXPECT_EQ(d.newRemezData(0, 5), 0);  // fails after releasing the earlier arrays
  EXPECT_TRUE(d.grid == nullptr && d.ext == nullptr && d.gridLength() == 0);
  EXPECT_EQ(d.gridCap, 12);  // the caps are not reset
  EXPECT_EQ(d.newRemezData(5, 0), 0);
  EXPECT_EQ(d.freeRemezData(), 1);
}

TEST(RemezWorkspace, CopiesShareTheArrays) {
  CRemezData a;
  ASSERT_EQ(a.newRemezData(4, 2), 1);
  CRemezData b;
  b = a;
  EXPECT_EQ(b.grid, a.grid);
  b.grid[3] = 7.0;
  EXPECT_EQ(a.grid[3], 7.0);
  a.freeRemezData();
  EXPECT_EQ(b.grid[3], 7.0);  // still alive through the copy
}

TEST(RemezResponseBuffers, FewerThanOnePointMeans250) {
  OpenFreqResp r;
  ASSERT_EQ(r.newFreqRespBuffer(0), 1);
  EXPECT_EQ(r.count, 250);
  r.gainsDb[249] = 1.0;
  ASSERT_EQ(r.newFreqRespBuffer(7), 1);
  EXPECT_EQ(r.count, 7);
  EXPECT_EQ(r.freeFreqRespBuffer(), 1);
  EXPECT_EQ(r.amps, nullptr);
}

TEST(RemezRecord, TapArrayCarriesASpareZeroSlot) {
  Filter_Remez f;
  ASSERT_NE(f.allocCoefs(4), nullptr);
  EXPECT_EQ(std::vector<double>(f.coefs, f.coefs + 5), std::vector<double>(5, 0.0));
  Filter_Remez copy = f;
  copy.coefs[1] = 2.0;
  EXPECT_EQ(f.coefs[1], 2.0);  // copies share the taps
  f.releaseArrays();
  EXPECT_EQ(f.coefs, nullptr);
  EXPECT_EQ(copy.coefs[1], 2.0);
  EXPECT_EQ(f.allocCoefs(-1), nullptr);
}

}  // namespace
