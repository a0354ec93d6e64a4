// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>

#include "Host/Image/Image.h"
#include "Host/NodeKit/EvaluatedInputs.h"
#include "Value/Nodes/Components/NeighborRule.h"

inline PixelView ViewPixels(const Image& image) {
  return {image.GetConstArray(), static_cast<std::size_t>(image.GetSizeX()), static_cast<std::size_t>(image.GetSizeY()),
          static_cast<std::size_t>(image.GetNumChannels())};
}

inline constexpr AttributeRow kNeighbors =
    ChoiceRow("neighbors", 0, "all,cross",
              "Which pixels count as neighbours: all eight around, or the four beside, above and below.");

/// The rule that these attributes and "neighbors" give for an image. The threshold counts in the image's value range. A
/// choice of neighbours that is not in the list counts as "all".
inline NeighborRule ReadNeighborRule(const EvaluatedInputs& inputs, const Image& image, const AttributeRow& threshold,
                                     const AttributeRow& seamless) {
  constexpr int kCross = 1;
  NeighborRule rule;
  rule.tolerance = (image.GetValueHigh() - image.GetValueLow()) * inputs.GetNumber(threshold);
  rule.cross = inputs.GetChoiceIndex(kNeighbors) == kCross;
  rule.seamless = inputs.GetFlag(seamless);
  return rule;
}
