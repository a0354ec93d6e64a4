// SPDX-License-Identifier: Apache-2.0
//
// The search: a small group of neighbouring pixels looks through the tree for the bumps that raise it.
//
// Included once per instruction set, between HWY_BEFORE_NAMESPACE and HWY_AFTER_NAMESPACE of the source that uses it;
// see Highway's quick reference on `foreach_target.h`.

#if defined(VALUE_NODES_RELIEF_SEARCH_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef VALUE_NODES_RELIEF_SEARCH_INL_H_
#undef VALUE_NODES_RELIEF_SEARCH_INL_H_
#else
#define VALUE_NODES_RELIEF_SEARCH_INL_H_
#endif

#include <hwy/highway.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <vector>

#include "Value/Nodes/Relief/ReliefBumps-inl.h"
#include "Value/Nodes/Relief/ReliefField.h"
#include "Value/Nodes/Relief/ReliefGuess-inl.h"
#include "Value/Nodes/Relief/ReliefPixels-inl.h"
#include "Value/Nodes/Relief/ReliefPlanes-inl.h"
#include "Value/Nodes/Relief/ReliefRaisers.h"
#include "Value/Nodes/Relief/ReliefTree.h"

HWY_BEFORE_NAMESPACE();
namespace ReliefLevels::HWY_NAMESPACE {
/// The search for what raises the pixels of one small group after the other.
template <class ProfileOf>
class Leaf : private Pixels {
 public:
  Leaf(const Field& field, const Tree& tree)
      : Pixels(field, tree), profile_(Reach{radius_, limit_}), guess_(field, profile_) {
    blocks_.reserve(static_cast<std::size_t>(tree.columns) * static_cast<std::size_t>(tree.rows));
  }

  /// Computes the pixels of columns [x, x + 8) and rows [y, y + count), the columns only as far as the image goes.
  void Compute(int x, int y, int count, Raisers& raisers, float* output) {
    Load(x, y, count);
    GuardAll();
    if (held_.least < kDone) {
      TryGuess(x, y, count);
      const Raisers before = raisers;
      raisers.Clear();
      for (int i = 0; i < before.GetCount(); ++i) {
        if (IsInReach(before.Get(i))) Try(before.Get(i), raisers);
      }
      Search(before.GetCount() == 0, raisers);
    }
    Finish(x, y, count, output);
  }

 private:
  /// From this many bumps on, a group counts as raised much. A row that a guess raises counts as kBumpsOfRow.
  static constexpr int kMuchRaised = 24;
  static constexpr int kBumpsOfRow = 8;
  /// How many groups in a row a guess is taken for before one does without.
  static constexpr int kShortestRun = 4;
  static constexpr int kLongestRun = 64;

  /// Takes a guess at what raises the group where much raised the group before; elsewhere the search alone is quicker.
  ///
  /// What a guess raises says little of what the search would have found without it. So after a run of guesses one
  /// group does without, and where that is raised much all the same, the next run is twice as long.
  HWY_INLINE void TryGuess(int x, int y, int count) {
    const bool was_raised_much = raised_ >= kMuchRaised;
    raised_ = 0;
    if (!was_raised_much) {
      run_ = kShortestRun;
      guesses_ = 0;
    } else if (guesses_ == run_) {
      run_ = std::min(2 * run_, kLongestRun);
      guesses_ = 0;
    } else if (count == kLeafRows && field_.width - x >= kLeafColumns) {
      ++guesses_;
      raised_ = kBumpsOfRow * guess_.RaisePixels(x, y, w_.data());
      if (raised_ > 0) GuardAll();
    }
  }

  /// Finds out what is known of pixels that have all been set.
  HWY_INLINE void GuardAll() {
    const D d;
    for (std::size_t i = 0; i < kLeafPixels; i += hn::Lanes(d)) {
      hn::Store(profile_.Guard(hn::Load(d, w_.data() + i)), d, guards_.data() + i);
    }
    is_stale_ = true;
    Refresh();
  }

