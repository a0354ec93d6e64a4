// SPDX-License-Identifier: Apache-2.0
#include "Value/Operations/ImageValueOperationNodes.h"

#include "Host/NodeKit/EvaluatedInputs.h"
#include "Host/NodeKit/EvaluationFrame.h"

namespace {

constexpr AttributeRow kConstant = ImageValueOperationManyNode::MakeConstantRow(0.0, "");
constexpr AttributeRow kManyAttributes[] = {kConstant};

// What the bases declare. A derived node declares itself again, from its own record.
constexpr NodeRecord kOneRecord{.inputs = kImagePlugs, .outputs = kImagePlugs};
constexpr NodeRecord kTwoRecord{.inputs = ImageValueOperationTwoNode::kInputs, .outputs = kImagePlugs};
constexpr NodeRecord kManyRecord{
    .attributes = kManyAttributes, .inputs = ImageValueOperationManyNode::kInputs, .outputs = kImagePlugs};

}  // namespace

ImageValueOperationOneNode::ImageValueOperationOneNode() { Declare(kOneRecord); }

void ImageValueOperationOneNode::Evaluate(unsigned evaluation, const std::vector<PlugValue>& inputs) {
  EvaluateOneImage(*this, evaluation, inputs, output_, [&] { return CreateValueOperation(inputs); });
}

ImageValueOperationTwoNode::ImageValueOperationTwoNode() { Declare(kTwoRecord); }

void ImageValueOperationTwoNode::Evaluate(unsigned evaluation, const std::vector<PlugValue>& inputs) {
  const EvaluatedInputs evaluated(*this, inputs);
  std::vector<const Image*> images;
  for (const unsigned input : {0U, 1U}) {
    if (const Image* image = evaluated.GetImage(input)) images.push_back(image);
  }
  constexpr std::size_t kLeast = 2;
  EvaluateImages(*this, evaluation, images, kLeast, output_, [&] { return CreateValueOperation(inputs); });
}

ImageValueOperationManyNode::ImageValueOperationManyNode() { Declare(kManyRecord); }

std::string ImageValueOperationManyNode::TranslateAttributeName(unsigned, const std::string& name) const {
  return name == "value" ? "constant" : name;
}

void ImageValueOperationManyNode::Evaluate(unsigned evaluation, const std::vector<PlugValue>& inputs) {
  const std::vector<const Image*> images = EvaluatedInputs(*this, inputs).GetImages();
  constexpr std::size_t kLeast = 1;
  EvaluateImages(*this, evaluation, images, kLeast, output_, [&] { return CreateValueOperation(inputs); });
}

float ImageValueOperationManyNode::ReadConstant(const std::vector<PlugValue>& inputs) const {
  return EvaluatedInputs(*this, inputs).GetNumber(kConstant);
}
