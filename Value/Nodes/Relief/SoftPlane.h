// SPDX-License-Identifier: Apache-2.0
//
// What `DrawSoft` searches.
#pragma once

#include <hwy/aligned_allocator.h>

#include <cstddef>
#include <memory>
#include <vector>

#include "Host/Image/Image.h"
#include "Value/Nodes/Relief/DiscRings.h"

namespace ReliefBevel {

/// The most pixels of a vector.
inline constexpr int kMostLanes = 16;
/// Pixels are searched for in tiles of so many columns and rows, which hold groups of so many rows one below the other.
inline constexpr int kTileColumns = 128;
inline constexpr int kGroupRows = 8;
inline constexpr int kTileRows = 2 * kGroupRows;
/// The side of the squares of which a table has the largest number of each; tiles begin where squares do.
inline constexpr int kCell = DiscRings::kCell;
/// A second table has the largest number of so many columns and rows from the corner of each such square on: whatever a
/// window covers as seen from the pixels of a group, wherever in the square the window of the first one begins.
inline constexpr int kReachColumns = DiscRings::kWindow + kMostLanes + kCell;
inline constexpr int kReachRows = DiscRings::kWindow + kGroupRows + kCell;

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

/// Unset numbers, aligned for vectors, in the memory of an image where one may be so large: the host keeps that for the
/// next one, while the system first clears fresh memory, which takes a good part of a bevel's time.
class PlaneNumbers {
 public:
  /// Throws `std::bad_alloc`.
  explicit PlaneNumbers(std::size_t count);

  [[nodiscard]] float* get() const { return numbers_; }

 private:
  std::unique_ptr<Image> image_;
  hwy::AlignedFreeUniquePtr<float[]> memory_;
  float* numbers_;
};

/// The mask with a border all around, in the numbers of a phase.
struct Plane {
  /// The mask must outlive the plane. `reach` is the largest offset that is looked at.
  Plane(const Image& of_mask, bool does_wrap, int reach, bool does_grow);

  [[nodiscard]] std::size_t Find(int x, int y) const {
    return static_cast<std::size_t>(y + border) * stride + static_cast<std::size_t>(x + border);
  }

  /// The cell that holds the corner of a tile.
  [[nodiscard]] std::size_t FindCell(int x, int y) const {
    return static_cast<std::size_t>(y + border) / kCell * (stride / kCell) +
           static_cast<std::size_t>(x + border) / kCell;
  }

  const Image& mask;
  bool wrap;
  bool is_growing;
  Signs signs;
  /// Columns and rows before the mask's first ones.
  int border;
  std::size_t stride;
  std::size_t rows;
  PlaneNumbers samples;
  /// For each pixel the largest number of the square of `DiscRings::kWindow` pixels whose corner it is.
  PlaneNumbers windows;
  /// The largest number of each square of `kCell` pixels, side by side.
  std::vector<float> cells;
  /// The largest number of each rectangle of `kReachColumns` and `kReachRows` whose corner is that of a cell.
  std::vector<float> reaches;

 private:
  /// The plane's length along a side of the mask: whole tiles, and a border on both ends.
  [[nodiscard]] std::size_t GetLength(int size, int tile) const;
};

/// The cells around a tile by the belts of the rings in which the tile's pixels may meet them first: steps through
/// `Plane::cells` from the one at the tile's corner.
class CellRings {
 public:
  /// `stride` is the number of cells in a row.
  CellRings(int radius, std::size_t stride);

  /// The largest number of the cells of a belt around the tile whose corner is cell `at`.
  [[nodiscard]] float FindLargest(const Plane& plane, int belt, std::size_t at) const;

 private:
  std::vector<std::vector<std::ptrdiff_t>> belts_;
};

/// What a phase draws: the levels of radii `from` to `to`.
struct Phase {
  int from;
  int to;
  /// Of radius r it is entry r - from.
  std::vector<float> levels;

  [[nodiscard]] float GetLevel(int radius) const { return levels[static_cast<std::size_t>(radius - from)]; }
};

}  // namespace ReliefBevel
