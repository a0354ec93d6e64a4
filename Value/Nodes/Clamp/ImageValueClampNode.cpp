// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/Clamp/ImageValueClampNode.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "Host/Image/Image.h"
#include "Host/Image/PendingImage.h"
#include "Host/Image/Placement.h"
#include "Host/Util/ParallelRows.h"
#include "Value/Core/RowOperation.h"
#include "Value/Core/ValueLibrary.h"
#include "Value/Nodes/Clamp/Clamp.h"

namespace {

// Both limits are usually near zero, although they may be far from it.
constexpr double kLimitExponent = 2.0;

constexpr AttributeRow kClamp = ChoiceRow("clamp", 0, "both,low,high", "Which side is limited.");
constexpr AttributeRow kLow = NumberRow("low", 0.0, -10000.0, 10000.0, 0.01, 3,
                                        "The lower limit. What lies below it becomes flat ground at this value.")
                                  .WithSliderExponent(kLimitExponent)
                                  .OnlyWithWords(kClamp.name, "both,low");
constexpr AttributeRow kHigh = NumberRow("high", 0.0, -10000.0, 10000.0, 0.01, 3,
                                         "The upper limit. What lies above it becomes a flat top at this value.")
                                   .WithSliderExponent(kLimitExponent)
                                   .OnlyWithWords(kClamp.name, "both,high");
constexpr AttributeRow kProfile = ChoiceRow("profile", 0, "linear,smooth,perlin,arc_out,arc_in",
                                            "The curve between the limits, from low at its start to high at its end.");
constexpr AttributeRow kAttributes[] = {kClamp, kLow, kHigh, kProfile};

Reach FindReach(const Node& node, const std::vector<PlugValue>& inputs) {
  const Clamp::Sides sides = Clamp::GetSides(EvaluatedInputs(node, inputs).GetChoiceIndex(kClamp));
  const bool opens_a_side = sides != Clamp::Sides::kBoth;
  return Reach::Samples(opens_a_side ? Reach::Range::kMeasured : Reach::Range::kNone);
}

class ClampOperation : public RowOperation<ClampOperation> {
 public:
  ClampOperation(const Clamp::Limits& limits, Clamp::Profile profile) : profile_(profile) {
    a = limits.low;
    b = limits.high;
  }
  void Run(const float* values, float* to, std::size_t count) const {
    constexpr std::size_t kStride = 1;
    Clamp::Apply(values, kStride, to, count, {a, b}, profile_);
  }

 private:
  Clamp::Profile profile_;
};

const RowOperationLoops<ClampOperation> loops;

}  // namespace

constinit const NodeRecord ImageValueClampNode::kRecord{
    .library = &kValueLibrary,
    .type_name = "ImageValueClampNode",
    .display_name = "Value Clamp",
    .type = NodeType(10, 320, 42),
    .icon = "Clamp",
    .group = "Remapping",
    .sentence = "Limits values to a range, and can bend what lies inside it with a curve.",
    .keywords = "limit,cut,clip,truncate,crop values,contrast,levels,curve,smoothstep,flatten,plateau,sea level,dome",
    .attributes = kAttributes,
    .inputs = kImagePlugs,
    .outputs = kImagePlugs,
    .reach = FindReach,
    .has_image = HasImageOfAnyInputWhileEnabled,
    .joins = true,
    .run_test = [] { return false; },
};

std::string ImageValueClampNode::TranslateAttributeName(unsigned, const std::string& name) const {
  if (name == "min") return "low";
  return name == "max" ? "high" : name;
}

void ImageValueClampNode::Evaluate(unsigned, const std::vector<PlugValue>& inputs) {
  // Disabled, or without an image, the node keeps showing its last result.
  if (!IsEnabled()) return;
  const EvaluatedInputs evaluated(*this, inputs);
  const Image* image = evaluated.GetImage(0);
  if (image == nullptr) return;

  Clamp::Limits limits{evaluated.GetNumber(kLow), evaluated.GetNumber(kHigh)};
  const Clamp::Sides sides = Clamp::GetSides(evaluated.GetChoiceIndex(kClamp));
  const Clamp::Profile profile = Clamp::GetProfile(evaluated.GetChoiceIndex(kProfile));
  if (sides == Clamp::Sides::kBoth && image->GetColorMode() == ColorMode::kValue && ScEng::IsJoined(*image)) {
    output_.ReleaseAll();
    ClampOperation operation(limits, profile);
    output_.Set(ComputeRows(*image, operation, limits.low, limits.high));
    return;
  }

  auto* output = new Image(image->GetSizeX(), image->GetSizeY(), ColorMode::kValue, nullptr);
  output_.Set(output);
  ScEng::PlaceLike(*image, *output);

  const auto stride = static_cast<std::size_t>(image->GetNumChannels());
  const std::size_t pixels = output->GetNumSamples();
  float* const values = output->GetArray();
  if (sides == Clamp::Sides::kBoth && ScEng::IsPending(*image)) {
    // A piece stays in the cache from where it is computed to where it is read.
    constexpr std::size_t kPiece = 512;
    constexpr std::size_t kMostChannels = 4;
    constexpr std::size_t kGrain = 64 * kPiece;
    ScEng::ParallelRows(pixels, kGrain, [&](std::size_t from, std::size_t to) {
      std::array<float, kPiece * kMostChannels> buffer;
      for (; from < to; from += kPiece) {
        const std::size_t count = std::min(kPiece, to - from);
        const float* samples = ScEng::FetchSamples(*image, from * stride, count * stride, buffer.data());
        Clamp::Apply(samples, stride, values + from, count, limits, profile);
      }
    });
  } else {
    const ImagePtr settled = ScEng::Settle(*image);
    const float* samples = (settled ? settled.Get() : image)->GetConstArray();
    limits = Clamp::OpenSide(limits, sides, samples, stride, pixels);
    Clamp::Apply(samples, stride, values, pixels, limits, profile);
  }
  output->SetValueLowHigh(limits.low, limits.high);
}
