// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Host/Tools/Node.h"
#include "Value/Core/AttributesPanel.h"
#include "Value/Core/NodeDescriptor.h"
#include "Value/Core/NodeRecord.h"
#include "Value/Core/OutputImages.h"

/// Limits the values of an image to [low, high] and can reshape those between by a curve. While it is disabled it keeps
/// its last result.
class ImageValueClampNode : public Node {
 public:
  static constexpr NodeRecord kRecord{"ImageValueClampNode", "Value Clamp", NodeType(10, 320, 42), "Clamp",
                                      [] { return false; }};

  ImageValueClampNode();
  [[nodiscard]] static std::vector<PanelEntry> GetPanelEntries();
  [[nodiscard]] NodeType GetNodeType() const override;
  [[nodiscard]] std::string GetName() const override;
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
