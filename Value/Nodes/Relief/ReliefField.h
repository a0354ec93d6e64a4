// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cmath>

#include "Value/Nodes/Relief/ReliefChoices.h"

namespace ReliefLevels {

/// What a relief is made from. The samples are not owned; they must outlive whatever works on them.
struct Field {
  const float* mask = nullptr;   ///< `width` times `height` samples, rows dense.
  const float* grown = nullptr;  ///< The same size; pixels that are not above 0 here become 0.
  int width = 0;
  int height = 0;
  bool wrap = false;  ///< Whether the mask tiles; otherwise it ends at its border.
  int radius_px = 0;  ///< Of the bump of a pixel as high as `high`; no pixel raises one where it is not positive.
  ReliefProfile profile = ReliefProfile::kLinear;
  float low = 0.0F;   ///< The value whose bump has height and radius 0.
  float high = 1.0F;  ///< Pixels from this value up keep their value.
};

/// Whether any candidate can win. None is a number where an end of the range, or its length, is infinite, NaN or zero.
inline bool HasCandidates(const Field& field) {
  const float range = field.high - field.low;
  return field.width > 0 && field.height > 0 && field.radius_px > 0 && std::isfinite(field.low) &&
         std::isfinite(field.high) && std::isfinite(range) && range != 0.0F;
}

/// Whether every candidate that wins has its full height, whatever its distance: t is 0 for each, since q is negative
/// where the range is reversed, and infinite where it is too short to have a reciprocal.
inline bool IsFlat(const Field& field) {
  const float range = field.high - field.low;
  return range < 0.0F || std::isinf(1.0F / range);
}

}  // namespace ReliefLevels
