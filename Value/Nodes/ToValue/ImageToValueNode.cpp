// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/ToValue/ImageToValueNode.h"

#include "Host/Image/Image.h"
#include "Host/Image/Placement.h"
#include "Host/Math/Constants.h"
#include "Host/Util/Log.h"
#include "Value/Core/ValueLibrary.h"
#include "Value/Nodes/ToValue/ToValue.h"

namespace {

constexpr AttributeRow kLow = NumberRow("low", 0.0, -999999999.0, 999999999.0, 0.01, 3,
                                        "The value that the lower end of the source range is mapped to.");
constexpr AttributeRow kHigh = NumberRow(
    "high", 1.0, -999999999.0, 999999999.0, 0.01, 3,
    "The value that the upper end of the source range is mapped to. Below low it turns the picture into its negative.");
constexpr AttributeRow kAutoLevel = FlagRow("auto_level", false,
                                            "On: the source range is measured, so that the darkest place becomes low "
                                            "and the brightest high. Off: it is the nominal range of the colour mode.");
constexpr AttributeRow kAttributes[] = {kLow, kHigh, kAutoLevel};

/// The declared range is that of a value image; what is measured falls back on it where the image is flat.
Reach FindReach(const Node& node, const std::vector<PlugValue>& inputs) {
  const bool measures = EvaluatedInputs(node, inputs).GetFlag(kAutoLevel);
  return Reach::Samples(measures ? Reach::Range::kMeasured : Reach::Range::kDeclared);
}

}  // namespace

constinit const NodeRecord ImageToValueNode::kRecord{
    .library = &kValueLibrary,
    .type_name = "ImageToValueNode",
    .display_name = "To Value",
    .type = NodeType(10, 320, 0),
    .icon = "ToValue",
    .group = "Values from images",
    .sentence = "Turns any image into one number per pixel and maps a range of these numbers onto low to high.",
    .keywords =
        "grayscale,greyscale,normalize,invert,negative,reverse,remap,rescale,monochrome,black and white,luminance,"
        "desaturate,convert,mask,height,auto levels,contrast,brightness,stretch,rgb,"
        "channel",
    .attributes = kAttributes,
    .inputs = kImagePlugs,
    .outputs = kImagePlugs,
    .reach = FindReach,
    .has_image = HasImageOfAnyInput,
    .run_test = [] { return true; },
};

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
