// SPDX-License-Identifier: Apache-2.0
#include "Host/Image/DisplayImage.h"

#include <algorithm>
#include <cstddef>

namespace ScEng {
namespace {

/// Written so that a NaN gives 0.
float Cut(float value) { return value > 0.0F ? std::min(value, 1.0F) : 0.0F; }

}  // namespace

ImagePtr MakeDisplayImage(const Image& image, float low, float high) {
  ImageHeader header = image.GetImageHeader();
  const bool is_color = image.GetNumChannels() == 4;
  header.color_mode = is_color ? ColorMode::kColor : ColorMode::kValue;
  header.value_low = 0.0F;
  header.value_high = 1.0F;
  auto shown = ScEng::MakeRef<Image>(header, nullptr);

  const auto channels = static_cast<std::size_t>(image.GetNumChannels());
  const std::size_t pixels = static_cast<std::size_t>(image.GetSizeX()) * static_cast<std::size_t>(image.GetSizeY());
  const float span = high - low;
  const auto map = [low, span](float value) { return span > 0.0F ? Cut((value - low) / span) : 0.0F; };
  const float* from = image.GetConstArray();
  float* to = shown->GetArray();
  for (std::size_t i = 0; i < pixels; ++i, from += channels) {
    *to++ = map(from[0]);
    if (!is_color) continue;
    *to++ = map(from[1]);
    *to++ = map(from[2]);
    *to++ = Cut(from[3]);
  }
  return shown;
}

}  // namespace ScEng
