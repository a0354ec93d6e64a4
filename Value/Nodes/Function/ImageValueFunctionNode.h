// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Host/NodeKit/NodeKit.h"
#include "Value/Operations/ImageValueOperationNodes.h"

/// Applies one function of one variable to every value.
class ImageValueFunctionNode : public ImageValueOperationOneNode {
  NODEKIT_NODE(ImageValueFunctionNode)

 public:
  [[nodiscard]] ValueOperation* CreateValueOperation(const std::vector<PlugValue>& inputs) override;
};

NODEKIT_DESCRIPTOR(ImageValueFunctionNode)
