// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/Relief/ReliefLevels.h"

// Highway compiles the part between HWY_BEFORE_NAMESPACE and HWY_AFTER_NAMESPACE once per instruction set and calls
// the best one that the processor has.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Value/Nodes/Relief/ReliefLevels.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <new>
#include <vector>

#include "Host/Util/EvaluationScope.h"
#include "Value/Nodes/Relief/ReliefLevelsTree.h"

HWY_BEFORE_NAMESPACE();
namespace ReliefLevels::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

// Eight lanes at most: a wider division takes as long per lane, and small groups of pixels prune better.
using D = hn::CappedTag<float, 8>;
using V = hn::Vec<D>;
using M = hn::Mask<D>;
constexpr int kLeafColumns = 8;
constexpr int kLeafRows = 5;
constexpr std::size_t kLeafPixels = std::size_t{kLeafColumns} * kLeafRows;

// How much a comparison that only decides whether to look closer gives away, relative to the values compared. Rounding
// takes less than a quarter of it.
constexpr float kMargin = 1.0F / 262144.0F;

unsigned GetBits(D d, M mask) {
  std::array<std::uint8_t, 8> bytes{};
  hn::StoreMaskBits(d, mask, bytes.data());
  return bytes[0];
}

// Each profile says four things, all with w = level * q, what a bump adds above `low` in units of the range:
//
// Guard(w)                     what Excess compares with; grows with w, finite
// Prepare(q)                   what Excess needs of the bump
// Excess(bump, d2, guard)      not above 0 only where w at the squared distance d2 is at most the guarded one; no NaN
// Level(t)                     the definition
//
// The definition's roundings keep the order of their operands, so that w as computed never falls with q and never rises
// with the distance, except for Smooth, whose margin covers the difference. It is never above q.

/// Squares of numbers up to this are finite, with a square of the largest radius on top.
constexpr float kLargestGuarded = 1e15F;

V Square(V v) { return hn::Mul(v, v); }

struct Linear {
  explicit Linear(float radius) : radius_(hn::Set(D(), radius)), wide_(hn::Set(D(), radius * (1.0F + kMargin))) {}
  using Prepared = V;

  HWY_INLINE V Guard(V w) const { return hn::Mul(hn::Min(w, hn::Set(D(), kLargestGuarded)), radius_); }
  HWY_INLINE Prepared Prepare(V q) const { return hn::Mul(q, wide_); }
  // r q - r w > distance, squared.
  HWY_INLINE V Excess(const Prepared& rq, V d2, V guard) const {
    const V left = hn::Max(hn::Min(hn::Sub(rq, guard), radius_), hn::Zero(D()));
    return hn::Sub(Square(left), d2);
  }
  HWY_INLINE V Level(V t) const { return hn::Sub(hn::Set(D(), 1.0F), t); }

 private:
  V radius_;
  V wide_;
};

struct ArcOut {
  explicit ArcOut(float radius)
      : radius_(hn::Set(D(), radius)),
        wide_(hn::Set(D(), radius * (1.0F + kMargin))),
        reach_(hn::Set(D(), radius * radius)) {}
  using Prepared = V;

  HWY_INLINE V Guard(V w) const { return Square(hn::Mul(hn::Min(w, hn::Set(D(), kLargestGuarded)), radius_)); }
  HWY_INLINE Prepared Prepare(V q) const { return Square(hn::Mul(q, wide_)); }
  // (r q)^2 - (r w)^2 > distance^2.
  HWY_INLINE V Excess(const Prepared& rq2, V d2, V guard) const {
    return hn::Sub(hn::Min(hn::Sub(rq2, guard), reach_), d2);
  }
  HWY_INLINE V Level(V t) const { return hn::Sqrt(hn::Sub(hn::Set(D(), 1.0F), Square(t))); }

 private:
  V radius_;
  V wide_;
  V reach_;
};

/// What the profiles share for which 1 - t must be known.
struct Curved {
  explicit Curved(float radius) : inverse_radius_(hn::Set(D(), 1.0F / radius)) {}
  struct Prepared {
    V inverse;
    V inverse_rq;
  };

