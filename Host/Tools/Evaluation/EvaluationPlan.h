// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <vector>

#include "Host/Tools/Evaluation/NodeVertex.h"

namespace ScEng {

/// An output of a vertex that is to be evaluated.
struct VertexRequest {
  NodeVertex* vertex = nullptr;
  unsigned outplug = 0;
};

/// The vertices that have to be evaluated, each after everything that it depends on and as late as that allows. Looks
/// only at these and at what feeds them, and notes in them what the evaluation of this number, which is above those
/// before it, has to know.
std::vector<NodeVertex*> PlanEvaluation(const std::vector<VertexRequest>& requests, std::uint64_t evaluation);

}  // namespace ScEng
