// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Value/Core/NodeDescriptor.h"
#include "Value/Core/NodeRecord.h"
#include "Value/Operations/ImageValueOperationNodes.h"
#include "Value/SelfTests/SelfTests.h"

/// Divides the first image by the others in order, or one image by the constant.
class ImageValueDivideNode : public ImageValueOperationManyNode {
 public:
  static constexpr NodeRecord kRecord{"ImageValueDivideNode", "Value Divide", NodeType(10, 320, 96), "Divide",
                                      SelfTests::RunMultiply};

  ImageValueDivideNode();
  [[nodiscard]] NodeType GetNodeType() const override;
  [[nodiscard]] std::string GetName() const override;
  [[nodiscard]] ValueOperation* CreateValueOperation(const std::vector<PlugValue>& inputs) override;
};

class ImageValueDivideNodeInterface : public NodeDescriptorOf<ImageValueDivideNode> {};
class ImageValueDivideNodeFactory : public NodeFactoryOf<ImageValueDivideNode> {};
