// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Host/NodeKit/NodeKit.h"

/// Marks the pixels that differ from a neighbour by more than a tolerance.
class ImageComponentEdgesNode : public Node {
 public:
  static const NodeRecord kRecord;

  ImageComponentEdgesNode() { Declare(kRecord); }
  [[nodiscard]] NodeType GetNodeType() const override { return kNodeType<ImageComponentEdgesNode>; }
  [[nodiscard]] std::string GetName() const override { return kDisplayName<ImageComponentEdgesNode>; }
  bool OnProcessEvent(NodeEvent event) override { return output_.OnEvent(event); }
  void Evaluate(unsigned evaluation, const std::vector<PlugValue>& inputs) override;
  [[nodiscard]] Image* GetOutputImage(unsigned outplug) const override { return output_.Get(outplug); }

 private:
  OutputImages<1> output_;
};

class ImageComponentEdgesNodeInterface : public NodeDescriptorOf<ImageComponentEdgesNode> {};
class ImageComponentEdgesNodeFactory : public NodeFactoryOf<ImageComponentEdgesNode> {};
