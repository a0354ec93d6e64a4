// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Host/Tools/Node.h"
#include "Value/Core/NodeDescriptor.h"
#include "Value/Core/NodeRecord.h"
#include "Value/Core/OutputImages.h"

/// Marks the pixels that differ from a neighbour by more than a tolerance.
class ImageComponentEdgesNode : public Node {
 public:
  static constexpr NodeRecord kRecord{"ImageComponentEdgesNode", "Component Edges", NodeType(10, 320, 106),
                                      "ComponentEdges"};

  ImageComponentEdgesNode();
  [[nodiscard]] NodeType GetNodeType() const override;
  [[nodiscard]] std::string GetName() const override;
  bool OnProcessEvent(NodeEvent event) override { return output_.OnEvent(event); }
  void Evaluate(unsigned evaluation, const std::vector<PlugValue>& inputs) override;
  [[nodiscard]] Image* GetOutputImage(unsigned outplug) const override { return output_.Get(outplug); }

 private:
  OutputImages<1> output_;
};

class ImageComponentEdgesNodeInterface : public NodeDescriptorOf<ImageComponentEdgesNode> {};
class ImageComponentEdgesNodeFactory : public NodeFactoryOf<ImageComponentEdgesNode> {};
