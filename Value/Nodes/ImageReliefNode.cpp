// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/ImageReliefNode.h"

#include "Value/Core/AttributeTable.h"
#include "Value/Core/EvaluatedInputs.h"
#include "Value/Core/EvaluationFrame.h"

namespace {

constexpr AttributeRow kAttributes[] = {
    NumberRow("radius", 1.0, 0.0, 250.0, 1.0, 0),
    NumberRow("multiplier", 1.0, -1000.0, 1000.0, 1.0, 2),
    ChoiceRow("style", 0, "levels,inner_bevel,outer_bevel,emboss,pillow_emboss"),
    ChoiceRow("profile", 0, "linear,smooth,arc_out,arc_in"),
    NumberRow("soften", 0.0, 0.0, 16.0, 1.0, 0),
    FlagRow("grow", false),
    FlagRow("seamless", true),
};

}  // namespace

ImageReliefNode::ImageReliefNode() {
  DeclareAttributes(*this, attributes_, kAttributes);
  inplugs_ = {PlugRecord::Input(PlugType::kImage, "image")};
  outplugs_ = {PlugRecord::Output(PlugType::kImage, "image")};
  UpdateInplugsAndOutplugs();
}

NodeType ImageReliefNode::GetNodeType() const { return kNodeType<ImageReliefNode>; }
std::string ImageReliefNode::GetName() const { return kDisplayName<ImageReliefNode>; }

std::string ImageReliefNode::TranslateAttributeName(unsigned version, const std::string& name) const {
  return version == 0 && name == "height" ? "multiplier" : name;
}

void ImageReliefNode::Evaluate(unsigned evaluation, const std::vector<PlugValue>& inputs) {
  const EvaluatedInputs evaluated(*this, inputs);
  if (BeginEvaluation(*this, evaluated, output_) == nullptr) return;
  ReportNoEvaluation(*this, evaluation);
}
