// SPDX-License-Identifier: Apache-2.0
#include "Host/Image/EuclideanDistance.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <random>
#include <vector>

#include "Tests/Support/HostTesting.h"
#include "Tests/Support/InstructionSets.h"

namespace Testing {
namespace {

ImagePtr Measure(const Image& image, float level, bool normalize, bool wrap) {
  return ImagePtr(EuclideanDistance(image, level, normalize, wrap));
}

/// Every pixel against every set pixel, and against its copies in the tiles around.
std::vector<float> Expected(const Image& mask, bool wrap) {
  const int width = mask.GetSizeX();
  const int height = mask.GetSizeY();
  const int tiles = wrap ? 2 : 0;
  std::vector<float> distances;
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      std::int64_t nearest = -1;
      for (int set_y = 0; set_y < height; ++set_y) {
        for (int set_x = 0; set_x < width; ++set_x) {
          if (!(mask.GetConstArray()[set_y * width + set_x] > 0.5F)) continue;
          for (int tile_y = -tiles; tile_y <= tiles; ++tile_y) {
            for (int tile_x = -tiles; tile_x <= tiles; ++tile_x) {
              const std::int64_t i = set_x + tile_x * width - x;
              const std::int64_t j = set_y + tile_y * height - y;
              const std::int64_t square = i * i + j * j;
              if (nearest < 0 || square < nearest) nearest = square;
            }
          }
        }
      }
      distances.push_back(nearest < 0 ? kInfinity : static_cast<float>(std::sqrt(static_cast<double>(nearest))));
    }
  }
  return distances;
}

ImagePtr MakeMask(int width, int height, unsigned one_in, std::mt19937& random) {
  ImagePtr mask = ScEng::MakeRef<Image>(width, height, ColorMode::kValue, nullptr);
  float* samples = mask->GetArray();
  for (std::size_t i = 0; i < mask->GetNumSamples(); ++i) samples[i] = random() % one_in == 0 ? 1.0F : 0.25F;
  return mask;
}

TEST(EuclideanDistance, MeasuresFromCenterToCenter) {
  const ImagePtr image = MakeImage(5, 3, ColorMode::kValue,
                                   {1, 0, 0, 0, 0,  //
                                    0, 0, 0, 0, 0,  //
                                    0, 0, 0, 0, 0});
  const auto root = [](double square) { return static_cast<float>(std::sqrt(square)); };
  EXPECT_TRUE(SameSamples({0, 1, 2, 3, 4,                            //
                           1, root(2), root(5), root(10), root(17),  //
                           2, root(5), root(8), root(13), root(20)},
                          GetSamples(*Measure(*image, 0.5F, false, false))));
  EXPECT_TRUE(SameSamples({0, 1, 2, 2, 1,                          //
                           1, root(2), root(5), root(5), root(2),  //
                           1, root(2), root(5), root(5), root(2)},
                          GetSamples(*Measure(*image, 0.5F, false, true))));
}

TEST(EuclideanDistance, IsWhatComparingEveryPairOfPixelsFinds) {
  OnEveryInstructionSet([] {
    std::mt19937 random(3);
    constexpr int kSizes[][2] = {{1, 1},  {1, 2},  {2, 1},  {1, 17}, {17, 1},  {1, 64},  {67, 1},
                                 {2, 2},  {3, 2},  {3, 3},  {4, 7},  {7, 4},   {8, 8},   {15, 9},
                                 {16, 9}, {17, 9}, {31, 3}, {33, 5}, {13, 29}, {29, 13}, {19, 23}};
    for (const auto& size : kSizes) {
      for (const unsigned one_in : {1U, 2U, 5U, 40U, 300U}) {
        const ImagePtr mask = MakeMask(size[0], size[1], one_in, random);
        for (const bool wrap : {false, true}) {
          ASSERT_TRUE(SameSamples(Expected(*mask, wrap), GetSamples(*Measure(*mask, 0.5F, false, wrap))))
              << size[0] << " x " << size[1] << ", one in " << one_in << (wrap ? ", tiling" : "");
        }
      }
    }
  });
}

