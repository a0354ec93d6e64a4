// SPDX-License-Identifier: Apache-2.0
#include "Host/Viewing/LevelStack.h"

#include <algorithm>

#include "Host/Util/Cancellation.h"
#include "Host/Viewing/Reduction.h"

namespace ScEng {
namespace {

constexpr int kLastLevelSize = 64;
constexpr int kMostStripLevels = 5;

std::size_t GetRowSamples(const Image& level) {
  return static_cast<std::size_t>(level.GetSizeX()) * static_cast<std::size_t>(level.GetNumChannels());
}

}  // namespace

LevelStack::LevelStack(const ImageHeader& header) {
  ImageHeader level = header;
  levels_.emplace_back(level, nullptr);
  while (level.size_x > kLastLevelSize || level.size_y > kLastLevelSize) {
    level.size_x = Halve(level.size_x);
    level.size_y = Halve(level.size_y);
    levels_.emplace_back(level, nullptr);
  }
  for (Image& image : levels_) samples_.push_back(image.GetArray());
  num_strip_levels_ = std::min(GetNumLevels() - 1, kMostStripLevels);
}

void LevelStack::FinishRow(int row) {
  for (int level = 1; level <= num_strip_levels_; ++level) {
    const bool is_last = row + 1 == GetLevel(level - 1).GetSizeY();
    if (row % 2 == 0 && !is_last) return;
    row /= 2;
    MakeRow(level, row);
  }
}

void LevelStack::FinishLevels() {
  for (int level = num_strip_levels_ + 1; level < GetNumLevels(); ++level) {
    for (int row = 0; row < GetLevel(level).GetSizeY(); ++row) {
      PollCancellation();
      MakeRow(level, row);
    }
  }
}

void LevelStack::MakeRow(int level, int row) {
  const Image& source = GetLevel(level - 1);
  const std::size_t length = GetRowSamples(source);
  const float* const top = source.GetConstArray() + 2 * static_cast<std::size_t>(row) * length;
  const float* const bottom = 2 * row + 1 < source.GetSizeY() ? top + length : top;
  float* const made =
      samples_[static_cast<std::size_t>(level)] + static_cast<std::size_t>(row) * GetRowSamples(GetLevel(level));
  ReduceRows(top, bottom, source.GetSizeX(), source.GetNumChannels(), made);
}

}  // namespace ScEng
