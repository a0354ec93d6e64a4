// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vector>

namespace ScEng {

/// Where a drawn column (or row) looks in a level: between two of its columns, `weight` of the way to the second.
/// Columns count on beyond the edges where the image repeats.
struct DrawnPlace {
  int first = 0;
  int second = 0;
  float weight = 0.0F;
};

/// How a side of an image is seen.
struct DrawnSide {
  /// Of the image and of the level, in their pixels.
  int size = 0;
  int level_size = 0;
  int level = 0;
  /// Place of the first drawn entry in the image, drawn pixels per pixel, number of drawn pixels.
  double start = 0.0;
  double zoom = 1.0;
  int count = 0;
  /// Three times instead of once.
  bool repeats = false;
  /// Between the centers of pixels instead of one pixel each.
  bool blends = false;
};

/// The drawn columns (or rows) that lie in the image.
struct DrawnPlaces {
  explicit DrawnPlaces(const DrawnSide& side);

  [[nodiscard]] bool IsEmpty() const { return places.empty(); }
  [[nodiscard]] int GetEnd() const { return begin + static_cast<int>(places.size()); }

  /// The first of them. The others follow without a gap.
  int begin = 0;
  std::vector<DrawnPlace> places;
  /// The columns of the level that they look at: from `low` to before `high`.
  int low = 0;
  int high = 0;
};

}  // namespace ScEng
