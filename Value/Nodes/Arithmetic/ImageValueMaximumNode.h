// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Value/Core/NodeDescriptor.h"
#include "Value/Core/NodeRecord.h"
#include "Value/Operations/ImageValueOperationNodes.h"
#include "Value/SelfTests/SelfTests.h"

/// The highest of the images, or of one image and the constant.
class ImageValueMaximumNode : public ImageValueOperationManyNode {
 public:
  static constexpr NodeRecord kRecord{"ImageValueMaximumNode", "Value Maximum", NodeType(10, 320, 21), "Max",
                                      SelfTests::RunMaximum};

  ImageValueMaximumNode();
  [[nodiscard]] NodeType GetNodeType() const override;
  [[nodiscard]] std::string GetName() const override;
  [[nodiscard]] ValueOperation* CreateValueOperation(const std::vector<PlugValue>& inputs) override;
};

class ImageValueMaximumNodeInterface : public NodeDescriptorOf<ImageValueMaximumNode> {};
class ImageValueMaximumNodeFactory : public NodeFactoryOf<ImageValueMaximumNode> {};
