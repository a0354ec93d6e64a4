// SPDX-License-Identifier: Apache-2.0
// A node library whose node leaves a message of two lines for a column of five pixels.

#include "Tests/Libraries/ImageParts.h"

namespace {

class BadNode : public ImagePartsNode {
  void Compute(const Image& image, Image& output, unsigned evaluation) override {
    ImagePartsNode::Compute(image, output, evaluation);
    if (image.GetSizeX() == 1 && image.GetSizeY() == 5) SetState(evaluation, State::kWarning, "one\ntwo");
  }
};

}  // namespace

ONE_NODE_LIBRARY(ImagePartsDescriptor<BadNode>)
