// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>

namespace ScEng {

/// The least samples of a result that is written past the processor's caches.
inline constexpr std::size_t kStreamedSamples = std::size_t{1} << 21;

/// Whether a result of that many samples is out of the processor's caches before anybody reads it, so that it is
/// written past them.
constexpr bool IsStreamed(std::size_t samples) { return samples >= kStreamedSamples; }

}  // namespace ScEng
