// SPDX-License-Identifier: Apache-2.0
#include "Host/Tools/Evaluation/EvaluationPlan.h"

#include <cstddef>
#include <queue>
#include <utility>

namespace ScEng {
namespace {

bool IsUpToDate(const NodeVertex& vertex) {
  if (vertex.dirty || vertex.is_pending) return false;
  for (std::size_t i = 0; i < vertex.wanted.size(); ++i) {
    if (vertex.wanted[i] && !vertex.valid[i]) return false;
  }
  return true;
}

/// Makes a vertex ready for the plan, unless it is.
void Enter(NodeVertex& vertex, std::uint64_t evaluation) {
  if (vertex.evaluation == evaluation) return;
  vertex.evaluation = evaluation;
  vertex.visited = false;
  vertex.needed = false;
  vertex.requested = false;
  vertex.uses = 0;
  vertex.user = nullptr;
  vertex.next = nullptr;
  vertex.holds_several = false;
  vertex.wanted.assign(vertex.valid.size(), false);
}

/// What is needed, every vertex after what it depends on, and as late as that allows, so that few results wait to be
/// used. No recursion: graphs may be deep.
std::vector<NodeVertex*> CollectNeeded(const std::vector<NodeVertex*>& roots, std::uint64_t evaluation) {
  std::vector<NodeVertex*> post_order;
  std::vector<std::pair<NodeVertex*, decltype(NodeVertex::inputs)::const_iterator>> stack;
  const auto enter = [&](NodeVertex& vertex) {
    if (vertex.evaluation != evaluation || !std::exchange(vertex.needed, false)) return;
    stack.emplace_back(&vertex, vertex.inputs.cbegin());
  };
  for (NodeVertex* root : roots) {
    enter(*root);
    while (!stack.empty()) {
      auto& [vertex, next] = stack.back();
      if (next == vertex->inputs.cend()) {
        post_order.push_back(vertex);
        stack.pop_back();
        continue;
      }
      enter((next++)->second.From());
    }
  }
  return post_order;
}

}  // namespace

std::vector<NodeVertex*> PlanEvaluation(const std::vector<VertexRequest>& requests, std::uint64_t evaluation) {
  // The latest vertex comes first: then whether it is up to date can be decided, since all that can want something of
  // it has been looked at.
  const auto comes_later = [](const NodeVertex* a, const NodeVertex* b) { return AcyclicGraph::IsBefore(*a, *b); };
  std::priority_queue<NodeVertex*, std::vector<NodeVertex*>, decltype(comes_later)> candidates(comes_later);
  const auto want = [&](NodeVertex& vertex, unsigned outplug) {
    if (!std::exchange(vertex.visited, true)) candidates.push(&vertex);
    vertex.wanted[outplug] = true;
  };
  std::vector<NodeVertex*> roots;
  for (const auto& [vertex, outplug] : requests) {
    Enter(*vertex, evaluation);
    if (vertex->GetOverride(outplug) != nullptr) continue;
    want(*vertex, outplug);
    if (!std::exchange(vertex->requested, true)) ++vertex->uses;
    roots.push_back(vertex);
  }
  while (!candidates.empty()) {
    NodeVertex& vertex = *candidates.top();
    candidates.pop();
    if (IsUpToDate(vertex)) continue;
    vertex.needed = true;
    for (const auto& [place, input] : vertex.inputs) {
      NodeVertex& from = input.From();
      if (from.GetOverride(input.outplug) != nullptr) continue;
      Enter(from, evaluation);
      want(from, input.outplug);
      ++from.uses;
      from.user = &vertex;
    }
  }
  std::vector<NodeVertex*> order = CollectNeeded(roots, evaluation);
  for (std::size_t i = 1; i < order.size(); ++i) order[i - 1]->next = order[i];
  return order;
}

}  // namespace ScEng
