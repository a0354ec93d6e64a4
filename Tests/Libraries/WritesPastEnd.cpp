// SPDX-License-Identifier: Apache-2.0
// A node library whose node writes one sample more than its output has.

#include "Tests/Libraries/ImageParts.h"

namespace {

class BadNode : public ImagePartsNode {
  void Compute(const Image& image, Image& output, unsigned evaluation) override {
    ImagePartsNode::Compute(image, output, evaluation);
    output.GetArray()[output.GetNumSamples()] = 0.0F;
  }
};

}  // namespace

ONE_NODE_LIBRARY(ImagePartsDescriptor<BadNode>)
