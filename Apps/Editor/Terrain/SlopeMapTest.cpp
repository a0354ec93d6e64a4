// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Terrain/SlopeMap.h"

#include <gtest/gtest.h>

#include "Apps/Editor/Terrain/TerrainTesting.h"
#include "Tests/Support/HostTesting.h"

namespace {

using TerrainTest::MakeField;
using Testing::kNan;
using Pixel = std::array<std::uint8_t, 4>;

TEST(SlopeMap, FindsSlopesFromWhatIsThere) {
  EXPECT_EQ(FindSlope({1.0F, 5.0F, 2.0F}, {0.0, 1.0, 2.0}), 0.5F);
  EXPECT_EQ(FindSlope({kNan, 1.0F, 2.0F}, {0.0, 1.0, 1.5}), 2.0F);
  EXPECT_EQ(FindSlope({4.0F, 1.0F, kNan}, {0.0, 1.0, 2.0}), -3.0F);
  EXPECT_EQ(FindSlope({kNan, 1.0F, kNan}, {0.0, 1.0, 2.0}), 0.0F);
  EXPECT_EQ(FindSlope({kNan, kNan, 1.0F}, {0.0, 1.0, 2.0}), 0.0F);
  EXPECT_EQ(FindSlope({3.0F, 3.0F, 3.0F}, {1.0, 1.0, 1.0}), 0.0F);
}

// Half a height per unit of space is a slope of 0.21: 0.21 / 1.21 of 127 is 22.
TEST(SlopeMap, HoldsTheSlopesOfEachPoint) {
  const SlopeMap map = MakeSlopeMap(*MakeField(3, 2, {0.0F, 0.5F, 1.0F, 0.0F, 0.5F, 1.0F}));
  EXPECT_EQ(map.level, 0);
  EXPECT_EQ(map.size_x, 3);
  EXPECT_EQ(map.size_y, 2);
  EXPECT_EQ(map.pixels, std::vector<Pixel>(6, Pixel{149, 127, 0, 255}));
  // Downward in the image is downward in space: the slope along y is -0.21 for heights that grow with rows.
  const SlopeMap turned = MakeSlopeMap(*MakeField(2, 3, {0.0F, 0.0F, 0.5F, 0.5F, 1.0F, 1.0F}));
  EXPECT_EQ(turned.pixels, std::vector<Pixel>(6, Pixel{127, 105, 0, 255}));
}

TEST(SlopeMap, IsFlatInHoles) {
  const SlopeMap map = MakeSlopeMap(*MakeField(2, 2, {kNan, kNan, 0.0F, kNan}));
  EXPECT_EQ(map.pixels, std::vector<Pixel>(4, Pixel{127, 127, 0, 255}));
}

TEST(SlopeMap, IsMadeFromASmallerLevelOfALargeImage) {
  const SlopeMap map = MakeSlopeMap(*MakeField(4098, 2, [](int x, int) { return x / 4097.0; }));
  // 4098 and 2049 are too many.
  EXPECT_EQ(map.level, 2);
  EXPECT_EQ(map.size_x, 1025);
  EXPECT_EQ(map.size_y, 1);
}

}  // namespace
