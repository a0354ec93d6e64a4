// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <hwy/aligned_allocator.h>

#include <array>
#include <cstddef>

#include "Value/Nodes/Relief/ReliefField.h"

/// What the search of `ReliefLevels::Analysis` looks into.
namespace ReliefLevels {

/// Whether the search makes use of planes: where the bumps are cones, domes or bells. Spikes are ruled out quickly by
/// their height alone.
inline bool HasPlanes(const Field& field) { return !IsFlat(field) && field.profile != ReliefProfile::kArcIn; }

/// A tree of square blocks over the plane of the mask's pixels, each split into 4 x 4 smaller ones.
///
/// The plane is the mask, with a border of its repetitions all around where it tiles. Positions in it are counted from
/// its corner, `pad_x` pixels to the left of and `pad_y` pixels above the mask's. A block's entry is the highest q in
/// it; q is 0 where it says that a pixel raises no other.
struct Tree {
  /// Blocks along the side of a block of the next level.
  static constexpr int kSplit = 4;
  static constexpr int kChildren = kSplit * kSplit;
  /// Level 0 holds pixels, level 3 the largest blocks.
  static constexpr int kTop = 3;
  /// The side of the blocks of a level in pixels.
  static constexpr std::array<int, kTop + 1> kSide = {1, 4, 16, 64};
  /// So many entries may be read behind the last one of a level.
  static constexpr std::size_t kReadAhead = 16;

  /// The most pixels that repetitions may take: 2 GiB of them.
  static constexpr double kMostRepeated = 536870912.0;

  /// For each block of a level a plane above the q of all its bumps: height + slope_x * dx + slope_y * dy at (dx, dy)
  /// from the block's middle.
  struct Planes {
    hwy::AlignedFreeUniquePtr<float[]> height;
    hwy::AlignedFreeUniquePtr<float[]> slope_x;
    hwy::AlignedFreeUniquePtr<float[]> slope_y;
  };

  /// The tree of a field that has candidates. Throws `std::bad_alloc`, also where the repetitions would take more than
  /// `kMostRepeated` pixels.
  explicit Tree(const Field& field);

  int pad_x = 0;
  int pad_y = 0;
  /// Blocks of the top level in a row and a column.
  int columns = 0;
  int rows = 0;
  /// The entries of each level. The top level is in rows; below it the children of block i are entries 16 i to
  /// 16 i + 15, row by row.
  std::array<hwy::AlignedFreeUniquePtr<float[]>, kTop + 1> levels;
  /// The planes of levels 1 and 2 in the order of their blocks; empty unless the field `HasPlanes`.
  std::array<Planes, 2> planes;
};

}  // namespace ReliefLevels
