// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Host/NodeKit/NodeKit.h"

/// Labels regions whose neighbouring pixels differ by less than a tolerance.
class ImageConnectedComponentsNode : public Node {
 public:
  static const NodeRecord kRecord;

  ImageConnectedComponentsNode() { Declare(kRecord); }
  [[nodiscard]] NodeType GetNodeType() const override { return kNodeType<ImageConnectedComponentsNode>; }
  [[nodiscard]] std::string GetName() const override { return kDisplayName<ImageConnectedComponentsNode>; }
  bool OnProcessEvent(NodeEvent event) override { return output_.OnEvent(event); }
  void Evaluate(unsigned evaluation, const std::vector<PlugValue>& inputs) override;
  [[nodiscard]] Image* GetOutputImage(unsigned outplug) const override { return output_.Get(outplug); }

 private:
  OutputImages<1> output_;
};

class ImageConnectedComponentsNodeInterface : public NodeDescriptorOf<ImageConnectedComponentsNode> {};
class ImageConnectedComponentsNodeFactory : public NodeFactoryOf<ImageConnectedComponentsNode> {};
