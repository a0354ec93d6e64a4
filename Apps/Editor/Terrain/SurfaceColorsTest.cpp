// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Terrain/SurfaceColors.h"

#include <gtest/gtest.h>

#include "Apps/Editor/Terrain/TerrainTesting.h"
#include "Tests/Support/HostTesting.h"

namespace {

using TerrainTest::MakeView;
using Testing::kNan;

std::shared_ptr<const ScEng::ViewImage> MakeColorView(const std::vector<float>& pixel) {
  return ScEng::ViewImage::Make(*Testing::MakeColors(pixel));
}

TEST(SurfaceColors, AreThoseOfClayWithoutAnImage) {
  EXPECT_EQ(SurfaceColors().GetColor(0.5, 0.5, 0.01), SurfaceColors::kClay);
  EXPECT_EQ(SurfaceColors(MakeView(0, 0, {}), {}, MakeView(0, 0, {})).GetColor(0.5, 0.5, 0.01), SurfaceColors::kClay);
}

TEST(SurfaceColors, ShowValuesInGray) {
  const SurfaceColors colors(MakeView(4, 1, {0.0F, 0.2F, 7.0F, kNan}), {}, nullptr);
  EXPECT_EQ(colors.GetColor(0.1, 0.5, 0.25), (SurfaceColor{0, 0, 0, 255}));
  EXPECT_EQ(colors.GetColor(0.3, 0.5, 0.25), (SurfaceColor{51, 51, 51, 255}));
  EXPECT_EQ(colors.GetColor(0.6, 0.5, 0.25), (SurfaceColor{255, 255, 255, 255}));
  EXPECT_EQ(colors.GetColor(1.0, 1.0, 0.25), SurfaceColors::kClay);
}

TEST(SurfaceColors, ShowValuesByTheRampOfTheLook) {
  ScEng::Look look;
  look.shading = ScEng::Shading::kRamp;
  look.range = ScEng::RangeSource::kCustom;
  look.custom = {10.0F, 20.0F};
  const SurfaceColors colors(MakeView(2, 1, {10.0F, 20.0F}), look, nullptr);
  for (const double share : {0.0, 1.0}) {
    const unsigned expected = ScEng::GetRampColor(look.ramp, share);
    const SurfaceColor color = colors.GetColor(share, 0.0, 0.5);
    EXPECT_EQ(color[0] << 16U | color[1] << 8U | color[2], static_cast<int>(expected)) << share;
  }
}

TEST(SurfaceColors, ShowColorsOverClayByTheirOpacity) {
  EXPECT_EQ(SurfaceColors(MakeColorView({1.0F, 0.2F, 0.0F, 1.0F}), {}, nullptr).GetColor(0.5, 0.5, 1.0),
            (SurfaceColor{255, 51, 0, 255}));
  // Half between 206, 200, 190 and 0, 0, 0.
  EXPECT_EQ(SurfaceColors(MakeColorView({0.0F, 0.0F, 0.0F, 0.5F}), {}, nullptr).GetColor(0.5, 0.5, 1.0),
            (SurfaceColor{103, 100, 95, 255}));
  EXPECT_EQ(SurfaceColors(MakeColorView({0.0F, kNan, 0.0F, 1.0F}), {}, nullptr).GetColor(0.5, 0.5, 1.0),
            SurfaceColors::kClay);
}

TEST(SurfaceColors, ShowOneChannelInGray) {
  ScEng::Look look;
  look.channels = ScEng::ShownChannels::kSecond;
  EXPECT_EQ(SurfaceColors(MakeColorView({1.0F, 0.2F, 0.0F, 1.0F}), look, nullptr).GetColor(0.5, 0.5, 1.0),
            (SurfaceColor{51, 51, 51, 255}));
}

// 80 % of the way from 206, 200, 190 to 222, 104, 48, and half of that.
TEST(SurfaceColors, TintWhereAMaskIsSet) {
  const SurfaceColors colors(nullptr, {}, MakeView(4, 1, {0.0F, 0.5F, 1.0F, kNan}));
  EXPECT_EQ(colors.GetColor(0.1, 0.5, 0.25), SurfaceColors::kClay);
  EXPECT_EQ(colors.GetColor(0.3, 0.5, 0.25), (SurfaceColor{212, 162, 133, 255}));
  EXPECT_EQ(colors.GetColor(0.6, 0.5, 0.25), (SurfaceColor{219, 123, 76, 255}));
  EXPECT_EQ(colors.GetColor(0.9, 0.5, 0.25), SurfaceColors::kClay);
}

// Points that are four pixels apart see the mean of about four by four.
TEST(SurfaceColors, UseSmallerCopiesForWidePoints) {
  std::vector<float> stripes;
  for (int i = 0; i < 128; ++i) stripes.push_back(i % 2 == 0 ? 0.2F : 0.6F);
  const SurfaceColors colors(MakeView(128, 1, stripes), {}, nullptr);
  EXPECT_EQ(colors.GetColor(0.001, 0.5, 1.0 / 128), (SurfaceColor{51, 51, 51, 255}));
  EXPECT_EQ(colors.GetColor(0.001, 0.5, 4.0 / 128), (SurfaceColor{102, 102, 102, 255}));
}

}  // namespace
