// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/ToValue/ToValue.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <vector>

#include "Host/Image/ColorMode.h"
#include "Tests/Support/InstructionSets.h"
#include "Tests/Support/ValueTesting.h"

namespace {

using Testing::kInfinity;
using Testing::kLargest;
using Testing::kNan;

std::vector<float> Reduce(const std::vector<float>& samples, unsigned mode, ValueRange& range) {
  const std::size_t pixels = samples.size() / static_cast<std::size_t>(ColorMode::GetNumChannels(mode));
  std::vector<float> values(pixels, 99.0F);
  // Mapping a range onto itself keeps the values.
  range = ToValue::Map(samples.data(), mode, values.data(), pixels, {0.0F, 1.0F}, 0.0F, 1.0F);
  const ValueRange measured = ToValue::Measure(samples.data(), mode, pixels);
  EXPECT_SAME(measured.low, range.low);
  EXPECT_SAME(measured.high, range.high);
  return values;
}

std::vector<float> Remap(const std::vector<float>& values, const ValueRange& source, float low, float high) {
  std::vector<float> mapped(values.size());
  ToValue::Map(values.data(), ColorMode::kValue, mapped.data(), values.size(), source, low, high);
  return mapped;
}

TEST(ToValueReduce, WeighsColorByOpacity) {
  ValueRange range;
  const std::vector<float> values = Reduce({1.0F, 1.0F, 1.0F, 1.0F,    //
                                            1.0F, 1.0F, 1.0F, 0.5F,    //
                                            9.0F, -7.0F, 3.0F, 0.0F,   //
                                            0.75F, 0.0F, 0.0F, 1.0F},  //
                                           ColorMode::kColor, range);
  EXPECT_SAME(values[0], 1.0F);
  EXPECT_SAME(values[1], 0.5F);
  EXPECT_SAME(values[2], 0.0F);
  EXPECT_SAME(values[3], 0.25F);
  EXPECT_SAME(range.low, 0.0F);
  EXPECT_SAME(range.high, 1.0F);
}

TEST(ToValueReduce, SumsGreenAndRedBeforeBlue) {
  // In float, 16777216 + 1 is 16777216 again, so the order decides whether the two ones count.
  ValueRange range;
  const std::vector<float> values = Reduce({1.0F, 16777216.0F, 1.0F, 1.0F,   //
                                            1.0F, 1.0F, 16777216.0F, 1.0F},  //
                                           ColorMode::kColor, range);
  // A third of 16777216 and of 16777218, by the float nearest a third.
  EXPECT_SAME(values[0], 5592405.5F);
  EXPECT_SAME(values[1], 5592406.0F);
}

TEST(ToValueReduce, TakesTheThirdChannelOfTheSignedModeAndTheOnlyOneOfTheValueMode) {
  ValueRange range;
  EXPECT_EQ(Reduce({0.1F, 0.2F, -0.75F, 0.0F, 0.5F, 0.5F, 0.25F, 1.0F}, ColorMode::kSigned, range),
            (std::vector<float>{-0.75F, 0.25F}));
  EXPECT_SAME(range.low, -0.75F);
  EXPECT_SAME(range.high, 0.25F);
  EXPECT_EQ(Reduce({4.0F, -2.0F}, ColorMode::kValue, range), (std::vector<float>{4.0F, -2.0F}));
  EXPECT_SAME(range.low, -2.0F);
  EXPECT_SAME(range.high, 4.0F);
}

TEST(ToValueReduce, TakesEveryPixelOfAnyOtherModeForLow) {
  std::vector<float> values(2, 99.0F);
  const std::vector<float> samples{1.0F, 2.0F, 3.0F, 4.0F};
  const ValueRange range = ToValue::Map(samples.data(), ColorMode::kPair, values.data(), 2, ValueRange(), 0.5F, 0.75F);
  EXPECT_EQ(values, (std::vector<float>{0.5F, 0.5F}));
  EXPECT_SAME(range.low, kLargest);
  EXPECT_SAME(range.high, -kLargest);
}

TEST(ToValueReduce, PassesOverNanAndCountsInfinities) {
  ValueRange range;
  Reduce({kNan, 1.0F, kNan, 3.0F}, ColorMode::kValue, range);
  EXPECT_SAME(range.low, 1.0F);
  EXPECT_SAME(range.high, 3.0F);
  Reduce({-kInfinity, 1.0F, kInfinity}, ColorMode::kValue, range);
  EXPECT_SAME(range.low, -kInfinity);
  EXPECT_SAME(range.high, kInfinity);
  Reduce({kNan}, ColorMode::kValue, range);
  EXPECT_SAME(range.low, kLargest);
  EXPECT_SAME(range.high, -kLargest);
}

TEST(ToValueReduce, PassesOverNanAtEveryPlaceOnEveryInstructionSet) {
  Testing::OnEveryInstructionSet([] {
    for (std::size_t count = 3; count < 90; ++count) {
      for (std::size_t place = 0; place < count; ++place) {
        std::vector<float> samples(count, 2.0F);
        samples[place] = kNan;
        samples[(place + 1) % count] = -1.0F;
        samples[(place + count - 1) % count] = 3.0F;
        ValueRange range;
        Reduce(samples, ColorMode::kValue, range);
        ASSERT_PRED_FORMAT2(Testing::SameFloat, range.low, -1.0F) << place << " of " << count;
        ASSERT_PRED_FORMAT2(Testing::SameFloat, range.high, 3.0F) << place << " of " << count;
      }
    }
  });
}

TEST(ToValueRange, IsThatOfTheModeUnlessLevelsAreAutomatic) {
  const ValueRange measured{2.0F, 4.0F};
  const auto choose = [&](unsigned mode, bool automatic) {
    return ToValue::ChooseRange(ToValue::GetNominalRange(mode, {-3.0F, 7.0F}, measured), measured, automatic);
  };
  const auto is = [](const ValueRange& range, float from, float to) { return range.low == from && range.high == to; };
  EXPECT_TRUE(is(choose(ColorMode::kColor, false), 0.0F, 1.0F));
  EXPECT_TRUE(is(choose(ColorMode::kSigned, false), -1.0F, 1.0F));
  EXPECT_TRUE(is(choose(ColorMode::kValue, false), -3.0F, 7.0F));
  EXPECT_TRUE(is(choose(ColorMode::kPair, false), 2.0F, 4.0F));
  for (unsigned mode = 0; mode < ColorMode::kCount; ++mode) EXPECT_TRUE(is(choose(mode, true), 2.0F, 4.0F));
}

TEST(ToValueRange, OfAFlatImageStartsAtTheLowerEndOfTheMode) {
  const ValueRange flat{0.5F, 0.50005F};
  const auto choose = [&](unsigned mode) {
    return ToValue::ChooseRange(ToValue::GetNominalRange(mode, {-3.0F, 7.0F}, flat), flat, true);
  };
  EXPECT_SAME(choose(ColorMode::kColor).low, 0.0F);
  EXPECT_SAME(choose(ColorMode::kSigned).low, -1.0F);
  EXPECT_SAME(choose(ColorMode::kValue).low, -3.0F);
  EXPECT_SAME(choose(ColorMode::kPair).low, 0.5F);
  for (unsigned mode = 0; mode < ColorMode::kCount; ++mode) EXPECT_SAME(choose(mode).high, 0.50005F);
}

TEST(ToValueRange, IsFlatBelowOneTenThousandthOnly) {
  const ValueRange nominal{0.0F, 1.0F};
  EXPECT_SAME(ToValue::ChooseRange(nominal, {1.0F, 1.00009F}, true).low, 0.0F);
  EXPECT_SAME(ToValue::ChooseRange(nominal, {1.0F, 1.00011F}, true).low, 1.0F);
}

TEST(ToValueRemap, MapsTheRangeAndWhatLiesOutside) {
  const std::vector<float> values = Remap({2.0F, 4.0F, 6.0F, 8.0F, 0.0F}, {2.0F, 6.0F}, 10.0F, 20.0F);
  EXPECT_EQ(values, (std::vector<float>{10.0F, 15.0F, 20.0F, 25.0F, 5.0F}));
}

TEST(ToValueRemap, InvertsWhenLowIsAboveHigh) {
  const std::vector<float> values = Remap({0.0F, 0.25F, 1.0F}, {0.0F, 1.0F}, 10.0F, 0.0F);
  EXPECT_EQ(values, (std::vector<float>{10.0F, 7.5F, 0.0F}));
}

TEST(ToValueRemap, HasNoGuardForAnEmptyRange) {
  const std::vector<float> values = Remap({1.0F, 2.0F, 3.0F}, {2.0F, 2.0F}, 0.0F, 1.0F);
  EXPECT_SAME(values[0], -kInfinity);
  EXPECT_SAME(values[1], kNan);
  EXPECT_SAME(values[2], kInfinity);
}

RC_GTEST_PROP(ToValueProperties, KeepsValuesWhenBothRangesAreZeroToOne, ()) {
  const float value = static_cast<float>(*rc::gen::arbitrary<int>()) * 0.001F;
  const std::vector<float> values = Remap({value}, {0.0F, 1.0F}, 0.0F, 1.0F);
  RC_ASSERT(values[0] == value);
}

RC_GTEST_PROP(ToValueProperties, MapsTheEndsOfTheRangeOntoLowAndHigh, ()) {
  // Powers of two, so that nothing is rounded.
  const float from = static_cast<float>(*rc::gen::inRange(-100, 100));
  const float width = std::ldexp(1.0F, *rc::gen::inRange(-3, 6));
  const float low = static_cast<float>(*rc::gen::inRange(-100, 100));
  const float high = static_cast<float>(*rc::gen::inRange(-100, 100));
  const std::vector<float> values = Remap({from, from + width, from + width / 2.0F}, {from, from + width}, low, high);
  RC_ASSERT(values[0] == low);
  RC_ASSERT(values[1] == high);
  RC_ASSERT(values[2] == (low + high) / 2.0F);
}

}  // namespace
