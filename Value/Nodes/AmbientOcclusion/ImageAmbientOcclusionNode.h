// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Host/NodeKit/NodeKit.h"

/// How open to light each point of a height image is, computed on a GPU.
class ImageAmbientOcclusionNode : public Node {
  NODEKIT_NODE(ImageAmbientOcclusionNode)
  NODEKIT_ONE_OUTPUT

 public:
  void Evaluate(unsigned evaluation, const std::vector<PlugValue>& inputs) override;
};

NODEKIT_DESCRIPTOR(ImageAmbientOcclusionNode)
