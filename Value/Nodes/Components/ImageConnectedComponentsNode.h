// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Host/Tools/Node.h"
#include "Value/Core/NodeDescriptor.h"
#include "Value/Core/NodeRecord.h"
#include "Value/Core/OutputImages.h"

/// Labels regions whose neighbouring pixels differ by less than a tolerance.
class ImageConnectedComponentsNode : public Node {
 public:
  static constexpr NodeRecord kRecord{"ImageConnectedComponentsNode", "Connected Components", NodeType(10, 320, 101),
                                      "ConnectedComponents"};

  ImageConnectedComponentsNode();
  [[nodiscard]] NodeType GetNodeType() const override;
  [[nodiscard]] std::string GetName() const override;
  bool OnProcessEvent(NodeEvent event) override { return output_.OnEvent(event); }
  void Evaluate(unsigned evaluation, const std::vector<PlugValue>& inputs) override;
  [[nodiscard]] Image* GetOutputImage(unsigned outplug) const override { return output_.Get(outplug); }

 private:
  OutputImages<1> output_;
};

class ImageConnectedComponentsNodeInterface : public NodeDescriptorOf<ImageConnectedComponentsNode> {};
class ImageConnectedComponentsNodeFactory : public NodeFactoryOf<ImageConnectedComponentsNode> {};
