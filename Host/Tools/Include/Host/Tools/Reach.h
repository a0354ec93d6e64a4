// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

/// Which part of its input images a node reads for a part of its output. Whoever evaluates a node in bands of rows, or
/// previews a region, goes by it.
struct Reach {
  enum class Kind : std::uint8_t {
    /// The node does not say. It has to be evaluated whole.
    kUnknown,
    /// Each output pixel depends on the input pixels at the same place, and on nothing else of the samples.
    kSamples,
    /// Each output row depends on the input rows around it: `rows_above` of them above and `rows_below` below.
    kRows,
    /// An output pixel may depend on any input pixel.
    kImage,
  };
  /// What the node reads of the value range of its inputs. The range is that of the whole image, also where only some
  /// of its rows are there.
  enum class Range : std::uint8_t {
    kNone,
    /// The declared range, which the image carries.
    kDeclared,
    /// The lowest and the highest sample.
    kMeasured,
  };

  Kind kind = Kind::kUnknown;
  Range range = Range::kNone;
  std::int64_t rows_above = 0;
  std::int64_t rows_below = 0;
  /// Whether rows beyond the first and the last are those of the opposite side.
  bool wraps = false;

  static constexpr Reach Samples(Range range = Range::kNone) { return {Kind::kSamples, range}; }
  static constexpr Reach Rows(std::int64_t rows, bool wraps, Range range = Range::kNone) {
    return {Kind::kRows, range, rows, rows, wraps};
  }
  static constexpr Reach Image(Range range = Range::kNone) { return {Kind::kImage, range}; }

  friend constexpr bool operator==(const Reach&, const Reach&) = default;
};
