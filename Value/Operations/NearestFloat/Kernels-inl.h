// SPDX-License-Identifier: Apache-2.0
//
// The functions of one value in vectors of doubles, right to about 46 bits.
//
// Included once per instruction set, between HWY_BEFORE_NAMESPACE and HWY_AFTER_NAMESPACE of the source that uses it;
// see Highway's quick reference on `foreach_target.h`.

#if defined(VALUE_OPERATIONS_NEAREST_FLOAT_KERNELS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef VALUE_OPERATIONS_NEAREST_FLOAT_KERNELS_INL_H_
#undef VALUE_OPERATIONS_NEAREST_FLOAT_KERNELS_INL_H_
#else
#define VALUE_OPERATIONS_NEAREST_FLOAT_KERNELS_INL_H_
#endif

#include <hwy/highway.h>

#include <cstddef>
#include <cstdint>
#include <limits>

#include "Host/Math/Constants.h"
#include "Value/Operations/NearestFloat/Constants.h"
#include "Value/Operations/NearestFloat/SlowWay.h"

HWY_BEFORE_NAMESPACE();
namespace NearestFloat::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

/// Adding it to a double below 2^51 leaves the nearest whole number in the last bits of the sum.
inline constexpr double kRounder = 0x1.8p52;
/// The bits of 2^52: a whole number in the last bits of this double is added to it.
inline constexpr std::uint64_t kWholeBits = 0x4330000000000000;
inline constexpr int kFractionBits = 52;

/// The polynomial with these coefficients, constant first.
template <class D, std::size_t kSize>
HWY_INLINE hn::Vec<D> Polynomial(D d, const double (&coefficients)[kSize], hn::Vec<D> variable) {
  hn::Vec<D> sum = hn::Set(d, coefficients[kSize - 1]);
  for (std::size_t i = kSize - 1; i-- > 0;) sum = hn::MulAdd(sum, variable, hn::Set(d, coefficients[i]));
  return sum;
}

/// `first (1 + z p(z))`: an odd function by its polynomial. It keeps the sign of zeros.
template <class D, std::size_t kSize>
HWY_INLINE hn::Vec<D> OddPolynomial(D d, const double (&coefficients)[kSize], hn::Vec<D> first, hn::Vec<D> square) {
  return hn::Mul(first, hn::MulAdd(square, Polynomial(d, coefficients, square), hn::Set(d, 1.0)));
}

/// The double with the last bit of `whole` as its sign.
template <class D>
HWY_INLINE hn::Vec<D> SignOfLastBit(D d, hn::Vec<D> whole) {
  const hn::RebindToUnsigned<D> du;
  return hn::BitCast(d, hn::ShiftLeft<63>(hn::BitCast(du, whole)));
}

// ---------------------------------------------------------------------------------------------------------------------
// Angles

/// What is left of an angle beyond a multiple of pi times 1 / kParts, and, in its last bit, which multiple.
template <class D>
struct Angle {
  hn::Vec<D> rest;
  hn::Vec<D> whole;
};

/// Angles whose multiples of half pi are whole numbers of 23 bits.
inline constexpr double kLargestCommonAngle = 0x1p23;

/// `kParts` is 1 for multiples of pi and 2 for those of half pi; `kHalves` is 1 for the places half way between them.
template <int kParts, int kHalves, class D>
HWY_INLINE Angle<D> ReduceCommon(D d, hn::Vec<D> value) {
  const auto scaled = hn::Mul(value, hn::Set(d, kByPi * kParts));
  const auto whole = hn::Add(kHalves != 0 ? hn::Sub(scaled, hn::Set(d, 0.5)) : scaled, hn::Set(d, kRounder));
  auto multiple = hn::Sub(whole, hn::Set(d, kRounder));
  if (kHalves != 0) multiple = hn::Add(multiple, hn::Set(d, 0.5));
  auto rest = hn::NegMulAdd(multiple, hn::Set(d, kPiParts[0] / kParts), value);
  rest = hn::NegMulAdd(multiple, hn::Set(d, kPiParts[1] / kParts), rest);
  return {hn::NegMulAdd(multiple, hn::Set(d, kPiParts[2] / kParts), rest), whole};
}

