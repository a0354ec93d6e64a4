// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <limits>
#include <optional>

#include "Host/Image/Api.h"

namespace ScEng {

/// The lowest and highest of a set of samples, built up piece by piece. Starts empty (low above high).
/// A zero is kept as +0.0 whatever its sign, so that the result does not depend on the order of the pieces.
struct SampleRange {
  float low = std::numeric_limits<float>::infinity();
  float high = -std::numeric_limits<float>::infinity();

  [[nodiscard]] bool IsEmpty() const { return low > high; }
  void Include(const SampleRange& other) {
    if (other.low < low) low = other.low;
    if (other.high > high) high = other.high;
  }
};

/// Lowest and highest of `count` samples; NaN is skipped, infinities count. Empty when every sample is NaN.
HOST_IMAGE_API SampleRange MeasureRange(const float* samples, std::size_t count);

/// The same over the finite samples only.
HOST_IMAGE_API SampleRange MeasureFiniteRange(const float* samples, std::size_t count);

/// Copies samples past the processor's caches, for results too large to be read back soon, and measures the finite ones
/// on the way. Same bytes as `memcpy`. `ahead`, where given, points to `count` samples that will be read next: they are
/// fetched into the caches meanwhile.
HOST_IMAGE_API SampleRange StreamSamples(const float* from, float* to, std::size_t count, const float* ahead = nullptr);

}  // namespace ScEng
