// SPDX-License-Identifier: Apache-2.0
#include "Host/Image/Filter.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <stdexcept>
#include <vector>

#include "Tests/Support/HostTesting.h"

namespace Testing {
namespace {

TEST(Fill, SetsEveryPixelWithoutAMask) {
  const float value[] = {1.0F, kNan, -0.0F, 4.0F, 9.0F};
  for (unsigned mode = 0; mode < ColorMode::kCount; ++mode) {
    const auto channels = static_cast<std::size_t>(ColorMode::GetNumChannels(mode));
    Image image(3, 2, mode, nullptr);
    Filter::Fill(image, nullptr, value, 0);
    std::vector<float> expected;
    for (int pixel = 0; pixel < 6; ++pixel) expected.insert(expected.end(), value, value + channels);
    EXPECT_TRUE(SameSamples(expected, GetSamples(image)));
  }
}

TEST(Fill, MovesSamplesAsFarAsTheMaskSays) {
  const auto image = MakeImage(9, 1, ColorMode::kValue, {0.0F, 8.0F, 8.0F, 8.0F, 8.0F, 8.0F, -8.0F, 0.0F, 8.0F});
  const auto mask =
      MakeImage(9, 1, ColorMode::kValue, {0.5F, 0.0F, 0.25F, 1.0F, 2.0F, -1.0F, kNan, kInfinity, -kInfinity});
  const float value = 4.0F;
  Filter::Fill(*image, mask.Get(), &value, 0);
  EXPECT_TRUE(SameSamples({2.0F, 8.0F, 7.0F, 4.0F, 4.0F, 8.0F, -8.0F, 4.0F, 8.0F}, GetSamples(*image)));
}

TEST(Fill, IsExactlyTheValueWhereTheMaskIsOne) {
  // 1e9 + (0.3 - 1e9) * 1 is 0.
  const auto image = MakeImage(4, 1, ColorMode::kValue, {1e9F, kNan, kInfinity, -kInfinity});
  const float one = 1.0F;
  const Image mask(4, 1, ColorMode::kValue, &one);
  const float value = 0.3F;
  Filter::Fill(*image, &mask, &value, 0);
  EXPECT_TRUE(SameSamples({0.3F, 0.3F, 0.3F, 0.3F}, GetSamples(*image)));
}

TEST(Fill, FollowsItsFormulaForStrangeSamples) {
  const auto image = MakeImage(4, 1, ColorMode::kValue, {kInfinity, kNan, -0.0F, 3.0F});
  const float none = 0.0F;
  const Image mask(4, 1, ColorMode::kValue, &none);
  const float value = 1.0F;
  Filter::Fill(*image, &mask, &value, 0);
  EXPECT_TRUE(SameSamples({kNan, kNan, 0.0F, 3.0F}, GetSamples(*image)));
}

TEST(Fill, ReadsAMaskOfAnyModeByItsValue) {
  const float value[] = {10.0F, 20.0F};
  const struct {
    unsigned mode;
    std::vector<float> pixel;
  } masks[] = {{ColorMode::kValue, {0.5F}},
               {ColorMode::kPair, {0.5F, 9.0F}},
               {ColorMode::kSigned, {9.0F, 9.0F, 0.5F, 9.0F}},
               // (0.5 * 1.5 + 0.5 * 1.5 + 0.5 * 0) / 3
               {ColorMode::kColor, {1.5F, 1.5F, 0.0F, 0.5F}}};
  for (const auto& [mode, pixel] : masks) {
    const auto image = MakeImage(1, 1, ColorMode::kPair, {0.0F, 10.0F});
    const auto mask = MakeImage(1, 1, mode, pixel);
    Filter::Fill(*image, mask.Get(), value, 0);
    EXPECT_TRUE(SameSamples({5.0F, 15.0F}, GetSamples(*image))) << mode;
  }
}

TEST(Fill, DoesNotDependOnThreadsOrPlace) {
  const int width = 701;
  const int height = 311;
  std::mt19937 random(3);
  const auto number = [&] { return static_cast<float>(static_cast<int>(random() % 3001) - 1000) * 1e-3F; };
  for (unsigned mode = 0; mode < ColorMode::kCount; ++mode) {
    const auto channels = static_cast<std::size_t>(ColorMode::GetNumChannels(mode));
    const float value[] = {0.25F, -3.0F, 1e-3F, 7.0F};
    std::vector<float> samples(static_cast<std::size_t>(width * height) * channels);
    std::vector<float> strengths(static_cast<std::size_t>(width * height));
    for (float& sample : samples) sample = number();
    for (float& strength : strengths) strength = number();
    const auto mask = MakeImage(width, height, ColorMode::kValue, strengths);
    std::vector<float> expected = samples;
    for (std::size_t i = 0; i < samples.size(); ++i) {
      const float strength = std::fmin(std::fmax(strengths[i / channels], 0.0F), 1.0F);
      const float goal = value[i % channels];
      expected[i] = strength == 1.0F ? goal : samples[i] + (goal - samples[i]) * strength;
    }
    for (const std::size_t threads : {1U, 2U, 16U}) {
      const ThreadsScope scope(threads);
      const auto image = MakeImage(width, height, mode, samples);
      Filter::Fill(*image, mask.Get(), value, 0);
      EXPECT_TRUE(SameSamples(expected, GetSamples(*image))) << mode;
    }
  }
}

TEST(Fill, KeepsTheHeaderAndForgetsTheKnownRange) {
  const auto image = MakeImage(2, 1, ColorMode::kValue, {1.0F, 2.0F});
  image->SetValueLowHigh(-1.0F, 3.0F);
  image->SetPin(7, 8);
  EXPECT_EQ(image->GetSampleRange().high, 2.0F);
  const float value = 5.0F;
  Filter::Fill(*image, nullptr, &value, 0);
  EXPECT_EQ(image->GetValueLow(), -1.0F);
  EXPECT_EQ(image->GetValueHigh(), 3.0F);
  EXPECT_EQ(image->GetPinX(), 7);
  EXPECT_EQ(image->GetSampleRange().high, 5.0F);
}

TEST(Fill, RefusesAMaskOfAnotherSize) {
  const float value = 5.0F;
  Image image(3, 2, ColorMode::kValue, &value);
  const Image mask(2, 3, ColorMode::kValue, &value);
  EXPECT_THROW(Filter::Fill(image, &mask, &value, 0), std::invalid_argument);
}

TEST(Fill, TakesImagesWithoutPixels) {
  const float value = 5.0F;
  Image image(0, 3, ColorMode::kValue, nullptr);
  const Image mask(0, 3, ColorMode::kColor, nullptr);
  Filter::Fill(image, nullptr, &value, 0);
  Filter::Fill(image, &mask, &value, 0);
  EXPECT_EQ(image.GetNumSamples(), 0U);
}

TEST(Copy, TakesSamplesAndValueRangeAndNothingElse) {
  const auto from = MakeImage(2, 1, ColorMode::kPair, {kNan, -0.0F, kInfinity, 4.0F});
  from->SetValueLowHigh(-1.0F, 3.0F);
  from->SetPin(7, 8);
  const float none[] = {0.0F, 0.0F};
  Image to(2, 1, ColorMode::kPair, none);
  to.SetPin(1, 2);
  to.SetOutsideValue(0.5F);
  EXPECT_EQ(to.GetSampleRange().high, 0.0F);
  EXPECT_TRUE(Filter::Copy(from.Get(), &to));
  EXPECT_TRUE(SameSamples(GetSamples(*from), GetSamples(to)));
  EXPECT_EQ(to.GetValueLow(), -1.0F);
  EXPECT_EQ(to.GetValueHigh(), 3.0F);
  EXPECT_EQ(to.GetPinX(), 1);
  EXPECT_EQ(to.GetOutsideValue(), 0.5F);
  EXPECT_EQ(to.GetSampleRange().high, kInfinity);
  EXPECT_TRUE(Filter::Copy(&to, &to));
  EXPECT_TRUE(SameSamples(GetSamples(*from), GetSamples(to)));
}

TEST(Copy, DoesNothingBetweenDifferentImages) {
  const float level[] = {1.0F, 1.0F, 1.0F, 1.0F};
  Image from(2, 3, ColorMode::kColor, level);
  from.SetValueHigh(9.0F);
  const struct {
    int width;
    int height;
    unsigned mode;
  } others[] = {{3, 2, ColorMode::kColor}, {2, 4, ColorMode::kColor}, {2, 3, ColorMode::kSigned}};
  for (const auto& other : others) {
    const float zero[] = {0.0F, 0.0F, 0.0F, 0.0F};
    Image to(other.width, other.height, other.mode, zero);
    EXPECT_FALSE(Filter::Copy(&from, &to));
    EXPECT_TRUE(SameSamples(std::vector<float>(to.GetNumSamples(), 0.0F), GetSamples(to)));
    EXPECT_EQ(to.GetValueHigh(), 1.0F);
  }
  EXPECT_FALSE(Filter::Copy(nullptr, &from));
  EXPECT_FALSE(Filter::Copy(&from, nullptr));
}

TEST(Copy, CopiesLargeImagesWithAnyNumberOfThreads) {
  Image from(601, 401, ColorMode::kValue, nullptr);
  float* samples = from.GetArray();
  for (std::size_t i = 0; i < from.GetNumSamples(); ++i) samples[i] = static_cast<float>(i);
  for (const std::size_t threads : {1U, 2U, 16U}) {
    const ThreadsScope scope(threads);
    const float zero = 0.0F;
    Image to(601, 401, ColorMode::kValue, &zero);
    EXPECT_TRUE(Filter::Copy(&from, &to));
    EXPECT_TRUE(SameSamples(GetSamples(from), GetSamples(to)));
  }
}

}  // namespace
}  // namespace Testing
