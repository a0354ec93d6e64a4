// SPDX-License-Identifier: Apache-2.0
#include "Host/Viewing/ReliefRows.h"

#include <algorithm>
#include <cmath>

#include "Host/Viewing/AllFinite.h"

namespace ScEng {
namespace {

float GetDifference(float before, float here, float after) {
  const bool has_before = std::isfinite(before);
  const bool has_after = std::isfinite(after);
  if (has_before && has_after) return after * 0.5F - before * 0.5F;
  if (!std::isfinite(here) || has_before == has_after) return 0.0F;
  return has_after ? after - here : here - before;
}

void SetDifferences(const float* before, const float* here, const float* after, std::size_t count, float scale,
                    float* to) {
  // Runs so short that one number that is not finite makes little work.
  constexpr std::size_t kRun = 64;
  for (std::size_t from = 0; from < count; from += kRun) {
    const std::size_t end = std::min(count, from + kRun);
    for (std::size_t i = from; i < end; ++i) to[i] = (after[i] * 0.5F - before[i] * 0.5F) * scale;
    if (AllFinite(to + from, end - from)) continue;
    for (std::size_t i = from; i < end; ++i) to[i] = GetDifference(before[i], here[i], after[i]) * scale;
  }
}

}  // namespace

const float* ReliefRows::Get(int row, Plane plane) {
  Row& kept = kept_[static_cast<std::size_t>(row & 1)];
  if (!kept.is_made || kept.row != row) {
    kept.slopes.resize(2 * width_);
    const float* const above = rows_.Get(row - 1, 0) + 1;
    const float* const here = rows_.Get(row, 0) + 1;
    const float* const below = rows_.Get(row + 1, 0) + 1;
    SetDifferences(here - 1, here, here + 1, width_, scale_, kept.slopes.data());
    SetDifferences(above, here, below, width_, scale_, kept.slopes.data() + width_);
    kept.is_made = true;
    kept.row = row;
  }
  return kept.slopes.data() + (plane == kAlongX ? 0 : width_);
}

}  // namespace ScEng
