// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "Host/Viewing/Look.h"
#include "Host/Viewing/Ramps.h"

namespace ScEng {

/// The numbers of a row of drawn pixels.
struct DrawnNumbers {
  std::size_t count = 0;
  /// How many of the planes there are: 1 for values, 2 for pairs, 4 for colors.
  int num_planes = 1;
  std::array<const float*, 4> planes = {};
  /// For relief alone.
  const float* along_x = nullptr;
  const float* along_y = nullptr;
};

/// Turns numbers into colors as a look has it.
class PixelShades {
 public:
  PixelShades(const Look& look, const ValueRange& range);

  /// A drawn pixel is four bytes in memory: red, green, blue and opacity.
  void Shade(const DrawnNumbers& numbers, std::uint32_t* pixels) const;

 private:
  void ShadeBySteepness(const DrawnNumbers& numbers, std::uint32_t* pixels) const;
  void ShadeByLight(const DrawnNumbers& numbers, std::uint32_t* pixels) const;
  void ShadeChannels(const DrawnNumbers& numbers, std::uint32_t* pixels) const;
  void CoverStrange(const DrawnNumbers& numbers, std::uint32_t* pixels) const;
  void CoverMarked(const DrawnNumbers& numbers, std::uint32_t* pixels) const;

  Shading shading_;
  bool marks_;
  float low_;
  float high_;
  float span_;
  /// The ramp as it lies in memory.
  std::array<std::uint32_t, kRampColors> ramp_;
  /// Where light comes from, for heights in units of value.
  float light_x_;
  float light_y_;
  float light_up_;
  float exaggeration_;
};

/// A color 0xRRGGBB, opaque, as it lies in memory.
std::uint32_t PackColor(std::uint32_t color);

}  // namespace ScEng
