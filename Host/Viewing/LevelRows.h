// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "Host/Viewing/ShownChannels.h"
#include "Host/Viewing/ViewImage.h"

namespace ScEng {

/// A part of the rows of a level: columns from `low` to before `high`, which may lie beyond its edges where it repeats.
struct LevelPart {
  ViewImage::Level level;
  unsigned color_mode = ColorMode::kValue;
  ShownSamples samples;
  int low = 0;
  int high = 0;
  bool repeats = false;
};

/// Rows of a level with each of the shown numbers in a run of its own, made when they are asked for. The last four rows
/// that were asked for are kept, where they follow each other.
class LevelRows {
 public:
  explicit LevelRows(const LevelPart& part);

  /// The numbers of the columns from `low` - 1 to `high`. What lies beyond an edge is NaN.
  const float* Get(int row, int plane);

 private:
  struct Row {
    bool is_made = false;
    int row = 0;
    std::vector<float> samples;
  };
  void Make(int row, std::vector<float>& to) const;
  void CopyRun(int row, int column, int count, float* to) const;

  LevelPart part_;
  std::size_t length_;
  std::array<Row, 4> rows_;
};

}  // namespace ScEng
