// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "Host/Files/Api.h"

namespace ScEng {

/// The types that samples have in files.
enum class StoredType : std::uint8_t {
  kUint8,
  kInt8,
  kUint16,
  kInt16,
  kUint32,
  kInt32,
  kUint64,
  kInt64,
  kHalf,
  kFloat,
  kDouble,
};

/// "uint8" and so on.
HOST_FILES_API const char* GetName(StoredType type);
HOST_FILES_API std::size_t GetSize(StoredType type);
[[nodiscard]] HOST_FILES_API bool IsInteger(StoredType type);

/// What the stored numbers of a channel stand for.
struct StoredSamples {
  StoredType type = StoredType::kFloat;
  /// The stored number that stands for "no value here".
  std::optional<double> nodata;
  /// Value = stored number * scale + offset, where the file gives either.
  std::optional<double> scale;
  std::optional<double> offset;

  bool operator==(const StoredSamples&) const = default;
};

/// How stored integers become values.
enum class SampleScale : std::uint8_t {
  /// Unsigned integers of 8 and 16 bits without scale and offset are divided by the largest of their type; all others
  /// are taken as they are.
  kAuto,
  /// Integers are divided by the largest of their type, whatever it is.
  kUnit,
  /// Numbers as they are.
  kStored,
};

/// Turns stored numbers into values, each rounded to a float once. A number equal to the channel's nodata becomes NaN;
/// scale and offset are applied, but not to integers that are divided.
///
/// `from` points to the first number, `from_stride` bytes from one to the next; `to_stride` counts floats. Numbers are
/// in the order of bytes of the processor and may be unaligned.
HOST_FILES_API void DecodeSamples(const void* from, std::size_t from_stride, const StoredSamples& stored,
                                  SampleScale scale, float* to, std::size_t to_stride, std::size_t count);

}  // namespace ScEng
