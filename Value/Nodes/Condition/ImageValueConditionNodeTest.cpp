// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/Condition/ImageValueConditionNode.h"

#include <gtest/gtest.h>

#include <string>
#include <typeinfo>
#include <vector>

#include "Tests/Support/ValueTesting.h"
#include "Value/Operations/ConditionOperations.h"

namespace {

using Testing::HoldsSamples;
using Testing::ImageRef;
using Testing::kInfinity;
using Testing::kNan;
using Testing::MakeRow;

struct ConditionCase {
  const char* word;
  const std::type_info* operation;
  bool keeps_a;
  bool keeps_b;
  /// Of -1, 0, 0.5, 2, 3 and NaN with the constants 0 and 2.
  std::vector<float> result;
};

const std::vector<ConditionCase>& GetCases() {
  static const std::vector<ConditionCase> cases{
      {"v_eq_min", &typeid(ConditionValEqMinOperation), false, false, {1, 0, 0, 0, 0, 0}},
      {"v_df_min", &typeid(ConditionValDiffMinOperation), false, false, {0, 1, 1, 1, 1, 1}},
      {"v_eq_max", &typeid(ConditionValEqMaxOperation), false, false, {0, 0, 0, 0, 1, 0}},
      {"v_df_max", &typeid(ConditionValDiffMaxOperation), false, false, {1, 1, 1, 1, 0, 1}},
      {"v_lt_a", &typeid(ConditionValLtAOperation), true, false, {1, 0, 0, 0, 0, 0}},
      {"v_lte_a", &typeid(ConditionValLteAOperation), true, false, {1, 1, 0, 0, 0, 0}},
      {"v_eq_a", &typeid(ConditionValEqAOperation), true, false, {0, 1, 0, 0, 0, 0}},
      {"v_gte_a", &typeid(ConditionValGteAOperation), true, false, {0, 1, 1, 1, 1, 0}},
      {"v_gt_a", &typeid(ConditionValGtAOperation), true, false, {0, 0, 1, 1, 1, 0}},
      {"a_lt_v_lt_b", &typeid(ConditionALtValLtBOperation), true, true, {0, 0, 1, 0, 0, 0}},
      {"a_lte_v_lt_b", &typeid(ConditionALteValLtBOperation), true, true, {0, 1, 1, 0, 0, 0}},
      {"a_lt_v_lte_b", &typeid(ConditionALtValLteBOperation), true, true, {0, 0, 1, 1, 0, 0}},
      {"a_lte_v_lte_b", &typeid(ConditionALteValLteBOperation), true, true, {0, 1, 1, 1, 0, 0}},
  };
  return cases;
}

class ConditionNode : public testing::Test {
 protected:
  Image* Evaluate(const ImageRef& image) { return Testing::Evaluate(*node_, {image.Get()}); }

