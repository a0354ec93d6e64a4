// SPDX-License-Identifier: Apache-2.0
// A node library whose node computes for nobody.

#include "Tests/Libraries/ImageParts.h"

namespace {

class BadNode : public ImagePartsNode {
 public:
  BadNode() {
    outplugs_.clear();
    UpdateInplugsAndOutplugs();
  }
};

}  // namespace

ONE_NODE_LIBRARY(ImagePartsDescriptor<BadNode>)
