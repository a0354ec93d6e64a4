// SPDX-License-Identifier: Apache-2.0
//
// Which nodes are computed in one pass, with pending images between them.
#pragma once

#include "Host/Tools/Engine.h"
#include "Host/Tools/Evaluation/NodeVertex.h"

namespace ScEng {

/// Whether the image that a node makes may be a pending one: it is for one other node alone, which computes with it
/// and no more. Where times are asked for, each node takes its own. Notes in the vertex what its image would hold.
bool MayBePending(NodeVertex& vertex, const Engine::Options& options);

}  // namespace ScEng