  HWY_INLINE V Guard(V w) const { return hn::Min(w, hn::Set(D(), kLargestGuarded)); }
  HWY_INLINE Prepared Prepare(V q) const {
    const V inverse = hn::Div(hn::Set(D(), 1.0F), hn::Max(q, hn::Set(D(), 1e-15F)));
    return {inverse, hn::Mul(inverse, inverse_radius_)};
  }
  /// At most 1, and 0 only where t is 1.
  HWY_INLINE V GetU(const Prepared& bump, V d2) const {
    const V u = hn::Sub(hn::Set(D(), 1.0F + 4 * kMargin), hn::Mul(hn::Sqrt(d2), bump.inverse_rq));
    return hn::Max(hn::Min(u, hn::Set(D(), 1.0F)), hn::Zero(D()));
  }

  V inverse_radius_;
};

struct Smooth : Curved {
  using Curved::Curved;

  HWY_INLINE V Excess(const Prepared& bump, V d2, V guard) const {
    const V u = GetU(bump, d2);
    const V level = hn::Mul(hn::Sub(hn::Set(D(), 3.0F), hn::Add(u, u)), Square(u));
    const V needed = hn::Mul(hn::Mul(guard, bump.inverse), hn::Set(D(), 1.0F - 4 * kMargin));
    return hn::Sub(level, needed);
  }
  HWY_INLINE V Level(V t) const {
    const V u = hn::Sub(hn::Set(D(), 1.0F), t);
    return hn::Mul(hn::Sub(hn::Set(D(), 3.0F), hn::Mul(hn::Set(D(), 2.0F), u)), Square(u));
  }
};

struct ArcIn : Curved {
  using Curved::Curved;

  // level > v is u^2 > v (2 - v) for v up to 1. The subtractions in the definition make the margin an absolute one,
  // which must not reach beyond the rim.
  HWY_INLINE V Excess(const Prepared& bump, V d2, V guard) const {
    const V u = GetU(bump, d2);
    const V v = hn::Min(hn::Mul(guard, bump.inverse), hn::Set(D(), 1.0F));
    const V needed = hn::Mul(v, hn::Sub(hn::Set(D(), 2.0F), v));
    const V offered = hn::IfThenElseZero(hn::Gt(u, hn::Zero(D())), hn::Add(Square(u), hn::Set(D(), 2 * kMargin)));
    return hn::Sub(offered, needed);
  }
  HWY_INLINE V Level(V t) const {
    const V u = hn::Sub(hn::Set(D(), 1.0F), t);
    return hn::Sub(hn::Set(D(), 1.0F), hn::Sqrt(hn::Sub(hn::Set(D(), 1.0F), Square(u))));
  }
};

/// All profiles where `high` is below `low`: q and the range change their signs, t is 0 wherever a candidate counts.
struct Flat {
  explicit Flat(float) {}
  using Prepared = V;

  HWY_INLINE V Guard(V w) const { return hn::Min(w, hn::Set(D(), std::numeric_limits<float>::max())); }
  HWY_INLINE Prepared Prepare(V q) const { return q; }
  HWY_INLINE V Excess(const Prepared& q, V, V guard) const { return hn::Sub(q, guard); }
  HWY_INLINE V Level(V) const { return hn::Set(D(), 1.0F); }
};

/// A bump: where its middle lies in the tree's plane, and its q.
struct Bump {
  float x;
  float y;
  float q;
};

/// The bumps that raised a pixel lately, without order.
class Raisers {
 public:
  HWY_INLINE void Add(const Bump& bump) {
    bumps_[static_cast<std::size_t>(next_) % kMost] = bump;
    ++next_;
  }
  [[nodiscard]] int GetCount() const { return next_ < kMost ? next_ : kMost; }
  [[nodiscard]] const Bump& Get(int i) const { return bumps_[static_cast<std::size_t>(i)]; }
  void Clear() { next_ = 0; }

 private:
  static constexpr int kMost = 16;
  std::array<Bump, kMost> bumps_;
  int next_ = 0;
};

/// The results of one small group of neighbouring pixels, and the search for what raises them.
template <class ProfileOf>
class Leaf {
 public:
  Leaf(const Field& field, const Tree& tree)
      : field_(field),
        tree_(tree),
        profile_(static_cast<float>(field.radius_px)),
        radius_(static_cast<float>(field.radius_px)),
        reach_(radius_ * radius_),
        range_(std::abs(field.high - field.low)),
        inverse_(std::abs(1.0F / (field.high - field.low))) {}

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
  static constexpr float kDone = std::numeric_limits<float>::infinity();

