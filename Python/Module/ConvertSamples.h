// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

namespace ValuePython {

/// The numbers of an array in memory, wherever they lie. Strides are in bytes and may be negative.
struct NumberArray {
  const std::uint8_t* data = nullptr;
  std::size_t rows = 0;
  std::size_t columns = 0;
  std::size_t channels = 1;
  std::ptrdiff_t row_stride = 0;
  std::ptrdiff_t column_stride = 0;
  std::ptrdiff_t channel_stride = 0;
  /// The kind of number as numpy names it: 'b', 'i', 'u' or 'f', and its bytes.
  char kind = 'f';
  std::size_t size = 4;
  bool is_swapped = false;
};

/// Whether there is a conversion for these numbers.
bool CanConvert(const NumberArray& array);

/// Where a finite number became infinite.
struct OverflowPlace {
  std::size_t row = 0;
  std::size_t column = 0;
};

/// Rounds the numbers to the nearest floats, row by row without gaps; with four channels where the array has three, the
/// fourth being 1. Large arrays are converted on several threads. Answers the first place where a finite number is
/// beyond the largest float.
std::optional<OverflowPlace> ConvertToFloats(const NumberArray& array, float* to);

}  // namespace ValuePython
