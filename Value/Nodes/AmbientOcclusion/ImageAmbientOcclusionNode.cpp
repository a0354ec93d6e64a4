// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/AmbientOcclusion/ImageAmbientOcclusionNode.h"

#include <algorithm>

#include "Host/Gpu/GpuEngine.h"
#include "Host/Util/Status.h"
#include "Value/Core/AttributeTable.h"
#include "Value/Core/EvaluatedInputs.h"
#include "Value/Core/EvaluationFrame.h"

namespace {

enum : unsigned { kRadius, kSeamless };

// Below the attribute's own minimum, so that only a plug without a value comes down to it.
constexpr float kLeastRadius = 2.5F;

constexpr AttributeRow kAttributes[] = {
    NumberRow("radius", 3.0, 3.0, 100.0, 1.0, 1),
    FlagRow("seamless", true),
};

}  // namespace

ImageAmbientOcclusionNode::ImageAmbientOcclusionNode() {
  DeclareAttributes(*this, attributes_, kAttributes);
  inplugs_ = {PlugRecord::Input(PlugType::kImage, "image")};
  outplugs_ = {PlugRecord::Output(PlugType::kImage, "image")};
  UpdateInplugsAndOutplugs();
}

NodeType ImageAmbientOcclusionNode::GetNodeType() const { return kNodeType<ImageAmbientOcclusionNode>; }
std::string ImageAmbientOcclusionNode::GetName() const { return kDisplayName<ImageAmbientOcclusionNode>; }

void ImageAmbientOcclusionNode::Evaluate(unsigned evaluation, const std::vector<PlugValue>& inputs) {
  const EvaluatedInputs evaluated(*this, inputs);
  const Image* image = BeginEvaluation(*this, evaluated, output_);
  if (image == nullptr) return;
  const float radius = std::max(kLeastRadius, evaluated.GetNumber(kRadius));
  const char border = evaluated.GetFlag(kSeamless) ? 'p' : 'b';
  ScEng::Status status;
  output_.Set(GpuEngine::Get()->ExecuteAmbientOcclusion(image, radius, border, status));
  if (status.IsError()) SetState(evaluation, State::kError, status.GetMessage());
}