  /// Brings what is known of the whole group up to date after pixels have been raised. The least and the plane that
  /// were known before are lower, so that whatever they rule out is ruled out. The most is raised with the pixels.
  HWY_INLINE void Refresh() {
    if (HWY_LIKELY(!is_stale_)) return;
    is_stale_ = false;
    is_plane_stale_ = true;
    const D d;
    const V done = hn::Set(d, kDone);
    V least = done;
    V most = hn::Zero(d);
    for (std::size_t i = 0; i < kLeafColumns; i += hn::Lanes(d)) {
      V of_column = done;
      for (std::size_t at = i; at < kLeafPixels; at += kLeafColumns) {
        const V w = hn::Load(d, w_.data() + at);
        of_column = hn::Min(of_column, w);
        most = hn::Max(most, hn::IfThenElseZero(hn::Lt(w, done), w));
      }
      hn::Store(profile_.Guard(of_column), d, column_guards_.data() + i);
      least = hn::Min(least, of_column);
    }
    least = hn::MinOfLanes(d, least);
    hn::Store(profile_.Guard(least), d, least_guard_.data());
    held_.least = hn::GetLane(least);
    // A little more than there is, so that not every pixel that is raised needs other chords.
    held_.most = hn::GetLane(hn::MaxOfLanes(d, most));
    held_.most += (held_.most - held_.least) * 0.125F;
  }

  /// Raises the pixels that the bump raises.
  HWY_INLINE void Try(const Bump& bump, Raisers& raisers) {
    const D d;
    const auto prepared = profile_.Prepare(hn::Set(d, bump.q));
    // Most bumps that get here raise nothing, and one comparison for each column as a whole tells.
    const float outside_y = std::max({0.0F, bump.y - bottom_, top_ - bump.y});
    bool raised = false;
    for (std::size_t i = 0; i < kLeafColumns; i += hn::Lanes(d)) {
      const V dx = hn::Add(hn::Iota(d, static_cast<float>(i)), hn::Set(d, left_ - bump.x));
      if (HWY_LIKELY(IsBelowColumns(prepared, Square(dx), outside_y * outside_y, i))) continue;
      raised |= RaiseColumns(prepared, bump, dx, i);
    }
    if (raised) Keep(bump, raisers);
  }

  void Keep(const Bump& bump, Raisers& raisers) {
    raisers.Add(bump);
    ++raised_;
    is_stale_ = true;
  }

  /// Whether a bump raises nothing in the columns from `column` on, as far as a look at each of them as a whole tells.
  HWY_INLINE bool IsBelowColumns(const typename ProfileOf::Prepared& bump, V dx2, float outside_y2,
                                 std::size_t column) const {
    const D d;
    const V d2 = hn::Max(hn::Add(dx2, hn::Set(d, outside_y2)), hn::Set(d, kNearest));
    const V excess = profile_.Excess(bump, d2, hn::Load(d, column_guards_.data() + column));
    return hn::AllFalse(d, hn::Gt(excess, hn::Zero(d)));
  }

  /// Raises what a bump raises in the columns from `column` on, which it is `dx` away from; says whether that is any.
  HWY_INLINE bool RaiseColumns(const typename ProfileOf::Prepared& prepared, const Bump& bump, V dx,
                               std::size_t column) {
    const D d;
    const V dx2 = Square(dx);
    bool raised = false;
    for (std::size_t row = 0; row < kLeafRows; ++row) {
      const float dy = top_ - bump.y + static_cast<float>(row);
      const std::size_t at = row * kLeafColumns + column;
      const V d2 = hn::Max(hn::Add(dx2, hn::Set(d, dy * dy)), hn::Set(d, kNearest));
      const V excess = profile_.Excess(prepared, d2, hn::Load(d, guards_.data() + at));
      if (HWY_LIKELY(hn::AllFalse(d, hn::Gt(excess, hn::Zero(d))))) continue;
      raised |= Raise(hn::Set(d, bump.q), HWY_LIKELY(is_exact_) ? d2 : GetRoundedSquares(bump, column, row), at);
    }
    return raised;
  }

