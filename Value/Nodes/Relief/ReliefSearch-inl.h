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
#include <cmath>
#include <cstddef>
#include <limits>
#include <vector>

#include "Value/Nodes/Relief/ReliefBumps-inl.h"
#include "Value/Nodes/Relief/ReliefField.h"
#include "Value/Nodes/Relief/ReliefRaisers.h"
#include "Value/Nodes/Relief/ReliefTree.h"

HWY_BEFORE_NAMESPACE();
namespace ReliefLevels::HWY_NAMESPACE {
constexpr int kLeafColumns = 8;
constexpr int kLeafRows = 5;
constexpr std::size_t kLeafPixels = std::size_t{kLeafColumns} * kLeafRows;

/// The results of one small group of neighbouring pixels, and the search for what raises them.
template <class ProfileOf>
class Leaf {
 public:
  Leaf(const Field& field, const Tree& tree)
      : field_(field),
        tree_(tree),
        radius_(static_cast<float>(field.radius_px)),
        is_exact_(radius_ <= kLargestExact || !SpansMore(tree, kLargestExact)),
        limit_(is_exact_ ? radius_ : radius_ * (1.0F + kMargin)),
        reach_(limit_ * limit_),
        profile_(Reach{radius_, limit_}),
        range_(std::abs(field.high - field.low)),
        inverse_(std::abs(1.0F / (field.high - field.low))) {
    blocks_.reserve(static_cast<std::size_t>(tree.columns) * static_cast<std::size_t>(tree.rows));
  }

