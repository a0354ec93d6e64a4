// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/Function/ImageValueFunctionNode.h"

#include <gtest/gtest.h>

#include <string>
#include <typeinfo>
#include <vector>

#include "Tests/Support/ValueTesting.h"
#include "Value/Operations/FunctionOperations.h"

namespace {

using Testing::HoldsSamples;
using Testing::ImageRef;
using Testing::kInfinity;
using Testing::kNan;
using Testing::MakeRow;

struct FunctionCase {
  const char* word;
  const std::type_info* operation;
  float value;
  float result;
};

// Each value tells its function from the others.
const std::vector<FunctionCase>& GetCases() {
  static const std::vector<FunctionCase> cases{
      {"absolute", &typeid(AbsoluteValueOperation), -0.25F, 0.25F},
      {"sine", &typeid(SineValueOperation), 1.0F, 0.841470984807896507F},
      {"cosine", &typeid(CosineValueOperation), 1.0F, 0.540302305868139717F},
      {"tangent", &typeid(TangentValueOperation), 1.0F, 1.55740772465490223F},
      {"arcsine", &typeid(ArcSineValueOperation), 0.5F, 0.523598775598298873F},
      {"arccosine", &typeid(ArcCosineValueOperation), 0.5F, 1.04719755119659775F},
      {"arctangent", &typeid(ArcTangentValueOperation), 1.0F, 0.785398163397448310F},
      {"floor", &typeid(FloorValueOperation), -1.5F, -2.0F},
      {"ceil", &typeid(CeilValueOperation), -1.5F, -1.0F},
      {"inverse", &typeid(InverseValueOperation), 4.0F, 0.25F},
      {"log", &typeid(LogValueOperation), 2.0F, 0.693147180559945309F},
      {"log2", &typeid(Log2ValueOperation), 1024.0F, 10.0F},
      {"log10", &typeid(Log10ValueOperation), 1000.0F, 3.0F},
      {"exponential", &typeid(ExponentialValueOperation), 1.0F, 2.71828182845904524F},
      {"square_root", &typeid(SquareRootValueOperation), 64.0F, 8.0F},
      {"cubic_root", &typeid(CubicRootValueOperation), -8.0F, -2.0F},
      {"deg_to_rad", &typeid(DegToRadValueOperation), 180.0F, 3.14159265358979324F},
      {"rad_to_deg", &typeid(RadToDegValueOperation), 1.0F, 57.2957795130823209F},
  };
  return cases;
}

class FunctionNode : public testing::Test {
 protected:
  Image* Evaluate(const ImageRef& image) { return Testing::Evaluate(*node_, {image.Get()}); }

  const Testing::NodeRef<ImageValueFunctionNode> node_ = Testing::MakeNode<ImageValueFunctionNode>();
};

TEST_F(FunctionNode, OffersEighteenFunctionsInOrder) {
  std::vector<std::string> words;
  for (const FunctionCase& function : GetCases()) words.emplace_back(function.word);
  EXPECT_EQ(words.size(), 18U);
  EXPECT_EQ(node_->GetAttribute(std::size_t{0})->GetChoices(), words);
}

TEST_F(FunctionNode, BuildsTheOperationOfEachFunction) {
  for (const FunctionCase& function : GetCases()) {
    SCOPED_TRACE(function.word);
    Testing::SetChoice(*node_, "function", function.word);
    const ValueOperationPtr made(node_->CreateValueOperation(Testing::MakeInputs(*node_, {})));
    ASSERT_TRUE(made);
    const ValueOperation& operation = *made;
    EXPECT_EQ(typeid(operation), *function.operation);
    EXPECT_SAME(operation.min, 0.0F);
    EXPECT_SAME(operation.max, 1.0F);
  }
}

TEST_F(FunctionNode, ComputesEachFunction) {
  for (const FunctionCase& function : GetCases()) {
    SCOPED_TRACE(function.word);
    Testing::SetChoice(*node_, "function", function.word);
    EXPECT_TRUE(HoldsSamples(Evaluate(MakeRow({function.value})), {function.result}));
  }
}

TEST_F(FunctionNode, GivesAbsoluteValuesByDefault) {
  EXPECT_TRUE(HoldsSamples(Evaluate(MakeRow({-0.25F, 0.5F, -0.0F, kNan})), {0.25F, 0.5F, 0.0F, kNan}));
}

TEST_F(FunctionNode, SaysNothingOfValuesOutsideTheDomain) {
  Testing::SetChoice(*node_, "function", "inverse");
  EXPECT_TRUE(HoldsSamples(Evaluate(MakeRow({0.0F, -0.0F})), {kInfinity, -kInfinity}));
  Testing::SetChoice(*node_, "function", "log");
  EXPECT_TRUE(HoldsSamples(Evaluate(MakeRow({0.0F, -1.0F})), {-kInfinity, kNan}));
  EXPECT_EQ(node_->GetState(), Node::State::kIdle);
  EXPECT_EQ(node_->GetStateMessage(), "");
}

TEST_F(FunctionNode, HasNoOperationAndNoOutputForAnUnknownWord) {
  Testing::ExpectNoOperationFor(*node_, "function", {PlugValue(), PlugValue(std::string("sinus")), PlugValue(1.0)});
}

}  // namespace
