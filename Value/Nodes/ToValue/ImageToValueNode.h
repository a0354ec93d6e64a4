// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Host/NodeKit/NodeKit.h"

/// Turns any image into a value image whose values span [low, high]: each pixel is reduced to one number, and the
/// nominal or the measured range of these numbers is mapped linearly.
class ImageToValueNode : public Node {
  NODEKIT_NODE(ImageToValueNode)
  NODEKIT_ONE_OUTPUT

 public:
  /// "min", "max" and "saturate" are the old names of "low", "high" and "auto_level".
  [[nodiscard]] std::string TranslateAttributeName(unsigned version, const std::string& name) const override;
  void Evaluate(unsigned evaluation, const std::vector<PlugValue>& inputs) override;
};

NODEKIT_DESCRIPTOR(ImageToValueNode)
