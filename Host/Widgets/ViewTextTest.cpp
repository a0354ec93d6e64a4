// SPDX-License-Identifier: Apache-2.0
#include "Host/Widgets/ViewText.h"

#include <gtest/gtest.h>

#include <memory>

#include "Host/Image/ImageMetadata.h"
#include "Host/Viewing/ViewImage.h"
#include "Tests/Support/HostTesting.h"

namespace ScEng {
namespace {

using Testing::kInfinity;
using Testing::kNan;
using Testing::MakeImage;

TEST(ViewText, WritesTheShortestNumberThatReadsBackAsTheSame) {
  EXPECT_EQ(FormatValue(0.1F), "0.1");
  EXPECT_EQ(FormatValue(-2.0F), "-2");
  EXPECT_EQ(FormatValue(0.33333334F), "0.33333334");
  EXPECT_EQ(FormatValue(kNan), "NaN");
  EXPECT_EQ(FormatValue(kInfinity), QString::fromUtf8("∞"));
  EXPECT_EQ(FormatValue(-kInfinity), QString::fromUtf8("−∞"));
}

TEST(ViewText, ReadsPixelsByTheirPlaceInTheDocument) {
  const auto image = MakeImage(2, 1, ColorMode::kColor, {0.5F, 0.25F, 0.0F, 1.0F, 1.0F, 0.0F, 2.0F, 0.5F});
  image->SetPin(10, 20);
  const auto view = ViewImage::Make(*image);
  EXPECT_EQ(FormatPixel(*view, {0, 0}), "0.5, 0.25, 0, 1");
  EXPECT_EQ(FormatPixel(*view, {2, 0}), "");
  EXPECT_EQ(FormatPixelAt(*view, {11, 20}), "1, 0, 2, 0.5");
  EXPECT_EQ(FormatPixelAt(*view, {0, 0}), "");
  EXPECT_EQ(FormatPixelAt(*view, {12, 20}), "");
}

TEST(ViewText, MarksWhatAPreviewSays) {
  ImageHeader header = ImageHeader::Fresh(4, 2, ColorMode::kValue);
  header.pin_x = 10;
  const auto preview = ViewImage::MakePreview(*MakeImage(2, 1, ColorMode::kValue, {0.5F, -3.0F}), 1, header);
  EXPECT_EQ(FormatPixel(*preview, {1, 1}), QStringLiteral("≈ 0.5"));
  EXPECT_EQ(FormatPixelAt(*preview, {12, 1}), QStringLiteral("≈ -3"));
  EXPECT_EQ(FormatPixelAt(*preview, {14, 1}), "");
  EXPECT_EQ(MarkPreview(*preview, ""), "");
}

TEST(ViewText, TellsPlacesOnTheGround) {
  const auto image = MakeImage(1, 1, ColorMode::kValue, {0.0F});
  EXPECT_FALSE(HasGround(*image));
  EXPECT_EQ(FormatGround(*image, {0.0, 0.0}), "");
  auto metadata = std::make_shared<ImageMetadata>();
  metadata->georeference = Georeference{"", std::array<double, 6>{500000.0, 30.0, 0.0, 5200000.0, 0.0, -30.0}};
  image->SetMetadata(metadata);
  EXPECT_TRUE(HasGround(*image));
  EXPECT_EQ(FormatGround(*image, {10.5, 2.5}), "500315, 5199925");
  metadata = std::make_shared<ImageMetadata>();
  // Pixels of a thousandth of a degree.
  metadata->georeference = Georeference{"", std::array<double, 6>{11.0, 0.001, 0.0, 47.0, 0.0, -0.001}};
  image->SetMetadata(metadata);
  EXPECT_EQ(FormatGround(*image, {0.5, 0.5}), "11.0005, 46.9995");
}

TEST(ViewText, WritesZoomsInPercent) {
  EXPECT_EQ(FormatZoom(1.0), "100 %");
  EXPECT_EQ(FormatZoom(64.0), "6400 %");
  EXPECT_EQ(FormatZoom(1.0 / 64.0), "1.56 %");
}

}  // namespace
}  // namespace ScEng
