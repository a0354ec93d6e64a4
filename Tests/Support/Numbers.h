// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

/// Numbers at the edges of what a float is, and comparisons that know NaN.
namespace Testing {

inline constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
inline constexpr float kInfinity = std::numeric_limits<float>::infinity();
inline constexpr float kLargest = std::numeric_limits<float>::max();
inline constexpr float kSmallest = std::numeric_limits<float>::denorm_min();

/// The same number, sign of zero included; any NaN is any other.
inline bool AreSame(float a, float b) {
  return (std::isnan(a) && std::isnan(b)) || std::bit_cast<std::uint32_t>(a) == std::bit_cast<std::uint32_t>(b);
}

/// For EXPECT_PRED_FORMAT2: equal bits (so +0.0 is not -0.0), any NaN being equal to any NaN.
inline testing::AssertionResult SameFloat(const char* actual_text, const char* expected_text, float actual,
                                          float expected) {
  if (AreSame(actual, expected)) return testing::AssertionSuccess();
  return testing::AssertionFailure() << actual_text << " is " << testing::PrintToString(actual) << ", not "
                                     << expected_text << " = " << testing::PrintToString(expected);
}
#define EXPECT_SAME(actual, expected) EXPECT_PRED_FORMAT2(::Testing::SameFloat, actual, expected)

/// Passes when all samples are the same by `AreSame`; else names the first that differs.
inline testing::AssertionResult SameSamples(const std::vector<float>& expected, const std::vector<float>& actual) {
  if (expected.size() != actual.size()) {
    return testing::AssertionFailure() << actual.size() << " samples instead of " << expected.size();
  }
  for (std::size_t i = 0; i < expected.size(); ++i) {
    if (AreSame(expected[i], actual[i])) continue;
    return testing::AssertionFailure() << "sample " << i << " is " << actual[i] << " instead of " << expected[i];
  }
  return testing::AssertionSuccess();
}

}  // namespace Testing
