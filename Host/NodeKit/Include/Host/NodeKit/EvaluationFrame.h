// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <vector>

#include "Host/Image/ComputeValue.h"
#include "Host/Image/Oversize.h"
#include "Host/Image/ValueOperation.h"
#include "Host/NodeKit/EvaluatedInputs.h"
#include "Host/NodeKit/OutputImages.h"

/// The start of an evaluation that most nodes share: the cached images go first, so that a failed evaluation leaves no
/// stale result; without an input image there is nothing to do; a disabled node passes a copy of its input through.
///
/// Returns the image to compute from, or null when the evaluation has ended here.
template <std::size_t kCount>
const Image* BeginEvaluation(const Node& node, const EvaluatedInputs& inputs, OutputImages<kCount>& outputs) {
  outputs.ReleaseAll();
  const Image* image = inputs.GetImage();
  if (image == nullptr) return nullptr;
  if (node.IsEnabled()) return image;
  outputs.Set(new Image(*image));
  return nullptr;
}

/// The end of an evaluation whose result may be missing because it is too large: it becomes the output, or the node's
/// state the one error.
template <std::size_t kCount>
void FinishEvaluation(Node& node, unsigned evaluation, Image* result, OutputImages<kCount>& outputs) {
  outputs.Set(result);
  if (result == nullptr) node.SetState(evaluation, Node::State::kError, ScEng::kOversizeMessage);
}

/// A whole evaluation that applies a value operation to the one input image. `make_operation()` returns a new operation
/// or null; it is called where there is something to compute, and what it returns is freed here.
template <class MakeOperation>
void EvaluateOneImage(Node& node, unsigned evaluation, const std::vector<PlugValue>& inputs, OutputImages<1>& output,
                      MakeOperation make_operation) {
  const Image* image = BeginEvaluation(node, EvaluatedInputs(node, inputs), output);
  if (image == nullptr) return;
  const ValueOperationPtr operation(make_operation());
  FinishEvaluation(node, evaluation, ComputeValue(image, operation.get()), output);
}

/// A whole evaluation that folds images with a value operation, from the first to the last; a disabled node passes a
/// copy of the first through. With fewer than `least` images (1 or 2) the first is passed through as well; without any
/// there is no output.
template <class MakeOperation>
void EvaluateImages(Node& node, unsigned evaluation, const std::vector<const Image*>& images, std::size_t least,
                    OutputImages<1>& output, MakeOperation make_operation) {
  output.ReleaseAll();
  if (images.empty()) return;
  if (!node.IsEnabled() || images.size() < least) {
    output.Set(new Image(*images.front()));
    return;
  }
  const ValueOperationPtr operation(make_operation());
  FinishEvaluation(node, evaluation, ComputeValue(images, operation.get()), output);
}
