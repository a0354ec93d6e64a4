// SPDX-License-Identifier: Apache-2.0
// A node library that gives up before it is loaded.

#include <cstdlib>

#include "Tests/Libraries/ImageParts.h"

namespace {

struct GivesUp {
  GivesUp() { std::abort(); }
} gives_up;

}  // namespace

ONE_NODE_LIBRARY(ImagePartsDescriptor<ImagePartsNode>)