  /// Pixels that nothing can raise, since they keep their value or become 0, hold infinity. False if all are so.
  bool Begin(int x, int y, int count) {
    const D d;
    const std::size_t lanes = hn::Lanes(d);
    const int columns = std::min(kLeafColumns, field_.width - x);
    left_ = static_cast<float>(x + tree_.pad);
    right_ = left_ + static_cast<float>(columns - 1);
    top_ = static_cast<float>(y + tree_.pad);
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

  /// Whether a block of a side, with its corner at (x, y), may hold a bump that raises a pixel, for each column of the
  /// group on its own.
  HWY_INLINE bool MayRaiseColumn(float highest, float x, float y, float side) const {
    const D d;
    const std::size_t lanes = hn::Lanes(d);
    const V zero = hn::Zero(d);
    const auto prepared = profile_.Prepare(hn::Set(d, highest));
    const float dy = std::max({0.0F, y - bottom_, top_ - (y + side - 1.0F)});
    const V dy2 = hn::Set(d, dy * dy);
    for (std::size_t i = 0; i < kLeafColumns; i += lanes) {
      const V from_left = hn::Add(hn::Iota(d, static_cast<float>(i)), hn::Set(d, left_ - x));
      const V from_right = hn::Sub(from_left, hn::Set(d, side - 1.0F));
      const V dx = hn::Max(zero, hn::Max(from_right, hn::Neg(from_left)));
      const V d2 = hn::Max(hn::Add(Square(dx), dy2), hn::Set(d, kNearest));
      const V excess = profile_.Excess(prepared, d2, hn::Load(d, column_guards_.data() + i));
      if (!hn::AllFalse(d, hn::Gt(excess, zero))) return true;
    }
    return false;
  }

  /// Raises the pixels that the bump raises.
  HWY_INLINE void Try(const Bump& bump, Raisers& raisers) {
    const D d;
    const std::size_t lanes = hn::Lanes(d);
    const V zero = hn::Zero(d);
    const V nearest = hn::Set(d, kNearest);
    const auto prepared = profile_.Prepare(hn::Set(d, bump.q));
    // Most bumps that get here raise nothing, and one comparison for each column as a whole tells.
    const float outside_y = std::max({0.0F, bump.y - bottom_, top_ - bump.y});
    const V outside_y2 = hn::Set(d, outside_y * outside_y);
    bool raised = false;
    for (std::size_t i = 0; i < kLeafColumns; i += lanes) {
      const V dx2 = Square(hn::Add(hn::Iota(d, static_cast<float>(i)), hn::Set(d, left_ - bump.x)));
      const V column_d2 = hn::Max(hn::Add(dx2, outside_y2), nearest);
      const V column_excess = profile_.Excess(prepared, column_d2, hn::Load(d, column_guards_.data() + i));
      if (HWY_LIKELY(hn::AllFalse(d, hn::Gt(column_excess, zero)))) continue;
      const float dy0 = top_ - bump.y;
      for (int row = 0; row < kLeafRows; ++row) {
        const float dy = dy0 + static_cast<float>(row);
        const std::size_t at = static_cast<std::size_t>(row) * kLeafColumns + i;
        const V d2 = hn::Max(hn::Add(dx2, hn::Set(d, dy * dy)), nearest);
        const V excess = profile_.Excess(prepared, d2, hn::Load(d, guards_.data() + at));
        if (hn::AllFalse(d, hn::Gt(excess, zero))) continue;
        raised |= Raise(hn::Set(d, bump.q), d2, at);
      }
    }
    if (!raised) return;
    raisers.Add(bump);
    UpdateLeast();
  }

  /// Takes the exact candidates of a bump for one vector of pixels; says whether one was higher.
  HWY_INLINE bool Raise(V q, V d2, std::size_t at) {
    const D d;
    const V radius = hn::Set(d, radius_);
    const V one = hn::Set(d, 1.0F);
    const V t = hn::Min(hn::Div(hn::Sqrt(d2), hn::Mul(radius, q)), one);
    const V candidate = hn::Mul(profile_.Level(t), q);
    const V w = hn::Load(d, w_.data() + at);
    const M is_higher = hn::And(hn::Gt(candidate, w), hn::Lt(d2, hn::Set(d, reach_)));
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
      if constexpr (kLevel == 0) {
        Try({child_x, child_y, highest[child]}, raisers);
      } else if (MayRaiseColumn(highest[child], child_x, child_y, kSide)) {
        Descend<kLevel - 1>(block * Tree::kChildren + child, child_x, child_y, raisers);
      }
    }
  }

