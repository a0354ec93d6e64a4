// SPDX-License-Identifier: Apache-2.0
//
// How the levels of the rings are drawn over a group of pixels.
//
// Included once per instruction set, between HWY_BEFORE_NAMESPACE and HWY_AFTER_NAMESPACE of the source that uses it;
// see Highway's quick reference on `foreach_target.h`.

#if defined(VALUE_NODES_RELIEF_SOFT_BLEND_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef VALUE_NODES_RELIEF_SOFT_BLEND_INL_H_
#undef VALUE_NODES_RELIEF_SOFT_BLEND_INL_H_
#else
#define VALUE_NODES_RELIEF_SOFT_BLEND_INL_H_
#endif

#include <hwy/highway.h>

#include <algorithm>
#include <array>
#include <cstddef>

#include "Value/Nodes/Relief/SoftPlane.h"
#include "Value/Nodes/Relief/SoftSearch-inl.h"
#include "Value/Nodes/Relief/SoftWorkspace.h"

HWY_BEFORE_NAMESPACE();
namespace ReliefBevel::HWY_NAMESPACE {

/// Where the strength is 0 the output stays.
HWY_INLINE V Blend(V output, V level, V strength) {
  const D d;
  const V blended = hn::Add(output, hn::Mul(hn::Sub(level, output), strength));
  const V drawn = hn::IfThenElse(hn::Ge(strength, hn::Set(d, 1.0F)), level, blended);
  return hn::IfThenElse(hn::Gt(strength, hn::Zero(d)), drawn, output);
}

/// Radii from large to small. Beyond the last one that was looked at all pixels are set.
HWY_NOINLINE void BlendInwards(const History& history, const Phase& phase, float* drawn) {
  const D d;
  const std::size_t lanes = hn::Lanes(d);
  Group group;
  for (std::size_t row = 0; row < kGroupRows; ++row) group[row] = hn::Load(d, drawn + row * lanes);
  const int last = history.begin + history.count - 1;
  const int least = std::max(phase.from, history.begin);
  for (int radius = std::max(std::min(last, phase.to), phase.from); radius >= least; --radius) {
    const auto entry = static_cast<std::size_t>(std::min(radius, last) - history.begin);
    const float* found = history.found + entry * kGroupRows * lanes;
    const V level = hn::Set(d, phase.GetLevel(radius));
    for (std::size_t row = 0; row < kGroupRows; ++row) {
      group[row] = Blend(group[row], level, hn::Load(d, found + row * lanes));
    }
  }
  for (std::size_t row = 0; row < kGroupRows; ++row) hn::Store(group[row], d, drawn + row * lanes);
}

/// Radii from small to large. Beyond the last one that was looked at no pixel is set.
HWY_NOINLINE void BlendOutwards(const History& history, const Phase& phase, float* drawn) {
  const D d;
  const std::size_t lanes = hn::Lanes(d);
  const V nothing = hn::Set(d, kShrinking.nothing);
  Group group;
  for (std::size_t row = 0; row < kGroupRows; ++row) group[row] = hn::Load(d, drawn + row * lanes);
  const int last = std::min(phase.to, history.begin + history.count - 1);
  int radius = phase.from;
  if (radius < history.begin) {
    radius = std::min(history.begin, phase.to);
    group.fill(hn::Set(d, phase.GetLevel(radius)));
    ++radius;
  }
  for (; radius <= last; ++radius) {
    const float* found = history.found + static_cast<std::size_t>(radius - history.begin) * kGroupRows * lanes;
    const V level = hn::Set(d, phase.GetLevel(radius));
    for (std::size_t row = 0; row < kGroupRows; ++row) {
      const V number = hn::Load(d, found + row * lanes);
      group[row] = Blend(group[row], level, hn::IfThenZeroElse(hn::Eq(number, nothing), hn::Neg(number)));
    }
  }
  for (std::size_t row = 0; row < kGroupRows; ++row) hn::Store(group[row], d, drawn + row * lanes);
}

/// The samples of a tile whose corner is pixel (x, y), group by group, as far as the image goes.
class GroupSamples {
 public:
  GroupSamples(const Plane& plane, int x, int y, float* output)
      : width_(static_cast<std::size_t>(plane.mask.GetSizeX())),
        columns_(width_ - static_cast<std::size_t>(x)),
        rows_(static_cast<std::size_t>(plane.mask.GetSizeY() - y)),
        corner_(output + static_cast<std::size_t>(y) * width_ + static_cast<std::size_t>(x)) {}

  /// Of the group whose corner is pixel (x, y) of the tile.
  void Load(std::size_t x, std::size_t y) {
    const std::size_t lanes = hn::Lanes(D());
    const float* from = corner_ + y * width_ + x;
    const std::size_t columns = std::min(lanes, columns_ - x);
    for (std::size_t row = 0; row < CountRows(y); ++row) {
      std::copy_n(from + row * width_, columns, samples_.data() + row * lanes);
    }
  }

  void Store(std::size_t x, std::size_t y) const {
    const std::size_t lanes = hn::Lanes(D());
    float* to = corner_ + y * width_ + x;
    const std::size_t columns = std::min(lanes, columns_ - x);
    for (std::size_t row = 0; row < CountRows(y); ++row) {
      std::copy_n(samples_.data() + row * lanes, columns, to + row * width_);
    }
  }

  float* Get() { return samples_.data(); }

 private:
  [[nodiscard]] std::size_t CountRows(std::size_t y) const {
    return y < rows_ ? std::min<std::size_t>(rows_ - y, kGroupRows) : 0;
  }

  std::size_t width_;
  /// From the corner to the ends of the image.
  std::size_t columns_;
  std::size_t rows_;
  float* corner_;
  alignas(64) std::array<float, kGroupRows * kMostLanes> samples_{};
};
}  // namespace ReliefBevel::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
