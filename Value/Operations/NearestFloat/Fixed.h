// SPDX-License-Identifier: Apache-2.0
//
// Numbers from 0 up with 64 binary digits before the point and 192 behind it.
#pragma once

#include <array>
#include <cmath>
#include <compare>
#include <cstddef>
#include <cstdint>

namespace NearestFloat {

class Fixed {
 public:
  explicit Fixed(std::uint64_t whole = 0) : words_{whole} {}

  /// The area tangent of a ratio below 1/5, or of 1/3, of whole numbers below 2^32.
  static Fixed AreaTangent(std::uint64_t over, std::uint64_t under) {
    Fixed power = Fixed(over).Over(under);
    const Fixed square = power * power;
    Fixed sum = power;
    constexpr std::uint64_t kLast = 127;  // (1/3)^127 is below 2^-192.
    for (std::uint64_t odd = 3; odd <= kLast; odd += 2) {
      power = power * square;
      sum = sum + power.Over(odd);
    }
    return sum;
  }

  /// The exponential of a number below 1.
  Fixed Exponential() const {
    Fixed term(1);
    Fixed sum(1);
    constexpr std::uint64_t kLast = 50;  // 1 / 50! is below 2^-192.
    for (std::uint64_t n = 1; n <= kLast; ++n) {
      term = (term * *this).Over(n);
      sum = sum + term;
    }
    return sum;
  }

  friend Fixed operator+(const Fixed& first, const Fixed& second) {
    Fixed sum;
    Wide carry = 0;
    for (std::size_t i = kWords; i-- > 0;) {
      carry += static_cast<Wide>(first.words_[i]) + second.words_[i];
      sum.words_[i] = static_cast<std::uint64_t>(carry);
      carry >>= kBits;
    }
    return sum;
  }

  /// `second` is not larger than `first`.
  friend Fixed operator-(const Fixed& first, const Fixed& second) {
    Fixed difference;
    Wide carry = 1;
    for (std::size_t i = kWords; i-- > 0;) {
      carry += static_cast<Wide>(first.words_[i]) + ~second.words_[i];
      difference.words_[i] = static_cast<std::uint64_t>(carry);
      carry >>= kBits;
    }
    return difference;
  }

  /// Cut off behind the last digit.
  friend Fixed operator*(const Fixed& first, const Fixed& second) {
    std::array<std::uint64_t, 2 * kWords> product{};
    for (std::size_t i = kWords; i-- > 0;) {
      Wide carry = 0;
      for (std::size_t k = kWords; k-- > 0;) {
        carry += static_cast<Wide>(first.words_[i]) * second.words_[k] + product[i + k + 1];
        product[i + k + 1] = static_cast<std::uint64_t>(carry);
        carry >>= kBits;
      }
      product[i] = static_cast<std::uint64_t>(carry);
    }
    // The first word of both is before the point, the first two of the product.
    Fixed result;
    for (std::size_t i = 0; i < kWords; ++i) result.words_[i] = product[i + 1];
    return result;
  }

  friend auto operator<=>(const Fixed& first, const Fixed& second) = default;

  Fixed Times(std::uint64_t factor) const {
    Fixed product;
    Wide carry = 0;
    for (std::size_t i = kWords; i-- > 0;) {
      carry += static_cast<Wide>(words_[i]) * factor;
      product.words_[i] = static_cast<std::uint64_t>(carry);
      carry >>= kBits;
    }
    return product;
  }

  Fixed Over(std::uint64_t divisor) const {
    Fixed quotient;
    Wide rest = 0;
    for (std::size_t i = 0; i < kWords; ++i) {
      rest = (rest << kBits) | words_[i];
      quotient.words_[i] = static_cast<std::uint64_t>(rest / divisor);
      rest %= divisor;
    }
    return quotient;
  }

  Fixed TimesPowerOfTwo(int power) const {
    Fixed result = *this;
    for (; power > 0; --power) result = result + result;
    for (; power < 0; ++power) result = result.Over(2);
    return result;
  }

  /// Right to about 50 bits.
  double ToDouble() const {
    return static_cast<double>(words_[0]) + std::ldexp(static_cast<double>(words_[1]), -static_cast<int>(kBits));
  }

  /// Of a number from 1 up to below 2: cut off behind the last bit of a double, which is set, so that rounding it to
  /// float sees that it is not all.
  double ToOddDouble() const {
    constexpr int kFractionBits = 52;
    const std::uint64_t fraction = (words_[1] >> (kBits - kFractionBits)) | 1U;
    return static_cast<double>(words_[0]) + std::ldexp(static_cast<double>(fraction), -kFractionBits);
  }

 private:
  __extension__ using Wide = unsigned __int128;
  static constexpr std::size_t kWords = 4;
  static constexpr unsigned kBits = 64;

  /// Those of most worth first.
  std::array<std::uint64_t, kWords> words_;
};

}  // namespace NearestFloat
