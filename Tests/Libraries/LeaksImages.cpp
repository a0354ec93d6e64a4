// SPDX-License-Identifier: Apache-2.0
// A node library whose node makes an image in each evaluation that nobody releases.

#include "Tests/Libraries/ImageParts.h"

namespace {

class BadNode : public ImagePartsNode {
  void Compute(const Image& image, Image& output, unsigned evaluation) override {
    const Image* copy = new Image(image);
    ImagePartsNode::Compute(*copy, output, evaluation);
  }
};

}  // namespace

ONE_NODE_LIBRARY(ImagePartsDescriptor<BadNode>)
