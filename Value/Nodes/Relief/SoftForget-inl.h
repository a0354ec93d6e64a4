// SPDX-License-Identifier: Apache-2.0
//
// How the levels of a growing mask are drawn over a group of pixels when the largest radii are not known: each ring
// forgets some of what was there before, and once it makes no difference to the last bit, that can be told from bounds.
//
// Included once per instruction set, between HWY_BEFORE_NAMESPACE and HWY_AFTER_NAMESPACE of the source that uses it;
// see Highway's quick reference on `foreach_target.h`.

#if defined(VALUE_NODES_RELIEF_SOFT_FORGET_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef VALUE_NODES_RELIEF_SOFT_FORGET_INL_H_
#undef VALUE_NODES_RELIEF_SOFT_FORGET_INL_H_
#else
#define VALUE_NODES_RELIEF_SOFT_FORGET_INL_H_
#endif

#include <hwy/highway.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "Value/Nodes/Relief/SoftBlend-inl.h"
#include "Value/Nodes/Relief/SoftPlane.h"
#include "Value/Nodes/Relief/SoftSearch-inl.h"
#include "Value/Nodes/Relief/SoftWorkspace.h"

HWY_BEFORE_NAMESPACE();
namespace ReliefBevel::HWY_NAMESPACE {

/// A vector of numbers of which only bounds are known.
struct Bounds {
  V least;
  V most;
};

/// Whether all numbers are known, each bit of them.
HWY_INLINE bool AreKnown(const Bounds& bounds) {
  const hn::RebindToSigned<D> di;
  return hn::AllTrue(di, hn::Eq(hn::BitCast(di, bounds.least), hn::BitCast(di, bounds.most)));
}

/// The bounds of what `Blend` makes of numbers where the strength is between 0 and 1.
///
/// The exact sum o + (l - o) s grows with o. What is computed is the sum rounded to the nearest, after the difference
/// and the product have been rounded: each changes the product by at most 2^-24 of it, or by less than the smallest
/// normal number. So the rounded sum lies within the rounded bounds, taken wider by twice that, and by far more than
/// the roundings in double precision amount to.
HWY_INLINE Bounds FindBounds(const Bounds& bounds, double level, V strength) {
  const D d;
  using Numbers = std::array<float, kMostLanes>;
  alignas(64) Numbers least{};
  alignas(64) Numbers most{};
  alignas(64) Numbers strengths{};
  hn::Store(bounds.least, d, least.data());
  hn::Store(bounds.most, d, most.data());
  hn::Store(strength, d, strengths.data());
  for (std::size_t i = 0; i < hn::Lanes(d); ++i) {
    const double from = least[i];
    const double to = most[i];
    const double by = strengths[i];
    const double furthest = std::max(std::abs(level - from), std::abs(level - to));
    const double largest = std::max(std::max(std::abs(from), std::abs(to)), std::abs(level));
    const double margin = furthest * by * 0x1p-22 + largest * 0x1p-48 + 1e-36;
    least[i] = static_cast<float>(from + (level - from) * by - margin);
    most[i] = static_cast<float>(to + (level - to) * by + margin);
  }
  return {hn::Load(d, least.data()), hn::Load(d, most.data())};
}

/// The bounds of what `Blend` makes of numbers.
inline Bounds BlendBounds(const Bounds& bounds, V level, V strength) {
  const D d;
  const hn::RebindToSigned<D> di;
  const auto is_known = hn::RebindMask(d, hn::Eq(hn::BitCast(di, bounds.least), hn::BitCast(di, bounds.most)));
  const auto is_set = hn::Ge(strength, hn::Set(d, 1.0F));
  const auto is_plain = hn::Or(is_known, hn::Or(is_set, hn::Le(strength, hn::Zero(d))));
  const Bounds plain = {Blend(bounds.least, level, strength), Blend(bounds.most, level, strength)};
  if (hn::AllTrue(d, is_plain)) return plain;
  const Bounds found = FindBounds(bounds, static_cast<double>(hn::GetLane(level)), strength);
  return {hn::IfThenElse(is_plain, plain.least, found.least), hn::IfThenElse(is_plain, plain.most, found.most)};
}

/// Whether bounds can be told from the levels of a phase.
inline bool AreLevelsFinite(const Phase& phase) {
  return std::all_of(phase.levels.begin(), phase.levels.end(), [](float level) { return std::isfinite(level); });
}

/// Draws the radii of a history from large to small over a group, if that tells every bit of what is seen, whatever is
/// drawn for the radii beyond. `drawn` holds the group before all radii, and after them where the answer is yes.
HWY_NOINLINE bool BlendForgetting(const History& history, const Phase& phase, float* drawn) {
  const D d;
  const std::size_t lanes = hn::Lanes(d);
  constexpr float kLargest = 1e18F;
  constexpr float kWidening = 0x1p-10F;
  const auto [lowest, highest] = std::minmax_element(phase.levels.begin(), phase.levels.end());
  std::array<Bounds, kGroupRows> rows;
  for (std::size_t row = 0; row < kGroupRows; ++row) {
    const V before = hn::Load(d, drawn + row * lanes);
    if (!hn::AllTrue(d, hn::Lt(hn::Abs(before), hn::Set(d, kLargest)))) return false;
    // A ring mixes what is there with a level. Rounding may take it a little further each time.
    const V least = hn::Min(before, hn::Set(d, *lowest));
    const V most = hn::Max(before, hn::Set(d, *highest));
    const V wider = hn::Mul(hn::Add(hn::Abs(least), hn::Abs(most)), hn::Set(d, kWidening));
    rows[row] = {hn::Sub(least, wider), hn::Add(most, wider)};
  }
  int radius = history.begin + history.count - 1;
  const int last = std::max(phase.from, history.begin);
  for (bool are_known = false; !are_known && radius >= last; --radius) {
    const float* found = history.found + static_cast<std::size_t>(radius - history.begin) * kGroupRows * lanes;
    const V level = hn::Set(d, phase.GetLevel(radius));
    are_known = true;
    for (std::size_t row = 0; row < kGroupRows; ++row) {
      rows[row] = BlendBounds(rows[row], level, hn::Load(d, found + row * lanes));
      are_known = are_known && AreKnown(rows[row]);
    }
  }
  for (const Bounds& bounds : rows) {
    if (!AreKnown(bounds)) return false;
  }
  for (std::size_t row = 0; row < kGroupRows; ++row) hn::Store(rows[row].least, d, drawn + row * lanes);
  if (radius >= last) BlendInwards({history.begin, radius - history.begin + 1, history.found}, phase, drawn);
  return true;
}
}  // namespace ReliefBevel::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
