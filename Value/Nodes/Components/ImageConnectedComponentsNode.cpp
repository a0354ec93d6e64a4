// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/Components/ImageConnectedComponentsNode.h"

#include "Value/Core/AttributeTable.h"
#include "Value/Nodes/Components/ComponentLabels.h"
#include "Value/Nodes/Components/NeighborEvaluation.h"

namespace {

enum : unsigned { kThreshold, kNeighbors, kSeamless };

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
  EvaluateNeighbors(*this, evaluation, inputs, {kThreshold, kNeighbors, kSeamless}, output_,
                    [](const PixelView& pixels, const NeighborRule& rule, float* labels, ScEng::Status&) {
                      return ComponentLabels::Label(pixels, rule, labels) - 1.0F;
                    });
}
