// SPDX-License-Identifier: Apache-2.0
//
// What a graph of the engine consists of.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <utility>
#include <vector>

#include "Host/Image/Image.h"
#include "Host/Tools/AcyclicGraph.h"
#include "Host/Tools/Engine.h"
#include "Host/Tools/Node.h"
#include "Host/Util/RefCounter.h"

namespace ScEng {

struct NodeVertex;

struct NodeConnection : AcyclicGraph::Edge {
  NodeConnection(NodeVertex& starts_at, unsigned starts_at_outplug, NodeVertex& ends_at, unsigned ends_at_inplug,
                 unsigned ends_at_index);
  [[nodiscard]] NodeVertex& From() const;
  [[nodiscard]] NodeVertex& To() const;

  unsigned outplug;
  unsigned inplug;
  unsigned index;
};

inline const NodeConnection& AsConnection(const AcyclicGraph::Edge* edge) {
  return *static_cast<const NodeConnection*>(edge);
}

/// A node and what the engine keeps about it.
struct NodeVertex : AcyclicGraph::Vertex {
  RefPtr<Node> node;
  // By input plug and index: the order in which a node receives them.
  std::map<std::pair<unsigned, unsigned>, NodeConnection> inputs;
  // Something that the result depends on has changed. Everything downstream of a dirty vertex is dirty too.
  bool dirty = true;
  bool blocked = false;
  // Which outputs hold the result of the last evaluation (one entry also for a node without outputs).
  std::vector<bool> valid;
  // The result is a pending image, which nobody may have but the node that reads it in the same evaluation.
  bool is_pending = false;
  // Images that stand in for outputs; empty where none ever did.
  std::vector<ImagePtr> overrides;
  Engine::NodeStatistics statistics;

  // ---- Of the evaluation that is running, whose number they carry ----
  std::uint64_t evaluation = 0;
  bool visited = false;
  bool needed = false;
  std::vector<bool> wanted;
  // Connections and requests that still need this node's results.
  std::size_t uses = 0;
  // The last one that was found to need them; null once it is disconnected.
  NodeVertex* user = nullptr;
  // The one that is evaluated next.
  NodeVertex* next = nullptr;
  // Whether its image, which is pending, is computed from more than one.
  bool holds_several = false;
  bool requested = false;

  [[nodiscard]] Image* GetOverride(unsigned outplug) const {
    return outplug < overrides.size() ? overrides[outplug].Get() : nullptr;
  }
};

/// Lets go of the results.
void DropResults(NodeVertex& vertex);

/// The result of a vertex, and of all that depend on it, is not up to date any more.
void MarkDirty(NodeVertex& start);

}  // namespace ScEng
