// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vector>

#include "Host/Viewing/DrawnPlaces.h"

namespace ScEng {

/// Two rows of a level, from the first column that is drawn on, and how far from the first to the second one is drawn.
struct RowPair {
  const float* top = nullptr;
  const float* bottom = nullptr;
  float weight = 0.0F;
};

/// The numbers under the drawn columns. Of numbers that are not finite the nearest one counts alone, and where the
/// nearest is finite only finite ones are blended, so that what is not finite keeps its extent. `scratch` is for reuse.
void BlendRow(const RowPair& rows, const DrawnPlaces& columns, bool blends, std::vector<float>& scratch, float* to);

}  // namespace ScEng
