// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/Relief/ReliefTree.h"

// Highway compiles the part between HWY_BEFORE_NAMESPACE and HWY_AFTER_NAMESPACE once per instruction set and calls
// the best one that the processor has.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Value/Nodes/Relief/ReliefTree.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <new>
#include <vector>

#include "Host/Math/Border.h"
#include "Host/Util/Cancellation.h"
#include "Host/Util/ParallelRows.h"
#include "Value/Nodes/Relief/ReliefBumps-inl.h"
#include "Value/Nodes/Relief/ReliefPlanes-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ReliefLevels::HWY_NAMESPACE {
namespace {

/// How much higher than a bump another must be, for each radius between them, to cover it everywhere; infinity where no
/// height is enough.
///
/// With w(q, d) = q * level(d / (r q)), growing q by e and d by r e / s leaves w no lower where s is at least the
/// largest of -level'(t) / (level(t) - t * level'(t)). That is 1 for the cone, t for the dome and 6t / (1 + t + 4t^2),
/// at most 1.2, for the bell. The slope of the spike is infinite.
float GetCoveringSlope(const Field& field) {
  if (IsFlat(field)) return std::numeric_limits<float>::infinity();
  switch (field.profile) {
    case ReliefProfile::kLinear:
    case ReliefProfile::kArcOut: return 1.0F;
    case ReliefProfile::kSmooth: return 1.2F;
    case ReliefProfile::kArcIn: break;
  }
  return std::numeric_limits<float>::infinity();
}

constexpr std::size_t kBlock = Tree::kSide[Tree::kTop];

/// Where each column or row of the plane lies in the mask; -1 outside it.
std::vector<int> MapPlane(int blocks, int pad, int size, bool wrap) {
  std::vector<int> places(static_cast<std::size_t>(blocks) * kBlock);
  for (std::size_t i = 0; i < places.size(); ++i) {
    const int place = static_cast<int>(i) - pad;
    places[i] = wrap ? ScEng::WrapIndex(place, size) : place >= 0 && place < size ? place : -1;
  }
  return places;
}

/// Fills rows of the largest blocks of a tree, row by row of its plane.
class TreeBuilder {
 public:
  /// `columns` and `rows` say where the plane's lie in the mask.
  TreeBuilder(const Field& field, const std::vector<int>& columns, const std::vector<int>& rows, Tree& tree)
      : field_(field),
        tree_(tree),
        width_(columns.size()),
        columns_(columns),
        rows_(rows),
        slope_(GetCoveringSlope(field) / static_cast<float>(field.radius_px)),
        has_planes_(HasPlanes(field)),
        kept_(width_) {
    for (auto& row : window_) row.resize(width_ + 2 * kBorder);
  }

  /// Rows [from, to) of the largest blocks.
  void Build(std::size_t from, std::size_t to) {
    LoadRow(static_cast<std::ptrdiff_t>(from * kBlock) - 1, window_[0]);
    LoadRow(static_cast<std::ptrdiff_t>(from * kBlock), window_[1]);
    for (std::size_t y = from * kBlock; y < to * kBlock; ++y) {
      ScEng::PollCancellation();
      LoadRow(static_cast<std::ptrdiff_t>(y) + 1, window_[2]);
      DropCovered();
      StoreRow(y);
      if (y % kBlock == kBlock - 1) FillUpperLevels(y / kBlock);
      std::rotate(window_.begin(), window_.begin() + 1, window_.end());
    }
  }

 private:
  /// Zeros beside each row of the window.
  static constexpr std::size_t kBorder = 16;

