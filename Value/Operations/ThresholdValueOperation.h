// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Host/Image/ValueOperation.h"

/// The shapes of a soft band: t is 1 at its inner and 0 at its outer edge, and so is the result.
namespace ThresholdProfile {
using Function = float (*)(float t);

float Linear(float t);
/// The quintic 6t^5 - 15t^4 + 10t^3.
float Smooth(float t);
float ArcOut(float t);
float ArcIn(float t);

/// By its place in the list "linear,smooth,arc_out,arc_in"; any other index is linear.
Function Get(int index);
}  // namespace ThresholdProfile

/// 1.0 within `b` of the centre `a`, falling to 0.0 over `falloff` along the profile, 0.0 beyond. Without a falloff the
/// edge is hard. NaN gives 0.0. The two-value form ignores the second value.
class ThresholdValueOperation : public ValueOperation {
 public:
  ThresholdValueOperation(float center, float inner, float band, ThresholdProfile::Function shape);
  float Compute(float first, float) override { return Compute(first); }
  float Compute(float value) override;

  float falloff;
  /// `b` + `falloff`, and 1 / `falloff` (infinite for 0): kept so that no sample needs a division.
  float outer;
  float inverse_falloff;
  ThresholdProfile::Function profile;
};
