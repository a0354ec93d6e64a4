// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/Components/ImageConnectedComponentsNode.h"

#include "Value/Core/ValueLibrary.h"
#include "Value/Nodes/Components/ComponentLabels.h"
#include "Value/Nodes/Components/NeighborEvaluation.h"

namespace {

constexpr AttributeRow kThreshold = NumberRow(
    "threshold", 0.1, 0.0, 1.0, 0.01, 3,
    "How much neighbouring pixels may differ and still belong together, as a fraction of the declared range.");
constexpr AttributeRow kSeamless =
    FlagRow("seamless", true, "Treats the image as a tile, so that regions join across its borders.");
constexpr AttributeRow kAttributes[] = {kThreshold, kNeighbors, kSeamless};

Reach FindReach(const Node&, const std::vector<PlugValue>&) { return Reach::Image(Reach::Range::kDeclared); }

}  // namespace

constinit const NodeRecord ImageConnectedComponentsNode::kRecord{
    .library = &kValueLibrary,
    .type_name = "ImageConnectedComponentsNode",
    .display_name = "Connected Components",
    .type = NodeType(10, 320, 101),
    .icon = "ConnectedComponents",
    .group = "Shape",
    .sentence = "Numbers the connected regions of an image.",
    .keywords = "label,region,segment,separate,island,lake,patch,cluster,count,number,flood fill,blob",
    .attributes = kAttributes,
    .inputs = kImagePlugs,
    .outputs = kImagePlugs,
    .reach = FindReach,
    .has_image = HasImageOfAnyInput,
};

void ImageConnectedComponentsNode::Evaluate(unsigned evaluation, const std::vector<PlugValue>& inputs) {
  EvaluateNeighbors(*this, evaluation, inputs, kThreshold, kSeamless, output_,
                    [](const PixelView& pixels, const NeighborRule& rule, float* labels, ScEng::Status&) {
                      return ComponentLabels::Label(pixels, rule, labels) - 1.0F;
                    });
}
