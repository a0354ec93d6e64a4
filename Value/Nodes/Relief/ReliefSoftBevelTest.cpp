// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/Relief/ReliefSoftBevel.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "Tests/Support/InstructionSets.h"
#include "Tests/Support/ValueTesting.h"
#include "Value/Nodes/Relief/ReliefBevel.h"

namespace {

using ReliefBevel::Rings;
using Testing::GetSamples;
using Testing::HoldsSamples;
using Testing::ImageRef;
using Testing::kInfinity;
using Testing::kNan;
using Testing::MakeImage;
using Testing::MakeRow;
using Testing::OnEveryInstructionSet;

ImageRef MakeCanvas(const Image& mask, float value) { return ImageRef(new Image(mask.GetImageHeader(), &value)); }

void ExpectDrawn(const Image& mask, const Rings& rings, const std::vector<float>& expected) {
  const ImageRef drawn = MakeCanvas(mask, 0.0F);
  ReliefBevel::DrawSoft(mask, false, rings, 0, rings.steps, *drawn);
  EXPECT_TRUE(HoldsSamples(drawn.Get(), expected));
}

/// Whether the soft bevel is the one of a copy of the mask for each step.
testing::AssertionResult IsAsStepByStep(const Image& mask, bool wrap, const Rings& rings, const Image& canvas) {
  const ImageRef expected(new Image(canvas));
  ReliefBevel::DrawStepByStep(mask, wrap, rings, *expected);
  const ImageRef drawn(new Image(canvas));
  ReliefBevel::DrawSoft(mask, wrap, rings, 0, rings.steps, *drawn);
  return HoldsSamples(drawn.Get(), GetSamples(*expected));
}

testing::AssertionResult IsAsStepByStep(const Image& mask, bool wrap, const Rings& rings, float canvas) {
  return IsAsStepByStep(mask, wrap, rings, *MakeCanvas(mask, canvas));
}

class Noise {
 public:
  explicit Noise(std::uint32_t seed) : state_(seed) {}
  /// From 0 to just below 1.
  float Next() {
    state_ = state_ * 1664525U + 1013904223U;
    return static_cast<float>(state_ >> 8) / 16777216.0F;
  }

 private:
  std::uint32_t state_;
};

enum class Content {
  kNoise,
  kHalf,
  kCheckerboard,
  kRamp,
  kSpike,
  kPlateaus,
  kSoftEdge,
  kNeighbors,
  kMissing,
  kWide,
  kCount
};

float GetSample(Content content, float x, float y, Noise& noise) {
  const float blot = 0.5F + 0.5F * std::sin(0.31F * x) * std::cos(0.23F * y + 0.1F * x);
  const float random = noise.Next();
  switch (content) {
    case Content::kNoise: return random;
    case Content::kHalf: return 0.5F;
    case Content::kCheckerboard: return std::fmod(x + y, 2.0F) == 0.0F ? 0.25F : 0.75F;
    case Content::kRamp: return (x + 0.5F * y) / 40.0F - 0.2F;
    case Content::kSpike: return x == 7.0F && y == 5.0F ? 0.875F : 0.0F;
    case Content::kPlateaus: return std::floor(4.0F * blot) / 4.0F;
    case Content::kSoftEdge: return 6.0F * (blot - 0.5F);
    // Numbers that differ by the least there is.
    case Content::kNeighbors: return random < 0.5F ? 0.5F : std::nextafter(0.5F, 1.0F);
    case Content::kMissing: return random < 0.3F ? kNan : blot;
    case Content::kWide: return random < 0.1F ? kInfinity : random < 0.2F ? -kInfinity : 8.0F * random - 4.0F;
    case Content::kCount: break;
  }
  return 0.0F;
}

ImageRef MakeMask(int width, int height, Content content) {
  Noise noise(static_cast<std::uint32_t>(width * 1000 + height));
  std::vector<float> samples;
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      samples.push_back(GetSample(content, static_cast<float>(x), static_cast<float>(y), noise));
    }
  }
  return MakeImage(width, height, ColorMode::kValue, samples);
}

TEST(ReliefSoftBevel, BlendsWhatHasGrown) {
  // Grown by 2 the mask is 0.5, 1, 1, 1; grown by 1 it is 0, 0.5, 1, 1. The levels are 0.5 and 1.
  ExpectDrawn(*MakeRow({0, 0, 0.5F, 1}), {.steps = 2, .start = 2}, {0.25F, 0.75F, 1, 1});
}