/// The same for angles from 2^23 on: 24 bits times a power of two, of which a table has how much of a turn it is.
template <int kParts, int kHalves, class D>
HWY_NOINLINE Angle<D> ReduceLarge(D d, hn::Vec<D> value) {
  const hn::RebindToUnsigned<D> du;
  const hn::RebindToSigned<D> di;
  constexpr int kBits = 23;
  const auto fraction_mask = hn::Set(du, 0x800FFFFFFFFFFFFFU);
  const auto bits = hn::BitCast(du, value);
  const auto scale = hn::Set(du, std::uint64_t{1023 + kBits} << kFractionBits);
  const auto number = hn::BitCast(d, hn::Or(hn::And(bits, fraction_mask), scale));
  const auto exponent = hn::ShiftRight<kFractionBits>(hn::BitCast(du, hn::Abs(value)));
  const auto index = hn::BitCast(di, hn::Sub(exponent, hn::Set(du, std::uint64_t{1023 + kBits})));
  const auto parts = hn::Set(d, static_cast<double>(kParts));
  const auto high = hn::Mul(number, hn::Mul(hn::GatherIndex(d, kTurnHigh, index), parts));
  const auto middle = hn::Mul(number, hn::Mul(hn::GatherIndex(d, kTurnMiddle, index), parts));
  const auto low = hn::Mul(number, hn::Mul(hn::GatherIndex(d, kTurnLow, index), parts));
  const auto before = kHalves != 0 ? hn::Sub(high, hn::Set(d, 0.5)) : high;
  const auto whole = hn::Add(hn::Add(before, middle), hn::Set(d, kRounder));
  const auto multiple = hn::Sub(whole, hn::Set(d, kRounder));
  const auto turn = hn::Add(hn::Add(hn::Sub(before, multiple), middle), low);
  return {hn::Mul(turn, hn::Set(d, kPi / kParts)), whole};
}

template <int kParts, int kHalves, class D>
HWY_INLINE Angle<D> Reduce(D d, hn::Vec<D> value) {
  Angle<D> angle = ReduceCommon<kParts, kHalves>(d, value);
  const auto size = hn::Abs(value);
  // Infinities and NaN have become NaN already.
  const auto finite = hn::Le(size, hn::Set(d, static_cast<double>(std::numeric_limits<float>::max())));
  const auto large = hn::And(hn::Gt(size, hn::Set(d, kLargestCommonAngle)), finite);
  if (HWY_UNLIKELY(!hn::AllFalse(d, large))) {
    const auto safe = hn::IfThenElse(large, value, hn::Set(d, kLargestCommonAngle));
    const Angle<D> other = ReduceLarge<kParts, kHalves>(d, safe);
    angle.rest = hn::IfThenElse(large, other.rest, angle.rest);
    angle.whole = hn::IfThenElse(large, other.whole, angle.whole);
  }
  return angle;
}

// Each function says how it is computed where a double does not tell the nearest float, and whether there are subnormal
// results that are no floats: those of the exponential. The sine, tangent, arcsine and arctangent of a subnormal number
// come out as that number, which is right, and no other function here has results of that size.

struct Sine {
  static constexpr auto kSlowWay = SlowWay::Sine;
  static constexpr bool kHasSubnormals = false;

  template <class D>
  static HWY_INLINE hn::Vec<D> Compute(D d, hn::Vec<D> value) {
    const Angle<D> angle = Reduce<1, 0>(d, value);
    const auto sine = OddPolynomial(d, kSine, angle.rest, hn::Mul(angle.rest, angle.rest));
    return hn::Xor(sine, SignOfLastBit(d, angle.whole));
  }
};

struct Cosine {
  static constexpr auto kSlowWay = SlowWay::Cosine;
  static constexpr bool kHasSubnormals = false;

