// SPDX-License-Identifier: Apache-2.0
#include "Host/Image/Paste.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <vector>

#include "Tests/Support/HostTesting.h"

namespace Testing {
namespace {

using ScEng::Box2I;

constexpr int kValueMode = static_cast<int>(ColorMode::kValue);

ImagePtr Cut(const Image& image, const Box2I& box, unsigned mode) {
  return ImagePtr(Paste(&image, box, static_cast<int>(mode)));
}

/// 2 x 2 values that cover 10 to 12 and 20 to 22.
ImagePtr MakeSmall() {
  auto image = MakeImage(2, 2, ColorMode::kValue, {1.0F, 2.0F, 3.0F, 4.0F});
  image->SetPin(11, 22);
  image->SetPivot(0.5F, 1.0F);
  image->SetValueLowHigh(-2.0F, 8.0F);
  image->SetOutsideValue(0.5F);
  return image;
}

TEST(Paste, HoldsTheInputWhereItOverlapsAndItsOutsideValueElsewhere) {
  const auto image = MakeSmall();
  const auto around = Cut(*image, Box2I{9, 19, 13, 23}, ColorMode::kValue);
  ASSERT_NE(around, nullptr);
  EXPECT_TRUE(SameSamples({0.5F, 0.5F, 0.5F, 0.5F,  //
                           0.5F, 1.0F, 2.0F, 0.5F,  //
                           0.5F, 3.0F, 4.0F, 0.5F,  //
                           0.5F, 0.5F, 0.5F, 0.5F},
                          GetSamples(*around)));
  EXPECT_TRUE(SameSamples({4.0F, 0.5F}, GetSamples(*Cut(*image, Box2I{11, 21, 13, 22}, ColorMode::kValue))));
  EXPECT_TRUE(SameSamples({0.5F, 1.0F}, GetSamples(*Cut(*image, Box2I{9, 20, 11, 21}, ColorMode::kValue))));
  EXPECT_TRUE(SameSamples({1.0F, 2.0F, 3.0F, 4.0F}, GetSamples(*Cut(*image, image->GetBox(), ColorMode::kValue))));
}

TEST(Paste, HoldsNothingButTheOutsideValueBesideTheInput) {
  const auto image = MakeSmall();
  for (const Box2I& box : {Box2I{12, 20, 14, 21}, Box2I{8, 20, 10, 21}, Box2I{10, 22, 12, 23}, Box2I{10, 19, 12, 20},
                           Box2I{-2000000000, 5, -1999999998, 6}}) {
    EXPECT_TRUE(SameSamples({0.5F, 0.5F}, GetSamples(*Cut(*image, box, ColorMode::kValue)))) << box.left;
  }
}

TEST(Paste, LiesWhereTheBoxIs) {
  const auto image = MakeSmall();
  const Box2I box{-7, 21, 30, 26};
  const auto result = Cut(*image, box, ColorMode::kValue);
  EXPECT_EQ(result->GetBox(), box);
  EXPECT_EQ(result->GetPinX(), -7);
  EXPECT_EQ(result->GetPinY(), 21);
  EXPECT_EQ(result->GetPivotX(), 0.0F);
  EXPECT_EQ(result->GetPivotY(), 0.0F);
  EXPECT_EQ(result->GetValueLow(), -2.0F);
  EXPECT_EQ(result->GetValueHigh(), 8.0F);
  EXPECT_EQ(result->GetOutsideValue(), 0.5F);
  EXPECT_EQ(result->GetRefCount(), 1U) << "the reference of this test";
}

TEST(Paste, ConvertsToTheModeThatIsAskedFor) {
  const auto color = MakeImage(1, 1, ColorMode::kColor, {1.0F, 3.0F, 2.0F, 0.5F});
  color->SetOutsideValue(-1.0F);
  const Box2I box{0, 0, 2, 1};
  EXPECT_TRUE(SameSamples({1.0F, 3.0F, 2.0F, 0.5F, -1.0F, -1.0F, -1.0F, -1.0F},
                          GetSamples(*Cut(*color, box, ColorMode::kSigned))));
  EXPECT_TRUE(SameSamples({1.0F, -1.0F}, GetSamples(*Cut(*color, box, ColorMode::kValue))));
  EXPECT_TRUE(SameSamples({1.0F, 0.0F, -1.0F, -1.0F}, GetSamples(*Cut(*color, box, ColorMode::kPair))));
  EXPECT_TRUE(
      SameSamples({2.0F, 2.0F, 2.0F, 1.0F}, GetSamples(*Cut(*MakeSmall(), Box2I{11, 20, 12, 21}, ColorMode::kColor))));
}

TEST(Paste, MakesAnImageWithoutPixelsOfAnEmptyBox) {
  const auto result = Cut(*MakeSmall(), Box2I{11, 21, 11, 23}, ColorMode::kValue);
  ASSERT_NE(result, nullptr);
  EXPECT_EQ(result->GetSizeX(), 0);
  EXPECT_EQ(result->GetSizeY(), 2);
}

TEST(Paste, AnswersNullForWhatCannotBe) {
  const auto image = MakeSmall();
  constexpr std::int64_t kFar = std::int64_t{1} << 40;
  EXPECT_EQ(Paste(nullptr, Box2I{0, 0, 1, 1}, kValueMode), nullptr);
  EXPECT_EQ(PasteMask(nullptr, Box2I{0, 0, 1, 1}, 0.0F), nullptr);
  EXPECT_EQ(Paste(image.Get(), Box2I{0, 0, 1, 1}, 4), nullptr);
  EXPECT_EQ(Paste(image.Get(), Box2I{0, 0, 1, 1}, -1), nullptr);
  EXPECT_EQ(Paste(image.Get(), Box2I{1, 0, 0, 1}, kValueMode), nullptr);
  EXPECT_EQ(Paste(image.Get(), Box2I{0, 1, 1, 0}, kValueMode), nullptr);
  EXPECT_EQ(Paste(image.Get(), Box2I{kFar, 0, kFar + 1, 1}, kValueMode), nullptr);
  EXPECT_EQ(Paste(image.Get(), Box2I{0, -kFar, 1, -kFar + 1}, kValueMode), nullptr);
  constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max();
  EXPECT_EQ(Paste(image.Get(), Box2I{-kMost, -kMost, kMost, kMost}, kValueMode), nullptr);
}

TEST(Paste, AnswersNullBeyondTheLargestImageSize) {
  const auto image = MakeSmall();
  const MaxSizeScope scope(5, 4);
  EXPECT_NE(Cut(*image, Box2I{0, 0, 5, 4}, ColorMode::kValue), nullptr);
  EXPECT_EQ(Cut(*image, Box2I{0, 0, 6, 4}, ColorMode::kValue), nullptr);
  EXPECT_EQ(Cut(*image, Box2I{0, 0, 5, 5}, ColorMode::kValue), nullptr);
  EXPECT_EQ(PasteMask(image.Get(), Box2I{0, 0, 6, 1}, 0.0F), nullptr);
}

TEST(PasteMask, TakesTheValueAndAnOutsideOfItsOwn) {
  const auto color = MakeImage(1, 1, ColorMode::kColor, {1.0F, 3.0F, 2.0F, 0.5F});
  color->SetOutsideValue(-1.0F);
  color->SetValueLowHigh(4.0F, 5.0F);
  const ImagePtr mask(PasteMask(color.Get(), Box2I{-1, 0, 1, 1}, 0.75F));
  EXPECT_TRUE(SameSamples({0.75F, 1.0F}, GetSamples(*mask)));
  EXPECT_EQ(mask->GetColorMode(), ColorMode::kValue);
  EXPECT_EQ(mask->GetValueLow(), 0.0F);
  EXPECT_EQ(mask->GetValueHigh(), 1.0F);
  EXPECT_EQ(mask->GetOutsideValue(), 0.75F);
  EXPECT_EQ(mask->GetBox(), (Box2I{-1, 0, 1, 1}));
  EXPECT_EQ(mask->GetRefCount(), 1U) << "the reference of this test";
  const auto normal = MakeImage(1, 1, ColorMode::kSigned, {1.0F, 2.0F, 3.0F, 4.0F});
  EXPECT_TRUE(SameSamples({3.0F}, GetSamples(*ImagePtr(PasteMask(normal.Get(), {0, 0, 1, 1}, 0.0F)))));
}

TEST(Paste, GivesTheSameWithAnyNumberOfThreads) {
  Image image(401, 307, ColorMode::kValue, nullptr);
  float* samples = image.GetArray();
  for (std::size_t i = 0; i < image.GetNumSamples(); ++i) samples[i] = static_cast<float>(i);
  image.SetOutsideValue(-1.0F);
  for (const std::size_t threads : {1U, 2U, 16U}) {
    const ThreadsScope scope(threads);
    const auto result = Cut(image, Box2I{-50, 20, 450, 420}, ColorMode::kValue);
    for (int y = 0; y < 400; ++y) {
      for (int x = 0; x < 500; ++x) {
        const int own_x = x - 50;
        const int own_y = y + 20;
        const bool inside = own_x >= 0 && own_x < 401 && own_y < 307;
        ASSERT_EQ(result->GetConstArray()[y * 500 + x], inside ? static_cast<float>(own_y * 401 + own_x) : -1.0F);
      }
    }
  }
}

}  // namespace
}  // namespace Testing
