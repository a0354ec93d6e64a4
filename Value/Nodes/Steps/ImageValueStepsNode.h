// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Host/NodeKit/NodeKit.h"

/// Quantises an image into equally spaced levels of its declared value range. While it is disabled it keeps its last
/// result.
class ImageValueStepsNode : public Node {
  NODEKIT_NODE(ImageValueStepsNode)

 public:
  bool OnProcessEvent(NodeEvent event) override { return output_.OnEvent(event); }
  void Evaluate(unsigned evaluation, const std::vector<PlugValue>& inputs) override;
  /// The one output, whatever the index.
  [[nodiscard]] Image* GetOutputImage(unsigned) const override { return output_.Get(); }

 private:
  OutputImages<1> output_;
};

NODEKIT_DESCRIPTOR(ImageValueStepsNode)
