// SPDX-License-Identifier: Apache-2.0
//
// The search: the pixels of a tile look for the largest samples around them, ring by ring.
//
// Included once per instruction set, between HWY_BEFORE_NAMESPACE and HWY_AFTER_NAMESPACE of the source that uses it;
// see Highway's quick reference on `foreach_target.h`.

#if defined(VALUE_NODES_RELIEF_SOFT_SEARCH_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef VALUE_NODES_RELIEF_SOFT_SEARCH_INL_H_
#undef VALUE_NODES_RELIEF_SOFT_SEARCH_INL_H_
#else
#define VALUE_NODES_RELIEF_SOFT_SEARCH_INL_H_
#endif

#include <hwy/highway.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "Value/Nodes/Relief/DiscRings.h"
#include "Value/Nodes/Relief/SoftPlane.h"
#include "Value/Nodes/Relief/SoftTile-inl.h"
#include "Value/Nodes/Relief/SoftWorkspace.h"

HWY_BEFORE_NAMESPACE();
namespace ReliefBevel::HWY_NAMESPACE {

/// Searches around the pixels of one tile after the other, all of them ring by ring.
class Search : public Tile {
  using ShortD = hn::CappedTag<float, 4>;

 public:
  /// Of the radii of a phase, for so many rows of tiles.
  Search(const Plane& plane, const DiscRings& discs, const CellRings& cells, const Phase& phase, std::size_t rows,
         Workspace& workspace)
      : Tile(plane, phase.to, rows, workspace),
        discs_(discs),
        cells_(cells),
        from_(phase.from),
        states_(kept_.size()) {}

  /// Searches around the pixels of the tile whose corner is pixel (x, y), in a row of tiles that is counted from 0.
  /// Columns of tiles are searched from the top down and from left to right.
  ///
  /// When the rings of a group leave next to nothing of what was there before, `is_settled(group)` says whether what is
  /// known of it is enough. The search ends where that is so for all groups.
  template <class IsSettled>
  void Look(int x, int y, std::size_t row_of_tiles, const IsSettled& is_settled) {
    Begin(x, y, row_of_tiles);
    cell_ = plane_.FindCell(x, y);
    for (State& state : states_) state.is_settled = false;
    for (State& state : states_) state.asked = 0;
    std::fill_n(workspace_.rest.get(), kTileRows * kTileColumns, 1.0F);
    LookAtBelts(is_settled);
    KeepEdges();
  }

 private:
  /// Less than the last bit of anything that the levels are drawn over, but for what is smaller than most levels are.
  static constexpr float kNextToNothing = 0x1p-34F;

  struct Sectors {
    std::uint32_t begin;
    std::uint32_t end;
  };

  struct State {
    /// Whether it does not matter what its pixels find later, and how many radii have been asked so far.
    bool is_settled = false;
    int asked = 0;
    /// The sectors of a belt that may hold more, in runs.
    std::vector<Sectors> runs;
  };

  /// Finds the largest numbers within each radius, for each group from where it leaves the base.
  template <class IsSettled>
  void LookAtBelts(const IsSettled& is_settled) {
    float largest = plane_.signs.nothing;
    for (int first = 1; first <= radius_; first += DiscRings::kBelt) {
      const int belt = DiscRings::GetBelt(first);
      const int last = std::min(first + DiscRings::kBelt - 1, radius_);
      largest = std::max(largest, cells_.FindLargest(plane_, belt, cell_));
      bool is_done = true;
      bool is_idle = true;
      for (std::size_t group = 0; group < groups_; ++group) {
        is_idle = BeginBelt(belt, group, largest, last - first + 1) && is_idle;
        if (plane_.is_growing) Settle(group, is_settled);
        is_done = is_done && (kept_[group].is_full || states_[group].is_settled);
      }
      if (is_done) {
        const bool is_full = std::all_of(kept_.begin(), kept_.begin() + static_cast<std::ptrdiff_t>(groups_),
                                         [](const Kept& kept) { return kept.is_full; });
        if (!is_full) last_known_ = first - 1;
        break;
      }
      if (is_idle) continue;
      for (int ring = first; ring <= last; ++ring) {
        PlaceEdges(ring - 1);
        for (std::size_t group = 0; group < groups_; ++group) {
          if (states_[group].runs.empty()) continue;
          if (kept_[group].is_full) {
            Store(Load(group), group);
            continue;
          }
          LookAtRing(belt, ring, group);
        }
        std::swap(workspace_.numbers[0], workspace_.numbers[1]);
      }
    }
    for (std::size_t group = 0; group < groups_; ++group) {
      if (kept_[group].is_at_base) Keep(Load(group), group);
    }
  }

