// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Host/NodeKit/NodeKit.h"

/// Turns a mask or height field into a relief whose edges rise by a profile over a radius.
class ImageReliefNode : public Node {
  NODEKIT_NODE(ImageReliefNode)
  NODEKIT_ONE_OUTPUT

 public:
  [[nodiscard]] unsigned GetAttributeVersion() const override { return 1; }
  /// Documents of version 0 call the multiplier "height".
  [[nodiscard]] std::string TranslateAttributeName(unsigned version, const std::string& name) const override;
  void Evaluate(unsigned evaluation, const std::vector<PlugValue>& inputs) override;
};

NODEKIT_DESCRIPTOR(ImageReliefNode)
