// SPDX-License-Identifier: Apache-2.0
#include "Apps/Panel/FixedRange.h"

#include <algorithm>
#include <cmath>

#include "Host/Image/Image.h"

namespace {

using ScEng::ValueRange;

bool HasExtent(const ValueRange& range) {
  return std::isfinite(range.low) && std::isfinite(range.high) && range.high > range.low;
}

/// Whether what spans one range can be told apart in the other: most of it lies there, and it is neither a speck there
/// nor far too large.
bool IsSeenIn(const ValueRange& range, const ValueRange& shown) {
  const float span = range.high - range.low;
  const float room = shown.high - shown.low;
  const float common = std::min(range.high, shown.high) - std::max(range.low, shown.low);
  constexpr float kMost = 4.0F;
  return common >= std::min(span, room) / 2.0F && span <= room * kMost && room <= span * kMost;
}

}  // namespace

ValueRange ChooseFixedRange(const Image& result, const Image* source) {
  const ValueRange own{result.GetValueLow(), result.GetValueHigh()};
  if (source != nullptr && source->GetColorMode() == result.GetColorMode()) {
    const ValueRange before{source->GetValueLow(), source->GetValueHigh()};
    // A result of one value has no range of its own.
    const bool is_flat = !HasExtent(own);
    if (HasExtent(before) && (is_flat || IsSeenIn(own, before))) return before;
  }
  if (HasExtent(own)) return own;
  return result.GetColorMode() == ColorMode::kSigned ? ValueRange{-1.0F, 1.0F} : ValueRange{0.0F, 1.0F};
}
