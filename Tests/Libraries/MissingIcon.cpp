// SPDX-License-Identifier: Apache-2.0
// A node library whose descriptor names icons that are not in the library.

#include "Tests/Libraries/ImageParts.h"

namespace {

class BadDescriptor : public ImagePartsDescriptor<ImagePartsNode> {
 public:
  [[nodiscard]] std::string GetIconPath() const override { return ":/Nowhere/Parts.png"; }
  [[nodiscard]] std::string GetSmallIconPath() const override { return ":/Nowhere/Parts12.png"; }
};

}  // namespace

ONE_NODE_LIBRARY(BadDescriptor)
