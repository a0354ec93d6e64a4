// SPDX-License-Identifier: Apache-2.0
#include "Host/Tools/EngineGraph.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>

#include "Host/Image/SampleMemoryScope.h"
#include "Host/Tools/Evaluation/EvaluationPlan.h"
#include "Host/Tools/Evaluation/NodeCalls.h"
#include "Host/Tools/Evaluation/VertexEvaluation.h"
#include "Host/Util/Log.h"

namespace {

using ScEng::AcyclicGraph;
using ScEng::AsConnection;
using ScEng::MarkDirty;
using ScEng::NameOf;
using ScEng::NodeConnection;
using ScEng::NodeVertex;
using ScEng::Status;
using ScEng::Stopped;

/// Tells a node what feeds the plug of one of its attributes now.
void TellSource(const NodeConnection& connection, const Node* from) {
  Node& node = *connection.To().node;
  const std::size_t inputs = node.GetNumRegularInputs();
  if (connection.inplug < inputs) return;
  node.SetAttributeSource(static_cast<unsigned>(connection.inplug - inputs), from, connection.outplug);
}

void ReleaseUse(NodeVertex& vertex) {
  if (vertex.uses == 0 || --vertex.uses > 0) return;
  ScEng::DropResults(vertex);
}

/// Releases what still waits to be used, and what nobody may have after the evaluation.
void ReleaseAll(NodeVertex& vertex) {
  if (std::exchange(vertex.uses, 0) > 0 || vertex.is_pending) ScEng::DropResults(vertex);
}

}  // namespace

Engine::Graph::~Graph() {
  while (!vertices_.empty()) Delete(vertices_.begin()->first);
}

Node* Engine::Graph::Add(Node* node, Status& status) {
  auto vertex = std::make_unique<NodeVertex>();
  vertex->node.Reset(node);
  vertex->valid.assign(std::max<std::size_t>(node->GetOutplugs().size(), 1), false);
  NodeVertex* raw = vertex.get();
  vertices_.emplace(node, std::move(vertex));
  order_.Add(*raw);
  node->SetChangeListener([raw](Node&) { MarkDirty(*raw); });
  const Status added = ScEng::CallGuarded("OnAdded", [&] { node->OnAdded(); });
  if (!added.IsError()) return node;
  // It has not joined, so it does not leave either.
  status = added;
  node->SetChangeListener(nullptr);
  order_.Remove(*raw);
  vertices_.erase(node);
  return nullptr;
}

bool Engine::Graph::Delete(const Node* node) {
  NodeVertex* vertex = Find(node);
  if (vertex == nullptr) return false;
  while (!vertex->inputs.empty()) Disconnect(vertex->inputs.begin()->second);
  while (!vertex->out.empty()) Disconnect(AsConnection(vertex->out.back()));
  vertex->node->SetChangeListener(nullptr);
  const Status removed = ScEng::CallGuarded("OnRemoved", [&] { vertex->node->OnRemoved(); });
  if (removed.IsError()) Log::Error("%s: %s", NameOf(*vertex->node).c_str(), removed.GetMessage().c_str());
  order_.Remove(*vertex);
  for (Evaluation* running = running_; running != nullptr; running = running->outer) {
    std::replace(running->order.begin(), running->order.end(), vertex, static_cast<NodeVertex*>(nullptr));
  }
  vertices_.erase(node);
  return true;
}

NodeVertex* Engine::Graph::Find(const Node* node) const {
  const auto found = vertices_.find(node);
  return found == vertices_.end() ? nullptr : found->second.get();
}

std::vector<Node*> Engine::Graph::GetNodes() const {
  std::vector<Node*> nodes;
  nodes.reserve(vertices_.size());
  for (const auto& [node, vertex] : vertices_) nodes.push_back(vertex->node.Get());
  return nodes;
}

