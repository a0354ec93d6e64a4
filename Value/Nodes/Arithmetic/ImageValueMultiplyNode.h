// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Value/Core/NodeDescriptor.h"
#include "Value/Core/NodeRecord.h"
#include "Value/Operations/ImageValueOperationNodes.h"
#include "Value/SelfTests/SelfTests.h"

/// Multiplies images, or one image by the constant.
class ImageValueMultiplyNode : public ImageValueOperationManyNode {
 public:
  static constexpr NodeRecord kRecord{"ImageValueMultiplyNode", "Value Multiply", NodeType(10, 320, 10), "Multiply",
                                      SelfTests::RunMultiply};

  ImageValueMultiplyNode();
  [[nodiscard]] NodeType GetNodeType() const override;
  [[nodiscard]] std::string GetName() const override;
  [[nodiscard]] ValueOperation* CreateValueOperation(const std::vector<PlugValue>& inputs) override;
};

class ImageValueMultiplyNodeInterface : public NodeDescriptorOf<ImageValueMultiplyNode> {};
class ImageValueMultiplyNodeFactory : public NodeFactoryOf<ImageValueMultiplyNode> {};