  [[nodiscard]] float* GetRest(std::size_t group) const {
    return workspace_.rest.get() + group * kGroupRows * hn::Lanes(D());
  }

  /// Asks whether a group is settled, where that is likely.
  template <class IsSettled>
  void Settle(std::size_t group, const IsSettled& is_settled) {
    const D d;
    const std::size_t lanes = hn::Lanes(d);
    State& state = states_[group];
    if (state.is_settled || kept_[group].is_full) return;
    const V one = hn::Set(d, 1.0F);
    float* rest = GetRest(group);
    V most = hn::Zero(d);
    const int count = kept_[group].history.count;
    const int first = std::max(state.asked, from_ - kept_[group].history.begin);
    for (std::size_t row = 0; row < kGroupRows; ++row) {
      V left = hn::Load(d, rest + row * lanes);
      for (int i = first; i < count; ++i) {
        left = hn::Mul(left, hn::Sub(one, hn::Load(d, GetFound(group, i) + row * lanes)));
      }
      hn::Store(left, d, rest + row * lanes);
      most = hn::Max(most, left);
    }
    state.asked = count;
    if (hn::GetLane(hn::MaxOfLanes(d, most)) < kNextToNothing) state.is_settled = is_settled(group);
  }

  /// Finds which sectors of a belt may hold more for a group; says whether none does. `largest` is no less than
  /// anything in the belt, or before it.
  bool BeginBelt(int belt, std::size_t group, float largest, int rings) {
    const D d;
    std::vector<Sectors>& runs = states_[group].runs;
    Kept& kept = kept_[group];
    runs.clear();
    const Group best = Load(group);
    // In the rings to come the group does not change, or is drawn from both tables in turns.
    Store(best, group);
    if (kept.is_full) return true;
    const V least = FindLeast(best);
    if (largest > hn::GetLane(hn::MinOfLanes(d, least))) FindSectors(belt, group, least);
    if (kept.is_at_base) {
      if (runs.empty()) return true;
      kept.is_at_base = false;
      kept.history.begin = DiscRings::GetFirstRing(belt) - 1;
      Keep(best, group);
    }
    if (!runs.empty()) return false;
    for (int ring = 0; ring < rings; ++ring) Keep(best, group);
    return true;
  }

  /// One number tells of most sectors that they hold no more. For the others there is a window for the upper rows and
  /// one for the lower ones: together they cover the sector from every row.
  HWY_NOINLINE void FindSectors(int belt, std::size_t group, V least) {
    static_assert(kGroupRows <= DiscRings::kWindow);
    const D d;
    const DiscRings::Belt& place = discs_.belts[static_cast<std::size_t>(belt)];
    const std::int32_t* HWY_RESTRICT corners = discs_.windows.data() + place.first;
    const std::int32_t* HWY_RESTRICT cells = discs_.cells.data() + place.first;
    const Place& corner = GetPlace(group);
    const float* HWY_RESTRICT reaches =
        plane_.reaches.data() + cell_ + corner.y / kCell * (plane_.stride / kCell) + corner.x / kCell;
    const float smallest = hn::GetLane(hn::MinOfLanes(d, least));
    const float* HWY_RESTRICT upper = plane_.windows.get() + kept_[group].samples;
    const float* HWY_RESTRICT lower = upper + (kGroupRows - 1) * plane_.stride;
    const auto count = static_cast<std::uint32_t>(place.sectors * DiscRings::kWedges);
    const auto holds_more = [&](std::uint32_t sector) HWY_ATTR {
      if (reaches[cells[sector]] <= smallest) return false;
      const V larger = hn::Max(hn::LoadU(d, upper + corners[sector]), hn::LoadU(d, lower + corners[sector]));
      return !hn::AllFalse(d, hn::Gt(larger, least));
    };
    std::vector<Sectors>& runs = states_[group].runs;
    for (std::uint32_t i = 0; i < count; ++i) {
      if (!holds_more(i)) continue;
      const std::uint32_t begin = i++;
      while (i < count && holds_more(i)) ++i;
      runs.push_back({begin, i});
    }
  }

