// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Value/Core/AttributesPanel.h"
#include "Value/Core/NodeDescriptor.h"
#include "Value/Core/NodeRecord.h"
#include "Value/Operations/ImageValueOperationNodes.h"
#include "Value/SelfTests/SelfTests.h"

/// Turns an image into a mask: 1.0 where the chosen test on the value holds, else 0.0.
class ImageValueConditionNode : public ImageValueOperationOneNode {
 public:
  static constexpr NodeRecord kRecord{"ImageValueConditionNode", "Value Condition", NodeType(10, 320, 32), "Condition",
                                      SelfTests::RunCondition};

  ImageValueConditionNode();
  [[nodiscard]] static std::vector<PanelEntry> GetPanelEntries();
  [[nodiscard]] NodeType GetNodeType() const override;
  [[nodiscard]] std::string GetName() const override;
  [[nodiscard]] ValueOperation* CreateValueOperation(const std::vector<PlugValue>& inputs) override;
};

class ImageValueConditionNodeInterface : public NodeDescriptorOf<ImageValueConditionNode> {};
class ImageValueConditionNodeFactory : public NodeFactoryOf<ImageValueConditionNode> {};
