// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/ImageToValueNode.h"

#include "Host/Image/Image.h"
#include "Host/Math/Constants.h"
#include "Host/Util/Log.h"
#include "Value/Core/AttributeTable.h"
#include "Value/Core/EvaluatedInputs.h"
#include "Value/Core/EvaluationFrame.h"
#include "Value/Nodes/ToValue.h"

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

  auto* output = new Image(image->GetSizeX(), image->GetSizeY(), ColorMode::kValue, &low);
  output_.Set(output);
  output->SetPin(image->GetPinX(), image->GetPinY());
  output->SetPivot(image->GetPivotX(), image->GetPivotY());
  output->SetValueLowHigh(low, high);

  const std::size_t pixels = output->GetNumSamples();
  const ToValue::Range measured =
      ToValue::Reduce(image->GetConstArray(), image->GetColorMode(), output->GetArray(), pixels);
  Log::Info("Value.dll ImageToValue::Evaluate. Input range %f - %f", static_cast<double>(measured.from),
            static_cast<double>(measured.to));

  const ToValue::Range nominal =
      ToValue::GetNominalRange(image->GetColorMode(), image->GetValueLow(), image->GetValueHigh(), measured);
  const ToValue::Range source = ToValue::ChooseRange(nominal, measured, evaluated.GetFlag(kAutoLevel));
  ToValue::Remap(output->GetArray(), pixels, source, low, high);
}
