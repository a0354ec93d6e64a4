// SPDX-License-Identifier: Apache-2.0
#include "Host/Viewing/Probe.h"

#include <gtest/gtest.h>

#include <memory>

#include "Host/Image/ImageMetadata.h"
#include "Tests/Support/ViewTesting.h"

namespace Testing {
namespace {

using ScEng::FormatSample;
using ScEng::GetMapPoint;
using ScEng::PixelReading;
using ScEng::ReadPixel;

TEST(ReadPixel, GivesSamplesAndValue) {
  const auto view = MakeView(2, 2, ColorMode::kSigned, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16});
  const PixelReading reading = ReadPixel(*view, 1, 1);
  EXPECT_TRUE(reading.is_inside);
  EXPECT_EQ(reading.x, 1);
  EXPECT_EQ(reading.y, 1);
  ASSERT_EQ(reading.channels, 4);
  EXPECT_EQ(std::vector<float>(reading.samples, reading.samples + 4), (std::vector<float>{13, 14, 15, 16}));
  EXPECT_EQ(reading.value, 15.0F);
  EXPECT_EQ(ReadPixel(*MakeView(1, 1, ColorMode::kPair, {4, 5}), 0, 0).channels, 2);
}

TEST(ReadPixel, KnowsWhatLiesOutside) {
  const auto view = MakeView(2, 1, ColorMode::kValue, {1, 2});
  for (const auto& [x, y] : {std::pair(-1, 0), std::pair(2, 0), std::pair(0, -1), std::pair(0, 1)}) {
    const PixelReading reading = ReadPixel(*view, x, y);
    EXPECT_FALSE(reading.is_inside);
    EXPECT_EQ(reading.x, x);
    EXPECT_EQ(reading.y, y);
    EXPECT_EQ(reading.channels, 0);
  }
}

TEST(FormatSample, IsTheShortestText) {
  EXPECT_EQ(FormatSample(0.1F), "0.1");
  EXPECT_EQ(FormatSample(-2.0F), "-2");
  EXPECT_EQ(FormatSample(16777216.0F), "16777216");
  EXPECT_EQ(FormatSample(1e20F), "1e+20");
  EXPECT_EQ(FormatSample(0.33333334F), "0.33333334");
  EXPECT_EQ(FormatSample(kNan), "nan");
  EXPECT_EQ(FormatSample(-kNan), "nan");
  EXPECT_EQ(FormatSample(kInfinity), "inf");
  EXPECT_EQ(FormatSample(-kInfinity), "-inf");
}

TEST(GetMapPoint, FollowsTheTransform) {
  const auto image = MakeImage(1, 1, ColorMode::kValue, {0});
  EXPECT_FALSE(GetMapPoint(*image, 0, 0).has_value());
  auto metadata = std::make_shared<ScEng::ImageMetadata>();
  metadata->georeference.emplace();
  image->SetMetadata(metadata);
  EXPECT_FALSE(GetMapPoint(*image, 0, 0).has_value());
  auto placed = std::make_shared<ScEng::ImageMetadata>();
  placed->georeference.emplace();
  placed->georeference->transform = {500000.0, 10.0, 0.5, 4000000.0, 0.25, -10.0};
  image->SetMetadata(placed);
  const auto point = GetMapPoint(*image, 4.0, 2.0);
  ASSERT_TRUE(point.has_value());
  EXPECT_EQ((*point)[0], 500041.0);
  EXPECT_EQ((*point)[1], 3999981.0);
}

}  // namespace
}  // namespace Testing
