// SPDX-License-Identifier: Apache-2.0
// A node library whose node finds a place in a table by a sample, which no NaN has.

#include <cmath>

#include "Tests/Libraries/ImageParts.h"

namespace {

class BadNode : public ImagePartsNode {
  void Compute(const Image& image, Image& output, unsigned evaluation) override {
    ImagePartsNode::Compute(image, output, evaluation);
    for (std::size_t i = 0; i < image.GetNumSamples(); ++i) {
      if (std::isnan(image.GetConstArray()[i])) *GetPlace() = 0.0F;
    }
  }
  static volatile float* GetPlace() {
    static volatile float* place = nullptr;
    return place;
  }
};

}  // namespace

ONE_NODE_LIBRARY(ImagePartsDescriptor<BadNode>)
