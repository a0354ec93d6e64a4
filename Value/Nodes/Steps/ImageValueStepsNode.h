// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Host/Tools/Node.h"
#include "Value/Core/NodeDescriptor.h"
#include "Value/Core/NodeRecord.h"
#include "Value/Core/OutputImages.h"
#include "Value/SelfTests/SelfTests.h"

/// Quantises an image into equally spaced levels of its declared value range. While it is disabled it keeps its last
/// result.
class ImageValueStepsNode : public Node {
 public:
  static constexpr NodeRecord kRecord{"ImageValueStepsNode", "Value Steps", NodeType(10, 320, 80), "Steps",
                                      SelfTests::RunAbsolute};

  ImageValueStepsNode();
  [[nodiscard]] NodeType GetNodeType() const override;
  [[nodiscard]] std::string GetName() const override;
  bool OnProcessEvent(NodeEvent event) override { return output_.OnEvent(event); }
  void Evaluate(unsigned evaluation, const std::vector<PlugValue>& inputs) override;
  /// The one output, whatever the index.
  [[nodiscard]] Image* GetOutputImage(unsigned) const override { return output_.Get(); }

 private:
  OutputImages<1> output_;
};

class ImageValueStepsNodeInterface : public NodeDescriptorOf<ImageValueStepsNode> {};
class ImageValueStepsNodeFactory : public NodeFactoryOf<ImageValueStepsNode> {};
