// SPDX-License-Identifier: Apache-2.0
#include "Host/Image/ImageOp.h"

#include <algorithm>
#include <cstddef>

#include "Host/Util/ParallelRows.h"

void ImageOp::FillBox(Image& image, const ScEng::Box2I& box, const float* values) {
  const ScEng::Box2I own = image.GetBox();
  const std::int64_t left = std::max(box.left, own.left) - own.left;
  const std::int64_t top = std::max(box.top, own.top) - own.top;
  const std::int64_t right = std::min(box.right, own.right) - own.left;
  const std::int64_t bottom = std::min(box.bottom, own.bottom) - own.top;
  if (left >= right || top >= bottom) return;

  constexpr std::size_t kGrainSamples = std::size_t{1} << 16;
  const auto channels = static_cast<std::size_t>(image.GetNumChannels());
  const auto width = static_cast<std::size_t>(right - left);
  const auto first = static_cast<std::size_t>(top * image.GetSizeX() + left) * channels;
  const auto stride = static_cast<std::size_t>(image.GetSizeX()) * channels;
  float* samples = image.GetArray() + first;
  ScEng::ParallelRows(static_cast<std::size_t>(bottom - top),
                      kGrainSamples / std::max<std::size_t>(width * channels, 1) + 1,
                      [&](std::size_t from, std::size_t to) {
                        for (std::size_t y = from; y < to; ++y) {
                          float* row = samples + y * stride;
                          if (channels == 1) {
                            std::fill_n(row, width, *values);
                            continue;
                          }
                          for (std::size_t x = 0; x < width; ++x) std::copy_n(values, channels, row + x * channels);
                        }
                      });
}
