// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/Distance/ImageEuclideanDistanceNode.h"

#include "Host/Image/EuclideanDistance.h"
#include "Host/Image/Image.h"
#include "Value/Core/AttributeTable.h"
#include "Value/Core/EvaluatedInputs.h"
#include "Value/Core/EvaluationFrame.h"

namespace {

enum : unsigned { kSeamless, kNormalize };

/// What separates a set pixel from one that is not.
constexpr float kLevel = 0.5F;

constexpr AttributeRow kAttributes[] = {
    FlagRow("seamless", true),
    FlagRow("normalize", false),
};

}  // namespace

ImageEuclideanDistanceNode::ImageEuclideanDistanceNode() {
  DeclareAttributes(*this, attributes_, kAttributes);
  inplugs_ = {PlugRecord::Input(PlugType::kImage, "image")};
  outplugs_ = {PlugRecord::Output(PlugType::kImage, "image")};
  UpdateInplugsAndOutplugs();
}

NodeType ImageEuclideanDistanceNode::GetNodeType() const { return kNodeType<ImageEuclideanDistanceNode>; }
std::string ImageEuclideanDistanceNode::GetName() const { return kDisplayName<ImageEuclideanDistanceNode>; }

void ImageEuclideanDistanceNode::Evaluate(unsigned, const std::vector<PlugValue>& inputs) {
  const EvaluatedInputs evaluated(*this, inputs);
  const Image* image = BeginEvaluation(*this, evaluated, output_);
  if (image == nullptr) return;
  const bool seamless = evaluated.GetFlag(kSeamless);
  const bool normalize = evaluated.GetFlag(kNormalize);
  output_.Set(EuclideanDistance(*image, kLevel, normalize, seamless));
}
