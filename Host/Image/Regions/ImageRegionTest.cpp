// SPDX-License-Identifier: Apache-2.0
#include "Host/Image/ImageRegion.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <random>
#include <set>
#include <utility>
#include <vector>

#include "Tests/Support/HostTesting.h"
#include "Tests/Support/InstructionSets.h"

namespace Testing {
namespace {

enum class Way { kGrow, kShrink };

struct Settings {
  float radius_x = 0.0F;
  float radius_y = 0.0F;
  bool wrap = false;
  Way way = Way::kGrow;
};

std::ostream& operator<<(std::ostream& stream, const Settings& settings) {
  return stream << (settings.way == Way::kGrow ? "grown by " : "shrunk by ") << settings.radius_x << " and "
                << settings.radius_y << (settings.wrap ? ", tiling" : "");
}

void Apply(ImageRegion& region, const Settings& settings) {
  if (settings.way == Way::kGrow) {
    region.Grow(settings.radius_x, settings.radius_y, settings.wrap);
  } else {
    region.Shrink(settings.radius_x, settings.radius_y, settings.wrap);
  }
}

void ApplyToAll(Image& image, const Settings& settings) {
  ImageRegion region;
  region.Init(&image, 0, 0, image.GetSizeX(), image.GetSizeY(), -1);
  Apply(region, settings);
}

std::vector<float> Applied(const Image& image, const Settings& settings) {
  Image copy(image);
  ApplyToAll(copy, settings);
  return GetSamples(copy);
}

/// A radius of 1 to 15, in units of 2^-23, which every float of that size is a whole number of.
__extension__ using Wide = unsigned __int128;
Wide InUnits(float radius) { return static_cast<Wide>(static_cast<double>(radius) * 8388608.0); }

/// Whether an offset belongs to the ellipse, in whole numbers: i^2 y^2 + j^2 x^2 <= x^2 y^2.
bool Belongs(int i, int j, float radius_x, float radius_y) {
  if ((radius_x < 1.0F && i != 0) || (radius_y < 1.0F && j != 0)) return false;
  const Wide x = radius_x < 1.0F ? 1 : InUnits(radius_x);
  const Wide y = radius_y < 1.0F ? 1 : InUnits(radius_y);
  const Wide column = static_cast<Wide>(std::abs(i)) << 23U;
  const Wide row = static_cast<Wide>(std::abs(j)) << 23U;
  return column * column * y * y + row * row * x * x <= x * x * y * y;
}

/// The larger of two samples; NaN only against NaN, +0.0 rather than -0.0.
float Larger(float a, float b) {
  if (std::isnan(a)) return b;
  if (std::isnan(b)) return a;
  if (a == b) return std::signbit(a) ? b : a;
  return a > b ? a : b;
}

/// The definition for one channel, offset by offset, for radii below 16.
std::vector<float> Expected(const std::vector<float>& samples, int width, int height, const Settings& settings) {
  const int reach_x = static_cast<int>(std::ceil(settings.radius_x));
  const int reach_y = static_cast<int>(std::ceil(settings.radius_y));
  std::vector<std::pair<int, int>> offsets;
  for (int j = -reach_y; j <= reach_y; ++j) {
    for (int i = -reach_x; i <= reach_x; ++i) {
      if (Belongs(i, j, settings.radius_x, settings.radius_y)) offsets.emplace_back(i, j);
    }
  }
  std::vector<float> result;
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      float chosen = kNan;
      for (const auto& [i, j] : offsets) {
        int from_x = x + i;
        int from_y = y + j;
        if (settings.wrap) {
          from_x = ((from_x % width) + width) % width;
          from_y = ((from_y % height) + height) % height;
        } else if (from_x < 0 || from_x >= width || from_y < 0 || from_y >= height) {
          continue;
        }
        const float sample = samples[static_cast<std::size_t>(from_y * width + from_x)];
        chosen = settings.way == Way::kGrow ? Larger(chosen, sample) : -Larger(-chosen, -sample);
      }
      result.push_back(chosen);
    }
  }
  return result;
}

/// Kinds of content. Those with at most two different samples are computed in another way than the others.
enum class Kind { kGray, kStrange, kMostlyNaN, kSparseMask, kDenseMask, kZeros, kNaNMask, kInfinities, kFlat };
constexpr Kind kKinds[] = {Kind::kGray,  Kind::kStrange, Kind::kMostlyNaN,  Kind::kSparseMask, Kind::kDenseMask,
                           Kind::kZeros, Kind::kNaNMask, Kind::kInfinities, Kind::kFlat};

