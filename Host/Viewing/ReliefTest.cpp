// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <cmath>

#include "Tests/Support/ViewTesting.h"

namespace Testing {
namespace {

using ScEng::Look;
using ScEng::RangeSource;
using ScEng::Shading;

Look MakeSlopeLook(double exaggeration) {
  Look look{.shading = Shading::kSlope, .ramp = "gray"};
  look.light.exaggeration = exaggeration;
  return look;
}

Look MakeLightLook(double azimuth, double altitude, double exaggeration) {
  return {.shading = Shading::kHillshade, .light = {azimuth, altitude, exaggeration}};
}

TEST(Hillshade, HasTheSineOfTheAltitudeOnFlatGround) {
  const auto view = MakeValues(3, 3, [](int, int) { return 0.3; });
  const DrawnPicture low(*view, MakeLightLook(315, 30, 100), {}, 3, 3);
  EXPECT_EQ(low.Get(1, 1), Gray(128));
  EXPECT_EQ(low.Get(0, 2), Gray(128));
  EXPECT_EQ(DrawnPicture(*view, MakeLightLook(0, 90, 1), {}, 3, 3).Get(1, 1), kWhite);
  EXPECT_EQ(DrawnPicture(*view, MakeLightLook(0, 0, 1), {}, 3, 3).Get(1, 1), kBlack);
}

TEST(Hillshade, IsBrightWhereGroundFacesTheLight) {
  // Ground that rises by one pixel per pixel to the right faces the left, at 45 degrees.
  const auto rising = MakeValues(5, 5, [](int x, int) { return x; });
  EXPECT_EQ(DrawnPicture(*rising, MakeLightLook(270, 45, 1), {}, 5, 5).Get(2, 2), kWhite);
  EXPECT_EQ(DrawnPicture(*rising, MakeLightLook(90, 45, 1), {}, 5, 5).Get(2, 2), kBlack);
  // The light of the top and the normal (-1, 0, 1) / sqrt(2): sqrt(0.5) * sqrt(0.5).
  EXPECT_EQ(DrawnPicture(*rising, MakeLightLook(0, 45, 1), {}, 5, 5).Get(2, 2), Gray(128));
  // Ground that rises downwards faces the top.
  const auto down = MakeValues(5, 5, [](int, int y) { return y; });
  EXPECT_EQ(DrawnPicture(*down, MakeLightLook(0, 45, 1), {}, 5, 5).Get(2, 2), kWhite);
  EXPECT_EQ(DrawnPicture(*down, MakeLightLook(180, 45, 1), {}, 5, 5).Get(2, 2), kBlack);
}

TEST(Slope, IsLinearInDegrees) {
  const auto plane = MakeValues(6, 6, [](int x, int) { return x; });
  // 45 of 90 degrees, at the edges too, where there is one neighbor.
  const DrawnPicture picture(*plane, MakeSlopeLook(1), {}, 6, 6);
  for (int y = 0; y < 6; ++y) EXPECT_EQ(picture.GetRow(y), std::vector<Drawn>(6, Gray(128))) << y;
  // tan 30 degrees is sqrt(1/3).
  EXPECT_EQ(DrawnPicture(*plane, MakeSlopeLook(std::sqrt(1.0 / 3.0)), {}, 6, 6).Get(3, 3), Gray(85));
  EXPECT_EQ(DrawnPicture(*plane, MakeSlopeLook(0), {}, 6, 6).Get(3, 3), kBlack);
  EXPECT_EQ(DrawnPicture(*plane, MakeSlopeLook(1e9), {}, 6, 6).Get(3, 3), kWhite);
  const auto diagonal = MakeValues(6, 6, [](int x, int y) { return x + y; });
  // atan(sqrt(2)) is 54.7356 degrees.
  EXPECT_EQ(DrawnPicture(*diagonal, MakeSlopeLook(1), {}, 6, 6).Get(3, 3), Gray(155));
}

TEST(Slope, IsTheSameAtEveryZoom) {
  const auto plane = MakeValues(300, 300, [](int, int y) { return y; });
  for (const double zoom : {0.2, 0.25, 0.4, 0.5, 0.8, 1.0, 1.5, 6.0}) {
    const DrawnPicture picture(*plane, MakeSlopeLook(1), {0, 0, zoom}, 40, 40);
    for (int i = 0; i < 40; ++i) EXPECT_EQ(picture.Get(20, i), Gray(128)) << zoom << " " << i;
  }
}

TEST(Slope, GoesThroughTheRamp) {
  const auto plane = MakeValues(3, 3, [](int x, int) { return x; });
  Look look = MakeSlopeLook(1);
  look.ramp = "magma";
  const unsigned color = ScEng::GetRampColor("magma", 0.5);
  EXPECT_EQ(DrawnPicture(*plane, look, {}, 3, 3).Get(1, 1),
            (Drawn{static_cast<int>(color >> 16U), static_cast<int>(color >> 8U & 255U), static_cast<int>(color & 255U),
                   255}));
}

TEST(Slope, TakesTheOneNeighborBesideWhatIsNotFinite) {
  const auto plane = MakeView(5, 1, ColorMode::kValue, {kNan, 1, 2, 3, kInfinity});
  const DrawnPicture picture(*plane, MakeSlopeLook(1), {}, 5, 1);
  EXPECT_EQ(picture.GetRow(0), (std::vector<Drawn>{kMagenta, Gray(128), Gray(128), Gray(128), kWhite}));
}

TEST(Slope, IsFlatOnASinglePixel) {
  const auto pixel = MakeView(1, 1, ColorMode::kValue, {5});
  EXPECT_EQ(DrawnPicture(*pixel, MakeSlopeLook(1), {}, 1, 1).Get(0, 0), kBlack);
  EXPECT_EQ(DrawnPicture(*pixel, MakeSlopeLook(1), {0, 0, 50}, 20, 20).Get(11, 7), kBlack);
}

TEST(Slope, CrossesTheSeamsOfARepeatedImage) {
  const auto step = MakeView(4, 1, ColorMode::kValue, {0, 0, 0, 2});
  Look look = MakeSlopeLook(1);
  EXPECT_EQ(DrawnPicture(*step, look, {}, 4, 1).Get(0, 0), kBlack);
  look.tiled = true;
  // The neighbor on the left is the last column: (0 - 2) / 2.
  EXPECT_EQ(DrawnPicture(*step, look, {}, 4, 1).Get(0, 0), Gray(128));
  EXPECT_EQ(DrawnPicture(*step, look, {-4, 0, 1}, 12, 1).Get(8, 0), Gray(128));
}

TEST(Slope, StaysWithinBoundsOnTheSteepest) {
  const auto cliff = MakeView(3, 1, ColorMode::kValue, {-3e38F, 3e38F, -3e38F});
  const DrawnPicture slope(*cliff, MakeSlopeLook(100), {}, 3, 1);
  EXPECT_EQ(slope.Get(0, 0), kWhite);
  const DrawnPicture light(*cliff, MakeLightLook(270, 45, 100), {}, 3, 1);
  // Upright ground that faces a light at 45 degrees: sqrt(0.5), and none on the other side.
  EXPECT_EQ(light.Get(0, 0), Gray(180));
  EXPECT_EQ(light.Get(2, 0), kBlack);
}

}  // namespace
}  // namespace Testing
