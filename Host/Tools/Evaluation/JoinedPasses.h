// SPDX-License-Identifier: Apache-2.0
//
// Which nodes are computed in one pass, with pending images between them.
#pragma once

#include <vector>

#include "Host/Image/Image.h"
#include "Host/Tools/Engine.h"
#include "Host/Tools/Evaluation/NodeVertex.h"
#include "Host/Tools/Node.h"
#include "Host/Tools/PlugValue.h"

namespace ScEng {

/// Whether the image that a node makes may be a pending one: it is for one other node alone, which computes with it
/// and no more. Where times are asked for, each node takes its own. Notes in the vertex what its image would hold.
bool MayBePending(NodeVertex& vertex, const Engine::Options& options);

/// Puts images with samples in place of the pending ones among what a node is given, unless it is one that computes
/// with them and no more: whoever is told of the evaluation may have changed the graph since they were made. `settled`
/// holds the images from then on, also where it throws: what the constructors of `Image` throw, or `Canceled`.
void SettleInputs(Node& node, std::vector<PlugValue>& inputs, std::vector<ImagePtr>& settled);

}  // namespace ScEng
