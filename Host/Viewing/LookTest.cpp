// SPDX-License-Identifier: Apache-2.0
#include "Host/Viewing/Look.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "Tests/Support/ViewTesting.h"

namespace Testing {
namespace {

using ScEng::GetRampColor;
using ScEng::GetRampNames;
using ScEng::GetShownRange;
using ScEng::Look;
using ScEng::RangeSource;
using ScEng::ShownChannels;
using ScEng::ValueRange;

/// CIE 1976 L* of a color of sRGB (IEC 61966-2-1).
double GetLightness(unsigned color) {
  const auto linear = [](unsigned byte) {
    const double share = byte / 255.0;
    return share <= 0.04045 ? share / 12.92 : std::pow((share + 0.055) / 1.055, 2.4);
  };
  const double luminance =
      0.2126 * linear(color >> 16U & 255U) + 0.7152 * linear(color >> 8U & 255U) + 0.0722 * linear(color & 255U);
  return luminance > 216.0 / 24389.0 ? 116.0 * std::cbrt(luminance) - 16.0 : luminance * 24389.0 / 27.0;
}

TEST(Ramps, AreNamed) {
  const std::vector<std::string> expected = {"viridis", "cividis", "magma", "terrain", "heat", "gray", "blue_red"};
  EXPECT_EQ(GetRampNames(), expected);
}

TEST(Ramps, GrowLighterAllTheWay) {
  for (const char* const ramp : {"viridis", "cividis", "magma", "terrain", "heat", "gray"}) {
    double before = GetLightness(GetRampColor(ramp, 0.0));
    for (int i = 1; i < 256; ++i) {
      const double lightness = GetLightness(GetRampColor(ramp, i / 255.0));
      EXPECT_GE(lightness, before) << ramp << " " << i;
      before = lightness;
    }
  }
}

TEST(Ramps, GrowLighterByEqualSteps) {
  for (const char* const ramp : {"viridis", "cividis", "magma", "terrain", "heat"}) {
    const double low = GetLightness(GetRampColor(ramp, 0.0));
    const double high = GetLightness(GetRampColor(ramp, 1.0));
    EXPECT_GT(high - low, 70.0) << ramp;
    for (int i = 0; i < 256; ++i) {
      // The rounding to 8 bits and colors that a screen does not have take less than this.
      EXPECT_NEAR(GetLightness(GetRampColor(ramp, i / 255.0)), low + (high - low) * i / 255.0, 1.0) << ramp << " " << i;
    }
  }
}

TEST(Ramps, DivergeFromALightMiddle) {
  const double middle = GetLightness(GetRampColor("blue_red", 0.5));
  EXPECT_GT(middle, 90.0);
  for (int i = 0; i < 127; ++i) {
    EXPECT_LE(GetLightness(GetRampColor("blue_red", i / 255.0)),
              GetLightness(GetRampColor("blue_red", (i + 1) / 255.0)));
    EXPECT_LE(GetLightness(GetRampColor("blue_red", 1.0 - i / 255.0)),
              GetLightness(GetRampColor("blue_red", 1.0 - (i + 1) / 255.0)));
  }
  EXPECT_GT(GetRampColor("blue_red", 0.0) & 255U, GetRampColor("blue_red", 0.0) >> 16U);
  EXPECT_LT(GetRampColor("blue_red", 1.0) & 255U, GetRampColor("blue_red", 1.0) >> 16U);
}

TEST(Ramps, CutWhatLiesOutside) {
  EXPECT_EQ(GetRampColor("gray", 0.0), 0x000000U);
  EXPECT_EQ(GetRampColor("gray", 0.5), 0x808080U);
  EXPECT_EQ(GetRampColor("gray", 1.0), 0xFFFFFFU);
  EXPECT_EQ(GetRampColor("magma", -5.0), GetRampColor("magma", 0.0));
  EXPECT_EQ(GetRampColor("magma", 1e300), GetRampColor("magma", 1.0));
  EXPECT_EQ(GetRampColor("magma", std::nan("")), GetRampColor("magma", 0.0));
}

TEST(Ramps, AreGrayUnderUnknownNames) {
  EXPECT_EQ(GetRampColor("no such ramp", 1.0 / 255.0), 0x010101U);
  EXPECT_EQ(GetRampColor("", 1.0), 0xFFFFFFU);
}

TEST(ShownRange, OfAbsoluteNeverMoves) {
  const Look look{.range = RangeSource::kAbsolute};
  EXPECT_EQ(GetShownRange(*MakeView(1, 1, ColorMode::kValue, {7}), look), (ValueRange{0, 1}));
  EXPECT_EQ(GetShownRange(*MakeView(1, 1, ColorMode::kColor, {7, 7, 7, 7}), look), (ValueRange{0, 1}));
  EXPECT_EQ(GetShownRange(*MakeView(1, 1, ColorMode::kSigned, {7, 7, 7, 7}), look), (ValueRange{-1, 1}));
}

TEST(ShownRange, MayBeDeclaredOrCustom) {
  const auto image = MakeImage(1, 1, ColorMode::kValue, {7});
  image->SetValueLowHigh(2, 3);
  const auto view = ScEng::ViewImage::Make(*image);
  EXPECT_EQ(GetShownRange(*view, Look{.range = RangeSource::kDeclared}), (ValueRange{2, 3}));
  EXPECT_EQ(GetShownRange(*view, Look{.range = RangeSource::kCustom, .custom = {5, 4}}), (ValueRange{5, 4}));
}

TEST(ShownRange, MeasuredIsOfWhatIsShown) {
  const auto view = MakeView(2, 1, ColorMode::kColor, {-1, 0.5F, 0, 0.5F, 0, 2, kInfinity, 9});
  Look look{.range = RangeSource::kMeasured};
  // Opacity does not count among colors.
  EXPECT_EQ(GetShownRange(*view, look), (ValueRange{-1, 2}));
  look.channels = ShownChannels::kSecond;
  EXPECT_EQ(GetShownRange(*view, look), (ValueRange{0.5F, 2}));
  look.channels = ShownChannels::kFourth;
  EXPECT_EQ(GetShownRange(*view, look), (ValueRange{0.5F, 9}));
  look.channels = ShownChannels::kValue;
  EXPECT_FLOAT_EQ(GetShownRange(*view, look).low, -1.0F / 12.0F);
  EXPECT_EQ(GetShownRange(*MakeView(2, 1, ColorMode::kPair, {1, -4, 2, 3}), Look{.range = RangeSource::kMeasured}),
            (ValueRange{-4, 3}));
}

TEST(ShownRange, WithoutFiniteSamplesIsZeroToOne) {
  const Look look{.range = RangeSource::kMeasured};
  EXPECT_EQ(GetShownRange(*MakeView(2, 1, ColorMode::kValue, {kNan, kInfinity}), look), (ValueRange{0, 1}));
  EXPECT_EQ(GetShownRange(*MakeView(0, 0, ColorMode::kColor, {}), look), (ValueRange{0, 1}));
}

}  // namespace
}  // namespace Testing
