// SPDX-License-Identifier: Apache-2.0
// A node library as it should be, but for what it prints.

#include <cstdio>

#include "Tests/Libraries/ImageParts.h"

namespace {

class BadNode : public ImagePartsNode {
  void Compute(const Image& image, Image& output, unsigned evaluation) override {
    ImagePartsNode::Compute(image, output, evaluation);
    std::printf("{\"done\": true, \"failures\": [\"noise\"]}\n");
    std::fprintf(stderr, "FAIL noise: a line of the library\n");
  }
};

}  // namespace

ONE_NODE_LIBRARY(ImagePartsDescriptor<BadNode>)
