// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Host/NodeKit/NodeKit.h"

/// Labels regions whose neighbouring pixels differ by less than a tolerance.
class ImageConnectedComponentsNode : public Node {
  NODEKIT_NODE(ImageConnectedComponentsNode)
  NODEKIT_ONE_OUTPUT

 public:
  void Evaluate(unsigned evaluation, const std::vector<PlugValue>& inputs) override;
};

NODEKIT_DESCRIPTOR(ImageConnectedComponentsNode)
