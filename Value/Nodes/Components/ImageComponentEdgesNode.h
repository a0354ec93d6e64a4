// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Host/NodeKit/NodeKit.h"

/// Marks the pixels that differ from a neighbour by more than a tolerance.
class ImageComponentEdgesNode : public Node {
  NODEKIT_NODE(ImageComponentEdgesNode)
  NODEKIT_ONE_OUTPUT

 public:
  void Evaluate(unsigned evaluation, const std::vector<PlugValue>& inputs) override;
};

NODEKIT_DESCRIPTOR(ImageComponentEdgesNode)
