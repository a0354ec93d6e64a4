// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Host/Tools/Node.h"
#include "Value/Core/NodeDescriptor.h"
#include "Value/Core/NodeRecord.h"
#include "Value/Core/OutputImages.h"

/// How open to light each point of a height image is, computed on a GPU.
class ImageAmbientOcclusionNode : public Node {
 public:
  static constexpr NodeRecord kRecord{"ImageAmbientOcclusionNode", "Ambient Occlusion", NodeType(10, 320, 85),
                                      "AmbientOcclusion"};

  ImageAmbientOcclusionNode();
  [[nodiscard]] NodeType GetNodeType() const override;
  [[nodiscard]] std::string GetName() const override;
  bool OnProcessEvent(NodeEvent event) override { return output_.OnEvent(event); }
  void Evaluate(unsigned evaluation, const std::vector<PlugValue>& inputs) override;
  [[nodiscard]] Image* GetOutputImage(unsigned outplug) const override { return output_.Get(outplug); }

 private:
  OutputImages<1> output_;
};

class ImageAmbientOcclusionNodeInterface : public NodeDescriptorOf<ImageAmbientOcclusionNode> {};
class ImageAmbientOcclusionNodeFactory : public NodeFactoryOf<ImageAmbientOcclusionNode> {};
