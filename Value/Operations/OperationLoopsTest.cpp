// SPDX-License-Identifier: Apache-2.0
//
// Every operation has two ways in: its virtual calls, which define it, and the loop over a run of samples that it gives
// the host. They must agree bit for bit.

#include <cxxabi.h>
#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <memory>
#include <ostream>
#include <random>
#include <string>
#include <typeinfo>
#include <vector>

#include "Host/Image/ComputeValue.h"
#include "Host/Image/ValueOperation.h"
#include "Host/Util/ParallelRows.h"
#include "Tests/Support/ValueTesting.h"
#include "Value/Operations/ArithmeticOperations.h"
#include "Value/Operations/ConditionOperations.h"
#include "Value/Operations/FunctionOperations.h"
#include "Value/Operations/ThresholdValueOperation.h"

namespace {

using Testing::ImageRef;
using Testing::kInfinity;
using Testing::kLargest;
using Testing::kNan;
using Testing::kSmallest;

std::string GetClassName(const std::type_info& type) {
  int status = 0;
  const std::unique_ptr<char, void (*)(void*)> name(abi::__cxa_demangle(type.name(), nullptr, nullptr, &status),
                                                    std::free);
  return status == 0 ? name.get() : type.name();
}

struct OperationCase {
  std::string name;
  const std::type_info* type;
  std::function<ValueOperationPtr()> make;
  /// Whether both forms have a meaning of their own.
  bool combines_two;

