// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Host/NodeKit/NodeKit.h"
#include "Value/Operations/ImageValueOperationNodes.h"

/// Marks the pixels whose value lies near a centre, with a soft band of chosen shape.
class ImageValueRangeNode : public ImageValueOperationOneNode {
 public:
  static const NodeRecord kRecord;

  ImageValueRangeNode() { Declare(kRecord); }
  [[nodiscard]] NodeType GetNodeType() const override { return kNodeType<ImageValueRangeNode>; }
  [[nodiscard]] std::string GetName() const override { return kDisplayName<ImageValueRangeNode>; }
  [[nodiscard]] ValueOperation* CreateValueOperation(const std::vector<PlugValue>& inputs) override;
};

class ImageValueRangeNodeInterface : public NodeDescriptorOf<ImageValueRangeNode> {};
class ImageValueRangeNodeFactory : public NodeFactoryOf<ImageValueRangeNode> {};
