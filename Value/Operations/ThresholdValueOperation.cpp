// SPDX-License-Identifier: Apache-2.0
#include "Value/Operations/ThresholdValueOperation.h"

#include <cmath>

namespace {

float SquareRoot(float x) { return static_cast<float>(std::sqrt(static_cast<double>(x))); }

}  // namespace

namespace ThresholdProfile {

float Linear(float t) { return t; }

float Smooth(float t) { return t * t * t * (t * (t * 6.0F - 15.0F) + 10.0F); }

float ArcOut(float t) { return SquareRoot(1.0F - (t - 1.0F) * (t - 1.0F)); }

float ArcIn(float t) { return 1.0F - SquareRoot(1.0F - t * t); }

Function Get(int index) {
  switch (index) {
    case 1: return Smooth;
    case 2: return ArcOut;
    case 3: return ArcIn;
    default: return Linear;
  }
}

}  // namespace ThresholdProfile

ThresholdValueOperation::ThresholdValueOperation(float center, float inner, float band,
                                                 ThresholdProfile::Function shape)
    : falloff(band), outer(inner + band), inverse_falloff(1.0F / band), profile(shape) {
  a = center;
  b = inner;
}

float ThresholdValueOperation::Compute(float value) {
  const float distance = std::fabs(value - a);
  if (b > distance) return 1.0F;
  if (outer > distance) return profile(1.0F - (distance - b) * inverse_falloff);
  return 0.0F;
}
