// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Host/NodeKit/NodeKit.h"

/// The Euclidean distance of every pixel, in pixels, to the nearest one whose value is above 0.5. "seamless" measures
/// across the image's borders, "normalize" divides by the largest distance.
///
/// Where the distances cannot be allocated there is no output, and no error.
class ImageEuclideanDistanceNode : public Node {
  NODEKIT_NODE(ImageEuclideanDistanceNode)
  NODEKIT_ONE_OUTPUT

 public:
  void Evaluate(unsigned evaluation, const std::vector<PlugValue>& inputs) override;
};

NODEKIT_DESCRIPTOR(ImageEuclideanDistanceNode)
