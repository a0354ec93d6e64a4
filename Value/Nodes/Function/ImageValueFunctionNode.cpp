// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/Function/ImageValueFunctionNode.h"

#include "Value/Core/AttributeTable.h"
#include "Value/Core/EvaluatedInputs.h"
#include "Value/Operations/OperationChoices.h"

namespace {

enum : unsigned { kFunction };

constexpr AttributeRow kAttributes[] = {
    ChoiceRow("function", 0,
              "absolute,sine,cosine,tangent,arcsine,arccosine,arctangent,floor,ceil,inverse,log,log2,log10,exponential,"
              "square_root,cubic_root,deg_to_rad,rad_to_deg"),
};

}  // namespace

ImageValueFunctionNode::ImageValueFunctionNode() {
  DeclareAttributes(*this, attributes_, kAttributes);
  UpdateInplugsAndOutplugs();
}

NodeType ImageValueFunctionNode::GetNodeType() const { return kNodeType<ImageValueFunctionNode>; }
std::string ImageValueFunctionNode::GetName() const { return kDisplayName<ImageValueFunctionNode>; }

ValueOperation* ImageValueFunctionNode::CreateValueOperation(const std::vector<PlugValue>& inputs) {
  return MakeOperation(GetFunction(EvaluatedInputs(*this, inputs).GetChoiceIndex(kFunction)));
}
