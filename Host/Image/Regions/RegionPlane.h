// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <vector>

namespace ScEng {

/// Whether the largest or the smallest sample wins.
enum class Extreme { kLargest, kSmallest };

/// One channel of a box of an image.
struct RegionPlane {
  /// Sample (0, 0) of the box.
  float* samples = nullptr;
  int width = 0;
  int height = 0;
  /// From one pixel to the next, and from one row to the next, in samples.
  std::ptrdiff_t pixel_stride = 1;
  std::ptrdiff_t row_stride = 0;

  [[nodiscard]] float* Row(int y) const { return samples + y * row_stride; }
};

/// What an operation does at each pixel: entry j of `chords` is the half width of rows j and -j of the shape, at most
/// the entry before and, for a plane that wraps, at most half the plane's width.
struct RegionStep {
  std::vector<int> chords;
  bool wrap = false;
  Extreme extreme = Extreme::kLargest;
};

/// Of any plane, by the sample (`RegionGray.cpp`).
void ReplaceGray(const RegionPlane& plane, const RegionStep& step);

/// Of a plane that holds no other samples than `winner` and `loser`, where the first wins over the second
/// (`RegionMask.cpp`).
void ReplaceMask(const RegionPlane& plane, const RegionStep& step, float winner, float loser);

}  // namespace ScEng
