// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Host/Tools/Node.h"
#include "Value/Core/NodeDescriptor.h"
#include "Value/Core/NodeRecord.h"
#include "Value/Core/OutputImages.h"

/// The two components of the gradient of an image, reduced to the value mode first: output 0 along x, output 1
/// downwards. Disabled, both outputs are zero.
class ImageComputeGradientNode : public Node {
 public:
  static constexpr NodeRecord kRecord{"ImageComputeGradientNode", "Value Gradient", NodeType(10, 320, 48), "Gradient"};

  ImageComputeGradientNode();
  [[nodiscard]] NodeType GetNodeType() const override;
  [[nodiscard]] std::string GetName() const override;
  bool OnProcessEvent(NodeEvent event) override { return outputs_.OnEvent(event); }
  void Evaluate(unsigned evaluation, const std::vector<PlugValue>& inputs) override;
  [[nodiscard]] Image* GetOutputImage(unsigned outplug) const override { return outputs_.Get(outplug); }

 private:
  OutputImages<2> outputs_;
};

class ImageComputeGradientNodeInterface : public NodeDescriptorOf<ImageComputeGradientNode> {};
class ImageComputeGradientNodeFactory : public NodeFactoryOf<ImageComputeGradientNode> {};
