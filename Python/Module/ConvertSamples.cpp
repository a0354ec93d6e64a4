// SPDX-License-Identifier: Apache-2.0
#include "Python/Module/ConvertSamples.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <type_traits>

#include "Host/Util/ParallelRows.h"

namespace ValuePython {
namespace {

/// A float of 16 bits, for which the language has no type.
struct Half {
  std::uint16_t bits = 0;
};

/// A truth value: any byte but 0 is true.
struct Flag {
  std::uint8_t byte = 0;
};

float ToFloat(Half half) {
  const std::uint32_t sign = static_cast<std::uint32_t>(half.bits & 0x8000U) << 16;
  const std::uint32_t exponent = (half.bits >> 10) & 0x1FU;
  const std::uint32_t fraction = half.bits & 0x3FFU;
  if (exponent == 31) return std::bit_cast<float>(sign | 0x7F800000U | (fraction << 13));
  if (exponent == 0) {
    const float magnitude = std::ldexp(static_cast<float>(fraction), -24);
    return sign != 0 ? -magnitude : magnitude;
  }
  return std::bit_cast<float>(sign | ((exponent + 112) << 23) | (fraction << 13));
}

float ToFloat(Flag flag) { return flag.byte != 0 ? 1.0F : 0.0F; }

template <class Number>
float ToFloat(Number number) {
  return static_cast<float>(number);
}

template <class Number>
Number ReadNumber(const std::uint8_t* from, bool is_swapped) {
  std::array<std::uint8_t, sizeof(Number)> bytes;
  std::memcpy(bytes.data(), from, sizeof(Number));
  if (is_swapped) std::reverse(bytes.begin(), bytes.end());
  return std::bit_cast<Number>(bytes);
}

template <class Number>
bool Overflows(Number number, float converted) {
  if constexpr (std::is_same_v<Number, double>) return std::isinf(converted) && std::isfinite(number);
  return false;
}

/// Whether the numbers of a row lie one after the other, as many as there are samples.
bool IsDense(const NumberArray& array) {
  const auto size = static_cast<std::ptrdiff_t>(array.size);
  const auto channels = static_cast<std::ptrdiff_t>(array.channels);
  const bool has_dense_pixels = channels == 1 || array.channel_stride == size;
  return channels != 3 && !array.is_swapped && has_dense_pixels && array.column_stride == channels * size;
}

/// Converts numbers without gaps, in a loop that compilers make vectors of; whether one overflows.
template <class Number>
bool ConvertRun(const std::uint8_t* from, std::size_t count, float* to) {
  bool overflows = false;
  for (std::size_t i = 0; i < count; ++i) {
    const auto number = ReadNumber<Number>(from + i * sizeof(Number), false);
    to[i] = ToFloat(number);
    if constexpr (std::is_same_v<Number, double>) {
      overflows |=
          std::abs(to[i]) > std::numeric_limits<float>::max() && std::abs(number) <= std::numeric_limits<double>::max();
    }
  }
  return overflows;
}

/// Converts a row; the first column that overflows, or the number of columns.
template <class Number>
std::size_t ConvertRow(const NumberArray& array, std::size_t row, float* to) {
  const std::uint8_t* const start = array.data + static_cast<std::ptrdiff_t>(row) * array.row_stride;
  if (IsDense(array) && !ConvertRun<Number>(start, array.columns * array.channels, to)) return array.columns;
  const std::size_t to_channels = array.channels == 3 ? 4 : array.channels;
  std::size_t first = array.columns;
  for (std::size_t column = 0; column < array.columns; ++column) {
    const std::uint8_t* const pixel = start + static_cast<std::ptrdiff_t>(column) * array.column_stride;
    float* const samples = to + column * to_channels;
    for (std::size_t channel = 0; channel < array.channels; ++channel) {
      const std::uint8_t* const place = pixel + static_cast<std::ptrdiff_t>(channel) * array.channel_stride;
      const auto number = ReadNumber<Number>(place, array.is_swapped);
      samples[channel] = ToFloat(number);
      if (Overflows(number, samples[channel])) first = std::min(first, column);
    }
    if (to_channels > array.channels) samples[3] = 1.0F;
  }
  return first;
}

using RowConverter = std::size_t (*)(const NumberArray& array, std::size_t row, float* to);

RowConverter FindConverter(char kind, std::size_t size) {
  struct Entry {
    char kind;
    std::size_t size;
    RowConverter converter;
  };
  static constexpr Entry kEntries[] = {
      {'b', 1, &ConvertRow<Flag>},          {'i', 1, &ConvertRow<std::int8_t>},   {'u', 1, &ConvertRow<std::uint8_t>},
      {'i', 2, &ConvertRow<std::int16_t>},  {'u', 2, &ConvertRow<std::uint16_t>}, {'i', 4, &ConvertRow<std::int32_t>},
      {'u', 4, &ConvertRow<std::uint32_t>}, {'i', 8, &ConvertRow<std::int64_t>},  {'u', 8, &ConvertRow<std::uint64_t>},
      {'f', 2, &ConvertRow<Half>},          {'f', 4, &ConvertRow<float>},         {'f', 8, &ConvertRow<double>},
  };
  for (const Entry& entry : kEntries) {
    if (entry.kind == kind && entry.size == size) return entry.converter;
  }
  return nullptr;
}

}  // namespace

bool CanConvert(const NumberArray& array) { return FindConverter(array.kind, array.size) != nullptr; }

std::optional<OverflowPlace> ConvertToFloats(const NumberArray& array, float* to) {
  // Enough samples in one piece that handing it to a thread pays.
  constexpr std::size_t kPiece = std::size_t{1} << 15;
  const RowConverter convert = FindConverter(array.kind, array.size);
  const std::size_t row_samples = array.columns * (array.channels == 3 ? 4 : array.channels);
  std::atomic<std::size_t> first_row{std::numeric_limits<std::size_t>::max()};
  ScEng::ParallelRows(array.rows, kPiece / std::max<std::size_t>(row_samples, 1) + 1,
                      [&](std::size_t from, std::size_t until) {
                        for (std::size_t row = from; row < until; ++row) {
                          if (convert(array, row, to + row * row_samples) == array.columns) continue;
                          std::size_t known = first_row.load();
                          while (row < known && !first_row.compare_exchange_weak(known, row)) {
                          }
                        }
                      });
  const std::size_t row = first_row.load();
  if (row == std::numeric_limits<std::size_t>::max()) return std::nullopt;
  return OverflowPlace{row, convert(array, row, to + row * row_samples)};
}

}  // namespace ValuePython
