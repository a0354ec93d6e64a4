// SPDX-License-Identifier: Apache-2.0
//
// What `DrawSoft` searches.
#pragma once

#include <hwy/aligned_allocator.h>

#include <cstddef>
#include <vector>

#include "Host/Image/Image.h"
#include "Value/Nodes/Relief/DiscRings.h"
#include "Value/Nodes/Relief/LargeArray.h"

namespace ReliefBevel {

/// The most pixels of a vector.
inline constexpr int kMostLanes = 16;
/// The coarse table has an entry for each square of so many pixels, and each entry looks so far to the right and down.
inline constexpr int kCoarseStep = 8;
inline constexpr int kCoarseSide = 64;
static_assert(DiscRings::kWidestSector + kMostLanes + kCoarseStep <= kCoarseSide);

/// The numbers that a phase, growing or shrinking, looks for the largest of. Shrinking turns the samples' signs round.
struct Signs {
  /// Of a pixel that makes no difference: outside the image or, where the mask shrinks, NaN.
  float nothing;
  /// What is not above this changes nothing that any pixel has: 0 or, turned round, 1.
  float base;
  /// No number is larger.
  float full;
};
inline constexpr Signs kGrowing = {0.0F, 0.0F, 1.0F};
inline constexpr Signs kShrinking = {-2.0F, -1.0F, 0.0F};

/// The mask with a border all around, in the numbers of a phase.
struct Plane {
  Plane(const Image& mask, bool wrap, int reach, bool is_growing)
      : mask(mask),
        wrap(wrap),
        is_growing(is_growing),
        signs(is_growing ? kGrowing : kShrinking),
        border((reach + DiscRings::kWindow + kMostLanes - 1) / kMostLanes * kMostLanes),
        stride(static_cast<std::size_t>(border) * 2 +
               (static_cast<std::size_t>(mask.GetSizeX()) + kCoarseSide - 1) / kMostLanes * kMostLanes),
        rows(static_cast<std::size_t>(border) * 2 + static_cast<std::size_t>(mask.GetSizeY())),
        coarse_stride(stride / kCoarseStep + 1),
        coarse_rows(rows / kCoarseStep + 1),
        samples(Allocate(stride * rows)),
        windows(Allocate(stride * rows)),
        coarse(Allocate(coarse_stride * coarse_rows)) {}

  static hwy::AlignedFreeUniquePtr<float[]> Allocate(std::size_t count) { return MakeLargeArray(count + kCoarseSide); }

  [[nodiscard]] std::size_t Find(int x, int y) const {
    return static_cast<std::size_t>(y + border) * stride + static_cast<std::size_t>(x + border);
  }

  const Image& mask;
  bool wrap;
  bool is_growing;
  Signs signs;
  /// Columns and rows before the mask's first ones.
  int border;
  std::size_t stride;
  std::size_t rows;
  std::size_t coarse_stride;
  std::size_t coarse_rows;
  hwy::AlignedFreeUniquePtr<float[]> samples;
  /// For each pixel the largest number of the square of `DiscRings::kWindow` pixels whose corner it is.
  hwy::AlignedFreeUniquePtr<float[]> windows;
  /// The same for each square of `kCoarseStep` pixels and `kCoarseSide`.
  hwy::AlignedFreeUniquePtr<float[]> coarse;
};

/// What a phase draws: the levels of radii `from` to `to`.
struct Phase {
  int from;
  int to;
  /// Of radius r it is entry r - from.
  std::vector<float> levels;
};

}  // namespace ReliefBevel
