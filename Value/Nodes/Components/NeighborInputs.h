// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>

#include "Host/Image/Image.h"
#include "Value/Core/EvaluatedInputs.h"
#include "Value/Nodes/Components/NeighborRule.h"

inline PixelView ViewPixels(const Image& image) {
  return {image.GetConstArray(), static_cast<std::size_t>(image.GetSizeX()), static_cast<std::size_t>(image.GetSizeY()),
          static_cast<std::size_t>(image.GetNumChannels())};
}

/// The rule that the attributes with these ids give for an image. The threshold counts in the image's value range. A
/// choice of neighbours that is not in the list counts as "all".
inline NeighborRule ReadNeighborRule(const EvaluatedInputs& inputs, const Image& image, unsigned threshold,
                                     unsigned neighbors, unsigned seamless) {
  constexpr int kCross = 1;
  NeighborRule rule;
  rule.tolerance = (image.GetValueHigh() - image.GetValueLow()) * inputs.GetNumber(threshold);
  rule.cross = inputs.GetChoiceIndex(neighbors) == kCross;
  rule.seamless = inputs.GetFlag(seamless);
  return rule;
}
