// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/Components/ImageConnectedComponentsNode.h"

#include "Value/Core/ValueLibrary.h"
#include "Value/Nodes/Components/ComponentLabels.h"
#include "Value/Nodes/Components/NeighborInputs.h"

namespace {

constexpr AttributeRow kThreshold = NumberRow(
    "threshold", 0.1, 0.0, 1.0, 0.01, 3,
    "How much neighbouring pixels may differ and still belong together, as a fraction of the declared range.");
constexpr AttributeRow kSeamless =
    FlagRow("seamless", true, "Treats the image as a tile, so that regions join across its borders.");
constexpr AttributeRow kAttributes[] = {kThreshold, kNeighbors, kSeamless};

Reach FindReach(const Node&, const std::vector<PlugValue>&) { return Reach::Image(Reach::Range::kDeclared); }

}  // namespace

constinit const NodeRecord ImageConnectedComponentsNode::kRecord{
    .library = &kValueLibrary,
    .type_name = "ImageConnectedComponentsNode",
    .display_name = "Connected Components",
    .type = NodeType(10, 320, 101),
    .icon = "ConnectedComponents",
    .group = "Shape",
    .sentence = "Numbers the connected regions of an image.",
    .keywords = "label,region,segment,island,lake,count,flood fill,blob",
    .attributes = kAttributes,
    .inputs = kImagePlugs,
    .outputs = kImagePlugs,
    .reach = FindReach,
};

void ImageConnectedComponentsNode::Evaluate(unsigned, const std::vector<PlugValue>& inputs) {
  const EvaluatedInputs evaluated(*this, inputs);
  const Image* image = BeginEvaluation(*this, evaluated, output_);
  if (image == nullptr) return;
  const ScEng::RefPtr<Image> labels(new Image(image->GetSizeX(), image->GetSizeY(), ColorMode::kValue, nullptr));
  labels->SetPin(image->GetPinX(), image->GetPinY());
  labels->SetPivot(image->GetPivotX(), image->GetPivotY());
  const NeighborRule rule = ReadNeighborRule(evaluated, *image, kThreshold, kSeamless);
  const float count = ComponentLabels::Label(ViewPixels(*image), rule, labels->GetArray());
  labels->SetValueLowHigh(0.0F, count - 1.0F);
  output_.Set(labels.Get());
}