Status Engine::Graph::Connect(NodeVertex& from, unsigned from_outplug, NodeVertex& to, unsigned to_inplug,
                              unsigned to_index) {
  const PlugRecord& inplug = to.node->GetInplugs()[to_inplug];
  const PlugRecord& outplug = from.node->GetOutplugs()[from_outplug];
  if (inplug.type != outplug.type) {
    return Status::Error(std::string("an output of kind ") + PlugType::GetName(outplug.type) +
                         " cannot feed an input of kind " + PlugType::GetName(inplug.type));
  }
  const bool takes_many = inplug.connections == PlugRecord::kAnyNumber;
  if (!takes_many && to_index != 0) {
    return Status::Error("input \"" + inplug.name + "\" takes one connection, so its index is 0, not " +
                         std::to_string(to_index));
  }
  const auto [place, is_free] =
      to.inputs.try_emplace({to_inplug, to_index}, from, from_outplug, to, to_inplug, to_index);
  if (!is_free) {
    return Status::Error("input \"" + inplug.name + "\" is connected already" +
                         (takes_many ? " at index " + std::to_string(to_index) : ""));
  }
  if (!order_.Connect(place->second)) {
    to.inputs.erase(place);
    return Status::Error("it would close a cycle");
  }
  MarkDirty(to);
  TellSource(place->second, from.node.Get());
  return {};
}

bool Engine::Graph::Disconnect(NodeVertex& from, unsigned outplug, NodeVertex& to, unsigned inplug, unsigned index) {
  const auto found = to.inputs.find({inplug, index});
  if (found == to.inputs.end() || &found->second.From() != &from || found->second.outplug != outplug) return false;
  Disconnect(found->second);
  return true;
}

void Engine::Graph::SetOverride(NodeVertex& vertex, unsigned outplug, const ImagePtr& image) {
  if (vertex.overrides.empty()) {
    if (!image) return;
    vertex.overrides.resize(vertex.valid.size());
  }
  ImagePtr& place = vertex.overrides[outplug];
  if (!image && !place) return;
  place = image;
  for (const AcyclicGraph::Edge* output : vertex.out) {
    if (AsConnection(output).outplug == outplug) MarkDirty(AsConnection(output).To());
  }
}

Engine::Outcome Engine::Graph::Evaluate(const std::vector<Request>& requests, const Options& options) {
  const ScEng::SampleMemoryScope memory;
  Evaluation evaluation{Plan(requests), running_};
  running_ = &evaluation;
  std::size_t done = 0;
  auto outcome = Outcome::kComplete;
  try {
    EvaluateInOrder(evaluation, done, options);
  } catch (const Stopped&) {
    outcome = Outcome::kCanceled;
  } catch (...) {
    // No pending image outlives its evaluation, also where one of the functions of the options ends it.
    running_ = evaluation.outer;
    ReleaseWaiting(evaluation, done + 1, options);
    throw;
  }
  running_ = evaluation.outer;
  // In one that was not stopped they wait for nodes that were disconnected meanwhile.
  ReleaseWaiting(evaluation, done, options);
  return outcome;
}

/// Throws `Stopped`.
void Engine::Graph::EvaluateInOrder(Evaluation& evaluation, std::size_t& done, const Options& options) {
  for (NodeVertex* const& vertex : evaluation.order) {
    if (vertex != nullptr) ScEng::EvaluateVertex(*vertex, options);
    // Whoever is told of it may delete it.
    if (vertex != nullptr && options.release_results) {
      for (const auto& [place, input] : vertex->inputs) {
        if (input.From().GetOverride(input.outplug) == nullptr) ReleaseUse(input.From());
      }
    }
    ++done;
    if (vertex != nullptr && options.on_evaluated) options.on_evaluated(*vertex->node, done, evaluation.order.size());
    if (vertex != nullptr && options.release_results && vertex->requested) ReleaseUse(*vertex);
  }
}

void Engine::Graph::ReleaseWaiting(const Evaluation& evaluation, std::size_t count, const Options& options) {
  if (!options.release_results) return;
  for (std::size_t i = 0; i < std::min(count, evaluation.order.size()); ++i) {
    if (evaluation.order[i] != nullptr) ReleaseAll(*evaluation.order[i]);
  }
}

void Engine::Graph::Disconnect(const NodeConnection& connection) {
  NodeVertex& to = connection.To();
  if (connection.From().user == &to) connection.From().user = nullptr;
  const auto place = to.inputs.find({connection.inplug, connection.index});
  order_.Disconnect(place->second);
  MarkDirty(to);
  TellSource(connection, nullptr);
  to.inputs.erase(place);
}

std::vector<NodeVertex*> Engine::Graph::Plan(const std::vector<Request>& requests) {
  std::vector<ScEng::VertexRequest> found;
  for (const Request& request : requests) {
    NodeVertex* const vertex = Find(request.node);
    if (vertex != nullptr && request.outplug < vertex->valid.size()) found.push_back({vertex, request.outplug});
  }
  return ScEng::PlanEvaluation(found, ++evaluation_);
}
