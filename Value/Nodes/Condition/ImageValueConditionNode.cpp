// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/Condition/ImageValueConditionNode.h"

#include <iterator>

#include "Value/Core/ValueLibrary.h"
#include "Value/Operations/OperationChoices.h"
#include "Value/SelfTests/SelfTests.h"

namespace {

// Both bounds are usually near zero, although they may be far from it.
constexpr double kBoundExponent = 2.0;

constexpr AttributeRow kCondition =
    ChoiceRow("condition", 0,
              "v_eq_min,v_df_min,v_eq_max,v_df_max,v_lt_a,v_lte_a,v_eq_a,v_gte_a,v_gt_a,"
              "a_lt_v_lt_b,a_lte_v_lt_b,a_lt_v_lte_b,a_lte_v_lte_b",
              "The test on the value v.")
        .WithLabels(
            "v == min,v != min,v == max,v != max,v < a,v <= a,v == a,v >= a,v > a,"
            "a < v and v < b,a <= v and v < b,a < v and v <= b,a <= v and v <= b");
constexpr AttributeRow kA = NumberRow("a", 0.0, -10000.0, 10000.0, 0.01, 3,
                                      "The bound of the tests with one bound, the lower bound of those with two.")
                                .WithSliderExponent(kBoundExponent)
                                .OnlyWithWords(kCondition.name,
                                               "v_lt_a,v_lte_a,v_eq_a,v_gte_a,v_gt_a,"
                                               "a_lt_v_lt_b,a_lte_v_lt_b,a_lt_v_lte_b,a_lte_v_lte_b");
constexpr AttributeRow kB =
    NumberRow("b", 0.0, -10000.0, 10000.0, 0.01, 3, "The upper bound of the tests with two bounds.")
        .WithSliderExponent(kBoundExponent)
        .OnlyWithWords(kCondition.name, "a_lt_v_lt_b,a_lte_v_lt_b,a_lt_v_lte_b,a_lte_v_lte_b");
constexpr AttributeRow kAttributes[] = {kCondition, kA, kB};

/// The first four tests compare with the lowest or the highest sample.
Reach FindReach(const Node& node, const std::vector<PlugValue>& inputs) {
  constexpr int kTestsOfMeasured = 4;
  const int test = EvaluatedInputs(node, inputs).GetChoiceIndex(kCondition);
  return Reach::Samples(test >= 0 && test < kTestsOfMeasured ? Reach::Range::kMeasured : Reach::Range::kNone);
}

}  // namespace

constinit const NodeRecord ImageValueConditionNode::kRecord{
    .library = &kValueLibrary,
    .type_name = "ImageValueConditionNode",
    .display_name = "Value Condition",
    .type = NodeType(10, 320, 32),
    .icon = "Condition",
    .group = "Masks",
    .sentence = "Makes a mask that is 1 where a test on the value holds and 0 elsewhere.",
    .keywords = "threshold,equal,greater,less,binary,if,test,select,mask,cut-out,cutoff,altitude,waterline",
    .attributes = kAttributes,
    .inputs = kImagePlugs,
    .outputs = kImagePlugs,
    .reach = FindReach,
    .has_image = HasImageOfAnyInput,
    .joins = true,
    .run_test = SelfTests::RunCondition,
};

ValueOperation* ImageValueConditionNode::CreateValueOperation(const std::vector<PlugValue>& inputs) {
  const EvaluatedInputs evaluated(*this, inputs);
  return MakeOperation(GetCondition(evaluated.GetChoiceIndex(kCondition)), evaluated.GetNumber(kA),
                       evaluated.GetNumber(kB));
}
