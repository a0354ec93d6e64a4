// SPDX-License-Identifier: Apache-2.0
// A node library whose node looks at seventeen samples at a time, also where there are fewer left.

#include "Tests/Libraries/ImageParts.h"

namespace {

class BadNode : public ImagePartsNode {
  void Compute(const Image& image, Image& output, unsigned evaluation) override {
    ImagePartsNode::Compute(image, output, evaluation);
    constexpr std::size_t kStep = 17;
    volatile float sum = 0.0F;
    for (std::size_t i = 0; i < image.GetNumSamples(); i += kStep) {
      for (std::size_t k = 0; k < kStep; ++k) sum = sum + image.GetConstArray()[i + k];
    }
  }
};

}  // namespace

ONE_NODE_LIBRARY(ImagePartsDescriptor<BadNode>)
