// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>

/// The sample loops of the Clamp node.
namespace Clamp {

/// The choices of "clamp", in their order: which limits hold.
enum class Sides { kBoth, kLow, kHigh };

/// The choice with this index; a word that is not in the list counts as "both".
Sides GetSides(int index);

/// The choices of "profile", in their order: the shape of what lies between the limits.
enum class Profile { kLinear, kSmooth, kPerlin, kArcOut, kArcIn };

/// The choice with this index; a word that is not in the list counts as "linear".
Profile GetProfile(int index);

struct Limits {
  float low = 0.0F;
  float high = 0.0F;
};

/// Opens the side that does not limit: for "low" the upper limit becomes the highest value of channel 0, for "high" the
/// lower limit the lowest. NaN never counts; pixels are `stride` samples apart.
Limits OpenSide(const Limits& limits, Sides sides, const float* samples, std::size_t stride, std::size_t pixels);

/// Limits channel 0 of `pixels` pixels and reshapes what lies between by the profile. A NaN becomes the lower
/// limit. With equal limits every profile but the linear one gives NaN.
void Apply(const float* samples, std::size_t stride, float* values, std::size_t pixels, const Limits& limits,
           Profile profile);

}  // namespace Clamp
