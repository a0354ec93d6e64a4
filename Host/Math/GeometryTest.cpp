// SPDX-License-Identifier: Apache-2.0
#include "Host/Math/Geometry.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>

#include "Host/Math/Constants.h"

namespace {

using ScEng::Box2I;
using ScEng::Math;
using ScEng::RoundHalfDown;

constexpr std::int32_t kLowest = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t kHighest = std::numeric_limits<std::int32_t>::max();

TEST(RoundHalfDown, RoundsHalvesTowardsNegativeInfinity) {
  EXPECT_EQ(RoundHalfDown(0.5), 0);
  EXPECT_EQ(RoundHalfDown(1.5), 1);
  EXPECT_EQ(RoundHalfDown(2.5), 2);
  EXPECT_EQ(RoundHalfDown(-0.5), -1);
  EXPECT_EQ(RoundHalfDown(-1.5), -2);
  EXPECT_EQ(RoundHalfDown(0.5F), 0);
  EXPECT_EQ(RoundHalfDown(3.5F), 3);
  EXPECT_EQ(RoundHalfDown(-0.5F), -1);
  EXPECT_EQ(RoundHalfDown(-2.5F), -3);
}

TEST(RoundHalfDown, RoundsEverythingElseToNearest) {
  EXPECT_EQ(RoundHalfDown(0.0), 0);
  EXPECT_EQ(RoundHalfDown(-0.0), 0);
  EXPECT_EQ(RoundHalfDown(0.51), 1);
  EXPECT_EQ(RoundHalfDown(2.49), 2);
  EXPECT_EQ(RoundHalfDown(-0.49), 0);
  EXPECT_EQ(RoundHalfDown(-0.51), -1);
  EXPECT_EQ(RoundHalfDown(7.0), 7);
  EXPECT_EQ(RoundHalfDown(-7.0), -7);
  EXPECT_EQ(RoundHalfDown(0.75F), 1);
  EXPECT_EQ(RoundHalfDown(-0.25F), 0);
  EXPECT_EQ(RoundHalfDown(-0.75F), -1);
}

TEST(RoundHalfDown, DecidesAtTheNeighborsOfAHalf) {
  EXPECT_EQ(RoundHalfDown(std::nextafter(0.5, 1.0)), 1);
  EXPECT_EQ(RoundHalfDown(std::nextafter(0.5, 0.0)), 0);
  EXPECT_EQ(RoundHalfDown(std::nextafter(0.5F, 1.0F)), 1);
  EXPECT_EQ(RoundHalfDown(std::nextafter(0.5F, 0.0F)), 0);
  // The largest float that still has halves.
  EXPECT_EQ(RoundHalfDown(8388607.5F), 8388607);
}

TEST(RoundHalfDown, StopsAtTheEndsOfThe32BitRange) {
  EXPECT_EQ(RoundHalfDown(1e10), kHighest);
  EXPECT_EQ(RoundHalfDown(-1e10), kLowest);
  EXPECT_EQ(RoundHalfDown(2147483647.0), kHighest);
  EXPECT_EQ(RoundHalfDown(2147483647.75), kHighest);
  EXPECT_EQ(RoundHalfDown(-2147483648.0), kLowest);
  EXPECT_EQ(RoundHalfDown(-2147483649.0), kLowest);
  EXPECT_EQ(RoundHalfDown(std::numeric_limits<double>::infinity()), kHighest);
  EXPECT_EQ(RoundHalfDown(-std::numeric_limits<double>::infinity()), kLowest);
  EXPECT_EQ(RoundHalfDown(3e9F), kHighest);
  EXPECT_EQ(RoundHalfDown(-3e9F), kLowest);
  EXPECT_EQ(RoundHalfDown(std::numeric_limits<float>::infinity()), kHighest);
  EXPECT_EQ(RoundHalfDown(-std::numeric_limits<float>::infinity()), kLowest);
  EXPECT_EQ(RoundHalfDown(-2147483648.0F), kLowest);
}

TEST(RoundHalfDown, GivesZeroForNaN) {
  EXPECT_EQ(RoundHalfDown(std::numeric_limits<double>::quiet_NaN()), 0);
  EXPECT_EQ(RoundHalfDown(std::numeric_limits<float>::quiet_NaN()), 0);
}

TEST(Box, UnionHoldsBoth) {
  const Box2I a{0, 0, 4, 3};
  const Box2I b{-2, 1, 3, 9};
  EXPECT_EQ(Union(a, b), (Box2I{-2, 0, 4, 9}));
  EXPECT_EQ(Union(b, a), (Box2I{-2, 0, 4, 9}));
  EXPECT_EQ(Union(a, a), a);
}

TEST(Box, UnionOfDisjointBoxesCoversTheGap) {
  const Box2I joined = Union(Box2I{-10, -20, -5, -15}, Box2I{7, 8, 9, 10});
  EXPECT_EQ(joined, (Box2I{-10, -20, 9, 10}));
  EXPECT_EQ(joined.Width(), 19);
  EXPECT_EQ(joined.Height(), 30);
}

TEST(Box, EdgesAreWiderThan32Bits) {
  const Box2I box = Union(Box2I{kLowest, 0, kLowest, 0}, Box2I{kHighest, 0, std::int64_t{kHighest} + 5, 1});
  EXPECT_EQ(box.Width(), std::int64_t{4294967300});
}

TEST(Geometry, ColorsAreOpaqueByDefault) { EXPECT_EQ(ScEng::Rgbo(), (ScEng::Rgbo{0.0, 0.0, 0.0, 1.0})); }

std::uint32_t BitsOf(float value) { return std::bit_cast<std::uint32_t>(value); }

TEST(Constants, AreTheNearestFloats) {
  EXPECT_EQ(BitsOf(Math<float>::PI), 0x40490fdbU);
  EXPECT_EQ(BitsOf(Math<float>::HALF_PI), 0x3fc90fdbU);
  EXPECT_EQ(BitsOf(Math<float>::DEG_TO_RAD), 0x3c8efa35U);
  EXPECT_EQ(BitsOf(Math<float>::RAD_TO_DEG), 0x42652ee1U);
  EXPECT_EQ(BitsOf(Math<float>::INV_LN_2), 0x3fb8aa3bU);
  EXPECT_EQ(BitsOf(Math<float>::INV_LN_10), 0x3ede5bd9U);
}

TEST(Constants, RealsAreTheLargestFiniteFloatAndItsNegative) {
  EXPECT_EQ(BitsOf(Math<float>::MAX_REAL), 0x7f7fffffU);
  EXPECT_EQ(BitsOf(Math<float>::MIN_REAL), 0xff7fffffU);
}

}  // namespace