  /// Tries the pixels of a block of level 1 whose corner is at (x, y).
  ///
  /// First those are found that may raise something, all of them without a jump that depends on it: of a dozen some few
  /// do, and the processor cannot foresee which.
  HWY_INLINE void TryPixels(std::size_t block, float x, float y, Raisers& raisers) {
    Refresh();
    const D d;
    const float* bumps = tree_.levels[0].get() + block * Tree::kChildren;
    Chords chords;
    unsigned found = FindBumps(bumps, x, y, chords);
    if (found == 0) return;
    // The squares of the steps from one of the block's rows to one of the group's, from the least step on, and of those
    // from the block's columns to the group's.
    constexpr int kSteps = Tree::kSplit + kLeafRows - 1;
    std::array<float, kSteps> dy2;
    for (int i = 0; i < kSteps; ++i) {
      const float dy = top_ - y + static_cast<float>(i - (Tree::kSplit - 1));
      dy2[static_cast<std::size_t>(i)] = dy * dy;
    }
    alignas(64) std::array<float, Tree::kSplit * kLeafColumns> dx2;
    for (std::size_t i = 0; i < dx2.size(); i += hn::Lanes(d)) {
      const float from_child = left_ - (x + static_cast<float>(i / kLeafColumns));
      hn::Store(Square(hn::Iota(d, from_child + static_cast<float>(i % kLeafColumns))), d, dx2.data() + i);
    }
    const auto get_dx2 = [&dx2](unsigned child) { return dx2.data() + child % Tree::kSplit * kLeafColumns; };
    const auto get_dy2 = [&dy2](unsigned child) { return dy2.data() + (Tree::kSplit - 1 - child / Tree::kSplit); };
    unsigned above = 0;
    for (; found != 0; found &= found - 1) {
      const auto child = static_cast<unsigned>(std::countr_zero(found));
      above |= static_cast<unsigned>(MayRaise(chords, child, get_dx2(child), get_dy2(child))) << child;
    }
    const float most = held_.most;
    for (; above != 0; above &= above - 1) {
      const auto child = static_cast<unsigned>(std::countr_zero(above));
      const Bump bump = {x + kChildColumns[child], y + kChildRows[child], bumps[child]};
      // Where a pixel now holds more than the chords were made for, they say nothing of it.
      const bool has_chords = HWY_LIKELY(held_.most == most);
      bool raised = false;
      for (std::size_t i = 0; i < kLeafColumns; i += hn::Lanes(d)) {
        const V column_dx2 = hn::Load(d, get_dx2(child) + i);
        const V beside = hn::Sub(hn::Set(d, chords.base[child]), column_dx2);
        for (std::size_t row = 0; row < kLeafRows; ++row) {
          const std::size_t at = row * kLeafColumns + i;
          const V row_dy2 = hn::Set(d, get_dy2(child)[row]);
          const V reached = hn::NegMulAdd(hn::Set(d, chords.slope[child]), hn::Load(d, guards_.data() + at), beside);
          if (has_chords && hn::AllFalse(d, hn::Gt(reached, row_dy2))) continue;
          const V d2 = HWY_LIKELY(is_exact_) ? hn::Add(column_dx2, row_dy2) : GetRoundedSquares(bump, i, row);
          raised |= Raise(hn::Set(d, bump.q), d2, at);
        }
      }
      if (raised) Keep(bump, raisers);
    }
  }

  /// Which bumps of a block of level 1, with its corner at (x, y), may raise something in the group as a whole; finds
  /// the chords of all.
  HWY_INLINE unsigned FindBumps(const float* bumps, float x, float y, Chords& chords) const {
    const D d;
    unsigned found = 0;
    for (std::size_t i = 0; i < Tree::kChildren; i += hn::Lanes(d)) {
      const V q = hn::Load(d, bumps + i);
      profile_.FindChords(q, held_, i, chords);
      const V d2 = GetSquaresToGroup(hn::Add(hn::Load(d, kChildColumns.data() + i), hn::Set(d, x)),
                                     hn::Add(hn::Load(d, kChildRows.data() + i), hn::Set(d, y)), 1.0F);
      const V slope = hn::Load(d, chords.slope.data() + i);
      const V reached = hn::NegMulAdd(slope, hn::Load(d, least_guard_.data()), hn::Load(d, chords.base.data() + i));
      found |= GetBits(d, hn::And(IsPossible(q, d2), hn::Gt(reached, d2))) << i;
    }
    return found;
  }

