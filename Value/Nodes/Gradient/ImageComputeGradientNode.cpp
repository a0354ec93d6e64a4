// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/Gradient/ImageComputeGradientNode.h"

#include <optional>

#include "Host/Image/Gradient.h"
#include "Host/Image/Image.h"
#include "Value/Core/ValueLibrary.h"

namespace {

enum : std::size_t { kOutputX, kOutputY };

constexpr AttributeRow kSeamless =
    FlagRow("seamless", true, "Treats the image as a tile: at the border the neighbour on the opposite side counts.");
constexpr AttributeRow kAttributes[] = {kSeamless};

constexpr PlugRow kOutputs[] = {ImagePlug("output_x"), ImagePlug("output_y")};

Reach FindReach(const Node& node, const std::vector<PlugValue>& inputs) {
  return Reach::Rows(1, EvaluatedInputs(node, inputs).GetFlag(kSeamless));
}

}  // namespace

constinit const NodeRecord ImageComputeGradientNode::kRecord{
    .library = &kValueLibrary,
    .type_name = "ImageComputeGradientNode",
    .display_name = "Value Gradient",
    .type = NodeType(10, 320, 48),
    .icon = "Gradient",
    .group = "Shape",
    .sentence = "Gives the slope of a value image along x and along y.",
    .keywords = "slope,derivative,normal,sobel,steepness,incline,edge",
    .attributes = kAttributes,
    .inputs = kImagePlugs,
    .outputs = kOutputs,
    .reach = FindReach,
};

void ImageComputeGradientNode::Evaluate(unsigned, const std::vector<PlugValue>& inputs) {
  outputs_.ReleaseAll();
  const EvaluatedInputs evaluated(*this, inputs);
  const Image* image = evaluated.GetImage(0);
  if (image == nullptr) return;
  if (!IsEnabled()) {
    constexpr float kZero = 0.0F;
    ImageHeader header = image->GetImageHeader();
    header.color_mode = ColorMode::kValue;
    outputs_.Set(kOutputX, new Image(header, &kZero));
    outputs_.Set(kOutputY, new Image(header, &kZero));
    return;
  }
  std::optional<Image> converted;
  if (image->GetColorMode() != ColorMode::kValue) image = &converted.emplace(*image, ColorMode::kValue);
  outputs_.Set(kOutputX, new Image(image->GetImageHeader(), nullptr));
  outputs_.Set(kOutputY, new Image(image->GetImageHeader(), nullptr));
  ImageValue::Gradient(*image, *outputs_.Get(kOutputX), *outputs_.Get(kOutputY), evaluated.GetFlag(kSeamless));
}
