// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Terrain/HeightField.h"

#include <gtest/gtest.h>

#include <cmath>

#include "Apps/Editor/Terrain/TerrainTesting.h"
#include "Tests/Support/HostTesting.h"

namespace {

using TerrainTest::MakeField;
using Testing::kInfinity;
using Testing::kLargest;
using Testing::kNan;

TEST(HeightField, SpansTheDeclaredRange) {
  const auto image = Testing::MakeImage(2, 2, ColorMode::kValue, {0.0F, 1.0F, 2.0F, 2.0F});
  image->SetValueLowHigh(-2.0F, 6.0F);
  const HeightField field(ScEng::ViewImage::Make(*image));
  EXPECT_EQ(field.GetPixel(0, 0), 0.25F);
  EXPECT_EQ(field.GetPixel(1, 0), 0.375F);
  EXPECT_EQ(field.GetLowest(), 0.25F);
  EXPECT_EQ(field.GetHighest(), 0.5F);
}

TEST(HeightField, WidensTheRangeToWhatTheImageHolds) {
  const auto field = MakeField(2, 2, {-1.0F, 1.0F, 3.0F, 0.0F});
  EXPECT_EQ(field->GetPixel(0, 0), 0.0F);
  EXPECT_EQ(field->GetPixel(1, 0), 0.5F);
  EXPECT_EQ(field->GetPixel(0, 1), 1.0F);
  EXPECT_EQ(field->GetPixel(1, 1), 0.25F);
}

TEST(HeightField, HasHolesWhereThereIsNoFiniteValue) {
  const auto field = MakeField(2, 2, {0.0F, kNan, kInfinity, 1.0F});
  EXPECT_TRUE(field->HasHoles());
  EXPECT_TRUE(field->HasSurface());
  EXPECT_SAME(field->GetPixel(1, 0), kNan);
  EXPECT_SAME(field->GetPixel(0, 1), kNan);
  EXPECT_EQ(field->GetPixel(1, 1), 1.0F);
  EXPECT_FALSE(MakeField(2, 2, {0.0F, 1.0F, 0.5F, 1.0F})->HasHoles());
}

TEST(HeightField, HasNoSurfaceWithoutQuadsOrHeights) {
  EXPECT_FALSE(MakeField(0, 0, std::vector<float>())->HasSurface());
  EXPECT_FALSE(MakeField(3, 1, {0.0F, 1.0F, 0.0F})->HasSurface());
  EXPECT_FALSE(MakeField(1, 3, {0.0F, 1.0F, 0.0F})->HasSurface());
  EXPECT_FALSE(MakeField(2, 2, {kNan, kNan, kInfinity, kNan})->HasSurface());
  EXPECT_TRUE(MakeField(2, 2, {0.0F, 0.0F, 0.0F, 0.0F})->HasSurface());
}

TEST(HeightField, TakesRangesBeyondWhatAFloatHolds) {
  const auto field = MakeField(2, 2, {-kLargest, kLargest, 0.0F, 0.0F});
  for (int i = 0; i < 4; ++i) EXPECT_TRUE(std::isfinite(field->GetPixel(i % 2, i / 2))) << i;
}

TEST(HeightField, LiesInSpaceWithItsLongerSideFromMinusOneToOne) {
  const auto field = MakeField(5, 3, [](int, int) { return 0.0; });
  EXPECT_EQ(field->GetSpacing(), 0.5);
  EXPECT_EQ(field->GetPlaceX(0), -1.0);
  EXPECT_EQ(field->GetPlaceX(4), 1.0);
  EXPECT_EQ(field->GetPlaceY(0), 0.5);
  EXPECT_EQ(field->GetPlaceY(2), -0.5);
  EXPECT_EQ(field->GetPointX(0.5), 3.0);
  EXPECT_EQ(field->GetPointY(-0.5), 2.0);
}

// The second level has a pixel for each two by two, with their mean, in the middle of them.
TEST(HeightField, ReadsSmallerLevelsBetweenTheirPixels) {
  const auto field = MakeField(130, 2, [](int x, int) { return x < 2 ? 4 * x : (x < 4 ? 4 * x : 16); });
  ASSERT_GE(field->GetNumLevels(), 2);
  EXPECT_EQ(field->GetHeight(0, 1, 0), 0.25F);
  EXPECT_EQ(field->GetHeight(0, 1.5, 0), 0.375F);
  // Of 0 and 4, and of 8 and 12, in 16ths.
  EXPECT_EQ(field->GetHeight(1, 0.5, 0.5), 0.125F);
  EXPECT_EQ(field->GetHeight(1, 2.5, 0.5), 0.625F);
  EXPECT_EQ(field->GetHeight(1, 1.0, 0.5), 0.25F);
  // The edge goes on.
  EXPECT_EQ(field->GetHeight(1, 0.0, 0.0), 0.125F);
  EXPECT_EQ(field->GetHeight(0, -7.0, 0.0), 0.0F);
}

TEST(HeightField, TakesTheNearestPixelAtTheRimOfAHole) {
  const auto field = MakeField(3, 2, {1.0F, 0.5F, kNan, 1.0F, 0.5F, kNan});
  EXPECT_EQ(field->GetHeight(0, 1.25, 0), 0.5F);
  EXPECT_SAME(field->GetHeight(0, 1.75, 0), kNan);
  EXPECT_EQ(field->GetHeight(0, 1.0, 0.5), 0.5F);
}

TEST(HeightField, CopiesALevel) {
  const auto field = MakeField(3, 2, {0.0F, 0.5F, kNan, 1.0F, 0.25F, 0.75F});
  const HeightField::Heights heights = field->CopyLevel(0);
  EXPECT_EQ(heights.size_x, 3);
  EXPECT_EQ(heights.size_y, 2);
  EXPECT_TRUE(Testing::SameSamples({0.0F, 0.5F, kNan, 1.0F, 0.25F, 0.75F}, heights.values));
}

}  // namespace
