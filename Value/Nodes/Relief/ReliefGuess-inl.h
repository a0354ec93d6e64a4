// SPDX-License-Identifier: Apache-2.0
//
// A guess before the search: on smooth ground the bumps that raise neighbouring pixels most lie nearly the same step
// away from each. Pixels that are raised first make the search short, since it only looks for what is still higher.
//
// Included once per instruction set, between HWY_BEFORE_NAMESPACE and HWY_AFTER_NAMESPACE of the source that uses it;
// see Highway's quick reference on `foreach_target.h`.

#if defined(VALUE_NODES_RELIEF_GUESS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef VALUE_NODES_RELIEF_GUESS_INL_H_
#undef VALUE_NODES_RELIEF_GUESS_INL_H_
#else
#define VALUE_NODES_RELIEF_GUESS_INL_H_
#endif

#include <hwy/highway.h>

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "Value/Nodes/Relief/ReliefBumps-inl.h"
#include "Value/Nodes/Relief/ReliefField.h"
#include "Value/Nodes/Relief/ReliefPlanes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ReliefLevels::HWY_NAMESPACE {

/// Raises the pixels of a group by the bumps about one step away, and follows that step from group to group.
///
/// Bumps are compared by reciprocals that are not exact, and what a pixel takes is computed by the definition. So a
/// guess never raises a pixel further than the definition does, and the search after it finds what is missing.
template <class ProfileOf>
class Guess {
 public:
  Guess(const Field& field, const ProfileOf& profile)
      : field_(field),
        profile_(profile),
        radius_(static_cast<float>(field.radius_px)),
        inverse_(std::abs(1.0F / (field.high - field.low))) {}

  /// Raises pixels of the whole group whose corner is at (x, y) in the mask. `w` is what they hold row by row, infinite
  /// for those that nothing can raise. Returns how many rows have been raised: none where the samples to look at would
  /// end outside the mask.
  int RaisePixels(int x, int y, float* w) {
    FollowStep(x + kLeafColumns / 2, y + kLeafRows / 2);
    if (!LoadPatch(x + step_x_ - kAround, y + step_y_ - kAround)) return 0;
    FindDistances();
    int raised = 0;
    for (int row = 0; row < kLeafRows; ++row) raised += static_cast<int>(RaiseRow(row, w + row * kLeafColumns));
    return raised;
  }

 private:
  /// How many steps are tried on each side of the best one of the group's middle.
  static constexpr int kAround = 2;
  static constexpr int kSteps = 2 * kAround + 1;
  /// How far from the last group's step that of the middle is looked for.
  static constexpr int kFollowed = 8;
  /// The samples that the pixels of a group look at, in whole vectors.
  static constexpr int kPatchRows = kLeafRows + kSteps - 1;
  static constexpr int kPatchColumns = 2 * kLeafColumns;
  static_assert(kLeafColumns + kSteps - 1 <= kPatchColumns);

  [[nodiscard]] bool IsInside(int x, int y, int columns, int rows) const {
    return x >= 0 && y >= 0 && columns <= field_.width - x && rows <= field_.height - y;
  }

  [[nodiscard]] const float* GetSamples(int x, int y) const {
    return field_.mask + static_cast<std::size_t>(y) * static_cast<std::size_t>(field_.width) + x;
  }

  /// q of some samples; 0, which raises nothing, for those below the range. A NaN loses every comparison.
  HWY_INLINE V GetQ(const float* samples) const {
    const D d;
    const V q = hn::Mul(hn::Sub(hn::LoadU(d, samples), hn::Set(d, field_.low)), hn::Set(d, inverse_));
    return hn::ZeroIfNegative(q);
  }
  /// One over the width of a bump, nearly.
  HWY_INLINE V GetInverseWidth(V q) const {
    return hn::Mul(hn::ApproximateReciprocal(q), hn::Set(D(), 1.0F / radius_));
  }
  HWY_INLINE V GetHeight(V q, V t) const { return hn::Mul(profile_.Level(hn::Min(t, hn::Set(D(), 1.0F))), q); }

