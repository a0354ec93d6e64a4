// SPDX-License-Identifier: Apache-2.0
#include "Host/Viewing/ReduceImage.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>

#include "Host/Image/ImageMetadata.h"
#include "Host/Viewing/ViewImage.h"
#include "Tests/Support/ImageTesting.h"
#include "Tests/Support/Numbers.h"

namespace Testing {
namespace {

using ScEng::ReduceImage;
using ScEng::ViewImage;

ImagePtr MakeNoise(int size_x, int size_y, unsigned color_mode) {
  std::mt19937 random(static_cast<unsigned>(size_x));
  std::uniform_real_distribution<float> values(-2.0F, 3.0F);
  auto image = ScEng::MakeRef<Image>(size_x, size_y, color_mode, nullptr);
  float* const samples = image->GetArray();
  for (std::size_t i = 0; i < image->GetNumSamples(); ++i) samples[i] = random() % 19 == 0 ? kNan : values(random);
  return image;
}

TEST(ReduceImage, MakesTheLevelsOfAView) {
  for (const unsigned mode : {ColorMode::kValue, ColorMode::kPair, ColorMode::kColor}) {
    for (const auto& [size_x, size_y] : {std::pair(256, 130), std::pair(301, 77), std::pair(65, 513)}) {
      const ImagePtr image = MakeNoise(size_x, size_y, mode);
      const auto view = ViewImage::Make(*image);
      for (int halvings = 0; halvings < view->GetNumLevels(); ++halvings) {
        const ImagePtr reduced = ReduceImage(*image, halvings);
        const ViewImage::Level level = view->GetLevel(halvings);
        ASSERT_EQ(reduced->GetSizeX(), level.size_x);
        ASSERT_EQ(reduced->GetSizeY(), level.size_y);
        EXPECT_EQ(std::memcmp(reduced->GetConstArray(), level.samples, reduced->GetNumSamples() * sizeof(float)), 0)
            << size_x << " x " << size_y << ", mode " << mode << ", halved " << halvings;
      }
    }
  }
}

TEST(ReduceImage, KeepsModeRangeOutsideAndMetadata) {
  const ImagePtr image = MakeNoise(9, 5, ColorMode::kPair);
  image->SetValueLowHigh(-2.0F, 7.0F);
  image->SetOutsideValue(0.25F);
  image->SetMetadata(std::make_shared<const ScEng::ImageMetadata>());
  const ImagePtr reduced = ReduceImage(*image, 1);
  EXPECT_EQ(reduced->GetColorMode(), ColorMode::kPair);
  EXPECT_EQ(reduced->GetValueLow(), -2.0F);
  EXPECT_EQ(reduced->GetValueHigh(), 7.0F);
  EXPECT_EQ(reduced->GetOutsideValue(), 0.25F);
  EXPECT_EQ(reduced->GetMetadata(), image->GetMetadata());
}

TEST(ReduceImage, KeepsItsPlaceByTheSameScale) {
  // From -40 to 60 and from 17 to 50.
  ImageHeader header = ImageHeader::Fresh(100, 33, ColorMode::kValue);
  header.pin_x = 10;
  header.pivot_x = 0.5F;
  header.pin_y = 17;
  const ScEng::Box2I box = ScEng::ReduceHeader(header, 2).GetBox();
  EXPECT_EQ(box, (ScEng::Box2I{-10, 4, 15, 13}));
  EXPECT_EQ(ScEng::ReduceHeader(header, 0).pivot_x, 0.5F);
  EXPECT_EQ(ScEng::ReduceSize(33, 2), 9);
}

}  // namespace
}  // namespace Testing
