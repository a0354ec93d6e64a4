// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/Clamp/ImageValueClampNode.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Tests/Support/ValueTesting.h"

namespace {

using Testing::HoldsSamples;
using Testing::ImageRef;
using Testing::kLargest;
using Testing::kNan;
using Testing::MakeRow;

class ClampNode : public testing::Test {
 protected:
  void SetLimits(double low, double high) {
    Testing::SetNumber(*node_, "low", low);
    Testing::SetNumber(*node_, "high", high);
  }
  Image* Evaluate(const ImageRef& image) { return Testing::Evaluate(*node_, {image.Get()}); }

  const Testing::NodeRef<ImageValueClampNode> node_ = Testing::MakeNode<ImageValueClampNode>();
};

TEST_F(ClampNode, MapsEverythingToZeroUntilLimitsAreSet) {
  EXPECT_TRUE(HoldsSamples(Evaluate(MakeRow({-1.0F, 0.5F, 7.0F})), {0.0F, 0.0F, 0.0F}));
}

TEST_F(ClampNode, LimitsToBothSides) {
  SetLimits(0.0, 1.0);
  const Image* output = Evaluate(MakeRow({-0.5F, 0.25F, 2.0F}));
  EXPECT_TRUE(HoldsSamples(output, {0.0F, 0.25F, 1.0F}));
  EXPECT_EQ(output->GetValueLow(), 0.0F);
  EXPECT_EQ(output->GetValueHigh(), 1.0F);
  EXPECT_EQ(output->GetRefCount(), 1U);
}

TEST_F(ClampNode, ShapesByItsProfile) {
  SetLimits(0.0, 1.0);
  const ImageRef image = MakeRow({0.25F, 0.5F});
  Testing::SetChoice(*node_, "profile", "smooth");
  EXPECT_TRUE(HoldsSamples(Evaluate(image), {0.15625F, 0.5F}));
  Testing::SetChoice(*node_, "profile", "perlin");
  EXPECT_TRUE(HoldsSamples(Evaluate(image), {0.103515625F, 0.5F}));
  Testing::SetChoice(*node_, "profile", "arc_out");
  EXPECT_NEAR(Evaluate(image)->GetConstArray()[1], 0.8660, 5e-5);
  Testing::SetChoice(*node_, "profile", "arc_in");
  EXPECT_NEAR(Evaluate(image)->GetConstArray()[1], 0.1340, 5e-5);
}

TEST_F(ClampNode, LimitsFromBelowOnly) {
  SetLimits(0.2, -5.0);
  Testing::SetChoice(*node_, "clamp", "low");
  const Image* output = Evaluate(MakeRow({0.0F, 0.1F, 0.3F, 0.8F}));
  EXPECT_TRUE(HoldsSamples(output, {0.2F, 0.2F, 0.3F, 0.8F}));
  EXPECT_EQ(output->GetValueLow(), 0.2F);
  EXPECT_EQ(output->GetValueHigh(), 0.8F);
}

TEST_F(ClampNode, LimitsFromAboveOnly) {
  SetLimits(5.0, 0.5);
  Testing::SetChoice(*node_, "clamp", "high");
  const Image* output = Evaluate(MakeRow({-3.0F, 0.1F, 0.5F, 0.8F}));
  EXPECT_TRUE(HoldsSamples(output, {-3.0F, 0.1F, 0.5F, 0.5F}));
  EXPECT_EQ(output->GetValueLow(), -3.0F);
  EXPECT_EQ(output->GetValueHigh(), 0.5F);
}

TEST_F(ClampNode, PassesOverNanWhenItMeasures) {
  SetLimits(0.2, 0.0);
  Testing::SetChoice(*node_, "clamp", "low");
  const Image* output = Evaluate(MakeRow({kNan, 0.6F, kNan}));
  EXPECT_TRUE(HoldsSamples(output, {0.2F, 0.6F, 0.2F}));
}

TEST_F(ClampNode, DeclaresTheMeasuredRangeOfAnImageWithoutPixelsToo) {
  SetLimits(0.25, 0.5);
  const ImageRef empty(new Image(4, 0, ColorMode::kValue, nullptr));
  Testing::SetChoice(*node_, "clamp", "low");
  const Image* output = Evaluate(empty);
  ASSERT_NE(output, nullptr);
  EXPECT_EQ(output->GetValueLow(), 0.25F);
  EXPECT_EQ(output->GetValueHigh(), -kLargest);
  Testing::SetChoice(*node_, "clamp", "high");
  output = Evaluate(empty);
  EXPECT_EQ(output->GetValueLow(), kLargest);
  EXPECT_EQ(output->GetValueHigh(), 0.5F);
}

TEST_F(ClampNode, GivesTheUpperLimitWhenTheLimitsAreSwapped) {
  SetLimits(2.0, 1.0);
  EXPECT_TRUE(HoldsSamples(Evaluate(MakeRow({0.0F, 1.5F, 9.0F, kNan})), {1.0F, 1.0F, 1.0F, 1.0F}));
}

TEST_F(ClampNode, ReadsPlugsWithoutAValueAsZeroAndUnknownWords) {
  SetLimits(0.25, 0.5);
  const ImageRef image = MakeRow({-1.0F, 0.75F, 9.0F});
  auto inputs = Testing::MakeInputs(*node_, {image.Get()});
  Testing::AttributePlug(*node_, inputs, "low") = PlugValue();
  Testing::AttributePlug(*node_, inputs, "clamp") = PlugValue();
  Testing::AttributePlug(*node_, inputs, "profile") = PlugValue(std::string("wavy"));
  node_->Evaluate(0, inputs);
  // No side is opened, and the profile is linear.
  EXPECT_TRUE(HoldsSamples(node_->GetOutputImage(0), {0.0F, 0.5F, 0.5F}));
  EXPECT_EQ(node_->GetState(), Node::State::kIdle);
}

TEST_F(ClampNode, ReadsTheFirstChannelAndKeepsThePlace) {
  SetLimits(0.0, 1.0);
  const ImageRef image = Testing::MakeImage(2, 1, ColorMode::kColor, {0.1F, 9.0F, 9.0F, 9.0F, 6.0F, 0.5F, 0.5F, 0.5F});
  image->SetPin(3, 4);
  image->SetPivot(0.5F, 0.25F);
  image->SetOutsideValue(7.0F);
  const Image* output = Evaluate(image);
  ASSERT_TRUE(HoldsSamples(output, {0.1F, 1.0F}));
  EXPECT_TRUE(Testing::IsValueImageInPlaceOf(output, *image));
}

TEST_F(ClampNode, KeepsItsLastOutputWhileDisabled) {
  SetLimits(0.0, 1.0);
  const Image* output = Evaluate(MakeRow({2.0F}));
  node_->SetEnabled(false);
  EXPECT_EQ(Evaluate(MakeRow({0.5F})), output);
  EXPECT_EQ(Testing::Evaluate(*node_, {}), output);
  EXPECT_TRUE(HoldsSamples(output, {1.0F}));
}

TEST_F(ClampNode, ProducesNothingWhileDisabledFromTheStart) {
  node_->SetEnabled(false);
  EXPECT_EQ(Evaluate(MakeRow({0.5F})), nullptr);
  EXPECT_EQ(node_->GetState(), Node::State::kIdle);
}

TEST_F(ClampNode, KeepsItsLastOutputWithoutAnInput) {
  const Image* output = Evaluate(MakeRow({2.0F}));
  EXPECT_EQ(Testing::Evaluate(*node_, {}), output);
}

TEST_F(ClampNode, DropsItsOutputAtTheEventForItAlsoWhileDisabled) {
  Evaluate(MakeRow({2.0F}));
  node_->SetEnabled(false);
  EXPECT_TRUE(Testing::DropCachedResults(*node_));
  EXPECT_EQ(node_->GetOutputImage(0), nullptr);
}

TEST_F(ClampNode, TranslatesItsOldNames) {
  for (const unsigned version : {0U, 3U}) {
    EXPECT_EQ(node_->TranslateAttributeName(version, "min"), "low");
    EXPECT_EQ(node_->TranslateAttributeName(version, "max"), "high");
    for (const char* name : {"low", "high", "clamp", "profile", "saturate", "Max", "maximum", ""}) {
      EXPECT_EQ(node_->TranslateAttributeName(version, name), name);
    }
  }
  EXPECT_EQ(node_->GetAttribute(std::string("max")), node_->GetAttribute(std::size_t{2}));
}

}  // namespace
