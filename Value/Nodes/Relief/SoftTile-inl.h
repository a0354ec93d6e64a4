// SPDX-License-Identifier: Apache-2.0
//
// What the pixels of a tile have found, ring by ring, and what they leave to the tiles beside it.
//
// Included once per instruction set, between HWY_BEFORE_NAMESPACE and HWY_AFTER_NAMESPACE of the source that uses it;
// see Highway's quick reference on `foreach_target.h`.

#if defined(VALUE_NODES_RELIEF_SOFT_TILE_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef VALUE_NODES_RELIEF_SOFT_TILE_INL_H_
#undef VALUE_NODES_RELIEF_SOFT_TILE_INL_H_
#else
#define VALUE_NODES_RELIEF_SOFT_TILE_INL_H_
#endif

#include <hwy/highway.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>
#include <vector>

#include "Value/Nodes/Relief/SoftPlane.h"
#include "Value/Nodes/Relief/SoftWorkspace.h"

HWY_BEFORE_NAMESPACE();
namespace ReliefBevel::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

using D = hn::CappedTag<float, kMostLanes>;
using V = hn::Vec<D>;
/// A group is a vector of pixels in each of its rows.
using Group = std::array<V, kGroupRows>;

/// What the pixels of one tile after the other have found: the largest numbers so far, and those within each radius.
class Tile {
 public:
  /// The groups of the tile, row by row.
  [[nodiscard]] std::size_t GetGroups() const { return groups_; }

  /// Where a group begins in the tile.
  struct Place {
    std::size_t x;
    std::size_t y;
  };
  [[nodiscard]] const Place& GetPlace(std::size_t group) const { return kept_[group].place; }

  /// What a group has found within each radius.
  [[nodiscard]] History GetHistory(std::size_t group) const {
    return {kept_[group].history.begin, kept_[group].history.count, GetFound(group, 0)};
  }

 protected:
  /// Radii up to `radius`, in so many rows of tiles.
  Tile(const Plane& plane, int radius, std::size_t rows, Workspace& workspace)
      : plane_(plane), radius_(radius), workspace_(workspace) {
    kept_.resize(kTileColumns / hn::Lanes(D()) * kRowsOfGroups);
    workspace_.before.resize(std::max(workspace_.before.size(), rows * kRowsOfGroups));
  }

  /// Of a tile's numbers with room for a neighbour on each side.
  static constexpr std::size_t kStride = Workspace::kStride;
  static constexpr std::size_t kStart = kStride + kMostLanes;
  static constexpr std::size_t kRowsOfGroups = kTileRows / kGroupRows;

  struct Kept {
    Place place;
    /// Where its numbers begin among those of a tile, and its samples in the plane.
    std::size_t numbers = 0;
    std::size_t samples = 0;
    /// None is kept while all pixels are at the base.
    Workspace::Radii history;
    bool is_at_base = false;
    /// Whether no pixel can find more.
    bool is_full = false;
  };

  void SetPlace(std::size_t group) {
    const Place place = {group % columns_ * hn::Lanes(D()), group / columns_ * kGroupRows};
    Kept& kept = kept_[group];
    kept.place = place;
    kept.numbers = kStart + place.y * kStride + place.x;
    kept.samples = at_ + place.y * plane_.stride + place.x;
  }

  [[nodiscard]] Group Load(std::size_t group) const { return LoadFrom(workspace_.numbers[0].get(), group); }

  /// From the numbers of the next ring.
  [[nodiscard]] Group LoadNext(std::size_t group) const { return LoadFrom(workspace_.numbers[1].get(), group); }

  [[nodiscard]] Group LoadFrom(const float* numbers, std::size_t group) const {
    const float* from = numbers + kept_[group].numbers;
    Group best;
    for (std::size_t row = 0; row < kGroupRows; ++row) best[row] = hn::Load(D(), from + row * kStride);
    return best;
  }

  /// Into the numbers of the next ring.
  void Store(const Group& best, std::size_t group) {
    float* to = workspace_.numbers[1].get() + kept_[group].numbers;
    for (std::size_t row = 0; row < kGroupRows; ++row) hn::Store(best[row], D(), to + row * kStride);
  }

