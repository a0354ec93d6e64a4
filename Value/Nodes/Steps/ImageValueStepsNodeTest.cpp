// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/Steps/ImageValueStepsNode.h"

#include <gtest/gtest.h>

#include <vector>

#include "Tests/Support/ValueTesting.h"

namespace {

using Testing::HoldsSamples;
using Testing::ImageRef;
using Testing::MakeRow;

class StepsNode : public testing::Test {
 protected:
  Image* Evaluate(const ImageRef& image) { return Testing::Evaluate(*node_, {image.Get()}); }
  /// With a number that the plug delivers, whatever the attribute's bounds.
  Image* EvaluateWith(const ImageRef& image, const PlugValue& steps) {
    auto inputs = Testing::MakeInputs(*node_, {image.Get()});
    Testing::AttributePlug(*node_, inputs, "steps") = steps;
    node_->Evaluate(0, inputs);
    return node_->GetOutputImage(0);
  }

  const Testing::NodeRef<ImageValueStepsNode> node_ = Testing::MakeNode<ImageValueStepsNode>();
};

TEST_F(StepsNode, SplitsTheDeclaredRangeInTwoByDefault) {
  EXPECT_TRUE(HoldsSamples(Evaluate(MakeRow({0.0F, 0.4999F, 0.5F, 0.9999F, 1.0F})), {0.0F, 0.0F, 1.0F, 1.0F, 2.0F}));
}

TEST_F(StepsNode, MakesAsManyLevelsAsAsked) {
  Testing::SetNumber(*node_, "steps", 5.0);
  EXPECT_TRUE(HoldsSamples(Evaluate(MakeRow({0.3F, 0.999F, 1.0F})), {0.25F, 1.0F, 1.25F}));
}

TEST_F(StepsNode, SpansTheDeclaredNotTheMeasuredRange) {
  const ImageRef image = MakeRow({0.0F, 0.9F, 1.0F, 3.0F});
  image->SetValueLowHigh(0.0F, 2.0F);
  const Image* output = Evaluate(image);
  EXPECT_TRUE(HoldsSamples(output, {0.0F, 0.0F, 2.0F, 6.0F}));
  EXPECT_EQ(output->GetValueLow(), 0.0F);
  EXPECT_EQ(output->GetValueHigh(), 2.0F);
}

TEST_F(StepsNode, TruncatesTheNumberAndNeverGoesBelowTwo) {
  const ImageRef image = MakeRow({0.4F, 0.6F});
  for (const PlugValue& steps : {PlugValue(2.9), PlugValue(), PlugValue(0.0), PlugValue(-7.0)}) {
    EXPECT_TRUE(HoldsSamples(EvaluateWith(image, steps), {0.0F, 1.0F}));
  }
  EXPECT_TRUE(HoldsSamples(EvaluateWith(image, PlugValue(3.99)), {0.5F, 0.5F}));
}

TEST_F(StepsNode, ReadsTheFirstChannelAndKeepsThePlace) {
  const ImageRef image = Testing::MakeImage(2, 1, ColorMode::kColor, {0.1F, 0.9F, 0.9F, 0.9F, 0.6F, 0.0F, 0.0F, 0.0F});
  image->SetPin(3, 4);
  image->SetPivot(0.5F, 0.25F);
  image->SetOutsideValue(7.0F);
  const Image* output = Evaluate(image);
  ASSERT_TRUE(HoldsSamples(output, {0.0F, 1.0F}));
  EXPECT_TRUE(Testing::IsValueImageInPlaceOf(output, *image));
  EXPECT_EQ(output->GetRefCount(), 1U);
}

TEST_F(StepsNode, KeepsItsLastOutputWhileDisabled) {
  const ImageRef image = MakeRow({0.6F});
  const Image* output = Evaluate(image);
  node_->SetEnabled(false);
  EXPECT_EQ(Evaluate(MakeRow({0.1F})), output);
  EXPECT_EQ(Testing::Evaluate(*node_, {}), output);
  EXPECT_TRUE(HoldsSamples(node_->GetOutputImage(0), {1.0F}));
  EXPECT_EQ(output->GetRefCount(), 1U);
}

TEST_F(StepsNode, ProducesNothingWhileDisabledFromTheStart) {
  node_->SetEnabled(false);
  EXPECT_EQ(Evaluate(MakeRow({0.1F})), nullptr);
  EXPECT_EQ(node_->GetState(), Node::State::kIdle);
}

TEST_F(StepsNode, KeepsItsLastOutputWithoutAnInput) {
  const Image* output = Evaluate(MakeRow({0.6F}));
  EXPECT_EQ(Testing::Evaluate(*node_, {}), output);
}

TEST_F(StepsNode, ReplacesItsOutput) {
  const ImageRef old(Evaluate(MakeRow({0.6F})));
  EXPECT_TRUE(HoldsSamples(Evaluate(MakeRow({0.1F})), {0.0F}));
  EXPECT_EQ(old->GetRefCount(), 1U);
}

TEST_F(StepsNode, ShowsItsOutputAtEveryIndex) {
  Image* output = Evaluate(MakeRow({0.6F}));
  for (const unsigned index : {1U, 2U, 1000U, 0xFFFFFFFFU}) EXPECT_EQ(node_->GetOutputImage(index), output);
}

TEST_F(StepsNode, DropsItsOutputAtTheEventForIt) {
  Evaluate(MakeRow({0.6F}));
  EXPECT_TRUE(Testing::DropCachedResults(*node_));
  EXPECT_EQ(node_->GetOutputImage(0), nullptr);
}

TEST_F(StepsNode, SetsNoStateForAnEmptyRange) {
  const ImageRef image = MakeRow({0.5F, 0.75F});
  image->SetValueLowHigh(0.5F, 0.5F);
  const Image* output = Evaluate(image);
  ASSERT_NE(output, nullptr);
  for (const float value : Testing::GetSamples(*output)) EXPECT_FALSE(std::isfinite(value));
  EXPECT_EQ(node_->GetState(), Node::State::kIdle);
}

}  // namespace
