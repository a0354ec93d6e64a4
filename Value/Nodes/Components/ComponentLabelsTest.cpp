// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/Components/ComponentLabels.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <map>
#include <stdexcept>
#include <tuple>
#include <utility>
#include <vector>

#include "Tests/Support/InstructionSets.h"
#include "Tests/Support/PixelPatterns.h"
#include "Tests/Support/ValueTesting.h"

namespace {

using Testing::AllRules;
using Testing::kAll;
using Testing::kBounded;
using Testing::kCross;
using Testing::kInfinity;
using Testing::kLargest;
using Testing::kNan;
using Testing::kSeamless;
using Testing::MakeGray;
using Testing::MakePattern;
using Testing::OnEveryInstructionSet;
using Testing::Pattern;
using Testing::Pixels;

struct Labels {
  std::vector<float> labels;
  float count = 0.0F;

  bool operator==(const Labels&) const = default;
};

Labels Label(const Pixels& pixels, const NeighborRule& rule) {
  Labels result{std::vector<float>(pixels.Count(), -1.0F), 0.0F};
  result.count = ComponentLabels::Label(pixels.View(), rule, result.labels.data());
  return result;
}

std::vector<float> LabelsOf(const Pixels& pixels, const NeighborRule& rule) { return Label(pixels, rule).labels; }

/// The definition, as a flood over a stack of pixels: slow and plain.
class Flood {
 public:
  Flood(const Pixels& pixels, const NeighborRule& rule)
      : pixels_(pixels),
        rule_(rule),
        width_(static_cast<int>(pixels.width)),
        height_(static_cast<int>(pixels.height)),
        visited_(pixels.Count(), false),
        result_{std::vector<float>(pixels.Count()), 0.0F} {}

  Labels Run() {
    for (int i = 0; i < width_ * height_; ++i) {
      if (visited_[static_cast<std::size_t>(i)]) continue;
      FloodFrom(i);
      result_.count += 1.0F;
    }
    return result_;
  }

 private:
  void FloodFrom(int seed) {
    static constexpr std::pair<int, int> kOffsets[] = {{-1, -1}, {0, -1}, {1, -1}, {-1, 0},
                                                       {1, 0},   {-1, 1}, {0, 1},  {1, 1}};
    std::vector<int> pending;
    Visit(seed, pending);
    while (!pending.empty()) {
      const int pixel = pending.back();
      pending.pop_back();
      for (const auto& [dx, dy] : kOffsets) {
        if (rule_.neighbors == kCross && dx != 0 && dy != 0) continue;
        int x = pixel % width_ + dx;
        int y = pixel / width_ + dy;
        if (rule_.seamless) {
          x = (x + width_) % width_;
          y = (y + height_) % height_;
        }
        if (x < 0 || x >= width_ || y < 0 || y >= height_) continue;
        const int neighbor = y * width_ + x;
        if (!visited_[static_cast<std::size_t>(neighbor)] && Joins(pixel, neighbor)) Visit(neighbor, pending);
      }
    }
  }

  void Visit(int pixel, std::vector<int>& pending) {
    visited_[static_cast<std::size_t>(pixel)] = true;
    result_.labels[static_cast<std::size_t>(pixel)] = result_.count;
    pending.push_back(pixel);
  }

  [[nodiscard]] bool Joins(int pixel, int neighbor) const {
    for (std::size_t i = 0; i < pixels_.channels; ++i) {
      const float a = pixels_.samples[static_cast<std::size_t>(pixel) * pixels_.channels + i];
      const float b = pixels_.samples[static_cast<std::size_t>(neighbor) * pixels_.channels + i];
      if (!(rule_.tolerance > std::fabs(b - a))) return false;
    }
    return true;
  }

