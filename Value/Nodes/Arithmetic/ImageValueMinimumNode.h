// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Value/Core/NodeDescriptor.h"
#include "Value/Core/NodeRecord.h"
#include "Value/Operations/ImageValueOperationNodes.h"
#include "Value/SelfTests/SelfTests.h"

/// The lowest of the images, or of one image and the constant.
class ImageValueMinimumNode : public ImageValueOperationManyNode {
 public:
  static constexpr NodeRecord kRecord{"ImageValueMinimumNode", "Value Minimum", NodeType(10, 320, 16), "Min",
                                      SelfTests::RunMinimum};

  ImageValueMinimumNode();
  [[nodiscard]] NodeType GetNodeType() const override;
  [[nodiscard]] std::string GetName() const override;
  [[nodiscard]] ValueOperation* CreateValueOperation(const std::vector<PlugValue>& inputs) override;
};

class ImageValueMinimumNodeInterface : public NodeDescriptorOf<ImageValueMinimumNode> {};
class ImageValueMinimumNodeFactory : public NodeFactoryOf<ImageValueMinimumNode> {};