std::vector<float> MakeSamples(std::size_t count, Kind kind, std::mt19937& random) {
  static const float kStrange[] = {kNan,  -kNan,     kInfinity,  -kInfinity, 0.0F,
                                   -0.0F, kSmallest, -kSmallest, kLargest,   -kLargest};
  const auto two = [&](unsigned one_in, float rare, float common) { return random() % one_in == 0 ? rare : common; };
  std::vector<float> samples(count);
  for (float& sample : samples) {
    const float gray = static_cast<float>(static_cast<int>(random() % 2001) - 1000) * 0.125F;
    switch (kind) {
      case Kind::kGray: sample = gray; break;
      case Kind::kStrange: sample = random() % 3 == 0 ? gray : kStrange[random() % std::size(kStrange)]; break;
      case Kind::kMostlyNaN: sample = two(60, gray, kNan); break;
      case Kind::kSparseMask: sample = two(70, 1.0F, 0.0F); break;
      case Kind::kDenseMask: sample = two(3, 0.25F, 0.75F); break;
      case Kind::kZeros: sample = two(20, 0.0F, -0.0F); break;
      case Kind::kNaNMask: sample = two(30, -3.0F, random() % 2 == 0 ? kNan : -kNan); break;
      case Kind::kInfinities: sample = two(9, kInfinity, -kInfinity); break;
      case Kind::kFlat: sample = 0.5F; break;
    }
  }
  return samples;
}

constexpr float kRadii[][2] = {{0.0F, 0.0F}, {1.0F, 1.0F},  {0.0F, 3.0F},  {4.0F, 0.0F},
                               {1.5F, 1.5F}, {2.0F, 3.0F},  {5.0F, 5.0F},  {6.25F, 2.125F},
                               {3.3F, 9.7F}, {12.9F, 1.0F}, {0.99F, 2.5F}, {11.0F, 13.0F}};

void ExpectDefinition(int width, int height, Kind kind, std::mt19937& random) {
  const ImagePtr image =
      MakeImage(width, height, ColorMode::kValue, MakeSamples(static_cast<std::size_t>(width * height), kind, random));
  for (const auto& radii : kRadii) {
    for (const bool wrap : {false, true}) {
      for (const Way way : {Way::kGrow, Way::kShrink}) {
        const Settings settings{radii[0], radii[1], wrap, way};
        ASSERT_TRUE(SameSamples(Expected(GetSamples(*image), width, height, settings), Applied(*image, settings)))
            << width << " x " << height << ", kind " << static_cast<int>(kind) << ", " << settings;
      }
    }
  }
}

TEST(ImageRegion, GivesTheExtremeOfTheEllipseInSmallImages) {
  OnEveryInstructionSet([] {
    std::mt19937 random(21);
    constexpr int kSizes[][2] = {{1, 1}, {1, 2}, {2, 1},  {1, 31}, {37, 1}, {2, 3},
                                 {7, 5}, {8, 8}, {9, 17}, {15, 6}, {16, 7}, {17, 8}};
    for (const auto& size : kSizes) {
      for (const Kind kind : kKinds) ExpectDefinition(size[0], size[1], kind, random);
    }
  });
}

TEST(ImageRegion, GivesTheExtremeOfTheEllipseAcrossStripsAndBands) {
  std::mt19937 random(22);
  for (const std::size_t threads : {1U, 2U, 16U}) {
    const ThreadsScope scope(threads);
    for (const Kind kind : {Kind::kGray, Kind::kStrange, Kind::kSparseMask}) {
      ExpectDefinition(131, 29, kind, random);
      ExpectDefinition(5, 211, kind, random);
    }
    ExpectDefinition(521, 3, Kind::kSparseMask, random);
  }
}

