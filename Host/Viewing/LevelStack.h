// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <deque>
#include <vector>

#include "Host/Image/Image.h"

namespace ScEng {

/// An image and its smaller copies, each half as wide and high as the one before.
class LevelStack {
 public:
  /// Samples are unset.
  explicit LevelStack(const ImageHeader& header);

  [[nodiscard]] const Image& GetLevel(int level) const { return levels_[static_cast<std::size_t>(level)]; }
  [[nodiscard]] int GetNumLevels() const { return static_cast<int>(levels_.size()); }
  [[nodiscard]] Image& GetImage() { return levels_.front(); }
  /// The samples of level 0, for writing.
  [[nodiscard]] float* GetSamples() const { return samples_.front(); }

  /// So many rows, from a multiple of their number on, depend on nothing outside of them in the levels that `FinishRow`
  /// makes, so that threads may each make some of these strips.
  [[nodiscard]] int GetStripRows() const { return 1 << num_strip_levels_; }

  /// Makes what can be made of the smaller levels now that the rows of the image in this strip are set up to `row`:
  /// rows are then made of others that are still in the caches of the processor.
  void FinishRow(int row);
  /// Makes the levels that have less than a row for each strip, when all rows are finished.
  void FinishLevels();

 private:
  void MakeRow(int level, int row);

  /// Images do not move.
  std::deque<Image> levels_;
  /// Taken once, since asking an image for them changes the image, and several threads write.
  std::vector<float*> samples_;
  int num_strip_levels_;
};

}  // namespace ScEng
