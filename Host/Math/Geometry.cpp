// SPDX-License-Identifier: Apache-2.0
#include "Host/Math/Geometry.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace ScEng {
namespace {

/// `lowest` and `highest` are numbers that a double holds.
template <class Whole, class Real>
Whole RoundBetween(Real x, double lowest, double highest) {
  if (std::isnan(x)) return 0;
  const Real below = std::floor(x);
  const Real whole = x - below > Real(0.5) ? std::ceil(x) : below;
  return static_cast<Whole>(std::clamp(static_cast<double>(whole), lowest, highest));
}

template <class Real>
std::int32_t RoundTo32Bits(Real x) {
  return RoundBetween<std::int32_t>(x, std::numeric_limits<std::int32_t>::min(),
                                    std::numeric_limits<std::int32_t>::max());
}

}  // namespace

Box2I Union(const Box2I& a, const Box2I& b) {
  return {std::min(a.left, b.left), std::min(a.top, b.top), std::max(a.right, b.right), std::max(a.bottom, b.bottom)};
}

std::int32_t RoundHalfDown(double x) { return RoundTo32Bits(x); }
std::int32_t RoundHalfDown(float x) { return RoundTo32Bits(x); }
std::int64_t RoundPlaceHalfDown(float x) { return RoundBetween<std::int64_t>(x, -0x1p60, 0x1p60); }

}  // namespace ScEng
