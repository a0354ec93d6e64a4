// SPDX-License-Identifier: Apache-2.0
#include "Host/Tools/Evaluation/NodeVertex.h"

#include "Host/Tools/Evaluation/NodeCalls.h"

namespace ScEng {

NodeConnection::NodeConnection(NodeVertex& starts_at, unsigned starts_at_outplug, NodeVertex& ends_at,
                               unsigned ends_at_inplug, unsigned ends_at_index)
    : Edge(starts_at, ends_at), outplug(starts_at_outplug), inplug(ends_at_inplug), index(ends_at_index) {}
NodeVertex& NodeConnection::From() const { return static_cast<NodeVertex&>(*from); }
NodeVertex& NodeConnection::To() const { return static_cast<NodeVertex&>(*to); }

void DropResults(NodeVertex& vertex) {
  Tell(*vertex.node, NodeEvent::kDropCachedResults);
  vertex.valid.assign(vertex.valid.size(), false);
  vertex.is_pending = false;
}

void MarkDirty(NodeVertex& start) {
  // Everything downstream of a dirty vertex is dirty already. A new vertex is dirty from the start, so that building a
  // graph costs nothing here.
  if (start.dirty) return;
  std::vector<NodeVertex*> pending{&start};
  while (!pending.empty()) {
    NodeVertex& vertex = *pending.back();
    pending.pop_back();
    vertex.dirty = true;
    for (const AcyclicGraph::Edge* output : vertex.out) {
      NodeVertex& to = AsConnection(output).To();
      if (!to.dirty) pending.push_back(&to);
    }
  }
}

}  // namespace ScEng
