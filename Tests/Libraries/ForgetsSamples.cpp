// SPDX-License-Identifier: Apache-2.0
// A node library whose node leaves the last sample of its output as the memory was.

#include "Tests/Libraries/ImageParts.h"

namespace {

class BadNode : public ImagePartsNode {
  void Compute(const Image& image, Image& output, unsigned) override {
    for (std::size_t i = 1; i < image.GetNumSamples(); ++i) {
      output.GetArray()[i - 1] = image.GetConstArray()[i - 1] + GetLevel();
    }
  }
};

}  // namespace

ONE_NODE_LIBRARY(ImagePartsDescriptor<BadNode>)
