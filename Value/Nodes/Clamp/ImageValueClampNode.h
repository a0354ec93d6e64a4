// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Host/NodeKit/NodeKit.h"

/// Limits the values of an image to [low, high] and can reshape those between by a curve. While it is disabled it keeps
/// its last result.
class ImageValueClampNode : public Node {
 public:
  static const NodeRecord kRecord;

  ImageValueClampNode() { Declare(kRecord); }
  [[nodiscard]] NodeType GetNodeType() const override { return kNodeType<ImageValueClampNode>; }
  [[nodiscard]] std::string GetName() const override { return kDisplayName<ImageValueClampNode>; }
  /// "min" and "max" are the old names of "low" and "high".
  [[nodiscard]] std::string TranslateAttributeName(unsigned version, const std::string& name) const override;
  bool OnProcessEvent(NodeEvent event) override { return output_.OnEvent(event); }
  void Evaluate(unsigned evaluation, const std::vector<PlugValue>& inputs) override;
  [[nodiscard]] Image* GetOutputImage(unsigned outplug) const override { return output_.Get(outplug); }

 private:
  OutputImages<1> output_;
};

class ImageValueClampNodeInterface : public NodeDescriptorOf<ImageValueClampNode> {};
class ImageValueClampNodeFactory : public NodeFactoryOf<ImageValueClampNode> {};
