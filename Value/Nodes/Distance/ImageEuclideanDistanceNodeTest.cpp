// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/Distance/ImageEuclideanDistanceNode.h"

#include <gtest/gtest.h>

#include <vector>

#include "Tests/Support/ValueTesting.h"

namespace {

using Testing::HoldsSamples;
using Testing::ImageRef;
using Testing::MakeRow;

class DistanceNode : public testing::Test {
 protected:
  Image* Evaluate(const ImageRef& image) { return Testing::Evaluate(*node_, {image.Get()}); }

  const Testing::NodeRef<ImageEuclideanDistanceNode> node_ = Testing::MakeNode<ImageEuclideanDistanceNode>();
  const ImageRef row_ = MakeRow({1.0F, 0.0F, 0.0F, 0.0F, 0.0F});
};

TEST_F(DistanceNode, MeasuresAcrossTheBordersByDefault) {
  const Image* output = Evaluate(row_);
  EXPECT_TRUE(HoldsSamples(output, {0.0F, 1.0F, 2.0F, 2.0F, 1.0F}));
  EXPECT_EQ(output->GetRefCount(), 1U);
  EXPECT_EQ(node_->GetState(), Node::State::kIdle);
}

TEST_F(DistanceNode, StaysInsideTheImageWhenNotSeamless) {
  Testing::SetFlag(*node_, "seamless", false);
  EXPECT_TRUE(HoldsSamples(Evaluate(row_), {0.0F, 1.0F, 2.0F, 3.0F, 4.0F}));
}

TEST_F(DistanceNode, NormalizesOnRequest) {
  Testing::SetFlag(*node_, "normalize", true);
  EXPECT_TRUE(HoldsSamples(Evaluate(row_), {0.0F, 0.5F, 1.0F, 1.0F, 0.5F}));
  Testing::SetFlag(*node_, "seamless", false);
  EXPECT_TRUE(HoldsSamples(Evaluate(row_), {0.0F, 0.25F, 0.5F, 0.75F, 1.0F}));
}

TEST_F(DistanceNode, SeparatesAtAHalfWhateverTheDeclaredRange) {
  const ImageRef image = MakeRow({0.5F, 0.50000006F, 0.4F, 30.0F, -7.0F, Testing::kNan});
  image->SetValueLowHigh(-100.0F, 100.0F);
  Testing::SetFlag(*node_, "seamless", false);
  EXPECT_TRUE(HoldsSamples(Evaluate(image), {1.0F, 0.0F, 1.0F, 0.0F, 1.0F, 2.0F}));
}

TEST_F(DistanceNode, ReadsPlugsWithoutAValueAsFalse) {
  auto inputs = Testing::MakeInputs(*node_, {row_.Get()});
  Testing::AttributePlug(*node_, inputs, "seamless") = PlugValue();
  Testing::AttributePlug(*node_, inputs, "normalize") = PlugValue();
  node_->Evaluate(0, inputs);
  EXPECT_TRUE(HoldsSamples(node_->GetOutputImage(0), {0.0F, 1.0F, 2.0F, 3.0F, 4.0F}));
}

TEST_F(DistanceNode, KeepsThePlaceOfTheInput) {
  for (unsigned mode = 0; mode < ColorMode::kCount; ++mode) {
    const ImageRef image = Testing::MakeMarked(mode);
    const Image* output = Evaluate(image);
    ASSERT_NE(output, nullptr);
    EXPECT_TRUE(Testing::IsValueImageInPlaceOf(output, *image));
  }
}

TEST_F(DistanceNode, HasNoOutputWithoutAnImage) {
  Evaluate(row_);
  EXPECT_EQ(Testing::Evaluate(*node_, {}), nullptr);
  EXPECT_EQ(node_->GetState(), Node::State::kIdle);
}

TEST_F(DistanceNode, CopiesItsInputWhileDisabled) {
  node_->SetEnabled(false);
  for (unsigned mode = 0; mode < ColorMode::kCount; ++mode) {
    const ImageRef image = Testing::MakeMarked(mode);
    EXPECT_TRUE(Testing::IsCopyOf(Evaluate(image), *image));
  }
}

TEST_F(DistanceNode, DropsItsOutputAtTheEventForIt) {
  const ImageRef output(Evaluate(row_));
  EXPECT_EQ(output->GetRefCount(), 2U);
  EXPECT_TRUE(Testing::DropCachedResults(*node_));
  EXPECT_EQ(node_->GetOutputImage(0), nullptr);
  EXPECT_EQ(output->GetRefCount(), 1U);
}

TEST_F(DistanceNode, HasNeitherOutputNorErrorWhereTheHostGivesNone) {
  const ImageRef before(Evaluate(row_));
  const Testing::MaxSizeScope scope(4, 4);
  EXPECT_EQ(Evaluate(row_), nullptr);
  EXPECT_EQ(before->GetRefCount(), 1U);
  EXPECT_EQ(node_->GetState(), Node::State::kIdle);
  EXPECT_EQ(node_->GetStateMessage(), "");
}

}  // namespace
