// SPDX-License-Identifier: Apache-2.0
// A node library whose result follows the number of threads.

#include "Host/Util/ParallelRows.h"

#include "Tests/Libraries/ImageParts.h"

namespace {

class BadNode : public ImagePartsNode {
  void Compute(const Image& image, Image& output, unsigned) override {
    const auto threads = static_cast<float>(ScEng::GetNumThreads());
    for (std::size_t i = 0; i < image.GetNumSamples(); ++i) output.GetArray()[i] = image.GetConstArray()[i] + threads;
  }
};

}  // namespace

ONE_NODE_LIBRARY(ImagePartsDescriptor<BadNode>)