  /// Whether a bump of a block may raise a pixel by its chord. `dx2` and `dy2` are the squares of its distances from
  /// the group's columns and rows.
  HWY_INLINE bool MayRaise(const Chords& chords, unsigned child, const float* dx2, const float* dy2) const {
    const D d;
    const V slope = hn::Set(d, chords.slope[child]);
    V most = hn::Zero(d);
    for (std::size_t i = 0; i < kLeafColumns; i += hn::Lanes(d)) {
      const V beside = hn::Sub(hn::Set(d, chords.base[child]), hn::Load(d, dx2 + i));
      for (std::size_t row = 0; row < kLeafRows; ++row) {
        const V guard = hn::Load(d, guards_.data() + row * kLeafColumns + i);
        most = hn::Max(most, hn::Sub(hn::NegMulAdd(slope, guard, beside), hn::Set(d, dy2[row])));
      }
    }
    return !hn::AllFalse(d, hn::Gt(most, hn::Zero(d)));
  }

  /// Takes the exact candidates of a bump for one vector of pixels; says whether one was higher.
  HWY_INLINE bool Raise(V q, V d2, std::size_t at) {
    const D d;
    const V radius = hn::Set(d, radius_);
    const V one = hn::Set(d, 1.0F);
    const V distance = hn::Sqrt(d2);
    const V t = hn::Min(hn::Div(distance, hn::Mul(radius, q)), one);
    const V candidate = hn::Mul(profile_.Level(t), q);
    const V w = hn::Load(d, w_.data() + at);
    const M is_higher = hn::And(hn::Gt(candidate, w), hn::Lt(distance, radius));
    if (hn::AllFalse(d, is_higher)) return false;
    if (HWY_UNLIKELY(!hn::AllFalse(d, hn::And(is_higher, hn::Gt(candidate, hn::Set(d, held_.most)))))) {
      held_.most = hn::GetLane(hn::MaxOfLanes(d, hn::IfThenElseZero(is_higher, candidate)));
    }
    const V higher = hn::IfThenElse(is_higher, candidate, w);
    hn::Store(higher, d, w_.data() + at);
    hn::Store(profile_.Guard(higher), d, guards_.data() + at);
    return true;
  }

  HWY_INLINE M IsPossible(V highest, V d2) const {
    return hn::And(hn::Gt(highest, hn::Set(D(), held_.least)), hn::Lt(d2, hn::Set(D(), reach_)));
  }

  /// Which blocks of a side, with their corners at (x, y), may hold a bump that raises a pixel.
  HWY_INLINE M MayHoldRaisers(V highest, V x, V y, float side) const {
    const D d;
    const V d2 = GetSquaresToGroup(x, y, side);
    const V excess = profile_.Excess(profile_.Prepare(highest), d2, hn::Load(d, least_guard_.data()));
    return hn::And(IsPossible(highest, d2), hn::Gt(excess, hn::Zero(d)));
  }

  /// The same for the 16 children of a block, and more closely by their planes.
  template <int kLevel>
  HWY_INLINE unsigned FindChildren(std::size_t block, float x, float y) {
    const D d;
    constexpr auto kSide = static_cast<float>(Tree::kSide[kLevel]);
    const std::size_t first = block * Tree::kChildren;
    const float* highest = tree_.levels[kLevel].get() + first;
    unsigned found = 0;
    for (std::size_t i = 0; i < Tree::kChildren; i += hn::Lanes(d)) {
      const V child_x = hn::MulAdd(hn::Load(d, kChildColumns.data() + i), hn::Set(d, kSide), hn::Set(d, x));
      const V child_y = hn::MulAdd(hn::Load(d, kChildRows.data() + i), hn::Set(d, kSide), hn::Set(d, y));
      found |= GetBits(d, MayHoldRaisers(hn::Load(d, highest + i), child_x, child_y, kSide)) << i;
    }
    if constexpr (ProfileOf::kHasTangent) {
      if (found == 0) return 0;
      if (is_plane_stale_) plane_.Fit(w_.data());
      is_plane_stale_ = false;
      const float from_x = left_ + GroupPlane::kHalfWidth - x;
      const float from_y = top_ + GroupPlane::kHalfHeight - y;
      unsigned below = 0;
      for (std::size_t i = 0; i < Tree::kChildren; i += hn::Lanes(d)) {
        below |= GetBits(d, plane_.template AreBelow<kLevel>(profile_, radius_, held_, tree_, first, i, from_x, from_y))
                 << i;
      }
      found &= ~below;
    }
    return found;
  }

