// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "Host/Image/Image.h"

/// The rounding and the sample loops of the Compare node.
namespace Compare {

/// What output k shows: a < b, a <= b, a == b, a != b, a >= b, a > b.
enum class Relation { kLess, kLessEqual, kEqual, kDifferent, kGreaterEqual, kGreater };

/// Rounds values to steps of 10 to the power (index - 9), for an index in the node's list of precisions.
///
/// The quotient plus a half is truncated toward zero to a 32-bit integer, so negative values do not round half up; NaN
/// and what does not fit becomes -2147483648 before it is scaled back. The power of ten is a 32-bit integer and wraps.
class Rounding {
 public:
  explicit Rounding(int precision_index);
  [[nodiscard]] float Round(float value) const;
  [[nodiscard]] int GetExponent() const { return exponent_; }
  /// 10 to the power of the exponent's magnitude.
  [[nodiscard]] float GetPower() const { return power_; }

 private:
  int exponent_;
  float power_;
};

/// `value` truncated toward zero; -2147483648 for NaN and for what does not fit into 32 bits.
std::int32_t TruncateToInt32(float value);

/// What an image has at a run of positions: samples, or its outside value.
struct Span {
  const float* samples = nullptr;
  float outside = 0.0F;
};

/// Writes 1.0 or 0.0 for every pixel of `box`, which is the union of the images' boxes (row by row, dense, aligned to
/// 64 bytes), by comparing two images of one colour mode.
///
/// With one channel, a position that an image lacks reads as that image's outside value, unrounded. With four channels
/// the relation must hold in every channel ("different" in any), and a position that an image lacks gives 0.0. Any
/// other number of channels gives 0.0 everywhere.
void Apply(const Image& a, const Image& b, const Rounding& rounding, Relation relation, const ScEng::Box2I& box,
           float* results);

}  // namespace Compare