  /// Finds the largest numbers of a group within a radius from those of the radius before: the pixel's own, those of
  /// the four neighbours, and the samples of the ring that no neighbour has seen. Keeps them.
  HWY_NOINLINE void LookAtRing(int belt, int ring, std::size_t group) {
    const D d;
    // First, as no calls are made while all rows are in registers.
    const V nothing = hn::Set(d, plane_.signs.nothing);
    const bool is_above_unknown = group < columns_ && (!has_above_ || workspace_.above[group].last_known < ring - 1);
    const V from_above = is_above_unknown ? LookAtSharedOfRow(belt, ring, group, 0, kUp) : nothing;
    const bool is_below_unknown = group + columns_ >= groups_;
    const V from_below = is_below_unknown ? LookAtSharedOfRow(belt, ring, group, kGroupRows - 1, kDown) : nothing;
    const float* HWY_RESTRICT numbers = workspace_.numbers[0].get() + kept_[group].numbers;
    Group best;
    for (std::size_t row = 0; row < kGroupRows; ++row) {
      const float* at = numbers + row * kStride;
      const V beside = hn::Max(hn::LoadU(d, at - 1), hn::LoadU(d, at + 1));
      const V across = hn::Max(hn::Load(d, at - kStride), hn::Load(d, at + kStride));
      best[row] = hn::Max(hn::Max(beside, across), hn::Load(d, at));
    }
    best[0] = hn::Max(best[0], from_above);
    best[kGroupRows - 1] = hn::Max(best[kGroupRows - 1], from_below);
    const std::size_t at = kept_[group].samples;
    const std::uint32_t* begins = discs_.apart.begins.data() + discs_.rings[static_cast<std::size_t>(ring)];
    for (const Sectors& run : states_[group].runs) {
      const std::int32_t* offsets = discs_.apart.offsets.data();
      LookAt(D(), offsets + begins[run.begin], offsets + begins[run.end], plane_.samples.get() + at, best);
    }
    Store(best, group);
    const std::size_t x = kept_[group].place.x;
    const bool is_left_unknown = x == 0 && last_known_before_ < ring - 1;
    const bool is_rightmost = x + hn::Lanes(d) == columns_ * hn::Lanes(d);
    if (is_left_unknown || is_rightmost) {
      if (is_left_unknown) LookAtShared(belt, ring, group, kLeft);
      if (is_rightmost) LookAtShared(belt, ring, group, kRight);
      best = LoadNext(group);
    }
    Keep(best, group);
    kept_[group].is_full = IsFull(best);
  }

  /// Looks at the same offsets from all pixels of so many columns of a group, whose first sample is `upper`.
  template <class Columns>
  HWY_INLINE void LookAt(Columns d, const std::int32_t* offset, const std::int32_t* end,
                         const float* HWY_RESTRICT upper, std::array<hn::Vec<Columns>, kGroupRows>& best) const {
    static_assert(kGroupRows == 8);
    const std::size_t stride = plane_.stride;
    const float* HWY_RESTRICT lower = upper + 4 * stride;
    for (; offset != end; ++offset) {
      const float* HWY_RESTRICT from = upper + *offset;
      best[0] = hn::Max(best[0], hn::LoadU(d, from));
      best[1] = hn::Max(best[1], hn::LoadU(d, from + stride));
      best[2] = hn::Max(best[2], hn::LoadU(d, from + 2 * stride));
      best[3] = hn::Max(best[3], hn::LoadU(d, from + 3 * stride));
      from = lower + *offset;
      best[4] = hn::Max(best[4], hn::LoadU(d, from));
      best[5] = hn::Max(best[5], hn::LoadU(d, from + stride));
      best[6] = hn::Max(best[6], hn::LoadU(d, from + 2 * stride));
      best[7] = hn::Max(best[7], hn::LoadU(d, from + 3 * stride));
    }
  }