TEST(ImageRegion, GivesTheSameBytesForAnyNumberOfThreads) {
  std::mt19937 random(23);
  for (const Kind kind : {Kind::kStrange, Kind::kSparseMask}) {
    const ImagePtr image = MakeImage(700, 400, ColorMode::kValue, MakeSamples(280000, kind, random));
    for (const bool wrap : {false, true}) {
      const Settings settings{20.5F, 17.0F, wrap, Way::kShrink};
      std::vector<float> alone;
      {
        const ThreadsScope scope(1);
        alone = Applied(*image, settings);
      }
      for (const std::size_t threads : {2U, 16U}) {
        const ThreadsScope scope(threads);
        OnEveryInstructionSet([&] { EXPECT_TRUE(SameSamples(alone, Applied(*image, settings))) << threads; });
      }
    }
  }
}

/// The offsets that one bright pixel is grown to. `stray` gives the image a third sample.
std::set<std::pair<int, int>> OffsetsOf(float radius_x, float radius_y, bool stray) {
  constexpr int kReach = 30;
  constexpr int kSide = 2 * kReach + 1;
  const float zero = 0.0F;
  Image image(kSide, kSide, ColorMode::kValue, &zero);
  image.GetArray()[kReach * kSide + kReach] = 1.0F;
  if (stray) image.GetArray()[0] = -1.0F;
  ApplyToAll(image, {radius_x, radius_y, false, Way::kGrow});
  std::set<std::pair<int, int>> offsets;
  for (int y = 0; y < kSide; ++y) {
    for (int x = 0; x < kSide; ++x) {
      if (image.GetConstArray()[y * kSide + x] == 1.0F) offsets.emplace(x - kReach, y - kReach);
    }
  }
  return offsets;
}

TEST(ImageRegion, DecidesTheEdgeOfTheEllipseExactly) {
  const auto holds = [](float radius_x, float radius_y, int i, int j) {
    const bool as_gray = OffsetsOf(radius_x, radius_y, true).contains({i, j});
    EXPECT_EQ(OffsetsOf(radius_x, radius_y, false).contains({i, j}), as_gray);
    return as_gray;
  };
  const auto below = [](float radius) { return std::nextafter(radius, 0.0F); };
  // 3, 4 and 5 are the sides of a right triangle; 7 is 4/5 of 8.75.
  EXPECT_TRUE(holds(5.0F, 5.0F, 3, 4));
  EXPECT_FALSE(holds(below(5.0F), 5.0F, 3, 4));
  EXPECT_FALSE(holds(5.0F, below(5.0F), -4, 3));
  EXPECT_TRUE(holds(5.0F, 10.0F, -3, -8));
  EXPECT_FALSE(holds(below(5.0F), 10.0F, -3, -8));
  EXPECT_TRUE(holds(8.75F, 5.0F, 7, -3));
  EXPECT_FALSE(holds(8.75F, below(5.0F), 7, -3));
  EXPECT_TRUE(holds(29.0F, 29.0F, 20, 21));
  EXPECT_FALSE(holds(29.0F, below(29.0F), 20, 21));
  // The float nearest to the root of 2 is below it, that nearest to the root of 5 above it.
  EXPECT_FALSE(holds(1.41421354F, 1.41421354F, 1, 1));
  EXPECT_TRUE(holds(std::nextafter(1.41421354F, 2.0F), 1.41421366F, 1, 1));
  EXPECT_TRUE(holds(2.236068F, 2.236068F, 2, 1));
  EXPECT_FALSE(holds(below(2.236068F), below(2.236068F), 2, 1));
  EXPECT_TRUE(holds(1.0F, 1.0F, 1, 0));
  EXPECT_FALSE(holds(below(1.0F), 1.0F, 1, 0));
}

TEST(ImageRegion, HasTheShapesThatOneCanDraw) {
  using Offsets = std::set<std::pair<int, int>>;
  for (const bool stray : {false, true}) {
    EXPECT_EQ(OffsetsOf(1.0F, 1.0F, stray), (Offsets{{0, 0}, {1, 0}, {-1, 0}, {0, 1}, {0, -1}}));
    EXPECT_EQ(OffsetsOf(0.0F, 2.0F, stray), (Offsets{{0, -2}, {0, -1}, {0, 0}, {0, 1}, {0, 2}}));
    EXPECT_EQ(OffsetsOf(1.9F, 0.5F, stray), (Offsets{{-1, 0}, {0, 0}, {1, 0}}));
    EXPECT_EQ(OffsetsOf(0.9F, 0.0F, stray), (Offsets{{0, 0}}));
    EXPECT_EQ(OffsetsOf(kNan, -7.0F, stray), (Offsets{{0, 0}}));
    EXPECT_EQ(OffsetsOf(0.0F, kInfinity, stray).size(), 61U);
    EXPECT_EQ(OffsetsOf(kInfinity, kInfinity, stray).size(), 61U * 61U);
    // Row 3 of an ellipse of height 3 is one pixel however wide the ellipse; the others are full.
    EXPECT_EQ(OffsetsOf(kLargest, 3.0F, stray).size(), 5U * 61U + 2U);
  }
}

