// SPDX-License-Identifier: Apache-2.0
#include "Host/Tools/Engine.h"

#include <algorithm>
#include <exception>
#include <new>
#include <stdexcept>
#include <unordered_map>
#include <utility>

#include "Host/Image/Image.h"
#include "Host/Image/Oversize.h"

namespace {

using ScEng::RefPtr;
using ScEng::Status;

struct Vertex;

struct Connection {
  Vertex* from = nullptr;
  unsigned outplug = 0;
  Vertex* to = nullptr;
  unsigned inplug = 0;
  unsigned index = 0;

  friend bool operator==(const Connection&, const Connection&) = default;
};

/// A node and what the engine keeps about it.
struct Vertex {
  RefPtr<Node> node;
  // Ordered by input plug, then by index: the order in which a node receives them.
  std::vector<Connection> inputs;
  std::vector<Connection> outputs;
  // Something that the result depends on has changed. Everything downstream of a dirty vertex is dirty too.
  bool dirty = true;
  bool blocked = false;
  // Which outputs hold the result of the last evaluation (one entry also for a node without outputs).
  std::vector<bool> valid;

  // ---- Of the evaluation that is running ----
  bool visited = false;
  std::vector<bool> wanted;
  // Connections and requests that still need this node's results.
  std::size_t uses = 0;
  bool requested = false;
};

void Tell(Node& node, std::uint32_t kind) {
  NodeEvent event;
  event.kind = kind;
  node.OnProcessEvent(event);
}

}  // namespace

class Engine::Graph {
 public:
  ~Graph() {
    while (!vertices_.empty()) Delete(vertices_.begin()->first);
  }

  Node* Add(Node* node) {
    auto vertex = std::make_unique<Vertex>();
    vertex->node.Reset(node);
    vertex->valid.assign(std::max<std::size_t>(node->GetOutplugs().size(), 1), false);
    Vertex* raw = vertex.get();
    node->SetChangeListener([raw](Node&) { MarkDirty(*raw); });
    vertices_.emplace(node, std::move(vertex));
    node->OnAdded();
    return node;
  }

  bool Delete(const Node* node) {
    Vertex* vertex = Find(node);
    if (vertex == nullptr) return false;
    while (!vertex->inputs.empty()) Disconnect(vertex->inputs.back());
    while (!vertex->outputs.empty()) Disconnect(vertex->outputs.back());
    vertex->node->SetChangeListener(nullptr);
    vertex->node->OnRemoved();
    vertices_.erase(node);
    return true;
  }

  [[nodiscard]] Vertex* Find(const Node* node) const {
    const auto found = vertices_.find(node);
    return found == vertices_.end() ? nullptr : found->second.get();
  }

  [[nodiscard]] std::vector<Node*> GetNodes() const {
    std::vector<Node*> nodes;
    nodes.reserve(vertices_.size());
    for (const auto& [node, vertex] : vertices_) nodes.push_back(vertex->node.Get());
    return nodes;
  }

  static Status Connect(const Connection& connection) {
    const PlugRecord& inplug = connection.to->node->GetInplugs()[connection.inplug];
    const PlugRecord& outplug = connection.from->node->GetOutplugs()[connection.outplug];
    if (inplug.type != outplug.type) {
      return Status::Error(std::string("an output of kind ") + PlugType::GetName(outplug.type) +
                           " cannot feed an input of kind " + PlugType::GetName(inplug.type));
    }
    const bool takes_many = inplug.connections == PlugRecord::kAnyNumber;
    if (!takes_many && connection.index != 0) {
      return Status::Error("input \"" + inplug.name + "\" takes one connection, so its index is 0, not " +
                           std::to_string(connection.index));
    }
    for (const Connection& other : connection.to->inputs) {
      if (other.inplug != connection.inplug || other.index != connection.index) continue;
      return Status::Error("input \"" + inplug.name + "\" is connected already" +
                           (takes_many ? " at index " + std::to_string(connection.index) : ""));
    }
    if (Reaches(*connection.to, *connection.from)) return Status::Error("it would close a cycle");

    auto& inputs = connection.to->inputs;
    const auto place = std::find_if(inputs.begin(), inputs.end(), [&](const Connection& other) {
      return std::pair(other.inplug, other.index) > std::pair(connection.inplug, connection.index);
    });
    inputs.insert(place, connection);
    connection.from->outputs.push_back(connection);
    MarkDirty(*connection.to);
    TellSource(connection, connection.from->node.Get());
    return {};
  }

