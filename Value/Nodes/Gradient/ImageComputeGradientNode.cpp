// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/Gradient/ImageComputeGradientNode.h"

#include <optional>

#include "Host/Image/Gradient.h"
#include "Host/Image/Image.h"
#include "Value/Core/AttributeTable.h"
#include "Value/Core/EvaluatedInputs.h"

namespace {

enum : unsigned { kSeamless };
enum : std::size_t { kOutputX, kOutputY };

constexpr AttributeRow kAttributes[] = {
    FlagRow("seamless", true),
};

}  // namespace

ImageComputeGradientNode::ImageComputeGradientNode() {
  DeclareAttributes(*this, attributes_, kAttributes);
  inplugs_ = {PlugRecord::Input(PlugType::kImage, "image")};
  outplugs_ = {PlugRecord::Output(PlugType::kImage, "output_x"), PlugRecord::Output(PlugType::kImage, "output_y")};
  UpdateInplugsAndOutplugs();
}

NodeType ImageComputeGradientNode::GetNodeType() const { return kNodeType<ImageComputeGradientNode>; }
std::string ImageComputeGradientNode::GetName() const { return kDisplayName<ImageComputeGradientNode>; }

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
