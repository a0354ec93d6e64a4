// SPDX-License-Identifier: Apache-2.0
// A node library whose node computes in the image that it is given.

#include "Tests/Libraries/ImageParts.h"

namespace {

class BadNode : public ImagePartsNode {
  void Compute(const Image& image, Image& output, unsigned evaluation) override {
    ImagePartsNode::Compute(image, output, evaluation);
    if (image.GetNumSamples() > 0) const_cast<Image&>(image).GetArray()[0] += 1.0F;
  }
};

}  // namespace

ONE_NODE_LIBRARY(ImagePartsDescriptor<BadNode>)
