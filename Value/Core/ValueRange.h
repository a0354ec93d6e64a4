// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>

#include "Host/Math/Constants.h"

/// The lowest and highest of some values. It starts reversed, from the largest float to its negative, and stays so
/// where there is no value that is a number.
struct ValueRange {
  float low = ScEng::Math<float>::MAX_REAL;
  float high = ScEng::Math<float>::MIN_REAL;

  /// A NaN leaves the range as it is. Of two zeros the first one's sign stays.
  void Include(float value) {
    if (value < low) low = value;
    if (value > high) high = value;
  }
};

namespace PixelLoops {

/// Whether a result of that many values is out of the caches before anybody reads it, so that it is written past them.
inline bool IsStreamed(std::size_t values) { return values >= std::size_t{1} << 21; }

}  // namespace PixelLoops
