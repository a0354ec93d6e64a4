// SPDX-License-Identifier: Apache-2.0
#include "Host/Gpu/OcclusionPlan.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <new>
#include <numbers>

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

TEST(OcclusionPlan, HasEveryStepInOneGroupWhoseWindowHoldsItsPixels) {
  for (const int steps : {1, 2, 3, 10, 99, 1024}) {
    for (const int sharing : {1, 4}) {
      const OcclusionPlan plan(steps, sharing);
      ASSERT_EQ(plan.group_starts.size(), 17U);
      for (std::size_t direction = 0; direction < 16; ++direction) {
        int next = 0;
        for (int i = plan.group_starts[direction]; i < plan.group_starts[direction + 1]; ++i) {
          const auto& group = plan.groups[static_cast<std::size_t>(i)];
          EXPECT_EQ(group.first, next);
          ASSERT_GT(group.end, group.first);
          next = group.end;
          for (int step = group.first; step < group.end; ++step) {
            const auto& along =
                plan.steps[direction * static_cast<std::size_t>(steps) + static_cast<std::size_t>(step)];
            const int beyond = direction % 4 == 0 ? 0 : 1;
            EXPECT_GE(along.x, group.x);
            EXPECT_GE(along.y, group.y);
            EXPECT_LT(along.x + beyond, group.x + 8);
            EXPECT_LT(along.y + beyond + sharing - 1, group.y + 8);
          }
        }
        EXPECT_EQ(next, steps);
      }
    }
  }
}

TEST(OcclusionPlan, StaysAsNearAsTheFieldIsLarge) {
  for (const ScEng::Border border : {ScEng::Border::kWrap, ScEng::Border::kExtend}) {
    const Gpu::FieldShape shape{5, 3, border};
    const OcclusionPlan plain(200, 1);
    const OcclusionPlan folded(200, 1, shape);
    ASSERT_EQ(folded.steps.size(), plain.steps.size());
    for (std::size_t i = 0; i < plain.steps.size(); ++i) {
      EXPECT_GE(folded.steps[i].x, -6);
      EXPECT_LE(folded.steps[i].x, 5);
      EXPECT_GE(folded.steps[i].y, -4);
      EXPECT_LE(folded.steps[i].y, 3);
      // Both pixels that are read stand for the same, whichever pixel looks.
      for (const int next : {0, 1}) {
        for (int x = 0; x < 5; ++x) {
          EXPECT_EQ(ScEng::BorderIndex(x + folded.steps[i].x + next, 5, border),
                    ScEng::BorderIndex(x + plain.steps[i].x + next, 5, border));
        }
        for (int y = 0; y < 3; ++y) {
          EXPECT_EQ(ScEng::BorderIndex(y + folded.steps[i].y + next, 3, border),
                    ScEng::BorderIndex(y + plain.steps[i].y + next, 3, border));
        }
      }
    }
  }
}

TEST(OcclusionPlan, CountsTheStepsThatMatter) {
  using ScEng::Border;
  EXPECT_EQ(Gpu::CountSteps(3.9, {10, 10, Border::kExtend}), 3);
  EXPECT_EQ(Gpu::CountSteps(5000.0, {10, 10, Border::kWrap}), 5000);
  // The flattest direction between rows and columns goes along one of them by sin(22.5 degrees) = 0.3827 a step, and
  // 11 / 0.3827 is 28.7.
  EXPECT_EQ(Gpu::CountSteps(28.0, {10, 3, Border::kExtend}), 28);
  EXPECT_EQ(Gpu::CountSteps(1e300, {10, 3, Border::kExtend}), 29);
  EXPECT_EQ(Gpu::CountSteps(16777216.0, {10, 3, Border::kWrap}), 16777216);
  EXPECT_THROW(Gpu::CountSteps(16777217.0, {10, 3, Border::kWrap}), std::bad_alloc);
}

}  // namespace
