// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Host/NodeKit/NodeKit.h"

/// Turns a mask or height field into a relief whose edges rise by a profile over a radius.
class ImageReliefNode : public Node {
 public:
  static const NodeRecord kRecord;

  ImageReliefNode() { Declare(kRecord); }
  [[nodiscard]] NodeType GetNodeType() const override { return kNodeType<ImageReliefNode>; }
  [[nodiscard]] std::string GetName() const override { return kDisplayName<ImageReliefNode>; }
  [[nodiscard]] unsigned GetAttributeVersion() const override { return 1; }
  /// Documents of version 0 call the multiplier "height".
  [[nodiscard]] std::string TranslateAttributeName(unsigned version, const std::string& name) const override;
  bool OnProcessEvent(NodeEvent event) override { return output_.OnEvent(event); }
  void Evaluate(unsigned evaluation, const std::vector<PlugValue>& inputs) override;
  [[nodiscard]] Image* GetOutputImage(unsigned outplug) const override { return output_.Get(outplug); }

 private:
  OutputImages<1> output_;
};

class ImageReliefNodeInterface : public NodeDescriptorOf<ImageReliefNode> {};
class ImageReliefNodeFactory : public NodeFactoryOf<ImageReliefNode> {};