  /// Computes the pixels of columns [x, x + 8) and rows [y, y + count), the columns only as far as the image goes.
  void Compute(int x, int y, int count, Raisers& raisers, float* output) {
    if (Begin(x, y, count)) {
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
  /// Each pixel starts from its own bump, so that what raises it is one pixel away at least.
  static constexpr float kNearest = 1.0F;
  static constexpr std::array<float, Tree::kSplit> kOffsets = {0.0F, 1.0F, 2.0F, 3.0F};
  static constexpr float kDone = std::numeric_limits<float>::infinity();
  /// Squares of whole distances up to this are exact in single precision.
  static constexpr float kLargestExact = 4096.0F;

  /// Whether two pixels of the plane may be further apart than a distance.
  static bool SpansMore(const Tree& tree, float distance) {
    const float width = static_cast<float>(tree.columns) * static_cast<float>(Tree::kSide[Tree::kTop]);
    const float height = static_cast<float>(tree.rows) * static_cast<float>(Tree::kSide[Tree::kTop]);
    return width * width + height * height > distance * distance;
  }

  /// Pixels that nothing can raise, since they keep their value or become 0, hold infinity. False if all are so.
  bool Begin(int x, int y, int count) {
    const D d;
    const std::size_t lanes = hn::Lanes(d);
    const int columns = std::min(kLeafColumns, field_.width - x);
    left_ = static_cast<float>(x + tree_.pad_x);
    right_ = left_ + static_cast<float>(columns - 1);
    top_ = static_cast<float>(y + tree_.pad_y);
    bottom_ = top_ + static_cast<float>(count - 1);
    const V low = hn::Set(d, field_.low);
    const V high = hn::Set(d, field_.high);
    const V inverse = hn::Set(d, inverse_);
    const V done = hn::Set(d, kDone);
    for (int row = 0; row < count; ++row) {
      const std::size_t start = static_cast<std::size_t>(row) * kLeafColumns;
      const float* mask = GetRow(field_.mask, x, y + row, columns, values_.data() + start);
      const float* grown = GetRow(field_.grown, x, y + row, columns, grown_.data() + start);
      for (std::size_t i = 0; i < kLeafColumns; i += lanes) {
        const V a = hn::LoadU(d, mask + i);
        const V q = hn::Mul(hn::Sub(a, low), inverse);
        const M is_computed = hn::Gt(hn::LoadU(d, grown + i), hn::Zero(d));
        const M keeps = hn::Ge(a, high);
        const V own = hn::IfThenElseZero(hn::Gt(q, hn::Zero(d)), q);
        const V w = hn::IfThenElse(hn::AndNot(keeps, is_computed), own, done);
        const std::size_t at = start + i;
        hn::Store(a, d, values_.data() + at);
        hn::Store(hn::IfThenElse(is_computed, hn::Set(d, 1.0F), hn::Zero(d)), d, grown_.data() + at);
        hn::Store(w, d, w_.data() + at);
        hn::Store(profile_.Guard(w), d, guards_.data() + at);
      }
    }
    const std::size_t pixels = static_cast<std::size_t>(count) * kLeafColumns;
    for (std::size_t i = pixels; i < kLeafPixels; i += lanes) {
      hn::Store(done, d, w_.data() + i);
      hn::Store(profile_.Guard(done), d, guards_.data() + i);
    }
    UpdateLeast();
    return least_w_ < kDone;
  }

  /// Row of a group; in `buffer`, filled up with zeros, where the group sticks out of the image.
  const float* GetRow(const float* samples, int x, int y, int columns, float* buffer) const {
    const float* row = samples + static_cast<std::size_t>(y) * static_cast<std::size_t>(field_.width) + x;
    if (columns == kLeafColumns) return row;
    std::fill(std::copy(row, row + columns, buffer), buffer + kLeafColumns, 0.0F);
    return buffer;
  }

  /// Finds the least that each column and the whole group have reached.
  void UpdateLeast() {
    const D d;
    const std::size_t lanes = hn::Lanes(d);
    V least = hn::Set(d, kDone);
    for (std::size_t i = 0; i < kLeafColumns; i += lanes) {
      V of_column = hn::Load(d, w_.data() + i);
      for (std::size_t at = i + kLeafColumns; at < kLeafPixels; at += kLeafColumns) {
        of_column = hn::Min(of_column, hn::Load(d, w_.data() + at));
      }
      hn::Store(profile_.Guard(of_column), d, column_guards_.data() + i);
      least = hn::Min(least, of_column);
    }
    least = hn::MinOfLanes(d, least);
    least_w_ = hn::GetLane(least);
    hn::Store(profile_.Guard(least), d, least_guard_.data());
  }

  [[nodiscard]] bool IsInReach(const Bump& bump) const {
    const float x = std::max({0.0F, bump.x - right_, left_ - bump.x});
    const float y = std::max({0.0F, bump.y - bottom_, top_ - bump.y});
    return x * x + y * y < reach_;
  }

  /// Whether a block of a side, with its corner at (x, y), may hold a bump that raises a pixel, for each pixel of the
  /// group on its own.
  HWY_INLINE bool MayRaisePixel(float highest, float x, float y, float side) const {
    const D d;
    const std::size_t lanes = hn::Lanes(d);
    const auto prepared = profile_.Prepare(hn::Set(d, highest));
    for (std::size_t i = 0; i < kLeafColumns; i += lanes) {
      const V from_left = hn::Add(hn::Iota(d, static_cast<float>(i)), hn::Set(d, left_ - x));
      const V from_right = hn::Sub(from_left, hn::Set(d, side - 1.0F));
      const V dx = hn::Max(hn::Zero(d), hn::Max(from_right, hn::Neg(from_left)));
      const auto beside = profile_.Approach(prepared, Square(dx));
      std::array<M, kLeafRows> is_above;
      for (std::size_t row = 0; row < kLeafRows; ++row) {
        const float from_top = top_ - y + static_cast<float>(row);
        const float dy = std::max({0.0F, -from_top, from_top - (side - 1.0F)});
        is_above[row] =
            profile_.IsAbove(beside, hn::Set(d, dy * dy), hn::Load(d, guards_.data() + row * kLeafColumns + i));
      }
      if (!AreAllFalse(is_above)) return true;
    }
    return false;
  }

  static HWY_INLINE bool AreAllFalse(const std::array<M, kLeafRows>& rows) {
    static_assert(kLeafRows == 5);
    const M upper = hn::Or(rows[0], rows[1]);
    const M lower = hn::Or(rows[2], hn::Or(rows[3], rows[4]));
    return hn::AllFalse(D(), hn::Or(upper, lower));
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
    UpdateLeast();
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
    const float dy0 = top_ - bump.y;
    bool raised = false;
    for (int row = 0; row < kLeafRows; ++row) {
      const float dy = dy0 + static_cast<float>(row);
      const std::size_t at = static_cast<std::size_t>(row) * kLeafColumns + column;
      const V d2 = hn::Max(hn::Add(dx2, hn::Set(d, dy * dy)), hn::Set(d, kNearest));
      const V excess = profile_.Excess(prepared, d2, hn::Load(d, guards_.data() + at));
      if (HWY_LIKELY(hn::AllFalse(d, hn::Gt(excess, hn::Zero(d))))) continue;
      raised |= Raise(hn::Set(d, bump.q), HWY_LIKELY(is_exact_) ? d2 : GetRoundedSquares(dx, dy), at);
    }
    return raised;
  }

  /// Tries the pixels of a block of level 1 whose corner is at (x, y).
  HWY_INLINE void TryPixels(std::size_t block, float x, float y, Raisers& raisers) {
    const D d;
    const std::size_t lanes = hn::Lanes(d);
    const float* highest = tree_.levels[0].get() + block * Tree::kChildren;
    unsigned found = FindChildren<0>(highest, x, y);
    if (found == 0) return;
    typename ProfileOf::Table table;
    for (std::size_t i = 0; i < Tree::kChildren; i += lanes) profile_.Prepare(hn::Load(d, highest + i), i, table);
    // The squares of the steps from one of the block's rows to one of the group's, from the least step on.
    constexpr int kSteps = Tree::kSplit + kLeafRows - 1;
    std::array<float, kSteps> dy2;
    for (int i = 0; i < kSteps; ++i) {
      const float dy = top_ - y + static_cast<float>(i - (Tree::kSplit - 1));
      dy2[static_cast<std::size_t>(i)] = dy * dy;
    }
    for (; found != 0; found &= found - 1) {
      const auto child = static_cast<unsigned>(std::countr_zero(found));
      const float child_x = x + kOffsets[child % Tree::kSplit];
      const float* child_dy2 = dy2.data() + (Tree::kSplit - 1 - child / Tree::kSplit);
      const auto prepared = profile_.Get(table, child);
      bool raised = false;
      for (std::size_t i = 0; i < kLeafColumns; i += lanes) {
        const V dx = hn::Add(hn::Iota(d, static_cast<float>(i)), hn::Set(d, left_ - child_x));
        const V dx2 = Square(dx);
        const auto beside = profile_.Approach(prepared, dx2);
        std::array<M, kLeafRows> is_above;
        for (std::size_t row = 0; row < kLeafRows; ++row) {
          const V guard = hn::Load(d, guards_.data() + row * kLeafColumns + i);
          is_above[row] = profile_.IsAbove(beside, hn::Set(d, child_dy2[row]), guard);
        }
        if (HWY_LIKELY(AreAllFalse(is_above))) continue;
        for (std::size_t row = 0; row < kLeafRows; ++row) {
          if (hn::AllFalse(d, is_above[row])) continue;
          const float dy = top_ - (y + kOffsets[child / Tree::kSplit]) + static_cast<float>(row);
          const V d2 = HWY_LIKELY(is_exact_) ? hn::Add(dx2, hn::Set(d, child_dy2[row])) : GetRoundedSquares(dx, dy);
          raised |= Raise(hn::Set(d, highest[child]), d2, row * kLeafColumns + i);
        }
      }
      if (raised) Keep({child_x, y + kOffsets[child / Tree::kSplit], highest[child]}, raisers);
    }
  }

  /// The squares of distances rounded once, of distances that are too large to be squared and added without rounding.
  static V GetRoundedSquares(V dx, float dy) {
    const D d;
    alignas(64) std::array<float, kLeafColumns> squares{};
    hn::Store(dx, d, squares.data());
    for (float& square : squares) {
      const double exact =
          static_cast<double>(square) * static_cast<double>(square) + static_cast<double>(dy) * static_cast<double>(dy);
      square = static_cast<float>(exact);
    }
    return hn::Load(d, squares.data());
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
    const V higher = hn::IfThenElse(is_higher, candidate, w);
    hn::Store(higher, d, w_.data() + at);
    hn::Store(profile_.Guard(higher), d, guards_.data() + at);
    return true;
  }

  /// Which blocks of a side, with their corners at (x, y), may hold a bump that raises a pixel.
  HWY_INLINE M MayHoldRaisers(V highest, V x, V y, float side) const {
    const D d;
    const V zero = hn::Zero(d);
    const V far = hn::Set(d, side - 1.0F);
    const V before_x = hn::Sub(hn::Set(d, left_), hn::Add(x, far));
    const V before_y = hn::Sub(hn::Set(d, top_), hn::Add(y, far));
    const V dx = hn::Max(zero, hn::Max(before_x, hn::Sub(x, hn::Set(d, right_))));
    const V dy = hn::Max(zero, hn::Max(before_y, hn::Sub(y, hn::Set(d, bottom_))));
    const V d2 = hn::Max(hn::Add(Square(dx), Square(dy)), hn::Set(d, kNearest));
    const V excess = profile_.Excess(profile_.Prepare(highest), d2, hn::Load(d, least_guard_.data()));
    const M is_possible = hn::And(hn::Gt(highest, hn::Set(d, least_w_)), hn::Lt(d2, hn::Set(d, reach_)));
    return hn::And(is_possible, hn::Gt(excess, zero));
  }

  /// The same for the 16 children of a block.
  template <int kLevel>
  HWY_INLINE unsigned FindChildren(const float* highest, float x, float y) const {
    const D d;
    const std::size_t lanes = hn::Lanes(d);
    alignas(64) static constexpr float kColumns[16] = {0, 1, 2, 3, 0, 1, 2, 3, 0, 1, 2, 3, 0, 1, 2, 3};
    alignas(64) static constexpr float kRows[16] = {0, 0, 0, 0, 1, 1, 1, 1, 2, 2, 2, 2, 3, 3, 3, 3};
    constexpr auto kSide = static_cast<float>(Tree::kSide[kLevel]);
    const V side = hn::Set(d, kSide);
    unsigned found = 0;
    for (std::size_t i = 0; i < Tree::kChildren; i += lanes) {
      const V child_x = hn::Add(hn::Mul(hn::Load(d, kColumns + i), side), hn::Set(d, x));
      const V child_y = hn::Add(hn::Mul(hn::Load(d, kRows + i), side), hn::Set(d, y));
      found |= GetBits(d, MayHoldRaisers(hn::Load(d, highest + i), child_x, child_y, kSide)) << i;
    }
    return found;
  }

  /// Searches the children of a block of level `kLevel` + 1 whose corner is at (x, y).
  template <int kLevel>
  void Descend(std::size_t block, float x, float y, Raisers& raisers) {
    constexpr auto kSide = static_cast<float>(Tree::kSide[kLevel]);
    const float* highest = tree_.levels[kLevel].get() + block * Tree::kChildren;
    for (unsigned found = FindChildren<kLevel>(highest, x, y); found != 0; found &= found - 1) {
      const auto child = static_cast<unsigned>(std::countr_zero(found));
      const float child_x = x + kSide * static_cast<float>(child % Tree::kSplit);
      const unsigned row = child / Tree::kSplit;
      const float child_y = y + kSide * static_cast<float>(row);
      if (!MayRaisePixel(highest[child], child_x, child_y, kSide)) continue;
      if constexpr (kLevel == 1) {
        TryPixels(block * Tree::kChildren + child, child_x, child_y, raisers);
      } else {
        Descend<kLevel - 1>(block * Tree::kChildren + child, child_x, child_y, raisers);
      }
    }
  }

  /// Goes through the largest blocks in reach; the highest ones first unless earlier pixels have shown what to try.
  void Search(bool in_order_of_height, Raisers& raisers) {
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

  void Finish(int x, int y, int count, float* output) const {
    const int columns = std::min(kLeafColumns, field_.width - x);
    for (int row = 0; row < count; ++row) {
      float* to = output + static_cast<std::size_t>(y + row) * static_cast<std::size_t>(field_.width) + x;
      for (int column = 0; column < columns; ++column) {
        const std::size_t at = static_cast<std::size_t>(row) * kLeafColumns + static_cast<std::size_t>(column);
        const float highest = w_[at] * range_ + field_.low;
        const float raised = highest > field_.low ? highest : field_.low;
        to[column] = grown_[at] == 0.0F ? 0.0F : values_[at] >= field_.high ? values_[at] : raised;
      }
    }
  }

  // Of each pixel, row by row: its value, whether it is computed, w so far, and what Excess compares with.
  alignas(64) std::array<float, kLeafPixels> values_{};
  alignas(64) std::array<float, kLeafPixels> grown_{};
  alignas(64) std::array<float, kLeafPixels> w_{};
  alignas(64) std::array<float, kLeafPixels> guards_{};
  // What Excess compares with for each column and for all pixels.
  alignas(32) std::array<float, kLeafColumns> column_guards_{};
  alignas(32) std::array<float, kLeafColumns> least_guard_{};

  const Field& field_;
  const Tree& tree_;
  float radius_;
  /// Whether all squared distances that matter are exact in single precision.
  bool is_exact_;
  /// The radius, and its square, of what is looked at more closely.
  float limit_;
  float reach_;
  ProfileOf profile_;
  float range_;
  float inverse_;

  float left_ = 0.0F;
  float right_ = 0.0F;
  float top_ = 0.0F;
  float bottom_ = 0.0F;
  float least_w_ = 0.0F;
  std::vector<int> blocks_;
};
}  // namespace ReliefLevels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
