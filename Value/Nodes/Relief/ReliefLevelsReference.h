// SPDX-License-Identifier: Apache-2.0
//
// The definition of the "levels" style, pixel by pixel from a table of the disc's offsets, that the search is held
// against.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "Value/Nodes/Relief/ReliefField.h"

namespace ReliefLevels::Reference {

struct Record {
  int i;
  int j;
  float d;
};

inline float SquareRoot(float x) { return static_cast<float>(std::sqrt(static_cast<double>(x))); }

/// The offsets within the radius, as far as `limit_x` and `limit_y`.
inline std::vector<Record> MakeDisc(int radius, int limit_x, int limit_y) {
  std::vector<Record> disc;
  for (int j = -std::min(radius, limit_y); j <= std::min(radius, limit_y); ++j) {
    for (int i = -std::min(radius, limit_x); i <= std::min(radius, limit_x); ++i) {
      const auto square = static_cast<float>(std::int64_t{i} * i + std::int64_t{j} * j);
      const float d = SquareRoot(square);
      if (d < static_cast<float>(radius)) disc.push_back({i, j, d});
    }
  }
  return disc;
}

inline float GetLevel(ReliefProfile profile, float t) {
  const float u = 1.0F - t;
  switch (profile) {
    case ReliefProfile::kLinear: return u;
    case ReliefProfile::kSmooth: return (3.0F - 2.0F * u) * (u * u);
    case ReliefProfile::kArcOut: return SquareRoot(1.0F - t * t);
    case ReliefProfile::kArcIn: return 1.0F - SquareRoot(1.0F - u * u);
  }
  return u;
}

inline float ComputePixel(const Field& field, const std::vector<Record>& disc, int x, int y) {
  const auto get = [&field](int column, int row) {
    return field
        .mask[static_cast<std::size_t>(row) * static_cast<std::size_t>(field.width) + static_cast<std::size_t>(column)];
  };
  const float a = get(x, y);
  if (a >= field.high) return a;
  const float range = field.high - field.low;
  const float inverse = 1.0F / range;
  float largest = field.low;
  for (const Record& record : disc) {
    int column = x + record.i;
    int row = y + record.j;
    if (field.wrap) {
      column = ((column % field.width) + field.width) % field.width;
      row = ((row % field.height) + field.height) % field.height;
    }
    if (column < 0 || column >= field.width || row < 0 || row >= field.height) continue;
    const float q = (get(column, row) - field.low) * inverse;
    const float quotient = record.d / (static_cast<float>(field.radius_px) * q);
    const float from_zero = 0.0F < quotient ? quotient : 0.0F;
    const float t = from_zero < 1.0F ? from_zero : 1.0F;
    const float candidate = GetLevel(field.profile, t) * q * range + field.low;
    if (largest < candidate) largest = candidate;
  }
  return largest;
}

/// The relief of a field, with offsets up to the limits. Beyond the size of an image that does not tile there is
/// nothing, so that any limit from there on gives the definition.
inline std::vector<float> Compute(const Field& field, int limit_x, int limit_y) {
  const std::vector<Record> disc = MakeDisc(field.radius_px, limit_x, limit_y);
  std::vector<float> output;
  for (int y = 0; y < field.height; ++y) {
    for (int x = 0; x < field.width; ++x) {
      output.push_back(field.grown[output.size()] > 0.0F ? ComputePixel(field, disc, x, y) : 0.0F);
    }
  }
  return output;
}

inline std::vector<float> Compute(const Field& field) {
  return field.wrap ? Compute(field, field.radius_px, field.radius_px) : Compute(field, field.width, field.height);
}

}  // namespace ReliefLevels::Reference
