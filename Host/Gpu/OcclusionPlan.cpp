// SPDX-License-Identifier: Apache-2.0
#include "Host/Gpu/OcclusionPlan.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>
#include <utility>

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

OcclusionPlan::Step MakeStep(int direction, int length) {
  const double x = length * Cosine(direction);
  // The sine is the cosine a quarter before.
  const double y = length * Cosine(direction + kDirections - kDirections / 4);
  const double left = std::floor(x);
  const double top = std::floor(y);
  OcclusionPlan::Step step;
  step.x = static_cast<int>(left);
  step.y = static_cast<int>(top);
  step.right = x - left;
  step.left = 1.0 - step.right;
  step.lower = (y - top) / length;
  step.upper = (1.0 - (y - top)) / length;
  return step;
}

/// From which step on groups are gathered in clusters: farther out a bound may be taken at a nearer step than the
/// highest pixel's without becoming much larger.
constexpr int kFirstOfClusters = 40;
/// The windows of groups and of clusters, 8 and 16 pixels along each side.
constexpr int kGroupWindow = 0;
constexpr int kClusterWindow = 1;

/// The pixels that some steps read, relative to the pixel that looks.
class Extent {
 public:
  explicit Extent(const OcclusionPlan::Step& step) : left_(step.x), right_(step.x), top_(step.y), bottom_(step.y) {}

  void Include(const OcclusionPlan::Step& step) {
    left_ = std::min(left_, step.x);
    right_ = std::max(right_, step.x);
    top_ = std::min(top_, step.y);
    bottom_ = std::max(bottom_, step.y);
  }

  /// Whether a window holds them, `read` pixels side by side per step, for `sharing` rows.
  [[nodiscard]] bool FitsInto(int window, int read, int sharing) const {
    return std::max(right_ - left_, bottom_ - top_ + sharing - 1) + read <= OcclusionPlan::kSmallestWindow << window;
  }
  [[nodiscard]] int GetLeft() const { return left_; }
  [[nodiscard]] int GetTop() const { return top_; }

 private:
  int left_;
  int right_;
  int top_;
  int bottom_;
};

/// One past the last of the steps from `first` on that a window holds together, and where the window lies.
OcclusionPlan::Group MakeGroup(const OcclusionPlan::Step* along, int first, int num_steps, int window, int read,
                               int sharing) {
  Extent extent(along[first]);
  int end = first + 1;
  for (; end < num_steps; ++end) {
    Extent longer = extent;
    longer.Include(along[end]);
    if (!longer.FitsInto(window, read, sharing)) break;
    extent = longer;
  }
  return {.first = first, .end = end, .window = window, .x = extent.GetLeft(), .y = extent.GetTop(), .next = 0};
}

/// Adds the groups of one direction, far ones behind the cluster that holds them.
void AddGroups(const OcclusionPlan::Step* along, int num_steps, int read, int sharing,
               std::vector<OcclusionPlan::Group>& groups) {
  const auto add_groups = [&](int first, int end) {
    while (first < end) {
      groups.push_back(MakeGroup(along, first, end, kGroupWindow, read, sharing));
      groups.back().next = static_cast<int>(groups.size());
      first = groups.back().end;
    }
  };
  // Nearer groups are seldom left out, so that looking at them together would be one look more.
  int first = std::min(num_steps, kFirstOfClusters);
  add_groups(0, first);
  while (first < num_steps) {
    OcclusionPlan::Group cluster = MakeGroup(along, first, num_steps, kClusterWindow, read, sharing);
    const int end = std::exchange(cluster.end, first);
    const std::size_t place = groups.size();
    groups.push_back(cluster);
    add_groups(first, end);
    groups[place].next = static_cast<int>(groups.size());
    first = end;
  }
}

}  // namespace

OcclusionPlan::OcclusionPlan(int steps_per_direction, int sharing) : num_steps(steps_per_direction) {
  for (int direction = 0; direction < kDirections; ++direction) {
    for (int step = 0; step < num_steps; ++step) steps.push_back(MakeStep(direction, step + 1));
    const Step* const along = steps.data() + steps.size() - static_cast<std::size_t>(num_steps);
    group_starts.push_back(static_cast<int>(groups.size()));
    AddGroups(along, num_steps, MeetsPixels(direction) ? 1 : 2, sharing, groups);
  }
  group_starts.push_back(static_cast<int>(groups.size()));
  for (const Group& group : groups) num_windows = std::max(num_windows, group.window + 1);
}

}  // namespace Gpu
