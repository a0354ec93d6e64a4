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
  for (std::size_t row = 0; row < kTileRows; ++row) group[row] = hn::Load(d, drawn + row * lanes);
  const int last = history.begin + history.count - 1;
  const int least = std::max(phase.from, history.begin);
  for (int radius = std::max(std::min(last, phase.to), phase.from); radius >= least; --radius) {
    const auto entry = static_cast<std::size_t>(std::min(radius, last) - history.begin);
    const float* found = history.found + entry * kTileRows * lanes;
    const V level = hn::Set(d, phase.GetLevel(radius));
    for (std::size_t row = 0; row < kTileRows; ++row) {
      group[row] = Blend(group[row], level, hn::Load(d, found + row * lanes));
    }
  }
  for (std::size_t row = 0; row < kTileRows; ++row) hn::Store(group[row], d, drawn + row * lanes);
}

/// Radii from small to large. Beyond the last one that was looked at no pixel is set.
HWY_NOINLINE void BlendOutwards(const History& history, const Phase& phase, float* drawn) {
  const D d;
  const std::size_t lanes = hn::Lanes(d);
  const V nothing = hn::Set(d, kShrinking.nothing);
  Group group;
  for (std::size_t row = 0; row < kTileRows; ++row) group[row] = hn::Load(d, drawn + row * lanes);
  const int last = std::min(phase.to, history.begin + history.count - 1);
  int radius = phase.from;
  if (radius < history.begin) {
    radius = std::min(history.begin, phase.to);
    group.fill(hn::Set(d, phase.GetLevel(radius)));
    ++radius;
  }
  for (; radius <= last; ++radius) {
    const float* found = history.found + static_cast<std::size_t>(radius - history.begin) * kTileRows * lanes;
    const V level = hn::Set(d, phase.GetLevel(radius));
    for (std::size_t row = 0; row < kTileRows; ++row) {
      const V number = hn::Load(d, found + row * lanes);
      group[row] = Blend(group[row], level, hn::IfThenZeroElse(hn::Eq(number, nothing), hn::Neg(number)));
    }
  }
  for (std::size_t row = 0; row < kTileRows; ++row) hn::Store(group[row], d, drawn + row * lanes);
}

/// Draws the levels of a phase over a group of which the image has so many columns and rows. The first of its samples
/// is at `output`.
inline void BlendGroup(const History& history, const Plane& plane, const Phase& phase, std::size_t columns,
                       std::size_t rows, float* output) {
  const std::size_t lanes = hn::Lanes(D());
  const auto width = static_cast<std::size_t>(plane.mask.GetSizeX());
  alignas(64) std::array<float, kTileRows * kMostLanes> drawn{};
  for (std::size_t row = 0; row < rows; ++row) std::copy_n(output + row * width, columns, drawn.data() + row * lanes);
  if (plane.is_growing) {
    BlendInwards(history, phase, drawn.data());
  } else {
    BlendOutwards(history, phase, drawn.data());
  }
  for (std::size_t row = 0; row < rows; ++row) std::copy_n(drawn.data() + row * lanes, columns, output + row * width);
}
}  // namespace ReliefBevel::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
