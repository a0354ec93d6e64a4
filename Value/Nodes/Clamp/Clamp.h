// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>

/// The sample loops of the Clamp node.
namespace Clamp {

struct Limits {
  float low = 0.0F;
  float high = 0.0F;
};

/// Opens the side that does not limit, by its place in "both,low,high": for "low" the upper limit becomes the highest
/// value of channel 0, for "high" the lower limit the lowest. NaN never counts; pixels are `stride` samples apart.
Limits OpenSide(const Limits& limits, int sides, const float* samples, std::size_t stride, std::size_t pixels);

/// Limits channel 0 of `pixels` pixels and reshapes what lies between by the profile, by its place in
/// "linear,smooth,perlin,arc_out,arc_in" (any other is linear). A NaN becomes the lower limit. With equal limits every
/// profile but the linear one gives NaN.
void Apply(const float* samples, std::size_t stride, float* values, std::size_t pixels, const Limits& limits,
           int profile);

}  // namespace Clamp
