// SPDX-License-Identifier: Apache-2.0
#include "Host/Files/Codecs/StoredSamples.h"

#include <array>
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <type_traits>

namespace ScEng {
namespace {

struct TypeRow {
  const char* name;
  std::size_t size;
  bool is_integer;
};

constexpr std::array<TypeRow, 11> kTypes{{{"uint8", 1, true},
                                          {"int8", 1, true},
                                          {"uint16", 2, true},
                                          {"int16", 2, true},
                                          {"uint32", 4, true},
                                          {"int32", 4, true},
                                          {"uint64", 8, true},
                                          {"int64", 8, true},
                                          {"half", 2, false},
                                          {"float", 4, false},
                                          {"double", 8, false}}};

const TypeRow& RowOf(StoredType type) { return kTypes.at(static_cast<std::size_t>(type)); }

/// An IEEE 754 number of 16 bits; every one of them is a float.
struct Half {
  std::uint16_t bits;
};

float ToFloat(Half half) {
  constexpr std::uint32_t kMantissa = 0x3FF;
  constexpr std::uint32_t kExponent = 0x1F;
  const std::uint32_t sign = static_cast<std::uint32_t>(half.bits >> 15) << 31;
  const std::uint32_t exponent = (half.bits >> 10) & kExponent;
  const std::uint32_t mantissa = half.bits & kMantissa;
  if (exponent == 0) {
    // Zero and the numbers below 2^-14: multiples of 2^-24.
    const float magnitude = std::ldexp(static_cast<float>(mantissa), -24);
    return sign != 0 ? -magnitude : magnitude;
  }
  const std::uint32_t wide = exponent == kExponent ? 0xFFU : exponent + 112;
  return std::bit_cast<float>(sign | (wide << 23) | (mantissa << 13));
}

template <class Number>
bool EqualsNodata(Number number, double nodata) {
  if constexpr (std::is_same_v<Number, double>) return number == nodata;
  // The file may give the number of a float band with more digits than a float has.
  if constexpr (std::is_same_v<Number, float>) return number == static_cast<float>(nodata);
  if constexpr (std::is_integral_v<Number>) {
    // Above 2^53 a double names several integers; the comparison is that of the integer.
    if (!(nodata >= static_cast<double>(std::numeric_limits<Number>::min()))) return false;
    if (nodata >= std::ldexp(1.0, std::numeric_limits<Number>::digits)) return false;
    return nodata == std::floor(nodata) && number == static_cast<Number>(nodata);
  }
}

template <class Number>
float ToValue(Number number, const StoredSamples& stored, bool divides) {
  if (stored.nodata && EqualsNodata(number, *stored.nodata)) return std::numeric_limits<float>::quiet_NaN();
  if constexpr (std::is_integral_v<Number>) {
    if (divides) {
      constexpr auto kLargest = std::numeric_limits<Number>::max();
      // A float holds every number of 16 bits, so that the quotient is rounded once; wider ones take the way over
      // double.
      if constexpr (sizeof(Number) <= 2) return static_cast<float>(number) / static_cast<float>(kLargest);
      return static_cast<float>(static_cast<double>(number) / static_cast<double>(kLargest));
    }
  }
  if (stored.scale || stored.offset) {
    const double value = static_cast<double>(number) * stored.scale.value_or(1.0) + stored.offset.value_or(0.0);
    return static_cast<float>(value);
  }
  return static_cast<float>(number);
}

template <class Number>
void Decode(const void* from, std::size_t from_stride, const StoredSamples& stored, SampleScale scale, float* to,
            std::size_t to_stride, std::size_t count) {
  const bool is_scaled = stored.scale || stored.offset;
  const bool divides = std::is_integral_v<Number> &&
                       (scale == SampleScale::kUnit || (scale == SampleScale::kAuto && !is_scaled &&
                                                        std::is_unsigned_v<Number> && sizeof(Number) <= 2));
  const auto* bytes = static_cast<const unsigned char*>(from);
  for (std::size_t i = 0; i < count; ++i) {
    Number number;
    std::memcpy(&number, bytes + i * from_stride, sizeof number);
    if constexpr (std::is_same_v<Number, Half>) {
      to[i * to_stride] = ToValue(ToFloat(number), stored, false);
    } else {
      to[i * to_stride] = ToValue(number, stored, divides);
    }
  }
}

}  // namespace

const char* GetName(StoredType type) { return RowOf(type).name; }
std::size_t GetSize(StoredType type) { return RowOf(type).size; }
bool IsInteger(StoredType type) { return RowOf(type).is_integer; }

void DecodeSamples(const void* from, std::size_t from_stride, const StoredSamples& stored, SampleScale scale, float* to,
                   std::size_t to_stride, std::size_t count) {
  const auto run = [&]<class Number>(Number) {
    Decode<Number>(from, from_stride, stored, scale, to, to_stride, count);
  };
  switch (stored.type) {
    case StoredType::kUint8: return run(std::uint8_t{});
    case StoredType::kInt8: return run(std::int8_t{});
    case StoredType::kUint16: return run(std::uint16_t{});
    case StoredType::kInt16: return run(std::int16_t{});
    case StoredType::kUint32: return run(std::uint32_t{});
    case StoredType::kInt32: return run(std::int32_t{});
    case StoredType::kUint64: return run(std::uint64_t{});
    case StoredType::kInt64: return run(std::int64_t{});
    case StoredType::kHalf: return run(Half{});
    case StoredType::kFloat: return run(float{});
    case StoredType::kDouble: return run(double{});
  }
}

}  // namespace ScEng
