// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/Gradient/ImageComputeGradientNode.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <new>
#include <vector>

#include "Tests/Support/ValueTesting.h"
#include "Tests/Support/WatchedMemory.h"

namespace {

using Testing::HoldsSamples;
using Testing::ImageRef;
using Testing::MakeImage;
using Testing::MakeNode;
using Testing::MakeRow;

// 3 x 2 values, from which both derivatives are easily worked out.
ImageRef MakeSix() { return MakeImage(3, 2, ColorMode::kValue, {1.0F, 2.0F, 4.0F, 0.0F, 8.0F, 6.0F}); }

TEST(GradientNode, WrapsAroundByDefault) {
  const auto node = MakeNode<ImageComputeGradientNode>();
  Testing::Evaluate(*node, {MakeSix().Get()});
  EXPECT_TRUE(HoldsSamples(node->GetOutputImage(0), {-1.0F, 1.5F, -0.5F, 1.0F, 3.0F, -4.0F}));
  EXPECT_TRUE(HoldsSamples(node->GetOutputImage(1), {0.0F, 0.0F, 0.0F, 0.0F, 0.0F, 0.0F}));
  EXPECT_EQ(node->GetState(), Node::State::kIdle);
}

TEST(GradientNode, EndsAtTheBorderWithoutSeamless) {
  const auto node = MakeNode<ImageComputeGradientNode>();
  Testing::SetFlag(*node, "seamless", false);
  Testing::Evaluate(*node, {MakeSix().Get()});
  EXPECT_TRUE(HoldsSamples(node->GetOutputImage(0), {1.0F, 1.5F, 2.0F, 8.0F, 3.0F, -2.0F}));
  EXPECT_TRUE(HoldsSamples(node->GetOutputImage(1), {-1.0F, 6.0F, 2.0F, -1.0F, 6.0F, 2.0F}));
}

TEST(GradientNode, IsNotSeamlessWhereThePlugCarriesNothing) {
  const auto node = MakeNode<ImageComputeGradientNode>();
  const ImageRef image = MakeSix();
  auto inputs = Testing::MakeInputs(*node, {image.Get()});
  Testing::AttributePlug(*node, inputs, "seamless") = PlugValue();
  node->Evaluate(0, inputs);
  EXPECT_TRUE(HoldsSamples(node->GetOutputImage(0), {1.0F, 1.5F, 2.0F, 8.0F, 3.0F, -2.0F}));
}

TEST(GradientNode, ReducesOtherModesToTheirValueFirst) {
  const auto node = MakeNode<ImageComputeGradientNode>();
  Testing::SetFlag(*node, "seamless", false);
  const struct {
    unsigned mode;
    std::vector<float> samples;
  } images[] = {
      // The value of a colour is a third of its sum times its opacity: 1.5, 3 and 0.
      {ColorMode::kColor, {2.0F, 4.0F, 3.0F, 0.5F, 3.0F, 3.0F, 3.0F, 1.0F, 9.0F, 9.0F, 9.0F, 0.0F}},
      {ColorMode::kSigned, {9.0F, 9.0F, 1.5F, 9.0F, 9.0F, 9.0F, 3.0F, 9.0F, 9.0F, 9.0F, 0.0F, 9.0F}},
      {ColorMode::kPair, {1.5F, 9.0F, 3.0F, 9.0F, 0.0F, 9.0F}},
  };
  for (const auto& [mode, samples] : images) {
    const ImageRef image = MakeImage(3, 1, mode, samples);
    Testing::Evaluate(*node, {image.Get()});
    EXPECT_TRUE(HoldsSamples(node->GetOutputImage(0), {1.5F, -0.75F, -3.0F})) << mode;
    EXPECT_TRUE(HoldsSamples(node->GetOutputImage(1), {0.0F, 0.0F, 0.0F})) << mode;
    EXPECT_EQ(node->GetOutputImage(0)->GetColorMode(), ColorMode::kValue);
    EXPECT_EQ(image->GetRefCount(), 1U);
  }
}

TEST(GradientNode, PlacesBothOutputsWhereTheInputIsAndDeclaresTheirRanges) {
  const auto node = MakeNode<ImageComputeGradientNode>();
  for (unsigned mode = 0; mode < ColorMode::kCount; ++mode) {
    const ImageRef image = Testing::MakeMarked(mode);
    Testing::Evaluate(*node, {image.Get()});
    for (const unsigned output : {0U, 1U}) {
      const Image* made = node->GetOutputImage(output);
      ASSERT_NE(made, nullptr);
      EXPECT_EQ(made->GetBox(), image->GetBox());
      EXPECT_EQ(made->GetPinX(), 7);
      EXPECT_EQ(made->GetPivotY(), 0.75F);
      EXPECT_EQ(made->GetOutsideValue(), 0.5F);
      EXPECT_EQ(made->GetRefCount(), 1U);
    }
  }
  const ImageRef six = MakeSix();
  Testing::Evaluate(*node, {six.Get()});
  EXPECT_EQ(node->GetOutputImage(0)->GetValueLow(), -4.0F);
  EXPECT_EQ(node->GetOutputImage(0)->GetValueHigh(), 3.0F);
  EXPECT_EQ(node->GetOutputImage(1)->GetValueLow(), 0.0F);
  EXPECT_EQ(node->GetOutputImage(1)->GetValueHigh(), 0.0F);
}

TEST(GradientNode, HasNoThirdOutput) {
  const auto node = MakeNode<ImageComputeGradientNode>();
  Testing::Evaluate(*node, {MakeSix().Get()});
  EXPECT_NE(node->GetOutputImage(0), node->GetOutputImage(1));
  EXPECT_EQ(node->GetOutputImage(2), nullptr);
  EXPECT_EQ(node->GetOutputImage(0xFFFFFFFFU), nullptr);
}

TEST(GradientNode, DropsBothOutputsAtTheEventForItAndUnderstandsEveryOther) {
  const auto node = MakeNode<ImageComputeGradientNode>();
  Testing::Evaluate(*node, {MakeSix().Get()});
  const ImageRef x(node->GetOutputImage(0));
  const ImageRef y(node->GetOutputImage(1));
  NodeEvent other;
  other.kind = 10;
  EXPECT_TRUE(node->OnProcessEvent(other));
  EXPECT_EQ(node->GetOutputImage(0), x.Get());
  EXPECT_EQ(node->GetOutputImage(1), y.Get());
  EXPECT_TRUE(Testing::DropCachedResults(*node));
  EXPECT_EQ(x->GetRefCount(), 1U);
  EXPECT_EQ(y->GetRefCount(), 1U);
  EXPECT_EQ(node->GetOutputImage(0), nullptr);
  EXPECT_EQ(node->GetOutputImage(1), nullptr);
}

TEST(GradientNode, ReleasesBothOutputsWhenItsInputIsGoneAndInItsDestructor) {
  auto node = MakeNode<ImageComputeGradientNode>();
  const ImageRef image = MakeSix();
  Testing::Evaluate(*node, {image.Get()});
  const ImageRef first(node->GetOutputImage(1));
  EXPECT_EQ(Testing::Evaluate(*node, {}), nullptr);
  EXPECT_EQ(node->GetOutputImage(1), nullptr);
  EXPECT_EQ(first->GetRefCount(), 1U);
  Testing::Evaluate(*node, {image.Get()});
  const ImageRef x(node->GetOutputImage(0));
  const ImageRef y(node->GetOutputImage(1));
  node.Reset();
  EXPECT_EQ(x->GetRefCount(), 1U);
  EXPECT_EQ(y->GetRefCount(), 1U);
}

TEST(GradientNode, ShowsNeitherOutputWhereTheSecondCannotBeMade) {
  const ImageRef image = MakeImage(37, 11, ColorMode::kValue, std::vector<float>(37 * 11, 0.5F));
  const std::size_t bytes = image->GetNumSamples() * sizeof(float);
  for (const bool is_enabled : {true, false}) {
    const auto node = MakeNode<ImageComputeGradientNode>();
    node->SetEnabled(is_enabled);
    const auto inputs = Testing::MakeInputs(*node, {image.Get()});
    {
      const Testing::FailingAllocations failing(bytes, 1);
      EXPECT_THROW(node->Evaluate(0, inputs), std::bad_alloc);
    }
    EXPECT_EQ(node->GetOutputImage(0), nullptr);
    EXPECT_EQ(node->GetOutputImage(1), nullptr);
    node->Evaluate(0, inputs);
    EXPECT_NE(node->GetOutputImage(0), nullptr);
    EXPECT_NE(node->GetOutputImage(1), nullptr);
  }
}

TEST(GradientNode, HasTwoOutputs) {
  const auto node = MakeNode<ImageComputeGradientNode>();
  ASSERT_EQ(node->GetOutplugs().size(), 2U);
  EXPECT_EQ(node->GetOutplugName(0), "output_x");
  EXPECT_EQ(node->GetOutplugName(1), "output_y");
  EXPECT_EQ(node->GetOutplugAlias(1), "output_y");
}

TEST(GradientNode, ShowsZerosInTheHeaderOfItsInputWhileDisabled) {
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

TEST(GradientNode, DropsBothOutputsWhileDisabled) {
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

}  // namespace