  static bool Disconnect(const Connection connection) {
    auto& inputs = connection.to->inputs;
    const auto found = std::find(inputs.begin(), inputs.end(), connection);
    if (found == inputs.end()) return false;
    inputs.erase(found);
    auto& outputs = connection.from->outputs;
    outputs.erase(std::find(outputs.begin(), outputs.end(), connection));
    MarkDirty(*connection.to);
    TellSource(connection, nullptr);
    return true;
  }

  /// Tells a node what feeds the plug of one of its attributes now.
  static void TellSource(const Connection& connection, const Node* from) {
    Node& node = *connection.to->node;
    const std::size_t inputs = node.GetNumRegularInputs();
    if (connection.inplug < inputs) return;
    node.SetAttributeSource(static_cast<unsigned>(connection.inplug - inputs), from, connection.outplug);
  }

  void Evaluate(const std::vector<Request>& requests, const Options& options) {
    const std::vector<Vertex*> order = Plan(requests);
    std::size_t done = 0;
    for (Vertex* vertex : order) {
      EvaluateVertex(*vertex);
      if (options.release_results) {
        for (const Connection& input : vertex->inputs) ReleaseUse(*input.from);
      }
      ++done;
      if (options.on_evaluated) options.on_evaluated(*vertex->node, done, order.size());
      if (options.release_results && vertex->requested) ReleaseUse(*vertex);
    }
  }

 private:
  static void MarkDirty(Vertex& start) {
    std::vector<Vertex*> pending{&start};
    while (!pending.empty()) {
      Vertex& vertex = *pending.back();
      pending.pop_back();
      vertex.dirty = true;
      for (const Connection& output : vertex.outputs) {
        if (!output.to->dirty) pending.push_back(output.to);
      }
    }
  }

  /// Whether `goal` can be reached from `start` along connections (a node reaches itself).
  static bool Reaches(const Vertex& start, const Vertex& goal) {
    std::vector<const Vertex*> pending{&start};
    std::unordered_map<const Vertex*, bool> seen{{&start, true}};
    while (!pending.empty()) {
      const Vertex* vertex = pending.back();
      pending.pop_back();
      if (vertex == &goal) return true;
      for (const Connection& output : vertex->outputs) {
        if (seen.emplace(output.to, true).second) pending.push_back(output.to);
      }
    }
    return false;
  }

  static bool IsUpToDate(const Vertex& vertex) {
    if (vertex.dirty) return false;
    for (std::size_t i = 0; i < vertex.wanted.size(); ++i) {
      if (vertex.wanted[i] && !vertex.valid[i]) return false;
    }
    return true;
  }

  /// The vertices that have to be evaluated, each after everything that it depends on.
  std::vector<Vertex*> Plan(const std::vector<Request>& requests) {
    for (auto& [node, vertex] : vertices_) {
      vertex->visited = false;
      vertex->requested = false;
      vertex->uses = 0;
      vertex->wanted.assign(vertex->valid.size(), false);
    }
    std::vector<Vertex*> roots;
    for (const Request& request : requests) {
      Vertex* vertex = Find(request.node);
      if (vertex == nullptr || request.outplug >= vertex->wanted.size()) continue;
      vertex->wanted[request.outplug] = true;
      if (!std::exchange(vertex->requested, true)) ++vertex->uses;
      roots.push_back(vertex);
    }

    // First everything that the requests can need, so that each vertex's wanted outputs are complete before it is
    // decided whether it is up to date.
    std::vector<Vertex*> downstream_first = CollectUpstream(roots);
    std::reverse(downstream_first.begin(), downstream_first.end());
    std::vector<Vertex*> needed;
    for (Vertex* candidate : downstream_first) {
      Vertex& vertex = *candidate;
      const bool is_wanted = std::find(vertex.wanted.begin(), vertex.wanted.end(), true) != vertex.wanted.end();
      if (!is_wanted || IsUpToDate(vertex)) continue;
      needed.push_back(&vertex);
      for (const Connection& input : vertex.inputs) {
        input.from->wanted[input.outplug] = true;
        ++input.from->uses;
      }
    }
    std::reverse(needed.begin(), needed.end());
    return needed;
  }

