// SPDX-License-Identifier: Apache-2.0
//
// The six analysis nodes: their frame of evaluation.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Tests/Support/ValueTesting.h"
#include "Value/Nodes/AmbientOcclusion/ImageAmbientOcclusionNode.h"
#include "Value/Nodes/Components/ImageComponentEdgesNode.h"
#include "Value/Nodes/Components/ImageConnectedComponentsNode.h"
#include "Value/Nodes/Distance/ImageEuclideanDistanceNode.h"
#include "Value/Nodes/Gradient/ImageComputeGradientNode.h"
#include "Value/Nodes/Relief/ImageReliefNode.h"

namespace {

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
