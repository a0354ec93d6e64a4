// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <limits>

namespace ScEng {

/// Single-precision constants. Each is the float nearest to the true value; `MAX_REAL` is the largest
/// finite float and `MIN_REAL` its negative (not the smallest positive one).
template <class Real>
struct Math;

template <>
struct Math<float> {
  static constexpr float PI = 3.14159265358979323846F;
  static constexpr float HALF_PI = 1.57079632679489661923F;
  static constexpr float DEG_TO_RAD = 0.01745329251994329577F;
  static constexpr float RAD_TO_DEG = 57.2957795130823208768F;
  static constexpr float INV_LN_2 = 1.44269504088896340736F;
  static constexpr float INV_LN_10 = 0.43429448190325182765F;
  static constexpr float MAX_REAL = std::numeric_limits<float>::max();
  static constexpr float MIN_REAL = -std::numeric_limits<float>::max();
};

}  // namespace ScEng
