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

/// Disabled, it is flat.
Scaling FindScaling(const Node& node) { return node.IsEnabled() ? Scaling::kSlopes : Scaling::kSame; }

}  // namespace

constinit const NodeRecord ImageComputeGradientNode::kRecord{
    .library = &kValueLibrary,
    .type_name = "ImageComputeGradientNode",
    .display_name = "Value Gradient",
    .type = NodeType(10, 320, 48),
    .icon = "Gradient",
    .group = "Shape",
    .sentence = "Gives the slope of a value image along x and along y.",
    .keywords = "slope,derivative,normal,sobel,steep,steepness,cliff,incline,tilt,edge,hillshade,shaded relief",
    .attributes = kAttributes,
    .inputs = kImagePlugs,
    .outputs = kOutputs,
    .reach = FindReach,
    .has_image = HasImageOfAnyInput,
    .scaling = FindScaling,
};

void ImageComputeGradientNode::Evaluate(unsigned, const std::vector<PlugValue>& inputs) {
  outputs_.ReleaseAll();
  const EvaluatedInputs evaluated(*this, inputs);
  const Image* image = evaluated.GetImage(0);
  if (image == nullptr) return;
  // Nothing is cached before both images are complete: where one of them cannot be made, neither is shown.
  const auto cache = [this](const ImagePtr& x, const ImagePtr& y) {
    outputs_.Set(kOutputX, x.Get());
    outputs_.Set(kOutputY, y.Get());
  };
  if (!IsEnabled()) {
    constexpr float kZero = 0.0F;
    ImageHeader header = image->GetImageHeader();
    header.color_mode = ColorMode::kValue;
    cache(ScEng::MakeRef<Image>(header, &kZero), ScEng::MakeRef<Image>(header, &kZero));
    return;
  }
  std::optional<Image> converted;
  if (image->GetColorMode() != ColorMode::kValue) image = &converted.emplace(*image, ColorMode::kValue);
  auto x = ScEng::MakeRef<Image>(image->GetImageHeader(), nullptr);
  auto y = ScEng::MakeRef<Image>(image->GetImageHeader(), nullptr);
  ImageValue::Gradient(*image, *x, *y, evaluated.GetFlag(kSeamless));
  cache(x, y);
}