TEST(EuclideanDistance, IsExactAcrossAWideImage) {
  // The corner's distance is known without a search; 1049 and 613 are primes and fill no strip of columns.
  constexpr int kWidth = 1049;
  constexpr int kHeight = 613;
  for (const auto& [set_x, set_y] :
       {std::pair(0, 0), std::pair(kWidth - 1, 0), std::pair(511, 300), std::pair(512, 612)}) {
    Image image(kWidth, kHeight, ColorMode::kValue, std::vector<float>{0.0F}.data());
    image.GetArray()[set_y * kWidth + set_x] = 1.0F;
    for (const bool wrap : {false, true}) {
      std::vector<float> expected;
      for (int y = 0; y < kHeight; ++y) {
        for (int x = 0; x < kWidth; ++x) {
          int i = std::abs(x - set_x);
          int j = std::abs(y - set_y);
          if (wrap) i = std::min(i, kWidth - i);
          if (wrap) j = std::min(j, kHeight - j);
          expected.push_back(static_cast<float>(std::sqrt(static_cast<double>(i * i + j * j))));
        }
      }
      EXPECT_TRUE(SameSamples(expected, GetSamples(*Measure(image, 0.5F, false, wrap)))) << set_x << ", " << set_y;
    }
  }
}

TEST(EuclideanDistance, HoldsAlongTheLongestLines) {
  constexpr int kLength = 32768;
  const float zero = 0.0F;
  for (const bool upright : {false, true}) {
    Image line(upright ? 1 : kLength, upright ? kLength : 1, ColorMode::kValue, &zero);
    line.GetArray()[0] = 1.0F;
    const ImagePtr open = Measure(line, 0.5F, false, false);
    const ImagePtr tiling = Measure(line, 0.5F, false, true);
    for (int i = 0; i < kLength; ++i) {
      ASSERT_EQ(open->GetConstArray()[i], static_cast<float>(i));
      ASSERT_EQ(tiling->GetConstArray()[i], static_cast<float>(std::min(i, kLength - i)));
    }
    EXPECT_EQ(open->GetValueHigh(), 32767.0F);
    EXPECT_EQ(tiling->GetValueHigh(), 16384.0F);
  }
}

TEST(EuclideanDistance, GivesTheSameBytesForAnyNumberOfThreads) {
  std::mt19937 random(8);
  const ImagePtr mask = MakeMask(1100, 301, 700, random);
  for (const bool normalize : {false, true}) {
    for (const bool wrap : {false, true}) {
      std::vector<float> alone;
      {
        const ThreadsScope scope(1);
        alone = GetSamples(*Measure(*mask, 0.5F, normalize, wrap));
      }
      for (const std::size_t threads : {2U, 16U}) {
        const ThreadsScope scope(threads);
        OnEveryInstructionSet(
            [&] { EXPECT_TRUE(SameSamples(alone, GetSamples(*Measure(*mask, 0.5F, normalize, wrap)))) << threads; });
      }
    }
  }
}

TEST(EuclideanDistance, SetsWhatIsAboveTheLevel) {
  const ImagePtr image =
      MakeImage(7, 1, ColorMode::kValue, {0.5F, kNan, -kInfinity, 0.0F, std::nextafter(0.5F, 1.0F), 0.25F, kNan});
  EXPECT_TRUE(SameSamples({4, 3, 2, 1, 0, 1, 2}, GetSamples(*Measure(*image, 0.5F, false, false))));
  EXPECT_TRUE(SameSamples({0, 1, 1, 0, 0, 0, 1}, GetSamples(*Measure(*image, -0.5F, false, false))));
  EXPECT_TRUE(SameSamples(std::vector<float>(7, kInfinity), GetSamples(*Measure(*image, 1.0F, false, false))));
  EXPECT_TRUE(SameSamples(std::vector<float>(7, kInfinity), GetSamples(*Measure(*image, kNan, false, true))));
  const ImagePtr infinite = MakeImage(3, 1, ColorMode::kValue, {kInfinity, 1e30F, 0.0F});
  EXPECT_TRUE(SameSamples({0, 1, 2}, GetSamples(*Measure(*infinite, 2e30F, false, false))));
  EXPECT_TRUE(SameSamples({kInfinity, kInfinity, kInfinity}, GetSamples(*Measure(*infinite, kInfinity, false, false))));
}