TEST(ImageRegion, ReachesRoundATileMoreThanOnce) {
  // The ellipse of 1 by 20 has its own row three pixels wide and all others one; upwards it goes round nine rows twice.
  std::vector<float> samples(45, 0.0F);
  samples[4 * 5 + 2] = 1.0F;
  for (const float third : {0.0F, 0.25F}) {
    samples[0] = third;
    const ImagePtr image = MakeImage(5, 9, ColorMode::kValue, samples);
    const std::vector<float> tall = Applied(*image, {1.0F, 20.0F, true, Way::kGrow});
    for (std::size_t y = 0; y < 9; ++y) EXPECT_EQ(tall[y * 5 + 2], 1.0F);
    EXPECT_EQ(tall[4 * 5 + 1], 1.0F);
    EXPECT_EQ(tall[3 * 5 + 1], 0.0F);
    for (const float radius : {30.0F, 1e30F, kInfinity}) {
      const std::vector<float> all = Applied(*image, {radius, radius, true, Way::kGrow});
      EXPECT_TRUE(SameSamples(std::vector<float>(45, 1.0F), all));
      const std::vector<float> none = Applied(*image, {radius, radius, true, Way::kShrink});
      EXPECT_TRUE(SameSamples(std::vector<float>(45, 0.0F), none));
    }
  }
}

TEST(ImageRegion, PassesNaNOver) {
  const ImagePtr image = MakeImage(6, 1, ColorMode::kValue, {kNan, 2.0F, kNan, kNan, kNan, -1.0F});
  EXPECT_TRUE(SameSamples({2.0F, 2.0F, 2.0F, kNan, -1.0F, -1.0F}, Applied(*image, {1, 0, false, Way::kGrow})));
  EXPECT_TRUE(SameSamples({-1.0F, 2.0F, 2.0F, kNan, -1.0F, -1.0F}, Applied(*image, {1, 0, true, Way::kShrink})));
  const ImagePtr nothing = MakeImage(3, 1, ColorMode::kValue, {kNan, -kNan, kNan});
  EXPECT_TRUE(SameSamples({kNan, kNan, kNan}, Applied(*nothing, {5, 5, true, Way::kGrow})));
}

TEST(ImageRegion, TellsTheZerosApart) {
  const ImagePtr image = MakeImage(4, 1, ColorMode::kValue, {-0.0F, 0.0F, -0.0F, -0.0F});
  EXPECT_TRUE(SameSamples({0.0F, 0.0F, 0.0F, -0.0F}, Applied(*image, {1, 1, false, Way::kGrow})));
  EXPECT_TRUE(SameSamples({-0.0F, -0.0F, -0.0F, -0.0F}, Applied(*image, {1, 1, false, Way::kShrink})));
  const ImagePtr three = MakeImage(4, 1, ColorMode::kValue, {0.0F, -0.0F, -0.0F, -5.0F});
  EXPECT_TRUE(SameSamples({0.0F, 0.0F, -0.0F, -0.0F}, Applied(*three, {1, 1, false, Way::kGrow})));
}

/// The samples of one channel in a box, and the other way.
std::vector<float> Cut(const Image& image, int left, int top, int right, int bottom, int channel) {
  std::vector<float> samples;
  for (int y = top; y < bottom; ++y) {
    for (int x = left; x < right; ++x) {
      samples.push_back(image.GetConstArray()[(y * image.GetSizeX() + x) * image.GetNumChannels() + channel]);
    }
  }
  return samples;
}

void Put(const std::vector<float>& samples, Image& image, int left, int top, int right, int bottom, int channel) {
  std::size_t next = 0;
  float* array = image.GetArray();
  for (int y = top; y < bottom; ++y) {
    for (int x = left; x < right; ++x) {
      array[(y * image.GetSizeX() + x) * image.GetNumChannels() + channel] = samples[next++];
    }
  }
}

