// SPDX-License-Identifier: Apache-2.0
#include "Value/Nodes/Steps/ImageValueStepsNode.h"

#include "Host/Image/Image.h"
#include "Host/Image/PendingImage.h"
#include "Host/Image/Placement.h"
#include "Value/Core/RowOperation.h"
#include "Value/Core/ValueLibrary.h"
#include "Value/Nodes/Steps/Steps.h"
#include "Value/SelfTests/SelfTests.h"

namespace {

constexpr AttributeRow kSteps = NumberRow("steps", 2.0, 2.0, 100000.0, 1.0, 0,
                                          "The number of levels, n: few make broad terraces, many make fine ones.");
constexpr AttributeRow kAttributes[] = {kSteps};

Reach FindReach(const Node&, const std::vector<PlugValue>&) { return Reach::Samples(Reach::Range::kDeclared); }

class StepsOperation : public RowOperation<StepsOperation> {
 public:
  StepsOperation(std::int32_t count, float low, float high) : count_(count) {
    a = low;
    b = high;
  }
  void Run(const float* values, float* to, std::size_t count) const {
    constexpr std::size_t kStride = 1;
    Steps::Quantize(values, kStride, to, count, count_, a, b);
  }

 private:
  std::int32_t count_;
};

const RowOperationLoops<StepsOperation> loops;

}  // namespace

constinit const NodeRecord ImageValueStepsNode::kRecord{
    .library = &kValueLibrary,
    .type_name = "ImageValueStepsNode",
    .display_name = "Value Steps",
    .type = NodeType(10, 320, 80),
    .icon = "Steps",
    .group = "Remapping",
    .sentence = "Rounds values to a number of equally spaced levels of the declared range.",
    .keywords = "posterize,quantize,discretize,terrace,strata,layers,contour,bands,levels,stairs,toon",
    .attributes = kAttributes,
    .inputs = kImagePlugs,
    .outputs = kImagePlugs,
    .reach = FindReach,
    .has_image = HasImageOfAnyInputWhileEnabled,
    .joins = true,
    .run_test = SelfTests::RunAbsolute,
};

void ImageValueStepsNode::Evaluate(unsigned, const std::vector<PlugValue>& inputs) {
  // Disabled, or without an image, the node keeps showing its last result.
  if (!IsEnabled()) return;
  const EvaluatedInputs evaluated(*this, inputs);
  const Image* image = evaluated.GetImage(0);
  if (image == nullptr) return;

  const std::int32_t count = Steps::GetCount(evaluated.GetNumber(kSteps));
  const float low = image->GetValueLow();
  const float high = image->GetValueHigh();
  if (image->GetColorMode() == ColorMode::kValue && ScEng::IsJoined(*image)) {
    output_.ReleaseAll();
    StepsOperation operation(count, low, high);
    output_.Set(ComputeRows(*image, operation, low, high));
    return;
  }

  auto* output = new Image(image->GetSizeX(), image->GetSizeY(), ColorMode::kValue, nullptr);
  output_.Set(output);
  ScEng::PlaceLike(*image, *output);
  output->SetValueLowHigh(low, high);
  Steps::Quantize(image->GetConstArray(), static_cast<std::size_t>(image->GetNumChannels()), output->GetArray(),
                  output->GetNumSamples(), count, low, high);
}
