// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Host/Image/Image.h"

namespace ScEng {

/// A small copy of an image from few of its samples, row by row.
class SmallCopy {
 public:
  /// One that fits into `size` by `size` pixels, at least one by one unless the image has none.
  SmallCopy(const Image& image, int size);

  [[nodiscard]] const ImageHeader& GetHeader() const { return header_; }
  void SetRow(int row, float* to) const;

 private:
  const Image& image_;
  ImageHeader header_;
};

}  // namespace ScEng