TEST(ImageRegion, ReadsAndWritesItsBoxAndChannelsOnly) {
  std::mt19937 random(24);
  for (const Kind kind : {Kind::kStrange, Kind::kSparseMask}) {
    for (unsigned mode = 0; mode < ColorMode::kCount; ++mode) {
      const int channels = ColorMode::GetNumChannels(mode);
      const ImagePtr image =
          MakeImage(23, 14, mode, MakeSamples(static_cast<std::size_t>(23 * 14 * channels), kind, random));
      for (int channel = -1; channel < channels; ++channel) {
        for (const bool wrap : {false, true}) {
          const Settings settings{3.0F, 2.5F, wrap, Way::kGrow};
          Image expected(*image);
          for (int i = 0; i < channels; ++i) {
            if (channel != -1 && channel != i) continue;
            Put(Expected(Cut(*image, 4, 3, 20, 11, i), 16, 8, settings), expected, 4, 3, 20, 11, i);
          }
          Image actual(*image);
          ImageRegion region;
          region.Init(&actual, 4, 3, 20, 11, channel);
          Apply(region, settings);
          EXPECT_TRUE(SameSamples(GetSamples(expected), GetSamples(actual)))
              << "mode " << mode << ", channel " << channel << ", " << settings;
        }
      }
    }
  }
}

TEST(ImageRegion, CutsItsBoxToTheImage) {
  std::mt19937 random(25);
  const ImagePtr image = MakeImage(9, 7, ColorMode::kValue, MakeSamples(63, Kind::kGray, random));
  const Settings settings{2.0F, 2.0F, true, Way::kShrink};
  Image actual(*image);
  ImageRegion region;
  region.Init(&actual, -5, -1, std::numeric_limits<int>::max(), 100, -1);
  Apply(region, settings);
  EXPECT_TRUE(SameSamples(Expected(GetSamples(*image), 9, 7, settings), GetSamples(actual)));
}

TEST(ImageRegion, DoesNothingWhereThereIsNothingToDo) {
  std::mt19937 random(26);
  const ImagePtr image = MakeImage(5, 4, ColorMode::kColor, MakeSamples(80, Kind::kGray, random));
  const std::vector<float> before = GetSamples(*image);
  constexpr int kNothing[][5] = {{0, 0, 0, 4, -1},  {0, 0, 5, 0, -1}, {3, 0, 2, 4, -1}, {5, 0, 9, 4, -1},
                                 {-4, 0, 0, 4, -1}, {0, 0, 5, 4, 4},  {0, 0, 5, 4, -2}};
  for (const auto& box : kNothing) {
    ImageRegion region;
    region.Init(image.Get(), box[0], box[1], box[2], box[3], box[4]);
    region.Grow(3.0F, 3.0F, true);
    region.Shrink(3.0F, 3.0F, false);
    EXPECT_TRUE(SameSamples(before, GetSamples(*image)));
  }
  ImageRegion region;
  region.Grow(3.0F, 3.0F, true);
  region.Init(nullptr, 0, 0, 5, 4, -1);
  region.Shrink(3.0F, 3.0F, true);
  Image empty(0, 3, ColorMode::kValue, nullptr);
  ApplyToAll(empty, {2.0F, 2.0F, true, Way::kGrow});
}

TEST(ImageRegion, KeepsTheHeaderAndForgetsTheMeasuredRange) {
  const ImagePtr image = MakeImage(3, 1, ColorMode::kValue, {1.0F, 2.0F, 3.0F});
  image->SetValueLowHigh(-2.0F, 6.0F);
  image->SetPin(4, 5);
  EXPECT_EQ(image->GetSampleRange().low, 1.0F);
  ApplyToAll(*image, {1.0F, 1.0F, false, Way::kGrow});
  EXPECT_EQ(image->GetSampleRange().low, 2.0F);
  EXPECT_EQ(image->GetValueLow(), -2.0F);
  EXPECT_EQ(image->GetValueHigh(), 6.0F);
  EXPECT_EQ(image->GetPinX(), 4);
}

rc::Gen<float> AnySample() {
  return rc::gen::oneOf(rc::gen::element(kNan, kInfinity, -kInfinity, 0.0F, -0.0F, 1.0F),
                        rc::gen::map(rc::gen::inRange(-9, 10), [](int i) { return static_cast<float>(i) * 0.5F; }));
}

