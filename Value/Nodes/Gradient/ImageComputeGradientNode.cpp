// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/Gradient/ImageComputeGradientNode.h"

#include <memory>
#include <optional>
#include <utility>

#include "Host/Image/Gradient.h"
#include "Host/Image/Image.h"
#include "Value/Core/AttributeTable.h"
#include "Value/Core/EvaluatedInputs.h"

namespace {

enum : unsigned { kSeamless };
enum : std::size_t { kOutputX, kOutputY };

using OutputImage = std::unique_ptr<Image>;

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
  // Nothing is cached before both images are complete: where one of them cannot be made, neither is shown.
  const auto cache = [this](OutputImage x, OutputImage y) {
    outputs_.Set(kOutputX, x.release());
    outputs_.Set(kOutputY, y.release());
  };
  if (!IsEnabled()) {
    constexpr float kZero = 0.0F;
    ImageHeader header = image->GetImageHeader();
    header.color_mode = ColorMode::kValue;
    cache(std::make_unique<Image>(header, &kZero), std::make_unique<Image>(header, &kZero));
    return;
  }
  std::optional<Image> converted;
  if (image->GetColorMode() != ColorMode::kValue) image = &converted.emplace(*image, ColorMode::kValue);
  auto x = std::make_unique<Image>(image->GetImageHeader(), nullptr);
  auto y = std::make_unique<Image>(image->GetImageHeader(), nullptr);
  ImageValue::Gradient(*image, *x, *y, evaluated.GetFlag(kSeamless));
  cache(std::move(x), std::move(y));
}
