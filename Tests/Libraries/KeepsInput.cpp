// SPDX-License-Identifier: Apache-2.0
// A node library whose node takes a reference to its input and never gives it back.

#include "Tests/Libraries/ImageParts.h"

namespace {

class BadNode : public ImagePartsNode {
  void Compute(const Image& image, Image& output, unsigned evaluation) override {
    ImagePartsNode::Compute(image, output, evaluation);
    image.AddRef();
  }
};

}  // namespace

ONE_NODE_LIBRARY(ImagePartsDescriptor<BadNode>)
