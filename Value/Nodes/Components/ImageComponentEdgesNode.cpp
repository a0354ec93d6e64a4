// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/Components/ImageComponentEdgesNode.h"

#include "Value/Core/ValueLibrary.h"
#include "Value/Nodes/Components/ComponentEdges.h"
#include "Value/Nodes/Components/NeighborEvaluation.h"

namespace {

constexpr AttributeRow kThreshold = NumberRow(
    "threshold", 0.1, 0.0, 1.0, 0.01, 3,
    "How much a pixel may differ from a neighbour without being an edge, as a fraction of the declared range.");
constexpr AttributeRow kSeamless =
    FlagRow("seamless", true, "Treats the image as a tile, so that opposite borders are compared too.");
constexpr AttributeRow kInvert =
    FlagRow("invert", true, "On: edges are 0 (black) on a background of 1. Off: edges are 1 on 0.");
constexpr AttributeRow kAttributes[] = {kThreshold, kNeighbors, kSeamless, kInvert};

/// Without "seamless", the neighbour of a pixel in the first or last column is at the far end of the adjacent row, so
/// that a diagonal one lies two rows away.
Reach FindReach(const Node& node, const std::vector<PlugValue>& inputs) {
  const bool seamless = EvaluatedInputs(node, inputs).GetFlag(kSeamless);
  return Reach::Rows(seamless ? 1 : 2, seamless, Reach::Range::kDeclared);
}

}  // namespace

constinit const NodeRecord ImageComponentEdgesNode::kRecord{
    .library = &kValueLibrary,
    .type_name = "ImageComponentEdgesNode",
    .display_name = "Component Edges",
    .type = NodeType(10, 320, 106),
    .icon = "ComponentEdges",
    .group = "Shape",
    .sentence = "Draws the borders between regions of different value.",
    .keywords = "edge,outline,border,boundary,contour,isoline,coastline,line,stroke,detect edges,ink",
    .attributes = kAttributes,
    .inputs = kImagePlugs,
    .outputs = kImagePlugs,
    .reach = FindReach,
    .has_image = HasImageOfAnyInput,
};

void ImageComponentEdgesNode::Evaluate(unsigned evaluation, const std::vector<PlugValue>& inputs) {
  const bool invert = EvaluatedInputs(*this, inputs).GetFlag(kInvert);
  const ComponentEdges::Marks marks = invert ? ComponentEdges::Marks{1.0F, 0.0F} : ComponentEdges::Marks{0.0F, 1.0F};
  EvaluateNeighbors(*this, evaluation, inputs, kThreshold, kSeamless, output_,
                    [&marks](const PixelView& pixels, const NeighborRule& rule, float* marked, ScEng::Status&) {
                      ComponentEdges::Mark(pixels, rule, marks, marked);
                      return 1.0F;
                    });
}
