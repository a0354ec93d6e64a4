// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/ImageComputeGradientNode.h"

#include "Host/Image/Image.h"
#include "Value/Core/AttributeTable.h"
#include "Value/Core/EvaluatedInputs.h"
#include "Value/Core/EvaluationFrame.h"

namespace {

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

void ImageComputeGradientNode::Evaluate(unsigned evaluation, const std::vector<PlugValue>& inputs) {
  outputs_.ReleaseAll();
  const Image* image = EvaluatedInputs(*this, inputs).GetImage(0);
  if (image == nullptr) return;
  if (IsEnabled()) {
    ReportNoEvaluation(*this, evaluation);
    return;
  }
  constexpr float kZero = 0.0F;
  ImageHeader header = image->GetImageHeader();
  header.color_mode = ColorMode::kValue;
  outputs_.Set(0, new Image(header, &kZero));
  outputs_.Set(1, new Image(header, &kZero));
}
