// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Value/Core/NodeDescriptor.h"
#include "Value/Core/NodeRecord.h"
#include "Value/Operations/ImageValueOperationNodes.h"
#include "Value/SelfTests/SelfTests.h"

/// Subtracts from the first image the others in order, or the constant from one image.
class ImageValueSubtractNode : public ImageValueOperationManyNode {
 public:
  static constexpr NodeRecord kRecord{"ImageValueSubtractNode", "Value Subtract", NodeType(10, 320, 90), "Subtract",
                                      SelfTests::RunAdd};

  ImageValueSubtractNode();
  [[nodiscard]] NodeType GetNodeType() const override;
  [[nodiscard]] std::string GetName() const override;
  [[nodiscard]] ValueOperation* CreateValueOperation(const std::vector<PlugValue>& inputs) override;
};

class ImageValueSubtractNodeInterface : public NodeDescriptorOf<ImageValueSubtractNode> {};
class ImageValueSubtractNodeFactory : public NodeFactoryOf<ImageValueSubtractNode> {};
