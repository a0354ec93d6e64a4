// SPDX-License-Identifier: Apache-2.0
#include "Host/Gpu/OcclusionPlan.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <numbers>
#include <tuple>

namespace {

using Gpu::OcclusionPlan;

TEST(OcclusionPlan, PutsTheSharesOfEachStepAtItsPlace) {
  const OcclusionPlan plan(100, 1);
  for (int direction = 0; direction < 16; ++direction) {
    for (int length = 1; length <= 100; ++length) {
      const auto& step = plan.steps[static_cast<std::size_t>(direction * 100 + length - 1)];
      const double angle = std::numbers::pi * direction / 8.0;
      EXPECT_NEAR(step.x + step.right, length * std::cos(angle), 1e-12);
      EXPECT_NEAR(step.y + step.lower * length, length * std::sin(angle), 1e-12);
      EXPECT_NEAR(step.left + step.right, 1.0, 1e-15);
      EXPECT_NEAR(step.upper + step.lower, 1.0 / length, 1e-15);
      EXPECT_GE(step.right, 0.0);
      EXPECT_GE(step.lower, 0.0);
    }
  }
}

TEST(OcclusionPlan, MeetsPixelsExactlyAlongRowsAndColumns) {
  const OcclusionPlan plan(7, 1);
  const int x[] = {7, 0, -7, 0};
  const int y[] = {0, 7, 0, -7};
  for (int quarter = 0; quarter < 4; ++quarter) {
    EXPECT_TRUE(OcclusionPlan::MeetsPixels(4 * quarter));
    const auto& last = plan.steps[static_cast<std::size_t>(4 * quarter * 7 + 6)];
    EXPECT_EQ(last.x, x[quarter]);
    EXPECT_EQ(last.y, y[quarter]);
    EXPECT_EQ(last.right, 0.0);
    EXPECT_EQ(last.lower, 0.0);
  }
}

/// Whether the group's window holds what a step along a direction reads, for `sharing` rows.
void ExpectInside(const OcclusionPlan& plan, const OcclusionPlan::Group& group, std::size_t direction, int step,
                  int sharing) {
  const auto& along = plan.steps[direction * static_cast<std::size_t>(plan.num_steps) + static_cast<std::size_t>(step)];
  const int side = 8 << group.window;
  const int beyond = direction % 4 == 0 ? 0 : 1;
  EXPECT_GE(along.x, group.x);
  EXPECT_GE(along.y, group.y);
  EXPECT_LT(along.x + beyond, group.x + side);
  EXPECT_LT(along.y + beyond + sharing - 1, group.y + side);
}

class OcclusionGroups : public testing::TestWithParam<std::tuple<int, int>> {};

TEST_P(OcclusionGroups, HoldEveryStepOnceInAWindowThatHoldsItsPixels) {
  const auto [steps, sharing] = GetParam();
  const OcclusionPlan plan(steps, sharing);
  ASSERT_EQ(plan.group_starts.size(), 17U);
  for (std::size_t direction = 0; direction < 16; ++direction) {
    int next = 0;
    for (int i = plan.group_starts[direction]; i < plan.group_starts[direction + 1]; ++i) {
      const auto& group = plan.groups[static_cast<std::size_t>(i)];
      ASSERT_EQ(group.first, next);
      ASSERT_LT(group.window, plan.num_windows);
      next = group.end;
      for (int step = group.first; step < group.end; ++step) ExpectInside(plan, group, direction, step, sharing);
    }
    EXPECT_EQ(next, steps);
  }
}

TEST_P(OcclusionGroups, OfAClusterLieInItsWindow) {
  const auto [steps, sharing] = GetParam();
  const OcclusionPlan plan(steps, sharing);
  for (std::size_t direction = 0; direction < 16; ++direction) {
    for (int i = plan.group_starts[direction]; i < plan.group_starts[direction + 1]; ++i) {
      const auto& group = plan.groups[static_cast<std::size_t>(i)];
      if (group.end > group.first) {
        EXPECT_EQ(group.next, i + 1);
        continue;
      }
      ASSERT_GE(group.next, i + 2);
      ASSERT_LE(group.next, plan.group_starts[direction + 1]);
      const int end = plan.groups[static_cast<std::size_t>(group.next - 1)].end;
      for (int step = group.first; step < end; ++step) ExpectInside(plan, group, direction, step, sharing);
    }
  }
}

TEST(OcclusionPlan, GathersFarGroupsInClusters) {
  const OcclusionPlan near_plan(10, 4);
  EXPECT_EQ(near_plan.num_windows, 1);
  const OcclusionPlan far_plan(100, 4);
  EXPECT_EQ(far_plan.num_windows, 2);
}

INSTANTIATE_TEST_SUITE_P(Steps, OcclusionGroups,
                         testing::Combine(testing::Values(1, 2, 3, 10, 40, 41, 47, 99, 1024), testing::Values(1, 4)));

}  // namespace