  /// Goes through the largest blocks in reach; the highest first where nothing is known of what raises the pixels.
  void Search(bool in_order_of_height, Raisers& raisers) {
    const D d;
    const auto lanes = static_cast<int>(hn::Lanes(d));
    constexpr int kSide = Tree::kSide[Tree::kTop];
    const V side = hn::Set(d, static_cast<float>(kSide));
    const float reach = radius_ - 1.0F;
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
  ProfileOf profile_;
  float radius_;
  float reach_;
  float range_;
  float inverse_;

  float left_ = 0.0F;
  float right_ = 0.0F;
  float top_ = 0.0F;
  float bottom_ = 0.0F;
  float least_w_ = 0.0F;
  std::vector<int> blocks_;
};

template <class ProfileOf>
void ComputeRowsAs(const Field& field, const Tree& tree, int from, int to, float* output) {
  Leaf<ProfileOf> leaf(field, tree);
  Raisers raisers;
  for (int x = 0; x < field.width; x += kLeafColumns) {
    ScEng::PollCancellation();
    for (int y = from; y < to; y += kLeafRows) leaf.Compute(x, y, std::min(kLeafRows, to - y), raisers, output);
  }
}

void ComputeRowsFast(const Field& field, const Tree& tree, int from, int to, float* output) {
  if (field.high < field.low) return ComputeRowsAs<Flat>(field, tree, from, to, output);
  switch (field.profile) {
    case ReliefProfile::kLinear: return ComputeRowsAs<Linear>(field, tree, from, to, output);
    case ReliefProfile::kSmooth: return ComputeRowsAs<Smooth>(field, tree, from, to, output);
    case ReliefProfile::kArcOut: return ComputeRowsAs<ArcOut>(field, tree, from, to, output);
    case ReliefProfile::kArcIn: return ComputeRowsAs<ArcIn>(field, tree, from, to, output);
  }
}

/// How much higher than a bump another must be, for each radius between them, to cover it everywhere; infinity where no
/// height is enough.
///
/// With w(q, d) = q * level(d / (r q)), growing q by e and d by r e / s leaves w no lower where s is at least the
/// largest of -level'(t) / (level(t) - t * level'(t)). That is 1 for the cone, t for the dome and 6t / (1 + t + 4t^2),
/// at most 1.2, for the bell. The slope of the spike is infinite.
float GetCoveringSlope(const Field& field) {
  if (field.high < field.low) return std::numeric_limits<float>::infinity();
  switch (field.profile) {
    case ReliefProfile::kLinear:
    case ReliefProfile::kArcOut: return 1.0F;
    case ReliefProfile::kSmooth: return 1.2F;
    case ReliefProfile::kArcIn: break;
  }
  return std::numeric_limits<float>::infinity();
}

/// Fills a tree, row by row of its plane.
class TreeBuilder {
 public:
  TreeBuilder(const Field& field, Tree& tree)
      : field_(field),
        tree_(tree),
        width_(static_cast<std::size_t>(tree.columns) * kBlock),
        columns_(MapPlane(tree.columns, tree.pad, field.width, field.wrap)),
        rows_(MapPlane(tree.rows, tree.pad, field.height, field.wrap)),
        slope_(GetCoveringSlope(field) / static_cast<float>(field.radius_px)),
        kept_(width_) {
    for (auto& row : window_) row.resize(width_ + 2 * kBorder);
  }

  void Build() {
    LoadRow(0, window_[1]);
    ScEng::ProgressPass pass(rows_.size());
    for (std::size_t y = 0; y < rows_.size(); ++y) {
      pass.Step();
      if (y + 1 < rows_.size()) {
        LoadRow(y + 1, window_[2]);
      } else {
        std::fill(window_[2].begin(), window_[2].end(), 0.0F);
      }
      DropCovered();
      StoreRow(y);
      if (y % kBlock == kBlock - 1) FillUpperLevels(y / kBlock);
      std::rotate(window_.begin(), window_.begin() + 1, window_.end());
    }
  }