  friend std::ostream& operator<<(std::ostream& stream, const OperationCase& operation) {
    return stream << operation.name;
  }
};

template <class Operation, class... Constants>
OperationCase OneValue(Constants... constants) {
  const auto make = [=] { return ValueOperationPtr(new Operation(constants...)); };
  return {GetClassName(typeid(Operation)), &typeid(Operation), make, false};
}

template <class Operation>
OperationCase TwoValues(float constant) {
  OperationCase operation = OneValue<Operation>(constant);
  operation.combines_two = true;
  return operation;
}

const std::vector<OperationCase>& GetCases() {
  static const std::vector<OperationCase> cases{
      TwoValues<AdditionOperation>(0.1F),
      TwoValues<SubtractionOperation>(0.1F),
      TwoValues<MultiplicationOperation>(-1.7F),
      TwoValues<DivideOperation>(0.3F),
      TwoValues<PowerOperation>(2.5F),
      TwoValues<MinimumOperation>(0.25F),
      TwoValues<MaximumOperation>(-0.0F),
      OneValue<ConditionValEqMinOperation>(),
      OneValue<ConditionValDiffMinOperation>(),
      OneValue<ConditionValEqMaxOperation>(),
      OneValue<ConditionValDiffMaxOperation>(),
      OneValue<ConditionValLtAOperation>(0.5F),
      OneValue<ConditionValLteAOperation>(0.5F),
      OneValue<ConditionValEqAOperation>(0.5F),
      OneValue<ConditionValGteAOperation>(0.5F),
      OneValue<ConditionValGtAOperation>(0.5F),
      OneValue<ConditionALtValLtBOperation>(-0.5F, 0.5F),
      OneValue<ConditionALteValLtBOperation>(-0.5F, 0.5F),
      OneValue<ConditionALtValLteBOperation>(-0.5F, 0.5F),
      OneValue<ConditionALteValLteBOperation>(-0.5F, 0.5F),
      OneValue<ThresholdValueOperation>(0.5F, 0.25F, 0.5F, ThresholdProfile::Smooth),
      OneValue<SineValueOperation>(),
      OneValue<CosineValueOperation>(),
      OneValue<TangentValueOperation>(),
      OneValue<ArcSineValueOperation>(),
      OneValue<ArcCosineValueOperation>(),
      OneValue<ArcTangentValueOperation>(),
      OneValue<FloorValueOperation>(),
      OneValue<CeilValueOperation>(),
      OneValue<AbsoluteValueOperation>(),
      OneValue<InverseValueOperation>(),
      OneValue<LogValueOperation>(),
      OneValue<Log2ValueOperation>(),
      OneValue<Log10ValueOperation>(),
      OneValue<ExponentialValueOperation>(),
      OneValue<SquareRootValueOperation>(),
      OneValue<CubicRootValueOperation>(),
      OneValue<DegToRadValueOperation>(),
      OneValue<RadToDegValueOperation>(),
  };
  return cases;
}

/// Samples of every kind: zeros, infinities, NaN, denormals, edges of domains and ranges, and any bit pattern.
std::vector<float> MakeAwkwardSamples(std::size_t count, std::uint32_t seed) {
  const std::vector<float> awkward{
      0.0F,        -0.0F,        0.5F,       -0.5F,       0.49999997F, 0.50000006F, 1.0F,     -1.0F,
      0.99999994F, -0.99999994F, 1.0000001F, 2.0F,        -8.0F,       0.25F,       -0.25F,   0.1F,
      kInfinity,   -kInfinity,   kNan,       -kNan,       kSmallest,   -kSmallest,  kLargest, -kLargest,
      1.0e-38F,    16777216.0F,  8388607.5F, 3.14159274F, 88.7F,       -104.0F,     1.0e30F,  -1.0e-20F};
  std::mt19937 random(seed);
  std::uniform_real_distribution<float> nearby(-2.0F, 2.0F);
  std::vector<float> samples(count);
  for (std::size_t i = 0; i < count; ++i) {
    switch (random() % 3) {
      case 0: samples[i] = awkward[random() % awkward.size()]; break;
      case 1: samples[i] = nearby(random); break;
      default: samples[i] = std::bit_cast<float>(static_cast<std::uint32_t>(random())); break;
    }
  }
  return samples;
}

void ExpectSameAsCalls(const Image& image, const std::function<float(std::size_t)>& call) {
  const std::vector<float> samples = Testing::GetSamples(image);
  std::size_t different = 0;
  for (std::size_t i = 0; i < samples.size(); ++i) {
    const float expected = call(i);
    if (Testing::AreSame(samples[i], expected)) continue;
    if (++different <= 3) ADD_FAILURE() << "sample " << i << " is " << samples[i] << ", its call gives " << expected;
  }
  EXPECT_EQ(different, 0U);
}

class OperationLoops : public testing::TestWithParam<OperationCase> {};

TEST_P(OperationLoops, AreRegisteredForTheClass) { EXPECT_TRUE(ScEng::HasValueOperationLoops(*GetParam().type)); }

TEST_P(OperationLoops, OfOneValueAgreeWithTheCalls) {
  for (const std::size_t count : {1U, 3U, 8U, 17U, 2047U, 2048U, 2049U, 5000U}) {
    SCOPED_TRACE(count);
    const std::vector<float> samples = MakeAwkwardSamples(count, static_cast<std::uint32_t>(count));
    const ImageRef image = Testing::MakeRow(samples);
    const ValueOperationPtr operation = GetParam().make();
    const ImageRef result(ComputeValue(image.Get(), operation.get()));
    ASSERT_TRUE(result);
    ExpectSameAsCalls(*result, [&](std::size_t i) { return operation->Compute(samples[i]); });
  }
}

TEST_P(OperationLoops, OfTwoValuesAgreeWithTheCalls) {
  for (const std::size_t count : {1U, 7U, 16U, 2049U, 4999U}) {
    SCOPED_TRACE(count);
    const std::vector<float> first = MakeAwkwardSamples(count, 1);
    const std::vector<float> second = MakeAwkwardSamples(count, 2);
    const ImageRef first_image = Testing::MakeRow(first);
    const ImageRef second_image = Testing::MakeRow(second);
    const ValueOperationPtr operation = GetParam().make();
    const ImageRef result(ComputeValue({first_image.Get(), second_image.Get()}, operation.get()));
    ASSERT_TRUE(result);
    ExpectSameAsCalls(*result, [&](std::size_t i) { return operation->Compute(first[i], second[i]); });
  }
}

TEST_P(OperationLoops, OfTwoValuesIgnoreTheSecondUnlessTheOperationCombines) {
  if (GetParam().combines_two) return;
  const ValueOperationPtr operation = GetParam().make();
  const std::vector<float> first = MakeAwkwardSamples(500, 3);
  const std::vector<float> second = MakeAwkwardSamples(500, 4);
  for (std::size_t i = 0; i < first.size(); ++i) {
    ASSERT_PRED_FORMAT2(Testing::SameFloat, operation->Compute(first[i], second[i]), operation->Compute(first[i]));
  }
}

INSTANTIATE_TEST_SUITE_P(AllOperations, OperationLoops, testing::ValuesIn(GetCases()),
                         [](const auto& parameter) { return parameter.param.name; });

TEST(OperationLoopsList, HoldsTheThirtyNineOperations) { EXPECT_EQ(GetCases().size(), 39U); }

TEST(OperationLoopsOfLargeImages, AgreeWithTheCallsWhateverTheNumberOfThreads) {
  // Large enough to be written past the caches.
  constexpr std::size_t kWidth = 2049;
  constexpr std::size_t kHeight = 1031;
  const std::vector<float> first = MakeAwkwardSamples(kWidth * kHeight, 5);
  const std::vector<float> second = MakeAwkwardSamples(kWidth * kHeight, 6);
  const ImageRef first_image = Testing::MakeImage(kWidth, kHeight, ColorMode::kValue, first);
  const ImageRef second_image = Testing::MakeImage(kWidth, kHeight, ColorMode::kValue, second);
  for (const std::size_t threads : {1U, 2U, 5U}) {
    SCOPED_TRACE(threads);
    ScEng::SetNumThreads(threads);
    AdditionOperation addition(0.1F);
    const ImageRef sum(ComputeValue({first_image.Get(), second_image.Get()}, &addition));
    ConditionValEqMaxOperation condition;
    const ImageRef mask(ComputeValue(first_image.Get(), &condition));
    ScEng::SetNumThreads(0);
    ASSERT_TRUE(sum && mask);
    EXPECT_EQ(condition.max, kInfinity);
    ExpectSameAsCalls(*sum, [&](std::size_t i) { return first[i] + second[i]; });
    ExpectSameAsCalls(*mask, [&](std::size_t i) { return first[i] == kInfinity ? 1.0F : 0.0F; });
  }
}

/// Changes the one-value form of an operation that forwards its two-value form.
class NegatedOperation : public AbsoluteValueOperation {
 public:
  using AbsoluteValueOperation::Compute;
  float Compute(float value) override { return -value; }
};

TEST(DerivedOperation, ChangesBothFormsByOverridingTheOneValueForm) {
  NegatedOperation negated;
  ValueOperation& operation = negated;
  EXPECT_SAME(operation.Compute(3.0F), -3.0F);
  EXPECT_SAME(operation.Compute(3.0F, 8.0F), -3.0F);
}

TEST(DerivedOperation, IsNotComputedByTheLoopOfItsBase) {
  EXPECT_FALSE(ScEng::HasValueOperationLoops(typeid(NegatedOperation)));
  NegatedOperation negated;
  const ImageRef image = Testing::MakeRow({3.0F, -0.5F, 0.0F});
  const ImageRef other = Testing::MakeRow({8.0F, 8.0F, 8.0F});
  const ImageRef one(ComputeValue(image.Get(), &negated));
  EXPECT_TRUE(Testing::HoldsSamples(one.Get(), {-3.0F, 0.5F, -0.0F}));
  const ImageRef two(ComputeValue({image.Get(), other.Get()}, &negated));
  EXPECT_TRUE(Testing::HoldsSamples(two.Get(), {-3.0F, 0.5F, -0.0F}));
}

/// Changes one of the two forms that an arithmetic operation has.
class DoubledSumOperation : public AdditionOperation {
 public:
  using AdditionOperation::AdditionOperation;
  using AdditionOperation::Compute;
  float Compute(float first, float second) override { return 2.0F * (first + second); }
};

TEST(DerivedOperation, OfAnArithmeticOneKeepsTheFormThatItDoesNotOverride) {
  DoubledSumOperation doubled(5.0F);
  const ImageRef image = Testing::MakeRow({1.0F, 2.0F});
  const ImageRef other = Testing::MakeRow({3.0F, 4.0F});
  const ImageRef one(ComputeValue(image.Get(), &doubled));
  EXPECT_TRUE(Testing::HoldsSamples(one.Get(), {6.0F, 7.0F}));
  const ImageRef two(ComputeValue({image.Get(), other.Get()}, &doubled));
  EXPECT_TRUE(Testing::HoldsSamples(two.Get(), {8.0F, 12.0F}));
}

}  // namespace
