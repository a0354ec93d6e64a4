// SPDX-License-Identifier: Apache-2.0
//
// The definition of the Clamp node's loops, pixel by pixel, that the fast ones are held against.
#pragma once

#include <cmath>
#include <cstddef>

#include "Value/Core/ValueRange.h"
#include "Value/Nodes/Clamp/Clamp.h"

namespace Clamp::Reference {

inline Limits OpenSide(const Limits& limits, int sides, const float* samples, std::size_t stride, std::size_t pixels) {
  if (sides == 0) return limits;
  ValueRange found;
  for (std::size_t i = 0; i < pixels; ++i) found.Include(samples[i * stride]);
  return {sides == 2 ? found.low : limits.low, sides == 1 ? found.high : limits.high};
}

inline float SquareRoot(float x) { return static_cast<float>(std::sqrt(static_cast<double>(x))); }

inline float Rise(float t, int profile) {
  switch (profile) {
    case 1: return (3.0F - 2.0F * t) * (t * t);
    case 2: return t * 6.0F * t * t * t * t - t * 15.0F * t * t * t + t * 10.0F * t * t;
    case 3: return SquareRoot(1.0F - (t - 1.0F) * (t - 1.0F));
    default: return 1.0F - SquareRoot(1.0F - t * t);
  }
}

inline void Apply(const float* samples, std::size_t stride, float* values, std::size_t pixels, const Limits& limits,
                  int profile) {
  const float range = limits.high - limits.low;
  const float inverse = 1.0F / range;
  for (std::size_t i = 0; i < pixels; ++i) {
    const float v = samples[i * stride];
    const float raised = limits.low < v ? v : limits.low;
    const float c = raised < limits.high ? raised : limits.high;
    const bool shaped = profile >= 1 && profile <= 4;
    values[i] = shaped ? limits.low + Rise((c - limits.low) * inverse, profile) * range : c;
  }
}

}  // namespace Clamp::Reference
