// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/Condition/ImageValueConditionNode.h"

#include <iterator>

#include "Value/Core/AttributeTable.h"
#include "Value/Core/EvaluatedInputs.h"
#include "Value/Operations/OperationChoices.h"

namespace {

enum : unsigned { kCondition, kA, kB };

constexpr AttributeRow kAttributes[] = {
    ChoiceRow("condition", 0,
              "v_eq_min,v_df_min,v_eq_max,v_df_max,v_lt_a,v_lte_a,v_eq_a,v_gte_a,v_gt_a,"
              "a_lt_v_lt_b,a_lte_v_lt_b,a_lt_v_lte_b,a_lte_v_lte_b"),
    NumberRow("a", 0.0, -10000.0, 10000.0, 0.01, 3),
    NumberRow("b", 0.0, -10000.0, 10000.0, 0.01, 3),
};

// What is shown for the words of "condition", in their order.
constexpr const char* kConditionLabels =
    "v == min,v != min,v == max,v != max,v < a,v <= a,v == a,v >= a,v > a,"
    "a < v and v < b,a <= v and v < b,a < v and v <= b,a <= v and v <= b";

// Both bounds are usually near zero, although they may be far from it.
constexpr double kBoundExponent = 2.0;

}  // namespace

std::vector<PanelEntry> ImageValueConditionNode::GetPanelEntries() {
  std::vector<PanelEntry> entries(std::size(kAttributes));
  entries[kCondition].labels = kConditionLabels;
  entries[kA].slider_exponent = entries[kB].slider_exponent = kBoundExponent;
  return entries;
}

ImageValueConditionNode::ImageValueConditionNode() {
  DeclareAttributes(*this, attributes_, kAttributes);
  UpdateInplugsAndOutplugs();
}

NodeType ImageValueConditionNode::GetNodeType() const { return kNodeType<ImageValueConditionNode>; }
std::string ImageValueConditionNode::GetName() const { return kDisplayName<ImageValueConditionNode>; }

ValueOperation* ImageValueConditionNode::CreateValueOperation(const std::vector<PlugValue>& inputs) {
  const EvaluatedInputs evaluated(*this, inputs);
  return MakeOperation(GetCondition(evaluated.GetChoiceIndex(kCondition)), evaluated.GetNumber(kA),
                       evaluated.GetNumber(kB));
}
