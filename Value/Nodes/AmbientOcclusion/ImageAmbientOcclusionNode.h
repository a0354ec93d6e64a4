// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Host/NodeKit/NodeKit.h"

/// How open to light each point of a height image is, computed on a GPU.
class ImageAmbientOcclusionNode : public Node {
 public:
  static const NodeRecord kRecord;

  ImageAmbientOcclusionNode() { Declare(kRecord); }
  [[nodiscard]] NodeType GetNodeType() const override { return kNodeType<ImageAmbientOcclusionNode>; }
  [[nodiscard]] std::string GetName() const override { return kDisplayName<ImageAmbientOcclusionNode>; }
  bool OnProcessEvent(NodeEvent event) override { return output_.OnEvent(event); }
  void Evaluate(unsigned evaluation, const std::vector<PlugValue>& inputs) override;
  [[nodiscard]] Image* GetOutputImage(unsigned outplug) const override { return output_.Get(outplug); }

 private:
  OutputImages<1> output_;
};

class ImageAmbientOcclusionNodeInterface : public NodeDescriptorOf<ImageAmbientOcclusionNode> {};
class ImageAmbientOcclusionNodeFactory : public NodeFactoryOf<ImageAmbientOcclusionNode> {};
