// SPDX-License-Identifier: Apache-2.0
//
// What all tests share about images: comparisons that know NaN, samples as vectors, the limit of sizes.
#pragma once

#include <bit>
#include <cmath>
#include <cstdint>
#include <vector>

#include "Host/Image/Image.h"

namespace Testing {

/// The same number, sign of zero included; any NaN is any other.
inline bool AreSame(float a, float b) {
  return (std::isnan(a) && std::isnan(b)) || std::bit_cast<std::uint32_t>(a) == std::bit_cast<std::uint32_t>(b);
}

inline std::vector<float> GetSamples(const Image& image) {
  return {image.GetConstArray(), image.GetConstArray() + image.GetNumSamples()};
}

/// Sets the largest size of images for one scope.
class MaxSizeScope {
 public:
  MaxSizeScope(int x, int y) : x_(Image::GetMaxSizeX()), y_(Image::GetMaxSizeY()) { Image::SetMaxSize(x, y); }
  ~MaxSizeScope() { Image::SetMaxSize(x_, y_); }
  MaxSizeScope(const MaxSizeScope&) = delete;
  MaxSizeScope& operator=(const MaxSizeScope&) = delete;

 private:
  int x_;
  int y_;
};

}  // namespace Testing