  template <class D>
  static HWY_INLINE hn::Vec<D> Compute(D d, hn::Vec<D> value) {
    // With the odd multiples of half pi as zeros: cos(r + half pi) = -sin r.
    const Angle<D> angle = Reduce<1, 1>(d, value);
    const auto sine = OddPolynomial(d, kSine, angle.rest, hn::Mul(angle.rest, angle.rest));
    return hn::Neg(hn::Xor(sine, SignOfLastBit(d, angle.whole)));
  }
};

struct Tangent {
  static constexpr auto kSlowWay = SlowWay::Tangent;
  static constexpr bool kHasSubnormals = false;

  template <class D>
  static HWY_INLINE hn::Vec<D> Compute(D d, hn::Vec<D> value) {
    const Angle<D> angle = Reduce<2, 0>(d, value);
    const auto square = hn::Mul(angle.rest, angle.rest);
    const auto sine = OddPolynomial(d, kShortSine, angle.rest, square);
    const auto cosine = hn::MulAdd(square, Polynomial(d, kShortCosine, square), hn::Set(d, 1.0));
    // tan(r + half pi) = -cos r / sin r.
    const hn::RebindToUnsigned<D> du;
    const auto odd = hn::RebindMask(d, hn::TestBit(hn::BitCast(du, angle.whole), hn::Set(du, std::uint64_t{1})));
    const auto over = hn::IfThenElse(odd, cosine, sine);
    const auto under = hn::IfThenElse(odd, sine, cosine);
    return hn::Xor(hn::Div(over, under), SignOfLastBit(d, angle.whole));
  }
};

// ---------------------------------------------------------------------------------------------------------------------
// Arcs

/// asin |x| where |x| is at most 1/2, else asin of the square root of (1 - |x|) / 2, which is half of acos |x|.
template <class D>
struct Arc {
  hn::Vec<D> value;
  hn::Mask<D> small;
};

template <class D>
HWY_INLINE Arc<D> ComputeArc(D d, hn::Vec<D> value) {
  const auto half = hn::Set(d, 0.5);
  const auto size = hn::Abs(value);
  const auto small = hn::Le(size, half);
  const auto square = hn::IfThenElse(small, hn::Mul(value, value), hn::NegMulAdd(size, half, half));
  const auto sine = hn::IfThenElse(small, size, hn::Sqrt(square));
  return {OddPolynomial(d, kArcSine, sine, square), small};
}

struct ArcSine {
  static constexpr auto kSlowWay = SlowWay::ArcSine;
  static constexpr bool kHasSubnormals = false;

  template <class D>
  static HWY_INLINE hn::Vec<D> Compute(D d, hn::Vec<D> value) {
    const Arc<D> arc = ComputeArc(d, value);
    const auto rest = hn::NegMulAdd(hn::Set(d, 2.0), arc.value, hn::Set(d, kHalfPi));
    const auto inside = hn::CopySign(hn::IfThenElse(arc.small, arc.value, rest), value);
    const auto edge = hn::Set(d, static_cast<double>(ScEng::Math<float>::HALF_PI));
    const auto bounded = hn::IfThenElse(hn::Lt(value, hn::Set(d, 1.0)), inside, edge);
    return hn::IfThenElse(hn::Gt(value, hn::Set(d, -1.0)), bounded, hn::Neg(edge));
  }
};

struct ArcCosine {
  static constexpr auto kSlowWay = SlowWay::ArcCosine;
  static constexpr bool kHasSubnormals = false;

  template <class D>
  static HWY_INLINE hn::Vec<D> Compute(D d, hn::Vec<D> value) {
    const Arc<D> arc = ComputeArc(d, value);
    // pi / 2 - asin x, 2 asin s, or pi - 2 asin s.
    const auto edges = hn::IfThenElseZero(hn::Lt(value, hn::Zero(d)), hn::Set(d, kPi));
    const auto from = hn::IfThenElse(arc.small, hn::Set(d, kHalfPi), edges);
    const auto less = hn::IfThenElse(arc.small, arc.value, hn::Neg(hn::Add(arc.value, arc.value)));
    const auto inside = hn::Sub(from, hn::CopySign(less, hn::Xor(less, value)));
    const auto bounded = hn::IfThenElse(hn::Lt(value, hn::Set(d, 1.0)), inside, hn::Zero(d));
    const auto edge = hn::Set(d, static_cast<double>(ScEng::Math<float>::PI));
    return hn::IfThenElse(hn::Gt(value, hn::Set(d, -1.0)), bounded, edge);
  }
};

