// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Host/NodeKit/NodeKit.h"
#include "Value/Operations/ImageValueOperationNodes.h"

/// Marks the pixels whose value lies near a centre, with a soft band of chosen shape.
class ImageValueRangeNode : public ImageValueOperationOneNode {
  NODEKIT_NODE(ImageValueRangeNode)

 public:
  [[nodiscard]] ValueOperation* CreateValueOperation(const std::vector<PlugValue>& inputs) override;
};

NODEKIT_DESCRIPTOR(ImageValueRangeNode)
