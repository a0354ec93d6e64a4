// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/Components/ImageComponentEdgesNode.h"

#include <gtest/gtest.h>

#include <vector>

#include "Tests/Support/ValueTesting.h"

namespace {

using Testing::HoldsSamples;
using Testing::ImageRef;
using Testing::MakeImage;
using Testing::MakeNode;
using Testing::MakeRow;

class ComponentEdgesNode : public testing::Test {
 protected:
  Testing::NodeRef<ImageComponentEdgesNode> node_ = MakeNode<ImageComponentEdgesNode>();
};

TEST_F(ComponentEdgesNode, MarksAnImageOfColors) {
  const ImageRef image = Testing::MakeMarked(ColorMode::kColor);
  const Image* edges = Testing::Evaluate(*node_, {image.Get()});
  // Every pixel is 1 above its left neighbour, 3 above its upper one; the tolerance is a tenth of the range of 8.
  ASSERT_TRUE(HoldsSamples(edges, std::vector<float>(6, 0.0F)));
  EXPECT_EQ(edges->GetValueLow(), 0.0F);
  EXPECT_EQ(edges->GetValueHigh(), 1.0F);
}

TEST_F(ComponentEdgesNode, WritesEdgesAsZeroUnlessNotInverted) {
  const ImageRef image = MakeRow({0, 0, 0, 1, 1, 1, 0});
  Testing::SetFlag(*node_, "seamless", false);
  EXPECT_TRUE(HoldsSamples(Testing::Evaluate(*node_, {image.Get()}), {1, 1, 0, 0, 1, 0, 0}));
  Testing::SetFlag(*node_, "invert", false);
  EXPECT_TRUE(HoldsSamples(Testing::Evaluate(*node_, {image.Get()}), {0, 0, 1, 1, 0, 1, 1}));
}

TEST_F(ComponentEdgesNode, ShowsAFlatImageAsBackground) {
  const ImageRef image = MakeImage(3, 2, ColorMode::kValue, std::vector<float>(6, 2.0F));
  image->SetValueLowHigh(2.0F, 2.0F);
  EXPECT_TRUE(HoldsSamples(Testing::Evaluate(*node_, {image.Get()}), std::vector<float>(6, 1.0F)));
}

TEST_F(ComponentEdgesNode, TakesTheThresholdInTheDeclaredRange) {
  const ImageRef image = MakeRow({0.0F, 0.0F, 4.0F, 9.0F});
  image->SetValueLowHigh(-4.0F, 12.0F);
  Testing::SetFlag(*node_, "seamless", false);
  Testing::SetFlag(*node_, "invert", false);
  Testing::SetNumber(*node_, "threshold", 0.25);  // Of 16: 4, which is not exceeded by 4.
  EXPECT_TRUE(HoldsSamples(Testing::Evaluate(*node_, {image.Get()}), {0, 0, 1, 1}));
}

TEST_F(ComponentEdgesNode, ReadsNeighborsAndSeamless) {
  const ImageRef image = MakeImage(4, 4, ColorMode::kValue,
                                   {1, 0, 0, 0,  //
                                    0, 0, 0, 0,  //
                                    0, 0, 0, 0,  //
                                    0, 0, 0, 0});
  Testing::SetFlag(*node_, "invert", false);
  const auto mark = [&](const char* neighbors, bool seamless) {
    Testing::SetChoice(*node_, "neighbors", neighbors);
    Testing::SetFlag(*node_, "seamless", seamless);
    return Testing::Evaluate(*node_, {image.Get()});
  };
  EXPECT_TRUE(HoldsSamples(mark("cross", false), {1, 1, 0, 0,  //
                                                  1, 0, 0, 0,  //
                                                  0, 0, 0, 0,  //
                                                  0, 0, 0, 0}));
  EXPECT_TRUE(HoldsSamples(mark("cross", true), {1, 1, 0, 1,  //
                                                 1, 0, 0, 0,  //
                                                 0, 0, 0, 0,  //
                                                 1, 0, 0, 0}));
  EXPECT_TRUE(HoldsSamples(mark("all", false), {1, 1, 0, 0,  //
                                                1, 1, 0, 0,  //
                                                0, 0, 0, 0,  //
                                                0, 0, 0, 0}));
  EXPECT_TRUE(HoldsSamples(mark("all", true), {1, 1, 0, 1,  //
                                               1, 1, 0, 1,  //
                                               0, 0, 0, 0,  //
                                               1, 1, 0, 1}));
}

TEST_F(ComponentEdgesNode, TakesAnUnknownWordForNeighborsAsAll) {
  const ImageRef image = MakeImage(3, 3, ColorMode::kValue, {1, 0, 0, 0, 0, 0, 0, 0, 0});
  auto inputs = Testing::MakeInputs(*node_, {image.Get()});
  Testing::AttributePlug(*node_, inputs, "seamless") = PlugValue(false);
  for (const PlugValue& value : {PlugValue(std::string("both")), PlugValue(std::string()), PlugValue()}) {
    Testing::AttributePlug(*node_, inputs, "neighbors") = value;
    node_->Evaluate(0, inputs);
    EXPECT_TRUE(HoldsSamples(node_->GetOutputImage(0), {0, 0, 1, 0, 0, 1, 1, 1, 1}));
  }
}

TEST_F(ComponentEdgesNode, ReadsPlugsWithoutValueAsZeroAndFalse) {
  const ImageRef image = MakeRow({0.0F, 0.001F, 0.001F, 0.001F, 0.0F});
  auto inputs = Testing::MakeInputs(*node_, {image.Get()});
  for (const char* name : {"threshold", "seamless", "invert"}) {
    Testing::AttributePlug(*node_, inputs, name) = PlugValue();
  }
  node_->Evaluate(0, inputs);
  EXPECT_TRUE(HoldsSamples(node_->GetOutputImage(0), {1, 1, 0, 1, 1}));
}

TEST_F(ComponentEdgesNode, SeesEveryChannelOfEveryMode) {
  for (unsigned mode = 0; mode < ColorMode::kCount; ++mode) {
    SCOPED_TRACE(mode);
    const auto channels = static_cast<std::size_t>(ColorMode::GetNumChannels(mode));
    std::vector<float> samples(4 * channels, 0.5F);
    samples.back() = 0.0F;
    const ImageRef image = MakeImage(4, 1, mode, samples);
    const Image* edges = Testing::Evaluate(*node_, {image.Get()});
    EXPECT_TRUE(HoldsSamples(edges, {0, 1, 0, 0}));
    EXPECT_EQ(edges->GetColorMode(), ColorMode::kValue);
  }
}

TEST_F(ComponentEdgesNode, TakesAnImageWithoutPixels) {
  const ImageRef image = MakeImage(0, 3, ColorMode::kValue, {});
  EXPECT_TRUE(HoldsSamples(Testing::Evaluate(*node_, {image.Get()}), {}));
}

}  // namespace
