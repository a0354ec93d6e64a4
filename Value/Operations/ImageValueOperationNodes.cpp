// SPDX-License-Identifier: Apache-2.0
#include "Value/Operations/ImageValueOperationNodes.h"

#include "Host/Image/ComputeValue.h"
#include "Value/Core/AttributeTable.h"
#include "Value/Core/EvaluatedInputs.h"
#include "Value/Core/EvaluationFrame.h"

namespace {

enum : unsigned { kConstant };

constexpr AttributeRow kManyAttributes[] = {
    // The step is the single-precision 0.01.
    NumberRow("constant", 0.0, -1e9, 1e9, static_cast<double>(0.01F), 3),
};

}  // namespace

ImageValueOperationOneNode::ImageValueOperationOneNode() {
  inplugs_ = {PlugRecord::Input(PlugType::kImage, "image")};
  outplugs_ = {PlugRecord::Output(PlugType::kImage, "image")};
}

void ImageValueOperationOneNode::Evaluate(unsigned evaluation, const std::vector<PlugValue>& inputs) {
  const Image* image = BeginEvaluation(*this, EvaluatedInputs(*this, inputs), output_);
  if (image == nullptr) return;
  const ValueOperationPtr operation(CreateValueOperation(inputs));
  FinishEvaluation(*this, evaluation, ComputeValue(image, operation.get()), output_);
}

ImageValueOperationTwoNode::ImageValueOperationTwoNode() {
  inplugs_ = {PlugRecord::Input(PlugType::kImage, "image_a"), PlugRecord::Input(PlugType::kImage, "image_b")};
  outplugs_ = {PlugRecord::Output(PlugType::kImage, "image")};
}

void ImageValueOperationTwoNode::Evaluate(unsigned evaluation, const std::vector<PlugValue>& inputs) {
  output_.ReleaseAll();
  const EvaluatedInputs evaluated(*this, inputs);
  std::vector<const Image*> images;
  for (const unsigned input : {0U, 1U}) {
    if (const Image* image = evaluated.GetImage(input)) images.push_back(image);
  }
  if (images.empty()) return;
  if (!IsEnabled() || images.size() == 1) {
    output_.Set(new Image(*images.front()));
    return;
  }
  const ValueOperationPtr operation(CreateValueOperation(inputs));
  FinishEvaluation(*this, evaluation, ComputeValue(images, operation.get()), output_);
}

ImageValueOperationManyNode::ImageValueOperationManyNode() {
  DeclareAttributes(*this, attributes_, kManyAttributes);
  inplugs_ = {PlugRecord::MultipleInput(PlugType::kImage, "image")};
  outplugs_ = {PlugRecord::Output(PlugType::kImage, "image")};
}

std::string ImageValueOperationManyNode::TranslateAttributeName(unsigned, const std::string& name) const {
  return name == "value" ? "constant" : name;
}

void ImageValueOperationManyNode::Evaluate(unsigned evaluation, const std::vector<PlugValue>& inputs) {
  output_.ReleaseAll();
  std::vector<const Image*> images;
  for (const PlugValue& input : inputs) {
    const Image* image = input.GetImage();
    if (image != nullptr && image->GetSizeX() >= 1 && image->GetSizeY() >= 1) images.push_back(image);
  }
  if (images.empty()) return;
  if (!IsEnabled()) {
    output_.Set(new Image(*images.front()));
    return;
  }
  const ValueOperationPtr operation(CreateValueOperation(inputs));
  FinishEvaluation(*this, evaluation, ComputeValue(images, operation.get()), output_);
}

float ImageValueOperationManyNode::ReadConstant(const std::vector<PlugValue>& inputs) const {
  return EvaluatedInputs(*this, inputs).GetNumber(kConstant);
}
