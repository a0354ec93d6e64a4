// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <vector>

#include "Host/Image/Oversize.h"
#include "Value/Core/EvaluatedInputs.h"
#include "Value/Core/OutputImages.h"

using ScEng::kOversizeMessage;

/// The start of an evaluation that most nodes share: the cached images go first, so that a failed evaluation leaves no
/// stale result; without an input image there is nothing to do; a disabled node passes a copy of its input through.
///
/// Returns the image to compute from, or null when the evaluation has ended here. Clamp, Steps and Compare treat a
/// disabled node in their own way and do not use this.
template <std::size_t kCount>
const Image* BeginEvaluation(const Node& node, const EvaluatedInputs& inputs, OutputImages<kCount>& outputs) {
  outputs.ReleaseAll();
  const Image* image = inputs.GetImage(0);
  if (image == nullptr) return nullptr;
  if (node.IsEnabled()) return image;
  outputs.Set(new Image(*image));
  return nullptr;
}

/// The end of an evaluation by `ComputeValue`: its result becomes the output, or the node's state the one error.
template <std::size_t kCount>
void FinishEvaluation(Node& node, unsigned evaluation, Image* result, OutputImages<kCount>& outputs) {
  outputs.Set(result);
  if (result == nullptr) node.SetState(evaluation, Node::State::kError, kOversizeMessage);
}
