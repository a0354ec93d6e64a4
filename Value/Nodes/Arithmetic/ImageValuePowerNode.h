// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Value/Core/NodeDescriptor.h"
#include "Value/Core/NodeRecord.h"
#include "Value/Operations/ImageValueOperationNodes.h"
#include "Value/SelfTests/SelfTests.h"

/// Raises the first image to the power of the others in order. The exponent for a single image is 1 whatever the
/// constant says, so one image passes unchanged.
class ImageValuePowerNode : public ImageValueOperationManyNode {
 public:
  static constexpr NodeRecord kRecord{"ImageValuePowerNode", "Value Power", NodeType(10, 320, 69), "Power",
                                      SelfTests::RunMultiply};

  ImageValuePowerNode();
  [[nodiscard]] NodeType GetNodeType() const override;
  [[nodiscard]] std::string GetName() const override;
  [[nodiscard]] ValueOperation* CreateValueOperation(const std::vector<PlugValue>& inputs) override;
};

class ImageValuePowerNodeInterface : public NodeDescriptorOf<ImageValuePowerNode> {};
class ImageValuePowerNodeFactory : public NodeFactoryOf<ImageValuePowerNode> {};
