// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/Range/ImageValueRangeNode.h"

#include "Value/Core/ValueLibrary.h"
#include "Value/Operations/ThresholdValueOperation.h"

namespace {

constexpr AttributeRow kCenter =
    NumberRow("center", 0.0, -10000.0, 10000.0, 0.01, 3, "The value in the middle of the selection.");
constexpr AttributeRow kSize =
    NumberRow("size", 0.0, 0.0, 10000.0, 0.01, 3, "How far around the centre the mask is fully 1, on both sides.");
constexpr AttributeRow kFalloff =
    NumberRow("falloff", 0.0, 0.0, 10000.0, 0.01, 3,
              "Over how much of a further difference the mask fades from 1 to 0, on both sides.");
constexpr AttributeRow kProfile =
    ChoiceRow("profile", 0, "linear,smooth,arc_out,arc_in", "The curve of the falloff.").OnlyAbove(kFalloff.name, 0.0);
constexpr AttributeRow kAttributes[] = {kCenter, kSize, kFalloff, kProfile};

}  // namespace

constinit const NodeRecord ImageValueRangeNode::kRecord{
    .library = &kValueLibrary,
    .type_name = "ImageValueRangeNode",
    .display_name = "Value Range",
    .type = NodeType(10, 320, 58),
    .icon = "Range",
    .group = "Masks",
    .sentence = "Makes a soft mask of the values around a centre.",
    .keywords =
        "select,band,isolate,altitude,elevation,height band,snow line,soft mask,luminosity "
        "mask,threshold,falloff,feather,glow",
    .attributes = kAttributes,
    .inputs = kImagePlugs,
    .outputs = kImagePlugs,
    .reach = ReachesSamples,
    .has_image = HasImageOfAnyInput,
    .joins = true,
};

ValueOperation* ImageValueRangeNode::CreateValueOperation(const std::vector<PlugValue>& inputs) {
  const EvaluatedInputs evaluated(*this, inputs);
  return new ThresholdValueOperation(evaluated.GetNumber(kCenter), evaluated.GetNumber(kSize),
                                     evaluated.GetNumber(kFalloff),
                                     ThresholdProfile::Get(evaluated.GetChoiceIndex(kProfile)));
}
