// SPDX-License-Identifier: Apache-2.0
#include "Host/Testing/ImageComparison.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

namespace ScEng {
namespace {

double Difference(float a, float b) {
  if (a == b || (std::isnan(a) && std::isnan(b))) return 0.0;
  if (!std::isfinite(a) || !std::isfinite(b)) return std::numeric_limits<double>::infinity();
  return std::abs(static_cast<double>(a) - static_cast<double>(b));
}

}  // namespace

ImageDifference CompareImages(const Image& a, const Image& b) {
  ImageDifference difference;
  difference.same_shape =
      a.GetSizeX() == b.GetSizeX() && a.GetSizeY() == b.GetSizeY() && a.GetColorMode() == b.GetColorMode();
  if (!difference.same_shape) return difference;
  const std::size_t samples = a.GetNumSamples();
  double sum = 0.0;
  for (std::size_t i = 0; i < samples; ++i) {
    const double apart = Difference(a.GetConstArray()[i], b.GetConstArray()[i]);
    sum += apart;
    difference.largest = std::max(difference.largest, apart);
  }
  if (samples > 0) difference.mean = sum / static_cast<double>(samples);
  return difference;
}

}  // namespace ScEng
