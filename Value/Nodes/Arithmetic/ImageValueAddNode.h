// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Value/Core/NodeDescriptor.h"
#include "Value/Core/NodeRecord.h"
#include "Value/Operations/ImageValueOperationNodes.h"
#include "Value/SelfTests/SelfTests.h"

/// Adds images, or the constant to one image.
class ImageValueAddNode : public ImageValueOperationManyNode {
 public:
  static constexpr NodeRecord kRecord{"ImageValueAddNode", "Value Add", NodeType(10, 320, 5), "Add", SelfTests::RunAdd};

  ImageValueAddNode();
  [[nodiscard]] NodeType GetNodeType() const override;
  [[nodiscard]] std::string GetName() const override;
  /// Documents of old carry a "mask_min" that the node no longer has.
  [[nodiscard]] bool IsObsoleteAttribute(unsigned version, const char* name) const override;
  [[nodiscard]] ValueOperation* CreateValueOperation(const std::vector<PlugValue>& inputs) override;
};

class ImageValueAddNodeInterface : public NodeDescriptorOf<ImageValueAddNode> {};
class ImageValueAddNodeFactory : public NodeFactoryOf<ImageValueAddNode> {};
