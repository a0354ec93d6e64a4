// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Host/NodeKit/NodeKit.h"
#include "Value/Operations/ImageValueOperationNodes.h"

/// Applies one function of one variable to every value.
class ImageValueFunctionNode : public ImageValueOperationOneNode {
 public:
  static const NodeRecord kRecord;

  ImageValueFunctionNode() { Declare(kRecord); }
  [[nodiscard]] NodeType GetNodeType() const override { return kNodeType<ImageValueFunctionNode>; }
  [[nodiscard]] std::string GetName() const override { return kDisplayName<ImageValueFunctionNode>; }
  [[nodiscard]] ValueOperation* CreateValueOperation(const std::vector<PlugValue>& inputs) override;
};

class ImageValueFunctionNodeInterface : public NodeDescriptorOf<ImageValueFunctionNode> {};
class ImageValueFunctionNodeFactory : public NodeFactoryOf<ImageValueFunctionNode> {};
