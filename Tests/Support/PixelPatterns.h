// SPDX-License-Identifier: Apache-2.0
//
// Samples for tests of algorithms that compare neighbouring pixels.
#pragma once

#include <cstddef>
#include <cstdint>
#include <random>
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

}  // namespace Testing
