// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/ImageAmbientOcclusionNode.h"

#include "Value/Core/AttributeTable.h"
#include "Value/Core/EvaluatedInputs.h"
#include "Value/Core/EvaluationFrame.h"

namespace {

constexpr AttributeRow kAttributes[] = {
    NumberRow("radius", 3.0, 3.0, 100.0, 1.0, 1),
    FlagRow("seamless", true),
};

}  // namespace

ImageAmbientOcclusionNode::ImageAmbientOcclusionNode() {
  DeclareAttributes(*this, attributes_, kAttributes);
  inplugs_ = {PlugRecord::Input(PlugType::kImage, "image")};
  outplugs_ = {PlugRecord::Output(PlugType::kImage, "image")};
  UpdateInplugsAndOutplugs();
}

NodeType ImageAmbientOcclusionNode::GetNodeType() const { return kNodeType<ImageAmbientOcclusionNode>; }
std::string ImageAmbientOcclusionNode::GetName() const { return kDisplayName<ImageAmbientOcclusionNode>; }

void ImageAmbientOcclusionNode::Evaluate(unsigned evaluation, const std::vector<PlugValue>& inputs) {
  const EvaluatedInputs evaluated(*this, inputs);
  if (BeginEvaluation(*this, evaluated, output_) == nullptr) return;
  ReportNoEvaluation(*this, evaluation);
}
