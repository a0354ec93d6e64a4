// SPDX-License-Identifier: Apache-2.0
//
// The definition of the Clamp node's loops, pixel by pixel, that the fast ones are held against.
#pragma once

#include <cmath>
#include <cstddef>

#include "Value/Core/ValueRange.h"
#include "Value/Nodes/Clamp/Clamp.h"

namespace Clamp::Reference {

inline Limits OpenSide(const Limits& limits, Sides sides, const float* samples, std::size_t stride,
                       std::size_t pixels) {
  if (sides == Sides::kBoth) return limits;
  ValueRange found;
  for (std::size_t i = 0; i < pixels; ++i) found.Include(samples[i * stride]);
  return {sides == Sides::kHigh ? found.low : limits.low, sides == Sides::kLow ? found.high : limits.high};
}

inline float SquareRoot(float x) { return static_cast<float>(std::sqrt(static_cast<double>(x))); }

inline float Rise(float t, Profile profile) {
  switch (profile) {
    case Profile::kLinear: return t;
    case Profile::kSmooth: return (3.0F - 2.0F * t) * (t * t);
    case Profile::kPerlin: return t * 6.0F * t * t * t * t - t * 15.0F * t * t * t + t * 10.0F * t * t;
    case Profile::kArcOut: return SquareRoot(1.0F - (t - 1.0F) * (t - 1.0F));
    case Profile::kArcIn: return 1.0F - SquareRoot(1.0F - t * t);
  }
  return t;
}

inline void Apply(const float* samples, std::size_t stride, float* values, std::size_t pixels, const Limits& limits,
                  Profile profile) {
  const float range = limits.high - limits.low;
  const float inverse = 1.0F / range;
  for (std::size_t i = 0; i < pixels; ++i) {
    const float v = samples[i * stride];
    const float raised = limits.low < v ? v : limits.low;
    const float c = raised < limits.high ? raised : limits.high;
    values[i] = profile != Profile::kLinear ? limits.low + Rise((c - limits.low) * inverse, profile) * range : c;
  }
}

}  // namespace Clamp::Reference