  /// The wedges of `DiscRings`.
  static constexpr std::uint32_t kRight = 0;
  static constexpr std::uint32_t kDown = 1;
  static constexpr std::uint32_t kLeft = 2;
  static constexpr std::uint32_t kUp = 3;

  /// Calls `look(begin, end)` for what a neighbour outside the tile has seen of a ring: the offsets of the sectors of
  /// its wedge that may hold more.
  template <class Look>
  HWY_INLINE void ForEachShared(int belt, int ring, std::size_t group, std::uint32_t wedge, const Look& look) const {
    const auto sectors = static_cast<std::uint32_t>(discs_.belts[static_cast<std::size_t>(belt)].sectors);
    const std::uint32_t first = sectors * wedge;
    const std::uint32_t last = first + sectors;
    const std::int32_t* offsets = discs_.shared.offsets.data();
    const std::uint32_t* begins = discs_.shared.begins.data() + discs_.rings[static_cast<std::size_t>(ring)];
    for (const Sectors& run : states_[group].runs) {
      const std::uint32_t begin = std::max(run.begin, first);
      const std::uint32_t end = std::min(run.end, last);
      if (begin < end) look(offsets + begins[begin], offsets + begins[end]);
    }
  }

  /// Looks at the samples of a ring that a neighbour beside the tile has seen, from the column beside it.
  ///
  /// Short vectors that hold the column are read sooner: most do not lie across two lines of the cache.
  HWY_NOINLINE void LookAtShared(int belt, int ring, std::size_t group, std::uint32_t wedge) const {
    const ShortD d;
    const std::size_t column = wedge == kLeft ? 0 : hn::Lanes(D()) - hn::Lanes(d);
    float* to = workspace_.numbers[1].get() + kept_[group].numbers + column;
    const float* upper = plane_.samples.get() + kept_[group].samples + column;
    std::array<hn::Vec<ShortD>, kGroupRows> best;
    for (std::size_t row = 0; row < kGroupRows; ++row) best[row] = hn::Load(d, to + row * kStride);
    ForEachShared(belt, ring, group, wedge, [&](const std::int32_t* offset, const std::int32_t* end) HWY_ATTR {
      LookAt(d, offset, end, upper, best);
    });
    for (std::size_t row = 0; row < kGroupRows; ++row) hn::Store(best[row], d, to + row * kStride);
  }

  /// The same for one above or below the tile, from one row.
  HWY_NOINLINE V LookAtSharedOfRow(int belt, int ring, std::size_t group, std::size_t row, std::uint32_t wedge) const {
    const D d;
    const float* HWY_RESTRICT samples = plane_.samples.get() + kept_[group].samples + row * plane_.stride;
    V parts0 = hn::Set(d, plane_.signs.nothing);
    V parts1 = parts0;
    ForEachShared(belt, ring, group, wedge, [&](const std::int32_t* begin, const std::int32_t* end) HWY_ATTR {
      for (; end - begin >= 4; begin += 4) {
        parts0 = hn::Max(hn::Max(parts0, hn::LoadU(d, samples + begin[0])), hn::LoadU(d, samples + begin[1]));
        parts1 = hn::Max(hn::Max(parts1, hn::LoadU(d, samples + begin[2])), hn::LoadU(d, samples + begin[3]));
      }
      for (; begin != end; ++begin) parts0 = hn::Max(parts0, hn::LoadU(d, samples + *begin));
    });
    return hn::Max(parts0, parts1);
  }

  const DiscRings& discs_;
  const CellRings& cells_;
  /// The least radius that is drawn.
  int from_;
  /// The cell at the corner of the tile.
  std::size_t cell_ = 0;
  std::vector<State> states_;
};
}  // namespace ReliefBevel::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