struct ArcTangent {
  static constexpr auto kSlowWay = SlowWay::ArcTangent;
  static constexpr bool kHasSubnormals = false;

  template <class D>
  static HWY_INLINE hn::Vec<D> Compute(D d, hn::Vec<D> value) {
    // atan a = pi / 4 + atan((a - 1) / (a + 1)) = pi / 2 + atan(-1 / a), so that t is at most tan(pi / 8).
    constexpr double kTangentOfEighth = 0.41421356237309503;
    const auto one = hn::Set(d, 1.0);
    const auto size = hn::Abs(value);
    const auto middle = hn::Gt(size, hn::Set(d, kTangentOfEighth));
    const auto large = hn::Gt(size, hn::Set(d, 1.0 / kTangentOfEighth));
    auto over = hn::IfThenElse(middle, hn::Sub(size, one), size);
    auto under = hn::IfThenElse(middle, hn::Add(size, one), one);
    auto from = hn::IfThenElseZero(middle, hn::Set(d, kQuarterPi));
    over = hn::IfThenElse(large, hn::Set(d, -1.0), over);
    under = hn::IfThenElse(large, size, under);
    from = hn::IfThenElse(large, hn::Set(d, kHalfPi), from);
    const auto tangent = hn::Div(over, under);
    const auto arc = hn::Add(from, OddPolynomial(d, kArcTangent, tangent, hn::Mul(tangent, tangent)));
    return hn::CopySign(arc, value);
  }
};

// ---------------------------------------------------------------------------------------------------------------------
// Logarithms, exponentials and roots

/// A number above 0 as 2^exponent (1 + s) / (1 - s), with 1 + s over 1 - s from the root of 1/2 to that of 2.
template <class D>
struct Logarithm {
  hn::Vec<D> exponent;
  hn::Vec<D> ratio;
  hn::Vec<D> square;
};

template <class D>
HWY_INLINE Logarithm<D> SplitForLog(D d, hn::Vec<D> value) {
  const hn::RebindToUnsigned<D> du;
  constexpr std::uint64_t kOne = 0x3FF0000000000000;
  constexpr std::uint64_t kRootOfHalf = 0x3FE6A09E667F3BCD;
  const auto bits = hn::BitCast(du, value);
  const auto biased = hn::ShiftRight<kFractionBits>(hn::Add(bits, hn::Set(du, kOne - kRootOfHalf)));
  const auto fraction = hn::BitCast(d, hn::Add(hn::Sub(bits, hn::ShiftLeft<kFractionBits>(biased)), hn::Set(du, kOne)));
  const auto exponent = hn::Sub(hn::BitCast(d, hn::Or(biased, hn::Set(du, kWholeBits))), hn::Set(d, 0x1p52 + 1023.0));
  const auto one = hn::Set(d, 1.0);
  const auto ratio = hn::Div(hn::Sub(fraction, one), hn::Add(fraction, one));
  return {exponent, ratio, hn::Mul(ratio, ratio)};
}

struct Log {
  static constexpr auto kSlowWay = SlowWay::Log;
  static constexpr bool kHasSubnormals = false;

  template <class D>
  static HWY_INLINE hn::Vec<D> Compute(D d, hn::Vec<D> value) {
    const Logarithm<D> split = SplitForLog(d, value);
    const auto tail = hn::MulAdd(split.square, Polynomial(d, kLog, split.square), hn::Set(d, 2.0));
    const auto inside = hn::MulAdd(split.exponent, hn::Set(d, kLn2), hn::Mul(split.ratio, tail));
    const auto infinity = hn::Inf(d);
    const auto positive = hn::IfThenElse(hn::Gt(value, hn::Zero(d)), inside, hn::NaN(d));
    const auto finite = hn::IfThenElse(hn::Eq(value, infinity), infinity, positive);
    return hn::IfThenElse(hn::Eq(value, hn::Zero(d)), hn::Neg(infinity), finite);
  }
};

