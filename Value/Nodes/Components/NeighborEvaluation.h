// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <vector>

#include "Host/Image/Image.h"
#include "Host/Util/RefCounter.h"
#include "Host/Util/Status.h"
#include "Value/Core/EvaluatedInputs.h"
#include "Value/Core/EvaluationFrame.h"
#include "Value/Core/OutputImages.h"
#include "Value/Nodes/Components/NeighborRule.h"

/// The ids of the attributes that make up a `NeighborRule`.
struct NeighborIds {
  unsigned threshold;
  unsigned neighbors;
  unsigned seamless;
};

inline PixelView ViewPixels(const Image& image) {
  return {image.GetConstArray(), static_cast<std::size_t>(image.GetSizeX()), static_cast<std::size_t>(image.GetSizeY()),
          static_cast<std::size_t>(image.GetNumChannels())};
}

/// The rule that the attributes give for an image. The threshold counts in the image's value range.
inline NeighborRule ReadNeighborRule(const EvaluatedInputs& inputs, const Image& image, const NeighborIds& ids) {
  return {.tolerance = (image.GetValueHigh() - image.GetValueLow()) * inputs.GetNumber(ids.threshold),
          .neighbors = GetNeighbors(inputs.GetChoiceIndex(ids.neighbors)),
          .seamless = inputs.GetFlag(ids.seamless)};
}

/// The evaluation of Connected Components and Component Edges: a value image in the place of the input, whose range
/// starts at 0.
///
/// `float compute(pixels, rule, samples, status)` writes the samples and returns the high end of the range. An error
/// that it leaves in the `ScEng::Status` becomes the node's; what it has written is the output all the same.
template <class Compute>
void EvaluateNeighbors(Node& node, unsigned evaluation, const std::vector<PlugValue>& inputs, const NeighborIds& ids,
                       OutputImages<1>& output, Compute compute) {
  const EvaluatedInputs evaluated(node, inputs);
  const Image* image = BeginEvaluation(node, evaluated, output);
  if (image == nullptr) return;
  const ScEng::RefPtr<Image> made(new Image(image->GetSizeX(), image->GetSizeY(), ColorMode::kValue, nullptr));
  made->SetPin(image->GetPinX(), image->GetPinY());
  made->SetPivot(image->GetPivotX(), image->GetPivotY());
  ScEng::Status status;
  const NeighborRule rule = ReadNeighborRule(evaluated, *image, ids);
  made->SetValueLowHigh(0.0F, compute(ViewPixels(*image), rule, made->GetArray(), status));
  output.Set(made.Get());
  if (status.IsError()) node.SetState(evaluation, Node::State::kError, status.GetMessage());
}
