// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/Clamp.h"

#include <cmath>

#include "Host/Math/Constants.h"

namespace Clamp {
namespace {

float SquareRoot(float x) { return static_cast<float>(std::sqrt(static_cast<double>(x))); }

/// Runs `curve(t, c)` over the limited values c, where t is c's place between the limits.
template <class Curve>
void ApplyCurve(const float* samples, std::size_t stride, float* values, std::size_t pixels, const Limits& limits,
                Curve curve) {
  const float low = limits.low;
  const float high = limits.high;
  const float inverse = 1.0F / (high - low);
  for (std::size_t i = 0; i < pixels; ++i) {
    const float v = samples[i * stride];
    const float raised = low < v ? v : low;
    const float c = raised < high ? raised : high;
    values[i] = curve((c - low) * inverse, c);
  }
}

}  // namespace

Limits OpenSide(const Limits& limits, int sides, const float* samples, std::size_t stride, std::size_t pixels) {
  constexpr int kBoth = 0;
  constexpr int kLow = 1;
  constexpr int kHigh = 2;
  if (sides == kBoth) return limits;
  Limits found{ScEng::Math<float>::MAX_REAL, ScEng::Math<float>::MIN_REAL};
  for (std::size_t i = 0; i < pixels; ++i) {
    const float v = samples[i * stride];
    if (v < found.low) found.low = v;
    if (v > found.high) found.high = v;
  }
  return {sides == kHigh ? found.low : limits.low, sides == kLow ? found.high : limits.high};
}

void Apply(const float* samples, std::size_t stride, float* values, std::size_t pixels, const Limits& limits,
           int profile) {
  const float low = limits.low;
  const float range = limits.high - limits.low;
  switch (profile) {
    case 1:
      ApplyCurve(samples, stride, values, pixels, limits,
                 [=](float t, float) { return low + ((3.0F - 2.0F * t) * (t * t)) * range; });
      break;
    case 2:
      ApplyCurve(samples, stride, values, pixels, limits, [=](float t, float) {
        return low + (t * 6.0F * t * t * t * t - t * 15.0F * t * t * t + t * 10.0F * t * t) * range;
      });
      break;
    case 3:
      ApplyCurve(samples, stride, values, pixels, limits,
                 [=](float t, float) { return low + SquareRoot(1.0F - (t - 1.0F) * (t - 1.0F)) * range; });
      break;
    case 4:
      ApplyCurve(samples, stride, values, pixels, limits,
                 [=](float t, float) { return low + (1.0F - SquareRoot(1.0F - t * t)) * range; });
      break;
    default: ApplyCurve(samples, stride, values, pixels, limits, [](float, float c) { return c; }); break;
  }
}

}  // namespace Clamp
