// SPDX-License-Identifier: Apache-2.0
//
// Planes above the bumps of a block and below what a group of pixels holds. Ground is flat in the small, so that two
// planes say far more of a block and a group than the highest and the least number do: bumps raise the pixels that lie
// down the slope, and there the highest bump of a block is the furthest away.
//
// Included once per instruction set, between HWY_BEFORE_NAMESPACE and HWY_AFTER_NAMESPACE of the source that uses it;
// see Highway's quick reference on `foreach_target.h`.

#if defined(VALUE_NODES_RELIEF_PLANES_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef VALUE_NODES_RELIEF_PLANES_INL_H_
#undef VALUE_NODES_RELIEF_PLANES_INL_H_
#else
#define VALUE_NODES_RELIEF_PLANES_INL_H_
#endif

#include <hwy/highway.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>

#include "Value/Nodes/Relief/ReliefBumps-inl.h"
#include "Value/Nodes/Relief/ReliefTree.h"

HWY_BEFORE_NAMESPACE();
namespace ReliefLevels::HWY_NAMESPACE {

// The pixels of a group.
constexpr int kLeafColumns = 8;
constexpr int kLeafRows = 5;
constexpr std::size_t kLeafPixels = std::size_t{kLeafColumns} * kLeafRows;

/// height + slope_x * dx + slope_y * dy at (dx, dy) from the middle of something.
struct Plane {
  float height = 0.0F;
  float slope_x = 0.0F;
  float slope_y = 0.0F;
};

// The columns and rows of a block's children.
alignas(64) inline constexpr std::array<float, Tree::kChildren> kChildColumns = {0, 1, 2, 3, 0, 1, 2, 3,
                                                                                 0, 1, 2, 3, 0, 1, 2, 3};
alignas(64) inline constexpr std::array<float, Tree::kChildren> kChildRows = {0, 0, 0, 0, 1, 1, 1, 1,
                                                                              2, 2, 2, 2, 3, 3, 3, 3};
inline constexpr float kMiddleChild = (Tree::kSplit - 1) / 2.0F;

/// How far the children from place i on are from the middle of their block, in units of their sides.
HWY_INLINE V FromMiddleX(std::size_t i) {
  return hn::Sub(hn::Load(D(), kChildColumns.data() + i), hn::Set(D(), kMiddleChild));
}
HWY_INLINE V FromMiddleY(std::size_t i) {
  return hn::Sub(hn::Load(D(), kChildRows.data() + i), hn::Set(D(), kMiddleChild));
}

HWY_INLINE float GetSum(V v) { return hn::GetLane(hn::SumOfLanes(D(), v)); }

inline bool HasFiniteSlopes(const Plane& plane) { return std::isfinite(plane.slope_x) && std::isfinite(plane.slope_y); }

/// The lowest plane with the slopes of `slopes` that is above all bumps of a block of level 1.
HWY_INLINE Plane RaiseAboveBumps(const Plane& slopes, const float* bumps, float highest) {
  if (!HasFiniteSlopes(slopes)) return {.height = highest};
  const D d;
  V height = hn::Set(d, std::numeric_limits<float>::lowest());
  for (std::size_t i = 0; i < Tree::kChildren; i += hn::Lanes(d)) {
    const V q = hn::Load(d, bumps + i);
    V above = hn::NegMulAdd(hn::Set(d, slopes.slope_x), FromMiddleX(i), q);
    above = hn::NegMulAdd(hn::Set(d, slopes.slope_y), FromMiddleY(i), above);
    height = hn::IfThenElse(hn::Gt(q, hn::Zero(d)), hn::Max(height, above), height);
  }
  return {hn::GetLane(hn::MaxOfLanes(d, height)), slopes.slope_x, slopes.slope_y};
}

/// A plane above the bumps of a block of level 1, parallel to the one with the least squares of distances. Bumps that
/// are not kept do not count. `highest` is the highest of them.
inline Plane FitPlaneToBumps(const float* bumps, float highest) {
  if (!(highest > 0.0F)) return {};
  const D d;
  const V zero = hn::Zero(d);
  V count = zero;
  V sum = zero;
  V sum_x = zero;
  V sum_y = zero;
  for (std::size_t i = 0; i < Tree::kChildren; i += hn::Lanes(d)) {
    const V q = hn::Load(d, bumps + i);
    count = hn::Add(count, hn::IfThenElseZero(hn::Gt(q, zero), hn::Set(d, 1.0F)));
    sum = hn::Add(sum, q);
    sum_x = hn::MulAdd(q, FromMiddleX(i), sum_x);
    sum_y = hn::MulAdd(q, FromMiddleY(i), sum_y);
  }
  const float kept = GetSum(count);
  if (kept == static_cast<float>(Tree::kChildren)) {
    // Most blocks are so, and take less. The sum of the squares of FromMiddleX, and of FromMiddleY.
    constexpr float kSquares = 20.0F;
    return RaiseAboveBumps({0.0F, GetSum(sum_x) / kSquares, GetSum(sum_y) / kSquares}, bumps, highest);
  }
  const V mean = hn::Set(d, GetSum(sum) / kept);
  V squares_x = zero;
  V squares_y = zero;
  sum_x = zero;
  sum_y = zero;
  for (std::size_t i = 0; i < Tree::kChildren; i += hn::Lanes(d)) {
    const V q = hn::Load(d, bumps + i);
    const M is_kept = hn::Gt(q, zero);
    const V x = hn::IfThenElseZero(is_kept, FromMiddleX(i));
    const V y = hn::IfThenElseZero(is_kept, FromMiddleY(i));
    squares_x = hn::MulAdd(x, x, squares_x);
    squares_y = hn::MulAdd(y, y, squares_y);
    sum_x = hn::MulAdd(hn::Sub(q, mean), x, sum_x);
    sum_y = hn::MulAdd(hn::Sub(q, mean), y, sum_y);
  }
  // A few bumps say little of a slope.
  constexpr float kFewSquares = 5.0F;
  const float slope_x = GetSum(sum_x) / std::max(GetSum(squares_x), kFewSquares);
  const float slope_y = GetSum(sum_y) / std::max(GetSum(squares_y), kFewSquares);
  return RaiseAboveBumps({0.0F, slope_x, slope_y}, bumps, highest);
}

/// A plane above those of the children of a block of level 2, with the mean of their slopes. `highest_of_children` are
/// their highest bumps, and `highest` is the highest of all.
inline Plane FitPlaneToPlanes(const float* highest_of_children, float highest, const Tree::Planes& planes,
                              std::size_t block) {
  if (!(highest > 0.0F)) return {};
  const D d;
  const V zero = hn::Zero(d);
  const float* heights = planes.height.get() + block * Tree::kChildren;
  const float* slopes_x = planes.slope_x.get() + block * Tree::kChildren;
  const float* slopes_y = planes.slope_y.get() + block * Tree::kChildren;
  V count = zero;
  V sum_x = zero;
  V sum_y = zero;
  for (std::size_t i = 0; i < Tree::kChildren; i += hn::Lanes(d)) {
    const M is_kept = hn::Gt(hn::Load(d, highest_of_children + i), zero);
    count = hn::Add(count, hn::IfThenElseZero(is_kept, hn::Set(d, 1.0F)));
    sum_x = hn::Add(sum_x, hn::Load(d, slopes_x + i));
    sum_y = hn::Add(sum_y, hn::Load(d, slopes_y + i));
  }
  const float kept = GetSum(count);
  const Plane mean = {0.0F, GetSum(sum_x) / kept, GetSum(sum_y) / kept};
  if (!HasFiniteSlopes(mean)) return {.height = highest};
  const V slope_x = hn::Set(d, mean.slope_x);
  const V slope_y = hn::Set(d, mean.slope_y);
  constexpr auto kSide = static_cast<float>(Tree::kSide[1]);
  V height = hn::Set(d, std::numeric_limits<float>::lowest());
  for (std::size_t i = 0; i < Tree::kChildren; i += hn::Lanes(d)) {
    const V more_x = hn::Abs(hn::Sub(hn::Load(d, slopes_x + i), slope_x));
    const V more_y = hn::Abs(hn::Sub(hn::Load(d, slopes_y + i), slope_y));
    const V half = hn::Set(d, (kSide - 1.0F) / 2.0F);
    V above = hn::MulAdd(half, hn::Add(more_x, more_y), hn::Load(d, heights + i));
    above = hn::NegMulAdd(slope_x, hn::Mul(FromMiddleX(i), hn::Set(d, kSide)), above);
    above = hn::NegMulAdd(slope_y, hn::Mul(FromMiddleY(i), hn::Set(d, kSide)), above);
    const M is_kept = hn::Gt(hn::Load(d, highest_of_children + i), zero);
    height = hn::IfThenElse(is_kept, hn::Max(height, above), height);
  }
  return {hn::GetLane(hn::MaxOfLanes(d, height)), mean.slope_x, mean.slope_y};
}

/// A plane that is nowhere above what a group of pixels holds, around the group's middle.
class GroupPlane {
 public:
  /// From the middle of a group to its outermost pixels.
  static constexpr float kHalfWidth = (kLeafColumns - 1) / 2.0F;
  static constexpr float kHalfHeight = (kLeafRows - 1) / 2.0F;

