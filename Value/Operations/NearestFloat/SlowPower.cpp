// SPDX-License-Identifier: Apache-2.0
#include <cmath>
#include <cstdint>
#include <optional>

#include "Value/Operations/NearestFloat/Constants.h"
#include "Value/Operations/NearestFloat/DoubleDouble.h"
#include "Value/Operations/NearestFloat/Fixed.h"
#include "Value/Operations/NearestFloat/SlowSeries.h"
#include "Value/Operations/NearestFloat/SlowWay.h"

namespace NearestFloat::SlowWay {
namespace {

/// A float above 0 as a whole number times 2 to a whole power.
struct Parts {
  std::uint64_t whole;
  int power;
};

Parts Split(float value) {
  constexpr int kFloatBits = 24;
  int power = 0;
  const float fraction = std::frexp(value, &power);
  return {static_cast<std::uint64_t>(std::ldexp(fraction, kFloatBits)), power - kFloatBits};
}

Parts SplitOdd(float value) {
  Parts parts = Split(value);
  while (parts.whole % 2 == 0) {
    parts.whole /= 2;
    ++parts.power;
  }
  return parts;
}

/// Halves of both, that is the square root, where it is a whole number times 2 to a whole power.
bool TakeRoot(Parts& parts) {
  const auto root = static_cast<std::uint64_t>(std::sqrt(static_cast<double>(parts.whole)));
  if (root * root != parts.whole || parts.power % 2 != 0) return false;
  parts = {root, parts.power / 2};
  return true;
}

}  // namespace

std::optional<float> PowerIfExact(float base, float exponent) {
  Parts parts = SplitOdd(base);
  if (parts.whole == 1) {
    // Of a power of two any exponent may make another one.
    const double power = static_cast<double>(parts.power) * static_cast<double>(exponent);
    constexpr double kLargestPower = 1000.0;
    if (power != std::trunc(power) || std::fabs(power) > kLargestPower) return std::nullopt;
    return static_cast<float>(std::ldexp(1.0, static_cast<int>(power)));
  }
  // Of others only roots of whole numbers, which squares of squares of 24 bits have at most three times, to small
  // powers.
  if (exponent < 0.0F) return std::nullopt;
  float rest = exponent;
  for (int roots = 0; rest != std::trunc(rest); ++roots, rest *= 2.0F) {
    if (roots == 3 || !TakeRoot(parts)) return std::nullopt;
  }
  constexpr float kMostFactors = 33.0F;  // 3^34 has 54 bits.
  if (rest > kMostFactors) return std::nullopt;
  const auto factors = static_cast<int>(rest);
  constexpr std::uint64_t kLimit = std::uint64_t{1} << 53U;
  std::uint64_t whole = 1;
  for (int i = 0; i < factors; ++i) {
    if (whole > kLimit / parts.whole) return std::nullopt;
    whole *= parts.whole;
  }
  return static_cast<float>(std::ldexp(static_cast<double>(whole), parts.power * factors));
}

std::optional<float> PowerByPairs(float base, float exponent) {
  const DoubleDouble logarithm = SeriesOfLog(static_cast<double>(base)) * static_cast<double>(exponent);
  const DoubleDouble power = ExponentialOf(logarithm);
  // The logarithm, up to 104, is right to 2^-93.
  const double error = power.high * 0x1p-88;
  const float below = ToNearestFloat(AddOrdered(power.high, power.low - error));
  const float above = ToNearestFloat(AddOrdered(power.high, power.low + error));
  return below == above ? std::optional<float>(below) : std::nullopt;
}

float PowerByDigits(float base, float exponent) {
  // ln(base) is the whole power of two in it times ln 2, and an area tangent of a ratio of whole numbers.
  constexpr std::uint64_t kOne = std::uint64_t{1} << 24U;
  constexpr std::uint64_t kRootOfTwo = 23726566;  // times 2^-24
  Parts parts = Split(base);
  std::int64_t twos = parts.power + 24;
  std::uint64_t over = parts.whole;  // From 2^23 up, so that the fraction is from 1/2 up.
  if (2 * over < kRootOfTwo) {
    over *= 2;
    --twos;
  }
  const bool fraction_below_one = over < kOne;
  const std::uint64_t difference = fraction_below_one ? kOne - over : over - kOne;
  const Fixed area = Fixed::AreaTangent(difference, kOne + over);
  const Fixed ln_2 = Fixed::AreaTangent(1, 3).Times(2);
  const bool twos_below_zero = twos < 0;
  const Fixed of_twos = ln_2.Times(static_cast<std::uint64_t>(twos_below_zero ? -twos : twos));
  const Fixed of_rest = area.Times(2);
  const bool same_side = twos_below_zero == fraction_below_one;
  const bool twos_lead = of_rest <= of_twos;
  const Fixed logarithm = same_side ? of_twos + of_rest : twos_lead ? of_twos - of_rest : of_rest - of_twos;
  const bool logarithm_below_zero = twos_lead ? twos_below_zero : fraction_below_one;

  const Parts factor = Split(std::fabs(exponent));
  const Fixed product = logarithm.Times(factor.whole).TimesPowerOfTwo(factor.power);
  const bool below_zero = logarithm_below_zero != std::signbit(exponent);

  // The power is 2^n exp r with r from 0 up to about ln 2.
  auto turns = static_cast<std::uint64_t>(product.ToDouble() / kLn2);
  if (product < ln_2.Times(turns)) --turns;
  if (ln_2.Times(turns + 1) <= product) ++turns;
  const Fixed rest = below_zero ? ln_2.Times(turns + 1) - product : product - ln_2.Times(turns);
  const auto power = static_cast<int>(turns);
  return static_cast<float>(std::ldexp(rest.Exponential().ToOddDouble(), below_zero ? -power - 1 : power));
}

float Power(float base, float exponent) {
  constexpr float kAllEven = 0x1p24F;
  const bool negative = std::signbit(base) && std::fabs(exponent) < kAllEven && std::fmod(exponent, 2.0F) != 0.0F;
  const float size = std::fabs(base);
  std::optional<float> power = PowerIfExact(size, exponent);
  if (!power) power = PowerByPairs(size, exponent);
  if (!power) power = PowerByDigits(size, exponent);
  return negative ? -*power : *power;
}

}  // namespace NearestFloat::SlowWay
