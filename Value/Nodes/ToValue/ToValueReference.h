// SPDX-License-Identifier: Apache-2.0
//
// The definition of the To Value node's loops in two passes, pixel by pixel, that the fast ones are held against.
#pragma once

#include <cstddef>

#include "Host/Image/Image.h"
#include "Value/Core/ValueRange.h"

namespace ToValue::Reference {

inline bool IsKnown(unsigned color_mode) {
  return color_mode == ColorMode::kColor || color_mode == ColorMode::kSigned || color_mode == ColorMode::kValue;
}

/// Writes the value of each pixel and returns their range. Of a mode that is not known nothing is written.
inline ValueRange Reduce(const float* samples, unsigned color_mode, float* values, std::size_t pixels) {
  ValueRange range;
  if (!IsKnown(color_mode)) return range;
  const auto channels = static_cast<std::size_t>(ColorMode::GetNumChannels(color_mode));
  for (std::size_t i = 0; i < pixels; ++i) {
    const float* pixel = samples + i * channels;
    float value = pixel[0];
    if (color_mode == ColorMode::kSigned) value = pixel[2];
    if (color_mode == ColorMode::kColor) {
      value = ((pixel[3] * pixel[1] + pixel[3] * pixel[0]) + pixel[3] * pixel[2]) * 0.33333334F;
    }
    values[i] = value;
    range.Include(value);
  }
  return range;
}

inline void Remap(float* values, std::size_t count, const ValueRange& source, float low, float high) {
  const float scale = 1.0F / (source.high - source.low);
  const float span = high - low;
  for (std::size_t i = 0; i < count; ++i) values[i] = (values[i] - source.low) * scale * span + low;
}

}  // namespace ToValue::Reference
