// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/Function/ImageValueFunctionNode.h"

#include "Value/Core/ValueLibrary.h"
#include "Value/Operations/OperationChoices.h"

namespace {

constexpr AttributeRow kFunction =
    ChoiceRow("function", 0,
              "absolute,sine,cosine,tangent,arcsine,arccosine,arctangent,floor,ceil,inverse,log,log2,log10,exponential,"
              "square_root,cubic_root,deg_to_rad,rad_to_deg",
              "The function that is applied to the value v.");
constexpr AttributeRow kAttributes[] = {kFunction};

}  // namespace

constinit const NodeRecord ImageValueFunctionNode::kRecord{
    .library = &kValueLibrary,
    .type_name = "ImageValueFunctionNode",
    .display_name = "Value Function",
    .type = NodeType(10, 320, 64),
    .icon = "Function",
    .group = "Remapping",
    .sentence = "Applies a mathematical function of one variable to every sample.",
    .keywords =
        "math,sine,sin,cosine,cos,tangent,tan,abs,absolute,round,floor,ceil,reciprocal,inverse,logarithm,ln,"
        "exponential,"
        "exp,root,square root,sqrt,cube root,degrees,radians,wave,oscillate",
    .attributes = kAttributes,
    .inputs = kImagePlugs,
    .outputs = kImagePlugs,
    .reach = ReachesSamples,
    .has_image = HasImageOfAnyInput,
    .joins = true,
};

ValueOperation* ImageValueFunctionNode::CreateValueOperation(const std::vector<PlugValue>& inputs) {
  return MakeOperation(GetFunction(EvaluatedInputs(*this, inputs).GetChoiceIndex(kFunction)));
}
