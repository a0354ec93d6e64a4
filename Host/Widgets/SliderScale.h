// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Host/Tools/Attribute.h"

namespace ScEng {

/// How the positions of a slider, 0 to 1, stand for the values of a number.
///
/// Where the attribute's bounds are far apart in steps, the slider covers a part of them, the soft range, which is
/// derived from step and default. It widens when the value leaves it.
class SliderScale {
 public:
  /// `exponent` is that of the response: the value grows with that power of the distance from zero. What is not above 1
  /// is linear.
  SliderScale(const Attribute& attribute, double exponent);

  [[nodiscard]] double GetLow() const { return low_; }
  [[nodiscard]] double GetHigh() const { return high_; }

  [[nodiscard]] double ToPosition(double value) const;
  /// The value at a position, rounded to what a hand can aim at there; the ends are exact.
  [[nodiscard]] double ToValue(double position) const;

  /// Widens the soft range until it holds `value`.
  void Include(double value);
  /// Goes back to the soft range that the attribute itself gives.
  void Reset();

 private:
  [[nodiscard]] double Bend(double value) const;
  [[nodiscard]] double Unbend(double bent) const;
  [[nodiscard]] double ToExactValue(double position) const;

  double lowest_;
  double highest_;
  double step_;
  double default_;
  double exponent_;
  double low_ = 0.0;
  double high_ = 0.0;
};

}  // namespace ScEng
