// SPDX-License-Identifier: Apache-2.0
#include "Host/Viewing/Probe.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <iterator>

#include "Host/Image/ImageMetadata.h"

namespace ScEng {

PixelReading ReadPixel(const ViewImage& image, int x, int y) {
  const Image& samples = image.GetImage();
  PixelReading reading;
  reading.x = x;
  reading.y = y;
  const ImageHeader& header = image.GetHeader();
  if (x < 0 || y < 0 || x >= header.size_x || y >= header.size_y) return reading;
  reading.is_inside = true;
  reading.channels = samples.GetNumChannels();
  const auto column = static_cast<std::size_t>(x / image.GetReduction());
  const auto row = static_cast<std::size_t>(y / image.GetReduction());
  const std::size_t place = row * static_cast<std::size_t>(samples.GetSizeX()) + column;
  const float* const pixel = samples.GetConstArray() + place * static_cast<std::size_t>(reading.channels);
  std::copy_n(pixel, reading.channels, std::begin(reading.samples));
  reading.value = ValueOfPixel(pixel, samples.GetColorMode());
  return reading;
}

std::string FormatSample(float sample) {
  if (std::isnan(sample)) return "nan";
  char text[32];
  return {text, std::to_chars(text, text + sizeof(text), sample).ptr};
}

std::optional<std::array<double, 2>> GetMapPoint(const Image& image, double document_x, double document_y) {
  const auto& metadata = image.GetMetadata();
  if (!metadata || !metadata->georeference || !metadata->georeference->transform) return std::nullopt;
  const auto& t = *metadata->georeference->transform;
  return std::array<double, 2>{t[0] + document_x * t[1] + document_y * t[2],
                               t[3] + document_x * t[4] + document_y * t[5]};
}

}  // namespace ScEng
