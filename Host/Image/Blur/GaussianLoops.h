// SPDX-License-Identifier: Apache-2.0
//
// The inner loops of the Gaussian blur. Every sample is computed by the same steps in the same order whatever the
// instruction set, and no step looks at a neighbouring lane.
#pragma once

#include <cstddef>

#include "Host/Image/Blur/GaussianKernel.h"
#include "Host/Image/SampleRange.h"

namespace ScEng {

/// Buffers between the loops have rows of a multiple of this many samples, so that loops need not stop at odd places.
inline constexpr std::size_t kRowUnit = 64;

/// Loops down columns fetch rows into the caches that they need so many rows later.
inline constexpr int kRowsAhead = 4;

/// `count` rounded up to a whole number of `kRowUnit`.
constexpr std::size_t PadRow(std::size_t count) { return (count + kRowUnit - 1) / kRowUnit * kRowUnit; }

/// How samples are shifted and scaled to about -1 to 1 before they are summed, and back. The shift keeps the sums'
/// error in proportion to the range of the samples instead of their distance from zero; the scale is a power of two and
/// keeps sums away from overflow and from denormal numbers.
struct SampleScale {
  float middle = 0.0F;
  float scale = 1.0F;
  float unscale = 1.0F;
  /// Weighted means stay in this range.
  float low = 0.0F;
  float high = 0.0F;

  /// For samples whose finite ones span `range`.
  static SampleScale For(const SampleRange& range);
};

/// How results are written: into the caches, or past them, which is for results that nobody reads soon, and needs
/// targets that are aligned to 16 samples.
enum class Writing { kCached, kStreamed };

/// Whether one of the samples is NaN or infinite.
bool HasNonFinite(const float* samples, std::size_t count);

/// Shifts and scales; a sample that is not finite becomes 0.
void ScaleSamples(const float* from, float* to, std::size_t count, const SampleScale& scale);

/// Shifts and scales back.
void UnscaleSamples(const float* from, float* to, std::size_t count, const SampleScale& scale);

/// Convolves a row of interleaved pixels with the kernel of these weights. `from` is the first sample of the row, which
/// is continued by `radius` pixels on the left and by `radius` pixels and a whole `kRowUnit` of anything finite on the
/// right; `count` is a multiple of `kRowUnit`.
void ConvolveAlong(const float* from, float* to, std::size_t count, std::size_t channels, const float* weights,
                   int radius, Writing writing);

/// Samples `first` to `first + count` of consecutive rows.
struct ColumnStrip {
  /// Points to the first row's entry in a list of rows that goes on before and after it.
  const float* const* rows = nullptr;
  std::size_t num_rows = 0;
  std::size_t first = 0;
  std::size_t count = 0;
};

/// Where a strip of columns goes: the first of its samples in the first row, and the distance of rows.
struct ColumnTarget {
  float* to = nullptr;
  std::size_t stride = 0;
  Writing writing = Writing::kCached;
};

/// Convolves down the columns and scales back. The list of rows goes the radius and `kRowsAhead` rows beyond both ends.
void ConvolveAcross(const ColumnStrip& strip, const float* weights, int radius, const SampleScale& scale,
                    const ColumnTarget& target);

/// A strip of whole columns with the rows that enter and leave the kernel's window. A list of the strip's own rows need
/// not go on beyond its ends.
struct WindowStrip : ColumnStrip {
  /// Point to the first row's entry in lists of the rows that lie the radius before and after each row. The lists begin
  /// one row earlier and go on for `kRowsAhead` rows.
  const float* const* before = nullptr;
  const float* const* after = nullptr;
};

/// The same by the cosines' recursion. Rows are kept as they are where `scale` is null. `state` holds
/// `2 * GaussianCosines::kTerms` numbers for each column of the strip, rounded up to `kRowUnit`.
void FilterAcross(const WindowStrip& strip, const GaussianCosines& cosines, const CosineStart& start,
                  const SampleScale* scale, const ColumnTarget& target, double* state);

/// Columns from rows: to[x * rows + y] = from[y][x], a group of `channels` samples counting as one entry.
void Transpose(const float* from, std::size_t from_stride, float* to, std::size_t to_stride, std::size_t rows,
               std::size_t columns, std::size_t channels);

}  // namespace ScEng
