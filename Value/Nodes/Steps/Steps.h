// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>

/// The sample loop of the Steps node.
namespace Steps {

/// The number of levels that a "steps" value asks for: truncated toward zero, at least 2. A NaN counts as 2, a number
/// beyond 32 bits as the largest that fits.
std::int32_t GetCount(float steps);

/// Quantises channel 0 of `pixels` pixels, `stride` samples apart, into `count` levels of [low, high]: with
/// t = (v - low) / (high - low) the level is floor(t * count), and levels are (high - low) / (count - 1) apart. So
/// `high` itself lands one level above the top; nothing is clamped.
void Quantize(const float* samples, std::size_t stride, float* values, std::size_t pixels, std::int32_t count,
              float low, float high);

}  // namespace Steps
