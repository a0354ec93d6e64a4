// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Value/Core/NodeDescriptor.h"
#include "Value/Core/NodeRecord.h"
#include "Value/Operations/ImageValueOperationNodes.h"

/// Marks the pixels whose value lies near a centre, with a soft band of chosen shape.
class ImageValueRangeNode : public ImageValueOperationOneNode {
 public:
  static constexpr NodeRecord kRecord{"ImageValueRangeNode", "Value Range", NodeType(10, 320, 58), "Range"};

  ImageValueRangeNode();
  [[nodiscard]] NodeType GetNodeType() const override;
  [[nodiscard]] std::string GetName() const override;
  [[nodiscard]] ValueOperation* CreateValueOperation(const std::vector<PlugValue>& inputs) override;
};

class ImageValueRangeNodeInterface : public NodeDescriptorOf<ImageValueRangeNode> {};
class ImageValueRangeNodeFactory : public NodeFactoryOf<ImageValueRangeNode> {};
