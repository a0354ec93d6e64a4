// SPDX-License-Identifier: Apache-2.0
#include "Host/Viewing/DrawView.h"

#include <gtest/gtest.h>

#include <cmath>

#include "Host/Viewing/ReduceImage.h"
#include "Tests/Support/HostTesting.h"
#include "Tests/Support/ViewTesting.h"

namespace Testing {
namespace {

using ScEng::Look;
using ScEng::RangeSource;
using ScEng::Shading;
using ScEng::ShownChannels;
using ScEng::ViewImage;
using ScEng::ViewTransform;

/// The pixels of an image that is drawn as large as it is.
std::vector<Drawn> DrawWhole(const ViewImage& image, const Look& look) {
  const int width = image.GetImage().GetSizeX();
  const int height = image.GetImage().GetSizeY();
  const DrawnPicture picture(image, look, {}, width, height);
  std::vector<Drawn> pixels;
  for (int y = 0; y < height; ++y) {
    for (const Drawn& pixel : picture.GetRow(y)) pixels.push_back(pixel);
  }
  return pixels;
}

Drawn GetRampPixel(const std::string& ramp, double share) {
  const unsigned color = ScEng::GetRampColor(ramp, share);
  return {static_cast<int>(color >> 16U & 255U), static_cast<int>(color >> 8U & 255U), static_cast<int>(color & 255U),
          255};
}

// ---- Colors ----

TEST(DrawView, ShowsValuesInGrayByTheRange) {
  // 255 times 0.25 is 63.75, 255 times 0.1 is 25.5, which goes up.
  const auto view = MakeView(6, 1, ColorMode::kValue, {0, 1, 0.25F, 0.1F, -3, 8});
  EXPECT_EQ(DrawWhole(*view, {}), (std::vector<Drawn>{kBlack, kWhite, Gray(64), Gray(26), kBlack, kWhite}));
  const Look look{.range = RangeSource::kCustom, .custom = {-4, 6}};
  EXPECT_EQ(DrawWhole(*view, look)[4], Gray(26));
}

TEST(DrawView, ShowsNanInMagentaAndCutsInfinities) {
  const auto view = MakeView(3, 1, ColorMode::kValue, {kNan, kInfinity, -kInfinity});
  for (const Shading shading : {Shading::kPlain, Shading::kHillshade, Shading::kSlope}) {
    const Look look{.shading = shading, .ramp = "gray"};
    EXPECT_EQ(DrawWhole(*view, look), (std::vector<Drawn>{kMagenta, kWhite, kBlack})) << static_cast<int>(shading);
  }
  const Look ramp{.shading = Shading::kRamp, .ramp = "magma"};
  EXPECT_EQ(DrawWhole(*view, ramp),
            (std::vector<Drawn>{kMagenta, GetRampPixel("magma", 1.0), GetRampPixel("magma", 0.0)}));
}

TEST(DrawView, IsBlackWhereTheRangeHasNoExtent) {
  const auto view = MakeView(3, 1, ColorMode::kValue, {4, 5, 6});
  for (const float high : {5.0F, 4.0F, kNan}) {
    const Look look{.range = RangeSource::kCustom, .custom = {5, high}};
    EXPECT_EQ(DrawWhole(*view, look), std::vector<Drawn>(3, kBlack)) << high;
  }
}

TEST(DrawView, ShowsColorsWithStraightOpacity) {
  const auto view = MakeView(3, 1, ColorMode::kColor, {1, 0.2F, 0, 0.4F, 0.5F, 2, -1, 5, kNan, 0, 0, 0});
  EXPECT_EQ(DrawWhole(*view, {}), (std::vector<Drawn>{{255, 51, 0, 102}, {128, 255, 0, 255}, kMagenta}));
  // The range maps colors, but not opacity.
  const Look look{.range = RangeSource::kCustom, .custom = {0, 2}};
  EXPECT_EQ(DrawWhole(*view, look)[0], (Drawn{128, 26, 0, 102}));
}

TEST(DrawView, ShowsSignedPixelsAsColors) {
  const auto view = MakeView(1, 1, ColorMode::kSigned, {-1, 0, 1, 1});
  EXPECT_EQ(DrawWhole(*view, {}), (std::vector<Drawn>{{0, 128, 255, 255}}));
}

TEST(DrawView, ShowsPairsInRedAndGreen) {
  const auto view = MakeView(2, 1, ColorMode::kPair, {0.2F, 1, kNan, 1});
  EXPECT_EQ(DrawWhole(*view, {}), (std::vector<Drawn>{{51, 255, 0, 255}, kMagenta}));
}

TEST(DrawView, ShowsOneChannelInGray) {
  const auto view = MakeView(1, 1, ColorMode::kColor, {0, 0.2F, 0.4F, 0.6F});
  const auto draw = [&](ShownChannels channels) { return DrawWhole(*view, Look{.channels = channels})[0]; };
  EXPECT_EQ(draw(ShownChannels::kFirst), Gray(0));
  EXPECT_EQ(draw(ShownChannels::kSecond), Gray(51));
  EXPECT_EQ(draw(ShownChannels::kThird), Gray(102));
  EXPECT_EQ(draw(ShownChannels::kFourth), Gray(153));
  // (0 + 0.2 + 0.4) * 0.6 / 3
  EXPECT_EQ(draw(ShownChannels::kValue), Gray(31));
  EXPECT_EQ(DrawWhole(*MakeView(1, 1, ColorMode::kPair, {0.2F, 0.4F}), Look{.channels = ShownChannels::kFourth})[0],
            (Drawn{51, 102, 0, 255}));
}

TEST(DrawView, ShowsValuesByARamp) {
  const auto view = MakeView(3, 1, ColorMode::kValue, {0, 0.2F, 1});
  const Look look{.shading = Shading::kRamp, .ramp = "heat"};
  EXPECT_EQ(DrawWhole(*view, look),
            (std::vector<Drawn>{GetRampPixel("heat", 0), GetRampPixel("heat", 0.2), GetRampPixel("heat", 1)}));
  const auto signed_view = MakeView(1, 1, ColorMode::kSigned, {0, 0, 0.2F, 1});
  EXPECT_EQ(DrawWhole(*signed_view, Look{.shading = Shading::kRamp, .ramp = "gray"}), std::vector<Drawn>{Gray(153)});
}

TEST(DrawView, MarksWhatIsStrange) {
  const auto view = MakeView(7, 1, ColorMode::kValue, {kNan, kInfinity, -kInfinity, -0.1F, 1.1F, 0, 1});
  const std::vector<Drawn> drawn = DrawWhole(*view, Look{.marks = true});
  EXPECT_EQ(drawn[0], kMagenta);
  EXPECT_EQ(drawn[1], (Drawn{255, 140, 0, 255}));
  EXPECT_EQ(drawn[2], (Drawn{138, 43, 226, 255}));
  EXPECT_EQ(drawn[3], (Drawn{30, 90, 255, 255}));
  EXPECT_EQ(drawn[4], (Drawn{230, 20, 30, 255}));
  EXPECT_EQ(drawn[5], kBlack);
  EXPECT_EQ(drawn[6], kWhite);
  EXPECT_EQ(DrawWhole(*view, Look{.shading = Shading::kHillshade, .marks = true})[2], drawn[2]);
}

TEST(DrawView, MarksColorsByTheirStrangestChannel) {
  const auto view = MakeView(5, 1, ColorMode::kColor, {2,  kNan,       kInfinity, 1,  //
                                                       2,  -kInfinity, kInfinity, 1,  //
                                                       -1, 2,          0,         1,  //
                                                       -1, 0,          0,         1,  //
                                                       1,  0,          0,         7});
  const std::vector<Drawn> drawn = DrawWhole(*view, Look{.marks = true});
  EXPECT_EQ(drawn[0], kMagenta);
  EXPECT_EQ(drawn[1], (Drawn{255, 140, 0, 255}));
  EXPECT_EQ(drawn[2], (Drawn{230, 20, 30, 255}));
  EXPECT_EQ(drawn[3], (Drawn{30, 90, 255, 255}));
  EXPECT_EQ(drawn[4], (Drawn{255, 0, 0, 255}));
}

// ---- Places ----

TEST(DrawView, DrawsEachPixelAsASquareNearBy) {
  const auto view = MakeView(2, 2, ColorMode::kValue, {0.2F, 0.4F, 0.6F, 0.8F});
  const DrawnPicture picture(*view, {}, {0, 0, 3}, 6, 6);
  for (int y = 0; y < 6; ++y) {
    for (int x = 0; x < 6; ++x) {
      EXPECT_EQ(picture.Get(x, y), Gray(51 + 51 * (x / 3) + 102 * (y / 3))) << x << " " << y;
    }
  }
}

TEST(DrawView, IsTransparentBesideTheImage) {
  const auto view = MakeView(2, 1, ColorMode::kValue, {0.2F, 0.4F});
  const DrawnPicture picture(*view, {}, {-1, -1, 2}, 8, 6);
  const std::vector<Drawn> nothing(8, kNothing);
  EXPECT_EQ(picture.GetRow(1), nothing);
  EXPECT_EQ(picture.GetRow(2),
            (std::vector<Drawn>{kNothing, kNothing, Gray(51), Gray(51), Gray(102), Gray(102), kNothing, kNothing}));
  EXPECT_EQ(picture.GetRow(3), picture.GetRow(2));
  EXPECT_EQ(picture.GetRow(4), nothing);
}

TEST(DrawView, StartsWithinPixels) {
  const auto view = MakeView(3, 1, ColorMode::kValue, {0.2F, 0.4F, 0.6F});
  const DrawnPicture picture(*view, {}, {0.5, 0, 4}, 8, 1);
  EXPECT_EQ(picture.GetRow(0),
            (std::vector<Drawn>{Gray(51), Gray(51), Gray(102), Gray(102), Gray(102), Gray(102), Gray(153), Gray(153)}));
}

TEST(DrawView, DrawsHugeEnlargements) {
  const auto view = MakeView(2, 1, ColorMode::kValue, {0.2F, 0.4F});
  const DrawnPicture picture(*view, {}, {1.0 - 2e-9, 0.5, 1e9}, 4, 1);
  EXPECT_EQ(picture.GetRow(0), (std::vector<Drawn>{Gray(51), Gray(51), Gray(102), Gray(102)}));
}

TEST(DrawView, TakesTheLevelOfPowersOfTwo) {
  const auto view = MakeValues(128, 128, [](int x, int y) { return (x + y) / 256.0; });
  ASSERT_EQ(view->GetNumLevels(), 2);
  const DrawnPicture picture(*view, {}, {0, 0, 0.5}, 64, 64);
  for (int i = 0; i < 64; ++i) {
    // The mean of columns 2i and 2i + 1 and rows 20 and 21.
    const double value = (2 * i + 0.5 + 20.5) / 256.0;
    EXPECT_EQ(picture.Get(i, 10), Gray(static_cast<int>(std::floor(value * 255.0 + 0.5)))) << i;
  }
}

TEST(DrawView, BlendsBetweenPixelsFromAfar) {
  const auto view = MakeValues(128, 100, [](int x, int y) { return (x + y) / 256.0; });
  for (const double zoom : {0.3, 0.45, 0.7, 0.95}) {
    const DrawnPicture picture(*view, {}, {3.0, 5.0, zoom}, 20, 20);
    for (int i = 0; i < 20; ++i) {
      // The value of a plane at the center of the drawn pixel; pixel (0, 0) has its center at (0.5, 0.5).
      const double x = 3.0 + (i + 0.5) / zoom - 0.5;
      const double y = 5.0 + (7 + 0.5) / zoom - 0.5;
      EXPECT_NEAR(picture.Get(i, 7)[0], (x + y) / 256.0 * 255.0, 0.51) << zoom << " " << i;
    }
  }
}

TEST(DrawView, DoesNotSpreadWhatIsNotFinite) {
  std::vector<float> samples(100 * 100, 0.5F);
  for (int y = 0; y < 100; ++y) {
    for (int x = 40; x < 60; ++x) samples[static_cast<std::size_t>(100 * y + x)] = kNan;
  }
  const auto view = MakeView(100, 100, ColorMode::kValue, samples);
  const DrawnPicture picture(*view, {}, {0, 0, 0.7}, 70, 70);
  for (int i = 0; i < 70; ++i) {
    const double x = (i + 0.5) / 0.7;
    EXPECT_EQ(picture.Get(i, 30), x >= 40.0 && x < 60.0 ? kMagenta : Gray(128)) << i;
  }
}

TEST(DrawView, RepeatsTheImageThreeByThreeTimes) {
  const auto view = MakeView(2, 2, ColorMode::kValue, {0.2F, 0.4F, 0.6F, 0.8F});
  const DrawnPicture picture(*view, Look{.tiled = true}, {-3, -3, 1}, 8, 8);
  EXPECT_EQ(picture.GetRow(0), std::vector<Drawn>(8, kNothing));
  EXPECT_EQ(picture.GetRow(7), std::vector<Drawn>(8, kNothing));
  for (int y = 1; y < 7; ++y) {
    EXPECT_EQ(picture.Get(0, y), kNothing);
    EXPECT_EQ(picture.Get(7, y), kNothing);
    for (int x = 1; x < 7; ++x) {
      EXPECT_EQ(picture.Get(x, y), Gray(51 + 51 * ((x + 1) % 2) + 102 * ((y + 1) % 2))) << x << " " << y;
    }
  }
}

TEST(DrawView, RepeatsSmallerLevelsWithoutASeam) {
  // A wave that fits the image, so that its copies run on from each other.
  const auto view = MakeValues(128, 4, [](int x, int) { return 0.5 + 0.4 * std::cos((x + 0.5) * M_PI / 64.0); });
  const DrawnPicture picture(*view, Look{.tiled = true}, {-128, 0, 0.5}, 192, 2);
  for (int i = 0; i < 192; ++i) {
    const double value = 0.5 + 0.4 * std::cos((2 * i + 1) * M_PI / 64.0) * std::cos(M_PI / 128.0);
    EXPECT_NEAR(picture.Get(i, 1)[0], value * 255.0, 0.6) << i;
  }
  const DrawnPicture between(*view, Look{.tiled = true}, {-128, 0, 0.75}, 288, 1);
  for (int i = 0; i < 288; ++i) {
    const double value = 0.5 + 0.4 * std::cos((i + 0.5) / 0.75 * M_PI / 64.0);
    EXPECT_NEAR(between.Get(i, 0)[0], value * 255.0, 0.6) << i;
  }
}

TEST(DrawView, DrawsNothingOfAnEmptyImage) {
  const auto view = MakeView(0, 0, ColorMode::kColor, {});
  for (const bool tiled : {false, true}) {
    const Look look{.shading = Shading::kHillshade, .contours = true, .marks = true, .tiled = tiled};
    const DrawnPicture picture(*view, look, {-1, -1, 0.5}, 3, 2);
    EXPECT_EQ(picture.GetRow(0), std::vector<Drawn>(3, kNothing));
    EXPECT_EQ(picture.GetRow(1), std::vector<Drawn>(3, kNothing));
  }
}

TEST(DrawView, DrawsNothingByTransformsThatAreNone) {
  const auto view = MakeView(1, 1, ColorMode::kValue, {1});
  const double nan = std::nan("");
  for (const ViewTransform& transform :
       {ViewTransform{nan, 0, 1}, {0, nan, 1}, {0, 0, nan}, {0, 0, 0}, {1, 0, -1}, {1e300, 0, 1}, {0, 0, 1e-320}}) {
    EXPECT_EQ(DrawnPicture(*view, {}, transform, 2, 1).GetRow(0), std::vector<Drawn>(2, kNothing)) << transform.zoom;
  }
}

TEST(DrawView, LeavesTargetsWithoutPixelsAlone) {
  const auto view = MakeView(1, 1, ColorMode::kValue, {1});
  std::vector<std::uint8_t> bytes(4, 7);
  ScEng::DrawView(*view, {}, {}, {bytes.data(), 0, 1, 0});
  ScEng::DrawView(*view, {}, {}, {bytes.data(), 1, 0, 4});
  ScEng::DrawView(*view, {}, {}, {nullptr, 1, 1, 4});
  EXPECT_EQ(bytes, std::vector<std::uint8_t>(4, 7));
}

TEST(DrawView, KeepsToTheRowsOfItsTarget) {
  const auto view = MakeView(1, 3, ColorMode::kValue, {0.2F, 0.4F, 0.6F});
  std::vector<std::uint8_t> bytes(3 * 10, 7);
  ScEng::DrawView(*view, {}, {}, {bytes.data(), 1, 3, 10});
  for (std::size_t y = 0; y < 3; ++y) {
    EXPECT_EQ(bytes[10 * y], 51 * (y + 1));
    EXPECT_EQ(bytes[10 * y + 3], 255);
    EXPECT_EQ(bytes[10 * y + 4], 7);
    EXPECT_EQ(bytes[10 * y + 9], 7);
  }
}

TEST(DrawView, DoesNotDependOnThreads) {
  const auto view = MakeValues(200, 300, [](int x, int y) { return std::sin(x * 0.1) * std::cos(y * 0.07); });
  const Look look{.range = RangeSource::kMeasured, .shading = Shading::kHillshade, .contours = true};
  std::vector<std::vector<Drawn>> rows[2];
  for (const std::size_t threads : {1U, 5U}) {
    const ThreadsScope scope(threads);
    for (const double zoom : {0.6, 1.7}) {
      const DrawnPicture picture(*view, look, {1, 2, zoom}, 100, 120);
      for (int y = 0; y < 120; ++y) rows[threads / 5].push_back(picture.GetRow(y));
    }
  }
  EXPECT_EQ(rows[0], rows[1]);
}

TEST(DrawView, DrawsPreviewsAsTheImageFromAfar) {
  const auto view = MakeValues(203, 77, [](int x, int y) { return std::sin(x * 0.1) * std::cos(y * 0.07); });
  const auto preview = ScEng::ViewImage::MakePreview(*ScEng::ReduceImage(view->GetImage(), 2), 2, view->GetHeader());
  const Look look{
      .range = RangeSource::kAbsolute, .shading = Shading::kHillshade, .contours = true, .contour_step = 0.2};
  for (const ViewTransform& transform : {ViewTransform{0, 0, 0.25}, {-3.5, 2, 0.2}, {10, 10, 0.1}}) {
    const DrawnPicture whole(*view, look, transform, 60, 24);
    const DrawnPicture drawn(*preview, look, transform, 60, 24);
    for (int y = 0; y < 24; ++y) EXPECT_EQ(drawn.GetRow(y), whole.GetRow(y)) << transform.zoom << ", row " << y;
  }
}

TEST(DrawView, BlendsThePixelsOfAPreview) {
  // Two samples of 8 pixels each, whose middles are at 4 and 12.
  ImageHeader header = ImageHeader::Fresh(16, 8, ColorMode::kValue);
  const auto preview = ScEng::ViewImage::MakePreview(*MakeImage(2, 1, ColorMode::kValue, {0.0F, 1.0F}), 3, header);
  const DrawnPicture picture(*preview, {}, {0, 0, 1}, 16, 8);
  EXPECT_EQ(picture.Get(0, 0), kBlack);
  EXPECT_EQ(picture.Get(3, 7), kBlack);
  // 255 * (8.5 - 4) / 8
  EXPECT_EQ(picture.Get(8, 4), Gray(143));
  EXPECT_EQ(picture.Get(12, 0), kWhite);
}

}  // namespace
}  // namespace Testing
