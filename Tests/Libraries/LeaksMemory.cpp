// SPDX-License-Identifier: Apache-2.0
// A node library whose node forgets a few numbers in each evaluation.

#include "Tests/Libraries/ImageParts.h"

namespace {

const float* volatile forgotten = nullptr;

class BadNode : public ImagePartsNode {
  void Compute(const Image& image, Image& output, unsigned evaluation) override {
    forgotten = new float[16]{GetLevel()};
    ImagePartsNode::Compute(image, output, evaluation);
  }
};

}  // namespace

ONE_NODE_LIBRARY(ImagePartsDescriptor<BadNode>)