  /// One row of the plane: q, or 0 where it is too small to raise another pixel than its own, from which each search
  /// starts, or NaN. Zeros above and below the plane.
  void LoadRow(std::ptrdiff_t row_of_plane, std::vector<float>& row) const {
    const auto y = static_cast<std::size_t>(row_of_plane);
    if (y >= rows_.size() || rows_[y] < 0) {
      std::fill(row.begin(), row.end(), 0.0F);
      return;
    }
    const D d;
    const std::size_t lanes = hn::Lanes(d);
    const float inverse = std::abs(1.0F / (field_.high - field_.low));
    const float threshold = IsFlat(field_) ? 0.0F : 0.99F / static_cast<float>(field_.radius_px);
    const auto size = static_cast<std::size_t>(field_.width);
    const float* from = field_.mask + static_cast<std::size_t>(rows_[y]) * size;
    float* to = row.data() + kBorder;
    float* inside = to + tree_.pad_x;
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
    fill(0, static_cast<std::size_t>(tree_.pad_x));
    fill(static_cast<std::size_t>(tree_.pad_x) + size, width_);
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
        if (!has_planes_) continue;
        const std::size_t block = block_row * count + i;
        if (level == 1) SetPlane(1, block, FitPlaneToBumps(children, to[i]));
        if (level == 2) SetPlane(2, block, FitPlaneToPlanes(children, to[i], tree_.planes[0], block));
      }
    }
  }

  void SetPlane(std::size_t level, std::size_t block, const Plane& plane) {
    const Tree::Planes& planes = tree_.planes[level - 1];
    planes.height[block] = plane.height;
    planes.slope_x[block] = plane.slope_x;
    planes.slope_y[block] = plane.slope_y;
  }

  const Field& field_;
  Tree& tree_;
  std::size_t width_;
  const std::vector<int>& columns_;
  const std::vector<int>& rows_;
  /// By how much of q a bump must be lower for each pixel of distance to be covered.
  float slope_;
  bool has_planes_;
  /// q in the row of the plane that is stored next, between the ones above and below it.
  std::array<std::vector<float>, 3> window_;
  std::vector<float> kept_;
};

void FillTree(const Field& field, Tree& tree) {
  const std::vector<int> columns = MapPlane(tree.columns, tree.pad_x, field.width, field.wrap);
  const std::vector<int> rows = MapPlane(tree.rows, tree.pad_y, field.height, field.wrap);
  ScEng::ParallelRows(static_cast<std::size_t>(tree.rows), 1, [&](std::size_t from, std::size_t to) {
    TreeBuilder(field, columns, rows, tree).Build(from, to);
  });
}

}  // namespace
}  // namespace ReliefLevels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace ReliefLevels {
namespace {

HWY_EXPORT(FillTree);

constexpr std::int64_t kUnit = Tree::kSide[Tree::kTop];

std::int64_t RoundUp(std::int64_t value) { return (value + kUnit - 1) / kUnit * kUnit; }

/// How far the plane goes beyond the mask along a side of `size` pixels.
///
/// Of all repetitions of a pixel the nearest one makes the highest candidate, so that half a size is enough. Only of
/// the bell a further one may be higher, by the rounding of the two factors of its level.
std::int64_t GetPad(const Field& field, int size) {
  if (!field.wrap) return 0;
  const bool falls_with_distance = IsFlat(field) || field.profile != ReliefProfile::kSmooth;
  return RoundUp(falls_with_distance ? std::min(field.radius_px, size / 2) : field.radius_px);
}

Tree::Planes MakePlanes(std::size_t count) {
  Tree::Planes planes;
  for (auto* numbers : {&planes.height, &planes.slope_x, &planes.slope_y}) {
    *numbers = hwy::AllocateAligned<float>(count);
    if (!*numbers) throw std::bad_alloc();
  }
  return planes;
}

}  // namespace

Tree::Tree(const Field& field) {
  const std::int64_t wide_pad_x = GetPad(field, field.width);
  const std::int64_t wide_pad_y = GetPad(field, field.height);
  const std::int64_t width = RoundUp(field.width + 2 * wide_pad_x);
  const std::int64_t height = RoundUp(field.height + 2 * wide_pad_y);
  const double repeated = static_cast<double>(width) * static_cast<double>(height) -
                          static_cast<double>(field.width) * static_cast<double>(field.height);
  constexpr std::int64_t kLongest = std::numeric_limits<int>::max();
  if (width > kLongest || height > kLongest || (field.wrap && repeated > kMostRepeated)) throw std::bad_alloc();
  pad_x = static_cast<int>(wide_pad_x);
  pad_y = static_cast<int>(wide_pad_y);
  columns = static_cast<int>(width / kUnit);
  rows = static_cast<int>(height / kUnit);
  std::size_t entries = static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows);
  for (int level = kTop; level >= 0; --level) {
    auto& place = levels[static_cast<std::size_t>(level)];
    place = hwy::AllocateAligned<float>(entries + kReadAhead);
    if (!place) throw std::bad_alloc();
    std::fill_n(place.get() + entries, kReadAhead, 0.0F);
    if (HasPlanes(field) && (level == 1 || level == 2))
      planes[static_cast<std::size_t>(level - 1)] = MakePlanes(entries);
    entries *= kChildren;
  }
  HWY_DYNAMIC_DISPATCH(FillTree)(field, *this);
}

}  // namespace ReliefLevels
#endif
