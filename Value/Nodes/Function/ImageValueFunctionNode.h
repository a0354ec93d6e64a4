// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Value/Core/NodeDescriptor.h"
#include "Value/Core/NodeRecord.h"
#include "Value/Operations/ImageValueOperationNodes.h"

/// Applies one function of one variable to every value.
class ImageValueFunctionNode : public ImageValueOperationOneNode {
 public:
  static constexpr NodeRecord kRecord{"ImageValueFunctionNode", "Value Function", NodeType(10, 320, 64), "Function"};

  ImageValueFunctionNode();
  [[nodiscard]] NodeType GetNodeType() const override;
  [[nodiscard]] std::string GetName() const override;
  [[nodiscard]] ValueOperation* CreateValueOperation(const std::vector<PlugValue>& inputs) override;
};

class ImageValueFunctionNodeInterface : public NodeDescriptorOf<ImageValueFunctionNode> {};
class ImageValueFunctionNodeFactory : public NodeFactoryOf<ImageValueFunctionNode> {};
