// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Host/NodeKit/NodeKit.h"
#include "Value/Operations/ImageValueOperationNodes.h"

/// Turns an image into a mask: 1.0 where the chosen test on the value holds, else 0.0.
class ImageValueConditionNode : public ImageValueOperationOneNode {
 public:
  static const NodeRecord kRecord;

  ImageValueConditionNode() { Declare(kRecord); }
  [[nodiscard]] NodeType GetNodeType() const override { return kNodeType<ImageValueConditionNode>; }
  [[nodiscard]] std::string GetName() const override { return kDisplayName<ImageValueConditionNode>; }
  [[nodiscard]] ValueOperation* CreateValueOperation(const std::vector<PlugValue>& inputs) override;
};

class ImageValueConditionNodeInterface : public NodeDescriptorOf<ImageValueConditionNode> {};
class ImageValueConditionNodeFactory : public NodeFactoryOf<ImageValueConditionNode> {};
