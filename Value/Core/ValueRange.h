// SPDX-License-Identifier: Apache-2.0
#pragma once

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
