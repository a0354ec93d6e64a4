// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/Clamp/ImageValueClampNode.h"

#include <iterator>

#include "Host/Image/Image.h"
#include "Value/Core/AttributeTable.h"
#include "Value/Core/EvaluatedInputs.h"
#include "Value/Nodes/Clamp/Clamp.h"

namespace {

enum : unsigned { kClamp, kLow, kHigh, kProfile };

constexpr AttributeRow kAttributes[] = {
    ChoiceRow("clamp", 0, "both,low,high"),
    NumberRow("low", 0.0, -10000.0, 10000.0, 0.01, 3),
    NumberRow("high", 0.0, -10000.0, 10000.0, 0.01, 3),
    ChoiceRow("profile", 0, "linear,smooth,perlin,arc_out,arc_in"),
};

// Both limits are usually near zero, although they may be far from it.
constexpr double kLimitExponent = 2.0;

}  // namespace

std::vector<PanelEntry> ImageValueClampNode::GetPanelEntries() {
  std::vector<PanelEntry> entries(std::size(kAttributes));
  entries[kLow].slider_exponent = entries[kHigh].slider_exponent = kLimitExponent;
  return entries;
}

ImageValueClampNode::ImageValueClampNode() {
  DeclareAttributes(*this, attributes_, kAttributes);
  inplugs_ = {PlugRecord::Input(PlugType::kImage, "image")};
  outplugs_ = {PlugRecord::Output(PlugType::kImage, "image")};
  UpdateInplugsAndOutplugs();
}

NodeType ImageValueClampNode::GetNodeType() const { return kNodeType<ImageValueClampNode>; }
std::string ImageValueClampNode::GetName() const { return kDisplayName<ImageValueClampNode>; }

std::string ImageValueClampNode::TranslateAttributeName(unsigned, const std::string& name) const {
  if (name == "min") return "low";
  return name == "max" ? "high" : name;
}

void ImageValueClampNode::Evaluate(unsigned, const std::vector<PlugValue>& inputs) {
  // Disabled, or without an image, the node keeps showing its last result.
  if (!IsEnabled()) return;
  const EvaluatedInputs evaluated(*this, inputs);
  const Image* image = evaluated.GetImage(0);
  if (image == nullptr) return;

  auto* output = new Image(image->GetSizeX(), image->GetSizeY(), ColorMode::kValue, nullptr);
  output_.Set(output);
  output->SetPin(image->GetPinX(), image->GetPinY());
  output->SetPivot(image->GetPivotX(), image->GetPivotY());

  const float* samples = image->GetConstArray();
  const auto stride = static_cast<std::size_t>(image->GetNumChannels());
  const std::size_t pixels = output->GetNumSamples();
  Clamp::Limits limits{evaluated.GetNumber(kLow), evaluated.GetNumber(kHigh)};
  limits = Clamp::OpenSide(limits, Clamp::GetSides(evaluated.GetChoiceIndex(kClamp)), samples, stride, pixels);
  Clamp::Apply(samples, stride, output->GetArray(), pixels, limits,
               Clamp::GetProfile(evaluated.GetChoiceIndex(kProfile)));
  output->SetValueLowHigh(limits.low, limits.high);
}
