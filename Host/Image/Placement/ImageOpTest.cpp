// SPDX-License-Identifier: Apache-2.0
#include "Host/Image/ImageOp.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

#include "Tests/Support/HostTesting.h"

namespace Testing {
namespace {

using ScEng::Box2I;

constexpr std::int64_t kFar = std::numeric_limits<std::int64_t>::max();

TEST(FillBox, SetsWhatLiesInTheBoxInDocumentCoordinates) {
  const float zero = 0.0F;
  Image image(4, 3, ColorMode::kValue, &zero);
  image.SetPin(10, -20);
  image.SetPivot(0.5F, 1.0F);
  // The image covers 8 to 12 and -23 to -20.
  const float value[] = {5.0F, 9.0F};
  ImageOp::FillBox(image, Box2I{9, -22, 11, -20}, value);
  EXPECT_TRUE(SameSamples({0.0F, 0.0F, 0.0F, 0.0F,  //
                           0.0F, 5.0F, 5.0F, 0.0F,  //
                           0.0F, 5.0F, 5.0F, 0.0F},
                          GetSamples(image)));
}

TEST(FillBox, SetsEveryChannel) {
  const float value[] = {1.0F, -0.0F, 3.0F, 4.0F};
  for (unsigned mode = 0; mode < ColorMode::kCount; ++mode) {
    const auto channels = static_cast<std::size_t>(ColorMode::GetNumChannels(mode));
    const float before[] = {7.0F, 7.0F, 7.0F, 7.0F};
    Image image(2, 1, mode, before);
    ImageOp::FillBox(image, Box2I{1, 0, 2, 1}, value);
    std::vector<float> expected(channels, 7.0F);
    expected.insert(expected.end(), value, value + channels);
    EXPECT_TRUE(SameSamples(expected, GetSamples(image)));
  }
}

TEST(FillBox, ClipsTheBoxAtTheImage) {
  const float value = 1.0F;
  const float zero = 0.0F;
  const struct {
    Box2I box;
    std::vector<float> expected;
  } cases[] = {{{-5, -5, 1, 1}, {1.0F, 0.0F, 0.0F, 0.0F}},
               {{1, 1, 50, 50}, {0.0F, 0.0F, 0.0F, 1.0F}},
               {{-kFar, -kFar, kFar, kFar}, {1.0F, 1.0F, 1.0F, 1.0F}},
               {{0, 0, 0, 2}, {0.0F, 0.0F, 0.0F, 0.0F}},
               {{1, 1, 0, 0}, {0.0F, 0.0F, 0.0F, 0.0F}},
               {{2, 0, 4, 2}, {0.0F, 0.0F, 0.0F, 0.0F}},
               {{0, -9, 2, 0}, {0.0F, 0.0F, 0.0F, 0.0F}}};
  for (const auto& [box, expected] : cases) {
    Image image(2, 2, ColorMode::kValue, &zero);
    ImageOp::FillBox(image, box, &value);
    EXPECT_TRUE(SameSamples(expected, GetSamples(image))) << box.left << ", " << box.top;
  }
}

TEST(FillBox, KeepsTheHeaderAndForgetsTheKnownRange) {
  const float zero = 0.0F;
  Image image(2, 2, ColorMode::kValue, &zero);
  EXPECT_EQ(image.GetSampleRange().high, 0.0F);
  const float value = 6.0F;
  ImageOp::FillBox(image, image.GetBox(), &value);
  EXPECT_EQ(image.GetSampleRange().high, 6.0F);
  EXPECT_EQ(image.GetValueHigh(), 1.0F);
}

TEST(FillBox, FillsLargeBoxesWithAnyNumberOfThreads) {
  for (const std::size_t threads : {1U, 2U, 16U}) {
    const ThreadsScope scope(threads);
    const float zero[] = {0.0F, 0.0F};
    const float value[] = {1.0F, 2.0F};
    Image image(501, 403, ColorMode::kPair, zero);
    ImageOp::FillBox(image, Box2I{3, 5, 499, 400}, value);
    for (int y = 0; y < 403; ++y) {
      for (int x = 0; x < 501; ++x) {
        const bool inside = x >= 3 && x < 499 && y >= 5 && y < 400;
        const float* pixel = image.GetConstArray() + (y * 501 + x) * 2;
        ASSERT_EQ(pixel[0], inside ? 1.0F : 0.0F) << x << ", " << y;
        ASSERT_EQ(pixel[1], inside ? 2.0F : 0.0F) << x << ", " << y;
      }
    }
  }
}

}  // namespace
}  // namespace Testing
