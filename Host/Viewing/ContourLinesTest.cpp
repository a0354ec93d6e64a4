// SPDX-License-Identifier: Apache-2.0
#include "Host/Viewing/ContourLines.h"

#include <gtest/gtest.h>

#include <cmath>

#include "Tests/Support/ViewTesting.h"

namespace Testing {
namespace {

using ScEng::Look;
using ScEng::RangeSource;

/// White ground under lines.
Look MakeLook(double step) {
  return {.range = RangeSource::kCustom, .custom = {-2, -1}, .contours = true, .contour_step = step};
}

double GetDarkness(const Drawn& pixel) { return (255 - pixel[0]) / 255.0; }

TEST(ContourLines, AreOnePixelWideWhereTheValueIs) {
  const auto plane = MakeValues(40, 3, [](int x, int) { return x; });
  // Column 4 has the value 4, at its center: 4.5 * 8 is between the drawn pixels 35 and 36, which share the line.
  const DrawnPicture picture(*plane, MakeLook(4), {0, 0, 8}, 100, 24);
  for (int x = 8; x < 64; ++x) {
    const bool is_line = x == 35 || x == 36;
    EXPECT_NEAR(GetDarkness(picture.Get(x, 11)), is_line ? 0.25 : 0.0, 0.01) << x;
  }
}

TEST(ContourLines, CoverOnePixelAtEveryZoom) {
  const auto plane = MakeValues(600, 3, [](int x, int) { return x; });
  for (const double zoom : {0.3, 0.5, 0.77, 1.0, 1.9, 5.0, 30.0}) {
    const DrawnPicture picture(*plane, MakeLook(30), {45.5, 0, zoom}, static_cast<int>(30 * zoom), 1);
    double sum = 0.0;
    for (int x = 0; x < static_cast<int>(30 * zoom); ++x) sum += GetDarkness(picture.Get(x, 0));
    EXPECT_NEAR(sum, 0.5, 0.02) << zoom;
  }
}

TEST(ContourLines, AreStrongerAtEveryFifth) {
  const auto plane = MakeValues(60, 3, [](int x, int) { return x; });
  const DrawnPicture picture(*plane, MakeLook(4), {0, 0, 5}, 300, 15);
  // 4.5 * 5 is in the middle of the drawn pixel 22; 20.5 * 5 in that of 102.
  EXPECT_NEAR(GetDarkness(picture.Get(22, 7)), 0.5, 0.01);
  EXPECT_NEAR(GetDarkness(picture.Get(102, 7)), 0.85, 0.01);
}

TEST(ContourLines, AreNotOnFlatGround) {
  const auto flat = MakeValues(5, 5, [](int, int) { return 4; });
  const DrawnPicture picture(*flat, MakeLook(4), {0, 0, 3}, 15, 15);
  for (int y = 0; y < 15; ++y) EXPECT_EQ(picture.GetRow(y), std::vector<Drawn>(15, kWhite));
}

TEST(ContourLines, HaveATenthOfTheRangeAsTheirStep) {
  const auto plane = MakeValues(60, 3, [](int x, int) { return x; });
  Look look{.range = RangeSource::kCustom, .custom = {0, 100}, .contours = true};
  for (const double step : {0.0, -3.0, std::nan("")}) {
    look.contour_step = step;
    const DrawnPicture picture(*plane, look, {}, 60, 3);
    for (int x = 2; x < 49; ++x) {
      const Drawn plain = Gray(static_cast<int>(std::floor(x * 2.55 + 0.5)));
      if (x % 10 == 0) {
        EXPECT_GT(picture.Get(x, 1)[0], plain[0] + 60) << x;
      } else {
        EXPECT_EQ(picture.Get(x, 1), plain) << x;
      }
    }
  }
}

TEST(ContourLines, KeepAwayFromWhatIsNotFinite) {
  const auto view = MakeView(3, 3, ColorMode::kValue, {0, 1, 2, 0, kNan, 2, 0, 1, 2});
  const DrawnPicture picture(*view, MakeLook(1), {}, 3, 3);
  EXPECT_EQ(picture.Get(1, 1), kMagenta);
}

TEST(ContourLines, ThinOutOnCliffs) {
  const auto cliff = MakeValues(20, 20, [](int x, int) { return x < 10 ? 0.5 : 1e6; });
  const DrawnPicture picture(*cliff, MakeLook(1), {0, 0, 8}, 160, 160);
  for (int x = 0; x < 160; ++x) EXPECT_LE(GetDarkness(picture.Get(x, 80)), 0.35) << x;
  EXPECT_GT(GetDarkness(picture.Get(80, 80)), 0.0);
}

TEST(ContourLines, AreSeenOnDarkGround) {
  const auto plane = MakeValues(40, 3, [](int x, int) { return x; });
  const Look look{.range = RangeSource::kCustom, .custom = {1000, 2000}, .contours = true, .contour_step = 4};
  EXPECT_EQ(DrawnPicture(*plane, look, {0, 0, 5}, 100, 15).Get(22, 7), Gray(128));
}

}  // namespace
}  // namespace Testing
