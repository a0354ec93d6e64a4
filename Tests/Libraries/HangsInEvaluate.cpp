// SPDX-License-Identifier: Apache-2.0
// A node library whose node searches without end in a disabled evaluation.

#include "Tests/Libraries/ImageParts.h"

namespace {

volatile bool found = false;

class BadNode : public ImagePartsNode {
 public:
  void Evaluate(unsigned evaluation, const std::vector<PlugValue>& inputs) override {
    ImagePartsNode::Evaluate(evaluation, inputs);
    while (!IsEnabled() && inputs.at(0).GetImage() != nullptr && !found) continue;
  }
};

}  // namespace

ONE_NODE_LIBRARY(ImagePartsDescriptor<BadNode>)
