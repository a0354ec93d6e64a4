// SPDX-License-Identifier: Apache-2.0
//
// The definition of the Steps node's loop, pixel by pixel, that the fast one is held against.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>

namespace Steps::Reference {

inline void Quantize(const float* samples, std::size_t stride, float* values, std::size_t pixels, std::int32_t count,
                     float low, float high) {
  const float level = 1.0F / static_cast<float>(count - 1);
  const float span = high - low;
  const float inverse = 1.0F / span;
  for (std::size_t i = 0; i < pixels; ++i) {
    const float t = (samples[i * stride] - low) * inverse;
    const double k = std::floor(static_cast<double>(t * static_cast<float>(count)));
    values[i] = static_cast<float>(k) * (span * level) + low;
  }
}

}  // namespace Steps::Reference