TEST(ReliefSoftBevel, BlendsWhatHasShrunk) {
  // The mask itself at level 0.5, then shrunk by 1 to 0.5, 0.5, 1, 1 at level 1.
  ExpectDrawn(*MakeRow({0.5F, 1, 1, 1}), {.steps = 2, .start = 0}, {0.625F, 0.75F, 1, 1});
}

TEST(ReliefSoftBevel, TakesSamplesThatAreNoNumbersForNone) {
  // Grown by 1 the mask is 0.5, 0.5, 0.5, nothing; itself 0.5, nothing; shrunk by 1 it is 0.5, 0.5, nothing, nothing.
  ExpectDrawn(*MakeRow({0.5F, kNan, kNan, kNan}), {.steps = 1, .start = 1}, {0.5F, 0.5F, 0, 0});
  ExpectDrawn(*MakeRow({0.5F, kNan, kNan, kNan}), {.steps = 1, .start = 0}, {0.5F, 0, 0, 0});
  ExpectDrawn(*MakeRow({0.5F, kNan, kNan, kNan}), {.steps = 2, .start = 0}, {0.625F, 0.5F, 0, 0});
}

TEST(ReliefSoftBevel, IsTheSameAsStepByStepForEveryKindOfMask) {
  constexpr std::array<Rings, 6> kRings = {{{.steps = 40, .start = 0, .profile = ReliefProfile::kSmooth},
                                            {.steps = 40, .start = 40},
                                            {.steps = 25, .start = 13, .profile = ReliefProfile::kArcOut},
                                            {.steps = 17, .start = 17, .is_inverted = true},
                                            {.steps = 9, .start = -8, .profile = ReliefProfile::kArcIn},
                                            {.steps = 6, .start = 30}}};
  constexpr std::array<std::array<int, 2>, 5> kSizes = {{{61, 43}, {16, 70}, {33, 1}, {1, 1}, {5, 3}}};
  for (const auto& [width, height] : kSizes) {
    for (int content = 0; content < static_cast<int>(Content::kCount); ++content) {
      const ImageRef mask = MakeMask(width, height, static_cast<Content>(content));
      for (const bool wrap : {false, true}) {
        for (std::size_t i = 0; i < kRings.size(); ++i) {
          SCOPED_TRACE(std::to_string(width) + " x " + std::to_string(height) + ", content " + std::to_string(content) +
                       ", wrap " + std::to_string(wrap) + ", rings " + std::to_string(i));
          OnEveryInstructionSet([&] { EXPECT_TRUE(IsAsStepByStep(*mask, wrap, kRings[i], 0.25F)); });
        }
      }
    }
  }
}

TEST(ReliefSoftBevel, IsTheSameAsStepByStepForLargeRadii) {
  for (const Content content : {Content::kSoftEdge, Content::kSpike, Content::kPlateaus}) {
    const ImageRef mask = MakeMask(300, 220, content);
    EXPECT_TRUE(IsAsStepByStep(*mask, true, {.steps = 150, .start = 150}, 0.0F));
    EXPECT_TRUE(IsAsStepByStep(*mask, false, {.steps = 201, .start = 101}, 0.0F));
  }
}

TEST(ReliefSoftBevel, IsTheSameAsStepByStepAcrossTiles) {
  // More than two tiles of 128 columns and 16 rows, and tasks of 64 rows that learn from no other.
  for (int content = 0; content < static_cast<int>(Content::kCount); ++content) {
    const ImageRef mask = MakeMask(277, 135, static_cast<Content>(content));
    for (const bool wrap : {false, true}) {
      SCOPED_TRACE("content " + std::to_string(content) + ", wrap " + std::to_string(wrap));
      const Rings rings{.steps = 60, .start = 34, .profile = ReliefProfile::kArcOut};
      OnEveryInstructionSet([&] { EXPECT_TRUE(IsAsStepByStep(*mask, wrap, rings, 0.0F)); });
    }
  }
}

