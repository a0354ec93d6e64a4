// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Host/NodeKit/NodeKit.h"

/// Limits the values of an image to [low, high] and can reshape those between by a curve. While it is disabled it keeps
/// its last result.
class ImageValueClampNode : public Node {
  NODEKIT_NODE(ImageValueClampNode)
  NODEKIT_ONE_OUTPUT

 public:
  /// "min" and "max" are the old names of "low" and "high".
  [[nodiscard]] std::string TranslateAttributeName(unsigned version, const std::string& name) const override;
  void Evaluate(unsigned evaluation, const std::vector<PlugValue>& inputs) override;
};

NODEKIT_DESCRIPTOR(ImageValueClampNode)
