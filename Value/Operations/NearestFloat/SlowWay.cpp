// SPDX-License-Identifier: Apache-2.0
#include "Value/Operations/NearestFloat/SlowWay.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <iterator>

#include "Value/Operations/NearestFloat/Constants.h"
#include "Value/Operations/NearestFloat/DoubleDouble.h"
#include "Value/Operations/NearestFloat/SlowSeries.h"

namespace NearestFloat::SlowWay {
namespace {

/// An angle less a multiple of half pi.
struct Reduced {
  DoubleDouble rest;
  unsigned quadrant;
};

constexpr std::size_t kWords = 5;
constexpr int kBitsPerWord = 32;

/// The digits of 2 / pi times 2^`shift` modulo 4, from those worth 2 down, in words.
std::array<std::uint32_t, kWords> GetDigits(int shift) {
  constexpr int kBitsBeforePoint = kBitsPerWord - 1;
  const auto first_bit = static_cast<std::size_t>(kBitsBeforePoint + shift);
  const std::size_t first_word = first_bit / kBitsPerWord;
  const std::size_t inside = first_bit % kBitsPerWord;
  std::array<std::uint32_t, kWords> digits{};
  for (std::size_t i = 0; i < kWords; ++i) {
    const std::uint64_t both =
        (static_cast<std::uint64_t>(kDigitsByPi[first_word + i]) << kBitsPerWord) | kDigitsByPi[first_word + i + 1];
    digits[i] = static_cast<std::uint32_t>(both >> (kBitsPerWord - inside));
  }
  return digits;
}

/// Multiplies the whole number of 24 bits that the argument is, but for a power of two, by the digits of 2 / pi that
/// matter: those worth 4 and more only add whole turns.
Reduced Reduce(float argument) {
  constexpr int kFloatBits = 24;
  constexpr double kSmall = 0.78;
  if (std::fabs(argument) < kSmall) return {{argument, 0.0}, 0};
  int exponent = 0;
  const float fraction = std::frexp(std::fabs(argument), &exponent);
  const auto whole = static_cast<std::uint64_t>(std::ldexp(fraction, kFloatBits));
  std::array<std::uint32_t, kWords> product = GetDigits(exponent - kFloatBits);
  std::uint64_t carry = 0;
  for (std::size_t i = kWords; i-- > 0;) {
    carry += whole * product[i];
    product[i] = static_cast<std::uint32_t>(carry);
    carry >>= kBitsPerWord;
  }
  // The first two bits are the quadrant. From the middle of it on, what is missing to the next one is taken.
  constexpr std::uint32_t kHalf = 1U << 29U;
  constexpr std::uint32_t kBelowQuadrant = (1U << 30U) - 1U;
  unsigned quadrant = product[0] >> 30U;
  product[0] &= kBelowQuadrant;
  const bool from_above = product[0] >= kHalf;
  if (from_above) {
    ++quadrant;
    std::uint64_t borrow = 1;
    for (std::size_t i = kWords; i-- > 0;) {
      borrow += static_cast<std::uint32_t>(~product[i]);
      product[i] = static_cast<std::uint32_t>(borrow);
      borrow >>= kBitsPerWord;
    }
    product[0] &= kBelowQuadrant;
  }
  DoubleDouble part{0.0, 0.0};
  int worth = 2 - kBitsPerWord;
  for (const std::uint32_t word : product) {
    part = part + DoubleDouble{std::ldexp(static_cast<double>(word), worth), 0.0};
    worth -= kBitsPerWord;
  }
  DoubleDouble rest = part * DoubleDouble{kPiPair.high / 2.0, kPiPair.low / 2.0};
  if (from_above != std::signbit(argument)) rest = -rest;
  return {rest, std::signbit(argument) ? 0U - quadrant : quadrant};
}

/// The sine of the angle and `ahead` quarters of a turn.
DoubleDouble SineOf(const Reduced& angle, unsigned ahead) {
  const unsigned quadrant = angle.quadrant + ahead;
  const DoubleDouble value = (quadrant & 1U) != 0 ? SeriesOfCosine(angle.rest) : SeriesOfSine(angle.rest);
  return (quadrant & 2U) != 0 ? -value : value;
}

DoubleDouble Improve(double estimate, DoubleDouble correction) { return DoubleDouble{estimate, 0.0} + correction; }

/// The cosine of the angle whose sine is `argument`, or the reverse.
DoubleDouble OtherLeg(float argument) {
  return SquareRoot(MultiplyExactly(1.0 - static_cast<double>(argument), 1.0 + static_cast<double>(argument)));
}

}  // namespace

float Sine(float argument, double) { return ToNearestFloat(SineOf(Reduce(argument), 0)); }

float Cosine(float argument, double) { return ToNearestFloat(SineOf(Reduce(argument), 1)); }

float Tangent(float argument, double) {
  const Reduced angle = Reduce(argument);
  return ToNearestFloat(SineOf(angle, 0) / SineOf(angle, 1));
}

// The arcs turn the point of the argument on the circle back by the estimate: what is left is so small that it is its
// own sine and tangent.

float ArcSine(float argument, double estimate) {
  const DoubleDouble sine = SeriesOfSine({estimate, 0.0});
  const DoubleDouble cosine = SeriesOfCosine({estimate, 0.0});
  return ToNearestFloat(Improve(estimate, cosine * static_cast<double>(argument) - sine * OtherLeg(argument)));
}

float ArcCosine(float argument, double estimate) {
  // The series are for angles up to half pi: acos x = pi - acos(-x).
  const bool mirrored = argument < 0.0F;
  const auto cosine_of_result = std::fabs(static_cast<double>(argument));
  const double near = mirrored ? kPi - estimate : estimate;
  const DoubleDouble sine = SeriesOfSine({near, 0.0});
  const DoubleDouble cosine = SeriesOfCosine({near, 0.0});
  const DoubleDouble result = Improve(near, cosine * OtherLeg(argument) - sine * cosine_of_result);
  return ToNearestFloat(mirrored ? kPiPair - result : result);
}

float ArcTangent(float argument, double estimate) {
  const auto tangent = static_cast<double>(argument);
  const DoubleDouble sine = SeriesOfSine({estimate, 0.0});
  const DoubleDouble cosine = SeriesOfCosine({estimate, 0.0});
  return ToNearestFloat(Improve(estimate, (cosine * tangent - sine) / (cosine + sine * tangent)));
}

float Log(float argument, double) { return ToNearestFloat(SeriesOfLog(static_cast<double>(argument))); }

float Exponential(float argument, double) {
  return ToNearestFloat(ExponentialOf({static_cast<double>(argument), 0.0}));
}

float CubicRoot(float argument, double estimate) {
  const DoubleDouble square = MultiplyExactly(estimate, estimate);
  const DoubleDouble excess = square * estimate - DoubleDouble{argument, 0.0};
  return ToNearestFloat(Improve(estimate, -(excess / (square * 3.0))));
}

}  // namespace NearestFloat::SlowWay
