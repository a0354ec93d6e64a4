// SPDX-License-Identifier: Apache-2.0
//
// Numbers as the sum of two doubles, about 104 bits: the sums and products of Dekker, Knuth and Veltkamp, which need
// nothing but rounding to nearest, so that every processor gives the same bits. Only for finite numbers far from the
// ends of the range of doubles.
#pragma once

#include <bit>
#include <cmath>
#include <cstdint>

namespace NearestFloat {

/// `high` is the double nearest to the sum of both.
struct DoubleDouble {
  double high;
  double low;
};

/// The sum where `first` is 0 or at least as large as `second`.
inline DoubleDouble AddOrdered(double first, double second) {
  const double sum = first + second;
  return {sum, second - (sum - first)};
}

inline DoubleDouble AddExactly(double first, double second) {
  const double sum = first + second;
  const double part = sum - first;
  return {sum, (first - (sum - part)) + (second - part)};
}

inline DoubleDouble MultiplyExactly(double first, double second) {
  constexpr double kSplitter = 0x1p27 + 1.0;
  const double first_scaled = first * kSplitter;
  const double first_high = first_scaled - (first_scaled - first);
  const double first_low = first - first_high;
  const double second_scaled = second * kSplitter;
  const double second_high = second_scaled - (second_scaled - second);
  const double second_low = second - second_high;
  const double product = first * second;
  const double rest = ((first_high * second_high - product) + first_high * second_low + first_low * second_high) +
                      first_low * second_low;
  return {product, rest};
}

inline DoubleDouble operator-(DoubleDouble value) { return {-value.high, -value.low}; }

inline DoubleDouble operator+(DoubleDouble first, DoubleDouble second) {
  const DoubleDouble highs = AddExactly(first.high, second.high);
  const DoubleDouble lows = AddExactly(first.low, second.low);
  const DoubleDouble sum = AddOrdered(highs.high, highs.low + lows.high);
  return AddOrdered(sum.high, sum.low + lows.low);
}

inline DoubleDouble operator-(DoubleDouble first, DoubleDouble second) { return first + -second; }

inline DoubleDouble operator*(DoubleDouble first, DoubleDouble second) {
  const DoubleDouble product = MultiplyExactly(first.high, second.high);
  return AddOrdered(product.high, product.low + (first.high * second.low + first.low * second.high));
}

inline DoubleDouble operator*(DoubleDouble first, double second) { return first * DoubleDouble{second, 0.0}; }

inline DoubleDouble operator/(DoubleDouble first, DoubleDouble second) {
  const double quotient = first.high / second.high;
  const DoubleDouble rest = first - second * quotient;
  const double next = rest.high / second.high;
  const double last = (rest - second * next).high / second.high;
  return AddOrdered(quotient, next) + DoubleDouble{last, 0.0};
}

/// The square root of a number above 0.
inline DoubleDouble SquareRoot(DoubleDouble value) {
  const double root = std::sqrt(value.high);
  const DoubleDouble rest = value - MultiplyExactly(root, root);
  return AddOrdered(root, rest.high / (2.0 * root));
}

/// The float nearest to the sum of both doubles: the sum is cut off at the last bit of a double, which is then set, so
/// that rounding it to float sees on which side of a middle it lies.
inline float ToNearestFloat(DoubleDouble value) {
  auto bits = std::bit_cast<std::uint64_t>(value.high);
  if (value.low != 0.0 && (bits & 1U) == 0) bits += std::signbit(value.low) == std::signbit(value.high) ? 1U : ~0ULL;
  return static_cast<float>(std::bit_cast<double>(bits));
}

}  // namespace NearestFloat