  /// Searches the children of a block of level `kLevel` + 1 whose corner is at (x, y).
  template <int kLevel>
  void Descend(std::size_t block, float x, float y, Raisers& raisers) {
    constexpr auto kSide = static_cast<float>(Tree::kSide[kLevel]);
    Refresh();
    for (unsigned found = FindChildren<kLevel>(block, x, y); found != 0; found &= found - 1) {
      const auto child = static_cast<unsigned>(std::countr_zero(found));
      const float child_x = x + kSide * kChildColumns[child];
      const float child_y = y + kSide * kChildRows[child];
      if constexpr (kLevel == 1) {
        TryPixels(block * Tree::kChildren + child, child_x, child_y, raisers);
      } else {
        Descend<kLevel - 1>(block * Tree::kChildren + child, child_x, child_y, raisers);
      }
    }
  }

  /// Goes through the largest blocks in reach; the highest ones first unless earlier pixels have shown what to try.
  void Search(bool in_order_of_height, Raisers& raisers) {
    Refresh();
    const D d;
    const auto lanes = static_cast<int>(hn::Lanes(d));
    constexpr int kSide = Tree::kSide[Tree::kTop];
    const V side = hn::Set(d, static_cast<float>(kSide));
    // No further than the plane, so that the sums below are whole numbers.
    const float reach = std::min(limit_ - 1.0F, static_cast<float>(kSide * std::max(tree_.columns, tree_.rows)));
    const int from_x = std::max(0, static_cast<int>(left_ - reach)) / kSide;
    const int to_x = std::min(tree_.columns - 1, static_cast<int>(right_ + reach) / kSide);
    const int from_y = std::max(0, static_cast<int>(top_ - reach)) / kSide;
    const int to_y = std::min(tree_.rows - 1, static_cast<int>(bottom_ + reach) / kSide);
    blocks_.clear();
    for (int y = from_y; y <= to_y; ++y) {
      const V row = hn::Set(d, static_cast<float>(y * kSide));
      for (int x = from_x; x <= to_x; x += lanes) {
        const int block = y * tree_.columns + x;
        const V column = hn::Mul(hn::Iota(d, static_cast<float>(x)), side);
        const V highest = hn::LoadU(d, tree_.levels[Tree::kTop].get() + block);
        unsigned found = GetBits(d, MayHoldRaisers(highest, column, row, static_cast<float>(kSide)));
        if (to_x - x < lanes) found &= (2U << (to_x - x)) - 1U;
        for (; found != 0; found &= found - 1) blocks_.push_back(block + std::countr_zero(found));
      }
    }
    if (in_order_of_height) {
      std::sort(blocks_.begin(), blocks_.end(), [this](int a, int b) {
        const float* highest = tree_.levels[Tree::kTop].get();
        return highest[a] > highest[b] || (highest[a] == highest[b] && a < b);
      });
    }
    for (const int block : blocks_) {
      const int x = block % tree_.columns * kSide;
      const int y = block / tree_.columns * kSide;
      Descend<Tree::kTop - 1>(static_cast<std::size_t>(block), static_cast<float>(x), static_cast<float>(y), raisers);
    }
  }

  // What Excess compares with for each pixel, for each column and for all pixels.
  alignas(64) std::array<float, kLeafPixels> guards_{};
  alignas(32) std::array<float, kLeafColumns> column_guards_{};
  alignas(32) std::array<float, kLeafColumns> least_guard_{};

  ProfileOf profile_;
  Guess<ProfileOf> guess_;
  /// Of the group as a whole, and whether pixels have been raised since it was found out. The most is always up to
  /// date.
  Held held_ = {};
  bool is_stale_ = false;
  bool is_plane_stale_ = false;
  /// By how many bumps pixels of this group, or of the last one that was searched, have been raised.
  int raised_ = 0;
  /// How many guesses have been taken in a row, and after how many one group does without.
  int guesses_ = 0;
  int run_ = kShortestRun;
  GroupPlane plane_;
  std::vector<int> blocks_;
};
}  // namespace ReliefLevels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
