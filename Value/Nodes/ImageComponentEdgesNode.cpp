// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/ImageComponentEdgesNode.h"

#include "Value/Core/AttributeTable.h"
#include "Value/Core/EvaluatedInputs.h"
#include "Value/Core/EvaluationFrame.h"

namespace {

constexpr AttributeRow kAttributes[] = {
    NumberRow("threshold", 0.1, 0.0, 1.0, 0.01, 3),
    ChoiceRow("neighbors", 0, "all,cross"),
    FlagRow("seamless", true),
    FlagRow("invert", true),
};

}  // namespace

ImageComponentEdgesNode::ImageComponentEdgesNode() {
  DeclareAttributes(*this, attributes_, kAttributes);
  inplugs_ = {PlugRecord::Input(PlugType::kImage, "image")};
  outplugs_ = {PlugRecord::Output(PlugType::kImage, "image")};
  UpdateInplugsAndOutplugs();
}

NodeType ImageComponentEdgesNode::GetNodeType() const { return kNodeType<ImageComponentEdgesNode>; }
std::string ImageComponentEdgesNode::GetName() const { return kDisplayName<ImageComponentEdgesNode>; }

void ImageComponentEdgesNode::Evaluate(unsigned evaluation, const std::vector<PlugValue>& inputs) {
  const EvaluatedInputs evaluated(*this, inputs);
  if (BeginEvaluation(*this, evaluated, output_) == nullptr) return;
  ReportNoEvaluation(*this, evaluation);
}
