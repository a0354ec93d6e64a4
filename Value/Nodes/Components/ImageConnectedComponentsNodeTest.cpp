// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/Components/ImageConnectedComponentsNode.h"

#include <gtest/gtest.h>

#include <vector>

#include "Tests/Support/ValueTesting.h"

namespace {

using Testing::HoldsSamples;
using Testing::ImageRef;
using Testing::MakeImage;
using Testing::MakeNode;
using Testing::MakeRow;

class ConnectedComponentsNode : public testing::Test {
 protected:
  Testing::NodeRef<ImageConnectedComponentsNode> node_ = MakeNode<ImageConnectedComponentsNode>();
};

TEST_F(ConnectedComponentsNode, LabelsAnImageOfColors) {
  const ImageRef image = Testing::MakeMarked(ColorMode::kColor);
  const Image* labels = Testing::Evaluate(*node_, {image.Get()});
  // Every pixel is 1 above its left neighbour, 3 above its upper one; the tolerance is a tenth of the range of 8.
  ASSERT_TRUE(HoldsSamples(labels, {0, 1, 2, 3, 4, 5}));
  EXPECT_EQ(labels->GetValueLow(), 0.0F);
  EXPECT_EQ(labels->GetValueHigh(), 5.0F);
}

TEST_F(ConnectedComponentsNode, TakesTheThresholdInTheDeclaredRange) {
  const ImageRef image = MakeRow({0.0F, 3.0F, 8.0F, 12.0F});
  image->SetValueLowHigh(-4.0F, 12.0F);
  Testing::SetFlag(*node_, "seamless", false);
  Testing::SetNumber(*node_, "threshold", 0.25);  // Of 16: 4.
  EXPECT_TRUE(HoldsSamples(Testing::Evaluate(*node_, {image.Get()}), {0, 0, 1, 2}));
  Testing::SetNumber(*node_, "threshold", 0.375);  // Of 16: 6.
  const Image* labels = Testing::Evaluate(*node_, {image.Get()});
  EXPECT_TRUE(HoldsSamples(labels, {0, 0, 0, 0}));
  EXPECT_EQ(labels->GetValueHigh(), 0.0F);
}

TEST_F(ConnectedComponentsNode, MakesEachPixelOfAFlatRangeItsOwnComponent) {
  const ImageRef image = MakeImage(2, 2, ColorMode::kValue, {1, 1, 1, 1});
  image->SetValueLowHigh(1.0F, 1.0F);
  Testing::SetNumber(*node_, "threshold", 1.0);
  const Image* labels = Testing::Evaluate(*node_, {image.Get()});
  EXPECT_TRUE(HoldsSamples(labels, {0, 1, 2, 3}));
  EXPECT_EQ(labels->GetValueHigh(), 3.0F);
}

TEST_F(ConnectedComponentsNode, ReadsNeighborsAndSeamless) {
  const ImageRef image = MakeImage(3, 3, ColorMode::kValue,
                                   {1, 0, 0,  //
                                    0, 1, 0,  //
                                    0, 0, 0});
  const auto label = [&](const char* neighbors, bool seamless) {
    Testing::SetChoice(*node_, "neighbors", neighbors);
    Testing::SetFlag(*node_, "seamless", seamless);
    return Testing::Evaluate(*node_, {image.Get()});
  };
  EXPECT_TRUE(HoldsSamples(label("all", false), {0, 1, 1, 1, 0, 1, 1, 1, 1}));
  EXPECT_TRUE(HoldsSamples(label("cross", false), {0, 1, 1, 1, 2, 1, 1, 1, 1}));
  const ImageRef row = MakeRow({1, 0, 1});
  Testing::SetFlag(*node_, "seamless", true);
  EXPECT_TRUE(HoldsSamples(Testing::Evaluate(*node_, {row.Get()}), {0, 1, 0}));
  Testing::SetFlag(*node_, "seamless", false);
  EXPECT_TRUE(HoldsSamples(Testing::Evaluate(*node_, {row.Get()}), {0, 1, 2}));
}

TEST_F(ConnectedComponentsNode, TakesAnUnknownWordForNeighborsAsAll) {
  const ImageRef image = MakeImage(2, 2, ColorMode::kValue, {1, 0, 0, 1});
  auto inputs = Testing::MakeInputs(*node_, {image.Get()});
  for (const PlugValue& value : {PlugValue(std::string("both")), PlugValue(std::string()), PlugValue()}) {
    Testing::AttributePlug(*node_, inputs, "neighbors") = value;
    node_->Evaluate(0, inputs);
    EXPECT_TRUE(HoldsSamples(node_->GetOutputImage(0), {0, 1, 1, 0}));
  }
}

TEST_F(ConnectedComponentsNode, ReadsPlugsWithoutValueAsZeroAndFalse) {
  const ImageRef image = MakeRow({1, 1, 1});
  auto inputs = Testing::MakeInputs(*node_, {image.Get()});
  Testing::AttributePlug(*node_, inputs, "threshold") = PlugValue();
  node_->Evaluate(0, inputs);
  EXPECT_TRUE(HoldsSamples(node_->GetOutputImage(0), {0, 1, 2}));
  const ImageRef ends = MakeRow({1, 0, 1});
  inputs = Testing::MakeInputs(*node_, {ends.Get()});
  Testing::AttributePlug(*node_, inputs, "seamless") = PlugValue();
  node_->Evaluate(0, inputs);
  EXPECT_TRUE(HoldsSamples(node_->GetOutputImage(0), {0, 1, 2}));
}

TEST_F(ConnectedComponentsNode, TakesADeliveredThresholdBeyondItsBounds) {
  const ImageRef image = MakeRow({0.0F, 1.5F, 1.5F, 4.0F});
  auto inputs = Testing::MakeInputs(*node_, {image.Get()});
  Testing::AttributePlug(*node_, inputs, "threshold") = PlugValue(2.0);
  node_->Evaluate(0, inputs);
  EXPECT_TRUE(HoldsSamples(node_->GetOutputImage(0), {0, 0, 0, 1}));
  Testing::AttributePlug(*node_, inputs, "threshold") = PlugValue(-2.0);
  node_->Evaluate(0, inputs);
  EXPECT_TRUE(HoldsSamples(node_->GetOutputImage(0), {0, 1, 2, 3}));
}

TEST_F(ConnectedComponentsNode, SeesEveryChannelOfEveryMode) {
  for (unsigned mode = 0; mode < ColorMode::kCount; ++mode) {
    SCOPED_TRACE(mode);
    const auto channels = static_cast<std::size_t>(ColorMode::GetNumChannels(mode));
    std::vector<float> samples(3 * channels, 0.5F);
    samples.back() = 0.0F;
    const ImageRef image = MakeImage(3, 1, mode, samples);
    const Image* labels = Testing::Evaluate(*node_, {image.Get()});
    EXPECT_TRUE(HoldsSamples(labels, {0, 0, 1}));
    EXPECT_EQ(labels->GetColorMode(), ColorMode::kValue);
  }
}

TEST_F(ConnectedComponentsNode, AnswersAnImageWithoutPixelsWithARangeThatEndsAtMinusOne) {
  const ImageRef image = MakeImage(0, 0, ColorMode::kValue, {});
  const Image* labels = Testing::Evaluate(*node_, {image.Get()});
  ASSERT_TRUE(HoldsSamples(labels, {}));
  EXPECT_EQ(labels->GetValueLow(), 0.0F);
  EXPECT_EQ(labels->GetValueHigh(), -1.0F);
}

}  // namespace
