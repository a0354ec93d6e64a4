// SPDX-License-Identifier: Apache-2.0
#include "Host/Viewing/DrawnPlaces.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace ScEng {
namespace {

/// `place` is in pixels of the image, within the first of its copies.
DrawnPlace FindPlace(const DrawnSide& side, double place) {
  if (!side.blends) {
    const int pixel = std::min(static_cast<int>(place), side.size - 1);
    return {pixel, pixel, 0.0F};
  }
  const double center = std::ldexp(place, -side.level) - 0.5;
  const double before = std::floor(center);
  DrawnPlace found{static_cast<int>(before), static_cast<int>(before) + 1, static_cast<float>(center - before)};
  if (side.repeats) return found;
  if (found.first < 0) return {0, 0, 0.0F};
  const int last = side.level_size - 1;
  return found.first >= last ? DrawnPlace{last, last, 0.0F} : found;
}

}  // namespace

DrawnPlaces::DrawnPlaces(const DrawnSide& side) {
  if (!(side.zoom > 0.0)) return;
  const double size = side.size;
  const double low_place = side.repeats ? -size : 0.0;
  const double high_place = side.repeats ? 2.0 * size : size;
  for (int i = 0; i < side.count; ++i) {
    const double place = side.start + (static_cast<double>(i) + 0.5) / side.zoom;
    if (!(place >= low_place && place < high_place)) continue;
    if (places.empty()) begin = i;
    const int copy = place < 0.0 ? -1 : (place < size ? 0 : 1);
    DrawnPlace found = FindPlace(side, place - copy * size);
    found.first += copy * side.level_size;
    found.second += copy * side.level_size;
    places.push_back(found);
  }
  if (places.empty()) return;
  low = places.front().first;
  high = places.front().second + 1;
  for (const DrawnPlace& place : places) {
    low = std::min(low, place.first);
    high = std::max(high, place.second + 1);
  }
}

}  // namespace ScEng
