// SPDX-License-Identifier: Apache-2.0
#include "Host/Gpu/OcclusionPlan.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <new>
#include <numbers>

namespace Gpu {
namespace {

/// Cosine of a multiple of a sixteenth of the circle, exact along rows and columns.
double Cosine(int direction) {
  switch (direction % kDirections) {
    case 0: return 1.0;
    case 4:
    case 12: return 0.0;
    case 8: return -1.0;
    default: return std::cos(2.0 * std::numbers::pi * direction / kDirections);
  }
}

/// The offset of a pixel that stands for the one at `offset`, whichever pixel it is seen from.
int FoldOffset(double offset, int size, ScEng::Border border) {
  if (border == ScEng::Border::kExtend) return static_cast<int>(std::clamp<double>(offset, -size - 1.0, size));
  if (std::abs(offset) <= size) return static_cast<int>(offset);
  return static_cast<int>(ScEng::WrapIndex(static_cast<std::int64_t>(offset), std::int64_t{size}));
}

OcclusionPlan::Step MakeStep(int direction, int length, const FieldShape& shape) {
  const double x = length * Cosine(direction);
  // The sine is the cosine a quarter before.
  const double y = length * Cosine(direction + kDirections - kDirections / 4);
  const double left = std::floor(x);
  const double top = std::floor(y);
  OcclusionPlan::Step step;
  step.x = FoldOffset(left, shape.size_x, shape.border);
  step.y = FoldOffset(top, shape.size_y, shape.border);
  step.right = x - left;
  step.left = 1.0 - step.right;
  step.lower = (y - top) / length;
  step.upper = (1.0 - (y - top)) / length;
  return step;
}

/// The longest group that begins at a step and whose pixels one window holds.
OcclusionPlan::Group MakeGroup(const OcclusionPlan::Step* along, int first, int num_steps, bool meets_pixels,
                               int sharing) {
  OcclusionPlan::Group group;
  group.first = first;
  group.end = first;
  const int read = meets_pixels ? 1 : 2;
  int left = along[first].x;
  int right = left;
  int top = along[first].y;
  int bottom = top;
  for (; group.end < num_steps; ++group.end) {
    const OcclusionPlan::Step& step = along[group.end];
    const auto [new_left, new_right] = std::minmax({left, right, step.x});
    const auto [new_top, new_bottom] = std::minmax({top, bottom, step.y});
    if (std::max(new_right - new_left, new_bottom - new_top + sharing - 1) + read > OcclusionPlan::kWindow) break;
    left = new_left;
    right = new_right;
    top = new_top;
    bottom = new_bottom;
  }
  group.x = left;
  group.y = top;
  return group;
}

}  // namespace

int CountSteps(double radius, const FieldShape& shape) {
  double steps = std::max(std::floor(radius), 1.0);
  if (shape.border == ScEng::Border::kExtend) {
    // The least that a step between rows and columns goes along either.
    const double least = std::sin(2.0 * std::numbers::pi / kDirections);
    steps = std::min(steps, std::ceil((std::max(shape.size_x, shape.size_y) + 1.0) / least));
  }
  // Tables are read by numbers of 32 bits, four for each step and direction.
  constexpr double kMostSteps = 1 << 24;
  if (!(steps <= kMostSteps)) throw std::bad_alloc();
  return static_cast<int>(steps);
}

OcclusionPlan::OcclusionPlan(int steps_per_direction, int sharing, const FieldShape& shape)
    : num_steps(steps_per_direction) {
  steps.reserve(static_cast<std::size_t>(kDirections) * static_cast<std::size_t>(num_steps));
  for (int direction = 0; direction < kDirections; ++direction) {
    for (int step = 0; step < num_steps; ++step) steps.push_back(MakeStep(direction, step + 1, shape));
    const Step* const along = steps.data() + steps.size() - static_cast<std::size_t>(num_steps);
    group_starts.push_back(static_cast<int>(groups.size()));
    for (int first = 0; first < num_steps; first = groups.back().end) {
      groups.push_back(MakeGroup(along, first, num_steps, MeetsPixels(direction), sharing));
    }
  }
  group_starts.push_back(static_cast<int>(groups.size()));
}

}  // namespace Gpu