  /// The roots and all they depend on, every vertex after what it depends on. No recursion: graphs may be deep.
  static std::vector<Vertex*> CollectUpstream(const std::vector<Vertex*>& roots) {
    std::vector<Vertex*> post_order;
    std::vector<std::pair<Vertex*, std::size_t>> stack;
    for (Vertex* root : roots) {
      if (std::exchange(root->visited, true)) continue;
      stack.emplace_back(root, 0);
      while (!stack.empty()) {
        auto& [vertex, next] = stack.back();
        if (next == vertex->inputs.size()) {
          post_order.push_back(vertex);
          stack.pop_back();
          continue;
        }
        Vertex* from = vertex->inputs[next++].from;
        if (!std::exchange(from->visited, true)) stack.emplace_back(from, 0);
      }
    }
    return post_order;
  }

  static std::vector<PlugValue> GatherInputs(Vertex& vertex) {
    Node& node = *vertex.node;
    const auto regular_inputs = static_cast<unsigned>(node.GetNumRegularInputs());
    const auto inplugs = static_cast<unsigned>(node.GetInplugs().size());
    std::vector<PlugValue> values;
    auto input = vertex.inputs.begin();
    for (unsigned inplug = 0; inplug < inplugs; ++inplug) {
      const std::size_t before = values.size();
      bool connected = false;
      for (; input != vertex.inputs.end() && input->inplug == inplug; ++input) {
        values.push_back(ReadOutput(*input->from, input->outplug));
        connected = true;
      }
      if (!connected) {
        const bool is_attribute = inplug >= regular_inputs;
        values.push_back(is_attribute ? node.GetAttribute(inplug - regular_inputs)->GetValue() : PlugValue());
      }
      if (inplug < regular_inputs) {
        node.SetRegularInputEntries(inplug, static_cast<unsigned>(values.size() - before));
      }
    }
    return values;
  }

  static PlugValue ReadOutput(const Vertex& vertex, unsigned outplug) {
    const Node& node = *vertex.node;
    if (node.GetOutplugs()[outplug].type != PlugType::kImage) return node.GetOutputValue(outplug);
    const Image* image = node.GetOutputImage(outplug);
    return image != nullptr ? PlugValue(image) : PlugValue();
  }

  static void EvaluateVertex(Vertex& vertex) {
    Node& node = *vertex.node;
    const bool was_dirty = std::exchange(vertex.dirty, false);
    vertex.blocked = std::any_of(vertex.inputs.begin(), vertex.inputs.end(), [](const Connection& input) {
      return input.from->blocked || input.from->node->IsInError();
    });
    node.SetState(0, Node::State::kIdle, {});
    // A node with several outputs computes each at its own request, so an old one could pass for a new one. A node with
    // one output keeps it: some show their last result while they are disabled.
    if (vertex.blocked || (was_dirty && vertex.valid.size() > 1)) Tell(node, NodeEvent::kDropCachedResults);
    if (was_dirty) vertex.valid.assign(vertex.valid.size(), false);
    if (vertex.blocked) {
      vertex.valid.assign(vertex.valid.size(), true);
      return;
    }

    const std::vector<PlugValue> inputs = GatherInputs(vertex);
    for (unsigned outplug = 0; outplug < vertex.wanted.size() && !node.IsInError(); ++outplug) {
      if (!vertex.wanted[outplug] || vertex.valid[outplug]) continue;
      EvaluateOutput(node, outplug, inputs);
      vertex.valid[outplug] = true;
      // Some nodes make all their outputs at once.
      for (unsigned other = 0; other < node.GetOutplugs().size(); ++other) {
        if (node.GetOutputImage(other) != nullptr) vertex.valid[other] = true;
      }
    }
    // An error stands until something changes; it is not tried again for each output.
    if (node.IsInError()) vertex.valid.assign(vertex.valid.size(), true);
    if (node.GetState() == Node::State::kIdle) node.SetState(0, Node::State::kReady, {});
  }

  static void EvaluateOutput(Node& node, unsigned outplug, const std::vector<PlugValue>& inputs) {
    try {
      node.Evaluate(outplug, inputs);
      return;
    } catch (const std::length_error&) {
      node.SetState(outplug, Node::State::kError, ScEng::kOversizeMessage);
    } catch (const std::bad_alloc&) {
      node.SetState(outplug, Node::State::kError, ScEng::kOversizeMessage);
    } catch (const std::exception& error) {
      node.SetState(outplug, Node::State::kError, error.what());
    } catch (...) {
      node.SetState(outplug, Node::State::kError, "The node failed with an exception of unknown type.");
    }
    Tell(node, NodeEvent::kDropCachedResults);
  }

