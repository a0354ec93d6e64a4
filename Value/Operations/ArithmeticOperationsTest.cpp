// SPDX-License-Identifier: Apache-2.0
#include "Value/Operations/ArithmeticOperations.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <bit>
#include <cstdint>

#include "Tests/Support/ValueTesting.h"

namespace {

using Testing::kInfinity;
using Testing::kLargest;
using Testing::kNan;
using Testing::kSmallest;

float AnyFloat() { return std::bit_cast<float>(*rc::gen::arbitrary<std::uint32_t>()); }

template <class Operation>
void ExpectFreshFields(float constant) {
  const Operation operation(constant);
  EXPECT_SAME(operation.min, 0.0F);
  EXPECT_SAME(operation.max, 1.0F);
  EXPECT_SAME(operation.a, constant);
}

TEST(ArithmeticOperations, StartWithTheirConstantAndTheRangeZeroToOne) {
  ExpectFreshFields<AdditionOperation>(5.0F);
  ExpectFreshFields<SubtractionOperation>(-5.0F);
  ExpectFreshFields<MultiplicationOperation>(0.0F);
  ExpectFreshFields<DivideOperation>(-0.0F);
  ExpectFreshFields<PowerOperation>(kInfinity);
  ExpectFreshFields<MinimumOperation>(1000.0F);
  ExpectFreshFields<MaximumOperation>(-1000.0F);
}

TEST(AdditionOperation, AddsTheConstantToOneValue) {
  AdditionOperation add_five(5.0F);
  EXPECT_SAME(add_five.Compute(0.2F), 5.2F);
  EXPECT_SAME(add_five.Compute(-5.0F), 0.0F);
  EXPECT_SAME(add_five.Compute(kInfinity), kInfinity);
  EXPECT_SAME(add_five.Compute(kNan), kNan);
  EXPECT_SAME(AdditionOperation(kNan).Compute(1.0F), kNan);
  EXPECT_SAME(AdditionOperation(-kInfinity).Compute(kInfinity), kNan);
  EXPECT_SAME(AdditionOperation(kLargest).Compute(kLargest), kInfinity);
}

TEST(AdditionOperation, AddsTwoValuesWithoutTheConstant) {
  AdditionOperation operation(5.0F);
  EXPECT_SAME(operation.Compute(1.5F, 2.25F), 3.75F);
  EXPECT_SAME(operation.Compute(kInfinity, -kInfinity), kNan);
  // In single precision the small one is lost.
  EXPECT_SAME(operation.Compute(16777216.0F, 1.0F), 16777216.0F);
}

TEST(AdditionOperation, KeepsTheSignOfZeroThatArithmeticGives) {
  AdditionOperation operation(0.0F);
  EXPECT_SAME(operation.Compute(-0.0F), 0.0F);
  EXPECT_SAME(AdditionOperation(-0.0F).Compute(-0.0F), -0.0F);
  EXPECT_SAME(operation.Compute(-0.0F, -0.0F), -0.0F);
  EXPECT_SAME(operation.Compute(0.0F, -0.0F), 0.0F);
}

TEST(SubtractionOperation, SubtractsTheConstantFromOneValue) {
  SubtractionOperation operation(0.25F);
  EXPECT_SAME(operation.Compute(1.0F), 0.75F);
  EXPECT_SAME(operation.Compute(0.25F), 0.0F);
  EXPECT_SAME(SubtractionOperation(kInfinity).Compute(kInfinity), kNan);
  EXPECT_SAME(SubtractionOperation(0.0F).Compute(-0.0F), -0.0F);
}

TEST(SubtractionOperation, SubtractsTheSecondFromTheFirst) {
  SubtractionOperation operation(100.0F);
  EXPECT_SAME(operation.Compute(1.0F, 3.0F), -2.0F);
  EXPECT_SAME(operation.Compute(3.0F, 1.0F), 2.0F);
  EXPECT_SAME(operation.Compute(-kInfinity, kInfinity), -kInfinity);
  EXPECT_SAME(operation.Compute(kNan, 1.0F), kNan);
}

TEST(MultiplicationOperation, MultipliesOneValueByTheConstant) {
  MultiplicationOperation operation(-2.0F);
  EXPECT_SAME(operation.Compute(3.5F), -7.0F);
  EXPECT_SAME(operation.Compute(0.0F), -0.0F);
  EXPECT_SAME(operation.Compute(kInfinity), -kInfinity);
  EXPECT_SAME(MultiplicationOperation(0.0F).Compute(kInfinity), kNan);
  EXPECT_SAME(MultiplicationOperation(kLargest).Compute(2.0F), kInfinity);
  EXPECT_SAME(MultiplicationOperation(0.5F).Compute(kSmallest), 0.0F);
}

TEST(MultiplicationOperation, MultipliesTwoValuesWithoutTheConstant) {
  MultiplicationOperation operation(100.0F);
  EXPECT_SAME(operation.Compute(0.5F, 0.25F), 0.125F);
  EXPECT_SAME(operation.Compute(-0.0F, 3.0F), -0.0F);
  EXPECT_SAME(operation.Compute(kInfinity, 0.0F), kNan);
}

TEST(DivideOperation, DividesOneValueByTheConstant) {
  DivideOperation operation(4.0F);
  EXPECT_SAME(operation.Compute(3.0F), 0.75F);
  EXPECT_SAME(operation.Compute(-0.0F), -0.0F);
  EXPECT_SAME(operation.Compute(kNan), kNan);
}

TEST(DivideOperation, DividesByZeroWithoutAGuard) {
  DivideOperation by_zero(0.0F);
  EXPECT_SAME(by_zero.Compute(3.0F), kInfinity);
  EXPECT_SAME(by_zero.Compute(-3.0F), -kInfinity);
  EXPECT_SAME(by_zero.Compute(0.0F), kNan);
  DivideOperation by_minus_zero(-0.0F);
  EXPECT_SAME(by_minus_zero.Compute(3.0F), -kInfinity);
  EXPECT_SAME(by_zero.Compute(3.0F, 0.0F), kInfinity);
  EXPECT_SAME(by_zero.Compute(3.0F, -0.0F), -kInfinity);
  EXPECT_SAME(by_zero.Compute(0.0F, 0.0F), kNan);
}

TEST(DivideOperation, DividesTheFirstByTheSecond) {
  DivideOperation operation(100.0F);
  EXPECT_SAME(operation.Compute(1.0F, 8.0F), 0.125F);
  EXPECT_SAME(operation.Compute(8.0F, 1.0F), 8.0F);
  EXPECT_SAME(operation.Compute(kInfinity, kInfinity), kNan);
  EXPECT_SAME(operation.Compute(1.0F, -kInfinity), -0.0F);
}

TEST(PowerOperation, RaisesOneValueToTheConstant) {
  EXPECT_SAME(PowerOperation(3.0F).Compute(-2.0F), -8.0F);
  EXPECT_SAME(PowerOperation(0.5F).Compute(2.25F), 1.5F);
  EXPECT_SAME(PowerOperation(-1.0F).Compute(8.0F), 0.125F);
  EXPECT_SAME(PowerOperation(0.0F).Compute(kNan), 1.0F);
}

TEST(PowerOperation, RaisesTheFirstToTheSecond) {
  PowerOperation operation(1.0F);
  EXPECT_SAME(operation.Compute(2.0F, 10.0F), 1024.0F);
  EXPECT_SAME(operation.Compute(10.0F, 2.0F), 100.0F);
  EXPECT_SAME(operation.Compute(1.0F, kNan), 1.0F);
  EXPECT_SAME(operation.Compute(kNan, 1.0F), kNan);
}

TEST(PowerOperation, FollowsPlainArithmeticOutsideItsDomain) {
  PowerOperation operation(1.0F);
  EXPECT_SAME(operation.Compute(-8.0F, 0.5F), kNan);
  EXPECT_SAME(operation.Compute(0.0F, -1.0F), kInfinity);
  EXPECT_SAME(operation.Compute(-0.0F, -1.0F), -kInfinity);
  EXPECT_SAME(operation.Compute(-0.0F, -2.0F), kInfinity);
  EXPECT_SAME(operation.Compute(-0.0F, 3.0F), -0.0F);
  EXPECT_SAME(operation.Compute(0.5F, kInfinity), 0.0F);
  EXPECT_SAME(operation.Compute(2.0F, 128.0F), kInfinity);
  EXPECT_SAME(operation.Compute(2.0F, -149.0F), kSmallest);
  EXPECT_SAME(operation.Compute(2.0F, -151.0F), 0.0F);
}

TEST(PowerOperation, ComputesInDouble) {
  // The fifth power of the float nearest 1.1 is 1.61051018...; five products rounded to float end at 1.6105101.
  EXPECT_SAME(PowerOperation(5.0F).Compute(1.1F), 1.610510230064392F);
  EXPECT_SAME(PowerOperation(1.0F).Compute(1.3F, 7.0F), 6.274849891662598F);
  EXPECT_SAME(PowerOperation(1.0F).Compute(0.7F, 4.0F), 0.2400999814271927F);
}

TEST(MinimumOperation, TakesTheSmallerOfTwo) {
  MinimumOperation operation(-100.0F);
  EXPECT_SAME(operation.Compute(1.0F, 2.0F), 1.0F);
  EXPECT_SAME(operation.Compute(2.0F, 1.0F), 1.0F);
  EXPECT_SAME(operation.Compute(-kInfinity, kInfinity), -kInfinity);
  EXPECT_SAME(operation.Compute(kInfinity, -kInfinity), -kInfinity);
}

TEST(MinimumOperation, TakesTheSmallerOfTheValueAndTheConstant) {
  MinimumOperation operation(0.5F);
  EXPECT_SAME(operation.Compute(0.25F), 0.25F);
  EXPECT_SAME(operation.Compute(0.75F), 0.5F);
  EXPECT_SAME(operation.Compute(-kInfinity), -kInfinity);
  EXPECT_SAME(operation.Compute(kInfinity), 0.5F);
}

TEST(MinimumOperation, LeavesWhatIsBelowItsBoundAlone) {
  MinimumOperation operation(1000.0F);
  for (const float value : {999.99994F, 1.0F, 0.0F, -0.0F, -kLargest}) EXPECT_SAME(operation.Compute(value), value);
  EXPECT_SAME(operation.Compute(1000.0F), 1000.0F);
}

TEST(MinimumOperation, GivesTheSideThatIsNotTheConstantForNan) {
  MinimumOperation operation(0.5F);
  EXPECT_SAME(operation.Compute(kNan, 1.0F), kNan);
  EXPECT_SAME(operation.Compute(1.0F, kNan), 1.0F);
  EXPECT_SAME(operation.Compute(kNan), kNan);
  EXPECT_SAME(MinimumOperation(kNan).Compute(7.0F), 7.0F);
}

TEST(MinimumOperation, KeepsTheFirstOfTwoZeros) {
  MinimumOperation operation(-0.0F);
  EXPECT_SAME(operation.Compute(0.0F, -0.0F), 0.0F);
  EXPECT_SAME(operation.Compute(-0.0F, 0.0F), -0.0F);
  EXPECT_SAME(operation.Compute(0.0F), 0.0F);
}

TEST(MaximumOperation, TakesTheLargerOfTwo) {
  MaximumOperation operation(100.0F);
  EXPECT_SAME(operation.Compute(1.0F, 2.0F), 2.0F);
  EXPECT_SAME(operation.Compute(2.0F, 1.0F), 2.0F);
  EXPECT_SAME(operation.Compute(-kInfinity, kInfinity), kInfinity);
}

TEST(MaximumOperation, TakesTheLargerOfTheValueAndTheConstant) {
  MaximumOperation operation(0.5F);
  EXPECT_SAME(operation.Compute(0.25F), 0.5F);
  EXPECT_SAME(operation.Compute(0.75F), 0.75F);
  EXPECT_SAME(MaximumOperation(-1000.0F).Compute(-999.0F), -999.0F);
}

TEST(MaximumOperation, GivesTheSideThatIsNotTheConstantForNan) {
  MaximumOperation operation(0.5F);
  EXPECT_SAME(operation.Compute(kNan, 1.0F), kNan);
  EXPECT_SAME(operation.Compute(1.0F, kNan), 1.0F);
  EXPECT_SAME(operation.Compute(kNan), kNan);
  EXPECT_SAME(MaximumOperation(kNan).Compute(7.0F), 7.0F);
}

TEST(MaximumOperation, KeepsTheFirstOfTwoZeros) {
  MaximumOperation operation(0.0F);
  EXPECT_SAME(operation.Compute(-0.0F, 0.0F), -0.0F);
  EXPECT_SAME(operation.Compute(0.0F, -0.0F), 0.0F);
  EXPECT_SAME(operation.Compute(-0.0F), -0.0F);
}

RC_GTEST_PROP(ArithmeticOperationProperties, MinimumAndMaximumSortTwoNumbers, ()) {
  const float x = AnyFloat();
  const float y = AnyFloat();
  RC_PRE(!std::isnan(x) && !std::isnan(y));
  const float low = MinimumOperation(0.0F).Compute(x, y);
  const float high = MaximumOperation(0.0F).Compute(x, y);
  RC_ASSERT(low <= high);
  RC_ASSERT((low == x && high == y) || (low == y && high == x));
}

RC_GTEST_PROP(ArithmeticOperationProperties, NeutralConstantsKeepEveryNumber, ()) {
  const float x = AnyFloat();
  RC_PRE(!std::isnan(x));
  RC_ASSERT(Testing::AreSame(SubtractionOperation(0.0F).Compute(x), x));
  RC_ASSERT(Testing::AreSame(MultiplicationOperation(1.0F).Compute(x), x));
  RC_ASSERT(Testing::AreSame(DivideOperation(1.0F).Compute(x), x));
  RC_ASSERT(Testing::AreSame(PowerOperation(1.0F).Compute(x), x));
  RC_ASSERT(Testing::AreSame(MinimumOperation(kInfinity).Compute(x), x));
  RC_ASSERT(Testing::AreSame(MaximumOperation(-kInfinity).Compute(x), x));
}

RC_GTEST_PROP(ArithmeticOperationProperties, AdditionAndMultiplicationDoNotDependOnTheOrder, ()) {
  const float x = AnyFloat();
  const float y = AnyFloat();
  RC_ASSERT(Testing::AreSame(AdditionOperation(0.0F).Compute(x, y), AdditionOperation(0.0F).Compute(y, x)));
  RC_ASSERT(Testing::AreSame(MultiplicationOperation(0.0F).Compute(x, y), MultiplicationOperation(0.0F).Compute(y, x)));
}

}  // namespace
