// SPDX-License-Identifier: Apache-2.0
#include "Apps/Value/ImageFigures.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "Tests/Support/ImageTesting.h"

namespace {

using Testing::MakeImage;

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

ImageFigures Measure(const std::vector<float>& samples, std::size_t bars = 4) {
  return MeasureFigures(*MakeImage(static_cast<int>(samples.size()), 1, ColorMode::kValue, samples), bars);
}

TEST(ImageFiguresTest, MeasuresFiniteSamplesAlone) {
  // Mean 5, squared differences from it 9 + 1 + 1 + 1 + 0 + 0 + 4 + 16 = 32.
  const ImageFigures figures = Measure({2, 4, kNan, 4, 4, kInfinity, 5, 5, 7, -kInfinity, 9});
  EXPECT_EQ(figures.measured.low, 2.0F);
  EXPECT_EQ(figures.measured.high, 9.0F);
  EXPECT_EQ(figures.mean, 5.0);
  EXPECT_EQ(figures.deviation, 2.0);
  EXPECT_EQ(figures.finite, 8U);
  EXPECT_EQ(figures.nan, 1U);
  EXPECT_EQ(figures.infinite, 2U);
}

TEST(ImageFiguresTest, TheLastBarHoldsTheHighestSample) {
  EXPECT_EQ(Measure({0, 1, 2, 3, 4}).histogram, (std::vector<std::uint64_t>{1, 1, 1, 2}));
  EXPECT_EQ(Measure({-1, 0.99F, 1}, 2).histogram, (std::vector<std::uint64_t>{1, 2}));
}

TEST(ImageFiguresTest, AFlatImageFillsTheFirstBar) {
  const ImageFigures figures = Measure({3, 3, 3});
  EXPECT_EQ(figures.histogram, (std::vector<std::uint64_t>{3, 0, 0, 0}));
  EXPECT_EQ(figures.mean, 3.0);
  EXPECT_EQ(figures.deviation, 0.0);
}

TEST(ImageFiguresTest, AnImageWithoutFiniteSamplesMeasuresNothing) {
  const ImageFigures figures = Measure({kNan, kInfinity});
  EXPECT_TRUE(figures.measured.IsEmpty());
  EXPECT_TRUE(std::isnan(figures.mean));
  EXPECT_TRUE(std::isnan(figures.deviation));
  EXPECT_EQ(figures.finite, 0U);
  EXPECT_EQ(figures.histogram, (std::vector<std::uint64_t>{0, 0, 0, 0}));
}

TEST(ImageFiguresTest, SamplesThatAreLargeAndCloseTogetherKeepTheirDigits) {
  // Whole numbers up to 2^24 are floats; the deviation of two samples that are 2 apart is 1.
  const ImageFigures figures = Measure({16777214, 16777216});
  EXPECT_EQ(figures.mean, 16777215.0);
  EXPECT_EQ(figures.deviation, 1.0);
}

TEST(ImageFiguresTest, DrawsBarsByTheLongestOne) {
  EXPECT_EQ(DrawHistogram(Measure({0, 0, 1, 2}, 2)),
            "  0              ################################################## 2\n"
            "  1              ################################################## 2\n");
  EXPECT_EQ(DrawHistogram(Measure({0, 0, 2}, 2)),
            "  0              ################################################## 2\n"
            "  1              ######################### 1\n");
}

}  // namespace
