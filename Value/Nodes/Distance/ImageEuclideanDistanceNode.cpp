// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/Distance/ImageEuclideanDistanceNode.h"

#include "Host/Image/EuclideanDistance.h"
#include "Host/Image/Image.h"
#include "Value/Core/ValueLibrary.h"

namespace {

/// What separates a set pixel from one that is not.
constexpr float kLevel = 0.5F;

constexpr AttributeRow kSeamless =
    FlagRow("seamless", true, "Treats the image as a tile, so that distances also run across its borders.");
constexpr AttributeRow kNormalize =
    FlagRow("normalize", false, "Divides by the largest distance, so that the result goes from 0 to 1.");
constexpr AttributeRow kAttributes[] = {kSeamless, kNormalize};

/// Disabled, it hands on what it is given.
Scaling FindScaling(const Node& node) {
  const Attribute* normalize = node.GetAttribute(std::string(kNormalize.name));
  const bool is_share = normalize == nullptr || normalize->GetValue().GetFlag();
  return node.IsEnabled() && !is_share ? Scaling::kLengths : Scaling::kSame;
}

}  // namespace

constinit const NodeRecord ImageEuclideanDistanceNode::kRecord{
    .library = &kValueLibrary,
    .type_name = "ImageEuclideanDistanceNode",
    .display_name = "Distance",
    .type = NodeType(10, 288, 74),
    .icon = "Distance",
    .group = "Shape",
    .sentence = "Gives every pixel its distance to the nearest pixel of a shape.",
    .keywords =
        "distance transform,distance field,sdf,dilate,dilation,erode,erosion,grow,shrink,glow,euclidean,proximity,"
        "falloff,buffer,expand,thicken,contract,feather,outline,shore,coast",
    .attributes = kAttributes,
    .inputs = kImagePlugs,
    .outputs = kImagePlugs,
    .reach = ReachesImage,
    .has_image = HasImageOfAnyInput,
    .scaling = FindScaling,
};

void ImageEuclideanDistanceNode::Evaluate(unsigned, const std::vector<PlugValue>& inputs) {
  const EvaluatedInputs evaluated(*this, inputs);
  const Image* image = BeginEvaluation(*this, evaluated, output_);
  if (image == nullptr) return;
  const bool seamless = evaluated.GetFlag(kSeamless);
  const bool normalize = evaluated.GetFlag(kNormalize);
  output_.Set(EuclideanDistance(*image, kLevel, normalize, seamless));
}
