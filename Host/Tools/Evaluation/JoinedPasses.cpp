// SPDX-License-Identifier: Apache-2.0
#include "Host/Tools/Evaluation/JoinedPasses.h"

#include <cstddef>
#include <vector>

#include "Host/Tools/Evaluation/NodeCalls.h"
#include "Host/Tools/NodeRecord.h"
#include "Host/Tools/PlugValue.h"
#include "Host/Tools/Reach.h"

namespace ScEng {
namespace {

/// Whether a node's passes may be joined with those of others; see `NodeRecord::joins`.
bool Joins(const Node& node) {
  const NodeRecord* const record = node.GetRecord();
  return record != nullptr && record->joins && node.IsEnabled() && node.GetOutplugs().size() == 1;
}

/// Whether a node reads of its inputs the samples at the same place alone, as its attributes are set.
bool ReadsNoRange(Node& node) {
  std::vector<PlugValue> inputs(node.GetNumRegularInputs());
  for (unsigned input = 0; input < inputs.size(); ++input) node.SetRegularInputEntries(input, 1);
  for (std::size_t id = 0; id < node.GetNumAttributes(); ++id) inputs.push_back(node.GetAttribute(id)->GetValue());
  const Reach reach = CallNode(node, "GetReach", Reach(), [&] { return node.GetReach(inputs); });
  return reach == Reach::Samples();
}

/// Whether a pending image of the vertex would be computed from more than one image.
bool HoldsSeveral(const NodeVertex& vertex) {
  const std::size_t regular_inputs = vertex.node->GetNumRegularInputs();
  std::size_t images = 0;
  for (const auto& [place, input] : vertex.inputs) {
    if (place.first >= regular_inputs) continue;
    ++images;
    if (input.From().holds_several && input.From().evaluation == vertex.evaluation) return true;
  }
  return images > 1;
}

}  // namespace

bool MayBePending(NodeVertex& vertex, const Engine::Options& options) {
  if (!options.release_results || options.on_timed || vertex.uses != 1 || vertex.requested) return false;
  if (!Joins(*vertex.node) || !Joins(*vertex.user->node) || !ReadsNoRange(*vertex.user->node)) return false;
  vertex.holds_several = HoldsSeveral(vertex);
  // Images are not held in place of a single one while others are made.
  return !vertex.holds_several || vertex.next == vertex.user;
}

}  // namespace ScEng
