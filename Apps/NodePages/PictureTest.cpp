// SPDX-License-Identifier: Apache-2.0
#include "Apps/NodePages/Picture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace {

constexpr Look kGray{};

ImagePtr MakeValues(int size_x, int size_y, const std::vector<float>& samples) {
  auto image = ScEng::MakeRef<Image>(size_x, size_y, ColorMode::kValue, nullptr);
  std::copy(samples.begin(), samples.end(), image->GetArray());
  return image;
}

/// The samples of the pixel at (x, y) of a picture, in steps of 8 bit.
std::vector<long> GetSteps(const Image& picture, int x, int y) {
  std::vector<long> steps;
  const int channels = picture.GetNumChannels();
  for (int k = 0; k < channels; ++k) {
    steps.push_back(std::lround(picture.GetConstArray()[(y * picture.GetSizeX() + x) * channels + k] * 255.0F));
  }
  return steps;
}

using Steps = std::vector<long>;

TEST(PictureLook, ReadsTheFourForms) {
  EXPECT_EQ(ParseLook("grey -1 2.5")->low, -1.0F);
  EXPECT_EQ(ParseLook("grey -1 2.5")->high, 2.5F);
  EXPECT_EQ(ParseLook("signed 0.25")->kind, Look::Kind::kSigned);
  EXPECT_EQ(ParseLook("labels")->kind, Look::Kind::kLabels);
  EXPECT_EQ(ParseLook("color")->kind, Look::Kind::kColor);
}

TEST(PictureLook, RefusesWhatIsIncompleteOrEmpty) {
  for (const char* text :
       {"", "gray 0 1", "grey", "grey 0", "grey 1 1", "grey 0 1 2", "signed", "signed 0", "labels 3"}) {
    EXPECT_FALSE(ParseLook(text)) << text;
  }
}

TEST(PictureLook, IsDescribedWithItsNumbers) {
  EXPECT_EQ(DescribeLook(*ParseLook("grey 0 1.25")), "black is 0, white is 1.25");
  EXPECT_EQ(DescribeLook(*ParseLook("signed 0.5")), "blue is -0.5, white is 0, red is 0.5");
}

TEST(Picture, EnlargesSmallImagesPixelByPixel) {
  const auto picture = DrawPicture(*MakeValues(2, 1, {0.0F, 1.0F}), kGray);
  ASSERT_EQ(picture->GetSizeX(), 256);
  ASSERT_EQ(picture->GetSizeY(), 128);
  EXPECT_EQ(GetSteps(*picture, 127, 0), Steps{0});
  EXPECT_EQ(GetSteps(*picture, 128, 127), Steps{255});
}

TEST(Picture, AveragesLargeImagesOverBlocks) {
  // 512 columns make blocks of two; the first holds 0 and 1, the second 1 and 1.
  std::vector<float> samples(512, 1.0F);
  samples[0] = 0.0F;
  const auto picture = DrawPicture(*MakeValues(512, 1, samples), kGray);
  ASSERT_EQ(picture->GetSizeX(), 256);
  ASSERT_EQ(picture->GetSizeY(), 1);
  EXPECT_EQ(GetSteps(*picture, 0, 0), Steps{128});
  EXPECT_EQ(GetSteps(*picture, 1, 0), Steps{255});
}

TEST(Picture, CutsGrayAtItsEnds) {
  const auto picture = DrawPicture(*MakeValues(2, 1, {-5.0F, 9.0F}), {Look::Kind::kGray, 1.0F, 3.0F});
  EXPECT_EQ(GetSteps(*picture, 0, 0), Steps{0});
  EXPECT_EQ(GetSteps(*picture, 255, 0), Steps{255});
}

TEST(Picture, ShowsWhatIsNotFiniteInMagenta) {
  const float infinity = std::numeric_limits<float>::infinity();
  const float nan = std::numeric_limits<float>::quiet_NaN();
  const auto picture = DrawPicture(*MakeValues(2, 1, {infinity, nan}), kGray);
  const Steps magenta{230, 0, 230, 255};
  EXPECT_EQ(GetSteps(*picture, 0, 0), magenta);
  EXPECT_EQ(GetSteps(*picture, 255, 0), magenta);
}

TEST(Picture, GivesNeighboringLabelsDifferentColors) {
  const auto picture = DrawPicture(*MakeValues(4, 1, {0.0F, 1.0F, 2.0F, 1.0F}), {Look::Kind::kLabels});
  EXPECT_NE(GetSteps(*picture, 0, 0), GetSteps(*picture, 64, 0));
  EXPECT_NE(GetSteps(*picture, 64, 0), GetSteps(*picture, 128, 0));
  EXPECT_EQ(GetSteps(*picture, 64, 0), GetSteps(*picture, 192, 0));
}

TEST(Picture, CountsColorsByTheirOpacity) {
  // Blocks of two: one opaque red pixel and one clear green one make half clear red.
  Image image(512, 1, ColorMode::kColor, nullptr);
  for (int x = 0; x < 512; ++x) {
    const bool even = x % 2 == 0;
    const float pixel[4] = {even ? 1.0F : 0.0F, even ? 0.0F : 1.0F, 0.0F, even ? 1.0F : 0.0F};
    std::copy(pixel, pixel + 4, image.GetArray() + x * 4);
  }
  EXPECT_EQ(GetSteps(*DrawPicture(image, {Look::Kind::kColor}), 0, 0), (Steps{255, 0, 0, 128}));
}

TEST(Picture, LooksAlikeWithinOneStep) {
  const auto one = MakeValues(1, 1, {100.0F / 255.0F});
  EXPECT_TRUE(LookAlike(*one, *MakeValues(1, 1, {101.0F / 255.0F})));
  EXPECT_FALSE(LookAlike(*one, *MakeValues(1, 1, {102.0F / 255.0F})));
  EXPECT_FALSE(LookAlike(*one, *MakeValues(2, 1, {100.0F / 255.0F, 100.0F / 255.0F})));
}

TEST(Picture, LooksAlikeWhateverTheMode) {
  const float gray[4] = {0.4F, 0.4F, 0.4F, 1.0F};
  EXPECT_TRUE(LookAlike(*MakeValues(1, 1, {0.4F}), Image(1, 1, ColorMode::kColor, gray)));
  const float clear[4] = {0.4F, 0.4F, 0.4F, 0.5F};
  EXPECT_FALSE(LookAlike(*MakeValues(1, 1, {0.4F}), Image(1, 1, ColorMode::kColor, clear)));
}

}  // namespace
