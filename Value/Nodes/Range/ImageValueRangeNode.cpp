// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/Range/ImageValueRangeNode.h"

#include "Value/Core/AttributeTable.h"
#include "Value/Core/EvaluatedInputs.h"
#include "Value/Operations/ThresholdValueOperation.h"

namespace {

enum : unsigned { kCenter, kSize, kFalloff, kProfile };

constexpr AttributeRow kAttributes[] = {
    NumberRow("center", 0.0, -10000.0, 10000.0, 0.01, 3),
    NumberRow("size", 0.0, 0.0, 10000.0, 0.01, 3),
    NumberRow("falloff", 0.0, 0.0, 10000.0, 0.01, 3),
    ChoiceRow("profile", 0, "linear,smooth,arc_out,arc_in"),
};

}  // namespace

ImageValueRangeNode::ImageValueRangeNode() {
  DeclareAttributes(*this, attributes_, kAttributes);
  UpdateInplugsAndOutplugs();
}

NodeType ImageValueRangeNode::GetNodeType() const { return kNodeType<ImageValueRangeNode>; }
std::string ImageValueRangeNode::GetName() const { return kDisplayName<ImageValueRangeNode>; }

ValueOperation* ImageValueRangeNode::CreateValueOperation(const std::vector<PlugValue>& inputs) {
  const EvaluatedInputs evaluated(*this, inputs);
  return new ThresholdValueOperation(evaluated.GetNumber(kCenter), evaluated.GetNumber(kSize),
                                     evaluated.GetNumber(kFalloff),
                                     ThresholdProfile::Get(evaluated.GetChoiceIndex(kProfile)));
}
