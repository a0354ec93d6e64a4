// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Host/NodeKit/NodeKit.h"

/// The two components of the gradient of an image, reduced to the value mode first: output 0 along x, output 1
/// downwards. Disabled, both outputs are zero.
class ImageComputeGradientNode : public Node {
  NODEKIT_NODE(ImageComputeGradientNode)

 public:
  bool OnProcessEvent(NodeEvent event) override { return outputs_.OnEvent(event); }
  void Evaluate(unsigned evaluation, const std::vector<PlugValue>& inputs) override;
  [[nodiscard]] Image* GetOutputImage(unsigned outplug) const override { return outputs_.Get(outplug); }

 private:
  OutputImages<2> outputs_;
};

NODEKIT_DESCRIPTOR(ImageComputeGradientNode)
