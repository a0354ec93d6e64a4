// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/ToValue/ImageToValueNode.h"

#include "Host/Image/Image.h"
#include "Host/Image/Placement.h"
#include "Host/Math/Constants.h"
#include "Host/Util/Log.h"
#include "Value/Core/AttributeTable.h"
#include "Value/Core/EvaluatedInputs.h"
#include "Value/Core/EvaluationFrame.h"
#include "Value/Nodes/ToValue/ToValue.h"

namespace {

enum : unsigned { kLow, kHigh, kAutoLevel };

constexpr AttributeRow kAttributes[] = {
    NumberRow("low", 0.0, -999999999.0, 999999999.0, 0.01, 3),
    NumberRow("high", 1.0, -999999999.0, 999999999.0, 0.01, 3),
    FlagRow("auto_level", false),
};

}  // namespace

ImageToValueNode::ImageToValueNode() {
  DeclareAttributes(*this, attributes_, kAttributes);
  inplugs_ = {PlugRecord::Input(PlugType::kImage, "image")};
  outplugs_ = {PlugRecord::Output(PlugType::kImage, "image")};
  UpdateInplugsAndOutplugs();
}

NodeType ImageToValueNode::GetNodeType() const { return kNodeType<ImageToValueNode>; }
std::string ImageToValueNode::GetName() const { return kDisplayName<ImageToValueNode>; }

std::string ImageToValueNode::TranslateAttributeName(unsigned, const std::string& name) const {
  if (name == "min") return "low";
  if (name == "max") return "high";
  return name == "saturate" ? "auto_level" : name;
}

void ImageToValueNode::Evaluate(unsigned, const std::vector<PlugValue>& inputs) {
  const EvaluatedInputs evaluated(*this, inputs);
  const Image* image = BeginEvaluation(*this, evaluated, output_);
  if (image == nullptr) return;
  const float low = evaluated.GetNumber(kLow);
  const float high = evaluated.GetNumber(kHigh);

  auto* output = new Image(image->GetSizeX(), image->GetSizeY(), ColorMode::kValue, nullptr);
  output_.Set(output);
  ScEng::PlaceLike(*image, *output);
  output->SetValueLowHigh(low, high);

  // The range is measured ahead only where the result depends on it; it is found on the way where it does not.
  const bool auto_level = evaluated.GetFlag(kAutoLevel);
  const unsigned mode = image->GetColorMode();
  const float* samples = image->GetConstArray();
  const std::size_t pixels = output->GetNumSamples();
  const ValueRange ahead = auto_level ? ToValue::Measure(samples, mode, pixels) : ValueRange();
  const ValueRange nominal = ToValue::GetNominalRange(mode, {image->GetValueLow(), image->GetValueHigh()}, ahead);
  const ValueRange source = ToValue::ChooseRange(nominal, ahead, auto_level);
  const ValueRange measured = ToValue::Map(samples, mode, output->GetArray(), pixels, source, low, high);
  Log::Info("Value.dll ImageToValue::Evaluate. Input range %f - %f", static_cast<double>(measured.low),
            static_cast<double>(measured.high));
}