  /// Moves the step to the bump that raises the pixel at (x, y) most, of those near the step; back to zero if there are
  /// none, or the mask or the radius ends there. Steps are shorter than a row of the mask, so that no sum overflows.
  HWY_INLINE void FollowStep(int x, int y) {
    const D d;
    const int from_x = step_x_ - kFollowed;
    const int from_y = step_y_ - kFollowed;
    step_x_ = 0;
    step_y_ = 0;
    if (!IsInside(x + from_x, y + from_y, 2 * kFollowed, 2 * kFollowed + 1)) return;
    const float* samples = GetSamples(x + from_x, y + from_y);
    V highest = hn::Zero(d);
    alignas(64) std::array<float, 2 * kFollowed> highest_of_columns;
    alignas(64) std::array<float, 2 * kFollowed> rows;
    for (std::size_t i = 0; i < rows.size(); i += hn::Lanes(d)) {
      const V dx2 = Square(hn::Iota(d, static_cast<float>(from_x) + static_cast<float>(i)));
      V highest_of_column = hn::Zero(d);
      V best_row = hn::Zero(d);
      for (int row = 0; row <= 2 * kFollowed; ++row) {
        const V q = GetQ(samples + static_cast<std::size_t>(row) * static_cast<std::size_t>(field_.width) + i);
        const V distance = hn::Sqrt(hn::Add(dx2, Square(hn::Set(d, static_cast<float>(from_y + row)))));
        const V height = GetHeight(q, hn::Mul(distance, GetInverseWidth(q)));
        const M is_higher = hn::Gt(height, highest_of_column);
        highest_of_column = hn::IfThenElse(is_higher, height, highest_of_column);
        best_row = hn::IfThenElse(is_higher, hn::Set(d, static_cast<float>(row)), best_row);
      }
      highest = hn::Max(highest, highest_of_column);
      hn::Store(highest_of_column, d, highest_of_columns.data() + i);
      hn::Store(best_row, d, rows.data() + i);
    }
    const float most = hn::GetLane(hn::MaxOfLanes(d, highest));
    if (!(most > 0.0F)) return;
    for (std::size_t i = 0; i < rows.size(); ++i) {
      if (highest_of_columns[i] < most) continue;
      const int step_x = from_x + static_cast<int>(i);
      const int step_y = from_y + static_cast<int>(rows[i]);
      if (!(GetDistance(step_x, step_y) < radius_)) return;
      step_x_ = step_x;
      step_y_ = step_y;
      return;
    }
  }

  /// Loads the bumps around the step of all pixels of a group, from (x, y) on; false if the mask ends there.
  HWY_INLINE bool LoadPatch(int x, int y) {
    if (!IsInside(x, y, kPatchColumns, kPatchRows)) return false;
    const D d;
    for (std::size_t row = 0; row < kPatchRows; ++row) {
      const float* samples = GetSamples(x, y + static_cast<int>(row));
      for (std::size_t i = 0; i < kPatchColumns; i += hn::Lanes(d)) {
        const V q = GetQ(samples + i);
        hn::Store(q, d, q_.data() + row * kPatchColumns + i);
        hn::Store(GetInverseWidth(q), d, inverse_widths_.data() + row * kPatchColumns + i);
      }
    }
    return true;
  }

  /// The distance of a step as the definition rounds it.
  static float GetDistance(int x, int y) {
    return std::sqrt(static_cast<float>(std::int64_t{x} * x + std::int64_t{y} * y));
  }

  /// The distances of the steps that are tried.
  HWY_INLINE void FindDistances() {
    std::size_t i = 0;
    for (int y = -kAround; y <= kAround; ++y) {
      for (int x = -kAround; x <= kAround; ++x) distances_[i++] = GetDistance(step_x_ + x, step_y_ + y);
    }
  }

  /// Raises one row of a group; says whether a pixel was raised.
  HWY_INLINE bool RaiseRow(int row, float* w) const {
    const D d;
    const V zero = hn::Zero(d);
    bool raised = false;
    for (std::size_t i = 0; i < kLeafColumns; i += hn::Lanes(d)) {
      const V held = hn::Load(d, w + i);
      V highest = held;
      V best_q = zero;
      V best_distance = zero;
      const float* distance_of = distances_.data();
      for (int step_y = 0; step_y < kSteps; ++step_y) {
        std::size_t at = static_cast<std::size_t>(row + step_y) * kPatchColumns + i;
        for (int step_x = 0; step_x < kSteps; ++step_x, ++at, ++distance_of) {
          const V q = hn::LoadU(d, q_.data() + at);
          const V distance = hn::Set(d, *distance_of);
          const V height = GetHeight(q, hn::Mul(distance, hn::LoadU(d, inverse_widths_.data() + at)));
          const M is_higher = hn::Gt(height, highest);
          highest = hn::IfThenElse(is_higher, height, highest);
          best_q = hn::IfThenElse(is_higher, q, best_q);
          best_distance = hn::IfThenElse(is_higher, distance, best_distance);
        }
      }
      const V height = GetHeight(best_q, hn::Div(best_distance, hn::Mul(hn::Set(d, radius_), best_q)));
      const M is_in_reach = hn::Lt(best_distance, hn::Set(d, radius_));
      const M is_higher = hn::And(is_in_reach, hn::Gt(height, held));
      if (hn::AllFalse(d, is_higher)) continue;
      hn::Store(hn::IfThenElse(is_higher, height, held), d, w + i);
      raised = true;
    }
    return raised;
  }

  const Field& field_;
  const ProfileOf& profile_;
  float radius_;
  float inverse_;
  /// From a pixel to the bumps that are tried around.
  int step_x_ = 0;
  int step_y_ = 0;
  alignas(64) std::array<float, kPatchRows * kPatchColumns> q_{};
  alignas(64) std::array<float, kPatchRows * kPatchColumns> inverse_widths_{};
  std::array<float, kSteps * kSteps> distances_{};
};
}  // namespace ReliefLevels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
