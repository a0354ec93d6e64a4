// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/Clamp/Clamp.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <iterator>
#include <vector>

#include "Tests/Support/ValueTesting.h"

namespace {

using Testing::kInfinity;
using Testing::kLargest;
using Testing::kNan;

using Clamp::Profile;
using Clamp::Sides;
using enum Clamp::Profile;
using enum Clamp::Sides;

constexpr Profile kProfiles[] = {kLinear, kSmooth, kPerlin, kArcOut, kArcIn};

// The square root of three quarters.
constexpr float kRootOfThreeQuarters = 0.866025403784438647F;

float Apply(float value, float low, float high, Profile profile) {
  float result = 99.0F;
  Clamp::Apply(&value, 1, &result, 1, {low, high}, profile);
  return result;
}

TEST(ClampApply, LimitsLinearly) {
  EXPECT_SAME(Apply(-0.5F, 0.0F, 1.0F, kLinear), 0.0F);
  EXPECT_SAME(Apply(0.25F, 0.0F, 1.0F, kLinear), 0.25F);
  EXPECT_SAME(Apply(2.0F, 0.0F, 1.0F, kLinear), 1.0F);
  EXPECT_SAME(Apply(kInfinity, 0.0F, 1.0F, kLinear), 1.0F);
  EXPECT_SAME(Apply(-kInfinity, 0.0F, 1.0F, kLinear), 0.0F);
  EXPECT_SAME(Apply(-0.0F, 0.0F, 1.0F, kLinear), 0.0F);
}

TEST(ClampApply, MakesNanTheLowerLimit) {
  for (const Profile profile : kProfiles) EXPECT_SAME(Apply(kNan, 0.25F, 1.0F, profile), 0.25F);
}

TEST(ClampApply, GivesTheUpperLimitWhenTheLimitsAreSwapped) {
  for (const float value : {-5.0F, 0.0F, 0.5F, 1.0F, 5.0F, kNan}) EXPECT_SAME(Apply(value, 1.0F, 0.0F, kLinear), 0.0F);
}

TEST(ClampApply, ShapesWhatLiesBetween) {
  EXPECT_SAME(Apply(0.5F, 0.0F, 1.0F, kSmooth), 0.5F);
  EXPECT_SAME(Apply(0.25F, 0.0F, 1.0F, kSmooth), 0.15625F);
  EXPECT_SAME(Apply(0.5F, 0.0F, 1.0F, kPerlin), 0.5F);
  EXPECT_SAME(Apply(0.25F, 0.0F, 1.0F, kPerlin), 0.103515625F);
  EXPECT_SAME(Apply(0.5F, 0.0F, 1.0F, kArcOut), kRootOfThreeQuarters);
  EXPECT_SAME(Apply(0.5F, 0.0F, 1.0F, kArcIn), 1.0F - kRootOfThreeQuarters);
}

TEST(ClampApply, StretchesTheShapeOverTheLimits) {
  // A quarter of the way from 2 to 10.
  EXPECT_SAME(Apply(4.0F, 2.0F, 10.0F, kLinear), 4.0F);
  EXPECT_SAME(Apply(4.0F, 2.0F, 10.0F, kSmooth), 3.25F);
  EXPECT_SAME(Apply(4.0F, 2.0F, 10.0F, kPerlin), 2.828125F);
  EXPECT_SAME(Apply(6.0F, 2.0F, 10.0F, kArcOut), 2.0F + 8.0F * kRootOfThreeQuarters);
}

TEST(ClampApply, KeepsTheEndsWithEveryProfile) {
  for (const Profile profile : kProfiles) {
    SCOPED_TRACE(static_cast<int>(profile));
    EXPECT_SAME(Apply(-9.0F, -1.0F, 3.0F, profile), -1.0F);
    EXPECT_SAME(Apply(9.0F, -1.0F, 3.0F, profile), 3.0F);
  }
}

TEST(ClampApply, IsLinearForAnyOtherProfile) {
  for (const int index : {-1, 5, 1000}) {
    const Profile profile = Clamp::GetProfile(index);
    EXPECT_SAME(Apply(0.25F, 0.0F, 1.0F, profile), 0.25F);
    EXPECT_SAME(Apply(7.0F, 0.0F, 1.0F, profile), 1.0F);
  }
}

TEST(ClampApply, HasNoGuardForEqualLimits) {
  for (const float value : {0.0F, 0.5F, 1.0F}) {
    EXPECT_SAME(Apply(value, 0.5F, 0.5F, kLinear), 0.5F);
    for (const Profile profile : {kSmooth, kPerlin, kArcOut, kArcIn})
      EXPECT_SAME(Apply(value, 0.5F, 0.5F, profile), kNan);
  }
}

TEST(ClampApply, GivesTheSameForEveryLengthAndStride) {
  const std::vector<float> values{-0.5F, 0.25F, 2.0F, kNan, 0.75F, 1.0F, 0.0F, 0.5F, -3.0F};
  const std::vector<float> limited{0.0F, 0.25F, 1.0F, 0.0F, 0.75F, 1.0F, 0.0F, 0.5F, 0.0F};
  for (std::size_t count = 0; count <= values.size(); ++count) {
    for (const std::size_t stride : {1U, 2U, 4U}) {
      std::vector<float> samples(values.size() * stride, 77.0F);
      for (std::size_t i = 0; i < values.size(); ++i) samples[i * stride] = values[i];
      std::vector<float> results(values.size(), 99.0F);
      Clamp::Apply(samples.data(), stride, results.data(), count, {0.0F, 1.0F}, kLinear);
      std::vector<float> expected(values.size(), 99.0F);
      std::copy_n(limited.begin(), count, expected.begin());
      EXPECT_EQ(results, expected);
    }
  }
}

Clamp::Limits OpenSide(const std::vector<float>& values, Sides side, std::size_t stride = 1) {
  return Clamp::OpenSide({0.25F, 0.5F}, side, values.data(), stride, values.size() / stride);
}

TEST(ClampOpenSide, LeavesBothLimitsAloneWhereBothLimit) {
  const Clamp::Limits limits = OpenSide({-1.0F, 3.0F}, kBoth);
  EXPECT_SAME(limits.low, 0.25F);
  EXPECT_SAME(limits.high, 0.5F);
}

TEST(ClampOpenSide, RaisesTheUpperLimitToTheHighestValueWhereOnlyTheLowerLimits) {
  const Clamp::Limits limits = OpenSide({-1.0F, 3.0F, kNan, 2.0F}, kLow);
  EXPECT_SAME(limits.low, 0.25F);
  EXPECT_SAME(limits.high, 3.0F);
}

TEST(ClampOpenSide, LowersTheLowerLimitToTheLowestValueWhereOnlyTheUpperLimits) {
  const Clamp::Limits limits = OpenSide({3.0F, kNan, -1.0F, 2.0F}, kHigh);
  EXPECT_SAME(limits.low, -1.0F);
  EXPECT_SAME(limits.high, 0.5F);
}

TEST(ClampOpenSide, LooksAtTheFirstChannelOnly) {
  EXPECT_SAME(OpenSide({1.0F, 9.0F, 2.0F, 9.0F}, kLow, 2).high, 2.0F);
  EXPECT_SAME(OpenSide({1.0F, -9.0F, 2.0F, -9.0F}, kHigh, 2).low, 1.0F);
}

TEST(ClampOpenSide, StaysAtItsStartsWithoutANumber) {
  EXPECT_SAME(OpenSide({}, kLow).high, -kLargest);
  EXPECT_SAME(OpenSide({}, kHigh).low, kLargest);
  EXPECT_SAME(OpenSide({kNan}, kLow).high, -kLargest);
}

TEST(ClampOpenSide, LeavesBothLimitsAloneForAnyOtherWord) {
  const Clamp::Limits limits = OpenSide({-1.0F, 3.0F}, Clamp::GetSides(-1));
  EXPECT_SAME(limits.low, 0.25F);
  EXPECT_SAME(limits.high, 0.5F);
}

TEST(ClampChoices, AreInTheOrderOfTheirWords) {
  EXPECT_EQ(Clamp::GetSides(0), kBoth);
  EXPECT_EQ(Clamp::GetSides(1), kLow);
  EXPECT_EQ(Clamp::GetSides(2), kHigh);
  for (const int index : {-1, 3}) EXPECT_EQ(Clamp::GetSides(index), kBoth);
  int place = 0;
  for (const Profile profile : kProfiles) EXPECT_EQ(Clamp::GetProfile(place++), profile);
  for (const int index : {-1, 5}) EXPECT_EQ(Clamp::GetProfile(index), kLinear);
}

float AnyFloat() { return std::bit_cast<float>(*rc::gen::arbitrary<std::uint32_t>()); }

RC_GTEST_PROP(ClampProperties, LandsBetweenTheLimitsAndKeepsWhatLiesThere, ()) {
  const float value = AnyFloat();
  const float one = AnyFloat();
  const float other = AnyFloat();
  RC_PRE(!std::isnan(one) && !std::isnan(other));
  const float low = std::min(one, other);
  const float high = std::max(one, other);
  const float result = Apply(value, low, high, kLinear);
  RC_ASSERT(result >= low && result <= high);
  if (value >= low && value <= high) RC_ASSERT(result == value);
  RC_ASSERT(Apply(result, low, high, kLinear) == result);
}

RC_GTEST_PROP(ClampProperties, EveryProfileRisesFromLowToHigh, ()) {
  const Profile profile = *rc::gen::elementOf(std::vector<Profile>(std::begin(kProfiles), std::end(kProfiles)));
  const int place = *rc::gen::inRange(0, 1000);
  const float value = static_cast<float>(place) / 1000.0F;
  const float next = static_cast<float>(place + 1) / 1000.0F;
  // The quintic is a difference of terms of up to fifteen.
  constexpr float kRounding = 4.0e-6F;
  RC_ASSERT(Apply(value, 0.0F, 1.0F, profile) <= Apply(next, 0.0F, 1.0F, profile) + kRounding);
  RC_ASSERT(Apply(value, 0.0F, 1.0F, profile) >= 0.0F);
  RC_ASSERT(Apply(value, 0.0F, 1.0F, profile) <= 1.0F + kRounding);
}

}  // namespace
