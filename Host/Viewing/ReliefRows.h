// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "Host/Viewing/LevelRows.h"

namespace ScEng {

/// The derivatives of the rows of a level along x and, downwards, along y, per pixel of the image: central differences,
/// as those of `ImageValue::Gradient`. At an edge, and beside a number that is not finite, they are the difference to
/// the one neighbor that there is; without one, 0.
class ReliefRows {
 public:
  enum Plane { kAlongX, kAlongY };

  /// `width` columns of `rows`; a pixel of the level is `distance` pixels of the image wide and high.
  ReliefRows(LevelRows& rows, std::size_t width, double distance)
      : rows_(rows), width_(width), scale_(static_cast<float>(1.0 / distance)) {}

  /// The derivatives of the columns from `low` on.
  const float* Get(int row, Plane plane);

 private:
  struct Row {
    bool is_made = false;
    int row = 0;
    std::vector<float> slopes;
  };

  LevelRows& rows_;
  std::size_t width_;
  float scale_;
  std::array<Row, 2> kept_;
};

}  // namespace ScEng
