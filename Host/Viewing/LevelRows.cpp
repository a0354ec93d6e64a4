// SPDX-License-Identifier: Apache-2.0
#include "Host/Viewing/LevelRows.h"

#include <algorithm>
#include <limits>

#include "Host/Image/Image.h"

namespace ScEng {
namespace {

int Wrap(int entry, int size) {
  const int rest = entry % size;
  return rest < 0 ? rest + size : rest;
}

}  // namespace

LevelRows::LevelRows(const LevelPart& part)
    : part_(part), length_(static_cast<std::size_t>(part.high - part.low) + 2) {}

const float* LevelRows::Get(int row, int plane) {
  Row& kept = rows_[static_cast<std::size_t>(Wrap(row, static_cast<int>(rows_.size())))];
  if (!kept.is_made || kept.row != row) {
    Make(row, kept.samples);
    kept.is_made = true;
    kept.row = row;
  }
  return kept.samples.data() + static_cast<std::size_t>(plane) * length_;
}

void LevelRows::Make(int row, std::vector<float>& to) const {
  const int size_x = part_.level.size_x;
  const int size_y = part_.level.size_y;
  to.resize(length_ * static_cast<std::size_t>(part_.samples.count));
  if (!part_.repeats && (row < 0 || row >= size_y)) {
    std::fill(to.begin(), to.end(), std::numeric_limits<float>::quiet_NaN());
    return;
  }
  const int source_row = Wrap(row, size_y);
  for (int column = part_.low - 1; column <= part_.high;) {
    float* const run = to.data() + (column - (part_.low - 1));
    if (!part_.repeats && (column < 0 || column >= size_x)) {
      for (int p = 0; p < part_.samples.count; ++p) {
        run[static_cast<std::size_t>(p) * length_] = std::numeric_limits<float>::quiet_NaN();
      }
      ++column;
      continue;
    }
    const int source_column = Wrap(column, size_x);
    const int count = std::min(size_x - source_column, part_.high + 1 - column);
    CopyRun(source_row, source_column, count, run);
    column += count;
  }
}

void LevelRows::CopyRun(int row, int column, int count, float* to) const {
  const auto channels = static_cast<std::size_t>(ColorMode::GetNumChannels(part_.color_mode));
  const float* const from =
      part_.level.samples + (static_cast<std::size_t>(row) * static_cast<std::size_t>(part_.level.size_x) +
                             static_cast<std::size_t>(column)) *
                                channels;
  const auto pixels = static_cast<std::size_t>(count);
  if (part_.samples.is_value) {
    if (channels == 1) {
      std::copy_n(from, pixels, to);
      return;
    }
    for (std::size_t i = 0; i < pixels; ++i) to[i] = ValueOfPixel(from + i * channels, part_.color_mode);
    return;
  }
  for (int plane = 0; plane < part_.samples.count; ++plane) {
    const float* const channel = from + part_.samples.first_channel + plane;
    float* const run = to + static_cast<std::size_t>(plane) * length_;
    for (std::size_t i = 0; i < pixels; ++i) run[i] = channel[i * channels];
  }
}

}  // namespace ScEng
