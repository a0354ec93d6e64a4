// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/ImageConnectedComponentsNode.h"

#include "Value/Core/AttributeTable.h"
#include "Value/Core/EvaluatedInputs.h"
#include "Value/Core/EvaluationFrame.h"

namespace {

constexpr AttributeRow kAttributes[] = {
    NumberRow("threshold", 0.1, 0.0, 1.0, 0.01, 3),
    ChoiceRow("neighbors", 0, "all,cross"),
    FlagRow("seamless", true),
};

}  // namespace

ImageConnectedComponentsNode::ImageConnectedComponentsNode() {
  DeclareAttributes(*this, attributes_, kAttributes);
  inplugs_ = {PlugRecord::Input(PlugType::kImage, "image")};
  outplugs_ = {PlugRecord::Output(PlugType::kImage, "image")};
  UpdateInplugsAndOutplugs();
}

NodeType ImageConnectedComponentsNode::GetNodeType() const { return kNodeType<ImageConnectedComponentsNode>; }
std::string ImageConnectedComponentsNode::GetName() const { return kDisplayName<ImageConnectedComponentsNode>; }

void ImageConnectedComponentsNode::Evaluate(unsigned evaluation, const std::vector<PlugValue>& inputs) {
  const EvaluatedInputs evaluated(*this, inputs);
  if (BeginEvaluation(*this, evaluated, output_) == nullptr) return;
  ReportNoEvaluation(*this, evaluation);
}
