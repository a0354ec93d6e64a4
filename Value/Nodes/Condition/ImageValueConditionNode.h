// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Host/NodeKit/NodeKit.h"
#include "Value/Operations/ImageValueOperationNodes.h"

/// Turns an image into a mask: 1.0 where the chosen test on the value holds, else 0.0.
class ImageValueConditionNode : public ImageValueOperationOneNode {
  NODEKIT_NODE(ImageValueConditionNode)

 public:
  [[nodiscard]] ValueOperation* CreateValueOperation(const std::vector<PlugValue>& inputs) override;
};

NODEKIT_DESCRIPTOR(ImageValueConditionNode)
