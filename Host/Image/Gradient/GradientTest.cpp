// SPDX-License-Identifier: Apache-2.0
#include "Host/Image/Gradient.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <random>
#include <vector>

#include "Tests/Support/HostTesting.h"
#include "Tests/Support/InstructionSets.h"

namespace Testing {
namespace {

struct Derivatives {
  ImagePtr x;
  ImagePtr y;
};

Derivatives Derive(const Image& source, bool seamless) {
  Derivatives result{ScEng::MakeRef<Image>(source.GetSizeX(), source.GetSizeY(), ColorMode::kValue, nullptr),
                     ScEng::MakeRef<Image>(source.GetSizeX(), source.GetSizeY(), ColorMode::kValue, nullptr)};
  EXPECT_TRUE(ImageValue::Gradient(source, *result.x, *result.y, seamless));
  return result;
}

/// One derivative by the definition, pixel by pixel.
float Derivative(const std::vector<float>& line, std::size_t place, bool seamless) {
  const std::size_t size = line.size();
  if (size == 1) return 0.0F;
  if (seamless) return (line[(place + 1) % size] - line[(place + size - 1) % size]) * 0.5F;
  if (place == 0) return line[1] - line[0];
  if (place == size - 1) return line[place] - line[place - 1];
  return (line[place + 1] - line[place - 1]) * 0.5F;
}

TEST(Gradient, IsHalfTheDifferenceOfTheNeighbors) {
  const auto image = MakeImage(4, 3, ColorMode::kValue,
                               {1.0F, 2.0F, 4.0F, 8.0F,  //
                                0.0F, 0.0F, 8.0F, 0.0F,  //
                                9.0F, 2.0F, 6.0F, 4.0F});
  const Derivatives open = Derive(*image, false);
  EXPECT_TRUE(SameSamples({1.0F, 1.5F, 3.0F, 4.0F,   //
                           0.0F, 4.0F, 0.0F, -8.0F,  //
                           -7.0F, -1.5F, 1.0F, -2.0F},
                          GetSamples(*open.x)));
  EXPECT_TRUE(SameSamples({-1.0F, -2.0F, 4.0F, -8.0F,  //
                           4.0F, 0.0F, 1.0F, -2.0F,    //
                           9.0F, 2.0F, -2.0F, 4.0F},
                          GetSamples(*open.y)));
  const Derivatives seamless = Derive(*image, true);
  EXPECT_TRUE(SameSamples({-3.0F, 1.5F, 3.0F, -1.5F,  //
                           0.0F, 4.0F, 0.0F, -4.0F,   //
                           -1.0F, -1.5F, 1.0F, 1.5F},
                          GetSamples(*seamless.x)));
  EXPECT_TRUE(SameSamples({-4.5F, -1.0F, 1.0F, -2.0F,  //
                           4.0F, 0.0F, 1.0F, -2.0F,    //
                           0.5F, 1.0F, -2.0F, 4.0F},
                          GetSamples(*seamless.y)));
}

TEST(Gradient, IsZeroAlongASideOfOnePixelWhateverThePixelIs) {
  for (const float level : {3.0F, kNan, kInfinity}) {
    for (const bool seamless : {false, true}) {
      const Image one(1, 1, ColorMode::kValue, &level);
      const Derivatives result = Derive(one, seamless);
      EXPECT_TRUE(SameSamples({0.0F}, GetSamples(*result.x)));
      EXPECT_TRUE(SameSamples({0.0F}, GetSamples(*result.y)));
      const auto row = MakeImage(3, 1, ColorMode::kValue, {level, 1.0F, 2.0F});
      EXPECT_TRUE(SameSamples({0.0F, 0.0F, 0.0F}, GetSamples(*Derive(*row, seamless).y)));
      const auto column = MakeImage(1, 3, ColorMode::kValue, {level, 1.0F, 2.0F});
      EXPECT_TRUE(SameSamples({0.0F, 0.0F, 0.0F}, GetSamples(*Derive(*column, seamless).x)));
    }
  }
}

TEST(Gradient, OfTwoPixelsIsTheirDifferenceOrSeamlesslyNothing) {
  const auto row = MakeImage(2, 1, ColorMode::kValue, {1.0F, 4.0F});
  EXPECT_TRUE(SameSamples({3.0F, 3.0F}, GetSamples(*Derive(*row, false).x)));
  EXPECT_TRUE(SameSamples({0.0F, 0.0F}, GetSamples(*Derive(*row, true).x)));
}

TEST(Gradient, DeclaresTheRangeOfItsFiniteSamples) {
  // Along x, open: 2, 1.5, infinity, NaN, -infinity, -3.
  const auto row = MakeImage(7, 1, ColorMode::kValue, {1.0F, 3.0F, 4.0F, kInfinity, kInfinity, 5.0F, 2.0F});
  const Derivatives result = Derive(*row, false);
  EXPECT_TRUE(SameSamples({2.0F, 1.5F, kInfinity, kInfinity, -kInfinity, -kInfinity, -3.0F}, GetSamples(*result.x)));
  EXPECT_EQ(result.x->GetValueLow(), -3.0F);
  EXPECT_EQ(result.x->GetValueHigh(), 2.0F);
  EXPECT_EQ(result.y->GetValueLow(), 0.0F);
  EXPECT_EQ(result.y->GetValueHigh(), 0.0F);
  const Image nan(3, 3, ColorMode::kValue, &kNan);
  const Derivatives none = Derive(nan, true);
  EXPECT_EQ(none.x->GetValueLow(), 0.0F);
  EXPECT_EQ(none.x->GetValueHigh(), 0.0F);
  EXPECT_EQ(none.y->GetValueHigh(), 0.0F);
}

TEST(Gradient, KeepsTheRestOfTheHeaders) {
  const auto source = MakeImage(2, 1, ColorMode::kValue, {0.0F, 1.0F});
  Image x(2, 1, ColorMode::kValue, nullptr);
  Image y(2, 1, ColorMode::kValue, nullptr);
  x.SetPin(3, 4);
  x.SetPivot(0.5F, 0.25F);
  x.SetOutsideValue(7.0F);
  ASSERT_TRUE(ImageValue::Gradient(*source, x, y, false));
  EXPECT_EQ(x.GetPinX(), 3);
  EXPECT_EQ(x.GetPivotY(), 0.25F);
  EXPECT_EQ(x.GetOutsideValue(), 7.0F);
}

TEST(Gradient, IsWhatOnePlainLoopFindsOnEveryInstructionSetAndNumberOfThreads) {
  // The widest is measured in several blocks a row, the largest is written past the caches.
  const int sizes[][2] = {{1, 1},    {2, 2},    {3, 1},    {1, 3},    {5, 7},     {7, 9},    {15, 3},
                          {16, 4},   {17, 4},   {31, 5},   {33, 2},   {64, 2},    {65, 3},   {2047, 3},
                          {2048, 2}, {2049, 2}, {2051, 3}, {4100, 2}, {300, 401}, {1, 5000}, {1499, 1409}};
  const float strange[] = {kNan, kInfinity, -kInfinity, kSmallest, -kSmallest, 0.0F, -0.0F, 3e38F, -3e38F};
  std::mt19937 random(9);
  for (const auto& size : sizes) {
    const auto width = static_cast<std::size_t>(size[0]);
    const auto height = static_cast<std::size_t>(size[1]);
    std::vector<float> samples(width * height);
    for (float& sample : samples) {
      sample = static_cast<float>(static_cast<int>(random() % 2001) - 1000) * 0.37F;
      if (random() % 50 == 0) sample = strange[random() % std::size(strange)];
    }
    const auto image = MakeImage(size[0], size[1], ColorMode::kValue, samples);
    for (const bool seamless : {false, true}) {
      std::vector<float> expected_x(samples.size());
      std::vector<float> expected_y(samples.size());
      std::vector<float> line(width);
      for (std::size_t y = 0; y < height; ++y) {
        for (std::size_t x = 0; x < width; ++x) line[x] = samples[y * width + x];
        for (std::size_t x = 0; x < width; ++x) expected_x[y * width + x] = Derivative(line, x, seamless);
      }
      line.resize(height);
      for (std::size_t x = 0; x < width; ++x) {
        for (std::size_t y = 0; y < height; ++y) line[y] = samples[y * width + x];
        for (std::size_t y = 0; y < height; ++y) expected_y[y * width + x] = Derivative(line, y, seamless);
      }
      line.resize(width);
      float low = kInfinity;
      float high = -kInfinity;
      for (const float sample : expected_x) {
        if (std::isfinite(sample)) low = std::fmin(low, sample);
        if (std::isfinite(sample)) high = std::fmax(high, sample);
      }
      OnEveryInstructionSet([&] {
        for (const std::size_t threads : {1U, 2U, 16U}) {
          const ThreadsScope scope(threads);
          const Derivatives result = Derive(*image, seamless);
          ASSERT_TRUE(SameSamples(expected_x, GetSamples(*result.x))) << width << " x " << height;
          ASSERT_TRUE(SameSamples(expected_y, GetSamples(*result.y))) << width << " x " << height;
          ASSERT_EQ(result.x->GetValueLow(), low);
          ASSERT_EQ(result.x->GetValueHigh(), high);
        }
      });
    }
  }
}

TEST(Gradient, TakesImagesWithoutPixels) {
  for (const auto& [width, height] : {std::pair{0, 0}, std::pair{0, 4}, std::pair{4, 0}}) {
    const Derivatives result = Derive(Image(width, height, ColorMode::kValue, nullptr), true);
    EXPECT_EQ(result.x->GetValueHigh(), 0.0F);
    EXPECT_EQ(result.y->GetValueLow(), 0.0F);
  }
}

TEST(Gradient, RefusesImagesThatDoNotFit) {
  const float one[] = {1.0F, 1.0F};
  Image source(3, 2, ColorMode::kValue, one);
  Image x(3, 2, ColorMode::kValue, one);
  Image y(3, 2, ColorMode::kValue, one);
  Image wide(4, 2, ColorMode::kValue, one);
  Image high(3, 3, ColorMode::kValue, one);
  Image pair(3, 2, ColorMode::kPair, one);
  EXPECT_FALSE(ImageValue::Gradient(pair, x, y, true));
  for (Image* unfit : {&wide, &high, &pair, &source, &x}) EXPECT_FALSE(ImageValue::Gradient(source, x, *unfit, true));
  for (Image* unfit : {&wide, &high, &pair, &source}) EXPECT_FALSE(ImageValue::Gradient(source, *unfit, y, true));
  EXPECT_TRUE(SameSamples(std::vector<float>(6, 1.0F), GetSamples(x)));
}

}  // namespace
}  // namespace Testing
