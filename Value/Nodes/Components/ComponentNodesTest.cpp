// SPDX-License-Identifier: Apache-2.0
//
// What the two nodes that look for components have in common.
#include <gtest/gtest.h>

#include <stdexcept>

#include "Tests/Support/ValueTesting.h"
#include "Value/Nodes/Components/ImageComponentEdgesNode.h"
#include "Value/Nodes/Components/ImageConnectedComponentsNode.h"

namespace {

using Testing::ImageRef;
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
  ASSERT_NE(result, nullptr);
  EXPECT_EQ(result->GetColorMode(), ColorMode::kValue);
  EXPECT_EQ(result->GetSizeX(), 3);
  EXPECT_EQ(result->GetSizeY(), 2);
  EXPECT_EQ(result->GetPinX(), 7);
  EXPECT_EQ(result->GetPinY(), -5);
  EXPECT_EQ(result->GetPivotX(), 0.25F);
  EXPECT_EQ(result->GetPivotY(), 0.75F);
  EXPECT_EQ(result->GetOutsideValue(), 0.0F);
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

}  // namespace
