// SPDX-License-Identifier: Apache-2.0
#include "Host/Testing/ImageComparison.h"

#include <gtest/gtest.h>

#include <limits>

#include "Tests/Support/HostTesting.h"

namespace {

using ScEng::CompareImages;
using Testing::MakeImage;

constexpr double kFar = std::numeric_limits<double>::infinity();

TEST(ImageComparison, AnswersTheMeanAndTheLargestDifference) {
  const auto a = MakeImage(2, 2, ColorMode::kValue, {0.0F, 1.0F, 2.0F, 3.0F});
  const auto b = MakeImage(2, 2, ColorMode::kValue, {0.5F, 1.0F, 0.5F, 3.0F});
  const auto difference = CompareImages(*a, *b);
  EXPECT_TRUE(difference.same_shape);
  EXPECT_EQ(difference.mean, 0.5);
  EXPECT_EQ(difference.largest, 1.5);
}

TEST(ImageComparison, TakesEverySampleOfEveryChannel) {
  const auto a = MakeImage(1, 2, ColorMode::kPair, {0.0F, 0.0F, 0.0F, 0.0F});
  const auto b = MakeImage(1, 2, ColorMode::kPair, {0.0F, 0.0F, 0.0F, -4.0F});
  EXPECT_EQ(CompareImages(*a, *b).mean, 1.0);
  EXPECT_EQ(CompareImages(*a, *b).largest, 4.0);
}

TEST(ImageComparison, EqualSamplesThatAreNotFiniteDoNotDiffer) {
  constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  const auto a = MakeImage(3, 1, ColorMode::kValue, {kNan, kInfinity, -kInfinity});
  EXPECT_EQ(CompareImages(*a, *a).largest, 0.0);
  for (const float other : {1.0F, kNan, -kInfinity}) {
    const auto b = MakeImage(3, 1, ColorMode::kValue, {kNan, other, -kInfinity});
    EXPECT_EQ(CompareImages(*a, *b).largest, kFar) << other;
    EXPECT_EQ(CompareImages(*b, *a).mean, kFar) << other;
  }
}

TEST(ImageComparison, SizeAndModeMustAgree) {
  const auto a = MakeImage(2, 1, ColorMode::kValue, {0.0F, 0.0F});
  EXPECT_FALSE(CompareImages(*a, *MakeImage(1, 2, ColorMode::kValue, {0.0F, 0.0F})).same_shape);
  EXPECT_FALSE(CompareImages(*a, *MakeImage(2, 1, ColorMode::kPair, {0.0F, 0.0F, 0.0F, 0.0F})).same_shape);
}

TEST(ImageComparison, TheRestOfTheHeadersDoesNotCount) {
  const auto a = MakeImage(2, 1, ColorMode::kValue, {0.0F, 1.0F});
  const auto b = MakeImage(2, 1, ColorMode::kValue, {0.0F, 1.0F});
  b->SetPin(5, 5);
  b->SetValueLowHigh(-3.0F, 3.0F);
  EXPECT_TRUE(CompareImages(*a, *b).same_shape);
  EXPECT_EQ(CompareImages(*a, *b).largest, 0.0);
}

TEST(ImageComparison, EmptyImagesAreEqual) {
  const auto a = MakeImage(0, 3, ColorMode::kValue, {});
  EXPECT_TRUE(CompareImages(*a, *a).same_shape);
  EXPECT_EQ(CompareImages(*a, *a).mean, 0.0);
}

}  // namespace
