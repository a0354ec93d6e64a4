// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cmath>

#include "Host/Image/ValueOperation.h"
#include "Value/Operations/OneValueForms.h"

/// The shapes of a soft band: t is 1 at its inner and 0 at its outer edge, and so is the result. A square root in
/// single precision is the one in double precision, narrowed: the double has more than twice the digits, so rounding
/// twice changes nothing.
namespace ThresholdProfile {
using Function = float (*)(float t);

inline float Linear(float t) { return t; }
/// The quintic 6t^5 - 15t^4 + 10t^3.
inline float Smooth(float t) { return t * t * t * (t * (t * 6.0F - 15.0F) + 10.0F); }
inline float ArcOut(float t) { return std::sqrt(1.0F - (t - 1.0F) * (t - 1.0F)); }
inline float ArcIn(float t) { return 1.0F - std::sqrt(1.0F - t * t); }

/// By its place in the list "linear,smooth,arc_out,arc_in"; any other index is linear.
Function Get(int index);
}  // namespace ThresholdProfile

/// 1.0 within `b` of the centre `a`, falling to 0.0 over `falloff` along the profile, 0.0 beyond. Without a falloff the
/// edge is hard. NaN gives 0.0. The two-value form ignores the second value.
class ThresholdValueOperation : public ValueOperation {
 public:
  ThresholdValueOperation(float center, float inner, float band, ThresholdProfile::Function shape);
  ONE_VALUE_FORMS(ComputeWith(value, profile))
  /// The same with a shape that the compiler knows.
  template <class Shape>
  float ComputeWith(float value, Shape shape) const {
    const float distance = std::fabs(value - a);
    // Computed in any case, so that a loop over this has no branch.
    const float soft = shape(1.0F - (distance - b) * inverse_falloff);
    return b > distance ? 1.0F : (outer > distance ? soft : 0.0F);
  }

  float falloff;
  /// `b` + `falloff`, and 1 / `falloff` (infinite for 0): kept so that no sample needs a division.
  float outer;
  float inverse_falloff;
  ThresholdProfile::Function profile;
};