TEST(EuclideanDistance, ReadsEveryColorModeAsValues) {
  // Half transparent white is a third of (0.5 + 0.5 + 0.5).
  const ImagePtr color = MakeImage(3, 1, ColorMode::kColor, {9, 9, 9, 0, 1, 1, 1, 0.5F, 2, 0, 0, 1});
  EXPECT_TRUE(SameSamples({2, 1, 0}, GetSamples(*Measure(*color, 0.6F, false, false))));
  EXPECT_TRUE(SameSamples({1, 0, 0}, GetSamples(*Measure(*color, 0.4F, false, false))));
  const ImagePtr signed_image = MakeImage(3, 1, ColorMode::kSigned, {9, 9, -1, 9, 9, 9, 0.5F, 9, 0, 0, 1, 0});
  EXPECT_TRUE(SameSamples({2, 1, 0}, GetSamples(*Measure(*signed_image, 0.5F, false, false))));
  const ImagePtr pair = MakeImage(3, 1, ColorMode::kPair, {1, 0, 0, 9, 0, 9});
  EXPECT_TRUE(SameSamples({0, 1, 2}, GetSamples(*Measure(*pair, 0.5F, false, false))));
}

TEST(EuclideanDistance, DividesByTheLargestWhenNormalized) {
  const ImagePtr image = MakeImage(4, 1, ColorMode::kValue, {1, 0, 0, 0});
  const ImagePtr open = Measure(*image, 0.5F, true, false);
  EXPECT_TRUE(SameSamples({0.0F, 1.0F / 3.0F, 2.0F / 3.0F, 1.0F}, GetSamples(*open)));
  EXPECT_EQ(open->GetValueLow(), 0.0F);
  EXPECT_EQ(open->GetValueHigh(), 1.0F);
  EXPECT_TRUE(SameSamples({0.0F, 0.5F, 1.0F, 0.5F}, GetSamples(*Measure(*image, 0.5F, true, true))));
}

TEST(EuclideanDistance, KnowsImagesWithoutAnEdge) {
  for (const bool wrap : {false, true}) {
    const float zero = 0.0F;
    const Image none(3, 2, ColorMode::kValue, &zero);
    const ImagePtr far = Measure(none, 0.5F, false, wrap);
    EXPECT_TRUE(SameSamples(std::vector<float>(6, kInfinity), GetSamples(*far)));
    EXPECT_EQ(far->GetValueLow(), 0.0F);
    EXPECT_EQ(far->GetValueHigh(), 0.0F);
    const ImagePtr far_normalized = Measure(none, 0.5F, true, wrap);
    EXPECT_TRUE(SameSamples(std::vector<float>(6, 1.0F), GetSamples(*far_normalized)));
    EXPECT_EQ(far_normalized->GetValueHigh(), 1.0F);

    const ImagePtr all = Measure(none, -1.0F, false, wrap);
    EXPECT_TRUE(SameSamples(std::vector<float>(6, 0.0F), GetSamples(*all)));
    EXPECT_EQ(all->GetValueHigh(), 0.0F);
    const ImagePtr all_normalized = Measure(none, -1.0F, true, wrap);
    EXPECT_TRUE(SameSamples(std::vector<float>(6, 0.0F), GetSamples(*all_normalized)));
    EXPECT_EQ(all_normalized->GetValueHigh(), 1.0F);
  }
}

TEST(EuclideanDistance, KeepsThePlaceOfTheImage) {
  const ImagePtr image = MakeImage(3, 2, ColorMode::kColor, std::vector<float>(24, 1.0F));
  image->SetPin(7, -5);
  image->SetPivot(0.25F, 0.75F);
  image->SetValueLowHigh(-2.0F, 6.0F);
  image->SetOutsideValue(0.5F);
  const ImagePtr distance = Measure(*image, 2.0F, false, true);
  EXPECT_EQ(distance->GetSizeX(), 3);
  EXPECT_EQ(distance->GetSizeY(), 2);
  EXPECT_EQ(distance->GetColorMode(), ColorMode::kValue);
  EXPECT_EQ(distance->GetPinX(), 7);
  EXPECT_EQ(distance->GetPinY(), -5);
  EXPECT_EQ(distance->GetPivotX(), 0.25F);
  EXPECT_EQ(distance->GetPivotY(), 0.75F);
  EXPECT_EQ(distance->GetOutsideValue(), 0.0F);
  EXPECT_EQ(distance->GetRefCount(), 1U) << "the reference of this test";
}

