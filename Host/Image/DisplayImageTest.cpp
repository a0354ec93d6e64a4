// SPDX-License-Identifier: Apache-2.0
#include "Host/Image/DisplayImage.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>

#include "Tests/Support/HostTesting.h"

namespace Testing {
namespace {

TEST(DisplayImage, MapsTheRangeToZeroAndOneAndCutsTheRest) {
  const auto image = MakeImage(7, 1, ColorMode::kValue, {-4.0F, -2.0F, 0.0F, 2.0F, 7.0F, kNan, kInfinity});
  const auto shown = ScEng::MakeDisplayImage(*image, -2.0F, 2.0F);
  EXPECT_TRUE(SameSamples({0.0F, 0.0F, 0.5F, 1.0F, 1.0F, 0.0F, 1.0F}, GetSamples(*shown)));
  EXPECT_EQ(shown->GetValueLow(), 0.0F);
  EXPECT_EQ(shown->GetValueHigh(), 1.0F);
}

TEST(DisplayImage, MapsColorAndKeepsOpacity) {
  const auto image = MakeImage(2, 1, ColorMode::kColor, {0.0F, 2.0F, 4.0F, 0.25F, 4.0F, 1.0F, 9.0F, 6.0F});
  image->SetPin(3, 4);
  const auto shown = ScEng::MakeDisplayImage(*image, 0.0F, 4.0F);
  EXPECT_EQ(shown->GetColorMode(), ColorMode::kColor);
  EXPECT_EQ(shown->GetPinX(), 3);
  EXPECT_TRUE(SameSamples({0.0F, 0.5F, 1.0F, 0.25F, 1.0F, 0.25F, 1.0F, 1.0F}, GetSamples(*shown)));
}

TEST(DisplayImage, ShowsASignedImageInColor) {
  const auto image = MakeImage(1, 1, ColorMode::kSigned, {-1.0F, 0.0F, 1.0F, 1.0F});
  const auto shown = ScEng::MakeDisplayImage(*image, image->GetValueLow(), image->GetValueHigh());
  EXPECT_EQ(shown->GetColorMode(), ColorMode::kColor);
  EXPECT_TRUE(SameSamples({0.0F, 0.5F, 1.0F, 1.0F}, GetSamples(*shown)));
}

TEST(DisplayImage, ShowsTheFirstOfAPair) {
  const auto image = MakeImage(2, 1, ColorMode::kPair, {0.25F, 9.0F, 0.75F, 9.0F});
  const auto shown = ScEng::MakeDisplayImage(*image, 0.0F, 1.0F);
  EXPECT_EQ(shown->GetColorMode(), ColorMode::kValue);
  EXPECT_TRUE(SameSamples({0.25F, 0.75F}, GetSamples(*shown)));
}

TEST(DisplayImage, IsBlackWhereTheRangeIsEmpty) {
  const auto image = MakeImage(3, 1, ColorMode::kValue, {-1.0F, 5.0F, 7.0F});
  for (const float high : {5.0F, 4.0F, kNan}) {
    EXPECT_TRUE(SameSamples({0.0F, 0.0F, 0.0F}, GetSamples(*ScEng::MakeDisplayImage(*image, 5.0F, high)))) << high;
  }
}

}  // namespace
}  // namespace Testing
