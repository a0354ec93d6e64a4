// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Host/Image/Image.h"
#include "Host/Testing/Api.h"

namespace ScEng {

/// How far two images are apart, over all samples of all channels.
struct ImageDifference {
  /// False when size or colour mode differ; then nothing else is known.
  bool same_shape = false;
  /// The mean and the largest absolute difference. Equal samples differ by 0, infinities and NaN included; a sample
  /// that is not finite is infinitely far from every other.
  double mean = 0.0;
  double largest = 0.0;
};

/// Compares size, mode and samples; the other parts of the headers do not count. One pass, on the calling thread.
HOST_TESTING_API ImageDifference CompareImages(const Image& a, const Image& b);

}  // namespace ScEng
