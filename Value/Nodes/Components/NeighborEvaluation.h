// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <vector>

#include "Host/Image/Image.h"
#include "Host/Image/Placement.h"
#include "Host/NodeKit/NodeKit.h"
#include "Host/Util/RefCounter.h"
#include "Host/Util/Status.h"
#include "Value/Nodes/Components/NeighborRule.h"

inline constexpr AttributeRow kNeighbors =
    ChoiceRow("neighbors", 0, "all,cross",
              "Which pixels count as neighbours: all eight around, or the four beside, above and below.");

inline PixelView ViewPixels(const Image& image) {
  return {image.GetConstArray(), static_cast<std::size_t>(image.GetSizeX()), static_cast<std::size_t>(image.GetSizeY()),
          static_cast<std::size_t>(image.GetNumChannels())};
}

/// The rule that these attributes and "neighbors" give for an image. The threshold counts in the image's value range.
inline NeighborRule ReadNeighborRule(const EvaluatedInputs& inputs, const Image& image, const AttributeRow& threshold,
                                     const AttributeRow& seamless) {
  return {.tolerance = (image.GetValueHigh() - image.GetValueLow()) * inputs.GetNumber(threshold),
          .neighbors = GetNeighbors(inputs.GetChoiceIndex(kNeighbors)),
          .seamless = inputs.GetFlag(seamless)};
}

/// The evaluation of Connected Components and Component Edges: a value image in place of the input, whose range
/// starts at 0.
///
/// `float compute(pixels, rule, samples, status)` writes the samples and returns the high end of the range. An error
/// that it leaves in the `ScEng::Status` becomes the node's; what it has written is the output all the same.
template <class Compute>
void EvaluateNeighbors(Node& node, unsigned evaluation, const std::vector<PlugValue>& inputs,
                       const AttributeRow& threshold, const AttributeRow& seamless, OutputImages<1>& output,
                       Compute compute) {
  const EvaluatedInputs evaluated(node, inputs);
  const Image* image = BeginEvaluation(node, evaluated, output);
  if (image == nullptr) return;
  const ScEng::RefPtr<Image> made(new Image(image->GetSizeX(), image->GetSizeY(), ColorMode::kValue, nullptr));
  ScEng::PlaceLike(*image, *made);
  ScEng::Status status;
  const NeighborRule rule = ReadNeighborRule(evaluated, *image, threshold, seamless);
  made->SetValueLowHigh(0.0F, compute(ViewPixels(*image), rule, made->GetArray(), status));
  output.Set(made.Get());
  if (status.IsError()) node.SetState(evaluation, Node::State::kError, status.GetMessage());
}
