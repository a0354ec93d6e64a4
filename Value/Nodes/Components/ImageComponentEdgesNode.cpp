// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/Components/ImageComponentEdgesNode.h"

#include "Host/Image/Placement.h"
#include "Value/Core/AttributeTable.h"
#include "Value/Core/EvaluatedInputs.h"
#include "Value/Core/EvaluationFrame.h"
#include "Value/Nodes/Components/ComponentEdges.h"
#include "Value/Nodes/Components/NeighborInputs.h"

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

void ImageComponentEdgesNode::Evaluate(unsigned, const std::vector<PlugValue>& inputs) {
  const EvaluatedInputs evaluated(*this, inputs);
  const Image* image = BeginEvaluation(*this, evaluated, output_);
  if (image == nullptr) return;
  const ImagePtr marked(new Image(image->GetSizeX(), image->GetSizeY(), ColorMode::kValue, nullptr));
  ScEng::PlaceLike(*image, *marked);
  marked->SetValueLowHigh(0.0F, 1.0F);
  const NeighborRule rule = ReadNeighborRule(evaluated, *image, kThreshold, kNeighbors, kSeamless);
  const bool invert = evaluated.GetFlag(kInvert);
  const ComponentEdges::Marks marks = invert ? ComponentEdges::Marks{1.0F, 0.0F} : ComponentEdges::Marks{0.0F, 1.0F};
  ComponentEdges::Mark(ViewPixels(*image), rule, marks, marked->GetArray());
  output_.Set(marked.Get());
}
