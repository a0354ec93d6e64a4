// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Host/NodeKit/NodeKit.h"

/// Turns any image into a value image whose values span [low, high]: each pixel is reduced to one number, and the
/// nominal or the measured range of these numbers is mapped linearly.
class ImageToValueNode : public Node {
 public:
  static const NodeRecord kRecord;

  ImageToValueNode() { Declare(kRecord); }
  [[nodiscard]] NodeType GetNodeType() const override { return kNodeType<ImageToValueNode>; }
  [[nodiscard]] std::string GetName() const override { return kDisplayName<ImageToValueNode>; }
  /// "min", "max" and "saturate" are the old names of "low", "high" and "auto_level".
  [[nodiscard]] std::string TranslateAttributeName(unsigned version, const std::string& name) const override;
  bool OnProcessEvent(NodeEvent event) override { return output_.OnEvent(event); }
  void Evaluate(unsigned evaluation, const std::vector<PlugValue>& inputs) override;
  [[nodiscard]] Image* GetOutputImage(unsigned outplug) const override { return output_.Get(outplug); }

 private:
  OutputImages<1> output_;
};

class ImageToValueNodeInterface : public NodeDescriptorOf<ImageToValueNode> {};
class ImageToValueNodeFactory : public NodeFactoryOf<ImageToValueNode> {};
