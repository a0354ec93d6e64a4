// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Host/NodeKit/NodeKit.h"

/// The Euclidean distance of every pixel, in pixels, to the nearest one whose value is above 0.5. "seamless" measures
/// across the image's borders, "normalize" divides by the largest distance.
///
/// Where the distances cannot be allocated there is no output, and no error.
class ImageEuclideanDistanceNode : public Node {
 public:
  static const NodeRecord kRecord;

  ImageEuclideanDistanceNode() { Declare(kRecord); }
  [[nodiscard]] NodeType GetNodeType() const override { return kNodeType<ImageEuclideanDistanceNode>; }
  [[nodiscard]] std::string GetName() const override { return kDisplayName<ImageEuclideanDistanceNode>; }
  bool OnProcessEvent(NodeEvent event) override { return output_.OnEvent(event); }
  void Evaluate(unsigned evaluation, const std::vector<PlugValue>& inputs) override;
  [[nodiscard]] Image* GetOutputImage(unsigned outplug) const override { return output_.Get(outplug); }

 private:
  OutputImages<1> output_;
};

class ImageEuclideanDistanceNodeInterface : public NodeDescriptorOf<ImageEuclideanDistanceNode> {};
class ImageEuclideanDistanceNodeFactory : public NodeFactoryOf<ImageEuclideanDistanceNode> {};
