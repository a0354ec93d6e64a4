// SPDX-License-Identifier: Apache-2.0
//
// The seven nodes that combine images with each other, or one image with a constant.
#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <typeinfo>
#include <vector>

#include "Tests/Support/ValueTesting.h"
#include "Value/Nodes/Arithmetic/ArithmeticNodes.h"
#include "Value/Operations/ArithmeticOperations.h"

namespace {

using Testing::HoldsSamples;
using Testing::ImageRef;
using Testing::IsCopyOf;
using Testing::kInfinity;
using Testing::kNan;
using Testing::MakeNode;
using Testing::MakeRow;

struct ArithmeticCase {
  std::string name;
  ImageValueOperationManyNode* (*make)();
  const std::type_info* operation;
  double constant;
  /// Of 6, -3, 0.5 with the constant 2.
  std::vector<float> one;
  /// Of 6, -3, 0.5 and 2, 2, 2.
  std::vector<float> two;
  /// Of 64, 2 and 4, folded from the left.
  float fold;
  /// Of 2, 64 and 4.
  float swapped_fold;
  /// Of 6 and of 0 where the plug of the constant carries nothing.
  std::vector<float> without_constant;

  friend std::ostream& operator<<(std::ostream& stream, const ArithmeticCase& arithmetic) {
    return stream << arithmetic.name;
  }
};

template <class NodeClass>
ImageValueOperationManyNode* Make() {
  return new NodeClass;
}

const std::vector<ArithmeticCase>& GetCases() {
  static const std::vector<ArithmeticCase> cases{
      {"Add",
       Make<ImageValueAddNode>,
       &typeid(AdditionOperation),
       0.0,
       {8.0F, -1.0F, 2.5F},
       {8.0F, -1.0F, 2.5F},
       70.0F,
       70.0F,
       {6.0F, 0.0F}},
      {"Subtract",
       Make<ImageValueSubtractNode>,
       &typeid(SubtractionOperation),
       0.0,
       {4.0F, -5.0F, -1.5F},
       {4.0F, -5.0F, -1.5F},
       58.0F,
       -66.0F,
       {6.0F, 0.0F}},
      {"Multiply",
       Make<ImageValueMultiplyNode>,
       &typeid(MultiplicationOperation),
       1.0,
       {12.0F, -6.0F, 1.0F},
       {12.0F, -6.0F, 1.0F},
       512.0F,
       512.0F,
       {0.0F, 0.0F}},
      {"Divide",
       Make<ImageValueDivideNode>,
       &typeid(DivideOperation),
       1.0,
       {3.0F, -1.5F, 0.25F},
       {3.0F, -1.5F, 0.25F},
       8.0F,
       0.0078125F,
       {kInfinity, kNan}},
      // The exponent of one image is 1, whatever the constant says.
      {"Power",
       Make<ImageValuePowerNode>,
       &typeid(PowerOperation),
       0.0,
       {6.0F, -3.0F, 0.5F},
       {36.0F, 9.0F, 0.25F},
       // 2 to the 48, and 2 to the 256.
       281474976710656.0F,
       kInfinity,
       {6.0F, 0.0F}},
      {"Minimum",
       Make<ImageValueMinimumNode>,
       &typeid(MinimumOperation),
       1000.0,
       {2.0F, -3.0F, 0.5F},
       {2.0F, -3.0F, 0.5F},
       2.0F,
       2.0F,
       {0.0F, 0.0F}},
      {"Maximum",
       Make<ImageValueMaximumNode>,
       &typeid(MaximumOperation),
       -1000.0,
       {6.0F, 2.0F, 2.0F},
       {6.0F, 2.0F, 2.0F},
       64.0F,
       64.0F,
       {6.0F, 0.0F}},
  };
  return cases;
}

class ArithmeticNode : public testing::TestWithParam<ArithmeticCase> {
 protected:
  const Testing::NodeRef<ImageValueOperationManyNode> node_{GetParam().make()};
  const ImageRef image_ = MakeRow({6.0F, -3.0F, 0.5F});
  const ImageRef twos_ = MakeRow({2.0F, 2.0F, 2.0F});
};

TEST_P(ArithmeticNode, StartsWithItsConstant) {
  ASSERT_EQ(node_->GetNumAttributes(), 1U);
  const Attribute& constant = *node_->GetAttribute(std::size_t{0});
  EXPECT_EQ(constant.GetName(), "constant");
  EXPECT_EQ(constant.GetValue().GetNumber(), GetParam().constant);
  EXPECT_EQ(constant.GetDefault().GetNumber(), GetParam().constant);
  EXPECT_EQ(constant.GetLowest(), -1e9);
  EXPECT_EQ(constant.GetHighest(), 1e9);
  EXPECT_EQ(constant.GetDecimals(), 3);
}

TEST_P(ArithmeticNode, FindsTheConstantUnderItsOldName) {
  EXPECT_EQ(node_->GetAttribute(std::string("value")), node_->GetAttribute(std::size_t{0}));
  EXPECT_EQ(node_->GetInplugIndex("value"), 1);
}

TEST_P(ArithmeticNode, BuildsItsOperationFromThePlugOfTheConstant) {
  Testing::SetNumber(*node_, "constant", 0.1);
  const ValueOperationPtr operation(node_->CreateValueOperation(Testing::MakeInputs(*node_, {image_.Get()})));
  ASSERT_TRUE(operation);
  const ValueOperation& made = *operation;
  EXPECT_EQ(typeid(made), *GetParam().operation);
  EXPECT_SAME(made.min, 0.0F);
  EXPECT_SAME(made.max, 1.0F);
  // Narrowed to float.
  EXPECT_SAME(made.a, GetParam().name == "Power" ? 1.0F : 0.1F);
}

TEST_P(ArithmeticNode, FindsTheConstantBehindAnyNumberOfImages) {
  Testing::SetNumber(*node_, "constant", 7.0);
  for (std::size_t count = 0; count < 4; ++count) {
    const std::vector<const Image*> images(count, image_.Get());
    const ValueOperationPtr operation(node_->CreateValueOperation(Testing::MakeInputs(*node_, images)));
    EXPECT_SAME(operation->a, GetParam().name == "Power" ? 1.0F : 7.0F);
  }
}

TEST_P(ArithmeticNode, CombinesOneImageWithTheConstant) {
  Testing::SetNumber(*node_, "constant", 2.0);
  EXPECT_TRUE(HoldsSamples(Testing::Evaluate(*node_, {image_.Get()}), GetParam().one));
}

TEST_P(ArithmeticNode, LeavesOneImageUnchangedByDefault) {
  const ImageRef image = MakeRow({0.25F, -999.5F, 999.5F, -0.5F, 1.0e-30F});
  EXPECT_TRUE(HoldsSamples(Testing::Evaluate(*node_, {image.Get()}), Testing::GetSamples(*image)));
}

TEST_P(ArithmeticNode, CombinesTwoImagesWithoutTheConstant) {
  Testing::SetNumber(*node_, "constant", 77.0);
  EXPECT_TRUE(HoldsSamples(Testing::Evaluate(*node_, {image_.Get(), twos_.Get()}), GetParam().two));
}

TEST_P(ArithmeticNode, FoldsImagesFromTheLeft) {
  const ImageRef a = MakeRow({64.0F});
  const ImageRef b = MakeRow({2.0F});
  const ImageRef c = MakeRow({4.0F});
  EXPECT_TRUE(HoldsSamples(Testing::Evaluate(*node_, {a.Get(), b.Get(), c.Get()}), {GetParam().fold}));
  EXPECT_TRUE(HoldsSamples(Testing::Evaluate(*node_, {b.Get(), a.Get(), c.Get()}), {GetParam().swapped_fold}));
}

TEST_P(ArithmeticNode, ReadsAPlugWithoutAValueAsZero) {
  const ImageRef image = MakeRow({6.0F, 0.0F});
  auto inputs = Testing::MakeInputs(*node_, {image.Get()});
  Testing::AttributePlug(*node_, inputs, "constant") = PlugValue();
  node_->Evaluate(0, inputs);
  EXPECT_TRUE(HoldsSamples(node_->GetOutputImage(0), GetParam().without_constant));
}

TEST_P(ArithmeticNode, CopiesTheFirstImageWhileDisabled) {
  node_->SetEnabled(false);
  Testing::SetNumber(*node_, "constant", 2.0);
  const ImageRef empty(new Image(0, 0, ColorMode::kValue, nullptr));
  const ImageRef color = Testing::MakeMarked(ColorMode::kColor);
  EXPECT_TRUE(IsCopyOf(Testing::Evaluate(*node_, {empty.Get(), color.Get(), image_.Get()}), *color));
}

TEST_P(ArithmeticNode, ComputesEveryChannelOfEveryMode) {
  for (unsigned mode = 0; mode < ColorMode::kCount; ++mode) {
    SCOPED_TRACE(mode);
    const auto channels = static_cast<std::size_t>(ColorMode::GetNumChannels(mode));
    const ImageRef sixes = Testing::MakeImage(1, 1, mode, std::vector<float>(channels, 6.0F));
    const ImageRef twos = Testing::MakeImage(1, 1, mode, std::vector<float>(channels, 2.0F));
    const Image* output = Testing::Evaluate(*node_, {sixes.Get(), twos.Get()});
    EXPECT_TRUE(HoldsSamples(output, std::vector<float>(channels, GetParam().two[0])));
    EXPECT_EQ(output->GetColorMode(), mode);
  }
}

TEST_P(ArithmeticNode, CoversImagesOfDifferentSizeAndPlace) {
  // 0 and 1 are covered by the first, 1 to 3 by the second; the outside values are 6 and 2.
  const ImageRef first = MakeRow({6.0F, 6.0F});
  first->SetOutsideValue(6.0F);
  const ImageRef second = MakeRow({2.0F, 2.0F, 2.0F});
  second->SetPin(1, 0);
  second->SetOutsideValue(2.0F);
  const Image* output = Testing::Evaluate(*node_, {first.Get(), second.Get()});
  ASSERT_TRUE(HoldsSamples(output, std::vector<float>(4, GetParam().two[0])));
  EXPECT_EQ(output->GetPinX(), 0);
  EXPECT_EQ(output->GetBox(), (ScEng::Box2I{0, 0, 4, 1}));
  EXPECT_EQ(output->GetOutsideValue(), GetParam().two[0]);
}

INSTANTIATE_TEST_SUITE_P(AllSeven, ArithmeticNode, testing::ValuesIn(GetCases()),
                         [](const auto& parameter) { return parameter.param.name; });

TEST(ImageValueAddNode, AddsTheConstantEverywhere) {
  const auto node = MakeNode<ImageValueAddNode>();
  const ImageRef image = MakeRow({0.2F, 0.2F, 0.2F});
  Testing::SetNumber(*node, "value", 5.0);
  EXPECT_TRUE(HoldsSamples(Testing::Evaluate(*node, {image.Get()}), {5.2F, 5.2F, 5.2F}));
  Testing::SetNumber(*node, "value", 10.0);
  EXPECT_TRUE(HoldsSamples(Testing::Evaluate(*node, {image.Get()}), {10.2F, 10.2F, 10.2F}));
}

TEST(ImageValueAddNode, KnowsOneObsoleteAttribute) {
  const auto node = MakeNode<ImageValueAddNode>();
  for (const unsigned version : {0U, 1U, 42U}) {
    EXPECT_TRUE(node->IsObsoleteAttribute(version, "mask_min"));
    for (const char* name : {"mask_max", "mask_mi", "mask_min ", "mask_minimum", "Mask_min", "constant", "value", ""}) {
      EXPECT_FALSE(node->IsObsoleteAttribute(version, name)) << name;
    }
  }
}

TEST(ImageValueDivideNode, DividesByZeroAsArithmeticHasIt) {
  const auto node = MakeNode<ImageValueDivideNode>();
  const ImageRef image = MakeRow({3.0F, -3.0F, 0.0F, kNan});
  Testing::SetNumber(*node, "constant", 0.0);
  EXPECT_TRUE(HoldsSamples(Testing::Evaluate(*node, {image.Get()}), {kInfinity, -kInfinity, kNan, kNan}));
  EXPECT_FALSE(node->IsInError());
}

TEST(ImageValuePowerNode, PassesOneImageThroughWhateverTheConstant) {
  const auto node = MakeNode<ImageValuePowerNode>();
  const ImageRef image = MakeRow({6.0F, -3.0F, 0.0F, -0.0F, kInfinity, -kInfinity, kNan});
  for (const double constant : {-2.0, 0.0, 0.5, 3.0}) {
    Testing::SetNumber(*node, "constant", constant);
    EXPECT_TRUE(HoldsSamples(Testing::Evaluate(*node, {image.Get()}), Testing::GetSamples(*image)));
  }
}

TEST(ImageValueMinimumNode, LimitsFromAboveAndPassesNanThrough) {
  const auto node = MakeNode<ImageValueMinimumNode>();
  const ImageRef image = MakeRow({5000.0F, kInfinity, -kInfinity, kNan});
  EXPECT_TRUE(HoldsSamples(Testing::Evaluate(*node, {image.Get()}), {1000.0F, 1000.0F, -kInfinity, kNan}));
}

TEST(ImageValueMaximumNode, LimitsFromBelowAndPassesNanThrough) {
  const auto node = MakeNode<ImageValueMaximumNode>();
  const ImageRef image = MakeRow({-5000.0F, kInfinity, -kInfinity, kNan});
  EXPECT_TRUE(HoldsSamples(Testing::Evaluate(*node, {image.Get()}), {-1000.0F, kInfinity, -1000.0F, kNan}));
}

TEST(ArithmeticNodes, DoNotClampANumberThatAConnectionDelivers) {
  const auto node = MakeNode<ImageValueAddNode>();
  const ImageRef image = MakeRow({0.0F});
  auto inputs = Testing::MakeInputs(*node, {image.Get()});
  Testing::AttributePlug(*node, inputs, "constant") = PlugValue(4.0e9);
  node->Evaluate(0, inputs);
  EXPECT_TRUE(HoldsSamples(node->GetOutputImage(0), {4.0e9F}));
}

TEST(ArithmeticNodes, ReturnToTheirOwnDefault) {
  const auto node = MakeNode<ImageValueMinimumNode>();
  Attribute& constant = *node->GetAttribute(std::size_t{0});
  constant.SetNumber(3.0, false);
  constant.ResetToDefault();
  EXPECT_EQ(constant.GetValue().GetNumber(), 1000.0);
}

}  // namespace
