// SPDX-License-Identifier: Apache-2.0
//
// The six analysis nodes: their frame of evaluation, and the error with which they answer where this version has no
// algorithm for them.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Tests/Support/ValueTesting.h"
#include "Value/Nodes/ImageAmbientOcclusionNode.h"
#include "Value/Nodes/ImageComponentEdgesNode.h"
#include "Value/Nodes/ImageComputeGradientNode.h"
#include "Value/Nodes/ImageConnectedComponentsNode.h"
#include "Value/Nodes/ImageEuclideanDistanceNode.h"
#include "Value/Nodes/ImageReliefNode.h"

namespace {

using Testing::HoldsSamples;
using Testing::ImageRef;
using Testing::IsCopyOf;
using Testing::MakeNode;
using Testing::MakeRow;

template <class NodeClass>
class AnalysisNode : public testing::Test {
 public:
  Testing::NodeRef<NodeClass> node_ = MakeNode<NodeClass>();
};

using AllSix = testing::Types<ImageReliefNode, ImageEuclideanDistanceNode, ImageComputeGradientNode,
                              ImageAmbientOcclusionNode, ImageConnectedComponentsNode, ImageComponentEdgesNode>;
TYPED_TEST_SUITE(AnalysisNode, AllSix);

TYPED_TEST(AnalysisNode, HasNoOutputWithoutAnImageAndSaysNothing) {
  Node& node = *this->node_;
  EXPECT_EQ(Testing::Evaluate(node, {}), nullptr);
  auto inputs = Testing::MakeInputs(node, {});
  for (const PlugValue& value : {PlugValue(static_cast<const Image*>(nullptr)), PlugValue(1.0)}) {
    inputs[0] = value;
    node.Evaluate(0, inputs);
    EXPECT_EQ(node.GetOutputImage(0), nullptr);
    EXPECT_EQ(node.GetState(), Node::State::kIdle);
    EXPECT_EQ(node.GetStateMessage(), "");
  }
}

TYPED_TEST(AnalysisNode, KeepsNoOutputWhenItsInputIsGone) {
  Node& node = *this->node_;
  node.SetEnabled(false);
  const ImageRef image = MakeRow({1.0F, 2.0F});
  ASSERT_NE(Testing::Evaluate(node, {image.Get()}), nullptr);
  EXPECT_EQ(Testing::Evaluate(node, {}), nullptr);
}

// Nodes leave this list when their algorithm arrives.
template <class NodeClass>
class NodeWithoutAlgorithm : public AnalysisNode<NodeClass> {};
TYPED_TEST_SUITE(NodeWithoutAlgorithm, AllSix);

TYPED_TEST(NodeWithoutAlgorithm, EndsInTheErrorStateWithoutOutput) {
  Node& node = *this->node_;
  const ImageRef image = MakeRow({0.0F, 1.0F});
  EXPECT_EQ(Testing::Evaluate(node, {image.Get()}), nullptr);
  EXPECT_EQ(static_cast<unsigned>(node.GetState()), 3U);
  EXPECT_NE(node.GetStateMessage().find("cannot be evaluated by this version"), std::string::npos);
  EXPECT_EQ(node.GetStateMessage().rfind(node.GetName(), 0), 0U) << "the message names the node";
}

TYPED_TEST(NodeWithoutAlgorithm, ReleasesWhatItShowedBefore) {
  Node& node = *this->node_;
  const ImageRef image = MakeRow({0.0F, 1.0F});
  node.SetEnabled(false);
  const ImageRef shown(Testing::Evaluate(node, {image.Get()}));
  node.SetEnabled(true);
  EXPECT_EQ(Testing::Evaluate(node, {image.Get()}), nullptr);
  EXPECT_EQ(shown->GetRefCount(), 1U);
}

template <class NodeClass>
class AnalysisNodeWithOneOutput : public AnalysisNode<NodeClass> {};

using FiveOfThem = testing::Types<ImageReliefNode, ImageEuclideanDistanceNode, ImageAmbientOcclusionNode,
                                  ImageConnectedComponentsNode, ImageComponentEdgesNode>;
TYPED_TEST_SUITE(AnalysisNodeWithOneOutput, FiveOfThem);

TYPED_TEST(AnalysisNodeWithOneOutput, CopiesItsInputWhileDisabled) {
  Node& node = *this->node_;
  node.SetEnabled(false);
  for (unsigned mode = 0; mode < ColorMode::kCount; ++mode) {
    SCOPED_TRACE(mode);
    const ImageRef image = Testing::MakeMarked(mode);
    const Image* output = Testing::Evaluate(node, {image.Get()});
    EXPECT_TRUE(IsCopyOf(output, *image));
    EXPECT_EQ(output->GetRefCount(), 1U);
    EXPECT_EQ(node.GetOutputImage(1), nullptr);
  }
  EXPECT_EQ(node.GetState(), Node::State::kIdle);
}

TYPED_TEST(AnalysisNodeWithOneOutput, DropsItsOutputAtTheEventForItAndInItsDestructor) {
  Node& node = *this->node_;
  node.SetEnabled(false);
  const ImageRef image = MakeRow({1.0F});
  const ImageRef first(Testing::Evaluate(node, {image.Get()}));
  EXPECT_TRUE(Testing::DropCachedResults(node));
  EXPECT_EQ(node.GetOutputImage(0), nullptr);
  EXPECT_EQ(first->GetRefCount(), 1U);
  const ImageRef second(Testing::Evaluate(node, {image.Get()}));
  this->node_.Reset();
  EXPECT_EQ(second->GetRefCount(), 1U);
}

TEST(ImageComputeGradientNode, HasTwoOutputs) {
  const auto node = MakeNode<ImageComputeGradientNode>();
  ASSERT_EQ(node->GetOutplugs().size(), 2U);
  EXPECT_EQ(node->GetOutplugName(0), "output_x");
  EXPECT_EQ(node->GetOutplugName(1), "output_y");
  EXPECT_EQ(node->GetOutplugAlias(1), "output_y");
}

TEST(ImageComputeGradientNode, ShowsZerosInTheHeaderOfItsInputWhileDisabled) {
  const auto node = MakeNode<ImageComputeGradientNode>();
  node->SetEnabled(false);
  for (unsigned mode = 0; mode < ColorMode::kCount; ++mode) {
    const ImageRef image = Testing::MakeMarked(mode);
    Testing::Evaluate(*node, {image.Get()});
    for (const unsigned output : {0U, 1U}) {
      const Image* zeros = node->GetOutputImage(output);
      ASSERT_TRUE(HoldsSamples(zeros, std::vector<float>(6, 0.0F)));
      EXPECT_EQ(zeros->GetColorMode(), 2U);
      EXPECT_EQ(zeros->GetSizeX(), 3);
      EXPECT_EQ(zeros->GetPinX(), 7);
      EXPECT_EQ(zeros->GetPinY(), -5);
      EXPECT_EQ(zeros->GetPivotX(), 0.25F);
      EXPECT_EQ(zeros->GetPivotY(), 0.75F);
      EXPECT_EQ(zeros->GetValueLow(), -2.0F);
      EXPECT_EQ(zeros->GetValueHigh(), 6.0F);
      EXPECT_EQ(zeros->GetOutsideValue(), 0.5F);
      EXPECT_EQ(zeros->GetRefCount(), 1U);
    }
    EXPECT_NE(node->GetOutputImage(0), node->GetOutputImage(1));
    EXPECT_EQ(node->GetOutputImage(2), nullptr);
  }
}

TEST(ImageComputeGradientNode, DropsBothOutputs) {
  auto node = MakeNode<ImageComputeGradientNode>();
  node->SetEnabled(false);
  const ImageRef image = MakeRow({1.0F});
  Testing::Evaluate(*node, {image.Get()});
  const ImageRef x(node->GetOutputImage(0));
  const ImageRef y(node->GetOutputImage(1));
  EXPECT_TRUE(Testing::DropCachedResults(*node));
  EXPECT_EQ(x->GetRefCount(), 1U);
  EXPECT_EQ(y->GetRefCount(), 1U);
  EXPECT_EQ(node->GetOutputImage(0), nullptr);
  EXPECT_EQ(node->GetOutputImage(1), nullptr);
}

TEST(ImageReliefNode, StoresItsAttributesInVersionOne) {
  EXPECT_EQ(MakeNode<ImageReliefNode>()->GetAttributeVersion(), 1U);
}

TEST(ImageReliefNode, KnowsTheOldNameOfTheMultiplierInVersionZeroOnly) {
  const auto node = MakeNode<ImageReliefNode>();
  EXPECT_EQ(node->TranslateAttributeName(0, "height"), "multiplier");
  for (const unsigned version : {1U, 2U, 0xFFFFFFFFU})
    EXPECT_EQ(node->TranslateAttributeName(version, "height"), "height");
  for (const char* name : {"heights", "Height", "radius", "multiplier", ""}) {
    EXPECT_EQ(node->TranslateAttributeName(0, name), name);
  }
}

}  // namespace
