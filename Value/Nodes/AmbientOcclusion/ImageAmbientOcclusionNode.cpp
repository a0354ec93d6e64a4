// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/AmbientOcclusion/ImageAmbientOcclusionNode.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "Host/Gpu/GpuEngine.h"
#include "Host/Util/Status.h"
#include "Value/Core/ValueLibrary.h"

namespace {

// Below the attribute's own minimum, so that only a plug without a value comes down to it.
constexpr float kLeastRadius = 2.5F;

constexpr AttributeRow kRadius =
    NumberRow("radius", 3.0, 3.0, 100.0, 1.0, 1,
              "How far the surroundings are looked at, and how high the declared range of the image stands.")
        .WithUnit("px");
constexpr AttributeRow kSeamless = FlagRow(
    "seamless", true, "Treats the image as a tile, so that hills beyond a border are those of the opposite side.");
constexpr AttributeRow kAttributes[] = {kRadius, kSeamless};

/// The farthest look is between two rows, of which it reads both.
Reach FindReach(const Node& node, const std::vector<PlugValue>& inputs) {
  const EvaluatedInputs evaluated(node, inputs);
  const float radius_px = std::max(kLeastRadius, evaluated.GetNumber(kRadius));
  const double rows = std::min(std::floor(static_cast<double>(radius_px)) + 1.0, 1e15);
  return Reach::Rows(static_cast<std::int64_t>(rows), evaluated.GetFlag(kSeamless), Reach::Range::kDeclared);
}

}  // namespace

constinit const NodeRecord ImageAmbientOcclusionNode::kRecord{
    .library = &kValueLibrary,
    .type_name = "ImageAmbientOcclusionNode",
    .display_name = "Ambient Occlusion",
    .type = NodeType(10, 320, 85),
    .icon = "AmbientOcclusion",
    .group = "Shape",
    .sentence = "Shades a height field by how much of the sky each place sees.",
    .keywords = "ao,shadow,shade,crevice,cavity,valley,light,sky,hollow,dirt,weathering,hillshade",
    .attributes = kAttributes,
    .inputs = kImagePlugs,
    .outputs = kImagePlugs,
    .reach = FindReach,
    .has_image = HasImageOfAnyInput,
    .scaling = ScalesAsPicture,
};

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
