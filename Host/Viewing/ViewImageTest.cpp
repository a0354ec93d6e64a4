// SPDX-License-Identifier: Apache-2.0
#include "Host/Viewing/ViewImage.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <numeric>
#include <stdexcept>

#include "Host/Image/ImageMetadata.h"
#include "Host/Util/EvaluationScope.h"
#include "Host/Viewing/Probe.h"
#include "Tests/Support/HostTesting.h"
#include "Tests/Support/ViewTesting.h"

namespace Testing {
namespace {

using ScEng::Cancellation;
using ScEng::EvaluationScope;
using ScEng::MeasureBox;
using ScEng::ViewFigures;
using ScEng::ViewImage;

std::vector<float> GetLevel(const ViewImage& image, int level) {
  const ViewImage::Level found = image.GetLevel(level);
  const auto count = static_cast<std::size_t>(found.size_x) * static_cast<std::size_t>(found.size_y) *
                     static_cast<std::size_t>(image.GetImage().GetNumChannels());
  return {found.samples, found.samples + count};
}

std::vector<float> Repeat(std::vector<float> period, int count) {
  std::vector<float> all;
  for (int i = 0; i < count; ++i) all.insert(all.end(), period.begin(), period.end());
  return all;
}

// ---- The copy ----

TEST(ViewImage, CopiesSamplesAndHeader) {
  const auto image = MakeImage(3, 2, ColorMode::kPair, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, kInfinity, -0.5F});
  image->SetValueLowHigh(-2.0F, 7.0F);
  image->SetPin(5, -6);
  image->SetOutsideValue(0.25F);
  const auto metadata = std::make_shared<const ScEng::ImageMetadata>();
  image->SetMetadata(metadata);
  const auto view = ViewImage::Make(*image);
  EXPECT_EQ(GetSamples(view->GetImage()), GetSamples(*image));
  EXPECT_EQ(view->GetImage().GetColorMode(), ColorMode::kPair);
  EXPECT_EQ(view->GetImage().GetValueLow(), -2.0F);
  EXPECT_EQ(view->GetImage().GetValueHigh(), 7.0F);
  EXPECT_EQ(view->GetImage().GetPinX(), 5);
  EXPECT_EQ(view->GetImage().GetPinY(), -6);
  EXPECT_EQ(view->GetImage().GetOutsideValue(), 0.25F);
  EXPECT_EQ(view->GetImage().GetMetadata(), metadata);
}

TEST(ViewImage, TakesNoReference) {
  const auto image = MakeImage(2, 2, ColorMode::kValue, {1, 2, 3, 4});
  const auto view = ViewImage::Make(*image);
  EXPECT_EQ(image->GetRefCount(), 1U);
  EXPECT_EQ(view->GetImage().GetRefCount(), 0U);
}

TEST(ViewImage, KnowsTheRangeOfAllItsSamples) {
  const auto range = MakeView(2, 1, ColorMode::kPair, {kNan, -3, kInfinity, 2})->GetImage().GetKnownSampleRange();
  ASSERT_TRUE(range.has_value());
  EXPECT_EQ(range->low, -3.0F);
  EXPECT_EQ(range->high, kInfinity);
}

TEST(ViewImage, MayBeEmpty) {
  for (const auto& [size_x, size_y] : {std::pair(0, 0), std::pair(0, 5), std::pair(200, 0)}) {
    const auto view = MakeView(size_x, size_y, ColorMode::kColor, {});
    EXPECT_EQ(view->GetImage().GetSizeX(), size_x);
    EXPECT_EQ(view->GetFigures().values, 0U);
    EXPECT_TRUE(view->GetFigures().finite.IsEmpty());
    EXPECT_EQ(std::accumulate(view->GetHistogram().bars.begin(), view->GetHistogram().bars.end(), 0ULL), 0U);
  }
}

// ---- Levels ----

TEST(ViewImageLevels, EndAtSixtyFourPixels) {
  EXPECT_EQ(MakeView(64, 64, ColorMode::kValue, std::vector<float>(64 * 64, 0.0F))->GetNumLevels(), 1);
  const auto view = MakeView(65, 3, ColorMode::kValue, std::vector<float>(65 * 3, 0.0F));
  ASSERT_EQ(view->GetNumLevels(), 2);
  EXPECT_EQ(view->GetLevel(1).size_x, 33);
  EXPECT_EQ(view->GetLevel(1).size_y, 2);
  EXPECT_EQ(MakeView(1, 1, ColorMode::kValue, {3.0F})->GetNumLevels(), 1);
}

TEST(ViewImageLevels, AreMeansOfFourPixels) {
  const auto view = MakeValues(128, 2, [](int x, int y) { return 2 * x + 8 * y; });
  ASSERT_EQ(view->GetNumLevels(), 2);
  // Of the columns 2k and 2k + 1: ((4k) + (4k + 2) + (4k + 8) + (4k + 10)) / 4.
  for (int k = 0; k < 64; ++k) EXPECT_EQ(view->GetLevel(1).samples[k], static_cast<float>(4 * k + 5)) << k;
}

TEST(ViewImageLevels, HaveFewerPixelsBelowTheLastOfOddSides) {
  const auto view = MakeValues(65, 3, [](int x, int y) { return x == 64 ? 100 + 10 * y : y; });
  const std::vector<float> level = GetLevel(*view, 1);
  ASSERT_EQ(level.size(), 66U);
  EXPECT_EQ(level[0], 0.5F);
  // The last column: rows 0 and 1, then row 2 alone.
  EXPECT_EQ(level[32], 105.0F);
  EXPECT_EQ(level[33], 2.0F);
  EXPECT_EQ(level[65], 120.0F);
}

TEST(ViewImageLevels, LeaveOutWhatIsNotFinite) {
  std::vector<float> samples(2 * 66, 0.0F);
  const auto set = [&](std::size_t pair, float a, float b, float c, float d) {
    samples[2 * pair] = a;
    samples[2 * pair + 1] = b;
    samples[66 + 2 * pair] = c;
    samples[66 + 2 * pair + 1] = d;
  };
  set(0, kNan, 1, 2, 6);
  set(1, kNan, kInfinity, 4, -kInfinity);
  set(2, -kInfinity, kNan, kNan, kInfinity);
  set(3, kNan, kNan, kNan, kNan);
  set(4, 3e38F, 3e38F, 3e38F, 3e38F);
  const std::vector<float> level = GetLevel(*MakeView(66, 2, ColorMode::kValue, samples), 1);
  EXPECT_EQ(level[0], 3.0F);
  EXPECT_EQ(level[1], 4.0F);
  EXPECT_EQ(level[2], -kInfinity);
  EXPECT_TRUE(std::isnan(level[3]));
  EXPECT_EQ(level[4], 3e38F);
  EXPECT_EQ(level[5], 0.0F);
}

TEST(ViewImageLevels, KeepChannelsApart) {
  const auto view = MakeView(66, 1, ColorMode::kColor, Repeat({1, 10, kNan, 1, 3, 20, 5, 0}, 33));
  const std::vector<float> level = GetLevel(*view, 1);
  ASSERT_EQ(level.size(), 33U * 4);
  for (std::size_t i = 0; i < level.size(); i += 4) {
    EXPECT_EQ(std::vector<float>(level.begin() + static_cast<std::ptrdiff_t>(i),
                                 level.begin() + static_cast<std::ptrdiff_t>(i) + 4),
              (std::vector<float>{2, 15, 5, 0.5F}));
  }
}

TEST(ViewImageLevels, AreMadeOfEachOther) {
  // Far more rows than one strip of a thread has, and more levels.
  const auto view = MakeValues(5, 4099, [](int x, int y) { return x + (y % 7) * 3; });
  ASSERT_EQ(view->GetNumLevels(), 8);
  for (int level = 1; level < view->GetNumLevels(); ++level) {
    const ViewImage::Level from = view->GetLevel(level - 1);
    const ViewImage::Level made = view->GetLevel(level);
    ASSERT_EQ(made.size_x, (from.size_x + 1) / 2);
    ASSERT_EQ(made.size_y, (from.size_y + 1) / 2);
    for (int y = 0; y < made.size_y; ++y) {
      for (int x = 0; x < made.size_x; ++x) {
        double sum = 0.0;
        int count = 0;
        for (int v = 2 * y; v < std::min(2 * y + 2, from.size_y); ++v) {
          for (int u = 2 * x; u < std::min(2 * x + 2, from.size_x); ++u, ++count) {
            sum += static_cast<double>(from.samples[v * from.size_x + u]);
          }
        }
        ASSERT_FLOAT_EQ(made.samples[y * made.size_x + x], static_cast<float>(sum / count))
            << level << " " << x << " " << y;
      }
    }
  }
}

TEST(ViewImageLevels, DoNotDependOnThreads) {
  const auto image =
      MakeImage(301, 500, ColorMode::kColor, Repeat({0.1F, 0.7F, kNan, 1, 0.3F, -2, 0.9F}, 301 * 500 * 4 / 7));
  std::fill(image->GetArray() + 301 * 500 * 4 / 7 * 7, image->GetArray() + 301 * 500 * 4, 0.5F);
  std::shared_ptr<const ViewImage> views[2];
  for (const std::size_t threads : {1U, 5U}) {
    const ThreadsScope scope(threads);
    views[threads / 5] = ViewImage::Make(*image);
  }
  EXPECT_EQ(views[0]->GetFigures().mean, views[1]->GetFigures().mean);
  EXPECT_EQ(views[0]->GetHistogram().bars, views[1]->GetHistogram().bars);
  for (int level = 0; level < views[0]->GetNumLevels(); ++level) {
    EXPECT_TRUE(SameSamples(GetLevel(*views[0], level), GetLevel(*views[1], level))) << level;
  }
}

// ---- Figures ----

TEST(ViewImageFigures, CountFiniteValuesAndOthers) {
  const ViewFigures figures =
      MakeView(7, 1, ColorMode::kValue, {1, kNan, -2, kInfinity, 7, -kInfinity, kNan})->GetFigures();
  EXPECT_EQ(figures.values, 7U);
  EXPECT_EQ(figures.nan, 2U);
  EXPECT_EQ(figures.infinite, 2U);
  EXPECT_EQ(figures.finite.low, -2.0F);
  EXPECT_EQ(figures.finite.high, 7.0F);
  EXPECT_EQ(figures.mean, 2.0);
}

TEST(ViewImageFigures, AreOfTheValuesOfPixels) {
  // The mean of a color is weighed by its opacity; a signed pixel stands for its third channel.
  const auto color = MakeView(2, 1, ColorMode::kColor, {3, 3, 3, 0.5F, 0, 0, 6, 1});
  EXPECT_FLOAT_EQ(color->GetFigures().finite.low, 1.5F);
  EXPECT_FLOAT_EQ(color->GetFigures().finite.high, 2.0F);
  EXPECT_EQ(MakeView(2, 1, ColorMode::kSigned, {9, 9, 1, 9, 9, 9, 2, 9})->GetFigures().mean, 1.5);
  EXPECT_EQ(MakeView(2, 1, ColorMode::kPair, {1, 9, 2, 9})->GetFigures().mean, 1.5);
}

TEST(ViewImageFigures, HaveNoRangeWithoutFiniteValues) {
  const auto view = MakeView(2, 2, ColorMode::kValue, {kNan, kNan, kInfinity, kNan});
  EXPECT_TRUE(view->GetFigures().finite.IsEmpty());
  EXPECT_EQ(view->GetFigures().mean, 0.0);
  EXPECT_EQ(view->GetFigures().nan, 3U);
  EXPECT_EQ(std::accumulate(view->GetHistogram().bars.begin(), view->GetHistogram().bars.end(), 0ULL), 0U);
}

TEST(ViewImageFigures, HaveTheRangeOfEachChannel) {
  std::vector<float> samples = Repeat({0, 1, 2, 3}, 9);
  samples[4 * 8 + 2] = -5;
  samples[4 * 3 + 1] = 8;
  const auto view = MakeView(3, 3, ColorMode::kColor, samples);
  EXPECT_EQ(view->GetChannelRange(0).high, 0.0F);
  EXPECT_EQ(view->GetChannelRange(1).low, 1.0F);
  EXPECT_EQ(view->GetChannelRange(1).high, 8.0F);
  EXPECT_EQ(view->GetChannelRange(2).low, -5.0F);
  EXPECT_EQ(view->GetChannelRange(3).low, 3.0F);
  EXPECT_TRUE(view->GetChannelRange(4).IsEmpty());
  EXPECT_TRUE(view->GetChannelRange(-1).IsEmpty());
  samples[4 * 4 + 1] = kNan;
  samples[4 * 4 + 3] = kInfinity;
  const auto strange = MakeView(3, 3, ColorMode::kColor, samples);
  EXPECT_EQ(strange->GetChannelRange(1).high, 8.0F);
  EXPECT_EQ(strange->GetChannelRange(3).high, 3.0F);
}

TEST(ViewImageHistogram, HasBarsOfOneWidth) {
  // From 0 to 256 each bar is one wide; the highest value is in the last one.
  const auto view = MakeView(8, 1, ColorMode::kValue, {0, 0.5F, 1, 255, 255.5F, 256, kNan, kInfinity});
  const auto& histogram = view->GetHistogram();
  EXPECT_EQ(histogram.range.low, 0.0F);
  EXPECT_EQ(histogram.range.high, 256.0F);
  ASSERT_EQ(histogram.bars.size(), 256U);
  EXPECT_EQ(histogram.bars[0], 2U);
  EXPECT_EQ(histogram.bars[1], 1U);
  EXPECT_EQ(histogram.bars[2], 0U);
  EXPECT_EQ(histogram.bars[255], 3U);
  EXPECT_EQ(std::accumulate(histogram.bars.begin(), histogram.bars.end(), 0ULL), 6U);
}

TEST(ViewImageHistogram, PutsEqualValuesIntoTheFirstBar) {
  const auto view = MakeView(2, 2, ColorMode::kValue, {4, 4, 4, 4});
  EXPECT_EQ(view->GetHistogram().bars[0], 4U);
}

TEST(ViewImageHistogram, TakesTheWidestRange) {
  const auto view = MakeView(3, 1, ColorMode::kValue, {-3e38F, 0, 3e38F});
  EXPECT_EQ(view->GetHistogram().bars[0], 1U);
  EXPECT_EQ(view->GetHistogram().bars[128], 1U);
  EXPECT_EQ(view->GetHistogram().bars[255], 1U);
}

TEST(MeasureBox, CountsWhatLiesInTheImage) {
  const auto view = MakeValues(5, 4, [](int x, int y) { return x + 10 * y; });
  const ViewFigures inner = MeasureBox(*view, {1, 2, 2, 2});
  EXPECT_EQ(inner.values, 4U);
  EXPECT_EQ(inner.finite.low, 21.0F);
  EXPECT_EQ(inner.finite.high, 32.0F);
  EXPECT_EQ(inner.mean, 26.5);
  const ViewFigures corner = MeasureBox(*view, {-3, -3, 5, 4});
  EXPECT_EQ(corner.values, 2U);
  EXPECT_EQ(corner.finite.high, 1.0F);
  constexpr int kMost = std::numeric_limits<int>::max();
  EXPECT_EQ(MeasureBox(*view, {4, 3, kMost, kMost}).values, 1U);
  for (const ScEng::PixelBox& box :
       {ScEng::PixelBox{5, 0, 3, 3}, {0, 0, 0, 3}, {0, 0, -1, 3}, {-kMost, 0, kMost, 9}, {0, -9, 9, 9}}) {
    EXPECT_EQ(MeasureBox(*view, box).values, 0U);
    EXPECT_TRUE(MeasureBox(*view, box).finite.IsEmpty());
  }
}

// ---- Small copies ----

TEST(MakeSmall, FitsIntoTheSquareAndNeverGrows) {
  const auto get_size = [](int size_x, int size_y, int size) {
    const auto small = ViewImage::MakeSmall(
        *MakeImage(size_x, size_y, ColorMode::kValue,
                   std::vector<float>(static_cast<std::size_t>(size_x) * static_cast<std::size_t>(size_y), 1.0F)),
        size);
    return std::pair(small->GetImage().GetSizeX(), small->GetImage().GetSizeY());
  };
  EXPECT_EQ(get_size(400, 200, 100), std::pair(100, 50));
  EXPECT_EQ(get_size(200, 400, 100), std::pair(50, 100));
  EXPECT_EQ(get_size(30, 20, 100), std::pair(30, 20));
  EXPECT_EQ(get_size(1000, 1, 10), std::pair(10, 1));
  EXPECT_EQ(get_size(7, 7, 0), std::pair(1, 1));
  EXPECT_EQ(get_size(0, 0, 10), std::pair(0, 0));
  EXPECT_EQ(get_size(0, 50, 10), std::pair(0, 10));
}

TEST(MakeSmall, TakesTheMeanOfAtMostFourByFourSamples) {
  const auto exact = MakeImage(8, 1, ColorMode::kValue, {1, 3, kNan, 5, kNan, kNan, 2, kInfinity});
  EXPECT_TRUE(SameSamples(GetSamples(ViewImage::MakeSmall(*exact, 4)->GetImage()), {2, 5, kNan, 2}));
  // Of sixteen columns those in the middle of each quarter: 2, 6, 10 and 14.
  std::vector<float> samples(16);
  std::iota(samples.begin(), samples.end(), 0.0F);
  const auto wide = MakeImage(16, 1, ColorMode::kValue, samples);
  EXPECT_EQ(GetSamples(ViewImage::MakeSmall(*wide, 1)->GetImage()), std::vector<float>{8});
}

TEST(MakeSmall, KeepsModeAndDeclaredRange) {
  const auto image = MakeImage(2, 1, ColorMode::kSigned, {1, 2, 3, 4, 3, 4, 5, 6});
  image->SetValueLowHigh(-7.0F, 9.0F);
  const auto small = ViewImage::MakeSmall(*image, 1);
  EXPECT_EQ(GetSamples(small->GetImage()), (std::vector<float>{2, 3, 4, 5}));
  EXPECT_EQ(small->GetImage().GetColorMode(), ColorMode::kSigned);
  EXPECT_EQ(small->GetImage().GetValueLow(), -7.0F);
  EXPECT_EQ(small->GetImage().GetValueHigh(), 9.0F);
}

// ---- Cancellation ----

TEST(ViewImage, StopsWhenItIsAsked) {
  const auto image = MakeImage(300, 300, ColorMode::kValue, std::vector<float>(300 * 300, 1.0F));
  Cancellation cancellation;
  cancellation.Request();
  const EvaluationScope scope(&cancellation);
  EXPECT_THROW(ViewImage::Make(*image), ScEng::Canceled);
  EXPECT_THROW(ViewImage::MakeSmall(*image, 100), ScEng::Canceled);
}

// ---- Previews ----

/// Of an image of 10 by 3 pixels that lies at (100, -20): samples of 4 by 4 pixels, with less at the edges.
std::shared_ptr<const ViewImage> MakeSmallPreview() {
  ImageHeader header = ImageHeader::Fresh(10, 3, ColorMode::kValue);
  header.pin_x = 100;
  header.pin_y = -20;
  return ViewImage::MakePreview(*MakeImage(3, 1, ColorMode::kValue, {1.0F, 2.0F, 5.0F}), 2, header);
}

TEST(Preview, HasTheSizeAndPlaceOfTheImage) {
  const auto preview = MakeSmallPreview();
  EXPECT_TRUE(preview->IsPreview());
  EXPECT_EQ(preview->GetReduction(), 4);
  EXPECT_EQ(preview->GetHeader().size_x, 10);
  EXPECT_EQ(preview->GetHeader().GetBox(), (ScEng::Box2I{100, -20, 110, -17}));
  EXPECT_EQ(preview->GetImage().GetSizeX(), 3);
  const auto image = ViewImage::Make(*MakeImage(3, 1, ColorMode::kValue, {1.0F, 2.0F, 5.0F}));
  EXPECT_FALSE(image->IsPreview());
  EXPECT_EQ(image->GetReduction(), 1);
  EXPECT_EQ(image->GetHeader().size_x, 3);
}

TEST(Preview, HasNoLevelsBeforeItsFirst) {
  const auto preview = MakeSmallPreview();
  EXPECT_EQ(preview->GetFirstLevel(), 2);
  EXPECT_EQ(preview->GetNumLevels(), 3);
  for (int level = 0; level < 3; ++level) EXPECT_EQ(GetLevel(*preview, level), (std::vector<float>{1, 2, 5}));
}

TEST(Preview, ReadsTheSampleThatStandsForAPixel) {
  const auto preview = MakeSmallPreview();
  EXPECT_EQ(ScEng::ReadPixel(*preview, 3, 2).value, 1.0F);
  EXPECT_EQ(ScEng::ReadPixel(*preview, 4, 0).value, 2.0F);
  EXPECT_EQ(ScEng::ReadPixel(*preview, 9, 2).value, 5.0F);
  EXPECT_FALSE(ScEng::ReadPixel(*preview, 10, 0).is_inside);
  EXPECT_FALSE(ScEng::ReadPixel(*preview, 0, 3).is_inside);
}

TEST(Preview, MeasuresTheSamplesThatAPartTouches) {
  const auto preview = MakeSmallPreview();
  EXPECT_EQ(MeasureBox(*preview, {3, 0, 2, 1}).mean, 1.5);
  EXPECT_EQ(MeasureBox(*preview, {8, 2, 100, 100}).mean, 5.0);
  EXPECT_EQ(MeasureBox(*preview, {-5, -5, 5, 5}).values, 0U);
  EXPECT_EQ(preview->GetFigures().values, 3U);
}

TEST(Preview, IsOfTheSizeOfTheImage) {
  const auto small = MakeImage(2, 1, ColorMode::kValue, {1.0F, 2.0F});
  EXPECT_THROW(ViewImage::MakePreview(*small, 2, ImageHeader::Fresh(9, 4, ColorMode::kValue)), std::invalid_argument);
  EXPECT_NO_THROW(ViewImage::MakePreview(*small, 2, ImageHeader::Fresh(8, 4, ColorMode::kValue)));
}

}  // namespace
}  // namespace Testing