  static void ReleaseUse(Vertex& vertex) {
    if (vertex.uses == 0 || --vertex.uses > 0) return;
    Tell(*vertex.node, NodeEvent::kDropCachedResults);
    vertex.valid.assign(vertex.valid.size(), false);
  }

  std::unordered_map<const Node*, std::unique_ptr<Vertex>> vertices_;
};

Engine* Engine::Get() {
  static Engine engine;
  return &engine;
}

Engine::Engine() : Engine(nullptr) {}

Engine::Engine(std::shared_ptr<const ScEng::NodeCatalog> catalog) { SetCatalog(std::move(catalog)); }

Engine::~Engine() = default;

void Engine::SetCatalog(std::shared_ptr<const ScEng::NodeCatalog> catalog) {
  // The nodes go before the library that their code is in.
  graph_ = std::make_unique<Graph>();
  catalog_ = catalog ? std::move(catalog) : std::make_shared<const ScEng::NodeCatalog>();
}

const ScEng::NodeCatalog& Engine::GetCatalog() const { return *catalog_; }

Node* Engine::CreateNode(const NodeType& type) {
  const NodeInterface* descriptor = catalog_->Find(type);
  if (descriptor == nullptr) return nullptr;
  Node* node = descriptor->GetNodeFactory()->CreateNode();
  return node == nullptr ? nullptr : graph_->Add(node);
}

bool Engine::DeleteNode(Node* node) { return graph_->Delete(node); }

std::vector<Node*> Engine::GetNodes() const { return graph_->GetNodes(); }

Status Engine::Connect(Node* from, const std::string& from_plug, unsigned from_index, Node* to,
                       const std::string& to_plug, unsigned to_index) {
  Connection connection;
  connection.from = graph_->Find(from);
  connection.to = graph_->Find(to);
  if (connection.from == nullptr || connection.to == nullptr) return Status::Error("a node is not of this graph");
  const int outplug = from->GetOutplugIndex(from_plug);
  const int inplug = to->GetInplugIndex(to_plug);
  if (outplug < 0) return Status::Error(from->GetName() + " has no output \"" + from_plug + "\"");
  if (inplug < 0) return Status::Error(to->GetName() + " has no input or attribute \"" + to_plug + "\"");
  if (from_index != 0) return Status::Error("an output has the one index 0, not " + std::to_string(from_index));
  connection.outplug = static_cast<unsigned>(outplug);
  connection.inplug = static_cast<unsigned>(inplug);
  connection.index = to_index;
  return Graph::Connect(connection);
}

bool Engine::ConnectNodes(Node* from, const std::string& from_plug, unsigned from_index, Node* to,
                          const std::string& to_plug, unsigned to_index) {
  return !Connect(from, from_plug, from_index, to, to_plug, to_index).IsError();
}

bool Engine::DisconnectNodes(Node* from, const std::string& from_plug, unsigned from_index, Node* to,
                             const std::string& to_plug, unsigned to_index) {
  Vertex* from_vertex = graph_->Find(from);
  Vertex* to_vertex = graph_->Find(to);
  if (from_vertex == nullptr || to_vertex == nullptr || from_index != 0) return false;
  const int outplug = from->GetOutplugIndex(from_plug);
  const int inplug = to->GetInplugIndex(to_plug);
  if (outplug < 0 || inplug < 0) return false;
  return Graph::Disconnect(
      {from_vertex, static_cast<unsigned>(outplug), to_vertex, static_cast<unsigned>(inplug), to_index});
}

bool Engine::IsConnected(const Node* node, const std::string& inplug) const {
  const Vertex* vertex = graph_->Find(node);
  if (vertex == nullptr) return false;
  const int index = node->GetInplugIndex(inplug);
  return std::any_of(vertex->inputs.begin(), vertex->inputs.end(),
                     [&](const Connection& input) { return static_cast<int>(input.inplug) == index; });
}

void Engine::Evaluate(const std::vector<Request>& requests, const Options& options) {
  graph_->Evaluate(requests, options);
}

bool Engine::IsBlocked(const Node* node) const {
  const Vertex* vertex = graph_->Find(node);
  return vertex != nullptr && vertex->blocked;
}
