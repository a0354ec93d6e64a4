// SPDX-License-Identifier: Apache-2.0
//
// Series for double doubles, right to about 100 bits relative to the result.
#pragma once

#include <cmath>
#include <cstddef>
#include <iterator>

#include "Value/Operations/NearestFloat/Constants.h"
#include "Value/Operations/NearestFloat/DoubleDouble.h"

namespace NearestFloat::SlowWay {

/// The sum over n of `terms[first + step n]` times the n-th power of `variable`.
template <std::size_t kSize>
DoubleDouble SumSeries(const DoubleDouble (&terms)[kSize], std::size_t first, std::size_t step, DoubleDouble variable) {
  std::size_t index = first + (kSize - 1 - first) / step * step;
  DoubleDouble sum = terms[index];
  while (index > first) {
    index -= step;
    sum = sum * variable + terms[index];
  }
  return sum;
}

/// The sine of an angle up to half pi.
inline DoubleDouble SeriesOfSine(DoubleDouble angle) { return angle * SumSeries(kByFactorial, 1, 2, -(angle * angle)); }

/// The cosine of an angle up to half pi; near half pi the bits behind the 100th after the point are wrong.
inline DoubleDouble SeriesOfCosine(DoubleDouble angle) { return SumSeries(kByFactorial, 0, 2, -(angle * angle)); }

/// The exponential of a number up to half of ln 2.
inline DoubleDouble SeriesOfExponential(DoubleDouble value) { return SumSeries(kByFactorial, 0, 1, value); }

/// The natural logarithm of a normal double above 0 with at most 52 significant bits.
inline DoubleDouble SeriesOfLog(double value) {
  constexpr double kRootOfHalf = 0.70710678118654752;
  int exponent = 0;
  double fraction = std::frexp(value, &exponent);
  if (fraction < kRootOfHalf) {
    fraction *= 2.0;
    --exponent;
  }
  const DoubleDouble ratio = DoubleDouble{fraction - 1.0, 0.0} / DoubleDouble{fraction + 1.0, 0.0};
  const DoubleDouble rest = ratio * SumSeries(kByOdd, 0, 1, ratio * ratio);
  return kLn2Pair * static_cast<double>(exponent) + rest;
}

/// The exponential of a number between -700 and 700.
inline DoubleDouble ExponentialOf(DoubleDouble value) {
  const double whole = std::nearbyint(value.high * kByLn2);
  const DoubleDouble first = AddExactly(value.high, -whole * kLn2Thirds[0]);
  const DoubleDouble second = AddExactly(value.low, -whole * kLn2Thirds[1]);
  const DoubleDouble power = SeriesOfExponential(first + second + DoubleDouble{-whole * kLn2Thirds[2], 0.0});
  const double factor = std::ldexp(1.0, static_cast<int>(whole));
  return {power.high * factor, power.low * factor};
}

}  // namespace NearestFloat::SlowWay
