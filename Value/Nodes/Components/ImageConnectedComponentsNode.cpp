// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/Components/ImageConnectedComponentsNode.h"

#include "Host/Image/Placement.h"
#include "Value/Core/AttributeTable.h"
#include "Value/Core/EvaluatedInputs.h"
#include "Value/Core/EvaluationFrame.h"
#include "Value/Nodes/Components/ComponentLabels.h"
#include "Value/Nodes/Components/NeighborInputs.h"

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

void ImageConnectedComponentsNode::Evaluate(unsigned, const std::vector<PlugValue>& inputs) {
  const EvaluatedInputs evaluated(*this, inputs);
  const Image* image = BeginEvaluation(*this, evaluated, output_);
  if (image == nullptr) return;
  const ImagePtr labels(new Image(image->GetSizeX(), image->GetSizeY(), ColorMode::kValue, nullptr));
  ScEng::PlaceLike(*image, *labels);
  const NeighborRule rule = ReadNeighborRule(evaluated, *image, kThreshold, kNeighbors, kSeamless);
  const float count = ComponentLabels::Label(ViewPixels(*image), rule, labels->GetArray());
  labels->SetValueLowHigh(0.0F, count - 1.0F);
  output_.Set(labels.Get());
}
