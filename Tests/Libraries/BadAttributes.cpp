// SPDX-License-Identifier: Apache-2.0
// A node library whose node has a default outside its bounds and a choice without its default.

#include "Tests/Libraries/ImageParts.h"

namespace {

class BadNode : public ImagePartsNode {
 public:
  BadNode() {
    attributes_ = {ScEng::RefPtr<Attribute>(new Attribute(this, 0, "level", 2.0, 0.0, 1.0, 0.1, 2)),
                   ScEng::RefPtr<Attribute>(new Attribute(this, 1, "style", 2, "plain,fancy"))};
    UpdateInplugsAndOutplugs();
  }
};

}  // namespace

ONE_NODE_LIBRARY(ImagePartsDescriptor<BadNode>)
