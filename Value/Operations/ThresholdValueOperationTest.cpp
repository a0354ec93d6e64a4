// SPDX-License-Identifier: Apache-2.0
#include "Value/Operations/ThresholdValueOperation.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <vector>

#include "Tests/Support/ValueTesting.h"

namespace {

using Testing::kInfinity;
using Testing::kNan;

// The square root of three quarters.
constexpr float kRootOfThreeQuarters = 0.866025403784438647F;

ThresholdValueOperation MakeHalf(ThresholdProfile::Function profile) { return {0.5F, 0.25F, 0.5F, profile}; }

TEST(ThresholdValueOperation, KeepsItsFieldsAndWhatFollowsFromThem) {
  const ThresholdValueOperation operation = MakeHalf(ThresholdProfile::Linear);
  EXPECT_SAME(operation.min, 0.0F);
  EXPECT_SAME(operation.max, 1.0F);
  EXPECT_SAME(operation.a, 0.5F);
  EXPECT_SAME(operation.b, 0.25F);
  EXPECT_SAME(operation.falloff, 0.5F);
  EXPECT_SAME(operation.outer, 0.75F);
  EXPECT_SAME(operation.inverse_falloff, 2.0F);
  EXPECT_EQ(operation.profile, &ThresholdProfile::Linear);
}

TEST(ThresholdValueOperation, WithoutAFalloffTheInverseIsInfinite) {
  const ThresholdValueOperation operation(0.0F, 0.25F, 0.0F, ThresholdProfile::Linear);
  EXPECT_SAME(operation.outer, 0.25F);
  EXPECT_SAME(operation.inverse_falloff, kInfinity);
}

TEST(ThresholdValueOperation, FallsLinearlyAcrossTheBand) {
  ThresholdValueOperation operation = MakeHalf(ThresholdProfile::Linear);
  EXPECT_SAME(operation.Compute(0.5F), 1.0F);
  EXPECT_SAME(operation.Compute(0.375F), 1.0F);
  EXPECT_SAME(operation.Compute(0.75F), 1.0F);
  EXPECT_SAME(operation.Compute(0.25F), 1.0F);
  EXPECT_SAME(operation.Compute(0.875F), 0.75F);
  EXPECT_SAME(operation.Compute(1.0F), 0.5F);
  EXPECT_SAME(operation.Compute(0.0F), 0.5F);
  EXPECT_SAME(operation.Compute(-0.0F), 0.5F);
  EXPECT_SAME(operation.Compute(-0.125F), 0.25F);
  EXPECT_SAME(operation.Compute(1.25F), 0.0F);
  EXPECT_SAME(operation.Compute(-0.25F), 0.0F);
  EXPECT_SAME(operation.Compute(100.0F), 0.0F);
}

TEST(ThresholdValueOperation, FollowsItsProfile) {
  EXPECT_SAME(MakeHalf(ThresholdProfile::Smooth).Compute(1.0F), 0.5F);
  EXPECT_SAME(MakeHalf(ThresholdProfile::Smooth).Compute(1.125F), 0.103515625F);
  EXPECT_SAME(MakeHalf(ThresholdProfile::ArcOut).Compute(1.0F), kRootOfThreeQuarters);
  EXPECT_SAME(MakeHalf(ThresholdProfile::ArcIn).Compute(1.0F), 1.0F - kRootOfThreeQuarters);
}

TEST(ThresholdValueOperation, GivesOneAtTheInnerAndZeroAtTheOuterEdgeForEveryProfile) {
  for (int index = 0; index < 4; ++index) {
    SCOPED_TRACE(index);
    ThresholdValueOperation operation = MakeHalf(ThresholdProfile::Get(index));
    EXPECT_SAME(operation.Compute(0.75F), 1.0F);
    EXPECT_SAME(operation.Compute(0.25F), 1.0F);
    EXPECT_SAME(operation.Compute(1.25F), 0.0F);
    EXPECT_SAME(operation.Compute(-0.25F), 0.0F);
  }
}

TEST(ThresholdValueOperation, HasAHardEdgeWithoutAFalloff) {
  for (int index = 0; index < 4; ++index) {
    SCOPED_TRACE(index);
    ThresholdValueOperation operation(0.5F, 0.25F, 0.0F, ThresholdProfile::Get(index));
    EXPECT_SAME(operation.Compute(0.5F), 1.0F);
    EXPECT_SAME(operation.Compute(0.74999994F), 1.0F);
    EXPECT_SAME(operation.Compute(0.75F), 0.0F);
    EXPECT_SAME(operation.Compute(0.25F), 0.0F);
  }
}

TEST(ThresholdValueOperation, IsZeroEverywhereWithoutSizeAndFalloff) {
  ThresholdValueOperation operation(0.5F, 0.0F, 0.0F, ThresholdProfile::Linear);
  for (const float value : {0.5F, 0.0F, 1.0F, kInfinity}) EXPECT_SAME(operation.Compute(value), 0.0F);
}

TEST(ThresholdValueOperation, IsZeroForNanAndInfinities) {
  for (int index = 0; index < 4; ++index) {
    ThresholdValueOperation operation = MakeHalf(ThresholdProfile::Get(index));
    EXPECT_SAME(operation.Compute(kNan), 0.0F);
    EXPECT_SAME(operation.Compute(kInfinity), 0.0F);
    EXPECT_SAME(operation.Compute(-kInfinity), 0.0F);
  }
  // The distance of two infinities is not a number.
  ThresholdValueOperation far_away(kInfinity, 0.25F, 0.5F, ThresholdProfile::Linear);
  EXPECT_SAME(far_away.Compute(kInfinity), 0.0F);
}

TEST(ThresholdValueOperation, CoversEveryNumberWithAnInfiniteSize) {
  ThresholdValueOperation operation(0.5F, kInfinity, 0.5F, ThresholdProfile::Linear);
  EXPECT_SAME(operation.Compute(-3.0e38F), 1.0F);
  EXPECT_SAME(operation.Compute(kInfinity), 0.0F);
}

TEST(ThresholdValueOperation, IgnoresTheSecondValue) {
  ThresholdValueOperation operation = MakeHalf(ThresholdProfile::Smooth);
  for (const float value : {0.5F, 1.0F, 1.125F, 2.0F, kNan}) {
    EXPECT_SAME(operation.Compute(value, 0.5F), operation.Compute(value));
    EXPECT_SAME(operation.Compute(value, kNan), operation.Compute(value));
  }
}

TEST(ThresholdProfile, GoesByThePlaceInTheList) {
  EXPECT_EQ(ThresholdProfile::Get(0), &ThresholdProfile::Linear);
  EXPECT_EQ(ThresholdProfile::Get(1), &ThresholdProfile::Smooth);
  EXPECT_EQ(ThresholdProfile::Get(2), &ThresholdProfile::ArcOut);
  EXPECT_EQ(ThresholdProfile::Get(3), &ThresholdProfile::ArcIn);
}

TEST(ThresholdProfile, IsLinearForAnyOtherIndex) {
  for (const int index : {-1, 4, 1000, -1000}) EXPECT_EQ(ThresholdProfile::Get(index), &ThresholdProfile::Linear);
}

TEST(ThresholdProfile, HasItsValuesAtAQuarterAndAHalf) {
  EXPECT_SAME(ThresholdProfile::Linear(0.25F), 0.25F);
  EXPECT_SAME(ThresholdProfile::Smooth(0.5F), 0.5F);
  EXPECT_SAME(ThresholdProfile::Smooth(0.25F), 0.103515625F);
  EXPECT_SAME(ThresholdProfile::ArcOut(0.5F), kRootOfThreeQuarters);
  // The square root of 7 / 16.
  EXPECT_SAME(ThresholdProfile::ArcOut(0.25F), 0.661437827766147713F);
  EXPECT_SAME(ThresholdProfile::ArcIn(0.5F), 1.0F - kRootOfThreeQuarters);
  EXPECT_SAME(ThresholdProfile::ArcIn(0.75F), 1.0F - 0.661437827766147713F);
}

RC_GTEST_PROP(ThresholdProperties, LiesBetweenZeroAndOneAndFallsAwayFromTheCenter, ()) {
  const auto thousandth = [](int from, int to) { return static_cast<float>(*rc::gen::inRange(from, to)) / 1000.0F; };
  const float center = thousandth(-2000, 2000);
  const float size = thousandth(0, 2000);
  const float falloff = thousandth(1, 2000);
  ThresholdValueOperation operation(center, size, falloff, ThresholdProfile::Get(*rc::gen::inRange(0, 4)));
  const float near = thousandth(0, 4000);
  const float far = near + thousandth(0, 1000);
  const float at_near = operation.Compute(center + near);
  const float at_far = operation.Compute(center + far);
  // The quintic may leave its range by a rounding.
  constexpr float kRounding = 1.0e-6F;
  RC_ASSERT(at_near >= 0.0F && at_near <= 1.0F + kRounding);
  RC_ASSERT(at_far <= at_near + kRounding);
}

}  // namespace