/// What a bevel is drawn over, 150 x 40: small numbers, in places some of another size.
ImageRef MakeMixedCanvas(float size, bool is_everywhere, Noise& noise) {
  std::vector<float> samples;
  for (int y = 0; y < 40; ++y) {
    for (int x = 0; x < 150; ++x) {
      const bool differs = is_everywhere ? noise.Next() < 0.01F : x >= 128 || y >= 16;
      samples.push_back(differs ? size : noise.Next() - 0.5F);
    }
  }
  return MakeImage(150, 40, ColorMode::kValue, samples);
}

TEST(ReliefSoftBevel, ForgetsOnlyWhatIsDrawnOverToTheLastBit) {
  Noise noise(7);
  for (const float weakest : {0.0F, 0.1F, 0.5F, 0.9F, 0.999F}) {
    std::vector<float> samples(150 * 40);
    // Few of them are much larger than the weakest.
    for (float& sample : samples) sample = weakest + (1.0F - weakest) * 0.5F * std::pow(noise.Next(), 16.0F);
    const ImageRef mask = MakeImage(150, 40, ColorMode::kValue, samples);
    // Some that no ring draws over, and these in all tiles or only to the right of and below tiles without.
    for (const float size : {0.0F, 1e-38F, 1.0F, 1e6F, 1e30F, kInfinity, kNan}) {
      for (const bool is_everywhere : {false, true}) {
        const ImageRef canvas = MakeMixedCanvas(size, is_everywhere, noise);
        for (int profile = 0; profile < 8; ++profile) {
          // Few rings beyond those that are enough elsewhere, and many.
          const int steps = profile < 4 ? 24 : 64;
          SCOPED_TRACE("from " + std::to_string(weakest) + ", on " + std::to_string(size) + ", everywhere " +
                       std::to_string(is_everywhere) + ", profile " + std::to_string(profile));
          const Rings rings{.steps = steps,
                            .start = steps,
                            .is_inverted = (profile % 2 == 0) == is_everywhere,
                            .profile = static_cast<ReliefProfile>(profile % 4)};
          EXPECT_TRUE(IsAsStepByStep(*mask, profile % 4 < 2, rings, *canvas));
        }
      }
    }
  }
}

TEST(ReliefSoftBevel, IsTheSameAsStepByStepWhereImagesMayNotBeAsLargeAsItsTables) {
  struct MaxSize {
    int x = Image::GetMaxSizeX();
    int y = Image::GetMaxSizeY();
    ~MaxSize() { Image::SetMaxSize(x, y); }
  } const before;
  const ImageRef mask = MakeMask(61, 43, Content::kSoftEdge);
  Image::SetMaxSize(61, 43);
  for (const bool wrap : {false, true}) EXPECT_TRUE(IsAsStepByStep(*mask, wrap, {.steps = 25, .start = 13}, 0.25F));
}

TEST(ReliefSoftBevel, LeavesAloneWhatItsTablesWouldOutgrow) {
  EXPECT_TRUE(ReliefBevel::CanDrawSoft(*MakeMask(300, 220, Content::kHalf), 250));
  EXPECT_FALSE(ReliefBevel::CanDrawSoft(*MakeMask(300, 220, Content::kHalf), 5000));
}

RC_GTEST_PROP(ReliefSoftBevel, IsTheSameAsStepByStepForAnyMask, ()) {
  const int width = *rc::gen::inRange(1, 50);
  const int height = *rc::gen::inRange(1, 50);
  const auto count = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
  const auto steepness = static_cast<float>(*rc::gen::inRange(1, 9));
  const auto raw = *rc::gen::container<std::vector<int>>(count, rc::gen::inRange(-4, 12));
  std::vector<float> samples;
  std::transform(raw.begin(), raw.end(), std::back_inserter(samples),
                 [&](int number) { return static_cast<float>(number) / steepness; });
  const ImageRef mask = MakeImage(width, height, ColorMode::kValue, samples);
  const Rings rings{
      .steps = *rc::gen::inRange(1, 30),
      .start = *rc::gen::inRange(-10, 30),
      .is_inverted = *rc::gen::arbitrary<bool>(),
      .profile = *rc::gen::elementOf(std::vector<ReliefProfile>{ReliefProfile::kLinear, ReliefProfile::kSmooth,
                                                                ReliefProfile::kArcOut, ReliefProfile::kArcIn})};
  RC_ASSERT(IsAsStepByStep(*mask, *rc::gen::arbitrary<bool>(), rings, 1.0F));
}

}  // namespace