 private:
  static constexpr std::size_t kBlock = Tree::kSide[Tree::kTop];
  /// Zeros beside each row of the window.
  static constexpr std::size_t kBorder = 16;

  /// Where each column or row of the plane lies in the mask; -1 outside it.
  static std::vector<int> MapPlane(int blocks, int pad, int size, bool wrap) {
    std::vector<int> places(static_cast<std::size_t>(blocks) * kBlock);
    for (std::size_t i = 0; i < places.size(); ++i) {
      const int place = static_cast<int>(i) - pad;
      const int wrapped = ((place % size) + size) % size;
      places[i] = wrap ? wrapped : place >= 0 && place < size ? place : -1;
    }
    return places;
  }

  /// One row of the plane: q, or 0 where it is too small to raise another pixel than its own, from which each search
  /// starts, or NaN.
  void LoadRow(std::size_t y, std::vector<float>& row) const {
    if (rows_[y] < 0) {
      std::fill(row.begin(), row.end(), 0.0F);
      return;
    }
    const D d;
    const std::size_t lanes = hn::Lanes(d);
    const float inverse = std::abs(1.0F / (field_.high - field_.low));
    const float threshold = field_.high < field_.low ? 0.0F : 0.99F / static_cast<float>(field_.radius_px);
    const auto size = static_cast<std::size_t>(field_.width);
    const float* from = field_.mask + static_cast<std::size_t>(rows_[y]) * size;
    float* to = row.data() + kBorder;
    float* inside = to + tree_.pad;
    std::size_t x = 0;
    for (; x + lanes <= size; x += lanes) {
      const V q = hn::Mul(hn::Sub(hn::LoadU(d, from + x), hn::Set(d, field_.low)), hn::Set(d, inverse));
      hn::StoreU(hn::IfThenElseZero(hn::Gt(q, hn::Set(d, threshold)), q), d, inside + x);
    }
    for (; x < size; ++x) {
      const float q = (from[x] - field_.low) * inverse;
      inside[x] = q > threshold ? q : 0.0F;
    }
    const auto fill = [&](std::size_t begin, std::size_t end) {
      for (std::size_t i = begin; i < end; ++i) to[i] = columns_[i] < 0 ? 0.0F : inside[columns_[i]];
    };
    fill(0, static_cast<std::size_t>(tree_.pad));
    fill(static_cast<std::size_t>(tree_.pad) + size, width_);
  }

  /// Keeps the middle row of the window without the bumps that their neighbours cover: wherever they raise a pixel, a
  /// neighbour raises it as far or further.
  ///
  /// One neighbour of eight covers a bump if it is higher by the slope; the margin is many times what rounding takes
  /// from its lead. On a field steeper than the bumps only the peaks are left. And four neighbours cover a bump if none
  /// is lower, since from any pixel one of them is nearer. Of a plateau only the edge is left.
  ///
  /// A neighbour above the range does not count, since the radius cuts its bump off.
  void DropCovered() {
    const D d;
    const std::size_t lanes = hn::Lanes(d);
    const V one = hn::Set(d, 1.0F);
    const V shrink = hn::Set(d, 1.0F - kMargin);
    const V beside = hn::Set(d, slope_ * (1.0F + kMargin));
    const V across = hn::Set(d, slope_ * 1.4142136F * (1.0F + kMargin));
    for (std::size_t x = 0; x < width_; x += lanes) {
      const auto load = [&](std::size_t row, std::size_t shift) {
        const V q = hn::LoadU(d, window_[row].data() + kBorder + x + shift - 1);
        return hn::IfThenElseZero(hn::Le(q, one), q);
      };
      const V left = load(1, 0);
      const V right = load(1, 2);
      const V above = load(0, 1);
      const V below = load(2, 1);
      const V best_beside = hn::Max(hn::Max(above, below), hn::Max(left, right));
      const V best_across = hn::Max(hn::Max(load(0, 0), load(0, 2)), hn::Max(load(2, 0), load(2, 2)));
      const V worst_beside = hn::Min(hn::Min(above, below), hn::Min(left, right));
      const V cover =
          hn::Max(hn::Sub(hn::Mul(best_beside, shrink), beside), hn::Sub(hn::Mul(best_across, shrink), across));
      const V q = hn::LoadU(d, window_[1].data() + kBorder + x);
      const M is_kept = hn::And(hn::Gt(q, cover), hn::Gt(q, worst_beside));
      hn::StoreU(hn::IfThenElseZero(is_kept, q), d, kept_.data() + x);
    }
  }

