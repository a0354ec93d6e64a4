// SPDX-License-Identifier: Apache-2.0
#include "Host/Widgets/SliderScale.h"

#include <algorithm>
#include <cmath>

namespace ScEng {
namespace {

// With more steps than this a slider cannot be set to each of them any more, and covers a part of the bounds.
constexpr double kMostSteps = 500.0;
// The steps on each side of zero that the soft range then has.
constexpr double kSoftSteps = 100.0;
// A response with an exponent resolves small values, so its soft range reaches this many times as far.
constexpr double kBentReach = 10.0;
// The distance, as a part of the slider, that a hand can aim at.
constexpr double kAim = 1.0 / 250.0;

/// The smallest of 1, 2, 5, 10, 20, ... that is not below `size`.
double RoundUp(double size) {
  const double power = std::pow(10.0, std::floor(std::log10(size)));
  for (const double factor : {1.0, 2.0, 5.0}) {
    if (factor * power >= size) return factor * power;
  }
  return 10.0 * power;
}

}  // namespace

SliderScale::SliderScale(const Attribute& attribute, double exponent)
    : lowest_(attribute.GetLowest()),
      highest_(attribute.GetHighest()),
      step_(attribute.GetStep() > 0.0 ? attribute.GetStep() : 1.0),
      default_(attribute.GetDefault().GetNumber()),
      exponent_(exponent > 1.0 && std::isfinite(exponent) ? exponent : 1.0) {
  Reset();
}

void SliderScale::Reset() {
  low_ = lowest_;
  high_ = highest_;
  // The halves are taken first: the difference of the widest bounds is no finite number.
  if (highest_ / 2.0 - lowest_ / 2.0 <= kMostSteps / 2.0 * step_) return;
  const double reach = kSoftSteps * step_ * (exponent_ > 1.0 ? kBentReach : 1.0);
  const double wanted = std::max(reach, 2.0 * std::abs(default_));
  if (lowest_ >= 0.0) {
    high_ = std::min(highest_, std::max(wanted, lowest_ + reach));
  } else if (highest_ <= 0.0) {
    low_ = std::max(lowest_, std::min(-wanted, highest_ - reach));
  } else {
    low_ = std::max(lowest_, -wanted);
    high_ = std::min(highest_, wanted);
  }
}

void SliderScale::Include(double value) {
  if (value >= low_ && value <= high_) return;
  const double reach = RoundUp(std::abs(value));
  // A range around zero stays one, so that zero keeps its place.
  if (value > high_ || low_ < 0.0) high_ = std::clamp(reach, high_, highest_);
  if (value < low_ || low_ < 0.0) low_ = std::clamp(-reach, lowest_, low_);
}

double SliderScale::Bend(double value) const {
  if (exponent_ == 1.0) return value;
  return std::copysign(std::pow(std::abs(value), 1.0 / exponent_), value);
}

double SliderScale::Unbend(double bent) const {
  if (exponent_ == 1.0) return bent;
  return std::copysign(std::pow(std::abs(bent), exponent_), bent);
}

double SliderScale::ToPosition(double value) const {
  const double from = Bend(low_);
  const double to = Bend(high_);
  if (!(to > from)) return 0.0;
  return std::clamp((Bend(value) - from) / (to - from), 0.0, 1.0);
}

double SliderScale::ToExactValue(double position) const {
  const double from = Bend(low_);
  const double to = Bend(high_);
  return Unbend(from + position * (to - from));
}

double SliderScale::ToValue(double position) const {
  if (position <= 0.0) return low_;
  if (position >= 1.0) return high_;
  const double value = ToExactValue(position);
  const double around = ToExactValue(std::min(position + kAim, 1.0)) - ToExactValue(std::max(position - kAim, 0.0));
  if (!(around > 0.0) || !std::isfinite(around)) return value;
  const double unit = std::pow(10.0, std::floor(std::log10(around / 2.0)));
  return std::clamp(std::round(value / unit) * unit, low_, high_);
}

}  // namespace ScEng