  const Testing::NodeRef<ImageValueConditionNode> node_ = Testing::MakeNode<ImageValueConditionNode>();
};

TEST_F(ConditionNode, OffersThirteenTestsInOrder) {
  std::vector<std::string> words;
  for (const ConditionCase& condition : GetCases()) words.emplace_back(condition.word);
  EXPECT_EQ(words.size(), 13U);
  EXPECT_EQ(node_->GetAttribute(std::size_t{0})->GetChoices(), words);
  EXPECT_EQ(node_->GetAttribute(std::size_t{0})->GetDefault().GetText(), "v_eq_min");
}

TEST_F(ConditionNode, BuildsTheOperationOfEachTest) {
  Testing::SetNumber(*node_, "a", 0.1);
  Testing::SetNumber(*node_, "b", 0.7);
  const ImageRef image = MakeRow({1.0F});
  for (const ConditionCase& condition : GetCases()) {
    SCOPED_TRACE(condition.word);
    Testing::SetChoice(*node_, "condition", condition.word);
    const ValueOperationPtr made(node_->CreateValueOperation(Testing::MakeInputs(*node_, {image.Get()})));
    ASSERT_TRUE(made);
    const ValueOperation& operation = *made;
    EXPECT_EQ(typeid(operation), *condition.operation);
    EXPECT_SAME(operation.min, 0.0F);
    EXPECT_SAME(operation.max, 1.0F);
    // The floats nearest the numbers.
    if (condition.keeps_a) {
      EXPECT_SAME(operation.a, 0.1F);
    }
    if (condition.keeps_b) {
      EXPECT_SAME(operation.b, 0.7F);
    }
  }
}

TEST_F(ConditionNode, MasksByEachTest) {
  Testing::SetNumber(*node_, "b", 2.0);
  const ImageRef image = MakeRow({-1.0F, 0.0F, 0.5F, 2.0F, 3.0F, kNan});
  for (const ConditionCase& condition : GetCases()) {
    SCOPED_TRACE(condition.word);
    Testing::SetChoice(*node_, "condition", condition.word);
    EXPECT_TRUE(HoldsSamples(Evaluate(image), condition.result));
  }
}

TEST_F(ConditionNode, MarksTheLowestPixelsByDefault) {
  EXPECT_TRUE(HoldsSamples(Evaluate(MakeRow({0.2F, 0.20000002F, 0.9F, 0.2F})), {1.0F, 0.0F, 0.0F, 1.0F}));
}

TEST_F(ConditionNode, CountsInfinitiesAmongTheExtremes) {
  Testing::SetChoice(*node_, "condition", "v_eq_max");
  EXPECT_TRUE(HoldsSamples(Evaluate(MakeRow({1.0F, kInfinity, kNan})), {0.0F, 1.0F, 0.0F}));
}

TEST_F(ConditionNode, TakesZeroAndOneForTheExtremesOfAnImageWithoutNumbers) {
  // NaN equals neither.
  const ImageRef image = MakeRow({kNan, kNan});
  EXPECT_TRUE(HoldsSamples(Evaluate(image), {0.0F, 0.0F}));
  Testing::SetChoice(*node_, "condition", "v_df_max");
  EXPECT_TRUE(HoldsSamples(Evaluate(image), {1.0F, 1.0F}));
}

TEST_F(ConditionNode, HasNoTolerance) {
  Testing::SetChoice(*node_, "condition", "v_eq_a");
  Testing::SetNumber(*node_, "a", 0.5);
  EXPECT_TRUE(HoldsSamples(Evaluate(MakeRow({0.5F, 0.5000001F})), {1.0F, 0.0F}));
}

TEST_F(ConditionNode, ComparesWithTheFloatNearestTheConstant) {
  Testing::SetChoice(*node_, "condition", "v_eq_a");
  Testing::SetNumber(*node_, "a", 0.1);
  EXPECT_TRUE(HoldsSamples(Evaluate(MakeRow({0.1F})), {1.0F}));
}

TEST_F(ConditionNode, FindsNothingBetweenSwappedConstants) {
  Testing::SetNumber(*node_, "a", 2.0);
  Testing::SetNumber(*node_, "b", 1.0);
  Testing::SetChoice(*node_, "condition", "a_lt_v_lt_b");
  EXPECT_TRUE(HoldsSamples(Evaluate(MakeRow({1.0F, 1.5F, 2.0F})), {0.0F, 0.0F, 0.0F}));
  Testing::SetNumber(*node_, "b", 2.0);
  Testing::SetChoice(*node_, "condition", "a_lte_v_lte_b");
  EXPECT_TRUE(HoldsSamples(Evaluate(MakeRow({1.0F, 1.5F, 2.0F})), {0.0F, 0.0F, 1.0F}));
}

TEST_F(ConditionNode, ReadsAPlugWithoutAValueAsZero) {
  Testing::SetChoice(*node_, "condition", "v_gt_a");
  Testing::SetNumber(*node_, "a", 5.0);
  const ImageRef image = MakeRow({1.0F, -1.0F});
  auto inputs = Testing::MakeInputs(*node_, {image.Get()});
  Testing::AttributePlug(*node_, inputs, "a") = PlugValue();
  node_->Evaluate(0, inputs);
  EXPECT_TRUE(HoldsSamples(node_->GetOutputImage(0), {1.0F, 0.0F}));
}

TEST_F(ConditionNode, HasNoOperationAndNoOutputForAnUnknownWord) {
  Testing::ExpectNoOperationFor(*node_, "condition",
                                {PlugValue(), PlugValue(std::string("v_near_a")), PlugValue(std::string("V_EQ_A"))});
}

TEST_F(ConditionNode, KeepsTheSizeModeAndPlaceOfItsInput) {
  const ImageRef image = Testing::MakeMarked(ColorMode::kColor);
  const Image* output = Evaluate(image);
  ASSERT_NE(output, nullptr);
  EXPECT_EQ(output->GetColorMode(), ColorMode::kColor);
  EXPECT_EQ(output->GetBox(), image->GetBox());
  // The lowest of all samples is the first.
  std::vector<float> expected(24, 0.0F);
  expected[0] = 1.0F;
  EXPECT_TRUE(HoldsSamples(output, expected));
  EXPECT_EQ(output->GetValueLow(), 0.0F);
  EXPECT_EQ(output->GetValueHigh(), 1.0F);
}

}  // namespace
