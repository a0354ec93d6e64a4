// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Host/NodeKit/NodeKit.h"

/// Reads an image file.
class ImageReaderNode : public Node {
  NODEKIT_NODE(ImageReaderNode)
  NODEKIT_ONE_OUTPUT

 public:
  void Evaluate(unsigned evaluation, const std::vector<PlugValue>& inputs) override;
};