TEST(EuclideanDistance, TakesImagesWithoutPixels) {
  for (const auto& [width, height] : {std::pair(0, 0), std::pair(0, 5), std::pair(5, 0)}) {
    const Image empty(width, height, ColorMode::kValue, nullptr);
    for (const bool normalize : {false, true}) {
      const ImagePtr distance = Measure(empty, 0.5F, normalize, true);
      ASSERT_NE(distance, nullptr);
      EXPECT_EQ(distance->GetSizeX(), width);
      EXPECT_EQ(distance->GetSizeY(), height);
      EXPECT_EQ(distance->GetValueHigh(), normalize ? 1.0F : 0.0F);
    }
  }
}

TEST(EuclideanDistance, IsNullBeyondTheMaximumSize) {
  const ImagePtr image = MakeImage(3, 2, ColorMode::kValue, std::vector<float>(6, 1.0F));
  {
    const MaxSizeScope scope(2, 2);
    EXPECT_EQ(EuclideanDistance(*image, 0.5F, false, false), nullptr);
  }
  {
    const MaxSizeScope scope(3, 1);
    EXPECT_EQ(EuclideanDistance(*image, 0.5F, true, true), nullptr);
  }
}

ImagePtr AnyMask() {
  const int width = *rc::gen::inRange(1, 40);
  const int height = *rc::gen::inRange(1, 24);
  const auto set = *rc::gen::container<std::vector<bool>>(static_cast<std::size_t>(width * height),
                                                          rc::gen::weightedElement<bool>({{9, false}, {1, true}}));
  return MakeImage(width, height, ColorMode::kValue, {set.begin(), set.end()});
}

RC_GTEST_PROP(EuclideanDistance, IsZeroExactlyOnSetPixels, ()) {
  const ImagePtr mask = AnyMask();
  const ImagePtr distance = Measure(*mask, 0.5F, false, *rc::gen::arbitrary<bool>());
  for (std::size_t i = 0; i < mask->GetNumSamples(); ++i) {
    RC_ASSERT((distance->GetConstArray()[i] == 0.0F) == (mask->GetConstArray()[i] == 1.0F));
  }
}

RC_GTEST_PROP(EuclideanDistance, IsWhatComparingEveryPairFinds, ()) {
  const ImagePtr mask = AnyMask();
  const bool wrap = *rc::gen::arbitrary<bool>();
  RC_ASSERT(SameSamples(Expected(*mask, wrap), GetSamples(*Measure(*mask, 0.5F, false, wrap))));
}

RC_GTEST_PROP(EuclideanDistance, ChangesByAtMostOneFromPixelToPixel, ()) {
  const ImagePtr mask = AnyMask();
  const bool wrap = *rc::gen::arbitrary<bool>();
  const ImagePtr distance = Measure(*mask, 0.5F, false, wrap);
  const float* d = distance->GetConstArray();
  if (d[0] == kInfinity) return;
  const int width = mask->GetSizeX();
  const int height = mask->GetSizeY();
  // Both distances are below 64 and rounded to the nearest float, which may add 2^-18 each.
  const float most = 1.0F + 0x1p-17F;
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const int right = x + 1 < width ? x + 1 : (wrap ? 0 : x);
      const int below = y + 1 < height ? y + 1 : (wrap ? 0 : y);
      RC_ASSERT(std::abs(d[y * width + x] - d[y * width + right]) <= most);
      RC_ASSERT(std::abs(d[y * width + x] - d[below * width + x]) <= most);
    }
  }
}

RC_GTEST_PROP(EuclideanDistance, IsNeverLargerInAnImageThatTiles, ()) {
  const ImagePtr mask = AnyMask();
  const ImagePtr open = Measure(*mask, 0.5F, false, false);
  const ImagePtr tiling = Measure(*mask, 0.5F, false, true);
  for (std::size_t i = 0; i < mask->GetNumSamples(); ++i) {
    RC_ASSERT(tiling->GetConstArray()[i] <= open->GetConstArray()[i]);
  }
}

}  // namespace
}  // namespace Testing
