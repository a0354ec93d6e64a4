// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/Components/ImageComponentEdgesNode.h"

#include "Value/Core/AttributeTable.h"
#include "Value/Core/EvaluatedInputs.h"
#include "Value/Nodes/Components/ComponentEdges.h"
#include "Value/Nodes/Components/NeighborEvaluation.h"

namespace {

enum : unsigned { kThreshold, kNeighbors, kSeamless, kInvert };

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
  const bool invert = EvaluatedInputs(*this, inputs).GetFlag(kInvert);
  const ComponentEdges::Marks marks = invert ? ComponentEdges::Marks{1.0F, 0.0F} : ComponentEdges::Marks{0.0F, 1.0F};
  EvaluateNeighbors(*this, evaluation, inputs, {kThreshold, kNeighbors, kSeamless}, output_,
                    [&marks](const PixelView& pixels, const NeighborRule& rule, float* marked, ScEng::Status&) {
                      ComponentEdges::Mark(pixels, rule, marks, marked);
                      return 1.0F;
                    });
}
