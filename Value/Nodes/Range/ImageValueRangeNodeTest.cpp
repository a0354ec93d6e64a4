// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/Range/ImageValueRangeNode.h"

#include <gtest/gtest.h>

#include <string>
#include <typeinfo>
#include <vector>

#include "Tests/Support/ValueTesting.h"
#include "Value/Operations/ThresholdValueOperation.h"

namespace {

using Testing::HoldsSamples;
using Testing::ImageRef;
using Testing::kNan;
using Testing::MakeRow;

class RangeNode : public testing::Test {
 protected:
  void Set(double center, double size, double falloff) {
    Testing::SetNumber(*node_, "center", center);
    Testing::SetNumber(*node_, "size", size);
    Testing::SetNumber(*node_, "falloff", falloff);
  }
  Image* Evaluate(const ImageRef& image) { return Testing::Evaluate(*node_, {image.Get()}); }

  const Testing::NodeRef<ImageValueRangeNode> node_ = Testing::MakeNode<ImageValueRangeNode>();
};

void ExpectSameFields(const ThresholdValueOperation& made, const ThresholdValueOperation& expected) {
  EXPECT_SAME(made.min, expected.min);
  EXPECT_SAME(made.max, expected.max);
  EXPECT_SAME(made.a, expected.a);
  EXPECT_SAME(made.b, expected.b);
  EXPECT_SAME(made.falloff, expected.falloff);
  EXPECT_SAME(made.outer, expected.outer);
  EXPECT_SAME(made.inverse_falloff, expected.inverse_falloff);
  EXPECT_EQ(made.profile, expected.profile);
}

TEST_F(RangeNode, MarksNothingByDefault) {
  EXPECT_TRUE(HoldsSamples(Evaluate(MakeRow({0.0F, -0.0F, 1.0F, kNan})), {0.0F, 0.0F, 0.0F, 0.0F}));
}

TEST_F(RangeNode, BuildsItsOperationFromItsPlugs) {
  Set(0.5, 0.25, 0.5);
  Testing::SetChoice(*node_, "profile", "arc_out");
  const ValueOperationPtr made(node_->CreateValueOperation(Testing::MakeInputs(*node_, {})));
  const ValueOperation& operation = *made;
  ASSERT_EQ(typeid(operation), typeid(ThresholdValueOperation));
  const auto& threshold = static_cast<const ThresholdValueOperation&>(operation);
  ExpectSameFields(threshold, {0.5F, 0.25F, 0.5F, ThresholdProfile::ArcOut});
}

TEST_F(RangeNode, ReadsPlugsWithoutAValueAsZeroAndLinear) {
  Set(0.5, 0.25, 0.5);
  Testing::SetChoice(*node_, "profile", "smooth");
  const std::vector<PlugValue> nothing(5);
  const ValueOperationPtr made(node_->CreateValueOperation(nothing));
  const auto& threshold = static_cast<const ThresholdValueOperation&>(*made);
  ExpectSameFields(threshold, {0.0F, 0.0F, 0.0F, ThresholdProfile::Linear});
}

TEST_F(RangeNode, FallsOffLinearly) {
  Set(0.5, 0.1, 0.2);
  const Image* output = Evaluate(MakeRow({0.5F, 0.7F, 0.9F}));
  ASSERT_NE(output, nullptr);
  EXPECT_EQ(output->GetConstArray()[0], 1.0F);
  EXPECT_NEAR(output->GetConstArray()[1], 0.5, 1e-6);
  EXPECT_EQ(output->GetConstArray()[2], 0.0F);
}

TEST_F(RangeNode, FallsOffByEachProfile) {
  Set(0.5, 0.25, 0.5);
  const ImageRef image = MakeRow({0.75F, 0.25F, 1.125F, 1.25F});
  // Three quarters of the way down: a quarter of the profile.
  Testing::SetChoice(*node_, "profile", "linear");
  EXPECT_TRUE(HoldsSamples(Evaluate(image), {1.0F, 1.0F, 0.25F, 0.0F}));
  Testing::SetChoice(*node_, "profile", "smooth");
  EXPECT_TRUE(HoldsSamples(Evaluate(image), {1.0F, 1.0F, 0.103515625F, 0.0F}));
  Testing::SetChoice(*node_, "profile", "arc_out");
  EXPECT_TRUE(HoldsSamples(Evaluate(image), {1.0F, 1.0F, 0.661437827766147713F, 0.0F}));
  Testing::SetChoice(*node_, "profile", "arc_in");
  // One minus the square root of 15 / 16.
  EXPECT_TRUE(HoldsSamples(Evaluate(image), {1.0F, 1.0F, 1.0F - 0.968245836551854221F, 0.0F}));
}

TEST_F(RangeNode, TakesAnUnknownProfileForLinear) {
  Set(0.5, 0.25, 0.5);
  const ImageRef image = MakeRow({1.125F});
  auto inputs = Testing::MakeInputs(*node_, {image.Get()});
  // Clamp has this one, Range does not.
  Testing::AttributePlug(*node_, inputs, "profile") = PlugValue(std::string("perlin"));
  node_->Evaluate(0, inputs);
  EXPECT_TRUE(HoldsSamples(node_->GetOutputImage(0), {0.25F}));
}

}  // namespace
