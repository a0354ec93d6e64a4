// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/Components/ComponentEdges.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <functional>
#include <vector>

#include "Host/Util/ThreadPool.h"
#include "Tests/Support/HostTesting.h"
#include "Tests/Support/InstructionSets.h"
#include "Tests/Support/PixelPatterns.h"
#include "Tests/Support/ValueTesting.h"

namespace {

using ComponentEdges::Marks;
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

std::vector<float> MarkIn(const Pixels& pixels, const NeighborRule& rule, const Marks& marks) {
  std::vector<float> marked(pixels.Count(), -1.0F);
  ComponentEdges::Mark(pixels.View(), rule, marks, marked.data());
  return marked;
}

/// 1 for an edge, 0 elsewhere.
std::vector<float> Mark(const Pixels& pixels, const NeighborRule& rule) { return MarkIn(pixels, rule, {0.0F, 1.0F}); }

/// The same on the calling thread.
std::vector<float> MarkHere(const Pixels& pixels, const NeighborRule& rule) {
  std::vector<float> marked(pixels.Count(), -1.0F);
  ComponentEdges::MarkRows(pixels.View(), rule, {}, 0, pixels.height, marked.data());
  return marked;
}

/// The definition, pixel by pixel and neighbour by neighbour.
std::vector<float> MarkPlainly(const Pixels& pixels, const NeighborRule& rule) {
  const auto width = static_cast<std::ptrdiff_t>(pixels.width);
  const auto height = static_cast<std::ptrdiff_t>(pixels.height);
  std::vector<float> marked;
  for (std::ptrdiff_t y = 0; y < height; ++y) {
    for (std::ptrdiff_t x = 0; x < width; ++x) {
      bool is_edge = false;
      for (std::ptrdiff_t ny = y - 1; ny <= y + 1; ++ny) {
        for (std::ptrdiff_t nx = x - 1; nx <= x + 1; ++nx) {
          if ((nx == x && ny == y) || (rule.neighbors == kCross && nx != x && ny != y)) continue;
          std::ptrdiff_t index = ny * width + nx;
          if (rule.seamless) {
            index = (ny + height) % height * width + (nx + width) % width;
          } else if (ny < 0 || ny >= height || index < 0 || index >= width * height) {
            continue;
          }
          for (std::size_t i = 0; i < pixels.channels; ++i) {
            const float here = pixels.samples[static_cast<std::size_t>(y * width + x) * pixels.channels + i];
            const float there = pixels.samples[static_cast<std::size_t>(index) * pixels.channels + i];
            is_edge = is_edge || std::fabs(here - there) > rule.tolerance;
          }
        }
      }
      marked.push_back(is_edge ? 1.0F : 0.0F);
    }
  }
  return marked;
}

// ---- By hand ----

TEST(ComponentEdges, MarksNothingOfAFlatImage) {
  const Pixels flat = MakeGray(3, std::vector<float>(6, 0.5F));
  for (const NeighborRule& rule : AllRules(0.0F)) {
    EXPECT_EQ(Mark(flat, rule), std::vector<float>(6, 0.0F));
    EXPECT_EQ(MarkIn(flat, rule, {1.0F, 0.0F}), std::vector<float>(6, 1.0F));
  }
}

TEST(ComponentEdges, MarksALineOfOnePixelAndTheNeighborsOnBothSides) {
  const Pixels line = MakeGray(7, {0, 0, 0, 1, 0, 0, 0,  //
                                   0, 0, 0, 1, 0, 0, 0,  //
                                   0, 0, 0, 1, 0, 0, 0});
  const std::vector<float> expected{0, 0, 1, 1, 1, 0, 0,  //
                                    0, 0, 1, 1, 1, 0, 0,  //
                                    0, 0, 1, 1, 1, 0, 0};
  for (const NeighborRule& rule : AllRules(0.5F)) EXPECT_EQ(Mark(line, rule), expected);
}

TEST(ComponentEdges, MarksBothSidesOfAStepAcrossTheBordersOfASeamlessImage) {
  const Pixels step = MakeGray(5, {0, 0, 0.25F, 0.5F, 0.75F,  //
                                   0, 0, 0.25F, 0.5F, 0.75F,  //
                                   0, 0, 0.25F, 0.5F, 0.75F});
  for (const Neighbors neighbors : {kAll, kCross}) {
    EXPECT_EQ(Mark(step, {0.5F, neighbors, kSeamless}), (std::vector<float>{1, 0, 0, 0, 1,  //
                                                                            1, 0, 0, 0, 1,  //
                                                                            1, 0, 0, 0, 1}));
  }
  const Pixels column = MakeGray(1, {0, 0, 1});
  EXPECT_EQ(Mark(column, {0.5F, kCross, kSeamless}), (std::vector<float>{1, 1, 1}));
}

TEST(ComponentEdges, ComparesRowsWithoutABorderBetweenThemWhereTheImageIsNotSeamless) {
  const Pixels step = MakeGray(4, {0, 0, 0, 1,  //
                                   0, 0, 0, 0,  //
                                   0, 0, 0, 0});
  // The last pixel of the first row, number 3, is the left neighbour of pixel 4, the lower left one of pixel 0 and the
  // upper left one of pixel 8.
  EXPECT_EQ(Mark(step, {0.5F, kCross, kBounded}), (std::vector<float>{0, 0, 1, 1,  //
                                                                      1, 0, 0, 1,  //
                                                                      0, 0, 0, 0}));
  EXPECT_EQ(Mark(step, {0.5F, kAll, kBounded}), (std::vector<float>{1, 0, 1, 1,  //
                                                                    1, 0, 1, 1,  //
                                                                    1, 0, 0, 0}));
}

TEST(ComponentEdges, FindsTheFirstPixelOfTheNextRowRightOfTheLastOne) {
  const Pixels step = MakeGray(3, {0, 0, 0,  //
                                   0, 0, 0,  //
                                   1, 0, 0});
  // The first pixel of the last row, number 6, is the right neighbour of pixel 5, the lower right one of pixel 2 and
  // the upper right one of pixel 8.
  EXPECT_EQ(Mark(step, {0.5F, kCross, kBounded}), (std::vector<float>{0, 0, 0,  //
                                                                      1, 0, 1,  //
                                                                      1, 1, 0}));
  EXPECT_EQ(Mark(step, {0.5F, kAll, kBounded}), (std::vector<float>{0, 0, 1,  //
                                                                    1, 1, 1,  //
                                                                    1, 1, 1}));
}

TEST(ComponentEdges, HasNoNeighborsAboveTheFirstAndBelowTheLastRow) {
  // In one row the upper right corner of the first pixel would be the second one if rows went on endlessly.
  EXPECT_EQ(Mark(MakeGray(4, {0, 0, 1, 1}), {0.5F, kAll, kBounded}), (std::vector<float>{0, 1, 1, 0}));
  // A column: the pixel above is also the left neighbour, and the corners are two rows away or the pixel itself.
  EXPECT_EQ(Mark(MakeGray(1, {0, 0, 0, 1}), {0.5F, kCross, kBounded}), (std::vector<float>{0, 0, 1, 1}));
  EXPECT_EQ(Mark(MakeGray(1, {0, 0, 0, 1}), {0.5F, kAll, kBounded}), (std::vector<float>{0, 1, 1, 1}));
  for (const float tolerance : {0.0F, -1.0F}) {
    EXPECT_EQ(Mark(MakeGray(1, {5}), {tolerance, kAll, kBounded}), (std::vector<float>{0}));
  }
}

TEST(ComponentEdges, IgnoresDiagonalDifferencesInTheCross) {
  const Pixels dot = MakeGray(5, {0, 0, 0, 0, 0,  //
                                  0, 0, 0, 0, 0,  //
                                  0, 0, 1, 0, 0,  //
                                  0, 0, 0, 0, 0,  //
                                  0, 0, 0, 0, 0});
  for (const bool seamless : {kBounded, kSeamless}) {
    EXPECT_EQ(Mark(dot, {0.5F, kCross, seamless}), (std::vector<float>{0, 0, 0, 0, 0,  //
                                                                       0, 0, 1, 0, 0,  //
                                                                       0, 1, 1, 1, 0,  //
                                                                       0, 0, 1, 0, 0,  //
                                                                       0, 0, 0, 0, 0}));
    EXPECT_EQ(Mark(dot, {0.5F, kAll, seamless}), (std::vector<float>{0, 0, 0, 0, 0,  //
                                                                     0, 1, 1, 1, 0,  //
                                                                     0, 1, 1, 1, 0,  //
                                                                     0, 1, 1, 1, 0,  //
                                                                     0, 0, 0, 0, 0}));
  }
}

TEST(ComponentEdges, MarksNoDifferenceThatIsJustTheTolerance) {
  const Pixels row = MakeGray(4, {0, 0, 0.25F, 0.25F});
  EXPECT_EQ(Mark(row, {0.25F, kAll, kBounded}), (std::vector<float>{0, 0, 0, 0}));
  EXPECT_EQ(Mark(row, {std::nextafter(0.25F, 0.0F), kAll, kBounded}), (std::vector<float>{0, 1, 1, 0}));
}

TEST(ComponentEdges, MarksNothingForADifferenceThatIsNotANumber) {
  EXPECT_EQ(Mark(MakeGray(4, {0, kNan, 0, 0}), {0.0F, kAll, kBounded}), (std::vector<float>{0, 0, 0, 0}));
  EXPECT_EQ(Mark(MakeGray(4, {kInfinity, kInfinity, 0, 0}), {kLargest, kAll, kBounded}),
            (std::vector<float>{0, 1, 1, 0}));
  EXPECT_EQ(Mark(MakeGray(4, {kInfinity, -kInfinity, 0, 1}), {kInfinity, kAll, kBounded}),
            (std::vector<float>{0, 0, 0, 0}));
  EXPECT_EQ(Mark(MakeGray(2, {0.0F, -0.0F}), {0.0F, kAll, kBounded}), (std::vector<float>{0, 0}));
  EXPECT_EQ(Mark(MakeGray(2, {0, 1}), {kNan, kAll, kBounded}), (std::vector<float>{0, 0}));
}

TEST(ComponentEdges, AsksForOneChannelThatDiffers) {
  for (std::size_t channel = 0; channel < 4; ++channel) {
    Pixels colors{4, 1, 4, std::vector<float>(16, 0.5F)};
    colors.samples[12 + channel] = 2.0F;
    EXPECT_EQ(Mark(colors, {1.0F, kAll, kBounded}), (std::vector<float>{0, 0, 1, 1})) << channel;
  }
  const Pixels pair{3, 1, 2, {0, kNan, 2, kNan, 2, 0}};
  EXPECT_EQ(Mark(pair, {1.0F, kAll, kBounded}), (std::vector<float>{1, 1, 0}));
}

TEST(ComponentEdges, TakesImagesWithoutPixels) {
  for (const auto& [width, height] : Testing::kEmptySizes) {
    EXPECT_TRUE(Mark({width, height, 1, {}}, {0.5F, kAll, kSeamless}).empty());
  }
}

// ---- Against the definition ----

class ComponentEdgesOfWidth : public testing::TestWithParam<std::size_t> {};

TEST_P(ComponentEdgesOfWidth, AreThoseOfTheDefinition) {
  std::uint32_t seed = 1;
  for (const std::size_t height : {1U, 2U, 3U, 16U, 17U, 33U}) {
    for (const std::size_t channels : {1U, 2U, 4U}) {
      for (const Pattern pattern : Testing::kAllPatterns) {
        const Pixels pixels = MakePattern(GetParam(), height, channels, pattern, seed++);
        for (const float tolerance : {-1.0F, 0.0F, 0.5F, 0.9F}) {
          for (const NeighborRule& rule : AllRules(tolerance)) {
            const std::vector<float> expected = MarkPlainly(pixels, rule);
            OnEveryInstructionSet(
                [&] { EXPECT_TRUE(MarkHere(pixels, rule) == expected) << Testing::Describe(pixels, rule); });
          }
        }
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(AroundLanes, ComponentEdgesOfWidth,
                         testing::Values(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 15, 16, 17, 18, 19, 31, 32, 33, 34, 35));

TEST(ComponentEdges, DoNotDependOnTheNumberOfThreads) {
  const Pixels pixels = MakePattern(333, 200, 4, Pattern::kStrange, 7);
  const NeighborRule rule{0.1F, kAll, kSeamless};
  const std::vector<float> expected = MarkPlainly(pixels, rule);
  for (const std::size_t threads : {1U, 2U, 16U}) {
    const Testing::ThreadsScope scope(threads);
    EXPECT_EQ(Mark(pixels, rule), expected);
    std::vector<float> marked(pixels.Count(), -1.0F);
    ThreadPool pool(threads);
    for (std::size_t y = 0; y < pixels.height; ++y) {
      pool.AddTask([&, y] { ComponentEdges::MarkRows(pixels.View(), rule, {}, y, y + 1, marked.data()); });
    }
    pool.Wait();
    EXPECT_EQ(marked, expected) << threads;
  }
}

// ---- Properties ----

Pixels AnyPixels() { return Testing::AnyPixels(60, 40); }
NeighborRule AnyRule() { return Testing::AnyRule({0.0F, 0.25F, 0.5F, 0.75F, 0.95F}); }

RC_GTEST_PROP(ComponentEdges, AreThoseOfTheDefinitionForAnyImage, ()) {
  const Pixels pixels = AnyPixels();
  const NeighborRule rule = AnyRule();
  RC_ASSERT(Mark(pixels, rule) == MarkPlainly(pixels, rule));
}

RC_GTEST_PROP(ComponentEdges, InvertedAreOneMinusTheEdges, ()) {
  const Pixels pixels = AnyPixels();
  const NeighborRule rule = AnyRule();
  std::vector<float> expected = Mark(pixels, rule);
  for (float& mark : expected) mark = 1.0F - mark;
  RC_ASSERT(MarkIn(pixels, rule, {1.0F, 0.0F}) == expected);
}

RC_GTEST_PROP(ComponentEdges, StayWhenTheImageIsNegated, ()) {
  const Pixels pixels = AnyPixels();
  const NeighborRule rule = AnyRule();
  RC_ASSERT(Mark(pixels, rule) == Mark(Testing::Negate(pixels), rule));
}

RC_GTEST_PROP(ComponentEdges, MoveWithASeamlessImage, ()) {
  Testing::CheckMovesWithASeamlessImage(AnyPixels(), AnyRule(), Mark, std::identity());
}

RC_GTEST_PROP(ComponentEdges, AreTheSameHoweverTheRowsAreSplit, ()) {
  const Pixels pixels = AnyPixels();
  const NeighborRule rule = AnyRule();
  const auto split = *rc::gen::inRange<std::size_t>(0, pixels.height + 1);
  std::vector<float> marked(pixels.Count(), -1.0F);
  ComponentEdges::MarkRows(pixels.View(), rule, {}, split, pixels.height, marked.data());
  RC_ASSERT(std::count(marked.begin(), marked.end(), -1.0F) == static_cast<std::ptrdiff_t>(split * pixels.width));
  ComponentEdges::MarkRows(pixels.View(), rule, {}, 0, split, marked.data());
  RC_ASSERT(marked == Mark(pixels, rule));
}

RC_GTEST_PROP(ComponentEdges, OfTheCrossAreEdgesOfAllNeighbors, ()) {
  const Pixels pixels = AnyPixels();
  NeighborRule rule = AnyRule();
  rule.neighbors = kCross;
  const std::vector<float> of_cross = Mark(pixels, rule);
  rule.neighbors = kAll;
  const std::vector<float> of_all = Mark(pixels, rule);
  for (std::size_t i = 0; i < of_all.size(); ++i) RC_ASSERT(of_cross[i] <= of_all[i]);
}

}  // namespace
