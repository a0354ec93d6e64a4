// SPDX-License-Identifier: Apache-2.0
#pragma once

/// The choices of the Relief node's "style", in their order.
enum class ReliefStyle {
  kLevels,        ///< Every pixel raises a bump in proportion to its value.
  kInnerBevel,    ///< Rings from the edge of the mask inwards.
  kOuterBevel,    ///< Rings from outside down to the edge.
  kEmboss,        ///< Half of the rings outside, half of them inside.
  kPillowEmboss,  ///< Rings that fall towards the edge from outside and rise from it inwards.
  kNone,          ///< A word that is not in the list: nothing is drawn.
};

/// The choice with this index.
inline ReliefStyle GetReliefStyle(int index) {
  const bool is_listed = index >= 0 && index < static_cast<int>(ReliefStyle::kNone);
  return is_listed ? static_cast<ReliefStyle>(index) : ReliefStyle::kNone;
}

/// The choices of the Relief node's "profile", in their order: how its edges rise from 0 to 1.
enum class ReliefProfile {
  kLinear,  ///< Straight.
  kSmooth,  ///< Level at both ends.
  kArcOut,  ///< A quarter of a circle, steep at the foot.
  kArcIn,   ///< A quarter of a circle, steep at the top.
};

/// The choice with this index; a word that is not in the list counts as "linear".
inline ReliefProfile GetReliefProfile(int index) {
  const bool is_listed = index >= 0 && index <= static_cast<int>(ReliefProfile::kArcIn);
  return is_listed ? static_cast<ReliefProfile>(index) : ReliefProfile::kLinear;
}
