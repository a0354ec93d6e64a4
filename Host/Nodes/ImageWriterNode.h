// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Host/NodeKit/NodeKit.h"

/// Writes its input image to a file when the document is run. Disabled, it writes nothing.
class ImageWriterNode : public Node {
  NODEKIT_NODE(ImageWriterNode)

 public:
  [[nodiscard]] bool IsSink() const override { return true; }
  bool OnProcessEvent(NodeEvent) override { return true; }
  void Evaluate(unsigned evaluation, const std::vector<PlugValue>& inputs) override;
};
