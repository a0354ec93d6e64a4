// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Host/Nodes/HostNode.h"
#include "Host/Nodes/HostNodes.h"

/// Reads an image file.
class ImageReaderNode : public ScEng::HostImageNode {
 public:
  static constexpr NodeType kType = ScEng::kImageReaderType;
  static constexpr const char* kTypeName = "ImageReaderNode";
  static constexpr const char* kDisplayName = "Image Reader";

  ImageReaderNode();
  [[nodiscard]] NodeType GetNodeType() const override { return kType; }
  [[nodiscard]] std::string GetName() const override { return kDisplayName; }
  void Evaluate(unsigned evaluation, const std::vector<PlugValue>& inputs) override;
};
