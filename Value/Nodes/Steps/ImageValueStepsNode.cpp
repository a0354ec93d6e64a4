// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/Steps/ImageValueStepsNode.h"

#include "Host/Image/Image.h"
#include "Host/Image/Placement.h"
#include "Value/Core/AttributeTable.h"
#include "Value/Core/EvaluatedInputs.h"
#include "Value/Nodes/Steps/Steps.h"

namespace {

enum : unsigned { kSteps };

constexpr AttributeRow kAttributes[] = {
    NumberRow("steps", 2.0, 2.0, 100000.0, 1.0, 0),
};

}  // namespace

ImageValueStepsNode::ImageValueStepsNode() {
  DeclareAttributes(*this, attributes_, kAttributes);
  inplugs_ = {PlugRecord::Input(PlugType::kImage, "image")};
  outplugs_ = {PlugRecord::Output(PlugType::kImage, "image")};
  UpdateInplugsAndOutplugs();
}

NodeType ImageValueStepsNode::GetNodeType() const { return kNodeType<ImageValueStepsNode>; }
std::string ImageValueStepsNode::GetName() const { return kDisplayName<ImageValueStepsNode>; }

void ImageValueStepsNode::Evaluate(unsigned, const std::vector<PlugValue>& inputs) {
  // Disabled, or without an image, the node keeps showing its last result.
  if (!IsEnabled()) return;
  const EvaluatedInputs evaluated(*this, inputs);
  const Image* image = evaluated.GetImage(0);
  if (image == nullptr) return;

  auto* output = new Image(image->GetSizeX(), image->GetSizeY(), ColorMode::kValue, nullptr);
  output_.Set(output);
  ScEng::PlaceLike(*image, *output);
  output->SetValueLowHigh(image->GetValueLow(), image->GetValueHigh());
  Steps::Quantize(image->GetConstArray(), static_cast<std::size_t>(image->GetNumChannels()), output->GetArray(),
                  output->GetNumSamples(), Steps::GetCount(evaluated.GetNumber(kSteps)), image->GetValueLow(),
                  image->GetValueHigh());
}