  void StoreRow(std::size_t y) {
    const float* row = kept_.data();
    constexpr std::size_t kSplit = Tree::kSplit;
    constexpr std::size_t kOfSmall = Tree::kChildren;
    constexpr std::size_t kOfMiddle = kOfSmall * Tree::kChildren;
    constexpr std::size_t kOfTop = kOfMiddle * Tree::kChildren;
    const auto columns = static_cast<std::size_t>(tree_.columns);
    const std::size_t in_block =
        y / 16 % kSplit * kSplit * kOfMiddle + y / 4 % kSplit * kSplit * kOfSmall + y % kSplit * kSplit;
    for (std::size_t top = 0; top < columns; ++top) {
      float* to = tree_.levels[0].get() + (y / kBlock * columns + top) * kOfTop + in_block;
      for (std::size_t middle = 0; middle < kSplit; ++middle) {
        for (std::size_t small = 0; small < kSplit; ++small, row += kSplit) {
          std::copy_n(row, kSplit, to + middle * kOfMiddle + small * kOfSmall);
        }
      }
    }
  }

  /// The levels above the pixels, in one row of the largest blocks.
  void FillUpperLevels(std::size_t block_row) {
    const D d;
    const std::size_t lanes = hn::Lanes(d);
    std::size_t count = static_cast<std::size_t>(tree_.columns) * Tree::kChildren * Tree::kChildren;
    for (std::size_t level = 1; level <= Tree::kTop; ++level, count /= Tree::kChildren) {
      const float* children = tree_.levels[level - 1].get() + block_row * count * Tree::kChildren;
      float* to = tree_.levels[level].get() + block_row * count;
      for (std::size_t i = 0; i < count; ++i, children += Tree::kChildren) {
        V highest = hn::Load(d, children);
        for (std::size_t k = lanes; k < Tree::kChildren; k += lanes)
          highest = hn::Max(highest, hn::Load(d, children + k));
        to[i] = hn::GetLane(hn::MaxOfLanes(d, highest));
      }
    }
  }

  const Field& field_;
  Tree& tree_;
  std::size_t width_;
  std::vector<int> columns_;
  std::vector<int> rows_;
  /// By how much of q a bump must be lower for each pixel of distance to be covered.
  float slope_;
  /// q in the row of the plane that is stored next, between the ones above and below it.
  std::array<std::vector<float>, 3> window_;
  std::vector<float> kept_;
};

void FillTree(const Field& field, Tree& tree) { TreeBuilder(field, tree).Build(); }

}  // namespace ReliefLevels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace ReliefLevels {
namespace {

HWY_EXPORT(FillTree);
HWY_EXPORT(ComputeRowsFast);

float GetLevel(ReliefProfile profile, float t) {
  const float u = 1.0F - t;
  switch (profile) {
    case ReliefProfile::kLinear: return u;
    case ReliefProfile::kSmooth: return (3.0F - 2.0F * u) * (u * u);
    case ReliefProfile::kArcOut: return std::sqrt(1.0F - t * t);
    case ReliefProfile::kArcIn: return 1.0F - std::sqrt(1.0F - u * u);
  }
  return u;
}

/// The place in [0, size) that a coordinate outside it stands for; -1 for none.
int GetPlace(int at, int size, bool wrap) {
  if (at >= 0 && at < size) return at;
  return wrap ? ((at % size) + size) % size : -1;
}

float ComputePixel(const Field& field, int x, int y, const float* distances) {
  const auto width = static_cast<std::size_t>(field.width);
  const float a = field.mask[static_cast<std::size_t>(y) * width + static_cast<std::size_t>(x)];
  if (a >= field.high) return a;
  const int r = field.radius_px;
  const auto radius = static_cast<float>(r);
  const float range = field.high - field.low;
  const float inverse = 1.0F / range;
  float result = field.low;
  for (int j = -r; j <= r; ++j) {
    const int source_y = GetPlace(y + j, field.height, field.wrap);
    for (int i = -r; i <= r; ++i, ++distances) {
      const int source_x = GetPlace(x + i, field.width, field.wrap);
      if (*distances >= radius || source_x < 0 || source_y < 0) continue;
      const float b = field.mask[static_cast<std::size_t>(source_y) * width + static_cast<std::size_t>(source_x)];
      const float q = (b - field.low) * inverse;
      const float quotient = *distances / (radius * q);
      const float positive = 0.0F < quotient ? quotient : 0.0F;
      const float t = positive < 1.0F ? positive : 1.0F;
      const float candidate = (GetLevel(field.profile, t) * q) * range + field.low;
      if (candidate > result) result = candidate;
    }
  }
  return result;
}

bool HasUsualRange(const Field& field) {
  const float range = field.high - field.low;
  return std::isfinite(field.low) && std::isfinite(field.high) && std::isfinite(range) && std::isfinite(1.0F / range);
}

/// Where both ends of the range are the same finite number, every candidate is NaN.
bool IsRangeEmpty(const Field& field) { return std::isfinite(field.low) && field.low == field.high; }

void ComputeRowsOfEmptyRange(const Field& field, int from, int to, float* output) {
  const auto width = static_cast<std::size_t>(field.width);
  for (std::size_t i = static_cast<std::size_t>(from) * width; i < static_cast<std::size_t>(to) * width; ++i) {
    const float a = field.mask[i];
    output[i] = !(field.grown[i] > 0.0F) ? 0.0F : a >= field.high ? a : field.low;
  }
}

int RoundUp(int value, int unit) { return (value + unit - 1) / unit * unit; }

}  // namespace

