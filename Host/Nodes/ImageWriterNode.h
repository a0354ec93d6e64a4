// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Host/NodeKit/NodeKit.h"

/// Writes its input image to a file when the document is run. Disabled, it writes nothing.
class ImageWriterNode : public Node {
 public:
  static const NodeRecord kRecord;

  ImageWriterNode() { Declare(kRecord); }
  [[nodiscard]] bool IsSink() const override { return true; }
  [[nodiscard]] NodeType GetNodeType() const override { return kNodeType<ImageWriterNode>; }
  [[nodiscard]] std::string GetName() const override { return kDisplayName<ImageWriterNode>; }
  bool OnProcessEvent(NodeEvent) override { return true; }
  void Evaluate(unsigned evaluation, const std::vector<PlugValue>& inputs) override;
};
