// SPDX-License-Identifier: Apache-2.0
// A node library whose node keeps its results whatever it is told.

#include "Tests/Libraries/ImageParts.h"

namespace {

class BadNode : public ImagePartsNode {
 public:
  bool OnProcessEvent(NodeEvent) override { return true; }
};

}  // namespace

ONE_NODE_LIBRARY(ImagePartsDescriptor<BadNode>)
