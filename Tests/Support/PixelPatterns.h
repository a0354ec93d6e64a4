// SPDX-License-Identifier: Apache-2.0
//
// Samples, rules and checks for tests of algorithms that compare neighbouring pixels.
#pragma once

#include <rapidcheck/gtest.h>

#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "Tests/Support/ValueTesting.h"
#include "Value/Nodes/Components/NeighborRule.h"

namespace Testing {

/// Samples of an image, with the view that the algorithms take.
struct Pixels {
  std::size_t width = 0;
  std::size_t height = 0;
  std::size_t channels = 1;
  std::vector<float> samples;

  [[nodiscard]] PixelView View() const { return {samples.data(), width, height, channels}; }
  [[nodiscard]] std::size_t Count() const { return width * height; }
};

inline Pixels MakeGray(std::size_t width, std::vector<float> samples) {
  const std::size_t height = samples.size() / width;
  return {width, height, 1, std::move(samples)};
}

// The parts of a rule in the order of `NeighborRule`, to be written in braces after the tolerance.
inline constexpr Neighbors kAll = Neighbors::kAll;
inline constexpr Neighbors kCross = Neighbors::kCross;
inline constexpr bool kBounded = false;
inline constexpr bool kSeamless = true;

/// The four rules with a tolerance.
inline std::vector<NeighborRule> AllRules(float tolerance) {
  return {{tolerance, kAll, kBounded},
          {tolerance, kAll, kSeamless},
          {tolerance, kCross, kBounded},
          {tolerance, kCross, kSeamless}};
}

inline std::string Describe(const Pixels& pixels, const NeighborRule& rule) {
  return std::to_string(pixels.width) + " x " + std::to_string(pixels.height) + " x " +
         std::to_string(pixels.channels) + ", tolerance " + std::to_string(rule.tolerance) +
         (rule.neighbors == kCross ? ", cross" : ", all") + (rule.seamless ? ", seamless" : "");
}

/// Sizes without a pixel.
inline constexpr std::pair<std::size_t, std::size_t> kEmptySizes[] = {{0, 0}, {0, 5}, {5, 0}};

/// What the samples of a pattern are drawn from.
enum class Pattern {
  /// 0 and 1: large regions of every shape.
  kTwoLevels,
  /// 0, 0.25, 0.5, 0.75 and 1: differences that are exactly a quarter.
  kFiveLevels,
  /// Any float of [0, 1).
  kNoise,
  /// NaN, infinities, signed zeros, the largest and smallest floats, and ordinary ones.
  kStrange,
};
inline constexpr Pattern kAllPatterns[] = {Pattern::kTwoLevels, Pattern::kFiveLevels, Pattern::kNoise,
                                           Pattern::kStrange};

inline Pixels MakePattern(std::size_t width, std::size_t height, std::size_t channels, Pattern pattern,
                          std::uint32_t seed) {
  static constexpr float kStrange[] = {kNan, kInfinity, -kInfinity, 0.0F,  -0.0F, kLargest, -kLargest, kSmallest,
                                       0.1F, 0.2F,      0.3F,       0.25F, 0.5F,  0.5F,     0.5F,      0.5F};
  std::mt19937 random(seed);
  Pixels pixels{width, height, channels, std::vector<float>(width * height * channels)};
  for (float& sample : pixels.samples) {
    const auto number = static_cast<std::uint32_t>(random() >> 8);
    switch (pattern) {
      case Pattern::kTwoLevels: sample = static_cast<float>(number % 2); break;
      case Pattern::kFiveLevels: sample = 0.25F * static_cast<float>(number % 5); break;
      case Pattern::kNoise: sample = static_cast<float>(number) / 16777216.0F; break;
      case Pattern::kStrange: sample = kStrange[number % 16]; break;
    }
  }
  return pixels;
}

// For properties; inside one only.

inline Pixels AnyPixels(std::size_t most_columns, std::size_t most_rows) {
  return MakePattern(*rc::gen::inRange<std::size_t>(1, most_columns), *rc::gen::inRange<std::size_t>(1, most_rows),
                     *rc::gen::element<std::size_t>(1, 2, 4),
                     *rc::gen::element(Pattern::kTwoLevels, Pattern::kFiveLevels, Pattern::kNoise, Pattern::kStrange),
                     *rc::gen::arbitrary<std::uint32_t>());
}

inline NeighborRule AnyRule(const std::vector<float>& tolerances) {
  return {*rc::gen::elementOf(tolerances), *rc::gen::element(kAll, kCross), *rc::gen::arbitrary<bool>()};
}

inline Pixels Negate(Pixels pixels) {
  for (float& sample : pixels.samples) sample = -sample;
  return pixels;
}

/// The image moved by (dx, dy), what leaves it at one side coming in at the other.
inline std::vector<float> Roll(const std::vector<float>& samples, const Pixels& pixels, std::size_t channels,
                               std::size_t dx, std::size_t dy) {
  std::vector<float> rolled(samples.size());
  for (std::size_t y = 0; y < pixels.height; ++y) {
    for (std::size_t x = 0; x < pixels.width; ++x) {
      const std::size_t to = (y + dy) % pixels.height * pixels.width + (x + dx) % pixels.width;
      for (std::size_t i = 0; i < channels; ++i) {
        rolled[to * channels + i] = samples[(y * pixels.width + x) * channels + i];
      }
    }
  }
  return rolled;
}

/// Checks that `compute(image, rule)` of an image that is moved around is that of the image, moved around in the same
/// way, where the image is seamless and `normalize` has been applied to both.
template <class Compute, class Normalize>
void CheckMovesWithASeamlessImage(const Pixels& pixels, NeighborRule rule, Compute compute, Normalize normalize) {
  rule.seamless = true;
  const auto dx = *rc::gen::inRange<std::size_t>(0, pixels.width);
  const auto dy = *rc::gen::inRange<std::size_t>(0, pixels.height);
  Pixels rolled = pixels;
  rolled.samples = Roll(pixels.samples, pixels, pixels.channels, dx, dy);
  RC_ASSERT(normalize(compute(rolled, rule)) == normalize(Roll(compute(pixels, rule), pixels, 1, dx, dy)));
}

}  // namespace Testing
