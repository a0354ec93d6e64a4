// SPDX-License-Identifier: Apache-2.0
#include "Value/Operations/ThresholdValueOperation.h"

namespace ThresholdProfile {

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
