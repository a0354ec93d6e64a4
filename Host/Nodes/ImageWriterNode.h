// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Host/Nodes/HostNode.h"
#include "Host/Nodes/HostNodes.h"

/// Writes its input image to a file when the document is run. Disabled, or without an image, it writes nothing.
class ImageWriterNode : public ScEng::HostNode {
 public:
  static constexpr NodeType kType = ScEng::kImageWriterType;
  static constexpr const char* kTypeName = "ImageWriterNode";
  static constexpr const char* kDisplayName = "Image Writer";

  ImageWriterNode();
  [[nodiscard]] bool IsSink() const override { return true; }
  [[nodiscard]] NodeType GetNodeType() const override { return kType; }
  [[nodiscard]] std::string GetName() const override { return kDisplayName; }
  bool OnProcessEvent(NodeEvent) override { return true; }
  void Evaluate(unsigned evaluation, const std::vector<PlugValue>& inputs) override;
};
