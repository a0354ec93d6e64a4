// SPDX-License-Identifier: Apache-2.0
#include "Host/Tools/Evaluation/JoinedPasses.h"

#include <algorithm>
#include <cstddef>

#include "Host/Image/PendingImage.h"
#include "Host/Tools/Evaluation/NodeCalls.h"
#include "Host/Tools/NodeRecord.h"
#include "Host/Tools/Reach.h"

namespace ScEng {
namespace {

/// Whether a node's passes may be joined with those of others; see `NodeRecord::joins`.
bool Joins(const Node& node) {
  const NodeRecord* const record = node.GetRecord();
  return record != nullptr && record->joins && node.IsEnabled() && node.GetOutplugs().size() == 1;
}

/// Whether a node reads of its inputs the samples at the same place alone, with what its plugs carry.
bool ReadsNoRange(Node& node, const std::vector<PlugValue>& inputs) {
  const Reach reach = CallNode(node, "GetReach", Reach(), [&] { return node.GetReach(inputs); });
  return reach == Reach::Samples();
}

/// The same as its attributes are set.
bool ReadsNoRange(Node& node) {
  std::vector<PlugValue> inputs(node.GetNumRegularInputs());
  for (unsigned input = 0; input < inputs.size(); ++input) node.SetRegularInputEntries(input, 1);
  for (std::size_t id = 0; id < node.GetNumAttributes(); ++id) inputs.push_back(node.GetAttribute(id)->GetValue());
  return ReadsNoRange(node, inputs);
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
  if (!options.release_results || options.on_timed) return false;
  if (vertex.uses != 1 || vertex.requested || vertex.user == nullptr) return false;
  if (!Joins(*vertex.node) || !Joins(*vertex.user->node) || !ReadsNoRange(*vertex.user->node)) return false;
  vertex.holds_several = HoldsSeveral(vertex);
  // Images are not held in place of a single one while others are made.
  return !vertex.holds_several || vertex.next == vertex.user;
}

void SettleInputs(Node& node, std::vector<PlugValue>& inputs, std::vector<ImagePtr>& settled) {
  const auto is_pending = [](const PlugValue& input) {
    return input.GetImage() != nullptr && IsPending(*input.GetImage());
  };
  if (std::none_of(inputs.begin(), inputs.end(), is_pending)) return;
  if (Joins(node) && ReadsNoRange(node, inputs)) return;
  for (std::size_t i = 0; i < inputs.size(); ++i) {
    if (!is_pending(inputs[i])) continue;
    const PlugValue pending = inputs[i];
    settled.push_back(MakeWhole(*pending.GetImage()));
    // It may be at several plugs.
    std::replace(inputs.begin(), inputs.end(), pending, PlugValue(settled.back().Get()));
  }
}

}  // namespace ScEng