  const Pixels& pixels_;
  const NeighborRule& rule_;
  int width_;
  int height_;
  std::vector<bool> visited_;
  Labels result_;
};

// ---- By hand ----

TEST(ComponentLabels, JoinsNothingAtToleranceZero) {
  const Pixels flat = MakeGray(3, {0.5F, 0.5F, 0.5F, 0.5F, 0.5F, 0.5F});
  for (const NeighborRule& rule : AllRules(0.0F)) {
    const Labels result = Label(flat, rule);
    EXPECT_EQ(result.labels, (std::vector<float>{0, 1, 2, 3, 4, 5}));
    EXPECT_EQ(result.count, 6.0F);
  }
}

TEST(ComponentLabels, JoinsEqualPixelsAtTheLeastTolerance) {
  const Pixels flat = MakeGray(3, {0.5F, 0.5F, 0.5F, 0.5F, 0.5F, 0.5F});
  const Labels result = Label(flat, {Testing::kSmallest, kCross, kBounded});
  EXPECT_EQ(result.labels, std::vector<float>(6, 0.0F));
  EXPECT_EQ(result.count, 1.0F);
}

TEST(ComponentLabels, SplitsWhereTheDifferenceIsTheTolerance) {
  const Pixels row = MakeGray(4, {0.0F, 0.25F, 0.5F, 0.625F});
  EXPECT_EQ(LabelsOf(row, {0.25F, kAll, kBounded}), (std::vector<float>{0, 1, 2, 2}));
  EXPECT_EQ(LabelsOf(row, {std::nextafter(0.25F, 1.0F), kAll, kBounded}), (std::vector<float>{0, 0, 0, 0}));
}

TEST(ComponentLabels, JoinsChainsOfSmallStepsHoweverFarTheirEndsDriftApart) {
  const Pixels ramp = MakeGray(6, {0.0F, 1.0F, 2.0F, 3.0F, 4.0F, 5.0F});
  EXPECT_EQ(LabelsOf(ramp, {1.5F, kAll, kBounded}), std::vector<float>(6, 0.0F));
}

TEST(ComponentLabels, SplitsNeighborsThatDifferByTheWholeRange) {
  // Tolerance 1 is the whole range of these.
  EXPECT_EQ(LabelsOf(MakeGray(4, {0.0F, 0.5F, 1.0F, 0.0F}), {1.0F, kAll, kBounded}), (std::vector<float>{0, 0, 0, 1}));
  const Labels one = Label(MakeGray(4, {0.0F, 0.5F, 1.0F, 0.5F}), {1.0F, kAll, kBounded});
  EXPECT_EQ(one.labels, std::vector<float>(4, 0.0F));
  EXPECT_EQ(one.count, 1.0F);
}

TEST(ComponentLabels, NumbersComponentsByTheirFirstPixels) {
  // The middle one begins last although its end lies further left than the others' ends.
  const Pixels pixels = MakeGray(5, {1, 0, 1, 0, 2,  //
                                     1, 0, 1, 2, 2,  //
                                     1, 1, 1, 0, 3});
  EXPECT_EQ(LabelsOf(pixels, {0.5F, kCross, kBounded}), (std::vector<float>{0, 1, 0, 2, 3,  //
                                                                            0, 1, 0, 3, 3,  //
                                                                            0, 0, 0, 4, 5}));
}

TEST(ComponentLabels, JoinsRegionsThatTouchAtACornerUnlessNeighborsAreTheCross) {
  const Pixels falling = MakeGray(2, {1, 0, 0, 1});
  EXPECT_EQ(LabelsOf(falling, {0.5F, kAll, kBounded}), (std::vector<float>{0, 1, 1, 0}));
  EXPECT_EQ(LabelsOf(falling, {0.5F, kCross, kBounded}), (std::vector<float>{0, 1, 2, 3}));
}

TEST(ComponentLabels, JoinsRegionsAtOppositeBordersWhereTheImageIsSeamless) {
  const Pixels pixels = MakeGray(4, {1, 0, 0, 1,  //
                                     0, 2, 0, 0,  //
                                     1, 2, 2, 0});
  EXPECT_EQ(LabelsOf(pixels, {0.5F, kCross, kBounded}), (std::vector<float>{0, 1, 1, 2,  //
                                                                            3, 4, 1, 1,  //
                                                                            5, 4, 4, 1}));
  EXPECT_EQ(LabelsOf(pixels, {0.5F, kCross, kSeamless}), (std::vector<float>{0, 1, 1, 0,  //
                                                                             1, 2, 1, 1,  //
                                                                             0, 2, 2, 1}));
}

TEST(ComponentLabels, JoinsTheFourCornersOfASeamlessImage) {
  const Pixels falling = MakeGray(3, {1, 2, 3, 4, 5, 6, 7, 8, 1});
  EXPECT_EQ(LabelsOf(falling, {0.5F, kAll, kSeamless}), (std::vector<float>{0, 1, 2, 3, 4, 5, 6, 7, 0}));
  EXPECT_EQ(LabelsOf(falling, {0.5F, kCross, kSeamless}), (std::vector<float>{0, 1, 2, 3, 4, 5, 6, 7, 8}));
  EXPECT_EQ(LabelsOf(falling, {0.5F, kAll, kBounded}), (std::vector<float>{0, 1, 2, 3, 4, 5, 6, 7, 8}));
  const Pixels rising = MakeGray(3, {1, 2, 3, 4, 5, 6, 3, 7, 8});
  EXPECT_EQ(LabelsOf(rising, {0.5F, kAll, kSeamless}), (std::vector<float>{0, 1, 2, 3, 4, 5, 2, 6, 7}));
}

TEST(ComponentLabels, IsDefinedForSeamlessImagesOfOneAndTwoPixels) {
  EXPECT_EQ(LabelsOf(MakeGray(1, {3}), {1.0F, kAll, kSeamless}), (std::vector<float>{0}));
  EXPECT_EQ(LabelsOf(MakeGray(2, {1, 1}), {1.0F, kAll, kSeamless}), (std::vector<float>{0, 0}));
  EXPECT_EQ(LabelsOf(MakeGray(1, {1, 5}), {1.0F, kAll, kSeamless}), (std::vector<float>{0, 1}));
  EXPECT_EQ(LabelsOf(MakeGray(2, {1, 5, 5, 1}), {1.0F, kCross, kSeamless}), (std::vector<float>{0, 1, 2, 3}));
  EXPECT_EQ(LabelsOf(MakeGray(2, {1, 5, 5, 1}), {1.0F, kAll, kSeamless}), (std::vector<float>{0, 1, 1, 0}));
}

TEST(ComponentLabels, NeverJoinsWhatHasNoDifference) {
  const Pixels row = MakeGray(8, {kNan, kNan, 1, kInfinity, kInfinity, -kInfinity, 1, 1});
  EXPECT_EQ(LabelsOf(row, {kLargest, kAll, kBounded}), (std::vector<float>{0, 1, 2, 3, 4, 5, 6, 6}));
  // Infinitely much is not more than infinitely much.
  EXPECT_EQ(LabelsOf(row, {kInfinity, kAll, kBounded}), (std::vector<float>{0, 1, 2, 3, 4, 5, 6, 6}));
  for (const float tolerance : {kNan, -1.0F, -kInfinity}) {
    EXPECT_EQ(LabelsOf(MakeGray(3, {1, 1, 1}), {tolerance, kAll, kSeamless}), (std::vector<float>{0, 1, 2}));
  }
}

TEST(ComponentLabels, TakesBothZerosAsEqualAndOverflowAsInfinitelyFar) {
  EXPECT_EQ(LabelsOf(MakeGray(2, {0.0F, -0.0F}), {Testing::kSmallest, kAll, kBounded}), (std::vector<float>{0, 0}));
  EXPECT_EQ(LabelsOf(MakeGray(2, {kLargest, -kLargest}), {kLargest, kAll, kBounded}), (std::vector<float>{0, 1}));
  EXPECT_EQ(LabelsOf(MakeGray(2, {kLargest, -kLargest}), {kInfinity, kAll, kBounded}), (std::vector<float>{0, 1}));
}

TEST(ComponentLabels, AsksEveryChannel) {
  const Pixels pair{4, 1, 2, {0, 0, 0, 1, 0, 1, 1, 1}};
  EXPECT_EQ(LabelsOf(pair, {0.5F, kAll, kBounded}), (std::vector<float>{0, 1, 1, 2}));
  for (std::size_t channel = 0; channel < 4; ++channel) {
    Pixels colors{3, 1, 4, std::vector<float>(12, 0.5F)};
    colors.samples[8 + channel] = 1.0F;
    EXPECT_EQ(LabelsOf(colors, {0.5F, kAll, kBounded}), (std::vector<float>{0, 0, 1})) << channel;
  }
}

TEST(ComponentLabels, CountsNoComponentWithoutPixels) {
  for (const auto& [width, height] : Testing::kEmptySizes) {
    EXPECT_EQ(Label({width, height, 1, {}}, {1.0F, kAll, kSeamless}).count, 0.0F);
  }
}

TEST(ComponentLabels, StopsCountingWhereSinglePrecisionDoes) {
  constexpr std::size_t kSide = 4097;
  const Pixels pixels{kSide, kSide, 1, std::vector<float>(kSide * kSide)};
  const Labels result = Label(pixels, {0.0F, kAll, kSeamless});
  EXPECT_EQ(result.count, 16777216.0F);
  constexpr std::size_t kLast = std::size_t{1} << 24;
  for (std::size_t i = 0; i <= kLast; ++i) ASSERT_EQ(result.labels[i], static_cast<float>(i));
  for (std::size_t i = kLast; i < kSide * kSide; ++i) ASSERT_EQ(result.labels[i], 16777216.0F);
}

TEST(ComponentLabels, RefusesMorePixelsThanItCanCount) {
  float label = 0.0F;
  const PixelView huge{&label, std::size_t{1} << 20, std::size_t{1} << 20, 1};
  EXPECT_THROW(ComponentLabels::Label(huge, {}, &label), std::length_error);
}

// ---- Against the definition ----

void ExpectAsByTheDefinition(const Pixels& pixels, float tolerance) {
  for (const NeighborRule& rule : AllRules(tolerance)) {
    const Labels expected = Flood(pixels, rule).Run();
    OnEveryInstructionSet([&] { EXPECT_TRUE(Label(pixels, rule) == expected) << Testing::Describe(pixels, rule); });
  }
}

class ComponentLabelsOfWidth : public testing::TestWithParam<std::size_t> {};

TEST_P(ComponentLabelsOfWidth, AreThoseOfTheFlood) {
  std::uint32_t seed = 1;
  for (const std::size_t height : {1U, 2U, 3U, 16U, 17U}) {
    for (const std::size_t channels : {1U, 2U, 4U}) {
      for (const Pattern pattern : Testing::kAllPatterns) {
        const Pixels pixels = MakePattern(GetParam(), height, channels, pattern, seed++);
        for (const float tolerance : {0.25F, 0.3F, 0.75F}) ExpectAsByTheDefinition(pixels, tolerance);
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(AroundLanesAndWords, ComponentLabelsOfWidth,
                         testing::Values(1, 2, 3, 4, 5, 7, 8, 9, 15, 16, 17, 31, 32, 33, 63, 64, 65, 66, 127, 128, 129,
                                         193));

TEST(ComponentLabels, OfShapesThatMergeLateAreThoseOfTheFlood) {
  // Combs, spirals and nested corners join their parts far from where they begin.
  constexpr std::size_t kSide = 70;
  Pixels comb{kSide, kSide, 1, std::vector<float>(kSide * kSide)};
  Pixels spiral = comb;
  Pixels corners = comb;
  for (std::size_t y = 0; y < kSide; ++y) {
    for (std::size_t x = 0; x < kSide; ++x) {
      comb.samples[y * kSide + x] = x % 2 == 0 || y == kSide - 1 ? 1.0F : 0.0F;
      corners.samples[y * kSide + x] = static_cast<float>(std::max(x, kSide - 1 - y) % 2);
      const std::size_t ring = std::min({x, y, kSide - 1 - x, kSide - 1 - y});
      const bool is_gate = ring % 2 == 1 && x == ring && y == ring + 1;
      spiral.samples[y * kSide + x] = ring % 2 == 0 || is_gate ? 1.0F : 0.0F;
    }
  }
  for (const Pixels& pixels : {comb, spiral, corners}) ExpectAsByTheDefinition(pixels, 0.5F);
}

// ---- Properties ----

Pixels AnyPixels() { return Testing::AnyPixels(90, 20); }
NeighborRule AnyRule() { return Testing::AnyRule({0.0F, 0.125F, 0.25F, 0.375F, 0.6F, 1.0F}); }

/// Labels renumbered in the order of their first appearance.
std::vector<float> Renumber(const std::vector<float>& labels) {
  std::map<float, float> numbers;
  std::vector<float> renumbered;
  for (const float label : labels) {
    renumbered.push_back(numbers.emplace(label, static_cast<float>(numbers.size())).first->second);
  }
  return renumbered;
}

RC_GTEST_PROP(ComponentLabels, AreThoseOfTheFloodForAnyImage, ()) {
  const Pixels pixels = AnyPixels();
  const NeighborRule rule = AnyRule();
  RC_ASSERT(Label(pixels, rule) == Flood(pixels, rule).Run());
}

RC_GTEST_PROP(ComponentLabels, AppearInOrderAndWithoutGaps, ()) {
  const Labels result = Label(AnyPixels(), AnyRule());
  float next = 0.0F;
  for (const float label : result.labels) {
    RC_ASSERT(label >= 0.0F && label <= next);
    if (label == next) next += 1.0F;
  }
  RC_ASSERT(result.count == next);
}

RC_GTEST_PROP(ComponentLabels, StayWhenTheImageIsNegated, ()) {
  const Pixels pixels = AnyPixels();
  const NeighborRule rule = AnyRule();
  RC_ASSERT(Label(pixels, rule) == Label(Testing::Negate(pixels), rule));
}

RC_GTEST_PROP(ComponentLabels, GroupASeamlessImageAlikeWhereverItsBordersAre, ()) {
  Testing::CheckMovesWithASeamlessImage(AnyPixels(), AnyRule(), LabelsOf, Renumber);
}

RC_GTEST_PROP(ComponentLabels, OnlyMergeWhenTheRuleGrowsWider, ()) {
  const Pixels pixels = AnyPixels();
  const NeighborRule rule = AnyRule();
  const std::vector<float> labels = LabelsOf(pixels, rule);
  for (const NeighborRule& wider :
       {NeighborRule{rule.tolerance * 2.0F, rule.neighbors, rule.seamless},
        NeighborRule{rule.tolerance, kAll, rule.seamless}, NeighborRule{rule.tolerance, rule.neighbors, kSeamless}}) {
    const std::vector<float> merged = LabelsOf(pixels, wider);
    std::map<float, float> merged_into;
    for (std::size_t i = 0; i < labels.size(); ++i) {
      RC_ASSERT(merged_into.emplace(labels[i], merged[i]).first->second == merged[i]);
    }
  }
}

}  // namespace