/// A grey image, or a mask.
ImagePtr AnyImage() {
  const int width = *rc::gen::inRange(1, 30);
  const int height = *rc::gen::inRange(1, 30);
  const auto sample = *rc::gen::arbitrary<bool>() ? AnySample() : rc::gen::element(0.0F, 0.0F, 0.0F, 1.0F);
  return MakeImage(width, height, ColorMode::kValue,
                   *rc::gen::container<std::vector<float>>(static_cast<std::size_t>(width * height), sample));
}

float AnyRadius() { return static_cast<float>(*rc::gen::inRange(0, 1 << 20)) * 0x1p-16F; }

Settings AnySettings() {
  return {AnyRadius(), AnyRadius(), *rc::gen::arbitrary<bool>(), *rc::gen::element(Way::kGrow, Way::kShrink)};
}

std::vector<float> Negated(std::vector<float> samples) {
  for (float& sample : samples) sample = -sample;
  return samples;
}

/// In the order of the samples, with NaN equal to anything.
bool AtMost(const std::vector<float>& low, const std::vector<float>& high) {
  for (std::size_t i = 0; i < low.size(); ++i) {
    if (low[i] > high[i]) return false;
  }
  return true;
}

RC_GTEST_PROP(ImageRegion, GivesTheExtremeOfTheEllipse, ()) {
  const ImagePtr image = AnyImage();
  const Settings settings = AnySettings();
  RC_ASSERT(SameSamples(Expected(GetSamples(*image), image->GetSizeX(), image->GetSizeY(), settings),
                        Applied(*image, settings)));
}

RC_GTEST_PROP(ImageRegion, KeepsTheImageBetweenTheShrunkAndTheGrownOne, ()) {
  const ImagePtr image = AnyImage();
  Settings settings = AnySettings();
  settings.way = Way::kGrow;
  RC_ASSERT(AtMost(GetSamples(*image), Applied(*image, settings)));
  settings.way = Way::kShrink;
  RC_ASSERT(AtMost(Applied(*image, settings), GetSamples(*image)));
}

RC_GTEST_PROP(ImageRegion, ShrinksTheNegativeAsItGrowsTheImage, ()) {
  const ImagePtr image = AnyImage();
  Settings settings = AnySettings();
  const ImagePtr negative =
      MakeImage(image->GetSizeX(), image->GetSizeY(), ColorMode::kValue, Negated(GetSamples(*image)));
  settings.way = Way::kGrow;
  const std::vector<float> grown = Applied(*image, settings);
  settings.way = Way::kShrink;
  RC_ASSERT(SameSamples(grown, Negated(Applied(*negative, settings))));
}

RC_GTEST_PROP(ImageRegion, GrowsFurtherByALargerRadius, ()) {
  const ImagePtr image = AnyImage();
  Settings settings = AnySettings();
  settings.way = Way::kGrow;
  const std::vector<float> grown = Applied(*image, settings);
  settings.radius_x += AnyRadius();
  settings.radius_y += AnyRadius();
  RC_ASSERT(AtMost(grown, Applied(*image, settings)));
}

RC_GTEST_PROP(ImageRegion, GivesAMaskWhatItGivesAGrayImage, ()) {
  // A third sample further away than the ellipse reaches makes the image grey, and changes nothing near by.
  const int width = *rc::gen::inRange(1, 90);
  const int height = *rc::gen::inRange(1, 20);
  auto samples = *rc::gen::container<std::vector<float>>(static_cast<std::size_t>(width * height),
                                                         rc::gen::element(0.0F, 0.0F, 0.0F, 0.0F, 1.0F));
  Settings settings = AnySettings();
  settings.wrap = false;
  const ImagePtr mask = MakeImage(width, height, ColorMode::kValue, samples);
  samples.insert(samples.end(), static_cast<std::size_t>(width) * 20, 0.5F);
  const ImagePtr gray = MakeImage(width, height + 20, ColorMode::kValue, samples);
  const std::vector<float> of_mask = Applied(*mask, settings);
  const std::vector<float> of_gray = Applied(*gray, settings);
  const int compared = std::max(height - static_cast<int>(settings.radius_y) - 1, 0) * width;
  for (int i = 0; i < compared; ++i) {
    RC_ASSERT(of_mask[static_cast<std::size_t>(i)] == of_gray[static_cast<std::size_t>(i)]);
  }
}

}  // namespace
}  // namespace Testing
