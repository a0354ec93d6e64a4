// SPDX-License-Identifier: Apache-2.0
//
// The two nodes that look for components: what they have in common, then each on its own.
#include <gtest/gtest.h>

#include <cstddef>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

#include "Tests/Support/ValueTesting.h"
#include "Value/Nodes/Components/ImageComponentEdgesNode.h"
#include "Value/Nodes/Components/ImageConnectedComponentsNode.h"
#include "Value/Nodes/Components/NeighborEvaluation.h"

namespace {

using Testing::HoldsSamples;
using Testing::ImageRef;
using Testing::MakeImage;
using Testing::MakeRow;

template <class NodeClass>
class ComponentNodes : public testing::Test {
 protected:
  Testing::NodeRef<NodeClass> node_ = Testing::MakeNode<NodeClass>();
};

using NodeClasses = testing::Types<ImageComponentEdgesNode, ImageConnectedComponentsNode>;
TYPED_TEST_SUITE(ComponentNodes, NodeClasses);

TYPED_TEST(ComponentNodes, GiveAValueImageWithPinAndPivotOfTheInput) {
  const ImageRef image = Testing::MakeMarked(ColorMode::kColor);
  const Image* result = Testing::Evaluate(*this->node_, {image.Get()});
  ASSERT_TRUE(Testing::IsValueImageInPlaceOf(result, *image));
  EXPECT_EQ(result->GetRefCount(), 1U);
  EXPECT_EQ(this->node_->GetState(), Node::State::kIdle);
  EXPECT_EQ(this->node_->GetOutputImage(1), nullptr);
}

TYPED_TEST(ComponentNodes, DropTheirOutputAtTheEventForItAndAtTheNextEvaluation) {
  const ImageRef image = MakeRow({1, 0});
  const ImageRef first(Testing::Evaluate(*this->node_, {image.Get()}));
  const ImageRef second(Testing::Evaluate(*this->node_, {image.Get()}));
  EXPECT_EQ(first->GetRefCount(), 1U);
  EXPECT_EQ(second->GetRefCount(), 2U);
  EXPECT_TRUE(Testing::DropCachedResults(*this->node_));
  EXPECT_EQ(second->GetRefCount(), 1U);
  EXPECT_EQ(this->node_->GetOutputImage(0), nullptr);
  EXPECT_TRUE(Testing::DropCachedResults(*this->node_));
}

TYPED_TEST(ComponentNodes, LetTheFailureToMakeTheirOutputOutAndKeepNone) {
  const ImageRef image = MakeRow({1, 0});
  ASSERT_NE(Testing::Evaluate(*this->node_, {image.Get()}), nullptr);
  const Testing::MaxSizeScope scope(1, 1);
  EXPECT_THROW(Testing::Evaluate(*this->node_, {image.Get()}), std::length_error);
  EXPECT_EQ(this->node_->GetOutputImage(0), nullptr);
}

TYPED_TEST(ComponentNodes, SeeEveryChannelOfEveryMode) {
  const bool finds_edges = std::is_same_v<TypeParam, ImageComponentEdgesNode>;
  for (unsigned mode = 0; mode < ColorMode::kCount; ++mode) {
    SCOPED_TRACE(mode);
    const auto channels = static_cast<std::size_t>(ColorMode::GetNumChannels(mode));
    std::vector<float> samples(4 * channels, 0.5F);
    samples.back() = 0.0F;
    const ImageRef image = MakeImage(4, 1, mode, samples);
    const Image* result = Testing::Evaluate(*this->node_, {image.Get()});
    // Seamless, the first pixel and the last one are neighbours too; edges are 0.
    EXPECT_TRUE(HoldsSamples(result, finds_edges ? std::vector<float>{0, 1, 0, 0} : std::vector<float>{0, 0, 0, 1}));
    EXPECT_EQ(result->GetColorMode(), ColorMode::kValue);
  }
}

TYPED_TEST(ComponentNodes, TakeTheErrorOfTheirComputationAndKeepWhatItWrote) {
  const ImageRef image = MakeRow({0.25F, 0.5F});
  // Rows are told by their names.
  constexpr AttributeRow kThreshold = NumberRow("threshold", 0.1, 0.0, 1.0, 0.01, 3, "");
  constexpr AttributeRow kSeamless = FlagRow("seamless", true, "");
  OutputImages<1> output;
  const auto evaluate = [&](unsigned code) {
    EvaluateNeighbors(*this->node_, 0, Testing::MakeInputs(*this->node_, {image.Get()}), kThreshold, kSeamless, output,
                      [code](const PixelView& pixels, const NeighborRule&, float* samples, ScEng::Status& status) {
                        for (std::size_t i = 0; i < pixels.width; ++i) samples[i] = 2.0F * pixels.samples[i];
                        status = {code, "Something is wrong."};
                        return 3.0F;
                      });
    EXPECT_TRUE(HoldsSamples(output.Get(), {0.5F, 1.0F}));
    EXPECT_EQ(output.Get()->GetValueLow(), 0.0F);
    EXPECT_EQ(output.Get()->GetValueHigh(), 3.0F);
  };
  for (const unsigned code : {ScEng::Status::kFine, ScEng::Status::kWarning}) {
    evaluate(code);
    EXPECT_EQ(this->node_->GetState(), Node::State::kIdle);
  }
  evaluate(ScEng::Status::kError);
  EXPECT_TRUE(Testing::IsInErrorState(*this->node_, "Something is wrong."));
}

// ---- Component Edges ----

class ComponentEdgesNode : public ComponentNodes<ImageComponentEdgesNode> {};

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

TEST_F(ComponentEdgesNode, TakesAnImageWithoutPixels) {
  const ImageRef image = MakeImage(0, 3, ColorMode::kValue, {});
  EXPECT_TRUE(HoldsSamples(Testing::Evaluate(*node_, {image.Get()}), {}));
}

// ---- Connected Components ----

class ConnectedComponentsNode : public ComponentNodes<ImageConnectedComponentsNode> {};

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

TEST_F(ConnectedComponentsNode, AnswersAnImageWithoutPixelsWithARangeThatEndsAtMinusOne) {
  const ImageRef image = MakeImage(0, 0, ColorMode::kValue, {});
  const Image* labels = Testing::Evaluate(*node_, {image.Get()});
  ASSERT_TRUE(HoldsSamples(labels, {}));
  EXPECT_EQ(labels->GetValueLow(), 0.0F);
  EXPECT_EQ(labels->GetValueHigh(), -1.0F);
}

}  // namespace
