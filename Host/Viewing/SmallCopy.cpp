// SPDX-License-Identifier: Apache-2.0
#include "Host/Viewing/SmallCopy.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>

namespace ScEng {
namespace {

constexpr int kMostSamples = 4;

/// The columns (or rows) of an image that stand for one of its small copy.
struct Columns {
  std::array<std::size_t, kMostSamples> at = {};
  std::size_t count = 0;
};

/// Evenly spread over the part of `size` that the entry has of `small_size`.
Columns Choose(int entry, int small_size, int size) {
  const std::int64_t from = std::int64_t{entry} * size / small_size;
  const std::int64_t to = std::max<std::int64_t>(from + 1, (std::int64_t{entry} + 1) * size / small_size);
  Columns columns;
  columns.count = static_cast<std::size_t>(std::min<std::int64_t>(kMostSamples, to - from));
  for (std::size_t i = 0; i < columns.count; ++i) {
    const auto count = static_cast<std::int64_t>(columns.count);
    columns.at[i] = static_cast<std::size_t>(from + (2 * static_cast<std::int64_t>(i) + 1) * (to - from) / (2 * count));
  }
  return columns;
}

int Shrink(int length, int longest, int size) {
  if (length == 0 || longest <= size) return length;
  return static_cast<int>(
      std::max<std::int64_t>(1, (2 * std::int64_t{length} * size + longest) / (std::int64_t{2} * longest)));
}

}  // namespace

SmallCopy::SmallCopy(const Image& image, int size) : image_(image), header_(image.GetImageHeader()) {
  const int longest = std::max(header_.size_x, header_.size_y);
  const int limit = std::max(1, size);
  header_.size_x = Shrink(header_.size_x, longest, limit);
  header_.size_y = Shrink(header_.size_y, longest, limit);
}

void SmallCopy::SetRow(int row, float* to) const {
  const auto channels = static_cast<std::size_t>(image_.GetNumChannels());
  const auto row_samples = static_cast<std::size_t>(image_.GetSizeX()) * channels;
  const Columns rows = Choose(row, header_.size_y, image_.GetSizeY());
  for (int x = 0; x < header_.size_x; ++x) {
    const Columns columns = Choose(x, header_.size_x, image_.GetSizeX());
    for (std::size_t c = 0; c < channels; ++c, ++to) {
      double sum = 0.0;
      int count = 0;
      for (std::size_t j = 0; j < rows.count; ++j) {
        const float* const from = image_.GetConstArray() + rows.at[j] * row_samples + c;
        for (std::size_t i = 0; i < columns.count; ++i) {
          const float sample = from[columns.at[i] * channels];
          if (!std::isfinite(sample)) continue;
          sum += static_cast<double>(sample);
          ++count;
        }
      }
      const float* const first = image_.GetConstArray() + rows.at[0] * row_samples + c;
      *to = count > 0 ? static_cast<float>(sum / count) : first[columns.at[0] * channels];
    }
  }
}

}  // namespace ScEng
