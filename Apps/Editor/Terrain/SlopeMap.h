// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "Apps/Editor/Terrain/HeightField.h"

/// The slopes of a whole surface in a picture that the graphics processor reads, so that a coarse mesh shows as much
/// relief as a fine one.
///
/// A slope s, as height in space without exaggeration per way in space, is held as s / (1 + |s|), which is -1 to 1, in
/// the bytes 0 to 254. Bytes hold the slopes along x and y, 0, and 255.
struct SlopeMap {
  /// No side is longer.
  static constexpr int kMostPixels = 2048;

  /// The level of the image that it is made from.
  int level = 0;
  int size_x = 0;
  int size_y = 0;
  std::vector<std::array<std::uint8_t, 4>> pixels;
};

/// Uses the threads of the host.
SlopeMap MakeSlopeMap(const HeightField& field);

/// How height changes from one place to another by way of a middle one, which stands for each of them that is NaN.
float FindSlope(const std::array<float, 3>& heights, const std::array<double, 3>& places);
