// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Host/Tools/Node.h"
#include "Value/Core/NodeDescriptor.h"
#include "Value/Core/NodeRecord.h"
#include "Value/Core/OutputImages.h"

/// The Euclidean distance of every pixel, in pixels, to the nearest one whose value is above 0.5. "seamless" measures
/// across the image's borders, "normalize" divides by the largest distance.
///
/// Where the distances cannot be allocated there is no output, and no error.
class ImageEuclideanDistanceNode : public Node {
 public:
  static constexpr NodeRecord kRecord{"ImageEuclideanDistanceNode", "Distance", NodeType(10, 288, 74), "Distance"};

  ImageEuclideanDistanceNode();
  [[nodiscard]] NodeType GetNodeType() const override;
  [[nodiscard]] std::string GetName() const override;
  bool OnProcessEvent(NodeEvent event) override { return output_.OnEvent(event); }
  void Evaluate(unsigned evaluation, const std::vector<PlugValue>& inputs) override;
  [[nodiscard]] Image* GetOutputImage(unsigned outplug) const override { return output_.Get(outplug); }

 private:
  OutputImages<1> output_;
};

class ImageEuclideanDistanceNodeInterface : public NodeDescriptorOf<ImageEuclideanDistanceNode> {};
class ImageEuclideanDistanceNodeFactory : public NodeFactoryOf<ImageEuclideanDistanceNode> {};