  /// Begins with the tile whose corner is pixel (x, y), in a row of tiles that is counted from 0: the numbers at radius
  /// 0.
  void Begin(int x, int y, std::size_t row_of_tiles) {
    const D d;
    const std::size_t lanes = hn::Lanes(d);
    const V base = hn::Set(d, plane_.signs.base);
    const int columns = std::min(plane_.mask.GetSizeX() - x, kTileColumns);
    columns_ = (static_cast<std::size_t>(columns) + lanes - 1) / lanes;
    groups_ = columns_ * kRowsOfGroups;
    at_ = plane_.Find(x, y);
    has_above_ = row_of_tiles > 0;
    has_before_ = x > 0;
    before_ = &workspace_.before[row_of_tiles * kRowsOfGroups];
    last_known_before_ = has_before_ ? before_->radii.last_known : -1;
    last_known_ = radius_;
    for (std::size_t group = 0; group < groups_; ++group) {
      SetPlace(group);
      Group best;
      const float* from = plane_.samples.get() + kept_[group].samples;
      bool is_at_base = true;
      for (std::size_t row = 0; row < kGroupRows; ++row) {
        best[row] = hn::LoadU(d, from + row * plane_.stride);
        is_at_base = is_at_base && hn::AllTrue(d, hn::Eq(best[row], base));
      }
      Kept& state = kept_[group];
      state.history = {is_at_base ? radius_ : 0, 0, 0};
      state.is_at_base = is_at_base;
      state.is_full = IsFull(best);
      Store(best, group);
      if (!is_at_base) Keep(best, group);
    }
    std::swap(workspace_.numbers[0], workspace_.numbers[1]);
    // Beside and above there may be what other tiles have left.
    for (auto& numbers : workspace_.numbers) {
      for (std::size_t row = 0; row < kTileRows; ++row) {
        float* at = numbers.get() + kStart + row * kStride;
        at[-1] = plane_.signs.nothing;
        at[columns_ * lanes] = plane_.signs.nothing;
      }
      std::fill_n(numbers.get(), kStride, plane_.signs.nothing);
      std::fill_n(numbers.get() + kStride * (kTileRows + 1), kStride, plane_.signs.nothing);
    }
  }

  /// Puts what the tiles above and before have found within a radius beside the numbers of this one.
  void PlaceEdges(int radius) {
    const D d;
    const std::size_t lanes = hn::Lanes(d);
    float* to = workspace_.numbers[0].get() + kStart;
    if (has_above_) {
      for (std::size_t column = 0; column < columns_; ++column) {
        const std::size_t entry = workspace_.above[column].GetEntry(radius);
        hn::Store(hn::Load(d, GetAbove(column) + entry * lanes), d, to - kStride + column * lanes);
      }
    }
    if (has_before_) {
      for (std::size_t i = 0; i < kRowsOfGroups; ++i) {
        const float* from = before_[i].numbers.data() + before_[i].radii.GetEntry(radius) * kGroupRows;
        for (std::size_t row = 0; row < kGroupRows; ++row) *(to + (i * kGroupRows + row) * kStride - 1) = from[row];
      }
    }
  }

  /// Keeps the lowest row and the last column for the tiles below and behind.
  void KeepEdges() {
    const D d;
    const std::size_t lanes = hn::Lanes(d);
    for (std::size_t group = 0; group < groups_; ++group) {
      Workspace::Radii& radii = kept_[group].history;
      radii.last_known = last_known_;
      const auto count = static_cast<std::size_t>(radii.count);
      const std::size_t column = group % columns_;
      if (group + columns_ >= groups_) {
        workspace_.above[column] = radii;
        const float* lowest = GetFound(group, 0) + (kGroupRows - 1) * lanes;
        for (std::size_t i = 0; i < count; ++i) {
          hn::Store(hn::Load(d, lowest + i * kGroupRows * lanes), d, GetAbove(column) + i * lanes);
        }
      }
      if (column + 1 < columns_) continue;
      Workspace::Edge& edge = before_[group / columns_];
      edge.radii = radii;
      edge.numbers.resize(count * kGroupRows);
      const float* last = GetFound(group, 0) + lanes - 1;
      for (std::size_t i = 0; i < count * kGroupRows; ++i) edge.numbers[i] = last[i * lanes];
    }
  }

  [[nodiscard]] bool IsFull(const Group& best) const {
    return hn::AllTrue(D(), hn::Ge(FindLeast(best), hn::Set(D(), plane_.signs.full)));
  }

  static V FindLeast(const Group& best) {
    V least = best[0];
    for (const V& row : best) least = hn::Min(least, row);
    return least;
  }

  void Keep(const Group& best, std::size_t group) {
    float* to = GetFound(group, kept_[group].history.count++);
    for (std::size_t row = 0; row < kGroupRows; ++row) hn::Store(best[row], D(), to + row * hn::Lanes(D()));
  }

  [[nodiscard]] float* GetFound(std::size_t group, int entry) const {
    const std::size_t entries = group * static_cast<std::size_t>(radius_ + 1) + static_cast<std::size_t>(entry);
    return workspace_.found.get() + entries * kGroupRows * hn::Lanes(D());
  }

  [[nodiscard]] float* GetAbove(std::size_t column) const {
    return workspace_.lowest.get() + column * static_cast<std::size_t>(radius_ + 1) * hn::Lanes(D());
  }

  const Plane& plane_;
  int radius_;
  Workspace& workspace_;
  /// The corner of the tile in the plane, and its groups, in all and in a row.
  std::size_t at_ = 0;
  std::size_t groups_ = 0;
  std::size_t columns_ = 1;
  std::vector<Kept> kept_;
  /// Whether the tiles above and before have left something, and up to which radius the latter has.
  bool has_above_ = false;
  bool has_before_ = false;
  int last_known_before_ = 0;
  /// One for each row of groups.
  Workspace::Edge* before_ = nullptr;
  /// Up to which radius the search went on.
  int last_known_ = 0;
};
}  // namespace ReliefBevel::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