/// The polynomial's value times 2^n, where `whole` is n + kRounder.
template <class D>
HWY_INLINE hn::Vec<D> TimesPowerOfTwo(D d, hn::Vec<D> value, hn::Vec<D> whole) {
  const hn::RebindToUnsigned<D> du;
  return hn::BitCast(d, hn::Add(hn::BitCast(du, value), hn::ShiftLeft<kFractionBits>(hn::BitCast(du, whole))));
}

struct Exponential {
  static constexpr auto kSlowWay = SlowWay::Exponential;
  static constexpr bool kHasSubnormals = true;

  template <class D>
  static HWY_INLINE hn::Vec<D> Compute(D d, hn::Vec<D> value) {
    // Beyond these every result is 0 or infinity.
    const auto bounded = hn::Min(hn::Max(value, hn::Set(d, -110.0)), hn::Set(d, 100.0));
    const auto whole = hn::MulAdd(bounded, hn::Set(d, kByLn2), hn::Set(d, kRounder));
    const auto multiple = hn::Sub(whole, hn::Set(d, kRounder));
    auto rest = hn::NegMulAdd(multiple, hn::Set(d, kLn2Parts[0]), bounded);
    rest = hn::NegMulAdd(multiple, hn::Set(d, kLn2Parts[1]), rest);
    const auto tail = hn::MulAdd(hn::Mul(rest, rest), Polynomial(d, kExponential, rest), rest);
    const auto result = TimesPowerOfTwo(d, hn::Add(tail, hn::Set(d, 1.0)), whole);
    return hn::IfThenElse(hn::Eq(value, value), result, value);
  }
};

struct CubicRoot {
  static constexpr auto kSlowWay = SlowWay::CubicRoot;
  static constexpr bool kHasSubnormals = false;

  template <class D>
  static HWY_INLINE hn::Vec<D> Compute(D d, hn::Vec<D> value) {
    const hn::RebindToUnsigned<D> du;
    // The upper half of the bits of a number is nearly its logarithm: a third of it, taken from a constant, estimates
    // 1 over the root to a thirtieth.
    constexpr double kEstimate = 0x553EE800;
    const auto size = hn::Abs(value);
    const auto upper = hn::Or(hn::ShiftRight<32>(hn::BitCast(du, size)), hn::Set(du, kWholeBits));
    const auto third = hn::MulAdd(hn::Sub(hn::BitCast(d, upper), hn::Set(d, 0x1p52)), hn::Set(d, -1.0 / 3.0),
                                  hn::Set(d, 0x1p52 + kEstimate));
    auto inverse = hn::BitCast(d, hn::ShiftLeft<32>(hn::BitCast(du, third)));
    // With e = 1 - x y^3, 1 over the root is y (1 - e)^(-1/3), and the root x y^2 (1 - e)^(-2/3).
    constexpr double kInverse[] = {1.0 / 3.0, 2.0 / 9.0, 14.0 / 81.0};
    constexpr double kRoot[] = {2.0 / 3.0, 5.0 / 9.0, 40.0 / 81.0};
    const auto one = hn::Set(d, 1.0);
    auto error = hn::NegMulAdd(hn::Mul(size, inverse), hn::Mul(inverse, inverse), one);
    inverse = hn::MulAdd(hn::Mul(inverse, error), Polynomial(d, kInverse, error), inverse);
    const auto root = hn::Mul(value, hn::Mul(inverse, inverse));
    error = hn::NegMulAdd(hn::Mul(size, inverse), hn::Mul(inverse, inverse), one);
    const auto result = hn::MulAdd(hn::Mul(root, error), Polynomial(d, kRoot, error), root);
    const auto common = hn::And(hn::Gt(size, hn::Zero(d)), hn::Lt(size, hn::Inf(d)));
    return hn::IfThenElse(common, result, value);
  }
};

}  // namespace NearestFloat::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif  // once per instruction set
