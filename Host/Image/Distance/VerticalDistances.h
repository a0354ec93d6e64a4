// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <functional>

namespace ScEng {

/// Writes, for `count` pixels of row `y` from column `x` on, 0 where a pixel is set and +infinity where it is not.
using SeedRow = std::function<void(int x, int y, int count, float* to)>;

/// Fills `distances` (dense rows) with every pixel's distance to the nearest set pixel of its own column, +infinity in
/// a column without one. With `wrap` the rows go round. The first of the two passes of a distance transform.
///
/// Exact for up to 2^24 rows. Uses the host's threads, each on columns of its own, and calls `seed` from them, once for
/// each pixel.
void MeasureVerticalDistances(float* distances, int width, int height, bool wrap, const SeedRow& seed);

}  // namespace ScEng
