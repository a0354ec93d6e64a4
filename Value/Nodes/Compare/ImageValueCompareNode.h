// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Host/NodeKit/NodeKit.h"

/// Compares two images pixel by pixel after rounding both, and offers the six results at once as images of 1.0 and 0.0.
/// Each output is computed at its own request.
class ImageValueCompareNode : public Node {
  NODEKIT_NODE(ImageValueCompareNode)

 public:
  /// The relation as a person writes it: "a < b".
  [[nodiscard]] std::string GetOutplugAlias(unsigned outplug) const override;
  bool OnProcessEvent(NodeEvent event) override { return outputs_.OnEvent(event); }
  void Evaluate(unsigned evaluation, const std::vector<PlugValue>& inputs) override;
  [[nodiscard]] Image* GetOutputImage(unsigned outplug) const override { return outputs_.Get(outplug); }

 private:
  OutputImages<6> outputs_;
};

NODEKIT_DESCRIPTOR(ImageValueCompareNode)
