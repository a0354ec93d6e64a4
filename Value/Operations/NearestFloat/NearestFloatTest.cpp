// SPDX-License-Identifier: Apache-2.0
//
// The true values are MPFR's, with 300 bits. Tests/Proofs tries every float; here are the hard ones, all kinds of them,
// and random ones, on every instruction set.

#include "Value/Operations/NearestFloat/NearestFloat.h"

#include <gtest/gtest.h>
#include <mpfr.h>

#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <ostream>
#include <random>
#include <string>
#include <vector>

#include "Host/Math/Constants.h"
#include "Tests/Proofs/TrueValue.h"
#include "Tests/Support/InstructionSets.h"
#include "Tests/Support/Numbers.h"
#include "Value/Operations/NearestFloat/SlowWay.h"

namespace {

using Testing::kInfinity;
using Testing::kLargest;
using Testing::kNan;
using Testing::kSmallest;

struct FunctionCase {
  std::string name;
  float (*one)(float);
  void (*row)(const float*, float*, std::size_t);
  float (*slow_way)(float, double);
  Proofs::MpfrFunction function;
  /// Random arguments are drawn from here.
  float low;
  float high;

  friend std::ostream& operator<<(std::ostream& stream, const FunctionCase& shown) { return stream << shown.name; }
};

std::vector<FunctionCase> GetCases() {
  namespace Slow = NearestFloat::SlowWay;
  using namespace NearestFloat;  // NOLINT(google-build-using-namespace): for the table alone
  return {{"Sine", Sine, Sine, Slow::Sine, mpfr_sin, -10.0F, 10.0F},
          {"Cosine", Cosine, Cosine, Slow::Cosine, mpfr_cos, -10.0F, 10.0F},
          {"Tangent", Tangent, Tangent, Slow::Tangent, mpfr_tan, -10.0F, 10.0F},
          {"ArcSine", ArcSine, ArcSine, Slow::ArcSine, mpfr_asin, -1.0F, 1.0F},
          {"ArcCosine", ArcCosine, ArcCosine, Slow::ArcCosine, mpfr_acos, -1.0F, 1.0F},
          {"ArcTangent", ArcTangent, ArcTangent, Slow::ArcTangent, mpfr_atan, -10.0F, 10.0F},
          {"Log", Log, Log, Slow::Log, mpfr_log, 0.0F, 10.0F},
          {"Exponential", Exponential, Exponential, Slow::Exponential, mpfr_exp, -104.0F, 89.0F},
          {"CubicRoot", CubicRoot, CubicRoot, Slow::CubicRoot, mpfr_cbrt, -1000.0F, 1000.0F}};
}

float GetExpected(const FunctionCase& function, float value) {
  if (function.name == "ArcSine") {
    if (!(value > -1.0F)) return -ScEng::Math<float>::HALF_PI;
    if (!(value < 1.0F)) return ScEng::Math<float>::HALF_PI;
  }
  if (function.name == "ArcCosine") {
    if (!(value > -1.0F)) return ScEng::Math<float>::PI;
    if (!(value < 1.0F)) return 0.0F;
  }
  return Proofs::GetTrueValue(function.function, value);
}

/// Zeros, infinities, NaN, subnormals, edges of domains and ranges, neighbours of powers of two and of multiples of
/// half pi, and large angles.
std::vector<float> MakeSpecialValues() {
  std::vector<float> values{
      0.0F,   1.0F,  kInfinity, kNan,        kSmallest,  kLargest,    0x1p-126F,  0x1.fffffcp-127F,
      0.5F,   2.25F, 8.0F,      27.0F,       0.001F,     88.72283F,   88.72284F,  103.27893F,
      104.0F, 87.3F, 103.9721F, 0.41421357F, 2.4142135F, 0.70710677F, 0.7071068F, 1.4142135F,
      1e10F,  1e20F, 1e30F,     8388608.0F,  8388609.0F, 16777216.0F, 5.0e-20F,   1.0e-40F};
  for (int power = -149; power <= 127; ++power) {
    const float two = std::ldexp(1.0F, power);
    values.insert(values.end(), {two, std::nextafter(two, 0.0F), std::nextafter(two, kInfinity)});
  }
  for (int quarter = 1; quarter < 200; ++quarter) {
    const auto angle = static_cast<float>(quarter * 0.78539816339744831);
    values.insert(values.end(), {angle, std::nextafter(angle, 0.0F), std::nextafter(angle, kInfinity)});
  }
  const std::size_t count = values.size();
  for (std::size_t i = 0; i < count; ++i) values.push_back(-values[i]);
  return values;
}

std::vector<float> MakeRandomValues(const FunctionCase& function, std::size_t count, std::uint32_t seed) {
  std::mt19937 random(seed);
  std::uniform_real_distribution<float> inside(function.low, function.high);
  std::vector<float> values(count);
  for (std::size_t i = 0; i < count; ++i) {
    values[i] = i % 2 == 0 ? inside(random) : std::bit_cast<float>(static_cast<std::uint32_t>(random()));
  }
  return values;
}

class NearestFunction : public testing::TestWithParam<FunctionCase> {
 protected:
  /// Holds the row, on every instruction set, and the values one at a time against the true values.
  static void ExpectNearest(const std::vector<float>& values) {
    const FunctionCase& function = GetParam();
    std::vector<float> expected;
    for (const float value : values) expected.push_back(GetExpected(function, value));
    for (std::size_t i = 0; i < values.size(); ++i) {
      ASSERT_PRED_FORMAT2(Testing::SameFloat, function.one(values[i]), expected[i]) << "of " << values[i];
    }
    Testing::OnEveryInstructionSet([&] {
      std::vector<float> results(values.size());
      function.row(values.data(), results.data(), values.size());
      for (std::size_t i = 0; i < values.size(); ++i) {
        ASSERT_PRED_FORMAT2(Testing::SameFloat, results[i], expected[i]) << "of " << values[i];
      }
    });
  }
};

TEST_P(NearestFunction, IsNearestAtSpecialValues) { ExpectNearest(MakeSpecialValues()); }

TEST_P(NearestFunction, IsNearestAtRandomValues) { ExpectNearest(MakeRandomValues(GetParam(), 20000, 7)); }

TEST_P(NearestFunction, FillsRowsOfEveryLengthAndNoMore) {
  const FunctionCase& function = GetParam();
  const std::vector<float> values = MakeRandomValues(function, 70, 11);
  Testing::OnEveryInstructionSet([&] {
    for (std::size_t count = 0; count < values.size(); ++count) {
      std::vector<float> results(values.size(), -77.0F);
      function.row(values.data(), results.data(), count);
      for (std::size_t i = 0; i < values.size(); ++i) {
        ASSERT_PRED_FORMAT2(Testing::SameFloat, results[i], i < count ? function.one(values[i]) : -77.0F);
      }
    }
  });
}

TEST_P(NearestFunction, IsNearestTheSlowWayToo) {
  const FunctionCase& function = GetParam();
  for (const float value : MakeRandomValues(function, 4000, 13)) {
    const bool is_inside = function.low <= -10.0F || (value > function.low && value < 1.0F);
    if (!std::isfinite(value) || value == 0.0F || !is_inside || std::fabs(value) > 1.0e37F) continue;
    const float expected = GetExpected(function, value);
    if (expected == 0.0F || !std::isfinite(expected)) continue;
    // An estimate as good as the row's own.
    Proofs::Number argument(24);
    Proofs::Number estimate(53);
    mpfr_set_flt(argument.Get(), value, MPFR_RNDN);
    function.function(estimate.Get(), argument.Get(), MPFR_RNDN);
    const double rough = mpfr_get_d(estimate.Get(), MPFR_RNDN) * (1.0 + 0x1p-44);
    ASSERT_PRED_FORMAT2(Testing::SameFloat, function.slow_way(value, rough), expected) << "of " << value;
  }
}

struct HardCase {
  std::string function;
  float argument;
  float result;
};

/// Where the functions lie nearest to the middle between two floats of all arguments, and where the double of Debian
/// 12's C library narrows to another float.
std::vector<HardCase> GetHardCases() {
  return {{"Sine", 0x1.33333p+13F, -0x1.63f4bap-2F},        {"Sine", 0x1.487e0cp+103F, 0x1.287508p-2F},
          {"Log", 0x1.827a74p-7F, -0x1.1c2b1ep+2F},         {"Log", 0x1.2f1fd6p+3F, 0x1.1fcbcep+1F},
          {"Log", 0x1.bacb4ap+25F, 0x1.1e0696p+4F},         {"Log", 0x1.b121a6p+76F, 0x1.a9a3f2p+5F},
          {"Log", 0x1.6351d8p+95F, 0x1.08b512p+6F},         {"Exponential", -0x1.d2259ap+3F, 0x1.fa6636p-22F},
          {"CubicRoot", 0x1.06a76ap-125F, 0x1.454f78p-42F}, {"ArcTangent", 0x1.1ad646p-4F, 0x1.1a6386p-4F},
          {"ArcSine", 0x1.107434p-1F, 0x1.1f4b64p-1F},      {"ArcCosine", 0x1.110b46p-26F, 0x1.921fb6p+0F},
          {"ArcCosine", 0x1.04c444p-12F, 0x1.920f6ap+0F},   {"Cosine", 0x1.2b9622p+67F, 0x1.f0285ep-1F},
          {"Tangent", 0x1.fa6748p+64F, 0x1.a0d918p+0F}};
}

TEST_P(NearestFunction, IsNearestAtTheHardestValues) {
  const FunctionCase& function = GetParam();
  for (const HardCase& hard : GetHardCases()) {
    if (hard.function != function.name) continue;
    EXPECT_PRED_FORMAT2(Testing::SameFloat, GetExpected(function, hard.argument), hard.result);
    EXPECT_PRED_FORMAT2(Testing::SameFloat, function.one(hard.argument), hard.result);
    // A row of nothing else takes the slow way once and keeps what it came to.
    const std::vector<float> values(37, hard.argument);
    const std::vector<float> expected(37, hard.result);
    Testing::OnEveryInstructionSet([&] {
      std::vector<float> results(values.size());
      function.row(values.data(), results.data(), values.size());
      EXPECT_EQ(results, expected);
    });
  }
}

INSTANTIATE_TEST_SUITE_P(All, NearestFunction, testing::ValuesIn(GetCases()),
                         [](const auto& parameter) { return parameter.param.name; });

struct Pair {
  float base;
  float exponent;
};

void ExpectNearestPowers(const std::vector<Pair>& pairs) {
  std::vector<float> bases;
  std::vector<float> exponents;
  std::vector<float> expected;
  for (const auto& [base, exponent] : pairs) {
    bases.push_back(base);
    exponents.push_back(exponent);
    expected.push_back(Proofs::GetTrueValue(mpfr_pow, base, exponent));
  }
  for (std::size_t i = 0; i < pairs.size(); ++i) {
    ASSERT_PRED_FORMAT2(Testing::SameFloat, NearestFloat::Power(bases[i], exponents[i]), expected[i])
        << bases[i] << " to the power of " << exponents[i];
  }
  Testing::OnEveryInstructionSet([&] {
    std::vector<float> results(pairs.size());
    NearestFloat::Power(bases.data(), exponents.data(), results.data(), pairs.size());
    for (std::size_t i = 0; i < pairs.size(); ++i) {
      ASSERT_PRED_FORMAT2(Testing::SameFloat, results[i], expected[i])
          << bases[i] << " to the power of " << exponents[i];
      float alone = 0.0F;
      NearestFloat::Power(&bases[i], exponents[i], &alone, 1);
      ASSERT_PRED_FORMAT2(Testing::SameFloat, alone, expected[i]) << bases[i] << " to the power of " << exponents[i];
    }
  });
}

TEST(NearestPower, IsNearestOfSpecialValues) {
  std::vector<float> values{0.0F,      1.0F,   2.0F,        3.0F,        0.5F,        1.5F,        0.25F,
                            2.25F,     2.2F,   1.0F / 2.2F, 7.0F,        16777215.0F, 16777216.0F, 8388607.5F,
                            kInfinity, kNan,   kSmallest,   kLargest,    0x1p-126F,   128.0F,      149.0F,
                            150.0F,    149.5F, 0x1p-75F,    0.99999994F, 1.0000001F,  1.0e10F,     3.0e9F};
  const std::size_t count = values.size();
  for (std::size_t i = 0; i < count; ++i) values.push_back(-values[i]);
  std::vector<Pair> pairs;
  for (const float base : values) {
    for (const float exponent : values) pairs.push_back({base, exponent});
  }
  ExpectNearestPowers(pairs);
}

// 5001^2 = 25010001 lies half way between 25010000 and 25010002, of which the former is even; 201^3 = 8120601 and
// 289^1.5 = 4913 are floats; (2^-75)^2 lies half way between 0 and the smallest float, (1.5 x 2^-75)^2 above it.
TEST(NearestPower, RoundsTheMiddleBetweenTwoFloatsToTheEvenOne) {
  EXPECT_PRED_FORMAT2(Testing::SameFloat, NearestFloat::Power(5001.0F, 2.0F), 25010000.0F);
  EXPECT_PRED_FORMAT2(Testing::SameFloat, NearestFloat::Power(201.0F, 3.0F), 8120601.0F);
  EXPECT_PRED_FORMAT2(Testing::SameFloat, NearestFloat::Power(289.0F, 1.5F), 4913.0F);
  EXPECT_PRED_FORMAT2(Testing::SameFloat, NearestFloat::Power(0x1p-75F, 2.0F), 0.0F);
  EXPECT_PRED_FORMAT2(Testing::SameFloat, NearestFloat::Power(0x1.8p-75F, 2.0F), kSmallest);
}

// The C library of Debian 12 gives the float above in double.
TEST(NearestPower, IsNearestAtAHardPair) {
  EXPECT_PRED_FORMAT2(Testing::SameFloat, Proofs::GetTrueValue(mpfr_pow, 0x1.f4c76p+20F, 1.0F / 2.2F), 0x1.71e1dap+9F);
  ExpectNearestPowers({{0x1.f4c76p+20F, 1.0F / 2.2F}});
}

TEST(NearestPower, IsNearestWhereItIsExact) {
  std::mt19937 random(17);
  std::vector<Pair> pairs;
  for (int i = 0; i < 20000; ++i) {
    const auto root = static_cast<float>(random() % 8192);
    const auto scale = std::ldexp(1.0F, static_cast<int>(random() % 60) - 60);
    pairs.push_back({root * scale, static_cast<float>(2 + random() % 4)});
    pairs.push_back({root * root, static_cast<float>(random() % 7) / 2.0F});
    pairs.push_back({-root, static_cast<float>(random() % 9)});
  }
  ExpectNearestPowers(pairs);
}

std::vector<Pair> MakeRandomPairs(std::size_t count) {
  std::mt19937 random(19);
  std::uniform_real_distribution<float> power(-151.0F, 129.0F);
  std::vector<Pair> pairs;
  for (std::size_t i = 0; i < count; ++i) {
    const auto base = std::bit_cast<float>(static_cast<std::uint32_t>(random()));
    const auto any = std::bit_cast<float>(static_cast<std::uint32_t>(random()));
    pairs.push_back({base, any});
    pairs.push_back({std::fabs(base), power(random) / std::log2(std::fabs(base))});
  }
  return pairs;
}

TEST(NearestPower, IsNearestAtRandomValues) { ExpectNearestPowers(MakeRandomPairs(20000)); }

TEST(NearestPower, IsNearestTheSlowWayToo) {
  namespace Slow = NearestFloat::SlowWay;
  std::size_t compared = 0;
  for (const auto& [base, exponent] : MakeRandomPairs(3000)) {
    const float expected = Proofs::GetTrueValue(mpfr_pow, base, exponent);
    const bool is_common = base > 0.0F && base != 1.0F && std::isfinite(base) && exponent != 0.0F &&
                           std::isfinite(expected) && expected > 0.0F;
    if (!is_common || std::fabs(std::log2(expected)) < 0x1p-20F) continue;
    ++compared;
    ASSERT_PRED_FORMAT2(Testing::SameFloat, Slow::Power(base, exponent), expected) << base << "^" << exponent;
    if (Slow::PowerIfExact(base, exponent)) continue;
    ASSERT_PRED_FORMAT2(Testing::SameFloat, Slow::PowerByPairs(base, exponent).value(), expected)
        << base << "^" << exponent;
    ASSERT_PRED_FORMAT2(Testing::SameFloat, Slow::PowerByDigits(base, exponent), expected) << base << "^" << exponent;
  }
  EXPECT_GT(compared, 2000U);
}

TEST(NearestPower, FillsRowsOfEveryLengthAndNoMore) {
  const std::vector<Pair> pairs = MakeRandomPairs(35);
  std::vector<float> bases;
  std::vector<float> exponents;
  for (const auto& [base, exponent] : pairs) {
    bases.push_back(base);
    exponents.push_back(exponent);
  }
  Testing::OnEveryInstructionSet([&] {
    for (std::size_t count = 0; count < bases.size(); ++count) {
      std::vector<float> results(bases.size(), -77.0F);
      NearestFloat::Power(bases.data(), exponents.data(), results.data(), count);
      std::vector<float> of_constant(bases.size(), -77.0F);
      NearestFloat::Power(bases.data(), 2.2F, of_constant.data(), count);
      for (std::size_t i = 0; i < bases.size(); ++i) {
        const bool is_inside = i < count;
        ASSERT_PRED_FORMAT2(Testing::SameFloat, results[i],
                            is_inside ? NearestFloat::Power(bases[i], exponents[i]) : -77.0F);
        ASSERT_PRED_FORMAT2(Testing::SameFloat, of_constant[i],
                            is_inside ? NearestFloat::Power(bases[i], 2.2F) : -77.0F);
      }
    }
  });
}

}  // namespace