  /// Takes the highest such plane that is parallel to the one with the least squares of distances. `w` are the numbers
  /// of the group row by row, infinite for pixels that nothing can raise.
  void Fit(const float* w) {
    const D d;
    V sum_x = hn::Zero(d);
    V sum_y = hn::Zero(d);
    for (std::size_t i = 0; i < kLeafColumns; i += hn::Lanes(d)) {
      V sum = hn::Zero(d);
      for (std::size_t row = 0; row < kLeafRows; ++row) {
        const V of_row = hn::Load(d, w + row * kLeafColumns + i);
        sum = hn::Add(sum, of_row);
        sum_y = hn::MulAdd(of_row, hn::Set(d, FromMiddleRow(row)), sum_y);
      }
      sum_x = hn::MulAdd(sum, FromMiddleColumn(i), sum_x);
    }
    // The sums of the squares of the columns' and the rows' distances from the middle.
    constexpr float kSquaresX = kLeafRows * kLeafColumns * (kLeafColumns * kLeafColumns - 1) / 12.0F;
    constexpr float kSquaresY = kLeafColumns * kLeafRows * (kLeafRows * kLeafRows - 1) / 12.0F;
    plane_ = {0.0F, GetSum(sum_x) / kSquaresX, GetSum(sum_y) / kSquaresY};
    if (!HasFiniteSlopes(plane_)) plane_ = {};
    V height = hn::Set(d, std::numeric_limits<float>::infinity());
    for (std::size_t i = 0; i < kLeafColumns; i += hn::Lanes(d)) {
      const V of_columns = hn::Mul(hn::Set(d, plane_.slope_x), FromMiddleColumn(i));
      for (std::size_t row = 0; row < kLeafRows; ++row) {
        const V of_row = hn::Set(d, plane_.slope_y * FromMiddleRow(row));
        height = hn::Min(height, hn::Sub(hn::Load(d, w + row * kLeafColumns + i), hn::Add(of_columns, of_row)));
      }
    }
    plane_.height = hn::GetLane(hn::MinOfLanes(d, height));
    size_ = std::abs(plane_.height) + kHalfWidth * std::abs(plane_.slope_x) + kHalfHeight * std::abs(plane_.slope_y);
  }

