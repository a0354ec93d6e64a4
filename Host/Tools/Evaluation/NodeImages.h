// SPDX-License-Identifier: Apache-2.0
//
// What the engine finds out about the images that nodes are given and make, and what it puts on them.
#pragma once

#include <cstddef>
#include <vector>

#include "Host/Tools/Node.h"
#include "Host/Tools/PlugValue.h"

namespace ScEng {

/// The bytes of all samples that a node's outputs hold, of each image once. A pending image has none.
std::size_t CountBytes(Node& node);
/// The same of what it is given.
std::size_t CountBytes(const std::vector<PlugValue>& inputs);

/// Whether the node's one image is a pending one.
bool HoldsPending(Node& node);

/// Hands on what the input images carry to the images that a node has made of them.
void HandOnMetadata(Node& node, const std::vector<PlugValue>& inputs);

}  // namespace ScEng
