// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/Function/ImageValueFunctionNode.h"

#include "Value/Core/ValueLibrary.h"
#include "Value/Operations/FunctionOperations.h"

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
        "math,sine,cosine,tangent,abs,absolute,round,floor,ceil,reciprocal,logarithm,exponential,root,square "
        "root,degrees,radians",
    .attributes = kAttributes,
    .inputs = kImagePlugs,
    .outputs = kImagePlugs,
    .reach = ReachesSamples,
};

ValueOperation* ImageValueFunctionNode::CreateValueOperation(const std::vector<PlugValue>& inputs) {
  // In the order of the choice's words.
  switch (EvaluatedInputs(*this, inputs).GetChoiceIndex(kFunction)) {
    case 0: return new AbsoluteValueOperation;
    case 1: return new SineValueOperation;
    case 2: return new CosineValueOperation;
    case 3: return new TangentValueOperation;
    case 4: return new ArcSineValueOperation;
    case 5: return new ArcCosineValueOperation;
    case 6: return new ArcTangentValueOperation;
    case 7: return new FloorValueOperation;
    case 8: return new CeilValueOperation;
    case 9: return new InverseValueOperation;
    case 10: return new LogValueOperation;
    case 11: return new Log2ValueOperation;
    case 12: return new Log10ValueOperation;
    case 13: return new ExponentialValueOperation;
    case 14: return new SquareRootValueOperation;
    case 15: return new CubicRootValueOperation;
    case 16: return new DegToRadValueOperation;
    case 17: return new RadToDegValueOperation;
    default: return nullptr;
  }
}
