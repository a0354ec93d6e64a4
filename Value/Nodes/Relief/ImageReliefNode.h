// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Host/Tools/Node.h"
#include "Value/Core/NodeDescriptor.h"
#include "Value/Core/NodeRecord.h"
#include "Value/Core/OutputImages.h"
#include "Value/SelfTests/SelfTests.h"

/// Turns a mask or height field into a relief whose edges rise by a profile over a radius.
class ImageReliefNode : public Node {
 public:
  static constexpr NodeRecord kRecord{"ImageReliefNode", "Relief", NodeType(10, 288, 26), "Relief",
                                      SelfTests::RunRelief};

  ImageReliefNode();
  [[nodiscard]] NodeType GetNodeType() const override;
  [[nodiscard]] std::string GetName() const override;
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
