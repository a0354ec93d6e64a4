// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>

#include "Host/Image/Streaming.h"
#include "Host/Math/Constants.h"
#include "Host/Util/Cancellation.h"

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
  /// Adds what was found among values that come after these.
  void Join(const ValueRange& later) {
    if (later.low < low) low = later.low;
    if (later.high > high) high = later.high;
  }
};

namespace PixelLoops {

/// Calls `body(from, count)` for pieces of a pass over pixels, in order, and asks between them whether the evaluation
/// is to stop. A piece is streamed where the pass as a whole would be.
template <class Body>
void ForEachPiece(std::size_t pixels, const Body& body) {
  for (std::size_t from = 0; from < pixels;) {
    ScEng::PollCancellation();
    const std::size_t left = pixels - from;
    const std::size_t count = left < 2 * ScEng::kStreamedSamples ? left : ScEng::kStreamedSamples;
    body(from, count);
    from += count;
  }
}

}  // namespace PixelLoops
