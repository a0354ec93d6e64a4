// SPDX-License-Identifier: Apache-2.0
//
// The passes of the operations, which compute, measure and write at once, against the definitions: one virtual call for
// each sample, and ranges found sample by sample.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <random>
#include <utility>
#include <vector>

#include "Host/Image/ComputeValue.h"
#include "Host/Image/SampleRange.h"
#include "Host/Image/Streaming.h"
#include "Tests/Support/InstructionSets.h"
#include "Tests/Support/ValueTesting.h"
#include "Value/Operations/ArithmeticOperations.h"
#include "Value/Operations/ConditionOperations.h"
#include "Value/Operations/FunctionOperations.h"
#include "Value/Operations/ThresholdValueOperation.h"

namespace {

using ScEng::SampleRange;
using Testing::ImageRef;
using Testing::kInfinity;
using Testing::kNan;

enum class Kind { kPlain, kAllSorts, kMostlyNan, kZeros };

std::vector<float> MakeSamples(std::size_t count, Kind kind, std::uint32_t seed) {
  const std::vector<float> strange{kNan, -kNan, kInfinity, -kInfinity, 0.0F, -0.0F, Testing::kSmallest, 3.0e38F};
  std::mt19937 random(seed);
  std::uniform_real_distribution<float> nearby(-2.0F, 2.0F);
  std::vector<float> samples(count);
  for (float& sample : samples) {
    sample = nearby(random);
    if (kind == Kind::kAllSorts && random() % 5 == 0) sample = strange[random() % strange.size()];
    if (kind == Kind::kMostlyNan && random() % 40 != 0) sample = kNan;
    if (kind == Kind::kZeros) sample = random() % 2 == 0 ? 0.0F : -0.0F;
  }
  return samples;
}

/// What a range is by definition: NaN never counts, infinities on request; zeros are positive; 0 and `none_high` where
/// nothing counts.
struct Ends {
  float low;
  float high;
};
Ends FindEnds(const std::vector<float>& samples, bool finite_only, float none_high) {
  bool any = false;
  Ends ends{0.0F, none_high};
  for (const float sample : samples) {
    if (std::isnan(sample) || (finite_only && std::isinf(sample))) continue;
    if (!any || sample < ends.low) ends.low = sample;
    if (!any || sample > ends.high) ends.high = sample;
    any = true;
  }
  return {ends.low == 0.0F ? 0.0F : ends.low, ends.high == 0.0F ? 0.0F : ends.high};
}

void ExpectResult(const Image* result, const std::vector<float>& expected) {
  ASSERT_NE(result, nullptr);
  ASSERT_TRUE(Testing::HoldsSamples(result, expected));
  const Ends ends = FindEnds(expected, true, 0.0F);
  ASSERT_PRED_FORMAT2(Testing::SameFloat, result->GetValueLow(), ends.low);
  ASSERT_PRED_FORMAT2(Testing::SameFloat, result->GetValueHigh(), ends.high);
}

void ExpectOneValue(ValueOperation& operation, const Image& image) {
  const std::vector<float> samples = Testing::GetSamples(image);
  const ImageRef result(ComputeValue(&image, &operation));
  const Ends input = FindEnds(samples, false, 1.0F);
  ASSERT_PRED_FORMAT2(Testing::SameFloat, operation.min, input.low);
  ASSERT_PRED_FORMAT2(Testing::SameFloat, operation.max, input.high);
  std::vector<float> expected;
  for (const float sample : samples) expected.push_back(operation.Compute(sample));
  ExpectResult(result.Get(), expected);
}

void ExpectTwoValues(ValueOperation& operation, const Image& first, const Image& second) {
  const std::vector<float> firsts = Testing::GetSamples(first);
  const std::vector<float> seconds = Testing::GetSamples(second);
  const ImageRef result(ComputeValue({&first, &second}, &operation));
  std::vector<float> expected;
  for (std::size_t i = 0; i < firsts.size(); ++i) expected.push_back(operation.Compute(firsts[i], seconds[i]));
  ExpectResult(result.Get(), expected);
}

/// Calls `body` with an operation of every kind of formula.
template <class Body>
void ForEachOperation(Body body) {
  AdditionOperation addition(0.1F);
  DivideOperation division(0.3F);
  MinimumOperation minimum(0.25F);
  ConditionValEqMinOperation is_lowest;
  ConditionALtValLteBOperation is_between(-0.5F, 0.5F);
  ThresholdValueOperation linear(0.5F, 0.25F, 0.5F, ThresholdProfile::Linear);
  ThresholdValueOperation smooth(0.5F, 0.25F, 0.5F, ThresholdProfile::Smooth);
  ThresholdValueOperation arc_out(0.5F, 0.25F, 0.5F, ThresholdProfile::ArcOut);
  ThresholdValueOperation arc_in(0.5F, 0.25F, 0.5F, ThresholdProfile::ArcIn);
  FloorValueOperation floor;
  SquareRootValueOperation root;
  InverseValueOperation inverse;
  SineValueOperation sine;
  ExponentialValueOperation exponential;
  Log2ValueOperation logarithm;
  for (ValueOperation* operation :
       std::vector<ValueOperation*>{&addition, &division, &minimum, &is_lowest, &is_between, &linear, &smooth, &arc_out,
                                    &arc_in, &floor, &root, &inverse, &sine, &exponential, &logarithm}) {
    SCOPED_TRACE(typeid(*operation).name());
    body(*operation);
  }
}

TEST(OperationPasses, FindOfEveryNumberOfSamplesWhatTheDefinitionsFind) {
  Testing::OnEveryInstructionSet([] {
    ForEachOperation([](ValueOperation& operation) {
      for (const Kind kind : {Kind::kPlain, Kind::kAllSorts, Kind::kMostlyNan, Kind::kZeros}) {
        for (std::size_t count = 1; count < 150; count += count < 70 ? 1 : 13) {
          SCOPED_TRACE(count);
          ExpectOneValue(operation, *Testing::MakeRow(MakeSamples(count, kind, 1)));
          ExpectTwoValues(operation, *Testing::MakeRow(MakeSamples(count, kind, 2)),
                          *Testing::MakeRow(MakeSamples(count, kind, 3)));
          if (testing::Test::HasFatalFailure()) return;
        }
      }
    });
  });
}

TEST(OperationPasses, FindOfSeveralBlocksWhatTheDefinitionsFind) {
  Testing::OnEveryInstructionSet([] {
    ForEachOperation([](ValueOperation& operation) {
      for (const auto& [width, height] : {std::pair{8191, 1}, {8192, 1}, {8193, 1}, {410, 40}, {700, 101}}) {
        for (const Kind kind : {Kind::kPlain, Kind::kAllSorts}) {
          const std::size_t count = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
          SCOPED_TRACE(count);
          ExpectOneValue(operation, *Testing::MakeImage(width, height, ColorMode::kValue, MakeSamples(count, kind, 4)));
          if (testing::Test::HasFatalFailure()) return;
        }
      }
    });
  });
}

constexpr int kLargeWidth = 2101;
constexpr int kLargeHeight = 1000;
static_assert(ScEng::IsStreamed(std::size_t{kLargeWidth} * kLargeHeight));

TEST(OperationPasses, OfLargeImagesFindWhatTheDefinitionsFind) {
  const std::size_t count = std::size_t{kLargeWidth} * kLargeHeight;
  for (const Kind kind : {Kind::kPlain, Kind::kAllSorts}) {
    const ImageRef first =
        Testing::MakeImage(kLargeWidth, kLargeHeight, ColorMode::kValue, MakeSamples(count, kind, 5));
    const ImageRef second =
        Testing::MakeImage(kLargeWidth, kLargeHeight, ColorMode::kValue, MakeSamples(count, kind, 6));
    Testing::OnEveryInstructionSet([&] {
      MultiplicationOperation product(1.5F);
      ThresholdValueOperation band(0.5F, 0.25F, 0.5F, ThresholdProfile::Smooth);
      // The range of an image is found again once its samples were asked for to be changed.
      static_cast<void>(first->GetArray());
      ExpectOneValue(product, *first);
      static_cast<void>(first->GetArray());
      ExpectOneValue(band, *first);
      ExpectTwoValues(product, *first, *second);
    });
  }
}

/// Rows that begin anywhere between the boundaries of vectors, since the boxes of the images differ.
TEST(OperationPasses, OfLargeImagesRowByRowFindWhatTheDefinitionsFind) {
  constexpr int kShift = 5;
  const std::size_t count = std::size_t{kLargeWidth} * kLargeHeight;
  const std::vector<float> firsts = MakeSamples(count, Kind::kAllSorts, 7);
  const std::vector<float> seconds = MakeSamples(count, Kind::kPlain, 8);
  const ImageRef first = Testing::MakeImage(kLargeWidth, kLargeHeight, ColorMode::kValue, firsts);
  const ImageRef second = Testing::MakeImage(kLargeWidth, kLargeHeight, ColorMode::kValue, seconds);
  second->SetPin(first->GetPinX() + kShift, first->GetPinY());
  const auto at = [](const std::vector<float>& samples, int x, int y) {
    if (x < 0 || x >= kLargeWidth) return 0.0F;
    return samples[static_cast<std::size_t>(y) * kLargeWidth + static_cast<std::size_t>(x)];
  };
  std::vector<float> expected;
  for (int y = 0; y < kLargeHeight; ++y) {
    for (int x = 0; x < kLargeWidth + kShift; ++x) expected.push_back(at(firsts, x, y) - at(seconds, x - kShift, y));
  }
  Testing::OnEveryInstructionSet([&] {
    SubtractionOperation difference(0.0F);
    const ImageRef result(ComputeValue({first.Get(), second.Get()}, &difference));
    ExpectResult(result.Get(), expected);
  });
}

}  // namespace
