// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/ImageEuclideanDistanceNode.h"

#include "Value/Core/AttributeTable.h"
#include "Value/Core/EvaluatedInputs.h"
#include "Value/Core/EvaluationFrame.h"

namespace {

constexpr AttributeRow kAttributes[] = {
    FlagRow("seamless", true),
    FlagRow("normalize", false),
};

}  // namespace

ImageEuclideanDistanceNode::ImageEuclideanDistanceNode() {
  DeclareAttributes(*this, attributes_, kAttributes);
  inplugs_ = {PlugRecord::Input(PlugType::kImage, "image")};
  outplugs_ = {PlugRecord::Output(PlugType::kImage, "image")};
  UpdateInplugsAndOutplugs();
}

NodeType ImageEuclideanDistanceNode::GetNodeType() const { return kNodeType<ImageEuclideanDistanceNode>; }
std::string ImageEuclideanDistanceNode::GetName() const { return kDisplayName<ImageEuclideanDistanceNode>; }

void ImageEuclideanDistanceNode::Evaluate(unsigned evaluation, const std::vector<PlugValue>& inputs) {
  const EvaluatedInputs evaluated(*this, inputs);
  if (BeginEvaluation(*this, evaluated, output_) == nullptr) return;
  ReportNoEvaluation(*this, evaluation);
}
