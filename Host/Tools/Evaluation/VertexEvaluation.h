// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Host/Tools/Engine.h"
#include "Host/Tools/Evaluation/NodeVertex.h"

namespace ScEng {

/// Ends an evaluation at a node that was stopped.
struct Stopped {};

/// Evaluates the outputs of a vertex that are wanted, where all that they depend on has been evaluated. How that went
/// is in the node's state. Throws `Stopped`.
void EvaluateVertex(NodeVertex& vertex, const Engine::Options& options);

}  // namespace ScEng
