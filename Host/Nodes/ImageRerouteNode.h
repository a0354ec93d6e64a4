// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vector>

#include "Host/NodeKit/NodeKit.h"

/// Hands its input image on: the image itself, not a copy, whether the node is enabled or not. A place to lead wires
/// round other nodes.
class ImageRerouteNode : public Node {
  NODEKIT_NODE(ImageRerouteNode)
  NODEKIT_ONE_OUTPUT

 public:
  void Evaluate(unsigned evaluation, const std::vector<PlugValue>& inputs) override;
};
