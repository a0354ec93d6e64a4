// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/Compare/ImageValueCompareNode.h"

#include <algorithm>
#include <iterator>

#include "Host/Image/Image.h"
#include "Host/Image/Placement.h"
#include "Value/Core/ValueLibrary.h"
#include "Value/Nodes/Compare/Compare.h"

namespace {

// One hundred-thousandth is missing from the list, so the labels above the gap are ten times finer than their steps.
constexpr AttributeRow kPrecision =
    ChoiceRow("precision", 4,
              "0.0000000001,0.000000001,0.00000001,0.0000001,0.000001,0.0001,0.001,0.01,0.1,1.0,10.0,100.0,1000.0,"
              "10000.0,100000.0,1000000.0,10000000.0,100000000.0,1000000000.0",
              "The step that both images are rounded to before they are compared.")
        .OnlyWithImages(2);
constexpr AttributeRow kAttributes[] = {kPrecision};

struct OutputRow {
  const char* name;
  const char* alias;
  Compare::Relation relation;
};

constexpr OutputRow kOutputs[] = {
    {"image_a_l_b", "a < b", Compare::Relation::kLess},
    {"image_a_le_b", "a <= b", Compare::Relation::kLessEqual},
    {"image_a_eq_b", "a == b", Compare::Relation::kEqual},
    {"image_a_df_b", "a != b", Compare::Relation::kDifferent},
    {"image_a_ge_b", "a >= b", Compare::Relation::kGreaterEqual},
    {"image_a_g_b", "a > b", Compare::Relation::kGreater},
};

constexpr PlugRow kInputs[] = {ImagePlug("image_a"), ImagePlug("image_b")};

constexpr PlugRow kOutputPlugs[] = {ImagePlug(kOutputs[0].name), ImagePlug(kOutputs[1].name),
                                    ImagePlug(kOutputs[2].name), ImagePlug(kOutputs[3].name),
                                    ImagePlug(kOutputs[4].name), ImagePlug(kOutputs[5].name)};

}  // namespace

constinit const NodeRecord ImageValueCompareNode::kRecord{
    .library = &kValueLibrary,
    .type_name = "ImageValueCompareNode",
    .display_name = "Value Compare",
    .type = NodeType(10, 320, 37),
    .icon = "Compare",
    .group = "Masks",
    .sentence = "Compares two images with a chosen precision and gives six masks at once.",
    .keywords = "difference,equal,unequal,less,greater,lower,higher,change,diff,tolerance,threshold,mask",
    .attributes = kAttributes,
    .inputs = kInputs,
    .outputs = kOutputPlugs,
    .reach = ReachesSamples,
    .has_image = HasImageOfAnyInputWhileEnabled,
};

std::string ImageValueCompareNode::GetOutplugAlias(unsigned outplug) const {
  return outplug < std::size(kOutputs) ? kOutputs[outplug].alias : GetOutplugName(outplug);
}

void ImageValueCompareNode::Evaluate(unsigned evaluation, const std::vector<PlugValue>& inputs) {
  if (evaluation >= std::size(kOutputs)) return;
  outputs_.Release(evaluation);
  // Disabled, the node passes nothing through: no input is what a comparison would be.
  if (!IsEnabled()) return;
  const EvaluatedInputs evaluated(*this, inputs);
  const Image* a = evaluated.GetImage(0);
  const Image* b = evaluated.GetImage(1);
  if (a == nullptr && b == nullptr) return;

  constexpr float kZero = 0.0F;
  if (a == nullptr || b == nullptr) {
    const Image& present = a != nullptr ? *a : *b;
    auto* output = new Image(present.GetSizeX(), present.GetSizeY(), ColorMode::kValue, &kZero);
    outputs_.Set(evaluation, output);
    ScEng::PlaceLike(present, *output);
    return;
  }
  const ScEng::Box2I box = ScEng::Union(a->GetBox(), b->GetBox());
  auto* output = new Image(ScEng::PlaceOver(box, *a, ColorMode::kValue), nullptr);
  outputs_.Set(evaluation, output);
  if (a->GetColorMode() != b->GetColorMode()) {
    // Images of different colour modes do not compare.
    std::fill_n(output->GetArray(), output->GetNumSamples(), 0.0F);
    return;
  }
  const Compare::Rounding rounding(evaluated.GetChoiceIndex(kPrecision));
  Compare::Apply(*a, *b, rounding, kOutputs[evaluation].relation, box, output->GetArray());
}
