// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "Host/Viewing/DrawnPlaces.h"
#include "Host/Viewing/RowBlend.h"

namespace ScEng {

/// Lines of equal value, one drawn pixel wide whatever the zoom. Values run evenly between the centers of pixels; a
/// drawn pixel is as dark as it is near to a line, by its value and the derivatives there. Every fifth line is
/// stronger. Flat ground has no line, and where lines are closer than they are wide they thin out.
class ContourLines {
 public:
  /// `level_step` is the distance of drawn pixels in pixels of the level.
  ContourLines(double step, double level_step) : step_(step), level_step_(level_step) {}

  void DrawRow(const RowPair& rows, const DrawnPlaces& columns, std::uint32_t* pixels) const;

 private:
  double step_;
  double level_step_;
};

}  // namespace ScEng
