// SPDX-License-Identifier: Apache-2.0
//
// The power in vectors of doubles. Included once per instruction set, as Kernels-inl.h is.

#if defined(VALUE_OPERATIONS_NEAREST_FLOAT_POWER_KERNEL_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef VALUE_OPERATIONS_NEAREST_FLOAT_POWER_KERNEL_INL_H_
#undef VALUE_OPERATIONS_NEAREST_FLOAT_POWER_KERNEL_INL_H_
#else
#define VALUE_OPERATIONS_NEAREST_FLOAT_POWER_KERNEL_INL_H_
#endif

#include <hwy/highway.h>

#include <cstddef>

#include "Value/Operations/NearestFloat/Constants.h"
#include "Value/Operations/NearestFloat/Kernels-inl.h"
#include "Value/Operations/NearestFloat/Rows-inl.h"
#include "Value/Operations/NearestFloat/SlowWay.h"

HWY_BEFORE_NAMESPACE();
namespace NearestFloat::HWY_NAMESPACE {

/// The logarithm to base 2 is wrong by up to 5 halves of the last bit, its product with the exponent, up to 150, by
/// 2^-43.3, and so the power by 2^-43.8 relative to it.
inline constexpr double kPowerMargin = 0x1p-42;

template <class D>
HWY_INLINE hn::Vec<D> ComputePower(D d, hn::Vec<D> base, hn::Vec<D> exponent) {
  const auto zero = hn::Zero(d);
  const auto one = hn::Set(d, 1.0);
  const auto infinity = hn::Inf(d);
  const auto rounder = hn::Set(d, kRounder);
  const auto size = hn::Abs(base);

  const Logarithm<D> split = SplitForLog(d, size);
  const auto tail = hn::MulAdd(split.square, Polynomial(d, kLog2, split.square), hn::Set(d, kTwoByLn2));
  auto logarithm = hn::MulAdd(split.ratio, tail, split.exponent);
  logarithm = hn::IfThenElse(hn::Eq(size, infinity), infinity, logarithm);
  logarithm = hn::IfThenElse(hn::Eq(size, zero), hn::Neg(infinity), logarithm);

  // Exponents beyond 2^40 are even, and every base but 1 makes 0 or infinity of them as of 2^40.
  const auto most = hn::Set(d, 0x1p40);
  const auto bounded = hn::Min(hn::Max(exponent, hn::Neg(most)), most);
  const auto turned = hn::Add(bounded, rounder);
  const auto is_whole = hn::Eq(hn::Sub(turned, rounder), bounded);

  const auto limit = hn::Set(d, 200.0);
  const auto product = hn::Min(hn::Max(hn::Mul(bounded, logarithm), hn::Neg(limit)), limit);
  const auto whole = hn::Add(product, rounder);
  const auto rest = hn::Sub(product, hn::Sub(whole, rounder));
  const auto size_of_power = TimesPowerOfTwo(d, hn::MulAdd(rest, Polynomial(d, kPowerOfTwo, rest), one), whole);

  // The odd powers of what is below 0 are below 0; its fractional powers are none, but for those of infinity.
  const auto sign = hn::And(hn::Xor(base, size), SignOfLastBit(d, turned));
  const auto nothing = hn::And(hn::Lt(base, zero), hn::Lt(size, infinity));
  const auto fractional = hn::IfThenElse(nothing, hn::NaN(d), size_of_power);
  auto power = hn::IfThenElse(is_whole, hn::Or(size_of_power, sign), fractional);

  // Nothing is known of a NaN, except that 1 stays 1 and everything to the power of 0 is 1.
  const auto numbers = hn::And(hn::Eq(base, base), hn::Eq(exponent, exponent));
  power = hn::IfThenElse(numbers, power, hn::NaN(d));
  return hn::IfThenElse(hn::Or(hn::Eq(base, one), hn::Eq(exponent, zero)), one, power);
}

/// The exponents from a place on: one for all, or one each.
class OneExponent {
 public:
  explicit OneExponent(float exponent) : exponent_(exponent) {}
  float Get(std::size_t) const { return exponent_; }
  template <class D>
  hn::Vec<D> Load(D d, std::size_t) const {
    return hn::Set(d, static_cast<double>(exponent_));
  }

 private:
  float exponent_;
};

class ExponentRow {
 public:
  explicit ExponentRow(const float* exponents) : exponents_(exponents) {}
  float Get(std::size_t i) const { return exponents_[i]; }
  template <class D>
  hn::Vec<D> Load(D d, std::size_t i) const {
    return hn::PromoteTo(d, hn::LoadU(hn::Rebind<float, D>(), exponents_ + i));
  }

 private:
  const float* exponents_;
};

template <class D, class Exponents>
HWY_INLINE void ComputePowerVector(D d, const float* HWY_RESTRICT bases, const Exponents& exponents, std::size_t place,
                                   float* HWY_RESTRICT to, LastSlowWay& last) {
  const auto base = hn::PromoteTo(d, hn::LoadU(hn::Rebind<float, D>(), bases + place));
  const auto power = ComputePower(d, base, exponents.Load(d, place));
  StoreNearest(d, power, kPowerMargin, to + place, [&, bases](std::size_t i, double) {
    const float one = bases[place + i];
    const float exponent = exponents.Get(place + i);
    return last.Get(one, exponent, [=] { return SlowWay::Power(one, exponent); });
  });
}

template <class Exponents>
HWY_INLINE void ComputePowers(const float* HWY_RESTRICT bases, Exponents exponents, float* HWY_RESTRICT to,
                              std::size_t count) {
  const hn::ScalableTag<double> d;
  const std::size_t lanes = hn::Lanes(d);
  LastSlowWay last;
  std::size_t i = 0;
  for (; i + lanes <= count; i += lanes) ComputePowerVector(d, bases, exponents, i, to, last);
  const hn::CappedTag<double, 1> one;
  for (; i < count; ++i) ComputePowerVector(one, bases, exponents, i, to, last);
}

}  // namespace NearestFloat::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif  // once per instruction set
