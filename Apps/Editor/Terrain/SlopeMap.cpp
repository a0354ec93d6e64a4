// SPDX-License-Identifier: Apache-2.0
#include "Apps/Editor/Terrain/SlopeMap.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "Apps/Editor/Terrain/TerrainFrame.h"
#include "Host/Util/ParallelRows.h"

namespace {

std::uint8_t Encode(float slope) {
  const float space = slope * static_cast<float>(TerrainFrame::kRise);
  return static_cast<std::uint8_t>(std::lround(127.0F + 127.0F * space / (1.0F + std::abs(space))));
}

}  // namespace

float FindSlope(const std::array<float, 3>& heights, const std::array<double, 3>& places) {
  const std::size_t first = std::isfinite(heights[0]) ? 0 : 1;
  const std::size_t last = std::isfinite(heights[2]) ? 2 : 1;
  const double extent = places[last] - places[first];
  const auto slope = static_cast<float>((heights[last] - heights[first]) / extent);
  return std::isfinite(slope) ? slope : 0.0F;
}

SlopeMap MakeSlopeMap(const HeightField& field) {
  SlopeMap map;
  while (std::max(field.GetSizeX(), field.GetSizeY()) >> map.level > SlopeMap::kMostPixels &&
         map.level + 1 < field.GetNumLevels()) {
    ++map.level;
  }
  const HeightField::Heights heights = field.CopyLevel(map.level);
  map.size_x = heights.size_x;
  map.size_y = heights.size_y;
  map.pixels.resize(heights.values.size());
  const double spacing = std::ldexp(field.GetSpacing(), map.level);
  ScEng::ParallelRows(static_cast<std::size_t>(map.size_y), 16, [&](std::size_t from, std::size_t to) {
    for (int y = static_cast<int>(from); y < static_cast<int>(to); ++y) {
      const int above = std::max(y - 1, 0);
      const int below = std::min(y + 1, map.size_y - 1);
      for (int x = 0; x < map.size_x; ++x) {
        const int left = std::max(x - 1, 0);
        const int right = std::min(x + 1, map.size_x - 1);
        const float middle = heights.At(x, y);
        const float along_x = FindSlope({heights.At(left, y), middle, heights.At(right, y)},
                                        {left * spacing, x * spacing, right * spacing});
        const float along_y = FindSlope({heights.At(x, above), middle, heights.At(x, below)},
                                        {-above * spacing, -y * spacing, -below * spacing});
        map.pixels[heights.IndexOf(x, y)] = {Encode(along_x), Encode(along_y), 0, 255};
      }
    }
  });
  return map;
}
