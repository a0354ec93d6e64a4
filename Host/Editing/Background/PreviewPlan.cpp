// SPDX-License-Identifier: Apache-2.0
#include "Host/Editing/Background/PreviewPlan.h"

#include <algorithm>
#include <cmath>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "Host/Documents/PlugName.h"
#include "Host/Tools/Guard.h"
#include "Host/Tools/NodeRecord.h"

namespace ScEng {
namespace {

/// Images of fewer pixels are evaluated about as fast as anybody looks.
constexpr std::int64_t kLeastPixels = std::int64_t{3} << 19;
/// The longest side of a preview.
constexpr int kMostSide = 640;

using Connections = std::unordered_multimap<std::string, DocumentConnection>;

Connections FindInputs(const GraphDocument& document) {
  Connections inputs;
  for (DocumentConnection& connection : document.GetConnections()) {
    std::string to = GetNodeOfPlug(connection.to);
    inputs.emplace(std::move(to), std::move(connection));
  }
  return inputs;
}

Scaling FindScaling(const Node& node) {
  const NodeRecord* record = node.GetRecord();
  if (record == nullptr) return Scaling::kUnknown;
  if (record->scaling != nullptr)
    return AskGuarded("the scaling", Scaling::kUnknown, [&] { return record->scaling(node); });
  const auto ask = [&] { return node.GetReach(std::vector<PlugValue>(node.GetInplugs().size())).kind; };
  const bool is_pointwise = AskGuarded("the reach", Reach::Kind::kUnknown, ask) == Reach::Kind::kSamples;
  return is_pointwise ? Scaling::kSame : Scaling::kUnknown;
}

/// Walks from an output to what it needs.
class Planner {
 public:
  Planner(const GraphDocument& document, PreviewPlan& plan)
      : document_(document), inputs_(FindInputs(document)), plan_(plan) {}

  bool Visit(const std::string& start) {
    // A node is finished after its inputs, without a stack that grows with the graph.
    std::vector<std::pair<std::string, bool>> open{{start, false}};
    while (!open.empty()) {
      const auto [id, are_inputs_done] = open.back();
      open.pop_back();
      if (are_inputs_done) {
        if (!Finish(id)) return false;
        continue;
      }
      if (!seen_.insert(id).second) continue;
      open.emplace_back(id, true);
      const auto [from, to] = inputs_.equal_range(id);
      for (auto input = from; input != to; ++input) {
        std::string before = GetNodeOfPlug(input->second.from);
        if (!seen_.contains(before)) open.emplace_back(std::move(before), false);
      }
    }
    return true;
  }

 private:
  bool Finish(const std::string& id) {
    const Node* node = document_.FindNode(id);
    if (node == nullptr) return false;
    const bool makes_image = std::any_of(node->GetOutplugs().begin(), node->GetOutplugs().end(),
                                         [](const PlugRecord& plug) { return plug.type == PlugType::kImage; });
    if (!makes_image) return true;
    return TakesImages(*node, id) ? FinishFilter(*node, id) : FinishSource(*node, id);
  }

  /// Whether a regular input is connected.
  bool TakesImages(const Node& node, const std::string& id) const {
    const auto [from, to] = inputs_.equal_range(id);
    return std::any_of(from, to, [&](const auto& input) {
      const int inplug = node.GetInplugIndex(GetNameOfPlug(input.second.to));
      return inplug >= 0 && static_cast<std::size_t>(inplug) < node.GetNumRegularInputs();
    });
  }

  bool FinishSource(const Node& node, const std::string& id) {
    for (unsigned outplug = 0; outplug < node.GetOutplugs().size(); ++outplug) {
      if (node.GetOutplugs()[outplug].type == PlugType::kImage) plan_.sources.push_back({id, outplug});
    }
    return true;
  }

  bool FinishFilter(const Node& node, const std::string& id) {
    const Scaling scaling = FindScaling(node);
    if (scaling == Scaling::kUnknown) return false;
    const bool asks_attributes = node.GetRecord()->scaling != nullptr;
    for (std::size_t i = 0; i < node.GetNumAttributes(); ++i) {
      const Attribute& attribute = *node.GetAttribute(i);
      if (asks_attributes && IsDriven(id, attribute.GetName())) return false;
      if (node.IsEnabled()) AddLength(attribute, id, i);
    }
    if (scaling != Scaling::kSame) plan_.scaled.push_back({id, scaling});
    return true;
  }

  bool IsDriven(const std::string& id, const std::string& attribute) const {
    const auto [from, to] = inputs_.equal_range(id);
    return std::any_of(from, to, [&](const auto& input) { return GetNameOfPlug(input.second.to) == attribute; });
  }

  void AddLength(const Attribute& attribute, const std::string& id, std::size_t index) {
    const AttributeRow* row = attribute.GetRow();
    const bool is_length =
        row != nullptr && std::string_view(row->unit) == "px" && attribute.GetKind() == Attribute::Kind::kNumber;
    if (!is_length) return;
    const double value_px = attribute.GetValue().GetNumber();
    // What is off by default fades away towards 0; anything else is another picture below one pixel.
    const bool may_vanish = value_px == 0.0 || (row->numbers[0] == 0.0 && row->lowest == 0.0);
    plan_.lengths.push_back({id, index, value_px, may_vanish ? 0.0 : std::max(1.0, row->lowest)});
  }

  const GraphDocument& document_;
  Connections inputs_;
  PreviewPlan& plan_;
  std::unordered_set<std::string> seen_;
};

}  // namespace

PreviewPlan MakePreviewPlan(const GraphDocument& document, const std::string& id) {
  PreviewPlan plan;
  plan.is_possible = Planner(document, plan).Visit(id);
  return plan;
}

int ChooseHalvings(const PreviewPlan& plan, int longest_side, std::int64_t pixels) {
  if (!plan.is_possible || pixels < kLeastPixels) return 0;
  int halvings = 0;
  while ((longest_side >> halvings) > kMostSide) ++halvings;
  for (const PreviewPlan::Length& length : plan.lengths) {
    while (halvings > 0 && std::ldexp(length.value_px, -halvings) < length.least_px) --halvings;
  }
  return halvings;
}

}  // namespace ScEng
