// SPDX-License-Identifier: Apache-2.0
// A node library whose factory makes nodes of another type than its descriptor says.

#include "Tests/Libraries/ImageParts.h"

namespace {

class BadNode : public ImagePartsNode {
 public:
  [[nodiscard]] NodeType GetNodeType() const override { return NodeType(901, 1, 2); }
};

}  // namespace

ONE_NODE_LIBRARY(ImagePartsDescriptor<BadNode>)
