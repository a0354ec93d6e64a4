// SPDX-License-Identifier: Apache-2.0
//
// The pixels of one small group: where they lie, what they hold, and what is written in the end.
//
// Included once per instruction set, between HWY_BEFORE_NAMESPACE and HWY_AFTER_NAMESPACE of the source that uses it;
// see Highway's quick reference on `foreach_target.h`.

#if defined(VALUE_NODES_RELIEF_PIXELS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef VALUE_NODES_RELIEF_PIXELS_INL_H_
#undef VALUE_NODES_RELIEF_PIXELS_INL_H_
#else
#define VALUE_NODES_RELIEF_PIXELS_INL_H_
#endif

#include <hwy/highway.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>

#include "Value/Nodes/Relief/ReliefBumps-inl.h"
#include "Value/Nodes/Relief/ReliefField.h"
#include "Value/Nodes/Relief/ReliefPlanes-inl.h"
#include "Value/Nodes/Relief/ReliefRaisers.h"
#include "Value/Nodes/Relief/ReliefTree.h"

HWY_BEFORE_NAMESPACE();
namespace ReliefLevels::HWY_NAMESPACE {
/// The pixels of one group after the other, whatever the profile.
class Pixels {
 protected:
  Pixels(const Field& field, const Tree& tree)
      : field_(field),
        tree_(tree),
        radius_(static_cast<float>(field.radius_px)),
        is_exact_(radius_ <= kLargestExact || !SpansMore(tree, kLargestExact)),
        limit_(is_exact_ ? radius_ : radius_ * (1.0F + kMargin)),
        reach_(limit_ * limit_),
        range_(std::abs(field.high - field.low)),
        inverse_(std::abs(1.0F / (field.high - field.low))) {}

  /// Each pixel starts from its own bump, so that what raises it is one pixel away at least.
  static constexpr float kNearest = 1.0F;
  static constexpr float kDone = std::numeric_limits<float>::infinity();
  /// Squares of whole distances up to this are exact in single precision.
  static constexpr float kLargestExact = 4096.0F;

  /// Loads the pixels of columns [x, x + 8) and rows [y, y + count), the columns only as far as the image goes. Those
  /// that nothing can raise, since they keep their value or become 0, hold infinity.
  void Load(int x, int y, int count) {
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
      }
    }
    const std::size_t pixels = static_cast<std::size_t>(count) * kLeafColumns;
    for (std::size_t i = pixels; i < kLeafPixels; i += lanes) hn::Store(done, d, w_.data() + i);
  }

  [[nodiscard]] bool IsInReach(const Bump& bump) const {
    const float x = std::max({0.0F, bump.x - right_, left_ - bump.x});
    const float y = std::max({0.0F, bump.y - bottom_, top_ - bump.y});
    return x * x + y * y < reach_;
  }

  /// The squares of the distances from blocks of a side, with their corners at (x, y), to the group.
  HWY_INLINE V GetSquaresToGroup(V x, V y, float side) const {
    const D d;
    const V zero = hn::Zero(d);
    const V far = hn::Set(d, side - 1.0F);
    const V before_x = hn::Sub(hn::Set(d, left_), hn::Add(x, far));
    const V before_y = hn::Sub(hn::Set(d, top_), hn::Add(y, far));
    const V dx = hn::Max(zero, hn::Max(before_x, hn::Sub(x, hn::Set(d, right_))));
    const V dy = hn::Max(zero, hn::Max(before_y, hn::Sub(y, hn::Set(d, bottom_))));
    return hn::Max(hn::Add(Square(dx), Square(dy)), hn::Set(d, kNearest));
  }

  /// The squares of distances rounded once, of distances that are too large to be squared and added without rounding.
  [[nodiscard]] V GetRoundedSquares(const Bump& bump, std::size_t column, std::size_t row) const {
    const D d;
    const double dx = static_cast<double>(left_ + static_cast<float>(column)) - static_cast<double>(bump.x);
    const double dy = static_cast<double>(top_ + static_cast<float>(row)) - static_cast<double>(bump.y);
    alignas(64) std::array<float, kLeafColumns> squares{};
    for (std::size_t i = 0; i < hn::Lanes(d); ++i) {
      const double step = dx + static_cast<double>(i);
      squares[i] = static_cast<float>(step * step + dy * dy);
    }
    return hn::Load(d, squares.data());
  }

  /// Writes the samples of the group that was loaded from the same place.
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

  // Of each pixel, row by row: its value, whether it is computed, and w so far.
  alignas(64) std::array<float, kLeafPixels> values_{};
  alignas(64) std::array<float, kLeafPixels> grown_{};
  alignas(64) std::array<float, kLeafPixels> w_{};

  const Field& field_;
  const Tree& tree_;
  float radius_;
  /// Whether all squared distances that matter are exact in single precision.
  bool is_exact_;
  /// The radius, and its square, of what is looked at more closely.
  float limit_;
  float reach_;
  float range_;
  float inverse_;

  // The outermost pixels in the tree's plane.
  float left_ = 0.0F;
  float right_ = 0.0F;
  float top_ = 0.0F;
  float bottom_ = 0.0F;

 private:
  /// Whether two pixels of the plane may be further apart than a distance.
  static bool SpansMore(const Tree& tree, float distance) {
    const float width = static_cast<float>(tree.columns) * static_cast<float>(Tree::kSide[Tree::kTop]);
    const float height = static_cast<float>(tree.rows) * static_cast<float>(Tree::kSide[Tree::kTop]);
    return width * width + height * height > distance * distance;
  }

  /// Row of a group; in `buffer`, filled up with zeros, where the group sticks out of the image.
  const float* GetRow(const float* samples, int x, int y, int columns, float* buffer) const {
    const float* row = samples + static_cast<std::size_t>(y) * static_cast<std::size_t>(field_.width) + x;
    if (columns == kLeafColumns) return row;
    std::fill(std::copy(row, row + columns, buffer), buffer + kLeafColumns, 0.0F);
    return buffer;
  }
};
}  // namespace ReliefLevels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
