// SPDX-License-Identifier: Apache-2.0
#include "Host/Math/Geometry.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace ScEng {
namespace {

template <class Real>
std::int32_t RoundHalfDownImpl(Real x) {
  if (std::isnan(x)) return 0;
  const Real below = std::floor(x);
  const Real whole = x - below > Real(0.5) ? std::ceil(x) : below;
  const auto wide = static_cast<double>(whole);
  constexpr double kLowest = std::numeric_limits<std::int32_t>::min();
  constexpr double kHighest = std::numeric_limits<std::int32_t>::max();
  return static_cast<std::int32_t>(std::clamp(wide, kLowest, kHighest));
}

}  // namespace

Box2I Union(const Box2I& a, const Box2I& b) {
  return {std::min(a.left, b.left), std::min(a.top, b.top), std::max(a.right, b.right), std::max(a.bottom, b.bottom)};
}

std::int32_t RoundHalfDown(double x) { return RoundHalfDownImpl(x); }
std::int32_t RoundHalfDown(float x) { return RoundHalfDownImpl(x); }

}  // namespace ScEng