  /// Which children of a block, from place i on, hold only bumps that raise nothing. The first child is number `first`
  /// of level `kLevel`, and the group's middle is (from_x, from_y) from the block's corner.
  ///
  /// A bump at p raises the pixel at x only where radius * (of_q * q(p) - of_w * w(x)) > of_way * d0 * |x - p|, by the
  /// tangent between the middles, which are d0 apart. For q the child's plane stands, for w this one, and |x - p| is at
  /// least d0 plus what the steps from the middles add along the line between them, since it is convex. What is left is
  /// linear in both steps and largest at corners.
  template <int kLevel, class ProfileOf>
  HWY_INLINE M AreBelow(const ProfileOf& profile, float radius_px, const Held& held, const Tree& tree,
                        std::size_t first, std::size_t i, float from_x, float from_y) const {
    const D d;
    constexpr auto kSide = static_cast<float>(Tree::kSide[kLevel]);
    constexpr float kHalf = (kSide - 1.0F) / 2.0F;
    const Tree::Planes& planes = tree.planes[kLevel - 1];
    const V height = hn::Load(d, planes.height.get() + first + i);
    const V slope_x = hn::Load(d, planes.slope_x.get() + first + i);
    const V slope_y = hn::Load(d, planes.slope_y.get() + first + i);
    const V side = hn::Set(d, kSide);
    const V dx = hn::NegMulAdd(hn::Load(d, kChildColumns.data() + i), side, hn::Set(d, from_x - kHalf));
    const V dy = hn::NegMulAdd(hn::Load(d, kChildRows.data() + i), side, hn::Set(d, from_y - kHalf));
    const V d2 = hn::Add(Square(dx), Square(dy));
    const Tangent tangent = profile.GetTangent(height, hn::Load(d, tree.levels[kLevel].get() + first + i), d2, held);
    const V radius = hn::Set(d, radius_px);
    const V of_q = hn::Mul(radius, tangent.of_q);
    const V of_w = hn::Mul(radius, tangent.of_w);
    const V way_x = hn::Mul(tangent.of_way, dx);
    const V way_y = hn::Mul(tangent.of_way, dy);
    const V of_child = GetMost(hn::MulAdd(of_q, slope_x, way_x), hn::MulAdd(of_q, slope_y, way_y), kHalf, kHalf);
    const V of_group = GetMost(hn::MulAdd(of_w, hn::Set(d, plane_.slope_x), way_x),
                               hn::MulAdd(of_w, hn::Set(d, plane_.slope_y), way_y), kHalfWidth, kHalfHeight);
    V excess = hn::NegMulAdd(of_w, hn::Set(d, plane_.height), hn::Mul(of_q, height));
    excess = hn::NegMulAdd(tangent.of_way, d2, excess);
    excess = hn::Add(excess, hn::Add(of_child, of_group));
    // Rounding takes less than a part of the margin from each number that went in. NaN and infinity, where numbers
    // were too large on the way, rule nothing out.
    const V size = hn::Add(hn::Add(hn::Abs(height), hn::Set(d, size_)), GetMost(slope_x, slope_y, kHalf, kHalf));
    const M is_below = hn::Lt(excess, hn::Mul(size, hn::Set(d, -4.0F * kMargin * radius_px)));
    return hn::And(is_below, hn::IsFinite(excess));
  }

 private:
  static HWY_INLINE V FromMiddleColumn(std::size_t i) { return hn::Iota(D(), static_cast<float>(i) - kHalfWidth); }
  static HWY_INLINE float FromMiddleRow(std::size_t row) { return static_cast<float>(row) - kHalfHeight; }
  /// The most that slopes add up to so far from a middle.
  static HWY_INLINE V GetMost(V slope_x, V slope_y, float half_x, float half_y) {
    return hn::MulAdd(hn::Set(D(), half_x), hn::Abs(slope_x), hn::Mul(hn::Set(D(), half_y), hn::Abs(slope_y)));
  }

  Plane plane_;
  /// The sizes of the numbers in it.
  float size_ = 0.0F;
};
}  // namespace ReliefLevels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
