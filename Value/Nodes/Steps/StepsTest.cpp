// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/Steps/Steps.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <cmath>
#include <vector>

#include "Tests/Support/ValueTesting.h"

namespace {

using Testing::kInfinity;
using Testing::kNan;

float Quantize(float value, int count, float low, float high) {
  float result = 99.0F;
  Steps::Quantize(&value, 1, &result, 1, count, low, high);
  return result;
}

TEST(StepsCount, IsTruncatedAndAtLeastTwo) {
  EXPECT_EQ(Steps::GetCount(2.0F), 2);
  EXPECT_EQ(Steps::GetCount(2.9F), 2);
  EXPECT_EQ(Steps::GetCount(3.0F), 3);
  EXPECT_EQ(Steps::GetCount(100000.0F), 100000);
  for (const float steps : {1.9F, 0.0F, -0.0F, -5.0F, -kInfinity}) EXPECT_EQ(Steps::GetCount(steps), 2);
}

TEST(StepsCount, IsDefinedForEveryFloat) {
  EXPECT_EQ(Steps::GetCount(kNan), 2);
  EXPECT_EQ(Steps::GetCount(2147483520.0F), 2147483520);
  EXPECT_EQ(Steps::GetCount(2147483648.0F), 2147483647);
  EXPECT_EQ(Steps::GetCount(kInfinity), 2147483647);
}

TEST(StepsQuantize, SplitsTheRangeIntoTwoLevels) {
  EXPECT_SAME(Quantize(0.0F, 2, 0.0F, 1.0F), 0.0F);
  EXPECT_SAME(Quantize(0.4999F, 2, 0.0F, 1.0F), 0.0F);
  EXPECT_SAME(Quantize(0.5F, 2, 0.0F, 1.0F), 1.0F);
  EXPECT_SAME(Quantize(0.9999F, 2, 0.0F, 1.0F), 1.0F);
  EXPECT_SAME(Quantize(1.0F, 2, 0.0F, 1.0F), 2.0F);
}

TEST(StepsQuantize, SpacesLevelsByOneLessThanItCounts) {
  EXPECT_SAME(Quantize(0.3F, 5, 0.0F, 1.0F), 0.25F);
  EXPECT_SAME(Quantize(0.999F, 5, 0.0F, 1.0F), 1.0F);
  EXPECT_SAME(Quantize(1.0F, 5, 0.0F, 1.0F), 1.25F);
  EXPECT_SAME(Quantize(0.19F, 5, 0.0F, 1.0F), 0.0F);
  EXPECT_SAME(Quantize(0.5F, 3, 0.0F, 1.0F), 0.5F);
}

TEST(StepsQuantize, ClampsNothing) {
  // Three in a range of 0 to 2 is level floor(1.5 n).
  EXPECT_SAME(Quantize(3.0F, 2, 0.0F, 2.0F), 6.0F);
  EXPECT_SAME(Quantize(3.0F, 5, 0.0F, 2.0F), 3.5F);
  EXPECT_SAME(Quantize(-0.125F, 2, 0.0F, 1.0F), -1.0F);
  EXPECT_SAME(Quantize(kInfinity, 2, 0.0F, 1.0F), kInfinity);
  EXPECT_SAME(Quantize(-kInfinity, 2, 0.0F, 1.0F), -kInfinity);
  EXPECT_SAME(Quantize(kNan, 2, 0.0F, 1.0F), kNan);
}

TEST(StepsQuantize, WorksWithAnyRange) {
  EXPECT_SAME(Quantize(-1.0F, 3, -1.0F, 1.0F), -1.0F);
  EXPECT_SAME(Quantize(0.0F, 3, -1.0F, 1.0F), 0.0F);
  EXPECT_SAME(Quantize(0.9F, 3, -1.0F, 1.0F), 1.0F);
  // A range from above to below.
  EXPECT_SAME(Quantize(0.75F, 2, 1.0F, 0.0F), 1.0F);
  EXPECT_SAME(Quantize(0.25F, 2, 1.0F, 0.0F), 0.0F);
}

TEST(StepsQuantize, HasNoGuardForAnEmptyRange) {
  for (const float value : {0.0F, 0.5F, 1.0F, -1.0F}) EXPECT_FALSE(std::isfinite(Quantize(value, 2, 0.5F, 0.5F)));
}

TEST(StepsQuantize, ReadsTheFirstChannelOfEachPixel) {
  const std::vector<float> samples{0.1F, 0.9F, 0.9F, 0.9F, 0.6F, 0.1F, 0.1F, 0.1F};
  std::vector<float> values(2);
  Steps::Quantize(samples.data(), 4, values.data(), 2, 2, 0.0F, 1.0F);
  EXPECT_EQ(values, (std::vector<float>{0.0F, 1.0F}));
}

RC_GTEST_PROP(StepsProperties, GivesOneOfTheLevelsAndNeverFalls, ()) {
  // One more than a power of two, so that the levels are exact.
  const int intervals = 1 << *rc::gen::inRange(0, 10);
  const int count = intervals + 1;
  const float value = static_cast<float>(*rc::gen::inRange(0, 100000)) / 100000.0F;
  const float next = static_cast<float>(*rc::gen::inRange(0, 100000)) / 100000.0F;
  const float level = Quantize(value, count, 0.0F, 1.0F) * static_cast<float>(intervals);
  RC_ASSERT(level == std::floor(level));
  RC_ASSERT(level >= 0.0F && level <= static_cast<float>(intervals));
  RC_ASSERT((value <= next) <= (Quantize(value, count, 0.0F, 1.0F) <= Quantize(next, count, 0.0F, 1.0F)));
}

}  // namespace
