// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "Host/Image/Image.h"
#include "Host/Image/ValueOperation.h"

namespace ScEng {

/// What a pending image has in place of samples: an image and the operations that make them of its samples, one after
/// the other.
class PendingSamples {
 public:
  /// Those of an image; null where it has samples.
  static const PendingSamples* Find(const Image& image);
  /// An image whose samples are those of the images after the operation, its one-value form for one image and the fold
  /// of its two-value form for several, which lie at one place and have one mode. Only the first may be pending. The
  /// range that it declares is NaN. Null where that cannot be.
  static std::unique_ptr<Image> MakeImage(const ImageHeader& header, const std::vector<const Image*>& images,
                                          const ValueOperation& operation, const ValueOperationLoops& loops);

  [[nodiscard]] const float* GetSource() const { return source_->GetConstArray(); }
  /// Makes `count` samples of those at `from`, which lie in the source. They do not overlap. May be called from many
  /// threads at once.
  void Compute(const float* from, float* to, std::size_t count) const;

 private:
  struct Stage {
    ValueOperationPtr operation;
    ValueOperationLoops::One one;
    ValueOperationLoops::Two two;
    // What is folded with; null for a stage of one value.
    ImagePtr second;
  };

  void AddStage(const ValueOperation& operation, const ValueOperationLoops& loops, const Image* second);

  ImagePtr source_;
  // Never empty. The images of a chain share them.
  std::vector<std::shared_ptr<const Stage>> stages_;
};

}  // namespace ScEng