void ComputeRowsPlainly(const Field& field, int from, int to, float* output) {
  const int r = field.radius_px;
  std::vector<float> distances;
  distances.reserve(static_cast<std::size_t>(2 * r + 1) * static_cast<std::size_t>(2 * r + 1));
  for (int j = -r; j <= r; ++j) {
    for (int i = -r; i <= r; ++i) distances.push_back(std::sqrt(static_cast<float>(i * i + j * j)));
  }
  for (int y = from; y < to; ++y) {
    for (int x = 0; x < field.width; ++x) {
      ScEng::PollCancellation();
      const auto at = static_cast<std::size_t>(y) * static_cast<std::size_t>(field.width) + static_cast<std::size_t>(x);
      output[at] = field.grown[at] > 0.0F ? ComputePixel(field, x, y, distances.data()) : 0.0F;
    }
  }
}

Analysis::Analysis(const Field& field) : field_(field) {
  if (field.width == 0 || field.height == 0 || field.radius_px == 0 || !HasUsualRange(field)) return;
  tree_ = std::make_unique<Tree>();
  constexpr int kUnit = Tree::kSide[Tree::kTop];
  tree_->pad = field.wrap ? RoundUp(field.radius_px, kUnit) : 0;
  tree_->columns = RoundUp(field.width + 2 * tree_->pad, kUnit) / kUnit;
  tree_->rows = RoundUp(field.height + 2 * tree_->pad, kUnit) / kUnit;
  std::size_t entries = static_cast<std::size_t>(tree_->columns) * static_cast<std::size_t>(tree_->rows);
  for (int level = Tree::kTop; level >= 0; --level) {
    auto& place = tree_->levels[static_cast<std::size_t>(level)];
    place = hwy::AllocateAligned<float>(entries + Tree::kReadAhead);
    if (!place) throw std::bad_alloc();
    std::fill_n(place.get() + entries, Tree::kReadAhead, 0.0F);
    entries *= Tree::kChildren;
  }
  HWY_DYNAMIC_DISPATCH(FillTree)(field, *tree_);
}

Analysis::~Analysis() = default;

void Analysis::ComputeRows(int from, int to, float* output) const {
  if (tree_) {
    HWY_DYNAMIC_DISPATCH(ComputeRowsFast)(field_, *tree_, from, to, output);
  } else if (IsRangeEmpty(field_)) {
    ComputeRowsOfEmptyRange(field_, from, to, output);
  } else {
    ComputeRowsPlainly(field_, from, to, output);
  }
}

}  // namespace ReliefLevels
#endif
