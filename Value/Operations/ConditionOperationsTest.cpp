// SPDX-License-Identifier: Apache-2.0
#include "Value/Operations/ConditionOperations.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <bit>
#include <cstdint>
#include <vector>

#include "Tests/Support/ValueTesting.h"

namespace {

using Testing::kInfinity;
using Testing::kNan;
using Testing::kSmallest;

// The neighbours of one half.
constexpr float kBelowHalf = 0.49999997F;
constexpr float kAboveHalf = 0.50000006F;

struct Expectation {
  float value;
  float result;
};

void ExpectResults(ValueOperation& operation, const std::vector<Expectation>& expectations) {
  for (const auto& [value, result] : expectations) {
    SCOPED_TRACE(value);
    EXPECT_SAME(operation.Compute(value), result);
    // The second value plays no part.
    for (const float second : {0.5F, -1.0F, kNan}) EXPECT_SAME(operation.Compute(value, second), result);
  }
}

template <class Operation>
Operation WithRange(float min, float max) {
  Operation operation;
  EXPECT_SAME(operation.min, 0.0F);
  EXPECT_SAME(operation.max, 1.0F);
  operation.min = min;
  operation.max = max;
  return operation;
}

TEST(ConditionValEqMinOperation, HoldsAtTheLowestValueOnly) {
  auto operation = WithRange<ConditionValEqMinOperation>(0.5F, 2.0F);
  ExpectResults(operation, {{0.5F, 1.0F},
                            {kBelowHalf, 0.0F},
                            {kAboveHalf, 0.0F},
                            {2.0F, 0.0F},
                            {-kInfinity, 0.0F},
                            {kInfinity, 0.0F},
                            {kNan, 0.0F}});
}

TEST(ConditionValEqMinOperation, TreatsBothZerosAndInfinitiesAsNumbers) {
  auto zero = WithRange<ConditionValEqMinOperation>(0.0F, 2.0F);
  ExpectResults(zero, {{-0.0F, 1.0F}, {0.0F, 1.0F}, {kSmallest, 0.0F}});
  auto infinite = WithRange<ConditionValEqMinOperation>(-kInfinity, 2.0F);
  ExpectResults(infinite, {{-kInfinity, 1.0F}, {-3.0e38F, 0.0F}});
  auto nothing = WithRange<ConditionValEqMinOperation>(kNan, 2.0F);
  ExpectResults(nothing, {{kNan, 0.0F}, {0.0F, 0.0F}});
}

TEST(ConditionValDiffMinOperation, HoldsEverywhereButAtTheLowestValue) {
  auto operation = WithRange<ConditionValDiffMinOperation>(0.5F, 2.0F);
  ExpectResults(operation, {{0.5F, 0.0F},
                            {kBelowHalf, 1.0F},
                            {kAboveHalf, 1.0F},
                            {2.0F, 1.0F},
                            {-kInfinity, 1.0F},
                            {kInfinity, 1.0F},
                            {kNan, 1.0F}});
  auto zero = WithRange<ConditionValDiffMinOperation>(0.0F, 2.0F);
  ExpectResults(zero, {{-0.0F, 0.0F}, {0.0F, 0.0F}});
}

TEST(ConditionValEqMaxOperation, HoldsAtTheHighestValueOnly) {
  auto operation = WithRange<ConditionValEqMaxOperation>(-1.0F, 0.5F);
  ExpectResults(operation,
                {{0.5F, 1.0F}, {kBelowHalf, 0.0F}, {kAboveHalf, 0.0F}, {-1.0F, 0.0F}, {kInfinity, 0.0F}, {kNan, 0.0F}});
  auto infinite = WithRange<ConditionValEqMaxOperation>(0.0F, kInfinity);
  ExpectResults(infinite, {{kInfinity, 1.0F}, {-kInfinity, 0.0F}});
}

TEST(ConditionValDiffMaxOperation, HoldsEverywhereButAtTheHighestValue) {
  auto operation = WithRange<ConditionValDiffMaxOperation>(-1.0F, 0.5F);
  ExpectResults(operation,
                {{0.5F, 0.0F}, {kBelowHalf, 1.0F}, {kAboveHalf, 1.0F}, {-1.0F, 1.0F}, {kInfinity, 1.0F}, {kNan, 1.0F}});
}

TEST(ConditionValLtAOperation, HoldsBelowTheConstant) {
  ConditionValLtAOperation operation(0.5F);
  ExpectResults(
      operation,
      {{kBelowHalf, 1.0F}, {0.5F, 0.0F}, {kAboveHalf, 0.0F}, {-kInfinity, 1.0F}, {kInfinity, 0.0F}, {kNan, 0.0F}});
}

TEST(ConditionValLteAOperation, HoldsUpToTheConstant) {
  ConditionValLteAOperation operation(0.5F);
  ExpectResults(
      operation,
      {{kBelowHalf, 1.0F}, {0.5F, 1.0F}, {kAboveHalf, 0.0F}, {-kInfinity, 1.0F}, {kInfinity, 0.0F}, {kNan, 0.0F}});
}

TEST(ConditionValEqAOperation, HoldsAtTheConstantWithoutTolerance) {
  ConditionValEqAOperation operation(0.5F);
  ExpectResults(operation, {{kBelowHalf, 0.0F}, {0.5F, 1.0F}, {0.5000001F, 0.0F}, {kInfinity, 0.0F}, {kNan, 0.0F}});
}

TEST(ConditionValGteAOperation, HoldsFromTheConstantOn) {
  ConditionValGteAOperation operation(0.5F);
  ExpectResults(
      operation,
      {{kBelowHalf, 0.0F}, {0.5F, 1.0F}, {kAboveHalf, 1.0F}, {-kInfinity, 0.0F}, {kInfinity, 1.0F}, {kNan, 0.0F}});
}

TEST(ConditionValGtAOperation, HoldsAboveTheConstant) {
  ConditionValGtAOperation operation(0.5F);
  ExpectResults(
      operation,
      {{kBelowHalf, 0.0F}, {0.5F, 0.0F}, {kAboveHalf, 1.0F}, {-kInfinity, 0.0F}, {kInfinity, 1.0F}, {kNan, 0.0F}});
}

TEST(ConditionsOnOneConstant, TakeBothZerosForEqual) {
  ConditionValLtAOperation less(0.0F);
  ConditionValLteAOperation less_equal(-0.0F);
  ConditionValEqAOperation equal(0.0F);
  ConditionValGteAOperation greater_equal(0.0F);
  ConditionValGtAOperation greater(-0.0F);
  ExpectResults(less, {{-0.0F, 0.0F}, {-kSmallest, 1.0F}});
  ExpectResults(less_equal, {{0.0F, 1.0F}, {kSmallest, 0.0F}});
  ExpectResults(equal, {{-0.0F, 1.0F}});
  ExpectResults(greater_equal, {{-0.0F, 1.0F}, {-kSmallest, 0.0F}});
  ExpectResults(greater, {{0.0F, 0.0F}, {kSmallest, 1.0F}});
}

TEST(ConditionsOnOneConstant, FailForAConstantThatIsNotANumber) {
  ConditionValLtAOperation less(kNan);
  ConditionValLteAOperation less_equal(kNan);
  ConditionValEqAOperation equal(kNan);
  ConditionValGteAOperation greater_equal(kNan);
  ConditionValGtAOperation greater(kNan);
  for (ValueOperation* operation : std::vector<ValueOperation*>{&less, &less_equal, &equal, &greater_equal, &greater}) {
    ExpectResults(*operation, {{0.0F, 0.0F}, {kNan, 0.0F}, {kInfinity, 0.0F}, {-kInfinity, 0.0F}});
  }
}

TEST(ConditionALtValLtBOperation, HoldsBetweenTheConstants) {
  ConditionALtValLtBOperation operation(0.2F, 0.8F);
  ExpectResults(operation, {{0.2F, 0.0F},
                            {0.20000002F, 1.0F},
                            {0.5F, 1.0F},
                            {0.79999995F, 1.0F},
                            {0.8F, 0.0F},
                            {-kInfinity, 0.0F},
                            {kInfinity, 0.0F},
                            {kNan, 0.0F}});
}

TEST(ConditionALteValLtBOperation, CountsTheLowerConstantIn) {
  ConditionALteValLtBOperation operation(0.2F, 0.8F);
  ExpectResults(operation,
                {{0.19999999F, 0.0F}, {0.2F, 1.0F}, {0.5F, 1.0F}, {0.8F, 0.0F}, {kInfinity, 0.0F}, {kNan, 0.0F}});
}

TEST(ConditionALtValLteBOperation, CountsTheUpperConstantIn) {
  ConditionALtValLteBOperation operation(0.2F, 0.8F);
  ExpectResults(operation,
                {{0.2F, 0.0F}, {0.5F, 1.0F}, {0.8F, 1.0F}, {0.80000007F, 0.0F}, {-kInfinity, 0.0F}, {kNan, 0.0F}});
}

TEST(ConditionALteValLteBOperation, CountsBothConstantsIn) {
  ConditionALteValLteBOperation operation(0.2F, 0.8F);
  ExpectResults(operation,
                {{0.19999999F, 0.0F}, {0.2F, 1.0F}, {0.5F, 1.0F}, {0.8F, 1.0F}, {0.80000007F, 0.0F}, {kNan, 0.0F}});
}

TEST(ConditionsOnTwoConstants, HoldNowhereWhenTheConstantsAreSwapped) {
  ConditionALtValLtBOperation inside(0.8F, 0.2F);
  ConditionALteValLtBOperation from(0.8F, 0.2F);
  ConditionALtValLteBOperation to(0.8F, 0.2F);
  ConditionALteValLteBOperation closed(0.8F, 0.2F);
  for (ValueOperation* operation : std::vector<ValueOperation*>{&inside, &from, &to, &closed}) {
    ExpectResults(*operation, {{0.2F, 0.0F}, {0.5F, 0.0F}, {0.8F, 0.0F}});
  }
}

TEST(ConditionsOnTwoConstants, WithEqualConstantsOnlyTheClosedOneHolds) {
  ConditionALtValLtBOperation inside(0.5F, 0.5F);
  ConditionALteValLtBOperation from(0.5F, 0.5F);
  ConditionALtValLteBOperation to(0.5F, 0.5F);
  ConditionALteValLteBOperation closed(0.5F, 0.5F);
  for (ValueOperation* operation : std::vector<ValueOperation*>{&inside, &from, &to}) {
    ExpectResults(*operation, {{0.5F, 0.0F}});
  }
  ExpectResults(closed, {{0.5F, 1.0F}, {kBelowHalf, 0.0F}, {kAboveHalf, 0.0F}});
}

TEST(ConditionsOnTwoConstants, KeepTheirConstantsInOrder) {
  const ConditionALteValLtBOperation operation(0.2F, 0.8F);
  EXPECT_SAME(operation.a, 0.2F);
  EXPECT_SAME(operation.b, 0.8F);
  EXPECT_SAME(operation.min, 0.0F);
  EXPECT_SAME(operation.max, 1.0F);
}

float AnyFloat() { return std::bit_cast<float>(*rc::gen::arbitrary<std::uint32_t>()); }

RC_GTEST_PROP(ConditionProperties, ExactlyOneOfLessEqualGreaterHoldsForNumbers, ()) {
  const float a = AnyFloat();
  const float v = *rc::gen::element(a, AnyFloat());
  const float sum = ConditionValLtAOperation(a).Compute(v) + ConditionValEqAOperation(a).Compute(v) +
                    ConditionValGtAOperation(a).Compute(v);
  RC_ASSERT(sum == (std::isnan(a) || std::isnan(v) ? 0.0F : 1.0F));
}

RC_GTEST_PROP(ConditionProperties, EqualAndDifferentAreOpposites, ()) {
  const float extreme = AnyFloat();
  const float v = *rc::gen::element(extreme, AnyFloat());
  auto equal_min = WithRange<ConditionValEqMinOperation>(extreme, 0.0F);
  auto different_min = WithRange<ConditionValDiffMinOperation>(extreme, 0.0F);
  auto equal_max = WithRange<ConditionValEqMaxOperation>(0.0F, extreme);
  auto different_max = WithRange<ConditionValDiffMaxOperation>(0.0F, extreme);
  RC_ASSERT(equal_min.Compute(v) + different_min.Compute(v) == 1.0F);
  RC_ASSERT(equal_max.Compute(v) + different_max.Compute(v) == 1.0F);
}

}  // namespace
