// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vector>

namespace ScEng {

/// The whole offsets (i, j) with (i / radius_x)^2 + (j / radius_y)^2 <= 1, decided without rounding: entry j of the
/// result is the largest i that belongs to row j (and so to row -j). There is always an entry 0, and each entry is at
/// most the one before.
///
/// A radius below 1 leaves only offset 0 in its direction; a NaN counts as 0. Offsets beyond the limits (0 or more) are
/// left out. A radius above 2^31 counts as 2^31, which changes nothing for limits up to 2^19.
std::vector<int> MakeEllipseChords(float radius_x, float radius_y, int limit_x, int limit_y);

}  // namespace ScEng
