// SPDX-License-Identifier: Apache-2.0
#pragma once

/// The choices of the Relief node's "profile", in their order: how its edges rise from 0 to 1.
enum class ReliefProfile {
  kLinear,  ///< Straight.
  kSmooth,  ///< Level at both ends.
  kArcOut,  ///< A quarter of a circle, steep at the foot.
  kArcIn,   ///< A quarter of a circle, steep at the top.
};
