// SPDX-License-Identifier: Apache-2.0
#include "Host/Widgets/SliderScale.h"

#include <gtest/gtest.h>

#include <limits>

#include "Host/Util/RefCounter.h"

namespace {

using ScEng::RefPtr;
using ScEng::SliderScale;

RefPtr<Attribute> MakeNumber(double value, double lowest, double highest, double step) {
  return RefPtr<Attribute>(new Attribute(nullptr, 0, "number", value, lowest, highest, step, 3));
}

TEST(SliderScale, CoversBoundsThatAreFewSteps) {
  const SliderScale scale(*MakeNumber(0.1, 0.0, 1.0, 0.01), 0.0);
  EXPECT_EQ(scale.GetLow(), 0.0);
  EXPECT_EQ(scale.GetHigh(), 1.0);
  EXPECT_EQ(scale.ToValue(0.0), 0.0);
  EXPECT_DOUBLE_EQ(scale.ToValue(0.25), 0.25);
  EXPECT_EQ(scale.ToValue(1.0), 1.0);
  EXPECT_DOUBLE_EQ(scale.ToPosition(0.75), 0.75);
}

TEST(SliderScale, CoversAHundredStepsAroundZeroWhereBoundsAreFarApart) {
  const SliderScale scale(*MakeNumber(0.0, -1e9, 1e9, 0.01), 0.0);
  EXPECT_EQ(scale.GetLow(), -1.0);
  EXPECT_EQ(scale.GetHigh(), 1.0);
}

TEST(SliderScale, ReachesTwiceAsFarAsTheDefault) {
  const SliderScale scale(*MakeNumber(-1000.0, -1e9, 1e9, 0.01), 0.0);
  EXPECT_EQ(scale.GetLow(), -2000.0);
  EXPECT_EQ(scale.GetHigh(), 2000.0);
}

TEST(SliderScale, StartsAtABoundThatIsNotBelowZero) {
  const SliderScale scale(*MakeNumber(2.0, 2.0, 100000.0, 1.0), 0.0);
  EXPECT_EQ(scale.GetLow(), 2.0);
  EXPECT_EQ(scale.GetHigh(), 102.0);
}

TEST(SliderScale, EndsAtABoundThatIsNotAboveZero) {
  const SliderScale scale(*MakeNumber(-1.0, -100000.0, -1.0, 1.0), 0.0);
  EXPECT_EQ(scale.GetLow(), -101.0);
  EXPECT_EQ(scale.GetHigh(), -1.0);
}

TEST(SliderScale, TakesTheWidestBoundsThereAre) {
  constexpr double kMost = std::numeric_limits<double>::max();
  const SliderScale scale(*MakeNumber(0.0, -kMost, kMost, 0.01), 0.0);
  EXPECT_EQ(scale.GetLow(), -1.0);
  EXPECT_EQ(scale.GetHigh(), 1.0);
}

TEST(SliderScale, AnExponentGivesFineControlAroundZero) {
  const SliderScale scale(*MakeNumber(0.0, -10000.0, 10000.0, 0.01), 2.0);
  EXPECT_EQ(scale.GetLow(), -10.0);
  EXPECT_EQ(scale.GetHigh(), 10.0);
  EXPECT_EQ(scale.ToValue(0.5), 0.0);
  // Half the way from zero is a quarter of the value, a tenth of the way a hundredth.
  EXPECT_DOUBLE_EQ(scale.ToValue(0.75), 2.5);
  EXPECT_DOUBLE_EQ(scale.ToValue(0.25), -2.5);
  EXPECT_DOUBLE_EQ(scale.ToValue(0.55), 0.1);
  EXPECT_DOUBLE_EQ(scale.ToPosition(2.5), 0.75);
  EXPECT_DOUBLE_EQ(scale.ToPosition(-2.5), 0.25);
}

TEST(SliderScale, AnExponentBendsARangeThatStartsAtZero) {
  const SliderScale scale(*MakeNumber(0.0, 0.0, 100.0, 1.0), 2.0);
  EXPECT_EQ(scale.GetHigh(), 100.0);
  EXPECT_DOUBLE_EQ(scale.ToValue(0.5), 25.0);
  EXPECT_DOUBLE_EQ(scale.ToPosition(64.0), 0.8);
}

TEST(SliderScale, ExponentsUpToOneAndNanAreLinear) {
  for (const double exponent : {0.0, 1.0, -2.0, 0.5, std::numeric_limits<double>::quiet_NaN()}) {
    const SliderScale scale(*MakeNumber(0.0, 0.0, 1.0, 0.01), exponent);
    EXPECT_DOUBLE_EQ(scale.ToValue(0.25), 0.25) << exponent;
  }
}

TEST(SliderScale, RoundsToWhatAHandCanAimAt) {
  const SliderScale scale(*MakeNumber(0.0, -1e9, 1e9, 0.01), 0.0);
  EXPECT_DOUBLE_EQ(scale.ToValue(0.62345678), 0.247);
}

TEST(SliderScale, WidensForAValueThatLiesBeyond) {
  SliderScale scale(*MakeNumber(0.0, -10000.0, 10000.0, 0.01), 0.0);
  scale.Include(0.5);
  EXPECT_EQ(scale.GetHigh(), 1.0);
  scale.Include(3.0);
  EXPECT_EQ(scale.GetLow(), -5.0);
  EXPECT_EQ(scale.GetHigh(), 5.0);
  scale.Include(-7000.0);
  EXPECT_EQ(scale.GetLow(), -10000.0);
  EXPECT_EQ(scale.GetHigh(), 10000.0);
  // It does not narrow under the hand.
  scale.Include(0.1);
  EXPECT_EQ(scale.GetHigh(), 10000.0);
  scale.Reset();
  EXPECT_EQ(scale.GetHigh(), 1.0);
}

TEST(SliderScale, NeverLeavesTheBounds) {
  SliderScale scale(*MakeNumber(2.0, 2.0, 700.0, 1.0), 0.0);
  scale.Include(690.0);
  EXPECT_EQ(scale.GetLow(), 2.0);
  EXPECT_EQ(scale.GetHigh(), 700.0);
  EXPECT_EQ(scale.ToValue(1.0), 700.0);
  EXPECT_EQ(scale.ToPosition(1000.0), 1.0);
  EXPECT_EQ(scale.ToPosition(-5.0), 0.0);
}

}  // namespace
